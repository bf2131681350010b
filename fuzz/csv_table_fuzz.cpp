// SPDX-License-Identifier: MIT
// Any bytes as a weight table in CSV: they are refused in one line, or read; what was read is written and read again
// the same, in CSV whatever the names hold.
#include "Require.h"
#include "SameTable.h"
#include "documents/ZWeightTable.h"
#include "gltf/FileError.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    try {
        const ZWeightTable table = ZWeightTable_FromCsv({reinterpret_cast<const char*>(data), size}, "fuzz.csv");
        for (const auto& [model, rows] : table)
            for (const ZWeightRow& row : rows)
                Require(row.vertex >= 0 && std::isfinite(row.weight) && row.weight >= 0);
        Require(IsSame(ZWeightTable_FromCsv(ZWeightTable_ToCsv(table), "again.csv"), table));
    } catch (const skindesk::gltf::FileError& error) {
        Require(error.path() == "fuzz.csv" && std::string(error.what()).find('\n') == std::string::npos);
    }
    return 0;
}
