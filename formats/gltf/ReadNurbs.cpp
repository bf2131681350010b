// SPDX-License-Identifier: MIT
// The extension TW_nurbs_surface: a surface whose control points are the desk's vertices, beside the tessellated
// primitive that shows it to other programs.
#include "Reading.h"

#include <algorithm>
#include <array>

namespace skindesk::gltf {

namespace {

constexpr int HIGHEST_DEGREE = 5;

std::array<int, 2> ReadPair(const OpenedFile& file, JsonValue object, const char* key, std::size_t least)
{
    const JsonValue v = file.Json().Member(object, key);
    const std::vector<JsonValue> values = file.Array(v);
    if (values.size() != 2) {
        file.Refuse(v == JSON_NONE ? object : v,
                    std::string(key) + " needs two whole numbers, one for U and one for V");
    }
    std::array<int, 2> pair{};
    for (std::size_t i = 0; i < 2; ++i) {
        const std::size_t number = file.WholeNumber(values[i], key);
        if (number < least || number > 0x7FFFFFFF) {
            file.Refuse(values[i], std::string(key) + " is " + std::to_string(number) + ", at least " +
                                       std::to_string(least) + " is needed");
        }
        pair[i] = static_cast<int>(number);
    }
    return pair;
}

std::array<int, 2> ReadDegree(const OpenedFile& file, JsonValue extension)
{
    const std::array<int, 2> degree = ReadPair(file, extension, "degree", 0);
    for (const int d : degree) {
        if (d < 1 || d > HIGHEST_DEGREE) {
            file.Refuse(file.Json().Member(extension, "degree"),
                        "degree " + std::to_string(d) + " is not read, 1 to 5 are");
        }
    }
    return degree;
}

void ReadKnots(const OpenedFile& file, JsonValue extension, NurbsSurface& surface)
{
    const JsonValue v = file.Json().Member(extension, "knots");
    const std::vector<JsonValue> lists = file.Array(v);
    if (lists.size() != 2) {
        file.Refuse(v == JSON_NONE ? extension : v, "knots need two lists, one for U and one for V");
    }
    for (std::size_t i = 0; i < 2; ++i) {
        const auto needed =
            static_cast<std::size_t>(surface.count[i]) + static_cast<std::size_t>(surface.degree[i]) + 1;
        std::vector<double>& knots = surface.knots[i];
        knots = file.Numbers(lists[i], needed);
        if (!std::is_sorted(knots.begin(), knots.end())) {
            file.Refuse(lists[i], "the knots descend somewhere");
        }
        const auto degree = static_cast<std::size_t>(surface.degree[i]);
        if (!(knots[degree] < knots[knots.size() - 1 - degree])) {
            file.Refuse(lists[i], "the domain from knot " + std::to_string(degree) + " to knot " +
                                      std::to_string(knots.size() - 1 - degree) + " is empty");
        }
    }
}

NurbsSurface ReadSurface(const OpenedFile& file, JsonValue extension)
{
    NurbsSurface surface;
    surface.degree = ReadDegree(file, extension);
    surface.count = ReadPair(file, extension, "count", 2);
    for (std::size_t i = 0; i < 2; ++i) {
        if (surface.count[i] <= surface.degree[i]) {
            file.Refuse(extension, "degree " + std::to_string(surface.degree[i]) + " needs at least " +
                                       std::to_string(surface.degree[i] + 1) + " control points, there are " +
                                       std::to_string(surface.count[i]));
        }
    }
    ReadKnots(file, extension, surface);
    surface.grid = ReadPair(file, extension, "grid", 2);
    return surface;
}

std::size_t ProductOf(const std::array<int, 2>& pair)
{
    return static_cast<std::size_t>(pair[0]) * static_cast<std::size_t>(pair[1]);
}

AttributeSet ViewControlPoints(Reading& reading, JsonValue attributes, const NurbsSurface& surface)
{
    const OpenedFile& file = reading.file;
    const AttributeAccessors accessors = FindAttributes(file, attributes, &reading.warnings);
    if (accessors.position == JSON_NONE) {
        file.Refuse(attributes, "there is no POSITION for the control points");
    }
    AttributeSet set;
    set.positions = ViewAt(file, accessors.position, "VEC3", reading.budget);
    const std::size_t points = ProductOf(surface.count);
    if (set.positions.Count() != points) {
        file.Refuse(accessors.position,
                    Counted(set.positions.Count(), "control point is there", "control points are there") +
                        ", count says " + std::to_string(surface.count[0]) + " times " +
                        std::to_string(surface.count[1]));
    }
    reading.budget.Spend(accessors.position, points, 64 + accessors.joints.size() * 32);
    set.influences = ViewInfluences(file, accessors, points, reading.budget);
    return set;
}

void ReadPointWeights(Reading& reading, JsonValue attributes, std::size_t points, NurbsSurface& surface)
{
    surface.pointWeights.assign(points, 1.0);
    const JsonValue where = reading.json.Member(attributes, "POINT_WEIGHT");
    if (where == JSON_NONE) {
        return;
    }
    const AccessorView view = ViewAt(reading.file, where, "SCALAR", reading.budget);
    if (view.Count() != points) {
        reading.file.Refuse(where, Counted(view.Count(), "point weight is", "point weights are") + " there, " +
                                       Counted(points, "control point is", "control points are"));
    }
    for (std::size_t i = 0; i < points; ++i) {
        float weight = 0;
        view.Floats(i, 1, &weight);
        if (!(weight > 0 && weight <= 3.4e38F)) {
            reading.file.Refuse(where, "the weight of control point " + std::to_string(i) + " is not above 0");
        }
        surface.pointWeights[i] = weight;
    }
}

// Primitive 0 shows the surface to programs that do not know it; its vertices are a grid over the domain.
void ReadStandIns(Reading& reading, JsonValue meshValue, JsonValue extension, Mesh& mesh)
{
    const OpenedFile& file = reading.file;
    const std::vector<JsonValue> primitives = file.Array(reading.json.Member(meshValue, "primitives"));
    if (primitives.empty()) {
        file.Refuse(meshValue, "the surface has no primitive that shows it to other programs");
    }
    const AttributeAccessors attributes =
        FindAttributes(file, reading.json.Member(primitives[0], "attributes"), &reading.warnings);
    std::size_t vertices = 0;
    if (attributes.position != JSON_NONE) {
        vertices = ViewAt(file, attributes.position, "VEC3", reading.budget).Count();
        static_cast<void>(ViewInfluences(file, attributes, vertices, reading.budget));
    }
    if (vertices != ProductOf(mesh.nurbs->grid)) {
        file.Refuse(extension, "grid is " + std::to_string(mesh.nurbs->grid[0]) + " times " +
                                   std::to_string(mesh.nurbs->grid[1]) + ", primitive 0 has " +
                                   Counted(vertices, "vertex", "vertices"));
    }
    for (const JsonValue v : primitives) {
        Primitive primitive;
        primitive.standIn = true;
        primitive.material = file.IndexOr(v, "material", "materials", -1);
        mesh.primitives.push_back(primitive);
    }
    if (primitives.size() > 1) {
        reading.warnings.Add(meshValue, "a mesh with a NURBS surface has " + std::to_string(primitives.size()) +
                                            " primitives; all but the first are kept and not shown");
    }
}

} // namespace

JsonValue NurbsExtensionOf(const OpenedFile& file, JsonValue mesh)
{
    return file.Json().Member(file.Json().Member(mesh, "extensions"), "TW_nurbs_surface");
}

bool ReadNurbsSurface(Reading& reading, JsonValue meshValue, std::size_t index, Mesh& mesh)
{
    const OpenedFile& file = reading.file;
    const JsonValue extension = NurbsExtensionOf(file, meshValue);
    if (extension == JSON_NONE) {
        return false;
    }
    NurbsSurface surface = ReadSurface(file, file.Object(extension));
    const JsonValue attributes = reading.json.Member(extension, "attributes");
    if (attributes == JSON_NONE) {
        file.Refuse(extension, "the surface has no attributes");
    }
    const AttributeSet points = ViewControlPoints(reading, attributes, surface);
    ReadPointWeights(reading, attributes, points.positions.Count(), surface);
    mesh.nurbs = std::move(surface);
    mesh.influenceSets = static_cast<int>(points.influences.size());
    SeamJoin join(mesh, points.positions.Count(), false);
    static_cast<void>(join.Add(points));
    join.Finish();
    reading.jointLimits[index] = join.JointLimit();
    reading.oddWeights[index] = join.Odd();
    ReadStandIns(reading, meshValue, extension, mesh);
    return true;
}

} // namespace skindesk::gltf
