// SPDX-License-Identifier: MIT
// Files of other kinds than glTF: which ones are read, and how one becomes a new document.
#pragma once

#include "gltf/CharacterFile.h"
#include "import/NewCharacter.h"

#include <span>
#include <string>

/// One kind of file, by its extension.
struct ZForeignKind
{
    const char* extension; ///< in lower case, with its dot
    const char* name;      ///< for the list of kinds in a dialog
    skindesk::imports::NewCharacter (*read)(const std::string& path);
};

/// All kinds that are read, for dialogs.
std::span<const ZForeignKind> ZForeignFile_Kinds();

/// The kind of a file by its name (capital letters are small ones); null for glTF and for what nobody knows.
const ZForeignKind* ZForeignFile_KindOf(const std::string& path);

/// Reads such a file into a new glTF file in memory, named like it with the extension `.glb`. What was lost on the way
/// stands in the warnings. Throws gltf::FileError, with the path of the other file.
skindesk::gltf::CharacterFile ZForeignFile_Read(const ZForeignKind& kind, const std::string& path);
