// SPDX-License-Identifier: MIT
// The viewer's camera.
#pragma once

#include "zbaselib/ZGe.h"

inline constexpr int kInterfaceViewerCamera = 3000003;

/// What guests see of the camera. Matrices are for row vectors (a point p goes to p * view * projection), which is the
/// memory order that OpenGL loads. The view matrix has the viewer unit built in: it scales the scene so that 1 unit in
/// view space is 1 % of the scene's diagonal.
class IViewerCamera
{
public:
    virtual const ZgeMatrix& ProjectionMatrix() = 0;
    virtual const ZgeMatrix& ViewMatrix() = 0;
    /// A homogeneous point of camera space into the scene: (0, 0, 0, 1) becomes the eye.
    virtual ZgeVector4 CameraToScene(const ZgeVector4& point) = 0;
    /// Looks at the box from the present direction so that it fills the view. An empty box, or one that is not finite,
    /// changes nothing.
    virtual void FrameBox(const ZgeBox& box) = 0;
    // The part of the drawing surface that the camera fills, in pixels.
    virtual int ViewportX() = 0;
    virtual int ViewportY() = 0;
    virtual int ViewportWidth() = 0;
    virtual int ViewportHeight() = 0;

protected:
    virtual ~IViewerCamera() = default;
};

/// A turntable: it orbits about a target and about the axis `up`, which stays as it was given. Near and far planes
/// follow the scene's box. Angles in degrees, lengths in scene units.
class ZCamera : public IViewerCamera
{
public:
    ZCamera();

    void SetViewport(int x, int y, int width, int height);
    /// Vertical field of view, clamped to 1..170; a value that is not finite is ignored.
    void SetFov(double degrees);
    double GetFov() const { return m_fov; }
    /// False, and nothing changed, when eye and target coincide, up is parallel to the view or a number is not finite.
    bool LookAt(const ZgeVector3& eye, const ZgeVector3& target, const ZgeVector3& up);
    const ZgeVector3& GetEye() const { return m_eye; }
    const ZgeVector3& GetTarget() const { return m_target; }
    const ZgeVector3& GetUp() const { return m_up; }

    /// Moves the eye about the target by degrees: to the camera's right, about the axis `up`, and up, towards the axis
    /// but never over it. Numbers that are not finite change nothing, here and below.
    void Orbit(double right, double up);
    /// Moves eye and target sideways by pixels of the viewport, so that what is at the target's depth follows the
    /// pointer.
    void Pan(double pixelsRight, double pixelsDown);
    /// Moves the eye to `factor` times its distance from the target; a factor that is not above 0 changes nothing.
    void Zoom(double factor);
    /// The box that near and far planes must hold, and whose diagonal sets the viewer unit. Empty or not finite: a box
    /// of size 2 about the origin; a single point: one about the point.
    void SetSceneBox(const ZgeBox& box);
    /// What near and far planes must hold beside the scene without setting the unit: the floor, bones.
    void SetSurroundings(const ZgeBox& box);
    /// The viewer unit, in scene units.
    double GetUnit() const;
    double GetDistance() const;
    /// Unit vectors of the camera in the scene: to its right, up, and back from the target to the eye.
    void GetAxes(ZgeVector3& right, ZgeVector3& up, ZgeVector3& back) const;

    const ZgeMatrix& ProjectionMatrix() override;
    const ZgeMatrix& ViewMatrix() override;
    ZgeVector4 CameraToScene(const ZgeVector4& point) override;
    void FrameBox(const ZgeBox& box) override;
    int ViewportX() override { return m_x; }
    int ViewportY() override { return m_y; }
    int ViewportWidth() override { return m_width; }
    int ViewportHeight() override { return m_height; }

private:
    void Update();
    /// Depth, in scene units along the view, of the nearest and farthest corner of both boxes.
    void DepthRange(double& nearest, double& farthest) const;

    int m_x = 0, m_y = 0, m_width = 800, m_height = 600;
    double m_fov = 40;
    ZgeVector3 m_eye{0, 0, 10}, m_target{0, 0, 0}, m_up{0, 1, 0};
    ZgeBox m_box, m_surroundings;
    ZgeMatrix m_view, m_projection;
    bool m_known = false;
};
