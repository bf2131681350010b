// SPDX-License-Identifier: MIT
// Reads version scripts and shared libraries.
#include "PluginSymbols.h"

#include <cxxabi.h>
#include <fnmatch.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace boundary {
namespace {

/// The script cut into words: braces, semicolons and colons are words of their own, "quoted" keeps its quotes.
std::vector<std::string> Words(std::string_view script)
{
    std::vector<std::string> words(1);
    const auto close = [&] {
        if (!words.back().empty())
            words.emplace_back();
    };
    for (std::size_t i = 0; i < script.size(); ++i) {
        const char c = script[i];
        if (script.substr(i, 2) == "/*") {
            i = std::min(script.find("*/", i + 2), script.size()) + 1;
            close();
        } else if (c == '#') {
            i = std::min(script.find('\n', i), script.size());
            close();
        } else if (c == '"') {
            const std::size_t end = std::min(script.find('"', i + 1), script.size() - 1);
            words.back() += script.substr(i, end - i + 1);
            i = end;
            close();
        } else if (c == '{' || c == '}' || c == ';' ||
                   (c == ':' && script.substr(i, 2) != "::" && (i == 0 || script[i - 1] != ':'))) {
            close();
            words.back() = c;
            close();
        } else if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
            close();
        } else {
            words.back() += c;
        }
    }
    words.pop_back();
    return words;
}

std::string Unquoted(const std::string& word)
{
    return word.size() >= 2 && word.front() == '"' ? word.substr(1, word.size() - 2) : word;
}

std::string Demangled(const std::string& symbol)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status), &std::free);
    return status == 0 ? name.get() : symbol;
}

bool Matches(const std::string& pattern, const std::string& name)
{
    return fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
}

/// What a command prints, line by line.
std::vector<std::string> LinesOf(const std::string& command)
{
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        throw std::runtime_error(command + " could not be started");
    std::string text;
    char part[4096];
    for (std::size_t size = 0; (size = fread(part, 1, sizeof part, pipe)) > 0;)
        text.append(part, size);
    if (pclose(pipe) != 0)
        throw std::runtime_error(command + " failed");
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

} // namespace

ExportList ParseExports(std::string_view script)
{
    ExportList list;
    bool global = false, cpp = false, sawGlobal = false, hidesRest = false;
    const std::vector<std::string> words = Words(script);
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        const bool section = i + 1 < words.size() && words[i + 1] == ":";
        if (section) {
            global = word == "global";
            sawGlobal = sawGlobal || global;
            ++i;
        } else if (word == "extern" && i + 1 < words.size()) {
            cpp = Unquoted(words[++i]) == "C++";
        } else if (word == "}") {
            cpp = false;
        } else if (word != "{" && word != ";") {
            if (global)
                (cpp ? list.cppSymbols : list.symbols).push_back(Unquoted(word));
            else
                hidesRest = hidesRest || word == "*";
        }
    }
    if (!sawGlobal)
        throw std::runtime_error("the export list has no global section");
    if (!hidesRest)
        throw std::runtime_error("the export list does not hide the rest with \"local: *\"");
    return list;
}

std::vector<std::string> NotListed(const ExportList& list, const std::vector<std::string>& symbols)
{
    std::vector<std::string> strangers;
    for (const std::string& symbol : symbols) {
        const std::string demangled = Demangled(symbol);
        const bool listed =
            std::ranges::any_of(list.symbols, [&](const std::string& name) { return Matches(name, symbol); }) ||
            std::ranges::any_of(list.cppSymbols, [&](const std::string& name) { return Matches(name, demangled); });
        if (!listed)
            strangers.push_back(demangled);
    }
    return strangers;
}

std::vector<std::string> NotDefined(const ExportList& list, const std::vector<std::string>& symbols)
{
    std::vector<std::string> missing;
    for (const std::string& name : list.symbols)
        if (std::ranges::none_of(symbols, [&](const std::string& symbol) { return Matches(name, symbol); }))
            missing.push_back(name);
    for (const std::string& name : list.cppSymbols)
        if (std::ranges::none_of(symbols, [&](const std::string& symbol) { return Matches(name, Demangled(symbol)); }))
            missing.push_back(name);
    return missing;
}

std::vector<std::string> NotAllowed(const std::vector<std::string>& libraries, bool instrumented)
{
    std::vector<std::string> allowed{"libstdc++.so.*", "libm.so.*",  "libgcc_s.so.*",  "libc.so.*",
                                     "ld-linux*",      "libGL.so.*", "libOpenGL.so.*", "libskindesk_*.so*"};
    if (instrumented)
        allowed.insert(allowed.end(), {"libasan.so.*", "libubsan.so.*", "libtsan.so.*", "libgcov*"});
    std::vector<std::string> strangers;
    for (const std::string& library : libraries)
        if (std::ranges::none_of(allowed, [&](const std::string& name) { return Matches(name, library); }))
            strangers.push_back(library);
    return strangers;
}

std::vector<std::string> DefinedSymbols(const std::string& library)
{
    // Lines read "address kind name".
    std::vector<std::string> symbols;
    for (const std::string& line : LinesOf("nm --dynamic --defined-only --without-symbol-versions '" + library + "'"))
        symbols.push_back(line.substr(line.rfind(' ') + 1));
    return symbols;
}

std::vector<std::string> NeededLibraries(const std::string& library)
{
    // Lines of interest read "  NEEDED               libm.so.6".
    std::vector<std::string> libraries;
    for (const std::string& line : LinesOf("objdump --private-headers '" + library + "'"))
        if (line.find(" NEEDED ") != std::string::npos)
            libraries.push_back(line.substr(line.rfind(' ') + 1));
    return libraries;
}

} // namespace boundary
