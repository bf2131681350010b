// SPDX-License-Identifier: MIT
// Weight tables as CSV and JSON text.
#include "documents/ZWeightTable.h"
#include "gltf/FileError.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

using skindesk::gltf::FileError;

namespace {

constexpr char kHeader[] = "model,vertex,bone,weight";

std::string NumberText(double value)
{
    char text[40];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return {text, end};
}

std::string CsvField(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"')
            quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

/// Reads fields and lines; quoted fields may hold line breaks.
class CsvReader
{
public:
    CsvReader(std::string_view text, const std::string& path) : m_text(text), m_path(path) {}

    bool AtEnd() const { return m_at >= m_text.size(); }
    std::string Where() const { return "line " + std::to_string(m_line); }

    std::vector<std::string> ReadLine()
    {
        m_line = m_next;
        std::vector<std::string> fields;
        bool more = true;
        while (more) {
            fields.push_back(ReadField());
            more = !AtEnd() && m_text[m_at] == ',';
            if (more)
                ++m_at;
        }
        EndLine();
        return fields;
    }

private:
    std::string ReadField()
    {
        if (AtEnd() || m_text[m_at] != '"') {
            const size_t end = std::min(m_text.find_first_of(",\r\n", m_at), m_text.size());
            std::string field(m_text.substr(m_at, end - m_at));
            m_at = end;
            return field;
        }
        std::string field;
        for (++m_at; !AtEnd(); ++m_at) {
            if (m_text[m_at] == '"') {
                if (m_at + 1 >= m_text.size() || m_text[m_at + 1] != '"') {
                    ++m_at;
                    return field;
                }
                ++m_at;
            }
            if (m_text[m_at] == '\n')
                ++m_next;
            field += m_text[m_at];
        }
        throw FileError(m_path, Where(), "a quoted field has no end");
    }

    void EndLine()
    {
        if (!AtEnd() && m_text[m_at] == '\r')
            ++m_at;
        if (!AtEnd() && m_text[m_at] != '\n')
            throw FileError(m_path, Where(), "there is text after a quoted field");
        if (!AtEnd())
            ++m_at;
        ++m_next;
    }

    std::string_view m_text;
    const std::string& m_path;
    size_t m_at = 0;
    int m_line = 1;
    int m_next = 1;
};

template <class Number> bool ParseNumber(const std::string& text, Number& value)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

void CheckRow(const ZWeightRow& row, const std::string& path, const std::string& where)
{
    if (row.vertex < 0)
        throw FileError(path, where, "vertex " + std::to_string(row.vertex) + " is negative");
    if (!std::isfinite(row.weight) || row.weight < 0)
        throw FileError(path, where, "weight " + NumberText(row.weight) + " is not a finite number of at least 0");
}

ZWeightRow ParseCsvRow(const std::vector<std::string>& fields, const std::string& path, const std::string& where)
{
    if (fields.size() != 4)
        throw FileError(path, where, "has " + std::to_string(fields.size()) + " fields instead of 4 (" + kHeader + ")");
    ZWeightRow row;
    row.bone = fields[2];
    if (!ParseNumber(fields[1], row.vertex))
        throw FileError(path, where, "\"" + fields[1] + "\" is not a vertex number");
    if (!ParseNumber(fields[3], row.weight))
        throw FileError(path, where, "\"" + fields[3] + "\" is not a weight");
    CheckRow(row, path, where);
    return row;
}

ZWeightRow ParseJsonRow(const nlohmann::json& value, const std::string& path, const std::string& where)
{
    if (!value.is_array() || value.size() != 3 || !value[0].is_number_integer() || !value[1].is_string() ||
        !value[2].is_number())
        throw FileError(path, where, "is not [vertex, bone, weight]");
    ZWeightRow row;
    const auto vertex = value[0].get<std::int64_t>();
    if (vertex < 0 || vertex > std::numeric_limits<int>::max())
        throw FileError(path, where, "vertex " + std::to_string(vertex) + " is out of range");
    row.vertex = static_cast<int>(vertex);
    row.bone = value[1].get<std::string>();
    row.weight = value[2].get<double>();
    CheckRow(row, path, where);
    return row;
}

} // namespace

std::string ZWeightTable_ToCsv(const ZWeightTable& table)
{
    std::string text = std::string(kHeader) + "\n";
    for (const auto& [model, rows] : table) {
        const std::string name = CsvField(model);
        for (const ZWeightRow& row : rows)
            text += name + ',' + std::to_string(row.vertex) + ',' + CsvField(row.bone) + ',' + NumberText(row.weight) +
                    '\n';
    }
    return text;
}

std::string ZWeightTable_ToJson(const ZWeightTable& table)
{
    nlohmann::json models = nlohmann::json::object();
    for (const auto& [model, rows] : table) {
        nlohmann::json& list = models[model] = nlohmann::json::array();
        for (const ZWeightRow& row : rows)
            list.push_back({row.vertex, row.bone, row.weight});
    }
    const nlohmann::json whole = {{"skindesk-weights", 1}, {"models", models}};
    return whole.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

ZWeightTable ZWeightTable_FromCsv(std::string_view text, const std::string& path, const std::stop_token& stop)
{
    if (text.substr(0, 3) == "\xEF\xBB\xBF")
        text.remove_prefix(3); // spreadsheet programs write this mark in front of UTF-8
    ZWeightTable table;
    CsvReader reader(text, path);
    if (reader.AtEnd())
        throw FileError(path, "", "is empty");
    const std::vector<std::string> header = reader.ReadLine();
    if (header != std::vector<std::string>{"model", "vertex", "bone", "weight"})
        throw FileError(path, "line 1", std::string("is not the header ") + kHeader);
    while (!reader.AtEnd()) {
        if (stop.stop_requested())
            throw FileError(path, reader.Where(), "was not read any further: stopped");
        const std::vector<std::string> fields = reader.ReadLine();
        if (fields.size() == 1 && fields[0].empty())
            continue; // a blank line
        table[fields[0]].push_back(ParseCsvRow(fields, path, reader.Where()));
    }
    return table;
}

ZWeightTable ZWeightTable_FromJson(std::string_view text, const std::string& path)
{
    nlohmann::json whole;
    try {
        whole = nlohmann::json::parse(text);
    } catch (const nlohmann::json::exception& error) {
        throw FileError(path, "", std::string("is no JSON: ") + error.what());
    }
    if (!whole.is_object() || !whole.contains("skindesk-weights") || whole["skindesk-weights"] != 1)
        throw FileError(path, "/skindesk-weights", "is not 1: this is no table of weights that we know");
    if (!whole.contains("models") || !whole["models"].is_object())
        throw FileError(path, "/models", "is not an object of lists");
    ZWeightTable table;
    for (const auto& [model, rows] : whole["models"].items()) {
        const std::string where = "/models/" + model;
        if (!rows.is_array())
            throw FileError(path, where, "is not a list");
        std::vector<ZWeightRow>& list = table[model];
        for (const auto& row : rows)
            list.push_back(ParseJsonRow(row, path, where + "/" + std::to_string(list.size())));
    }
    return table;
}
