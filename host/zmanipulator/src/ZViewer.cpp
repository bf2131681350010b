// SPDX-License-Identifier: MIT
// The viewer: its camera on the scene, its settings, what lies under a pixel.
#include "zmanipulator/ZViewer.h"

#include "BoneShape.h"
#include "FloorGrid.h"
#include "ViewerPainter.h"
#include "ViewerPick.h"
#include "zmodel/ZGeometryModels.h"
#include "zmodel/ZScene.h"
#include "zxtrobject/ZXtrObject.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double kBonePickPixels = 8;

std::vector<ZViewer*>& Viewers()
{
    static std::vector<ZViewer*> viewers;
    return viewers;
}

void Mix(std::uint64_t& mark, std::uint64_t value) { mark ^= value + 0x9e3779b97f4a7c15U + (mark << 6) + (mark >> 2); }

/// Differs when what the scene box is measured from does.
std::uint64_t MarkOf(const ZScene& scene)
{
    std::uint64_t mark = 1;
    for (ZModel* model : scene.GetModels()) {
        Mix(mark, reinterpret_cast<std::uintptr_t>(model));
        Mix(mark, model->IsHidden() ? 1 : 0);
        static_cast<void>(model->GetTransformMatrix(true));
        Mix(mark, model->GetTransformVersion());
        if (const auto* const geometry = Object_Cast<ZModelGeometryBase>(model)) {
            static_cast<void>(model->Geometry().VertexPositions(1));
            Mix(mark, geometry->GetDeformVersion());
            Mix(mark, static_cast<std::uint64_t>(model->Geometry().VertexCount()));
        }
    }
    return mark;
}

void WidenByGeometry(ZgeBox& box, ZModel& model)
{
    const float* const positions = model.Geometry().VertexPositions(1);
    if (positions == nullptr)
        return;
    const ZgeMatrix& global = model.GetTransformMatrix(true);
    const int count = model.Geometry().VertexCount();
    for (int i = 0; i < count; ++i) {
        const float* const p = positions + 4 * static_cast<size_t>(i);
        const ZgeVector3 place = ZgeTransformPoint({p[0], p[1], p[2]}, global);
        if (std::isfinite(ZgeLength(place)))
            box.Widen(place);
    }
}

void WidenByBone(ZgeBox& box, const ZModel& bone, double unit)
{
    std::vector<ZBoneSegment> segments;
    BoneShape_AddSegments(bone, unit, segments);
    for (const ZBoneSegment& segment : segments) {
        box.Widen(segment.head);
        box.Widen(segment.tail);
    }
}

void WidenByModel(ZgeBox& box, ZModel& model, double unit)
{
    if (model.HasGeometry())
        WidenByGeometry(box, model);
    if (model.IsBone())
        WidenByBone(box, model, unit);
    if (model.HasGeometry() || model.IsBone())
        return;
    for (ZTransformNode* child : model.GetChildren())
        if (ZModel* const below = Object_Cast<ZModel>(child))
            WidenByModel(box, *below, unit);
}
} // namespace

ZViewer::ZViewer(ZScene* scene) : m_scene(scene), m_painter(std::make_unique<Painter>())
{
    Viewers().push_back(this);
    ZXtrObject_Register(ZMakeHandler<&ZViewer::OnSceneEvent>(this));
    m_camera.SetViewport(0, 0, m_width, m_height);
}

ZViewer::~ZViewer()
{
    ZXtrObject_Unregister(ZMakeHandler<&ZViewer::OnSceneEvent>(this));
    m_redraw = nullptr;
    CancelGesture();
    Viewers().erase(std::find(Viewers().begin(), Viewers().end(), this));
    if (Viewers().empty())
        ZTransformManager::TheOne()->EndPosing(); // a later session begins without
    const ZManipulatorInput* const previous = ZManipulator::GetPreviousInput();
    if (previous != nullptr && previous->viewer == this)
        ZManipulator::ClearPreviousInput();
    if (IsDestroyed())
        return;
    PrepareDestruct();
    Destruct();
}

