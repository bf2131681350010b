// SPDX-License-Identifier: MIT
// Configuration files: sections and keys.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

/// Sets the folder in which names that begin with "@" are looked up; an empty text means none. "@Application.txt" is
/// the file of that name in the folder, else the one called "Application.txt".
void ZConfigFile_SetFolder(const std::string& folder);
const std::string& ZConfigFile_GetFolder();

/// A configuration file as it stood when it was opened. Lines `[Section]`, then `Key=value`; blank lines and lines that
/// begin with ';' or '#' are passed over. Numbers have a decimal point in every locale. A file that cannot be read
/// counts as empty; a value that is no finite number counts as missing and is said once in the host's report.
/// A later key of one section replaces an earlier one.
class ZConfigFile
{
public:
    /// `name` that begins with "@" lies in the configuration folder. The two flags ask for creating a missing file and
    /// for writing changes back at the end; neither happens when they are false.
    ZConfigFile(const char* name, bool create, bool writeBack);
    ~ZConfigFile();
    ZConfigFile(const ZConfigFile&) = delete;
    ZConfigFile& operator=(const ZConfigFile&) = delete;

    float Get(const char* section, const char* key, float defaultValue) const;
    std::string Get(const char* section, const char* key, const char* defaultValue) const;
    /// Line breaks in a value become spaces.
    void Set(const char* section, const char* key, const std::string& value);
    /// Takes in lines as if they stood at the end of the file. Any bytes are welcome.
    void ReadText(std::string_view text);

private:
    const std::string* Find(const char* section, const char* key) const;
    void WriteBack() const;

    std::string m_path;
    bool m_writeBack = false;
    std::map<std::string, std::map<std::string, std::string>> m_sections;
    std::map<std::string, std::map<std::string, std::string>> m_changes; ///< what Set was told and the file lacks
    mutable std::set<std::string> m_said;                                ///< keys whose value was reported
};
