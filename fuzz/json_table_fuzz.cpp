// SPDX-License-Identifier: MIT
// Any bytes as a weight table in JSON: they are refused in one line, or read; what was read is written and read again
// the same, as JSON and as CSV.
#include "Require.h"
#include "SameTable.h"
#include "documents/ZWeightTable.h"
#include "gltf/FileError.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace {

// A model without rows has no line in CSV.
ZWeightTable WithoutEmptyModels(ZWeightTable table)
{
    std::erase_if(table, [](const auto& entry) { return entry.second.empty(); });
    return table;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    try {
        const ZWeightTable table = ZWeightTable_FromJson({reinterpret_cast<const char*>(data), size}, "fuzz.json");
        for (const auto& [model, rows] : table)
            for (const ZWeightRow& row : rows)
                Require(row.vertex >= 0 && std::isfinite(row.weight) && row.weight >= 0);
        Require(IsSame(ZWeightTable_FromJson(ZWeightTable_ToJson(table), "again.json"), table));
        Require(IsSame(WithoutEmptyModels(ZWeightTable_FromCsv(ZWeightTable_ToCsv(table), "again.csv")),
                       WithoutEmptyModels(table)));
    } catch (const skindesk::gltf::FileError& error) {
        Require(error.path() == "fuzz.json" && std::string(error.what()).find('\n') == std::string::npos);
    }
    return 0;
}
