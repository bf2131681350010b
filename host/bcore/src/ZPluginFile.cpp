// SPDX-License-Identifier: MIT
#include "bcore/ZPluginFile.h"

#include "ElfFile.h"
#include "bcore/ZPluginApi.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace {
constexpr std::string_view kStampKey = "SkindeskPluginStamp=";
constexpr std::uintmax_t kLargestFile = 1u << 30;
constexpr size_t kLongestVersion = 80;

std::string FileName(const std::string& file) { return std::filesystem::path(file).filename().string(); }

/// The host version of the first stamp in `part`, starting at `from`; empty when there is none.
std::string_view StampIn(std::string_view part)
{
    const size_t found = part.find(kStampKey);
    if (found == std::string_view::npos)
        return {};
    const std::string_view version = part.substr(found + kStampKey.size(), kLongestVersion);
    return version.substr(0, version.find('\0'));
}

/// Empty when one of the library's stamps names this host, else what they say instead.
std::string CheckStamp(const ElfFile& elf)
{
    std::string other;
    for (const auto& bytes : elf.LoadedParts()) {
        std::string_view part(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        for (std::string_view version = StampIn(part); !version.empty(); version = StampIn(part)) {
            if (version == SKINDESK_HOST_VERSION)
                return "";
            other = version;
            part.remove_prefix(static_cast<size_t>(version.data() - part.data()));
        }
    }
    if (other.empty())
        return "was built for another host version (it names none; this is " SKINDESK_HOST_VERSION ")";
    for (char& c : other)
        if (c < ' ' || c > '~')
            c = '?';
    return "was built for another host version (" + other + "; this is " SKINDESK_HOST_VERSION ")";
}

std::string CheckContents(const std::string& name, std::span<const std::byte> bytes)
{
    if (name.empty())
        return "is not called libNAME.so";
    ElfFile elf(bytes);
    if (std::string wrong = elf.Read(); !wrong.empty())
        return wrong;
    for (const std::string& function : {"EntryPoint" + name, std::string("LIBRARY_INIT")})
        if (elf.DefinedFunctions().count(function) == 0)
            return "has no entry point " + function;
    return CheckStamp(elf);
}
} // namespace

std::string ZPluginFile_Name(const std::string& file)
{
    constexpr std::string_view before = "lib", after = ".so";
    const std::string name = FileName(file);
    if (name.size() <= before.size() + after.size() || name.compare(0, before.size(), before) != 0 ||
        name.compare(name.size() - after.size(), after.size(), after) != 0)
        return "";
    return name.substr(before.size(), name.size() - before.size() - after.size());
}

std::string ZPluginFile_CheckBytes(const std::string& file, std::span<const std::byte> bytes)
{
    const std::string wrong = CheckContents(ZPluginFile_Name(file), bytes);
    return wrong.empty() ? "" : FileName(file) + " " + wrong + ".";
}

std::string ZPluginFile_Check(const std::string& file)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        return FileName(file) + " is not there or is no file.";
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error || size > kLargestFile)
        return FileName(file) + " cannot be read.";
    std::vector<std::byte> bytes(size);
    std::ifstream stream(file, std::ios::binary);
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    if (static_cast<std::uintmax_t>(stream.gcount()) != size)
        return FileName(file) + " cannot be read.";
    return ZPluginFile_CheckBytes(file, bytes);
}
