// SPDX-License-Identifier: MIT
#include "ElfFile.h"

#include <bit>
#include <cstring>

namespace {
const char* const kCutShort = "is cut short";
const char* const kNoLibrary = "is no shared library for this machine";

#if defined(__x86_64__)
constexpr int kMachine = EM_X86_64;
#elif defined(__aarch64__)
constexpr int kMachine = EM_AARCH64;
#elif defined(__riscv)
constexpr int kMachine = EM_RISCV;
#else
#error "name the machine number of the ELF format for this processor"
#endif
constexpr int kByteOrder = std::endian::native == std::endian::little ? ELFDATA2LSB : ELFDATA2MSB;
} // namespace

bool ElfFile::Holds(std::uint64_t offset, std::uint64_t size) const
{
    return offset <= m_bytes.size() && size <= m_bytes.size() - offset;
}

bool ElfFile::HoldsTable(std::uint64_t offset, std::uint64_t count, std::uint64_t elementSize) const
{
    return offset <= m_bytes.size() && count <= (m_bytes.size() - offset) / elementSize;
}

template <class T> bool ElfFile::ReadAt(std::uint64_t offset, T& value) const
{
    if (!Holds(offset, sizeof(T)))
        return false;
    std::memcpy(&value, m_bytes.data() + offset, sizeof(T)); // nothing in the file need be aligned
    return true;
}

std::string ElfFile::Read()
{
    if (m_bytes.empty())
        return "is empty";
    const size_t seen = std::min<size_t>(m_bytes.size(), SELFMAG);
    if (std::memcmp(m_bytes.data(), ELFMAG, seen) != 0)
        return kNoLibrary;
    if (!ReadAt(0, m_header))
        return kCutShort;
    for (const auto step : {&ElfFile::CheckHeader, &ElfFile::CheckSections})
        if (std::string wrong = (this->*step)(); !wrong.empty())
            return wrong;
    return ReadSegments();
}

std::string ElfFile::CheckHeader() const
{
    const bool ours = m_header.e_ident[EI_CLASS] == ELFCLASS64 && m_header.e_ident[EI_DATA] == kByteOrder &&
                      m_header.e_type == ET_DYN && m_header.e_machine == kMachine &&
                      m_header.e_phentsize == sizeof(Elf64_Phdr) && m_header.e_phnum > 0;
    return ours ? "" : kNoLibrary;
}

std::string ElfFile::CheckSections() const
{
    // The loader does not read sections, but they stand at the end of the file, so they show that the end is there.
    if (m_header.e_shoff == 0 || m_header.e_shnum == 0)
        return "";
    if (m_header.e_shentsize != sizeof(Elf64_Shdr))
        return kNoLibrary;
    for (std::uint64_t i = 0; i < m_header.e_shnum; ++i) {
        Elf64_Shdr section;
        if (!ReadAt(m_header.e_shoff + i * sizeof(section), section))
            return kCutShort;
        if (section.sh_type != SHT_NOBITS && section.sh_type != SHT_NULL && !Holds(section.sh_offset, section.sh_size))
            return kCutShort;
    }
    return "";
}

std::string ElfFile::ReadSegments()
{
    Elf64_Phdr dynamic{};
    for (std::uint64_t i = 0; i < m_header.e_phnum; ++i) {
        Elf64_Phdr segment;
        if (!ReadAt(m_header.e_phoff + i * sizeof(segment), segment) || !Holds(segment.p_offset, segment.p_filesz))
            return kCutShort;
        if (segment.p_type == PT_DYNAMIC)
            dynamic = segment;
        if (segment.p_type == PT_LOAD) {
            m_loads.push_back(segment);
            m_parts.push_back(m_bytes.subspan(segment.p_offset, segment.p_filesz));
        }
    }
    return dynamic.p_type == PT_DYNAMIC ? ReadDynamic(dynamic) : kNoLibrary;
}

