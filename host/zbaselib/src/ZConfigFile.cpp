// SPDX-License-Identifier: MIT
// Reading configuration files, and writing changes back without losing what stands around them.
#include "zbaselib/ZConfigFile.h"

#include "zbaselib/ZReport.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {
// A settings file is text that somebody typed; one that is larger is something else.
constexpr std::uintmax_t kLargestFile = 16u << 20;

std::string& Folder()
{
    static std::string& folder = *new std::string;
    return folder;
}

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string ResolvePath(const char* name)
{
    const std::string_view text = name != nullptr ? name : "";
    if (text.empty() || text[0] != '@')
        return std::string(text);
    if (Folder().empty())
        return {};
    // The file may be called with the sign or without it; a new one is called with it.
    const std::string plain = Folder() + "/" + std::string(text.substr(1));
    const std::string signedName = Folder() + "/" + std::string(text);
    std::error_code error;
    const bool onlyPlain = !std::filesystem::exists(signedName, error) && std::filesystem::exists(plain, error);
    return onlyPlain ? plain : signedName;
}

std::string ReadFile(const std::string& path)
{
    std::error_code error;
    if (path.empty() || !std::filesystem::is_regular_file(path, error))
        return {};
    if (std::filesystem::file_size(path, error) > kLargestFile || error) {
        ZReport_Warning(path + ": larger than a configuration file can be; it is passed over");
        return {};
    }
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// What one line says.
struct Line
{
    enum class Kind
    {
        Other,
        Section,
        Value
    };
    Kind kind = Kind::Other;
    std::string_view name; ///< of the section or the key
    std::string_view value;
};

Line ReadLine(std::string_view text)
{
    text = Trimmed(text);
    if (text.empty() || text[0] == ';' || text[0] == '#')
        return {};
    if (text.front() == '[')
        return text.back() == ']' ? Line{Line::Kind::Section, Trimmed(text.substr(1, text.size() - 2)), {}} : Line{};
    const size_t equals = text.find('=');
    if (equals == std::string_view::npos || Trimmed(text.substr(0, equals)).empty())
        return {};
    return {Line::Kind::Value, Trimmed(text.substr(0, equals)), Trimmed(text.substr(equals + 1))};
}

std::vector<std::string_view> SplitLines(std::string_view text)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark)
        text.remove_prefix(byteOrderMark.size());
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return lines;
}

bool ReadNumber(std::string_view text, float& number)
{
    if (!text.empty() && text[0] == '+')
        text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && std::isfinite(number);
}

using Sections = std::map<std::string, std::map<std::string, std::string>>;

/// The text of a file with `changes` in it: known keys in place, new keys at the end of their section.
std::string MergedText(const std::string& text, Sections changes)
{
    std::string merged;
    std::string section;
    const auto writeNewKeys = [&merged, &changes](const std::string& name) {
        const auto found = changes.find(name);
        if (found == changes.end())
            return;
        for (const auto& [key, value] : found->second)
            merged += key + "=" + value + "\n";
        changes.erase(found);
    };
    // A section that is opened twice takes its new keys at its first end, and a repeated key is replaced each time.
    const Sections all = changes;
    for (const std::string_view text_line : SplitLines(text)) {
        const Line line = ReadLine(text_line);
        if (line.kind == Line::Kind::Section) {
            writeNewKeys(section);
            section = line.name;
        }
        const auto changed = all.find(section);
        const std::string key(line.name);
        if (line.kind != Line::Kind::Value || changed == all.end() || changed->second.count(key) == 0) {
            merged.append(text_line).append("\n");
            continue;
        }
        merged += key + "=" + changed->second.at(key) + "\n";
        if (const auto open = changes.find(section); open != changes.end())
            open->second.erase(key);
    }
    writeNewKeys(section);
    for (const auto& [name, values] : Sections(changes)) {
        if (values.empty())
            continue;
        merged += "[" + name + "]\n";
        writeNewKeys(name);
    }
    return merged;
}
} // namespace

void ZConfigFile_SetFolder(const std::string& folder) { Folder() = folder; }
const std::string& ZConfigFile_GetFolder() { return Folder(); }

ZConfigFile::ZConfigFile(const char* name, bool create, bool writeBack)
    : m_path(ResolvePath(name)), m_writeBack(writeBack)
{
    std::error_code error;
    if (create && !m_path.empty() && !std::filesystem::exists(m_path, error))
        std::ofstream(m_path, std::ios::binary);
    ReadText(ReadFile(m_path));
}

ZConfigFile::~ZConfigFile()
{
    if (m_writeBack && !m_changes.empty() && !m_path.empty())
        WriteBack();
}

void ZConfigFile::ReadText(std::string_view text)
{
    std::string section;
    for (const std::string_view text_line : SplitLines(text)) {
        const Line line = ReadLine(text_line);
        if (line.kind == Line::Kind::Section)
            section = line.name;
        else if (line.kind == Line::Kind::Value)
            m_sections[section][std::string(line.name)] = line.value;
    }
}

const std::string* ZConfigFile::Find(const char* section, const char* key) const
{
    const auto inSection = m_sections.find(section != nullptr ? section : "");
    if (inSection == m_sections.end())
        return nullptr;
    const auto value = inSection->second.find(key != nullptr ? key : "");
    return value == inSection->second.end() ? nullptr : &value->second;
}

float ZConfigFile::Get(const char* section, const char* key, float defaultValue) const
{
    const std::string* text = Find(section, key);
    if (text == nullptr)
        return defaultValue;
    float number = 0;
    if (ReadNumber(*text, number))
        return number;
    const std::string place = "[" + std::string(section) + "] " + key;
    if (m_said.insert(place).second)
        ZReport_Warning(m_path + ": " + place + " is \"" + *text + "\", which is no number; the default is used");
    return defaultValue;
}

std::string ZConfigFile::Get(const char* section, const char* key, const char* defaultValue) const
{
    const std::string* text = Find(section, key);
    return text != nullptr ? *text : std::string(defaultValue != nullptr ? defaultValue : "");
}

void ZConfigFile::Set(const char* section, const char* key, const std::string& value)
{
    if (section == nullptr || key == nullptr || *key == '\0') {
        ZReport_Misuse("ZConfigFile::Set", "a value needs a section and a key");
        return;
    }
    std::string line = value;
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    line = Trimmed(line);
    if (const std::string* present = Find(section, key); present != nullptr && *present == line)
        return;
    m_sections[section][key] = line;
    m_changes[section][key] = line;
    m_said.erase("[" + std::string(section) + "] " + key);
}

void ZConfigFile::WriteBack() const
{
    // Written beside the file and renamed over it, so that a full disk leaves the old settings whole.
    const std::string unfinished = m_path + ".new";
    std::ofstream file(unfinished, std::ios::binary | std::ios::trunc);
    file << MergedText(ReadFile(m_path), m_changes);
    file.close();
    std::error_code error;
    if (file)
        std::filesystem::rename(unfinished, m_path, error);
    if (!file || error) {
        ZReport_Warning(m_path + ": the settings could not be written");
        std::filesystem::remove(unfinished, error);
    }
}
