#pragma once

#include <QLineF>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QVector>

/// Where things go on the canvas, without anything being painted.
namespace CanvasGeometry {

enum class Direction { Left, Right, Up, Down };

/// `start`, or the nearest place below it where a card has some room around it.
QPointF freePlace(const QVector<QRectF> &taken, const QPointF &start, const QSizeF &size);

/// The index of the point to go to from one of them; -1 when there is none in that direction.
int neighbour(const QVector<QPointF> &points, int from, Direction direction);

QPointF onGrid(const QPointF &place);

/// How far what is moved has to go further to be aligned with something, and the lines to show.
struct Alignment
{
    QPointF shift;
    bool isAlignedX = false;
    bool isAlignedY = false;
    QVector<QLineF> guides;
};
/// Left and right edges and middles are compared when they are no further apart than `reach`.
Alignment aligned(const QRectF &moved, const QVector<QRectF> &others, double reach);

} // namespace CanvasGeometry
