// SPDX-License-Identifier: MIT
// A glTF character as plain records, and the lossless way back into its file.
//
// ReadCharacter turns a .glb or .gltf file into a CharacterFile: nodes, meshes, skins and animations as arrays that
// know no scene. WriteCharacter takes the same CharacterFile and the weights as they are now, and writes the opened
// file again with only its skin data changed; every other byte stays. The opened file stays the ground on which every
// saving builds: a weight that is back at its opened value is back at its opened bytes, and saving twice writes the
// same bytes twice. Nothing in a CharacterFile is changed by saving.
//
// Numbers are those of the file (accessor and node indices count from 0, -1 means "none"). Matrices are 16 numbers in
// the order in which the file lists them, which read row by row is a matrix for row vectors with the translation in
// the fourth row. Bytes of the file are never trusted: whatever stands in these records has been checked.
#pragma once

#include "FileError.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

namespace skindesk::gltf {

struct Node
{
    std::string name;          // UTF-8 as the file has it; may be empty, hold control characters, or not be unique
    int parent = -1;           // at most one; the parents form no cycle
    std::vector<int> children; // in the file's order
    int mesh = -1;
    int skin = -1;          // set only where mesh is set
    bool hasMatrix = false; // the file gives `matrix`; then translation, rotation and scale are the identity's
    std::array<double, 3> translation{0, 0, 0};
    std::array<double, 4> rotation{0, 0, 0, 1}; // quaternion x y z w, as the file has it (not always of length one)
    std::array<double, 3> scale{1, 1, 1};
    std::array<double, 16> matrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}; // local, always filled
    std::vector<double> morphWeights;                                              // empty: the mesh's own
};

struct Scene
{
    std::string name;
    std::vector<int> nodes;
};

// Who pulls a vertex: three arrays, row d being the entries [offsets[d], offsets[d + 1]).
// Joints ascend within a row and are unique; a weight of 0 is no entry; a weight may be negative, infinite or not a
// number where the file says so. Joints are positions in the skin's joint list.
struct Influences
{
    std::vector<std::uint32_t> offsets{0}; // one more than there are vertices
    std::vector<std::uint32_t> joints;
    std::vector<float> weights;

    [[nodiscard]] std::size_t VertexCount() const { return offsets.size() - 1; }
};

// One attribute set of a mesh, and which desk vertex each of its vertices became.
// Primitives that name the same accessors share one.
struct VertexMap
{
    std::vector<std::int32_t> deskVertices; // file vertex -> desk vertex
};

struct Primitive
{
    int vertexMap = 0; // index into Mesh::vertexMaps
    int material = -1;
    std::size_t firstTriangle = 0; // its triangles are [firstTriangle, firstTriangle + triangleCount) of the mesh
    std::size_t triangleCount = 0; // 0 for points and lines
    bool standIn = false;          // shows a NURBS surface to other programs; has no desk vertices and no triangles
};

struct MorphTarget
{
    std::vector<float> positions; // displacements, 3 per desk vertex; empty when the target moves none
};

// The surface of the extension TW_nurbs_surface: the mesh's desk vertices are its control points, U fastest.
struct NurbsSurface
{
    std::array<int, 2> degree{};              // in U and in V
    std::array<int, 2> count{};               // control points in U and in V
    std::array<std::vector<double>, 2> knots; // count + degree + 1 each, not descending
    std::vector<double> pointWeights;         // one per control point
    std::array<int, 2> grid{};                // vertices of the stand-in, evenly over the domain, U fastest
};

struct Mesh
{
    std::string name;
    std::vector<Primitive> primitives; // as in the file
    std::vector<VertexMap> vertexMaps; // empty for a NURBS surface
    std::vector<float> positions;      // 3 per desk vertex
    std::vector<float> normals; // 3 per desk vertex, unit or zero length: mean over the seam; empty: none in file
    std::vector<std::int32_t> triangles; // 3 desk vertices each
    std::vector<MorphTarget> morphTargets;
    std::vector<std::string> morphNames; // from extras.targetNames; may be shorter than morphTargets
    std::vector<double> morphWeights;    // the default ones; empty: all 0
    Influences influences;               // one row per desk vertex; all rows empty when the mesh has no joints
    int influenceSets = 0;               // the most JOINTS_n/WEIGHTS_n sets that one of its primitives has
    std::optional<NurbsSurface> nurbs;

    [[nodiscard]] std::size_t VertexCount() const { return positions.size() / 3; }
    // File vertex -> desk vertex of a primitive; empty for a stand-in.
    [[nodiscard]] std::span<const std::int32_t> FileVertices(std::size_t primitive) const
    {
        const Primitive& p = primitives.at(primitive);
        return p.standIn ? std::span<const std::int32_t>{}
                         : vertexMaps.at(static_cast<std::size_t>(p.vertexMap)).deskVertices;
    }
};

enum class DeformMode
{
    Normalise,
    Additive,
    Total100
};

struct Skin
{
    std::string name;
    std::vector<int> joints;                                 // node indices; a node may stand here twice
    std::vector<std::array<double, 16>> inverseBindMatrices; // one per joint; identities when the file has none
    int skeleton = -1;
    DeformMode mode = DeformMode::Normalise; // of extras.deformMode
};

enum class Interpolation
{
    Linear,
    Step,
    CubicSpline
};
enum class AnimatedProperty
{
    Translation,
    Rotation,
    Scale,
    MorphWeights
};

struct AnimationSampler
{
    std::vector<float> times;  // seconds, ascending
    std::vector<float> values; // per key as many as the property has (3, 4, 3, morph targets); cubic spline:
                               // in-tangent, value, out-tangent per key
    Interpolation interpolation = Interpolation::Linear;
};

