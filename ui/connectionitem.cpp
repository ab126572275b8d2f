#include "connectionitem.h"

#include "connection.h"
#include "node.h"
#include "nodeitem.h"
#include "theme.h"

#include <QPainter>
#include <QPainterPathStroker>
#include <QStyleOptionGraphicsItem>

namespace {

constexpr double arrowLength = 9.0;
constexpr double arrowHalfWidth = 4.5;
constexpr double gripWidth = 14.0;
/// What is painted around the line: arrow, thick line and number.
constexpr double margin = 10.0;
constexpr double numberSide = 16.0;

} // namespace

QPainterPath ConnectionCurve::path(const QPointF &start, const QPointF &end)
{
    // The arrow's length is straight, so that it points along the line.
    const QPointF neck = end - QPointF(arrowLength, 0.0);
    const double distance = qAbs(neck.x() - start.x());
    const double bend =
        neck.x() > start.x() ? qMax(distance / 2, 24.0) : qMin(120.0, 48.0 + distance / 2);
    QPainterPath path(start);
    path.cubicTo(start + QPointF(bend, 0.0), neck - QPointF(bend, 0.0), neck);
    return path;
}

void ConnectionCurve::paint(QPainter *painter, const QPainterPath &path, const QColor &color,
                            double width, Qt::PenStyle style)
{
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(Qt::NoBrush);
    painter->setPen(QPen(color, width, style, Qt::FlatCap));
    painter->drawPath(path);
    const QPointF neck = path.currentPosition();
    const QPointF arrow[] = {neck + QPointF(-1.0, -arrowHalfWidth),
                             neck + QPointF(arrowLength, 0.0),
                             neck + QPointF(-1.0, arrowHalfWidth)};
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    painter->drawPolygon(arrow, 3);
}

ConnectionItem::ConnectionItem(Connection *connection, NodeItem *from, NodeItem *to)
    : m_connection(connection)
    , m_from(from)
    , m_to(to)
{
    setZValue(0.0);
    follow();
}

void ConnectionItem::follow()
{
    const QVector<Connection *> &inputs = m_to->node()->upstreamConnections();
    const int index = qMax(0, inputs.indexOf(m_connection));
    const int count = qMax(1, inputs.size());
    const QPainterPath path = ConnectionCurve::path(
        m_from->outputEnd(), m_to->inputEnd(index, count) - QPointF(CanvasStyle::portRadius, 0.0));
    const QString number = count > 1 ? QString::number(index + 1) : QString();
    if (path == m_path && number == m_number) {
        return;
    }
    prepareGeometryChange();
    m_path = path;
    m_number = number;
    m_bounds = path.controlPointRect().adjusted(-margin, -margin, margin, margin);
    QPainterPathStroker stroker;
    stroker.setWidth(gripWidth);
    m_shape = stroker.createStroke(path);
    update();
}

void ConnectionItem::setChosen(bool chosen)
{
    m_isChosen = chosen;
    update();
}

void ConnectionItem::setHovered(bool hovered)
{
    m_isHovered = hovered;
    update();
}

void ConnectionItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *)
{
    const Theme &theme = Theme::current();
    const bool isStrong = m_isChosen || m_isHovered;
    ConnectionCurve::paint(painter, m_path, isStrong ? theme.accent : theme.secondaryText,
                           m_isChosen    ? 3.5
                           : m_isHovered ? 2.5
                                         : 2.0);
    const double scale = option->levelOfDetailFromTransform(painter->worldTransform());
    if (m_number.isEmpty() || scale < CanvasStyle::detailScale * m_to->screenScale()) {
        return;
    }
    const QPointF middle = m_path.currentPosition() - QPointF(numberSide / 2 + 3, 0.0);
    const QRectF place(middle.x() - numberSide / 2, middle.y() - numberSide / 2, numberSide,
                       numberSide);
    painter->setPen(QPen(isStrong ? theme.accent : theme.secondaryText, 1.0));
    painter->setBrush(theme.canvas);
    painter->drawEllipse(place.adjusted(0.5, 0.5, -0.5, -0.5));
    painter->setPen(theme.text);
    painter->setFont(m_to->hintFont());
    painter->drawText(place, Qt::AlignCenter, m_number);
}

DraftItem::DraftItem()
{
    setZValue(4.0);
}

void DraftItem::set(const QPointF &start, const QPointF &end, const QColor &color)
{
    prepareGeometryChange();
    m_path = ConnectionCurve::path(start, end);
    m_color = color;
    update();
}

QRectF DraftItem::boundingRect() const
{
    return m_path.controlPointRect().adjusted(-margin, -margin, margin, margin);
}

void DraftItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    ConnectionCurve::paint(painter, m_path, m_color, 2.0, Qt::DashLine);
}
