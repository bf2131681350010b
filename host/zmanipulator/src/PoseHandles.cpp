// SPDX-License-Identifier: MIT
#include "PoseHandles.h"

#include "object/ZAction.h"
#include "zmanipulator/ZTransformManager.h"
#include "zmanipulator/ZViewer.h"
#include "zmodel/ZPose.h"

#include <cmath>
#include <cstdlib>

namespace {
constexpr int kClickPixels = 3; ///< a click's release is nearer to its press than this, x and y together

ScreenPoint PixelOf(const ZManipulatorInput& input)
{
    return {input.x - input.viewer->GetOriginX() + 0.0, input.y - input.viewer->GetOriginY() + 0.0};
}

bool IsFinite(const ZgeMatrix& matrix)
{
    for (int i = 0; i < 16; ++i)
        if (!std::isfinite(matrix.Data()[i]))
            return false;
    return true;
}

ScreenSpace ScreenOf(ZViewer& viewer)
{
    static_cast<void>(viewer.IQuery(kInterfaceViewerCamera, 0)); // near and far planes follow the scene
    return ScreenSpace(viewer.GetCamera());
}

ZModel* BoneIn(const ZViewer& viewer)
{
    return viewer.GetScene() != nullptr ? ZTransformManager::GetPosedBone(*viewer.GetScene()) : nullptr;
}
} // namespace

PoseHandles::PoseHandles() : ZManipulator("Pose")
{
    ManipulatorSetHidden(true);
    ZManipulator_GetManipulatorSet()->ManipulatorAdd(this);
}

PoseHandles::~PoseHandles() { PutBack(); }

bool PoseHandles::ManipulatorSetActive(bool active)
{
    const bool result = ZManipulator::ManipulatorSetActive(active);
    if (!active) {
        PutBack();
        ManipulatorSetHidden(true);
    }
    return result;
}

bool PoseHandles::ManipulatorInputNotify(ZManipulatorInput& input)
{
    switch (input.kind) {
    case kInputPress:
        return input.button == kButtonLeft && Press(input);
    case kInputDrag:
        return DragTo(input);
    case kInputRelease:
        return Release(input);
    case kInputHover:
        return Hover(input);
    case kInputLeave:
        Light(kNoHandle);
        return false;
    case kInputEscape:
        return PutBack();
    default:
        return false;
    }
}

bool PoseHandles::Press(const ZManipulatorInput& input)
{
    PutBack(); // the release of an earlier one was lost
    ZModel* const bone = BoneIn(*input.viewer);
    const ScreenSpace screen = ScreenOf(*input.viewer);
    const auto shape = bone != nullptr ? HandleShape::Of(*bone, screen) : std::nullopt;
    const int handle = shape.has_value() ? shape->HandleAt(screen, PixelOf(input)) : kNoHandle;
    if (handle == kNoHandle) {
        m_click = input;
        return true;
    }
    m_drag.emplace(*bone, handle, *shape, screen, PixelOf(input));
    m_bone.Set(bone);
    m_posedBefore = bone->GetPosedTransform();
    Light(handle);
    return true;
}

ZModel* PoseHandles::Grabbed() const
{
    return m_drag.has_value() && m_bone.IsValid() ? static_cast<ZModel*>(m_bone.Get()) : nullptr;
}

bool PoseHandles::DragTo(const ZManipulatorInput& input)
{
    ZModel* const bone = Grabbed();
    if (bone == nullptr)
        return m_click.has_value();
    const auto local = m_drag->LocalAt(ScreenOf(*input.viewer), PixelOf(input));
    if (local.has_value() && IsFinite(*local)) {
        bone->SetPosedTransform(*local);
        ZViewer::InvalidateAll();
    }
    return true;
}

bool PoseHandles::Release(const ZManipulatorInput& input)
{
    if (m_click.has_value()) {
        const ZManipulatorInput press = *m_click;
        m_click.reset();
        if (std::abs(press.x - input.x) + std::abs(press.y - input.y) < kClickPixels)
            input.viewer->SelectAt(input.x, input.y, (press.modifier & kModifierShift) != 0);
        Hover(input); // the handles may be another bone's now
        return true;
    }
    const bool dragged = m_drag.has_value();
    if (ZModel* const bone = Grabbed())
        ZPose_AddStep(*bone, m_posedBefore);
    m_drag.reset();
    if (dragged)
        Hover(input);
    return dragged;
}

bool PoseHandles::Hover(const ZManipulatorInput& input)
{
    const ZModel* const bone = BoneIn(*input.viewer);
    const ScreenSpace screen = ScreenOf(*input.viewer);
    const auto shape = bone != nullptr ? HandleShape::Of(*bone, screen) : std::nullopt;
    Light(shape.has_value() ? shape->HandleAt(screen, PixelOf(input)) : kNoHandle);
    return m_lit != kNoHandle;
}

void PoseHandles::Light(int handle)
{
    if (m_lit == handle)
        return;
    m_lit = handle;
    ZViewer::InvalidateAll();
}

void PoseHandles::ManipulatorCancel() { PutBack(); }

/// Ends a drag with the bone where it was; false when there was none.
bool PoseHandles::PutBack()
{
    m_click.reset();
    const bool dragged = m_drag.has_value();
    if (ZModel* const bone = Grabbed())
        bone->SetPosedTransform(m_posedBefore);
    m_drag.reset();
    Light(kNoHandle);
    if (dragged)
        ZViewer::InvalidateAll();
    return dragged;
}

void PoseHandles::ManipulatorDraw(ZManipulatorDraw& draw)
{
    const ZModel* const bone = BoneIn(*draw.viewer);
    const auto shape = bone != nullptr ? HandleShape::Of(*bone, ScreenSpace(draw.viewer->GetCamera())) : std::nullopt;
    if (shape.has_value())
        HandlePaint_Draw(*shape, *draw.camera, m_lit, m_drag.has_value());
}
