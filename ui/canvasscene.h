#pragma once

#include "canvasstyle.h"

#include <QGraphicsScene>
#include <QHash>
#include <QTimer>
#include <memory>

class CanvasDrag;
class Connection;
class ConnectionItem;
class GraphScene;
class MoveDrag;
class Node;
class NodeItem;

/// Shows a graph: keeps an item for each of its items and connections, in step with its signals,
/// and turns what the mouse does into its editing operations.
class CanvasScene final : public QGraphicsScene
{
    Q_OBJECT

public:
    CanvasScene(GraphScene *graph, const QFont &font, QObject *parent = nullptr);
    ~CanvasScene() override;

    GraphScene *graph() const { return m_graph; }
    const CanvasStyle &canvasStyle() const { return m_style; }
    /// After a change of font or theme.
    void restyle(const QFont &font);
    bool snapToGrid() const;

    QList<NodeItem *> nodeItems() const { return m_nodes.values(); }
    NodeItem *itemOf(const Node *node) const;
    NodeItem *nodeAt(const QPointF &scenePos) const;
    /// The connection whose line is here, when no card covers it.
    Connection *connectionAt(const QPointF &scenePos) const;
    bool isInView(const NodeItem *item) const;
    /// What all items together cover.
    QRectF contentRect() const;
    QVector<QRectF> cardRects() const;
    /// The connections of these items follow them.
    void followItems(const QList<NodeItem *> &items);

    /// The item that keys act on; null when there is none.
    Node *current() const;
    void setCurrent(Node *node);
    void selectOnly(Node *node);
    Connection *chosenConnection() const;
    void chooseConnection(Connection *connection);
    /// Shows where something that is dragged from elsewhere would be put in.
    void hoverConnection(Connection *connection);

    /// The pointer has left the canvas.
    void endHover();

    bool isDragging() const { return m_drag != nullptr || m_keyMove != nullptr; }
    /// Leaves everything as it was before the drag.
    void abortDrag();
    /// Moves the selected items on the canvas; the model learns of it by endKeyMove().
    void keyMove(const QPointF &step);
    void endKeyMove();

Q_SIGNALS:
    void hintChanged(const QString &text);
    void editRequested(Node *node);
    void currentChanged();
    void contentChanged();
    /// A connection was dragged from the item to where nothing is.
    void connectionDropped(Node *from, const QPointF &scenePos);

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseDoubleClickEvent(QGraphicsSceneMouseEvent *event) override;

private:
    void cancelDrag();
    void sync();
    void syncNodes();
    void syncConnections();
    void readSelection();
    void writeSelection();
    void refreshNode(Node *node);
    void moveNode(Node *node);
    void turnRings();
    void markCurrent();
    void raise(NodeItem *item);
    void pressNode(NodeItem *item, QGraphicsSceneMouseEvent *event);
    void startDrag(QGraphicsSceneMouseEvent *event);
    void hover(const QPointF &scenePos);
    double viewScale() const;

    GraphScene *m_graph;
    CanvasStyle m_style;
    QHash<const Node *, NodeItem *> m_nodes;
    QHash<const Connection *, ConnectionItem *> m_connections;
    NodeItem *m_current = nullptr;
    NodeItem *m_hovered = nullptr;
    ConnectionItem *m_chosen = nullptr;
    ConnectionItem *m_hoveredConnection = nullptr;
    /// Pressed but not yet moved far enough to be a drag.
    NodeItem *m_pressed = nullptr;
    int m_pressedGrip = 0;
    bool m_selectOnRelease = false;
    std::unique_ptr<CanvasDrag> m_drag;
    std::unique_ptr<MoveDrag> m_keyMove;
    QTimer m_turning;
    double m_turn = 0.0;
    bool m_isSyncing = false;
};
