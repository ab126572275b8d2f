#pragma once

#include "canvasstyle.h"

#include <QGraphicsItem>
#include <QPair>
#include <QVector>

class Node;

/// An item of the graph on the canvas: a card with its name, size, options and status. Reads the
/// model and never changes it; its scene tells it when to look again.
class NodeItem : public QGraphicsItem
{
public:
    enum { Type = UserType + 1 };
    /// Whether a connection that is being dragged may end here.
    enum class Offer { None, Possible, Target, Impossible };
    enum class Grip { None, Body, Input, Output };

    NodeItem(Node *node, const CanvasStyle *style);

    int type() const override { return Type; }
    Node *node() const { return m_node; }
    /// Looks at the model again: texts, status, size.
    virtual void refresh();
    /// Takes its place above or below the others.
    void stack();
    QSizeF size() const { return m_size; }
    /// Of the card without ports, in scene units.
    QRectF cardRect() const { return QRectF(pos(), m_size); }

    bool hasInput() const;
    bool hasOutput() const;
    /// Ends of connections in scene units. Several inputs have their ends one below another.
    QPointF inputEnd(int index, int count) const;
    QPointF outputEnd() const;
    Grip gripAt(const QPointF &scenePos) const;

    bool isInWork() const;
    void setProgress(double fraction);
    void setTurn(double turn);
    void setOffer(Offer offer);
    void setHoveredGrip(Grip grip);
    /// Shows that keys act on this item, where the selection does not tell.
    void markCurrent(bool current);

    const QFont &hintFont() const { return m_style->hintFont; }
    /// Pixels for a scene unit at 100 %.
    double screenScale() const { return m_style->scale; }

    /// For screen readers and, as rich text with the first rows, for the tooltip.
    /// The options in short, or what an input is to tell of itself.
    QString summaryText() const;
    QString spokenText() const;
    QString tooltip() const;

    QRectF boundingRect() const override { return m_bounds; }
    QPainterPath shape() const override { return m_shape; }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *) override;

protected:
    const CanvasStyle &style() const { return *m_style; }
    void setSize(const QSizeF &size, double margin);
    /// Outline of what is selected or current.
    void paintOutline(QPainter *painter, double scale) const;

private:
    void layoutTexts();
    void paintCard(QPainter *painter, double detail) const;
    void paintTexts(QPainter *painter) const;
    void paintWarnings(QPainter *painter) const;
    void paintMap(QPainter *painter, double scale) const;
    void paintPorts(QPainter *painter) const;
    QString sizeLine() const;
    QRectF statusRect() const;

    Node *m_node;
    const CanvasStyle *m_style;
    QSizeF m_size;
    QRectF m_bounds;
    QPainterPath m_shape;
    QStringList m_nameLines;
    QString m_sizeLine;
    QString m_summary;
    QString m_warningCount;
    double m_warningWidth = 0.0;
    double m_textTop = 0.0;
    double m_progress = 0.0;
    double m_turn = 0.0;
    Offer m_offer = Offer::None;
    Grip m_hoveredGrip = Grip::None;
    bool m_isMarkedCurrent = false;
};
