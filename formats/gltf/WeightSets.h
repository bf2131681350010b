// SPDX-License-Identifier: MIT
// Writes the JOINTS_n and WEIGHTS_n of one attribute object: in place where they fit, else as new accessors.
#pragma once

#include "FileRewrite.h"
#include "Reading.h"
#include "SharedBytes.h"
#include "WeightRows.h"

#include <span>
#include <vector>

namespace skindesk::gltf {

// One set of vertices whose influences may be written: the primitives of one mesh that name the same accessors, a NURBS
// surface's control points, or the stand-in that shows it.
struct WeightTarget
{
    std::vector<JsonValue> attributeObjects;  // all of them name the same joints and weights
    std::vector<JsonValue> compressedObjects; // beside each: the same names as a compressed primitive has them, or none
    AttributeAccessors accessors;             // of the first
    std::size_t vertexCount = 0;
    std::span<const std::int32_t> deskVertices; // file vertex -> row owner; empty: vertex i is row owner i
    bool mayOverwrite = false;                  // no other mesh entry needs the old values
};

struct WeightSetOptions
{
    bool keepTypes = false;
    int mostSets = 0; // 0: as many as needed; else further sets are removed
};

// Writes the rows of `rows` to the target. `splice` takes the changes to its attribute objects: the file's own, or that
// of a copy of the mesh entry. Joints and weights that are compressed in the file are written plain beside what stays
// compressed; answers in how many primitives that was so.
std::size_t WriteWeightSets(FileRewrite& rewrite, const SharedBytes& shared, JsonSplice& splice,
                            const WeightTarget& target, const WeightRows& rows, const WeightSetOptions& options);

} // namespace skindesk::gltf
