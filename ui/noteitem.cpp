#include "noteitem.h"

#include "notenode.h"
#include "theme.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QStyleOptionGraphicsItem>
#include <cmath>

namespace {

constexpr double widest = 240.0;
constexpr int mostLines = 20;
constexpr double arrowLength = 12.0;
constexpr double arrowHalfWidth = 9.0;

QColor colorOf(const NoteNode &note)
{
    const QColor color(note.color());
    return color.isValid() ? color : QColor(QStringLiteral("#ffffcc"));
}

} // namespace

void NoteItem::refresh()
{
    const auto *note = static_cast<const NoteNode *>(node());
    const QString text = note->comment().isEmpty()
                             ? QCoreApplication::translate("NoteItem", "Empty note")
                             : note->comment();
    m_lines = CanvasPaint::wrapped(text, style().noteFont, widest, mostLines);
    const QFontMetricsF metrics(style().noteFont);
    double width = 48.0;
    for (const QString &line : std::as_const(m_lines)) {
        width = qMax(width, metrics.horizontalAdvance(line));
    }
    prepareGeometryChange();
    setSize(QSizeF(std::ceil(width) + 2 * CanvasStyle::padding,
                   m_lines.size() * style().noteHeight + 2 * CanvasStyle::padding),
            arrowLength + 3.0);
    layoutArrow(int(note->arrow()));
    update();
}

void NoteItem::layoutArrow(int direction)
{
    m_arrow.clear();
    const double w = size().width();
    const double h = size().height();
    const auto arrow = [this](const QPointF &foot, const QPointF &along) {
        const QPointF across(along.y(), along.x());
        m_arrow << foot + across * arrowHalfWidth << foot + along * arrowLength
                << foot - across * arrowHalfWidth;
    };
    switch (NoteArrow(direction)) {
    case NoteArrow::None:
        break;
    case NoteArrow::Up:
        arrow({w / 2, 0.0}, {0.0, -1.0});
        break;
    case NoteArrow::Right:
        arrow({w, h / 2}, {1.0, 0.0});
        break;
    case NoteArrow::Down:
        arrow({w / 2, h}, {0.0, 1.0});
        break;
    case NoteArrow::Left:
        arrow({0.0, h / 2}, {-1.0, 0.0});
        break;
    }
}

void NoteItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *)
{
    painter->setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    const QColor color = colorOf(*static_cast<const NoteNode *>(node()));
    QPainterPath outline;
    outline.addRoundedRect(QRectF(QPointF(), size()), 4.0, 4.0);
    if (!m_arrow.isEmpty()) {
        QPainterPath arrow;
        arrow.addPolygon(m_arrow);
        arrow.closeSubpath();
        outline = outline.united(arrow);
    }
    painter->setBrush(color);
    painter->setPen(QPen(CanvasPaint::mixed(color, Theme::textOn(color), 0.75), 1.0));
    painter->drawPath(outline);
    painter->setFont(style().noteFont);
    painter->setPen(Theme::textOn(color));
    double y = CanvasStyle::padding + style().noteAscent;
    for (const QString &line : std::as_const(m_lines)) {
        painter->drawText(QPointF(CanvasStyle::padding, y), line);
        y += style().noteHeight;
    }
    paintOutline(painter, option->levelOfDetailFromTransform(painter->worldTransform()));
}
