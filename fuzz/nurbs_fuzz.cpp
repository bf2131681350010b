// SPDX-License-Identifier: MIT
// Any bytes as the JSON of the extension TW_nurbs_surface, in a file that is well otherwise: it is refused in one line,
// or read; then the surface can be evaluated, edited, saved with its seams tied, and read again.
#include "Require.h"
#include "ScratchFolder.h"
#include "gltf/CharacterFile.h"
#include "gltf/NurbsStandIn.h"
#include "zmodel/ZGeometryModels.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using namespace skindesk::gltf;

// Accessors 0 to 3 have six elements (places, weights of points, joints, weights), 4 to 6 have four (places of the
// stand-in, its joints and weights); all lie in 144 bytes of which each is 64: as a float 3.0, as a joint 64.
std::string FileWith(std::string_view extension)
{
    const auto accessor = [](const char* type, int component, int count) {
        return "{\"bufferView\":0,\"componentType\":" + std::to_string(component) + ",\"type\":\"" + type +
               "\",\"count\":" + std::to_string(count) + "}";
    };
    std::string digits;
    for (int i = 0; i < 48; ++i) {
        digits += "QEBA";
    }
    std::string joints = "2";
    std::string nodes = "{\"mesh\":0,\"skin\":0},{}";
    for (int i = 2; i <= 66; ++i) {
        nodes += ",{}";
        joints += i == 2 ? "" : "," + std::to_string(i);
    }
    return "{\"asset\":{\"version\":\"2.0\"},\"nodes\":[" + nodes + "],\"skins\":[{\"joints\":[" + joints +
           "]}],\"buffers\":[{\"byteLength\":144,\"uri\":\"data:;base64," + digits +
           "\"}],\"bufferViews\":[{\"buffer\":0,\"byteLength\":144}],\"accessors\":[" + accessor("VEC3", 5126, 6) +
           "," + accessor("SCALAR", 5126, 6) + "," + accessor("VEC4", 5121, 6) + "," + accessor("VEC4", 5126, 6) + "," +
           accessor("VEC3", 5126, 4) + "," + accessor("VEC4", 5121, 4) + "," + accessor("VEC4", 5126, 4) +
           "],\"meshes\":[{\"primitives\":[{\"attributes\":{\"POSITION\":4,\"JOINTS_0\":5,\"WEIGHTS_0\":6}}]," +
           "\"extensions\":{\"TW_nurbs_surface\":" + std::string(extension) + "}}]}";
}

void Evaluate(const Mesh& mesh)
{
    const NurbsSurface& from = *mesh.nurbs;
    ZNurbsSurface surface;
    surface.degreeU = from.degree[0];
    surface.degreeV = from.degree[1];
    surface.countU = from.count[0];
    surface.countV = from.count[1];
    surface.knotsU = from.knots[0];
    surface.knotsV = from.knots[1];
    surface.points.assign(mesh.positions.begin(), mesh.positions.end());
    surface.weights = from.pointWeights;
    ZModelNurbs model("fuzz");
    Require(model.SetSurface(surface, from.grid[0], from.grid[1]));
}

void EditAndSave(const CharacterFile& file)
{
    const Mesh& mesh = file.meshes[0];
    ModelWeights weights{0, {0}, {}, {}};
    for (std::size_t point = 0; point < mesh.VertexCount(); ++point) {
        weights.joints.push_back(static_cast<std::uint32_t>(point) % 3);
        weights.weights.push_back(1);
        weights.offsets.push_back(static_cast<std::uint32_t>(weights.joints.size()));
    }
    SaveOptions options;
    options.tieSeams = true;
    const std::string path = ScratchFolder() + "/fuzz.gltf";
    static_cast<void>(WriteCharacter(file, {{weights}, {}}, options, path));
    const CharacterFile saved = ReadCharacter(path);
    Require(saved.meshes[0].nurbs.has_value());
    // All control points lie at one place, so all got what the first one has.
    const Influences& influences = saved.meshes[0].influences;
    for (const std::uint32_t joint : influences.joints) {
        Require(joint == 0);
    }
    Require(influences.joints.size() == mesh.VertexCount());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    const std::string text = FileWith({reinterpret_cast<const char*>(data), size});
    CharacterFile file;
    try {
        file = ReadCharacter({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()},
                             ScratchFolder() + "/in/fuzz.gltf");
    } catch (const FileError& error) {
        Require(std::string(error.what()).find('\n') == std::string::npos);
        return 0;
    }
    if (file.meshes.empty() || !file.meshes[0].nurbs || file.nodes.empty() || file.nodes[0].skin < 0) {
        return 0;
    }
    Evaluate(file.meshes[0]);
    EditAndSave(file);
    return 0;
}
