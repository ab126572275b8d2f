#include "canvasgeometry.h"

#include "canvasstyle.h"

#include <cmath>
#include <limits>

namespace CanvasGeometry {

QPointF freePlace(const QVector<QRectF> &taken, const QPointF &start, const QSizeF &size)
{
    constexpr double around = 2 * CanvasStyle::grid;
    QRectF place(onGrid(start), size);
    // Each round leaves one more rectangle behind, so this ends.
    for (bool isFree = false; !isFree;) {
        isFree = true;
        for (const QRectF &rect : taken) {
            if (rect.adjusted(-around, -around, around, around).intersects(place)) {
                const double below = rect.bottom() + around;
                place.moveTop(std::ceil(below / CanvasStyle::grid) * CanvasStyle::grid);
                isFree = false;
            }
        }
    }
    return place.topLeft();
}

int neighbour(const QVector<QPointF> &points, int from, Direction direction)
{
    int best = -1;
    double least = std::numeric_limits<double>::max();
    for (int i = 0; i < points.size(); ++i) {
        const QPointF way = points[i] - points[from];
        const bool isHorizontal = direction == Direction::Left || direction == Direction::Right;
        double along = isHorizontal ? way.x() : way.y();
        const double across = std::abs(isHorizontal ? way.y() : way.x());
        if (direction == Direction::Left || direction == Direction::Up) {
            along = -along;
        }
        // What is far more to the side than ahead does not lie in this direction.
        if (along <= 0.5 || across > 3 * along) {
            continue;
        }
        const double cost = along + 2 * across;
        if (cost < least) {
            least = cost;
            best = i;
        }
    }
    return best;
}

QPointF onGrid(const QPointF &place)
{
    return QPointF(std::round(place.x() / CanvasStyle::grid),
                   std::round(place.y() / CanvasStyle::grid)) *
           CanvasStyle::grid;
}

Alignment aligned(const QRectF &moved, const QVector<QRectF> &others, double reach)
{
    // The nearest of the others' edges, for each axis.
    const auto nearest = [&](bool isX, double *shift) {
        const QRectF *found = nullptr;
        double least = reach;
        for (const QRectF &other : others) {
            const double pairs[][2] = {
                {isX ? moved.left() : moved.top(), isX ? other.left() : other.top()},
                {isX ? moved.center().x() : moved.center().y(),
                 isX ? other.center().x() : other.center().y()},
                {isX ? moved.right() : moved.bottom(), isX ? other.right() : other.bottom()}};
            for (const auto &[mine, its] : pairs) {
                if (std::abs(its - mine) < least) {
                    least = std::abs(its - mine);
                    *shift = its - mine;
                    found = &other;
                }
            }
        }
        return found;
    };
    Alignment result;
    double dx = 0.0;
    double dy = 0.0;
    const QRectF *inX = nearest(true, &dx);
    const QRectF *inY = nearest(false, &dy);
    result.shift = QPointF(dx, dy);
    result.isAlignedX = inX != nullptr;
    result.isAlignedY = inY != nullptr;
    const QRectF there = moved.translated(result.shift);
    if (inX) {
        const double x = qFuzzyCompare(there.left() + 1e6, inX->left() + 1e6) ? there.left()
                         : qFuzzyCompare(there.right() + 1e6, inX->right() + 1e6)
                             ? there.right()
                             : there.center().x();
        result.guides.append(
            QLineF(x, qMin(there.top(), inX->top()), x, qMax(there.bottom(), inX->bottom())));
    }
    if (inY) {
        const double y = qFuzzyCompare(there.top() + 1e6, inY->top() + 1e6) ? there.top()
                         : qFuzzyCompare(there.bottom() + 1e6, inY->bottom() + 1e6)
                             ? there.bottom()
                             : there.center().y();
        result.guides.append(
            QLineF(qMin(there.left(), inY->left()), y, qMax(there.right(), inY->right()), y));
    }
    return result;
}

} // namespace CanvasGeometry
