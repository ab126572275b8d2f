#include "canvasstyle.h"

#include "icons.h"
#include "node.h"
#include "theme.h"
#include "transform.h"
#include "transformnode.h"

#include <QFontMetricsF>
#include <QPaintDevice>
#include <QPainter>
#include <QPixmapCache>
#include <QTextLayout>
#include <QtMath>
#include <cmath>

namespace {

/// Of the font for which cards have their size.
constexpr double lineHeight = 16.0;

QFont scaled(const QFont &base, double factor)
{
    QFont font = base;
    if (base.pointSizeF() > 0) {
        font.setPointSizeF(base.pointSizeF() * factor);
    } else {
        font.setPixelSize(qMax(1, qRound(base.pixelSize() * factor)));
    }
    return font;
}

void paintTriangle(QPainter *painter, const QRectF &rect, const QColor &color)
{
    QPolygonF triangle;
    triangle << QPointF(rect.center().x(), rect.top() + 0.5)
             << QPointF(rect.right(), rect.bottom() - 1.0)
             << QPointF(rect.left(), rect.bottom() - 1.0);
    painter->setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->setBrush(color);
    painter->drawPolygon(triangle);
    const double unit = rect.height() / 14.0;
    painter->setPen(QPen(Theme::textOn(color), 1.8 * unit, Qt::SolidLine, Qt::RoundCap));
    const double x = rect.center().x();
    painter->drawLine(QPointF(x, rect.top() + 5.2 * unit), QPointF(x, rect.top() + 8.6 * unit));
    painter->drawPoint(QPointF(x, rect.top() + 11.3 * unit));
}

} // namespace

CanvasStyle::CanvasStyle(const QFont &base)
    : card(176.0, 64.0)
    // In steps, for even lines.
    , scale(qMax(0.5, std::round(QFontMetricsF(base).height() * 8.0 / lineHeight) / 8.0))
{
    noteFont = scaled(base, 1.0 / scale);
    hintFont = Theme::hintFont(noteFont);
    nameFont = noteFont;
    nameFont.setBold(true);
    const QFontMetricsF name(nameFont);
    const QFontMetricsF hint(hintFont);
    const QFontMetricsF note(noteFont);
    nameHeight = std::ceil(name.height());
    nameAscent = name.ascent();
    hintHeight = std::ceil(hint.height());
    hintAscent = hint.ascent();
    noteHeight = std::ceil(note.height());
    noteAscent = note.ascent();
}

QStringList CanvasPaint::wrapped(const QString &text, const QFont &font, double width, int maximum)
{
    QStringList lines;
    const QFontMetricsF metrics(font);
    const QStringList paragraphs = text.split(QLatin1Char('\n'));
    for (const QString &paragraph : paragraphs) {
        QTextLayout layout(paragraph, font);
        QTextOption option;
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(width);
            if (lines.size() == maximum - 1) {
                const QString rest = paragraph.mid(line.textStart());
                lines.append(metrics.elidedText(rest, Qt::ElideMiddle, width));
                layout.endLayout();
                return lines;
            }
            lines.append(paragraph.mid(line.textStart(), line.textLength()).trimmed());
        }
        layout.endLayout();
    }
    return lines;
}

void CanvasPaint::status(QPainter *painter, const QRectF &rect, ItemStatus status, double turn)
{
    const Theme &theme = Theme::current();
    const QColor color = theme.statusColor(status);
    const double unit = rect.height() / 14.0;
    const QRectF ring = rect.adjusted(2 * unit, 2 * unit, -2 * unit, -2 * unit);
    painter->setBrush(Qt::NoBrush);
    switch (status) {
    case ItemStatus::NeedsUpdating:
        painter->setPen(QPen(color, 1.75 * unit));
        painter->drawEllipse(ring);
        break;
    case ItemStatus::Updating:
        painter->setPen(QPen(mixed(color, theme.card, 0.3), 2.0 * unit));
        painter->drawEllipse(ring);
        painter->setPen(QPen(color, 2.25 * unit, Qt::SolidLine, Qt::RoundCap));
        painter->drawArc(ring, -qRound(turn * 360 * 16), 110 * 16);
        break;
    case ItemStatus::UpToDate: {
        const QPointF tick[] = {rect.topLeft() + QPointF(2.5, 7.5) * unit,
                                rect.topLeft() + QPointF(5.5, 10.5) * unit,
                                rect.topLeft() + QPointF(11.5, 3.5) * unit};
        painter->setPen(QPen(color, 2.25 * unit, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->drawPolyline(tick, 3);
        break;
    }
    case ItemStatus::Error:
        paintTriangle(painter, rect, color);
        break;
    }
}

void CanvasPaint::picture(QPainter *painter, const QRectF &rect, const QString &name,
                          const QColor &color, double scale)
{
    const double ratio = painter->device()->devicePixelRatioF();
    const int pixels = qBound(1, qCeil(rect.width() * scale * ratio), 512);
    const QString key =
        QStringLiteral("canvas/%1/%2/%3").arg(name, color.name(), QString::number(pixels));
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = QPixmap(pixels, pixels);
        pixmap.fill(Qt::transparent);
        QPainter own(&pixmap);
        Icons::colored(name, color).paint(&own, pixmap.rect());
        own.end();
        QPixmapCache::insert(key, pixmap);
    }
    painter->drawPixmap(rect, pixmap, QRectF(pixmap.rect()));
}

QString CanvasPaint::pictureOf(const Node &node)
{
    switch (node.kind()) {
    case ItemKind::Input:
        return QStringLiteral("input");
    case ItemKind::Output:
        return QStringLiteral("output");
    case ItemKind::Note:
        return QStringLiteral("note");
    case ItemKind::Transform:
        break;
    }
    return Icons::transformPicture(static_cast<const TransformNode &>(node).transform().typeName());
}

QColor CanvasPaint::colorOf(const Node &node)
{
    const Theme &theme = Theme::current();
    return node.kind() == ItemKind::Transform
               ? theme.categoryColor(
                     static_cast<const TransformNode &>(node).transform().category())
               : theme.kindColor(node.kind());
}

QColor CanvasPaint::mixed(const QColor &first, const QColor &second, double share)
{
    return QColor::fromRgbF(first.redF() * share + second.redF() * (1 - share),
                            first.greenF() * share + second.greenF() * (1 - share),
                            first.blueF() * share + second.blueF() * (1 - share));
}
