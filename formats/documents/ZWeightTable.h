// SPDX-License-Identifier: MIT
// Weights as a table of text, for studios that use other tools beside this one.
#pragma once

#include <map>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

/// One influence of one vertex. The weight is a fraction of one, finite and not negative.
struct ZWeightRow
{
    int vertex = 0;   ///< counted from 0, the desk's vertices
    std::string bone; ///< the bone's name, or its path where names are not unique in the skin
    double weight = 0;
};

/// Rows by model path. A vertex that has no weight stands in the table as one row with an empty bone and weight 0.
using ZWeightTable = std::map<std::string, std::vector<ZWeightRow>>;

/// CSV: the header line `model,vertex,bone,weight`, then a line a row; fields with commas, quotes or line breaks stand
/// in double quotes. Numbers have a decimal point and as many digits as name the number exactly.
std::string ZWeightTable_ToCsv(const ZWeightTable& table);
/// JSON: {"skindesk-weights": 1, "models": {PATH: [[vertex, bone, weight], ...]}}.
std::string ZWeightTable_ToJson(const ZWeightTable& table);
/// `path` is named in errors only. Throws skindesk::gltf::FileError with the line (CSV) or the place (JSON), and when a
/// stop is asked for while lines are read.
ZWeightTable ZWeightTable_FromCsv(std::string_view text, const std::string& path, const std::stop_token& stop = {});
ZWeightTable ZWeightTable_FromJson(std::string_view text, const std::string& path);
