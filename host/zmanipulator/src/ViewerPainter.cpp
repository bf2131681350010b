// SPDX-License-Identifier: MIT
#include "ViewerPainter.h"

#include "BonePaint.h"
#include "OwnBonePaint.h"
#include "zmodel/ZScene.h"

#include <algorithm>

namespace {
// More contexts than a viewer is ever shown in at once; the ones before are gone.
constexpr size_t kMostContexts = 4;
constexpr GLfloat kMeshColour[3] = {0.72F, 0.70F, 0.67F};
constexpr GLfloat kWireColour[3] = {0.74F, 0.76F, 0.80F};
constexpr GLfloat kWireOnShadedColour[3] = {0.16F, 0.17F, 0.20F};
constexpr float kSelectedShare = 0.35F;

void SetColour(const GLfloat (&plain)[3], bool selected, float selectedShare)
{
    const float share = selected ? selectedShare : 0;
    const float* const selection = ZModelGlobal::SelectionColor();
    glColor3f(plain[0] + (selection[0] - plain[0]) * share, plain[1] + (selection[1] - plain[1]) * share,
              plain[2] + (selection[2] - plain[2]) * share);
}

/// One light over the viewer's left shoulder, for both sides of a surface. The modelview matrix must be the identity.
void SetLight()
{
    constexpr GLfloat kDirection[4] = {-0.35F, 0.55F, 0.9F, 0}, kDiffuse[4] = {0.78F, 0.78F, 0.78F, 1},
                      kNone[4] = {0, 0, 0, 1}, kAmbient[4] = {0.26F, 0.26F, 0.28F, 1};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, kAmbient);
    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_TRUE);
    glLightModeli(GL_LIGHT_MODEL_LOCAL_VIEWER, GL_FALSE);
    glLightfv(GL_LIGHT0, GL_POSITION, kDirection);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, kDiffuse);
    glLightfv(GL_LIGHT0, GL_SPECULAR, kNone);
    glLightfv(GL_LIGHT0, GL_AMBIENT, kNone);
    glEnable(GL_LIGHT0);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, kNone);
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, kNone);
    glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_NORMALIZE);
}

void DrawQuad(const GLfloat (&corners)[8], const GLfloat (&colours)[16])
{
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_COLOR_ARRAY);
    glVertexPointer(2, GL_FLOAT, 0, corners);
    glColorPointer(4, GL_FLOAT, 0, colours);
    glDrawArrays(GL_TRIANGLE_FAN, 0, 4);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
}

void LoadPlainMatrices()
{
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}
} // namespace

ZViewer::Painter::~Painter()
{
    for (const auto& context : m_contexts)
        if (context->IsCurrent())
            context->Free();
}

PainterContext& ZViewer::Painter::CurrentContext()
{
    for (const auto& context : m_contexts)
        if (context->IsCurrent())
            return *context;
    if (m_contexts.size() == kMostContexts)
        m_contexts.erase(m_contexts.begin());
    m_contexts.push_back(std::make_unique<PainterContext>());
    return *m_contexts.back();
}

void ZViewer::Painter::Paint(ZViewer& viewer)
{
    const GlStateGuard guard;
    PainterContext& context = CurrentContext();
    context.FreeForGoneModels();
    ZCamera& camera = viewer.m_camera;
    glViewport(camera.ViewportX(), camera.ViewportY(), camera.ViewportWidth(), camera.ViewportHeight());
    glScissor(camera.ViewportX(), camera.ViewportY(), camera.ViewportWidth(), camera.ViewportHeight());
    glEnable(GL_SCISSOR_TEST);
    PaintBackground();
    LoadCamera(camera);
    glEnable(GL_DEPTH_TEST);
    if (viewer.m_showGrid)
        context.DrawFloor(m_floor);
    if (viewer.m_scene != nullptr) {
        PaintModels(viewer, context);
        if (viewer.m_showBones)
            PaintBones(viewer, context);
    }
    {
        const GlStackGuard stacks;
        viewer.DrawManipulators();
    }
    if (viewer.m_rectShown)
        PaintPickRect(viewer);
    MakeOpaque();
}

