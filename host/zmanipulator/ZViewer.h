// SPDX-License-Identifier: MIT
// A viewer: a camera on the scene that takes input and draws.
#pragma once

#include "object/ZEvent.h"
#include "zmanipulator/ZCamera.h"
#include "zmanipulator/ZManipulator.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class ZScene;
class ZModel;

enum class ZShading
{
    Shaded,
    Wire,
    ShadedWire
};

/// Input, in this order: camera bindings (Alt + left orbit, Alt + middle pan, Alt + right or wheel zoom); the active
/// manipulator; other manipulators in use; the host's own selection of a model or bone in the scene: middle click
/// (plain replaces, with Shift adds), and left click, only while no manipulator is active. Handlers may hide, add,
/// remove and destroy manipulators while they run.
///
/// A gesture, as a story: Press with a button; Moves; Release, which repeats the press's button and modifiers. A press
/// of another button, CancelGesture, or the active manipulator's change cuts it off: the manipulators that got the
/// press are told ManipulatorCancel, the rubber band goes, and no release will come.
///
/// Answers IViewerCamera (3000003) to a query. Not tied to a window: whoever shows it makes OpenGL current and calls
/// Draw, or asks ZOffscreen for a picture. The scene outlives the viewer.
class ZViewer : public ZObject
{
public:
    ZCLASS_DECLARE()
    explicit ZViewer(ZScene* scene);
    ~ZViewer() override;

    void* IQuery(int interfaceId, int flags) override;
    ZScene* GetScene() const { return m_scene; }
    ZCamera& GetCamera() { return m_camera; }

    /// Pixels; at least 1 x 1.
    void SetSize(int width, int height);
    int GetWidth() const { return m_width; }
    int GetHeight() const { return m_height; }
    /// Where the viewer begins in the coordinates of its input events; (0, 0) unless a window says otherwise.
    void SetOrigin(int x, int y);
    int GetOriginX() const { return m_originX; }
    int GetOriginY() const { return m_originY; }

    /// Frames these models as they are deformed now, a bone with the way to its children, a plain node with the
    /// geometry under it; an empty list frames the scene.
    void Frame(const std::vector<ZModel*>& models);

    // The user's hand; each answers whether somebody consumed it.
    bool Press(int x, int y, int button, int modifiers);
    bool Move(int x, int y);
    /// Repeats the button and modifiers of the press.
    bool Release(int x, int y);
    bool Wheel(int x, int y, double steps);
    /// Escape (27) without a modifier reaches manipulators as kind 12, other keys as 50 and 51. Does not send
    /// shortcuts.
    bool KeyPress(int key, int modifiers);
    bool KeyRelease(int key, int modifiers);
    bool Enter();
    bool Leave();
    /// The focus is gone or a window closes: a gesture under way is cut off.
    void CancelGesture();
    int GetPressedButton() const { return m_button; }

    // The rubber band, in pixels; drawn by the viewer after everything else.
    void PickRectStart(int x, int y);
    void PickRectMotion(int x, int y);
    void PickRectStop();
    bool IsPickRectShown() const { return m_rectShown; }

    /// Draws one frame into the current OpenGL context (compatibility profile): floor grid, models, bones, manipulators
    /// in use, rubber band. Leaves alpha at 1 everywhere and state as found. Buffers stay in the context that was
    /// current then and are freed when the viewer is destroyed, if that context is current, else with it.
    void Draw();
    void SetShading(ZShading shading);
    ZShading GetShading() const { return m_shading; }
    void SetShowBones(bool show);
    bool GetShowBones() const { return m_showBones; }
    void SetShowGrid(bool show);
    bool GetShowGrid() const { return m_showGrid; }
    /// Pictures on the surfaces that have them; off, all surfaces are plain.
    void SetShowPictures(bool show);
    bool GetShowPictures() const { return m_showPictures; }

    /// The model that a click at this pixel would take: the bone whose drawn line passes nearest, within 8 pixels,
    /// while bones are shown, else the mesh or surface in front there. Hidden models are passed over. Null for none.
    ZModel* ModelAt(int x, int y);
    /// The host's own click: selects that model in the scene, alone or, with `add`, beside what is selected.
    void SelectAt(int x, int y, bool add);

    /// Called when the picture is out of date.
    void SetRedrawListener(std::function<void()> listener);
    void Invalidate();
    long GetInvalidateCount() const { return m_invalidated; }

    /// Tells every viewer that its picture is out of date.
    static void InvalidateAll();
    /// Cuts off, in every viewer, a gesture whose press `manipulator` got; null: whoever got it. The camera's go on.
    static void CutOffGestures(const ZManipulator* manipulator);
    /// All viewers that live.
    static const std::vector<ZViewer*>& GetViewers();

private:
    struct Painter;
    class HandOut;
    ZManipulatorInput MakeInput(int kind, int x, int y) const;
    bool SendInput(ZManipulatorInput& input);
    bool HostPress(const ZManipulatorInput& input);
    bool HostRelease(const ZManipulatorInput& input);
    bool CameraGesture(int x, int y);
    void DrawManipulators();
    void OnSceneEvent(ZObject* sender, ZEvent& event);
    void BringSceneBoxUpToDate();
    ZgeBox BonesBox() const;

    ZScene* m_scene;
    ZCamera m_camera;
    int m_width = 800, m_height = 600;
    int m_originX = 0, m_originY = 0;
    int m_button = 0, m_modifiers = 0;
    int m_lastX = 0, m_lastY = 0;
    bool m_cameraGesture = false;
    long m_gesture = 0;                ///< counts gestures that began or were cut off
    std::vector<HdlZPlug> m_receivers; ///< manipulators that got the press of the gesture under way
    bool m_rectShown = false;
    int m_rect[4] = {0, 0, 0, 0};
    ZShading m_shading = ZShading::Shaded;
    bool m_showBones = true, m_showGrid = true, m_showPictures = true;
    std::unique_ptr<Painter> m_painter;
    std::function<void()> m_redraw;
    long m_invalidated = 0;
    std::uint64_t m_boxMark = 0; ///< what the scene box was last measured from
};
