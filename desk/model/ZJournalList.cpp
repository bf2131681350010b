// SPDX-License-Identifier: MIT
// One line a copy: seconds, copy and original, parted by tabs. In names, the signs that part lines and fields, and the
// percent sign itself, stand as percent and two digits.
#include "desk/model/ZJournalList.h"

#include "desk/model/ZJournal.h"

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

constexpr char kListName[] = "unsaved";

std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char letter : text) {
        if (letter == '%' || static_cast<unsigned char>(letter) < 0x20) {
            char code[4];
            std::snprintf(code, sizeof code, "%%%02x", static_cast<unsigned>(static_cast<unsigned char>(letter)));
            escaped += code;
        } else {
            escaped += letter;
        }
    }
    return escaped;
}

std::string Unescaped(const std::string& text)
{
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned code = 0;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(&text[i + 1], &text[i + 3], code, 16).ptr == &text[i + 3]) {
            plain += static_cast<char>(code);
            i += 2;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

/// Is `file` a file under `folder`? A damaged list must not make us open or offer what is not ours.
bool LiesUnder(const fs::path& file, const fs::path& folder)
{
    std::error_code failed;
    const fs::path relative = fs::relative(file, folder, failed);
    return !failed && !relative.empty() && *relative.begin() != ".." && fs::is_regular_file(file, failed);
}

} // namespace

bool ZJournalList_Write(const std::string& folder, const std::vector<ZLeftDocument>& lines)
{
    const fs::path list = fs::path(folder) / kListName, fresh = fs::path(folder) / (std::string(kListName) + ".new");
    std::ofstream out(fresh, std::ios::binary | std::ios::trunc);
    for (const ZLeftDocument& line : lines)
        out << line.seconds << '\t' << Escaped(line.copy) << '\t' << Escaped(line.original) << '\n';
    out.close();
    std::error_code failed;
    if (out)
        fs::rename(fresh, list, failed);
    return out && !failed;
}

std::vector<ZLeftDocument> ZJournalList_Read(const std::string& folder)
{
    std::vector<ZLeftDocument> lines;
    std::ifstream in(fs::path(folder) / kListName, std::ios::binary);
    for (std::string line; std::getline(in, line);) {
        const size_t first = line.find('\t'), second = line.find('\t', first + 1);
        if (first == std::string::npos || second == std::string::npos)
            continue;
        ZLeftDocument left;
        left.session = folder;
        std::from_chars(line.data(), line.data() + first, left.seconds);
        left.copy = Unescaped(line.substr(first + 1, second - first - 1));
        left.original = Unescaped(line.substr(second + 1));
        if (LiesUnder(left.copy, folder))
            lines.push_back(std::move(left));
    }
    return lines;
}

void ZJournalList_Remove(const std::string& folder)
{
    std::error_code ignored;
    fs::remove(fs::path(folder) / kListName, ignored);
}
