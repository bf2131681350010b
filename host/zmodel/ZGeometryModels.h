// SPDX-License-Identifier: MIT
// Models with geometry: polygon meshes and NURBS surfaces, deformed by their skin.
#pragma once

#include "zmodel/ZAppearance.h"
#include "zmodel/ZModel.h"
#include "zmodel/ZNurbs.h"
#include "zmodel/ZSkin.h"

#include <memory>
#include <vector>

/// Displacements of one morph target: three floats a vertex; normals may be empty.
struct ZMorphTarget
{
    std::vector<float> positions;
    std::vector<float> normals;
};

/// What polygon meshes and NURBS surfaces share: undeformed positions (control points), morph targets, skin, and the
/// evaluation of morph targets, then skin. Linear blend in the skin's mode: mode 0 divides by the sum of the weights
/// (a vertex without weight stays), mode 1 adds each bone's offset, mode 2 leaves the missing part of 1 at the
/// undeformed point. Evaluated again only when a bone, a weight or a morph weight changed since, and for a few weights
/// or bones only the vertices that they pull; all cores for large meshes.
class ZModelGeometryBase : public ZModel
{
public:
    ZCLASS_DECLARE()
    ~ZModelGeometryBase() override;

    ZSkin* GetSkin() const override { return m_skin.get(); }
    /// Gives the model its skin, replacing the one it had.
    ZSkin* MakeSkin(int deformMode);

    void SetMorphTargets(std::vector<ZMorphTarget> targets);
    int GetMorphTargetCount() const;
    /// The file's weights, one a target; missing ones count as 0, those too many are passed over.
    void SetMorphWeights(const std::vector<float>& weights);
    /// Weights that an animation sets at the present time; an empty list gives the file's back.
    void SetAnimatedMorphWeights(const std::vector<float>& weights);
    /// The weights that hold now.
    const std::vector<float>& GetMorphWeights() const;

    /// Pictures and colours for whoever draws the surface; null: it is drawn plain.
    void SetAppearance(std::shared_ptr<const ZAppearance> appearance) { m_appearance = std::move(appearance); }
    const std::shared_ptr<const ZAppearance>& GetAppearance() const { return m_appearance; }

    void* IQuery(int interfaceId, int flags) override;
    int VertexCount() override;
    const float* VertexPositions(int deformed) override;
    /// The skin turns the model inside out, as where the mesh's node is mirrored and its bones are not. Normals are
    /// turned then, so that they point outwards as they did. Of the last deformed positions that were asked for.
    bool IsDeformationMirrored() const;
    /// Counts up when the deformed positions were computed anew.
    std::uint64_t GetDeformVersion() const;
    /// Which vertices got another deformed place: keep GetDeformMark's answer, and ask later for those since then.
    /// They are appended, perhaps with repeats. False, and nothing appended, when it may be any vertex.
    std::uint64_t GetDeformMark() const;
    bool GetDeformedSince(std::uint64_t mark, std::vector<int>& vertices) const;

protected:
    ZModelGeometryBase(const char* name, ZModelKind kind);
    /// `positions`: three floats a vertex.
    void SetBasePositions(const float* positions, int count);
    /// Brings the deformed positions up to date; true when they changed.
    bool UpdateDeformation();

    std::unique_ptr<ZSkin> m_skin;

private:
    struct State;
    std::unique_ptr<State> m_state;
    std::shared_ptr<const ZAppearance> m_appearance;
};

/// A polygon mesh.
class ZModelPolymesh : public ZModelGeometryBase
{
public:
    ZCLASS_DECLARE()
    explicit ZModelPolymesh(const char* name);
    ~ZModelPolymesh() override;

    /// `positions`: three floats a vertex. `polygons`: vertex numbers of all polygons one after the other, `sizes` how
    /// many each has (at least 1). A vertex number that is not there is refused with false, nothing changed.
    bool SetGeometry(const float* positions, int vertexCount, const std::vector<int>& polygons,
                     const std::vector<int>& sizes);
    /// Polygons with the last index of each complemented, as PolygonIndices answers them.
    const std::vector<int>& GetPolygonIndices() const;

    int PolygonCount() override;
    const int* PolygonIndices(int) override;
    const float* DisplayPositions(int deformed) override;

private:
    struct Mesh;
    std::unique_ptr<Mesh> m_mesh;
};

/// A NURBS surface whose vertices are its control points.
class ZModelNurbs : public ZModelGeometryBase, public ISurface
{
public:
    ZCLASS_DECLARE()
    explicit ZModelNurbs(const char* name);
    ~ZModelNurbs() override;

    /// The surface and the number of grid points in U and V (0 x 0 = no grid). False with a reason in `*why` when
    /// degree, counts and knots do not fit together.
    bool SetSurface(const ZNurbsSurface& surface, int gridWidth, int gridHeight, std::string* why = nullptr);
    const ZNurbsSurface& GetSurface() const;
    /// Changes the grid alone.
    void SetGrid(int gridWidth, int gridHeight);

    void* IQuery(int interfaceId, int flags) override;
    /// The unit normal of the surface where each control point pulls most.
    const float* DisplayPositions(int deformed) override;
    int ControlPointCount() override;
    const float* ControlPoints() override;
    int CountU() override;
    int CountV() override;
    const float* TessellatedPoints(int deformed) override;
    int TessellationWidth() override;
    int TessellationHeight() override;
    /// Unit normals of the tessellated grid, four floats a point.
    const float* TessellatedNormals(int deformed);

private:
    struct Surface;
    /// Normals at the control points (`vertices`), else points or normals of the grid; brought up to date.
    const float* Derive(int deformed, bool vertices, bool normals);
    std::unique_ptr<Surface> m_surface;
};
