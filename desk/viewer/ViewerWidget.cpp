// SPDX-License-Identifier: MIT
// The viewer's two widgets: one with OpenGL, one that shows pictures.
#include "desk/viewer/ViewerWidget.h"

#include "desk/model/ModelDrag.h"
#include "object/ZAction.h"
#include "zdesktop/ZDragAndDrop.h"
#include "zmanipulator/ZOffscreen.h"
#include "zmanipulator/ZViewer.h"
#include "zmodel/ZModel.h"

#include <QDrag>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QOpenGLWidget>
#include <QPainter>
#include <QSurfaceFormat>
#include <QUrl>
#include <QWheelEvent>

namespace {

int ButtonOf(Qt::MouseButton button)
{
    switch (button) {
    case Qt::LeftButton:
        return kButtonLeft;
    case Qt::MiddleButton:
        return kButtonMiddle;
    case Qt::RightButton:
        return kButtonRight;
    default:
        return 0;
    }
}

/// The Windows key counts as Alt: many window managers keep Alt with a button for themselves.
int ModifiersOf(Qt::KeyboardModifiers modifiers)
{
    return (modifiers.testFlag(Qt::ShiftModifier) ? kModifierShift : 0) |
           (modifiers.testFlag(Qt::ControlModifier) ? kModifierControl : 0) |
           (modifiers & (Qt::AltModifier | Qt::MetaModifier) ? kModifierAlt : 0);
}

/// Pointer and keys of any widget into the viewer; the two widgets below differ in how they paint only.
template <class Base> class InputWidget : public Base
{
public:
    InputWidget(ZViewer& viewer, const ViewerContext& context, QWidget* parent)
        : Base(parent), m_viewer(viewer), m_context(context)
    {
        this->setFocusPolicy(Qt::StrongFocus);
        this->setMouseTracking(true);
        this->setAcceptDrops(true);
        this->setMinimumSize(200, 150);
        this->setObjectName(QStringLiteral("Viewer"));
        this->setAccessibleName(QObject::tr("3D viewer"));
        viewer.SetRedrawListener([this] { this->update(); });
    }
    ~InputWidget() override { m_viewer.SetRedrawListener({}); }

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        const Qt::KeyboardModifiers drag = Qt::ControlModifier | Qt::AltModifier;
        if (event->button() == Qt::LeftButton && (event->modifiers() & drag) == drag) {
            DragModelOut(event->position());
            return;
        }
        m_viewer.Press(X(event->position()), Y(event->position()), ButtonOf(event->button()),
                       ModifiersOf(event->modifiers()));
        m_context.afterEvent();
    }
    void mouseMoveEvent(QMouseEvent* event) override
    {
        m_viewer.Move(X(event->position()), Y(event->position()));
        if (event->buttons() != Qt::NoButton)
            m_context.afterEvent();
    }
    void mouseReleaseEvent(QMouseEvent* event) override
    {
        if (ButtonOf(event->button()) == m_viewer.GetPressedButton()) {
            m_viewer.Release(X(event->position()), Y(event->position()));
            m_context.afterEvent();
        }
    }
    void wheelEvent(QWheelEvent* event) override
    {
        m_viewer.Wheel(X(event->position()), Y(event->position()), event->angleDelta().y() / 120.0);
        m_context.afterEvent();
    }
    void enterEvent(QEnterEvent*) override { m_viewer.Enter(); }
    void leaveEvent(QEvent*) override { m_viewer.Leave(); }
    void focusOutEvent(QFocusEvent* event) override
    {
        m_viewer.CancelGesture();
        Base::focusOutEvent(event);
    }
    void dragEnterEvent(QDragEnterEvent* event) override
    {
        if (event->mimeData()->hasUrls())
            event->acceptProposedAction();
    }
    void dropEvent(QDropEvent* event) override
    {
        event->acceptProposedAction();
        for (const QUrl& url : event->mimeData()->urls())
            if (url.isLocalFile())
                m_context.fileDropped(url.toLocalFile());
    }
    void SizeChanged()
    {
        m_viewer.SetSize(static_cast<int>(this->width() * this->devicePixelRatioF()),
                         static_cast<int>(this->height() * this->devicePixelRatioF()));
    }
    ZViewer& Viewer() { return m_viewer; }

private:
    int X(const QPointF& place) const { return static_cast<int>(place.x() * this->devicePixelRatioF()); }
    int Y(const QPointF& place) const { return static_cast<int>(place.y() * this->devicePixelRatioF()); }

    void DragModelOut(const QPointF& place)
    {
        ZModel* const model = m_viewer.ModelAt(X(place), Y(place));
        if (model == nullptr)
            return;
        GlobalDragAndDrop_Begin();
        GlobalDragAndDrop_Add(model, 0);
        auto* const drag = new QDrag(this);
        auto* const models = new QMimeData;
        models->setData(QString::fromLatin1(kModelDragFormat), "models");
        drag->setMimeData(models);
        drag->exec(Qt::CopyAction);
        GlobalDragAndDrop_End();
    }

    ZViewer& m_viewer;
    ViewerContext m_context;
};

class GlViewerWidget : public InputWidget<QOpenGLWidget>
{
public:
    using InputWidget::InputWidget;

protected:
    void resizeGL(int, int) override { SizeChanged(); }
    void paintGL() override { Viewer().Draw(); }
};

/// Qt's platforms without OpenGL: the picture comes from an off-screen context.
class ImageViewerWidget : public InputWidget<QWidget>
{
public:
    using InputWidget::InputWidget;

protected:
    void resizeEvent(QResizeEvent*) override { SizeChanged(); }
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        ZImage image;
        std::string why;
        if (!ZOffscreen_Grab(Viewer(), image, &why)) {
            painter.drawText(rect(), Qt::AlignCenter, QString::fromStdString(why));
            return;
        }
        const QImage picture(image.rgb.data(), image.width, image.height, image.width * 3, QImage::Format_RGB888);
        painter.drawImage(rect(), picture);
    }
};

} // namespace

QWidget* MakeViewerWidget(ZViewer& viewer, const ViewerContext& context, QWidget* parent)
{
    if (QGuiApplication::platformName() == QLatin1String("offscreen"))
        return new ImageViewerWidget(viewer, context, parent);
    return new GlViewerWidget(viewer, context, parent);
}

void SetViewerSurfaceFormat()
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setProfile(QSurfaceFormat::CompatibilityProfile);
    format.setVersion(2, 1);
    format.setDepthBufferSize(24);
    QSurfaceFormat::setDefaultFormat(format);
}

bool SaveViewerPicture(ZViewer& viewer, const QString& path, QString* why)
{
    ZImage image;
    std::string reason;
    if (!ZOffscreen_Grab(viewer, image, &reason)) {
        *why = QString::fromStdString(reason);
        return false;
    }
    const QImage picture(image.rgb.data(), image.width, image.height, image.width * 3, QImage::Format_RGB888);
    if (picture.save(path))
        return true;
    *why = QObject::tr("%1 cannot be written").arg(path);
    return false;
}
