// SPDX-License-Identifier: MIT
// A shared library's file, read without the loader: headers, segments and the symbols that it defines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <elf.h>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The bytes come from outside: every offset and count is held against the length before it is used. Follows the
/// generic ABI's chapters "Object Files" and "Dynamic Linking" for 64-bit files of this machine's byte order.
class ElfFile
{
public:
    explicit ElfFile(std::span<const std::byte> bytes) : m_bytes(bytes) {}

    /// Reads the file; empty when it is whole, else what is wrong with it.
    std::string Read();
    /// Names of the functions that the library defines for others.
    const std::set<std::string, std::less<>>& DefinedFunctions() const { return m_functions; }
    /// The parts of the file that the loader maps.
    const std::vector<std::span<const std::byte>>& LoadedParts() const { return m_parts; }

private:
    struct DynamicTables
    {
        std::uint64_t symbols = 0, strings = 0, stringBytes = 0, hash = 0, gnuHash = 0;
    };

    template <class T> bool ReadAt(std::uint64_t offset, T& value) const;
    bool Holds(std::uint64_t offset, std::uint64_t size) const;
    bool HoldsTable(std::uint64_t offset, std::uint64_t count, std::uint64_t elementSize) const;
    std::string CheckHeader() const;
    std::string CheckSections() const;
    std::string ReadSegments();
    std::string ReadDynamic(const Elf64_Phdr& segment);
    std::optional<std::uint64_t> FileOffset(std::uint64_t address) const;
    std::uint64_t CountSymbols(const DynamicTables& tables) const;
    std::uint64_t CountGnuSymbols(std::uint64_t table) const;
    std::string ReadSymbols(const DynamicTables& tables);

    std::span<const std::byte> m_bytes;
    Elf64_Ehdr m_header{};
    std::vector<Elf64_Phdr> m_loads;
    std::vector<std::span<const std::byte>> m_parts;
    std::set<std::string, std::less<>> m_functions;
};