std::string ElfFile::ReadDynamic(const Elf64_Phdr& segment)
{
    DynamicTables tables;
    for (std::uint64_t at = 0; at + sizeof(Elf64_Dyn) <= segment.p_filesz; at += sizeof(Elf64_Dyn)) {
        Elf64_Dyn entry;
        if (!ReadAt(segment.p_offset + at, entry))
            return kCutShort;
        switch (entry.d_tag) {
        case DT_NULL:
            return ReadSymbols(tables);
        case DT_SYMTAB:
            tables.symbols = entry.d_un.d_ptr;
            break;
        case DT_STRTAB:
            tables.strings = entry.d_un.d_ptr;
            break;
        case DT_STRSZ:
            tables.stringBytes = entry.d_un.d_val;
            break;
        case DT_HASH:
            tables.hash = entry.d_un.d_ptr;
            break;
        case DT_GNU_HASH:
            tables.gnuHash = entry.d_un.d_ptr;
            break;
        default:
            break;
        }
    }
    return ReadSymbols(tables);
}

std::optional<std::uint64_t> ElfFile::FileOffset(std::uint64_t address) const
{
    for (const Elf64_Phdr& load : m_loads)
        if (address >= load.p_vaddr && address - load.p_vaddr < load.p_filesz)
            return load.p_offset + (address - load.p_vaddr);
    return std::nullopt;
}

/// A dynamic symbol table does not say how long it is; the hash tables that index it do.
std::uint64_t ElfFile::CountSymbols(const DynamicTables& tables) const
{
    if (const auto offset = FileOffset(tables.hash); tables.hash != 0 && offset) {
        std::uint32_t chains = 0;
        return ReadAt(*offset + sizeof(chains), chains) ? chains : 0;
    }
    return tables.gnuHash != 0 ? CountGnuSymbols(tables.gnuHash) : 0;
}

/// The last symbol is the end of the chain that begins at the largest bucket; a chain's last hash is odd.
std::uint64_t ElfFile::CountGnuSymbols(std::uint64_t table) const
{
    const auto offset = FileOffset(table);
    std::uint32_t head[4] = {0, 0, 0, 0}; // buckets, first symbol, words of the filter, shift
    if (!offset || !ReadAt(*offset, head))
        return 0;
    const std::uint64_t buckets = *offset + sizeof(head) + std::uint64_t{head[2]} * sizeof(std::uint64_t);
    if (!HoldsTable(buckets, head[0], sizeof(std::uint32_t)))
        return 0;
    std::uint64_t last = 0;
    for (std::uint64_t i = 0; i < head[0]; ++i) {
        std::uint32_t first = 0;
        if (!ReadAt(buckets + i * sizeof(first), first))
            return 0;
        last = std::max<std::uint64_t>(last, first);
    }
    if (last < head[1])
        return 0;
    const std::uint64_t hashes = buckets + std::uint64_t{head[0]} * sizeof(std::uint32_t);
    for (;; ++last) {
        std::uint32_t hash = 0;
        if (!ReadAt(hashes + (last - head[1]) * sizeof(hash), hash))
            return 0;
        if ((hash & 1) != 0)
            return last + 1;
    }
}

std::string ElfFile::ReadSymbols(const DynamicTables& tables)
{
    const auto symbols = FileOffset(tables.symbols);
    const auto strings = FileOffset(tables.strings);
    const std::uint64_t count = CountSymbols(tables);
    if (!symbols || !strings || count == 0)
        return ""; // it defines nothing
    if (!HoldsTable(*symbols, count, sizeof(Elf64_Sym)) || !Holds(*strings, tables.stringBytes))
        return kCutShort;
    const std::string_view texts(reinterpret_cast<const char*>(m_bytes.data()) + *strings, tables.stringBytes);
    for (std::uint64_t i = 0; i < count; ++i) {
        Elf64_Sym symbol;
        if (!ReadAt(*symbols + i * sizeof(symbol), symbol) || symbol.st_name >= texts.size())
            continue;
        if (symbol.st_shndx == SHN_UNDEF || ELF64_ST_TYPE(symbol.st_info) != STT_FUNC)
            continue;
        const std::string_view rest = texts.substr(symbol.st_name);
        m_functions.emplace(rest.substr(0, rest.find('\0')));
    }
    return "";
}
