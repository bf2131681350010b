// SPDX-License-Identifier: MIT
// NURBS surfaces as models: control points are the vertices, the grid is what is seen.
#include "NurbsGrid.h"
#include "zbaselib/ZReport.h"
#include "zmodel/ZGeometryModels.h"

#include <algorithm>

namespace {

/// One array that follows the control points, computed when it is asked for.
struct Derived
{
    std::vector<float> values;
    std::uint64_t version = 0;
    bool known = false;
};

/// What follows from the control points in one state, undeformed or deformed.
struct DerivedSet
{
    Derived points;
    Derived gridNormals;
    Derived vertexNormals;
};

/// A mirrored surface runs the other way round: its normals are turned, so that they stay on the side where they were.
void ComputeNormals(NurbsGrid& grid, const float* controlPoints, bool mirrored, float* normals)
{
    grid.ComputeNormals(controlPoints, normals);
    const size_t numbers = 4 * static_cast<size_t>(grid.GetWidth()) * static_cast<size_t>(grid.GetHeight());
    for (size_t i = 0; mirrored && i < numbers; ++i)
        normals[i] = -normals[i];
}

} // namespace

struct ZModelNurbs::Surface
{
    ZNurbsSurface surface;
    int width = 0;
    int height = 0;
    NurbsGrid grid;
    NurbsGrid vertices; ///< a grid with one point a control point
    DerivedSet sets[2];
};

ZModelNurbs::ZModelNurbs(const char* name)
    : ZModelGeometryBase(name, ZModelKind::Nurbs), m_surface(std::make_unique<Surface>())
{
}

ZModelNurbs::~ZModelNurbs() = default;

bool ZModelNurbs::SetSurface(const ZNurbsSurface& surface, int gridWidth, int gridHeight, std::string* why)
{
    const std::string wrong = surface.Validate();
    if (why != nullptr)
        *why = wrong;
    if (!wrong.empty())
        return false;
    m_surface->surface = surface;
    const ZNurbsSurface& kept = m_surface->surface;
    const std::vector<float> positions(kept.points.begin(), kept.points.end());
    SetBasePositions(positions.data(), kept.countU * kept.countV);
    m_surface->vertices.SetGrid(kept, NurbsDirection::U(kept).Greville(), NurbsDirection::V(kept).Greville());
    SetGrid(gridWidth, gridHeight);
    return true;
}

const ZNurbsSurface& ZModelNurbs::GetSurface() const { return m_surface->surface; }

void ZModelNurbs::SetGrid(int gridWidth, int gridHeight)
{
    Surface& own = *m_surface;
    const bool grid = gridWidth > 0 && gridHeight > 0 && own.surface.countU > 0;
    own.width = grid ? gridWidth : 0;
    own.height = grid ? gridHeight : 0;
    if (grid)
        own.grid.SetGrid(own.surface, NurbsDirection::U(own.surface).Evenly(gridWidth),
                         NurbsDirection::V(own.surface).Evenly(gridHeight));
    own.sets[0] = DerivedSet();
    own.sets[1] = DerivedSet();
}

void* ZModelNurbs::IQuery(int interfaceId, int flags)
{
    if (interfaceId == kInterfaceSurface)
        return static_cast<ISurface*>(this);
    return ZModelGeometryBase::IQuery(interfaceId, flags);
}

int ZModelNurbs::ControlPointCount() { return VertexCount(); }

const float* ZModelNurbs::ControlPoints() { return VertexPositions(1); }

int ZModelNurbs::CountU() { return m_surface->surface.countU; }

int ZModelNurbs::CountV() { return m_surface->surface.countV; }

int ZModelNurbs::TessellationWidth() { return m_surface->width; }

int ZModelNurbs::TessellationHeight() { return m_surface->height; }

const float* ZModelNurbs::Derive(int deformed, bool vertices, bool normals)
{
    Surface& own = *m_surface;
    const float* const controlPoints = VertexPositions(deformed);
    if (controlPoints == nullptr || (!vertices && own.width == 0))
        return nullptr;
    DerivedSet& set = own.sets[deformed != 0 ? 1 : 0];
    Derived& derived = vertices ? set.vertexNormals : normals ? set.gridNormals : set.points;
    const std::uint64_t version = deformed != 0 ? GetDeformVersion() : 0;
    if (derived.known && derived.version == version)
        return derived.values.data();
    NurbsGrid& grid = vertices ? own.vertices : own.grid;
    derived.values.resize(4 * static_cast<size_t>(grid.GetWidth()) * static_cast<size_t>(grid.GetHeight()));
    if (normals)
        ComputeNormals(grid, controlPoints, deformed != 0 && IsDeformationMirrored(), derived.values.data());
    else
        grid.ComputePoints(controlPoints, derived.values.data());
    derived.version = version;
    derived.known = true;
    return derived.values.data();
}

const float* ZModelNurbs::DisplayPositions(int deformed) { return Derive(deformed, true, true); }

const float* ZModelNurbs::TessellatedPoints(int deformed) { return Derive(deformed, false, false); }

const float* ZModelNurbs::TessellatedNormals(int deformed) { return Derive(deformed, false, true); }
