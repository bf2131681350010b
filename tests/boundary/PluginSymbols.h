// SPDX-License-Identifier: MIT
// What a finished shared library exports and needs, against what it is meant to.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace boundary {

/// The global section of a linker version script.
struct ExportList
{
    std::vector<std::string> symbols;    ///< patterns for symbol names ('*' and '?' stand for any)
    std::vector<std::string> cppSymbols; ///< patterns for demangled names, from an extern "C++" block
};

/// Reads a version script without version names; throws std::runtime_error when there is no global section or when
/// the script does not hide the rest with "local: *".
ExportList ParseExports(std::string_view script);

/// Those of the symbols (as nm prints them) that the list does not name.
std::vector<std::string> NotListed(const ExportList& list, const std::vector<std::string>& symbols);

/// Those patterns of the list that name none of the symbols.
std::vector<std::string> NotDefined(const ExportList& list, const std::vector<std::string>& symbols);

/// Those of the libraries that the plug-in may not need. An instrumented build also needs the runtime of its sanitizer.
std::vector<std::string> NotAllowed(const std::vector<std::string>& libraries, bool instrumented);

/// The dynamic symbols that a shared library defines, read with nm; throws std::runtime_error when nm fails.
std::vector<std::string> DefinedSymbols(const std::string& library);

/// The names of the libraries that a shared library needs itself, read with objdump; throws like DefinedSymbols.
std::vector<std::string> NeededLibraries(const std::string& library);

} // namespace boundary