void* ZViewer::IQuery(int interfaceId, int flags)
{
    if (interfaceId != kInterfaceViewerCamera)
        return ZObject::IQuery(interfaceId, flags);
    BringSceneBoxUpToDate();
    return static_cast<IViewerCamera*>(&m_camera);
}

void ZViewer::SetSize(int width, int height)
{
    m_width = std::max(1, width);
    m_height = std::max(1, height);
    m_camera.SetViewport(0, 0, m_width, m_height);
    Invalidate();
}

void ZViewer::SetOrigin(int x, int y)
{
    m_originX = x;
    m_originY = y;
}

void ZViewer::BringSceneBoxUpToDate()
{
    if (m_scene == nullptr)
        return;
    const std::uint64_t mark = MarkOf(*m_scene);
    if (mark == m_boxMark)
        return;
    const ZgeBox box = m_scene->GetBox();
    const ZgeBox bones = BonesBox();
    // A scene of nothing but bones is as large as they are.
    const ZgeBox& measured = box.IsEmpty() ? bones : box;
    m_camera.SetSceneBox(measured);
    ZgeBox surroundings = FloorGrid_Box(FloorGrid_For(measured));
    surroundings.Widen(bones);
    m_camera.SetSurroundings(surroundings);
    m_painter->SetFloor(FloorGrid_For(measured));
    m_boxMark = mark;
}

ZgeBox ZViewer::BonesBox() const
{
    ZgeBox box;
    for (const ZModel* model : m_scene->GetModels())
        if (model->IsBone() && !model->IsHidden())
            WidenByBone(box, *model, m_camera.GetUnit());
    return box;
}

void ZViewer::Frame(const std::vector<ZModel*>& models)
{
    if (m_scene == nullptr)
        return;
    BringSceneBoxUpToDate();
    ZgeBox box;
    if (models.empty()) {
        box = m_scene->GetBox();
        if (box.IsEmpty())
            box = BonesBox();
    }
    for (ZModel* model : models)
        if (model != nullptr)
            WidenByModel(box, *model, m_camera.GetUnit());
    m_camera.FrameBox(box);
    Invalidate();
}

void ZViewer::Draw()
{
    BringSceneBoxUpToDate();
    m_painter->Paint(*this);
}

void ZViewer::SetShading(ZShading shading)
{
    m_shading = shading;
    Invalidate();
}

void ZViewer::SetShowBones(bool show)
{
    m_showBones = show;
    Invalidate();
}

void ZViewer::SetShowGrid(bool show)
{
    m_showGrid = show;
    Invalidate();
}

void ZViewer::SetShowPictures(bool show)
{
    m_showPictures = show;
    Invalidate();
}

ZModel* ZViewer::ModelAt(int x, int y)
{
    if (m_scene == nullptr)
        return nullptr;
    BringSceneBoxUpToDate();
    const double left = x - m_originX, top = y - m_originY;
    if (left < 0 || top < 0 || left > m_width || top > m_height)
        return nullptr;
    if (m_showBones)
        if (ZModel* const bone = ViewerPick_Bone(*m_scene, m_camera, left, top, kBonePickPixels))
            return bone;
    return ViewerPick_Surface(*m_scene, m_camera, left, top);
}

void ZViewer::SetRedrawListener(std::function<void()> listener) { m_redraw = std::move(listener); }

void ZViewer::Invalidate()
{
    ++m_invalidated;
    if (m_redraw)
        m_redraw();
}

void ZViewer::InvalidateAll()
{
    const std::vector<ZViewer*> viewers = Viewers();
    for (ZViewer* viewer : viewers)
        viewer->Invalidate();
}

const std::vector<ZViewer*>& ZViewer::GetViewers() { return Viewers(); }

void ZViewer::OnSceneEvent(ZObject*, ZEvent& event)
{
    if (event.kind == kSceneClearing)
        CancelGesture();
    Invalidate();
}