void ZViewer::Painter::PaintBackground() const
{
    glClearColor(0.2F, 0.21F, 0.23F, 1);
    glClearDepth(1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    constexpr GLfloat kCorners[8] = {-1, -1, 1, -1, 1, 1, -1, 1};
    constexpr GLfloat kColours[16] = {0.13F, 0.14F, 0.16F, 1, 0.13F, 0.14F, 0.16F, 1,
                                      0.27F, 0.29F, 0.33F, 1, 0.27F, 0.29F, 0.33F, 1};
    LoadPlainMatrices();
    glDepthMask(GL_FALSE);
    DrawQuad(kCorners, kColours);
    glDepthMask(GL_TRUE);
}

void ZViewer::Painter::LoadCamera(ZCamera& camera) const
{
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(camera.ProjectionMatrix().Data());
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(camera.ViewMatrix().Data());
}

void ZViewer::Painter::PaintModels(ZViewer& viewer, PainterContext& context) const
{
    glLoadIdentity();
    SetLight();
    const bool withEdges = viewer.m_shading != ZShading::Shaded;
    for (ZModel* model : viewer.m_scene->GetModels()) {
        auto* const geometry = Object_Cast<ZModelGeometryBase>(model);
        if (geometry == nullptr || model->IsHidden())
            continue;
        const ZgeMatrix place = model->GetTransformMatrix(true) * viewer.m_camera.ViewMatrix();
        glLoadMatrixd(place.Data());
        // A mirrored model turns its triangles round; which side is the front follows.
        glFrontFace(ZgeDeterminant3(place) < 0 ? GL_CW : GL_CCW);
        PaintModel(viewer, *geometry, context.BuffersOf(*geometry, withEdges));
    }
    glFrontFace(GL_CCW);
    glDisable(GL_COLOR_MATERIAL);
    glDisable(GL_NORMALIZE);
    glDisable(GL_LIGHT0);
    glLoadMatrixd(viewer.m_camera.ViewMatrix().Data());
}

void ZViewer::Painter::PaintModel(const ZViewer& viewer, ZModelGeometryBase& model, MeshBuffers& buffers) const
{
    const bool selected = model.IsSelected();
    if (viewer.m_shading != ZShading::Wire) {
        if (buffers.HasNormals())
            glEnable(GL_LIGHTING);
        // Pushed back, so that points and lines on the surface show.
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(1, 1);
        PaintFaces(viewer, selected, buffers);
        glDisable(GL_POLYGON_OFFSET_FILL);
        glDisable(GL_LIGHTING);
    }
    const bool overFaces = viewer.m_shading == ZShading::ShadedWire;
    if (viewer.m_shading != ZShading::Shaded) {
        if (overFaces)
            SetColour(kWireOnShadedColour, selected, 1);
        else
            SetColour(kWireColour, selected, 1);
        buffers.DrawEdges();
    }
    SetColour(kWireColour, selected, 1);
    buffers.DrawLoose();
}

/// Weights shown as colours go before pictures.
void ZViewer::Painter::PaintFaces(const ZViewer& viewer, bool selected, MeshBuffers& buffers) const
{
    const PictureBuffers* const pictures =
        viewer.m_showPictures && !buffers.HasColours() ? buffers.Pictures() : nullptr;
    if (pictures != nullptr) {
        pictures->Draw([selected](const float(&colour)[3]) { SetColour(colour, selected, kSelectedShare); });
        return;
    }
    SetColour(kMeshColour, selected, kSelectedShare);
    buffers.DrawFaces();
}

void ZViewer::Painter::PaintBones(ZViewer& viewer, PainterContext& context) const
{
    const BonePaint paint = BonePaint_Of(*viewer.m_scene, viewer.m_camera);
    BonePaint_Draw(paint, context.GetScratch());
    OwnBonePaint_Draw(*viewer.m_scene, viewer.m_camera.ViewMatrix());
}

void ZViewer::Painter::PaintPickRect(const ZViewer& viewer) const
{
    const auto width = static_cast<GLfloat>(viewer.m_width), height = static_cast<GLfloat>(viewer.m_height);
    const auto x = [width](int pixel) { return (2 * static_cast<GLfloat>(pixel) + 1) / width - 1; };
    const auto y = [height](int pixel) { return 1 - (2 * static_cast<GLfloat>(pixel) + 1) / height; };
    const GLfloat x0 = x(viewer.m_rect[0]), y0 = y(viewer.m_rect[1]), x1 = x(viewer.m_rect[2]),
                  y1 = y(viewer.m_rect[3]);
    const GLfloat corners[8] = {x0, y0, x1, y0, x1, y1, x0, y1};
    GLfloat fill[16];
    for (int i = 0; i < 16; ++i)
        fill[i] = i % 4 == 3 ? 0.12F : 1.0F;
    LoadPlainMatrices();
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_BLEND);
    DrawQuad(corners, fill);
    glDisable(GL_BLEND);
    glLineWidth(1);
    glLineStipple(1, 0x0f0f);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(2, GL_FLOAT, 0, corners);
    glColor3f(0.1F, 0.1F, 0.1F);
    glDrawArrays(GL_LINE_LOOP, 0, 4);
    glEnable(GL_LINE_STIPPLE);
    glColor3f(1, 1, 1);
    glDrawArrays(GL_LINE_LOOP, 0, 4);
    glDisable(GL_LINE_STIPPLE);
    glDisableClientState(GL_VERTEX_ARRAY);
}

void ZViewer::Painter::MakeOpaque() const
{
    // A window that shows the picture blends it with what lies behind wherever alpha is below one.
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_TRUE);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
}
