// SPDX-License-Identifier: MIT
// Knots and control points of a surface.
#include "ObjSurface.h"

#include <algorithm>
#include <cmath>

namespace skindesk::obj {

namespace {

constexpr int HIGHEST_DEGREE = 5;
constexpr std::array<const char*, 2> DIRECTIONS{"u", "v"};

void CheckParameters(const std::vector<double>& parameters, std::size_t direction, const ObjPlace& place)
{
    const std::string where = DIRECTIONS[direction];
    if (parameters.empty()) {
        place.Refuse("the surface has no parameters (parm " + where + ")");
    }
    if (!std::is_sorted(parameters.begin(), parameters.end())) {
        place.Refuse("the parameters of parm " + where + " descend somewhere");
    }
}

// Each inner parameter is where two patches meet, so it stands as often as the degree; the ends once more.
std::vector<double> KnotsOfPatches(const std::vector<double>& parameters, int degree)
{
    std::vector<double> knots{parameters.front()};
    for (const double parameter : parameters) {
        knots.insert(knots.end(), static_cast<std::size_t>(degree), parameter);
    }
    knots.push_back(parameters.back());
    return knots;
}

void SetDirection(imports::NewNurbsSurface& into, const ObjSurface& surface, std::size_t d, const ObjPlace& place)
{
    const int degree = surface.degree[d];
    if (degree < 1 || degree > HIGHEST_DEGREE) {
        place.Refuse("degree " + std::to_string(degree) + " in " + DIRECTIONS[d] + " is not read, 1 to 5 are");
    }
    into.degree[d] = degree;
    const std::vector<double>& parameters = surface.parameters[d];
    CheckParameters(parameters, d, place);
    if (surface.type == ObjCurveType::Bezier) {
        if (parameters.size() < 2) {
            place.Refuse(std::string("parm ") + DIRECTIONS[d] + " has one number, a patch needs two");
        }
        into.knots[d] = KnotsOfPatches(parameters, degree);
    } else {
        into.knots[d] = parameters;
    }
    const auto least = 2 * static_cast<std::size_t>(degree) + 2;
    if (into.knots[d].size() < least) {
        place.Refuse(std::string("parm ") + DIRECTIONS[d] + " has " + std::to_string(into.knots[d].size()) +
                     " knots, degree " + std::to_string(degree) + " needs at least " + std::to_string(least));
    }
    into.count[d] = static_cast<int>(into.knots[d].size()) - degree - 1;
    const auto count = static_cast<std::size_t>(into.count[d]);
    if (!(into.knots[d][static_cast<std::size_t>(degree)] < into.knots[d][count])) {
        place.Refuse(std::string("the parameters of parm ") + DIRECTIONS[d] + " leave no surface between them");
    }
}

bool ShowsAPart(const imports::NewNurbsSurface& nurbs, const std::array<double, 4>& range)
{
    for (std::size_t d = 0; d < 2; ++d) {
        const double from = nurbs.knots[d][static_cast<std::size_t>(nurbs.degree[d])];
        const double to = nurbs.knots[d][static_cast<std::size_t>(nurbs.count[d])];
        const double tolerance = 1e-6 * (to - from);
        if (range[2 * d] > from + tolerance || range[2 * d + 1] < to - tolerance) {
            return true;
        }
    }
    return false;
}

} // namespace

imports::NewMesh ToNurbs(const ObjSurface& surface, const ObjVertices& vertices, const ObjPlace& place, bool* isPart)
{
    imports::NewMesh mesh;
    mesh.name = surface.name;
    imports::NewNurbsSurface& nurbs = mesh.nurbs.emplace();
    nurbs.material = surface.material;
    SetDirection(nurbs, surface, 0, place);
    SetDirection(nurbs, surface, 1, place);
    const std::size_t needed = static_cast<std::size_t>(nurbs.count[0]) * static_cast<std::size_t>(nurbs.count[1]);
    if (surface.points.size() != needed) {
        place.Refuse("the surface has " + std::to_string(surface.points.size()) + " control points, its parameters " +
                     "need " + std::to_string(nurbs.count[0]) + " times " + std::to_string(nurbs.count[1]));
    }
    for (const ObjCorner& point : surface.points) {
        const auto& position = vertices.positions[point.vertex];
        mesh.positions.insert(mesh.positions.end(), position.begin(), position.end());
        if (surface.isRational) {
            const float weight = vertices.weights[point.vertex];
            if (!(weight > 0)) {
                place.Refuse("the weight of vertex " + std::to_string(point.vertex + 1) + " is not above 0");
            }
            nurbs.pointWeights.push_back(weight);
        }
    }
    *isPart = ShowsAPart(nurbs, surface.range);
    return mesh;
}

} // namespace skindesk::obj
