// SPDX-License-Identifier: MIT
// Models: what the user sees in the scene: meshes, surfaces, bones and plain nodes.
#pragma once

#include "zmodel/ZModelInterfaces.h"
#include "zmodel/ZTransformNode.h"

#include <memory>

class ZSkin;
class ZScene;

enum class ZModelKind
{
    Polymesh,
    Nurbs,
    Bone,
    Node
};

/// A model of the scene. Answers IModelGeometry always, ISkinLinks when it has a skin, ISurface when it is a NURBS
/// surface or a bone that can be drawn.
class ZModel : public ZTransformNode, protected IModelGeometry
{
public:
    ZCLASS_DECLARE()
    explicit ZModel(const char* name, ZModelKind kind = ZModelKind::Node);
    ~ZModel() override;

    void* IQuery(int interfaceId, int flags) override;
    ZModelKind GetKind() const { return m_kind; }
    /// A joint that shows a mesh is a mesh and a bone.
    bool IsBone() const { return m_bone; }
    void SetBone(bool bone) { m_bone = bone; }
    /// Not zero when a tool may not take the model: hidden, locked, no geometry of its own, or a mesh that another tool
    /// has begun to edit.
    virtual int ModelIneligible() const;
    /// A tool has begun to edit the mesh and has not ended.
    bool IsBeingEdited() const { return m_editDepth > 0; }

    bool IsHidden() const { return m_hidden; }
    void SetHidden(bool hidden);
    bool IsLocked() const { return m_locked; }
    void SetLocked(bool locked);
    /// Selection in the scene; selecting tells state kind 27.
    bool IsSelected() const { return m_selected; }
    void SetSelected(bool selected);

    /// The skin, or null. Owned by the model.
    virtual ZSkin* GetSkin() const { return nullptr; }
    ZScene* GetScene() const { return m_scene; }

    /// Which opened file the model is from, and its node there; -1 for none.
    int GetDocument() const { return m_document; }
    int GetFileNode() const { return m_fileNode; }
    void SetFileIdentity(int document, int node);

    IModelGeometry& Geometry() { return *this; }
    /// A mesh or surface that can carry weights.
    bool HasGeometry() const { return m_kind == ZModelKind::Polymesh || m_kind == ZModelKind::Nurbs; }

protected:
    // A model without geometry.
    int VertexCount() override { return 0; }
    const float* VertexPositions(int) override { return nullptr; }
    const float* DisplayPositions(int) override { return nullptr; }
    int PolygonCount() override { return 0; }
    const int* PolygonIndices(int) override { return nullptr; }
    const float* TessellatedPoints(int) override { return nullptr; }
    int TessellationWidth() override { return 0; }
    int TessellationHeight() override { return 0; }
    ZgeMatrix GlobalTransform() override { return GetTransformMatrix(true); }
    void BeginEdit() override;
    void EndEdit() override;

private:
    friend class ZScene;
    class BoneDrawing;

    ZModelKind m_kind;
    bool m_bone = false;
    bool m_hidden = false, m_locked = false, m_selected = false;
    int m_editDepth = 0;
    int m_document = -1, m_fileNode = -1;
    ZScene* m_scene = nullptr;
    std::unique_ptr<BoneDrawing> m_boneDrawing; ///< made when a drawable bone is first asked for its drawing
};

namespace ZModelGlobal {
/// The colour in which the host highlights what is selected: three floats.
const float* SelectionColor();
void SetSelectionColor(float red, float green, float blue);
} // namespace ZModelGlobal

/// Installs the drawing of bones; without one, bones do not answer ISurface. Set by zmanipulator.
using ZBoneDrawer = void (*)(const ZModel& bone, const ZgeVector3* viewer);
void ZModel_SetBoneDrawer(ZBoneDrawer drawer);