struct AnimationChannel
{
    int sampler = 0;
    int node = 0;
    AnimatedProperty property = AnimatedProperty::Translation;
};

struct Animation
{
    std::string name;
    std::vector<AnimationSampler> samplers;
    std::vector<AnimationChannel> channels; // only those that move a node in one of the four ways
};

struct Material
{
    std::string name;
    std::array<double, 4> baseColour{1, 1, 1, 1}; // linear red, green, blue, alpha
    int baseColourImage = -1;
    int texCoord = 0;
};

struct Image
{
    std::string mimeType;
    std::string file;    // absolute path of an image beside the file; empty when embedded, or outside the folder
    int bufferView = -1; // an image in a buffer: see ImageBytes
};

class OpenedFile; // the bytes of the file and the place of each JSON value in them

struct CharacterFile
{
    std::string path; // as the caller gave it
    std::vector<std::string> warnings;
    std::vector<Scene> scenes;
    int defaultScene = -1;
    std::vector<Node> nodes;
    std::vector<Mesh> meshes;
    std::vector<Skin> skins;
    std::vector<Animation> animations;
    std::vector<Material> materials;
    std::vector<Image> images;
    std::shared_ptr<const OpenedFile> source; // what WriteCharacter writes again; shared, never changed
};

// Reads a .glb or .gltf file with the buffers that lie in its folder. Throws FileError; then nothing stays loaded.
// Looks at `stop` from mesh to mesh and gives up with a FileError.
[[nodiscard]] CharacterFile ReadCharacter(const std::string& path, const std::stop_token& stop = {});

// The same from bytes; `path` names them in errors and says in which folder buffers are looked for.
[[nodiscard]] CharacterFile ReadCharacter(std::span<const std::uint8_t> bytes, const std::string& path);

// The encoded picture (PNG, JPEG, ...) of an image, whether embedded or in a file. Throws FileError.
[[nodiscard]] std::vector<std::uint8_t> ImageBytes(const CharacterFile& file, int image);

// ---------------------------------------------------------------------------------------------------- saving

// All weights of one model as the desk has them now. A model is a node that shows a mesh and has a skin.
struct ModelWeights
{
    int node = -1;
    std::vector<std::uint32_t> offsets; // one more than the mesh has desk vertices
    std::vector<std::uint32_t> joints;  // positions in the skin's joints, added ones behind the file's; any order
    std::vector<double> weights;        // fractions (1 = the whole vertex)
};

// A bone that became a joint. Joints added to a skin are numbered behind the file's, in the order given here.
struct AddedJoint
{
    int skin = -1;
    int node = -1; // a node of this file
    std::array<double, 16> inverseBindMatrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};

struct CharacterEdits
{
    std::vector<ModelWeights> models; // models not named here have the weights of the file
    std::vector<AddedJoint> addedJoints;
};

struct SaveOptions
{
    std::optional<int> maxInfluences; // at least 1; absent: every influence is kept
    bool keepTypes = false;           // keep the component type of the weights; else edited primitives become float
    bool tieSeams = false;            // control points at one place get the weights of the first of them
    bool renormalise = false;         // edited vertices are scaled to a sum of one
    std::stop_token stop;             // looked at until the moment of saving: then FileError, and nothing has changed
};

// How a file lay on disk: enough to see that someone else has written it since.
struct FileStamp
{
    std::uint64_t size = 0;
    std::int64_t modifiedNanoseconds = 0;
    std::uint64_t contentHash = 0;
};

struct SaveReport
{
    std::uint64_t bytes = 0;         // of the saved file itself
    std::size_t verticesChanged = 0; // desk vertices whose weights differ from the file opened by more than 1e-6
    std::size_t verticesLimited = 0; // desk vertices that lost influences to maxInfluences
    double weightDropped = 0;        // what those influences weighed together
    std::vector<std::string> warnings;
    FileStamp stamp; // of the file as saved
};

// What limiting would drop: per model and joint, over the desk's vertices.
struct LimitLine
{
    int node = -1;
    std::uint32_t joint = 0; // position in the skin's joints
    std::size_t vertices = 0;
    double weight = 0;
};

// Weights within this of the opened file are unchanged, and their bytes stay.
inline constexpr double WEIGHT_TOLERANCE = 1e-6;

// Writes the opened file to `path` (which may be the opened one) with the weights of `edits`. Either the whole new file
// stands there afterwards, or FileError is thrown and what was there before is whole. The extension must be that of the
// opened file. A `.gltf` takes its buffers and images along into another folder; changed weights of a file with buffers
// of its own go to a buffer file `NAME.weights-HASH.bin` beside it.
// Weights that are moved in are given back to the system as soon as they are not needed any more.
// Throws FileError for the disk's and the file's troubles, std::invalid_argument for edits that name what is not there.
SaveReport WriteCharacter(const CharacterFile& opened, CharacterEdits edits, const SaveOptions& options,
                          const std::string& path);

// The influences that saving with `maxInfluences` would drop, by node and then joint. Writes nothing.
[[nodiscard]] std::vector<LimitLine> LimitReport(const CharacterFile& opened, const CharacterEdits& edits,
                                                 int maxInfluences);

// The file as it lay on disk when it was opened.
[[nodiscard]] FileStamp OpenedStamp(const CharacterFile& opened);

// Whether the file at `path` is no longer the one that `stamp` was taken of: its content differs, or it is gone.
[[nodiscard]] bool ChangedOnDisk(const std::string& path, const FileStamp& stamp);

} // namespace skindesk::gltf
