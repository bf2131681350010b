// SPDX-License-Identifier: MIT
// The pictures on a character's surfaces: from the file's bytes to what the viewer shows.
#pragma once

#include "gltf/CharacterFile.h"
#include "zmodel/ZAppearance.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

class ZDeskSession;

/// The appearance of each mesh of a file that shows a picture, by mesh; and a line for each picture that could not be
/// decoded.
struct DecodedPictures
{
    std::map<int, std::shared_ptr<const ZAppearance>> meshes;
    std::vector<std::string> warnings;
};

/// Decodes the base-colour pictures of a file. Knows no scene: may run on a thread of its own.
DecodedPictures DecodePictures(const skindesk::gltf::CharacterFile& file);
/// Gives the models of an open document their pictures.
void ShowPictures(ZDeskSession& desk, int document, const DecodedPictures& pictures);
