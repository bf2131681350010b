// SPDX-License-Identifier: MIT
// Models: their interfaces, flags and selection.
#include "zmodel/ZModel.h"

#include "zbaselib/ZReport.h"
#include "zmodel/ZSkin.h"

namespace {

ZBoneDrawer s_boneDrawer = nullptr;
float s_selectionColour[3] = {1.0F, 0.55F, 0.1F};

} // namespace

/// The drawing half of the surface interface, for a bone.
class ZModel::BoneDrawing : public ISurface
{
public:
    explicit BoneDrawing(const ZModel& bone) : m_owner(bone) {}
    void Draw(const ZgeVector3* viewer) override
    {
        if (s_boneDrawer != nullptr)
            s_boneDrawer(m_owner, viewer);
    }

private:
    const ZModel& m_owner;
};

ZModel::ZModel(const char* name, ZModelKind kind) : ZTransformNode(name), m_kind(kind), m_bone(kind == ZModelKind::Bone)
{
}

ZModel::~ZModel() = default;

void* ZModel::IQuery(int interfaceId, int flags)
{
    switch (interfaceId) {
    case kInterfaceModelGeometry:
        return static_cast<IModelGeometry*>(this);
    case kInterfaceSkinLinks:
        return static_cast<ISkinLinks*>(GetSkin());
    case kInterfaceSurface:
        if (!m_bone || s_boneDrawer == nullptr)
            return nullptr;
        if (!m_boneDrawing)
            m_boneDrawing = std::make_unique<BoneDrawing>(*this);
        return static_cast<ISurface*>(m_boneDrawing.get());
    default:
        return ZTransformNode::IQuery(interfaceId, flags);
    }
}

int ZModel::ModelIneligible() const { return m_hidden || m_locked || !HasGeometry() || m_editDepth > 0 ? 1 : 0; }

void ZModel::SetHidden(bool hidden) { m_hidden = hidden; }

void ZModel::SetLocked(bool locked) { m_locked = locked; }

void ZModel::SetSelected(bool selected)
{
    if (m_selected == selected)
        return;
    m_selected = selected;
    if (selected) {
        ZPlugEvent event(kPlugStateSelected, this, this);
        ZEntity::NotifyState(event);
    }
}

void ZModel::SetFileIdentity(int document, int node)
{
    m_document = document;
    m_fileNode = node;
}

void ZModel::BeginEdit() { ++m_editDepth; }

void ZModel::EndEdit()
{
    if (m_editDepth == 0) {
        ZReport_Misuse("IModelGeometry::EndEdit",
                       "'" + GetObjectName() + "' is not being edited: BeginEdit comes first.");
        return;
    }
    --m_editDepth;
}

const float* ZModelGlobal::SelectionColor() { return s_selectionColour; }

void ZModelGlobal::SetSelectionColor(float red, float green, float blue)
{
    s_selectionColour[0] = red;
    s_selectionColour[1] = green;
    s_selectionColour[2] = blue;
}

void ZModel_SetBoneDrawer(ZBoneDrawer drawer) { s_boneDrawer = drawer; }
