// SPDX-License-Identifier: MIT
// Each icon as a few strokes on a square of 16 units.
#include "desk/windows/Icons.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>

namespace {

constexpr int kUnits = 16;

void DrawMesh(QPainter& painter)
{
    const QPolygonF outline({{8, 1.5}, {14.5, 6}, {12, 14}, {4, 14}, {1.5, 6}});
    painter.drawPolygon(outline);
    for (const QPointF& corner : outline)
        painter.drawLine(QPointF(8, 8.5), corner);
}

void DrawSurface(QPainter& painter)
{
    QPainterPath path(QPointF(1.5, 5));
    path.cubicTo(6, 0.5, 9, 8, 14.5, 3);
    path.lineTo(14.5, 11.5);
    path.cubicTo(9, 16.5, 6, 9, 1.5, 13.5);
    path.closeSubpath();
    painter.drawPath(path);
    painter.drawLine(QPointF(8, 4.2), QPointF(8, 12.6));
    QPainterPath middle(QPointF(1.5, 9.2));
    middle.cubicTo(6, 4.8, 9, 12.2, 14.5, 7.2);
    painter.drawPath(middle);
}

void DrawBone(QPainter& painter)
{
    painter.drawEllipse(QPointF(3.5, 12.5), 2, 2);
    painter.drawPolygon(QPolygonF({{4.2, 9.6}, {6.4, 11.8}, {14, 2}}));
}

void DrawNode(QPainter& painter)
{
    painter.drawLine(QPointF(5, 11), QPointF(5, 2));
    painter.drawLine(QPointF(5, 11), QPointF(14, 11));
    painter.drawLine(QPointF(5, 11), QPointF(1.5, 14.5));
}

void DrawEye(QPainter& painter, bool open)
{
    QPainterPath lid(QPointF(1, 8));
    lid.quadTo(8, 15, 15, 8);
    if (open)
        lid.quadTo(8, 1, 1, 8);
    painter.drawPath(lid);
    if (open) {
        painter.setBrush(painter.pen().color());
        painter.drawEllipse(QPointF(8, 8), 2, 2);
    }
}

void DrawLock(QPainter& painter, bool closed)
{
    painter.save();
    if (closed)
        painter.setBrush(painter.pen().color());
    painter.drawRect(QRectF(3.5, 7.5, 9, 7));
    painter.restore();
    QPainterPath shackle(QPointF(5, 7.5));
    shackle.lineTo(5, 5);
    shackle.cubicTo(5, 0.5, 11, 0.5, 11, 5);
    if (closed)
        shackle.lineTo(11, 7.5);
    painter.drawPath(shackle);
}

void DrawTransport(QPainter& painter, DeskIcon icon)
{
    painter.setBrush(painter.pen().color());
    if (icon == DeskIcon::Play) {
        painter.drawPolygon(QPolygonF({{4, 2}, {13, 8}, {4, 14}}));
    } else if (icon == DeskIcon::Pause) {
        painter.drawRect(QRectF(3, 2, 3, 12));
        painter.drawRect(QRectF(10, 2, 3, 12));
    } else {
        painter.drawRect(QRectF(2.5, 2, 1.5, 12));
        painter.drawPolygon(QPolygonF({{13, 2}, {5, 8}, {13, 14}}));
    }
}

/// A joint between two bones, with the weight of one fading into the other.
void DrawApplication(QPainter& painter)
{
    QLinearGradient fade(0, 0, kUnits, 0);
    fade.setColorAt(0, QColor(222, 74, 60));
    fade.setColorAt(1, QColor(58, 108, 216));
    painter.setBrush(fade);
    painter.setPen(QPen(QColor(32, 34, 44), 0.8));
    QPainterPath limb(QPointF(1, 3));
    limb.cubicTo(6, 3, 9, 4, 10.5, 7);
    limb.lineTo(15, 12);
    limb.lineTo(12, 15);
    limb.lineTo(7, 10);
    limb.cubicTo(5.5, 8, 4, 8, 1, 8);
    limb.closeSubpath();
    painter.drawPath(limb);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(8.4, 7), 1.3, 1.3);
}

void Draw(QPainter& painter, DeskIcon icon)
{
    switch (icon) {
    case DeskIcon::Application:
        return DrawApplication(painter);
    case DeskIcon::Mesh:
        return DrawMesh(painter);
    case DeskIcon::Surface:
        return DrawSurface(painter);
    case DeskIcon::Bone:
        return DrawBone(painter);
    case DeskIcon::Node:
        return DrawNode(painter);
    case DeskIcon::Shown:
    case DeskIcon::Hidden:
        return DrawEye(painter, icon == DeskIcon::Shown);
    case DeskIcon::Free:
    case DeskIcon::Locked:
        return DrawLock(painter, icon == DeskIcon::Locked);
    case DeskIcon::Play:
    case DeskIcon::Pause:
    case DeskIcon::ToStart:
        return DrawTransport(painter, icon);
    }
}

} // namespace

QIcon MakeIcon(DeskIcon icon)
{
    QIcon made;
    const QColor colour = QGuiApplication::palette().color(QPalette::WindowText);
    for (const int side : {16, 24, 32, 64, 128}) {
        QPixmap picture(side, side);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(double(side) / kUnits, double(side) / kUnits);
        painter.setPen(QPen(colour, 1.1, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        Draw(painter, icon);
        painter.end();
        made.addPixmap(picture);
    }
    return made;
}
