#pragma once

#include <QColor>
#include <QFont>
#include <QPixmap>
#include <QSizeF>
#include <QStringList>

class Node;
class QPainter;
class QRectF;
enum class ItemStatus : qint32;

/// Fonts and measures of the canvas, in scene units. Cards have the same size on every machine, so
/// that a document looks the same; the view enlarges all of them with the font of the desktop. Made
/// once, because asking for font metrics is too slow for painting.
struct CanvasStyle
{
    explicit CanvasStyle(const QFont &base);

    static constexpr double grid = 8.0;
    static constexpr double cornerRadius = 6.0;
    static constexpr double bandWidth = 28.0;
    static constexpr double padding = 8.0;
    static constexpr double statusSize = 14.0;
    static constexpr double portRadius = 4.5;
    /// How far from a port's middle it can be taken.
    static constexpr double portGrip = 11.0;
    /// Below the first scale only the map is painted, above the second only the details.
    static constexpr double mapScale = 0.3;
    static constexpr double detailScale = 0.4;
    /// Free space that is left between items that are placed.
    static constexpr double gap = 72.0;

    QFont nameFont;
    QFont hintFont;
    QFont noteFont;
    double nameHeight;
    double nameAscent;
    double hintHeight;
    double hintAscent;
    double noteHeight;
    double noteAscent;
    QSizeF card;
    /// Pixels for a scene unit at 100 %, so that texts have the size they have elsewhere.
    double scale;
};

/// Small drawings that the items of the canvas share.
namespace CanvasPaint {

/// At most `maximum` lines; what does not fit is left out in the middle of the last one.
QStringList wrapped(const QString &text, const QFont &font, double width, int maximum);
/// A status by shape and colour; `turn` (0 to 1) turns the ring of an item in work.
void status(QPainter *painter, const QRectF &rect, ItemStatus status, double turn);
/// The picture of an item in one colour; kept, so that painting again costs little.
void picture(QPainter *painter, const QRectF &rect, const QString &name, const QColor &color,
             double scale);
QString pictureOf(const Node &node);
QColor colorOf(const Node &node);
/// `share` of the first, the rest of the second.
QColor mixed(const QColor &first, const QColor &second, double share);

} // namespace CanvasPaint
