#pragma once

#include <QGraphicsItem>
#include <QPainterPath>

class Connection;
class NodeItem;

/// The curve of a connection from one port to another.
namespace ConnectionCurve {
QPainterPath path(const QPointF &start, const QPointF &end);
void paint(QPainter *painter, const QPainterPath &path, const QColor &color, double width,
           Qt::PenStyle style = Qt::SolidLine);
} // namespace ConnectionCurve

/// A connection on the canvas. It is easier to hit than its line is wide.
class ConnectionItem final : public QGraphicsItem
{
public:
    enum { Type = UserType + 2 };

    ConnectionItem(Connection *connection, NodeItem *from, NodeItem *to);

    int type() const override { return Type; }
    Connection *connection() const { return m_connection; }
    const NodeItem *from() const { return m_from; }
    const NodeItem *to() const { return m_to; }
    /// To be called when one of its items was moved or has more or fewer inputs.
    void follow();
    void setChosen(bool chosen);
    void setHovered(bool hovered);

    QRectF boundingRect() const override { return m_bounds; }
    QPainterPath shape() const override { return m_shape; }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *) override;

private:
    Connection *m_connection;
    NodeItem *m_from;
    NodeItem *m_to;
    QPainterPath m_path;
    QPainterPath m_shape;
    QRectF m_bounds;
    /// The place among the inputs, for targets with several.
    QString m_number;
    bool m_isChosen = false;
    bool m_isHovered = false;
};

/// The connection that is being dragged.
class DraftItem final : public QGraphicsItem
{
public:
    DraftItem();
    void set(const QPointF &start, const QPointF &end, const QColor &color);
    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *) override;

private:
    QPainterPath m_path;
    QColor m_color;
};
