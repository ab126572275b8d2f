#include "canvasscene.h"

#include "canvasdrag.h"
#include "connection.h"
#include "connectionitem.h"
#include "graphscene.h"
#include "nodeitem.h"
#include "noteitem.h"

#include <QGraphicsView>
#include <QScopedValueRollback>

namespace {

constexpr int turnMilliseconds = 60;
constexpr double turnStep = 0.06;
/// The canvas goes on around its content, so that it can be moved out of the way.
constexpr double surroundings = 20000.0;

} // namespace

CanvasScene::CanvasScene(GraphScene *graph, const QFont &font, QObject *parent)
    : QGraphicsScene(parent)
    , m_graph(graph)
    , m_style(font)
{
    connect(graph, &GraphScene::nodesAdded, this, &CanvasScene::sync);
    connect(graph, &GraphScene::nodesDeleted, this, &CanvasScene::sync);
    connect(graph, &GraphScene::connectionsChanged, this, &CanvasScene::sync);
    connect(graph, &GraphScene::selectionChanged, this, &CanvasScene::readSelection);
    connect(graph, &GraphScene::nodeDataChanged, this, &CanvasScene::refreshNode);
    connect(graph, &GraphScene::nodePosChanged, this, &CanvasScene::moveNode);
    connect(graph, &GraphScene::processed, this, [this](Node *node, qreal fraction) {
        if (NodeItem *item = itemOf(node)) {
            item->setProgress(fraction);
        }
    });
    connect(this, &QGraphicsScene::selectionChanged, this, &CanvasScene::writeSelection);
    m_turning.setInterval(turnMilliseconds);
    connect(&m_turning, &QTimer::timeout, this, &CanvasScene::turnRings);
    sync();
    readSelection();
}

CanvasScene::~CanvasScene()
{
    // The drags put their items back, which are gone when the base class is destroyed.
    disconnect(this, nullptr, this, nullptr);
    cancelDrag();
}

void CanvasScene::restyle(const QFont &font)
{
    cancelDrag();
    m_style = CanvasStyle(font);
    for (NodeItem *item : std::as_const(m_nodes)) {
        item->refresh();
    }
    followItems(nodeItems());
    update();
}

bool CanvasScene::snapToGrid() const
{
    return m_graph->document().snapToGrid;
}

// --- In step with the model

void CanvasScene::sync()
{
    cancelDrag();
    {
        const QScopedValueRollback<bool> syncing(m_isSyncing, true);
        syncNodes();
        syncConnections();
    }
    const QRectF content = contentRect();
    setSceneRect(content.adjusted(-surroundings, -surroundings, surroundings, surroundings));
    readSelection();
    Q_EMIT currentChanged();
    Q_EMIT contentChanged();
}

void CanvasScene::syncNodes()
{
    const QList<Node *> nodes = m_graph->nodesByAddition();
    const QSet<const Node *> present(nodes.begin(), nodes.end());
    const QList<Connection *> connections = m_graph->connections();
    const QSet<const Connection *> presentConnections(connections.begin(), connections.end());
    // Connections first: they refer to the items of their ends.
    for (auto it = m_connections.begin(); it != m_connections.end();) {
        if (presentConnections.contains(it.key())) {
            ++it;
            continue;
        }
        m_chosen = m_chosen == it.value() ? nullptr : m_chosen;
        m_hoveredConnection = m_hoveredConnection == it.value() ? nullptr : m_hoveredConnection;
        delete it.value();
        it = m_connections.erase(it);
    }
    for (auto it = m_nodes.begin(); it != m_nodes.end();) {
        if (present.contains(it.key())) {
            ++it;
            continue;
        }
        m_current = m_current == it.value() ? nullptr : m_current;
        m_hovered = m_hovered == it.value() ? nullptr : m_hovered;
        m_pressed = m_pressed == it.value() ? nullptr : m_pressed;
        delete it.value();
        it = m_nodes.erase(it);
    }
    for (Node *node : nodes) {
        if (m_nodes.contains(node)) {
            continue;
        }
        NodeItem *item = node->kind() == ItemKind::Note ? new NoteItem(node, &m_style)
                                                        : new NodeItem(node, &m_style);
        item->setPos(node->pos());
        item->refresh();
        item->stack();
        m_nodes.insert(node, item);
        addItem(item);
    }
}

void CanvasScene::syncConnections()
{
    const QList<Connection *> connections = m_graph->connections();
    for (Connection *connection : connections) {
        if (!m_connections.contains(connection)) {
            auto *item = new ConnectionItem(connection, m_nodes.value(connection->from()),
                                            m_nodes.value(connection->to()));
            m_connections.insert(connection, item);
            addItem(item);
        }
    }
    for (ConnectionItem *item : std::as_const(m_connections)) {
        item->follow();
    }
    for (NodeItem *item : std::as_const(m_nodes)) {
        item->update();
    }
}

void CanvasScene::refreshNode(Node *node)
{
    NodeItem *item = itemOf(node);
    if (!item) {
        return;
    }
    item->refresh();
    if (item->isInWork() && !m_turning.isActive()) {
        m_turning.start();
    }
    if (item == m_current) {
        Q_EMIT currentChanged();
    }
}

void CanvasScene::moveNode(Node *node)
{
    NodeItem *item = itemOf(node);
    if (!item) {
        return;
    }
    item->setPos(node->pos());
    // The order of the inputs below may be another one now.
    QList<NodeItem *> moved{item};
    const QList<Node *> below = node->downstreamNodes();
    for (const Node *each : below) {
        moved.append(m_nodes.value(each));
    }
    followItems(moved);
}

void CanvasScene::turnRings()
{
    m_turn += turnStep;
    m_turn = m_turn > 1.0 ? m_turn - 1.0 : m_turn;
    bool isAny = false;
    for (NodeItem *item : std::as_const(m_nodes)) {
        if (item->isInWork()) {
            item->setTurn(m_turn);
            isAny = true;
        }
    }
    if (!isAny) {
        m_turning.stop();
    }
}

void CanvasScene::followItems(const QList<NodeItem *> &items)
{
    const QSet<const NodeItem *> moved(items.begin(), items.end());
    for (ConnectionItem *connection : std::as_const(m_connections)) {
        if (moved.contains(connection->from()) || moved.contains(connection->to())) {
            connection->follow();
        }
    }
}

// --- What is where

NodeItem *CanvasScene::itemOf(const Node *node) const
{
    return m_nodes.value(node);
}

NodeItem *CanvasScene::nodeAt(const QPointF &scenePos) const
{
    const QList<QGraphicsItem *> found = items(scenePos);
    for (QGraphicsItem *item : found) {
        if (auto *node = qgraphicsitem_cast<NodeItem *>(item)) {
            return node;
        }
    }
    return nullptr;
}

Connection *CanvasScene::connectionAt(const QPointF &scenePos) const
{
    const QList<QGraphicsItem *> found = items(scenePos);
    for (QGraphicsItem *item : found) {
        if (qgraphicsitem_cast<NodeItem *>(item)) {
            return nullptr;
        }
        if (auto *connection = qgraphicsitem_cast<ConnectionItem *>(item)) {
            return connection->connection();
        }
    }
    return nullptr;
}

bool CanvasScene::isInView(const NodeItem *item) const
{
    const QGraphicsView *view = views().value(0);
    return !view ||
           view->mapToScene(view->viewport()->rect()).boundingRect().intersects(item->cardRect());
}

double CanvasScene::viewScale() const
{
    const QGraphicsView *view = views().value(0);
    return view ? view->transform().m11() : 1.0;
}

QRectF CanvasScene::contentRect() const
{
    QRectF rect;
    for (const NodeItem *item : m_nodes) {
        rect |= item->cardRect();
    }
    return rect;
}

QVector<QRectF> CanvasScene::cardRects() const
{
    QVector<QRectF> rects;
    for (const NodeItem *item : m_nodes) {
        rects.append(item->cardRect());
    }
    return rects;
}

// --- Selection

void CanvasScene::readSelection()
{
    if (m_isSyncing) {
        return;
    }
    const QScopedValueRollback<bool> syncing(m_isSyncing, true);
    const QList<Node *> nodes = m_graph->selectedNodes();
    const QSet<const Node *> selected(nodes.begin(), nodes.end());
    for (auto it = m_nodes.begin(); it != m_nodes.end(); ++it) {
        it.value()->setSelected(selected.contains(it.key()));
    }
    if (!nodes.isEmpty() && (!m_current || !m_current->isSelected())) {
        setCurrent(nodes.first());
    }
    markCurrent();
}

void CanvasScene::writeSelection()
{
    if (m_isSyncing) {
        return;
    }
    QList<Node *> selected;
    const QList<QGraphicsItem *> chosen = selectedItems();
    for (QGraphicsItem *item : chosen) {
        if (auto *node = qgraphicsitem_cast<NodeItem *>(item)) {
            selected.append(node->node());
        }
    }
    m_graph->setSelectedNodes(selected);
    markCurrent();
}

Node *CanvasScene::current() const
{
    return m_current ? m_current->node() : nullptr;
}

void CanvasScene::setCurrent(Node *node)
{
    NodeItem *item = itemOf(node);
    if (item == m_current) {
        return;
    }
    if (m_current) {
        m_current->markCurrent(false);
    }
    m_current = item;
    markCurrent();
    if (m_current) {
        raise(m_current);
    }
    Q_EMIT currentChanged();
}

// Above the cards that it may lie on.
void CanvasScene::raise(NodeItem *item)
{
    int highest = 0;
    for (const NodeItem *other : std::as_const(m_nodes)) {
        if (other != item) {
            highest = qMax(highest, other->node()->stackingOrder() + 1);
        }
    }
    if (m_nodes.size() > 1 && item->node()->stackingOrder() < highest) {
        item->node()->setStackingOrder(highest);
        item->stack();
    }
}

void CanvasScene::markCurrent()
{
    if (m_current) {
        m_current->markCurrent(!m_current->isSelected() || selectedItems().size() > 1);
    }
}

void CanvasScene::selectOnly(Node *node)
{
    chooseConnection(nullptr);
    m_graph->setSelectedNodes(node ? QList<Node *>{node} : QList<Node *>());
    setCurrent(node);
}

Connection *CanvasScene::chosenConnection() const
{
    return m_chosen ? m_chosen->connection() : nullptr;
}

void CanvasScene::chooseConnection(Connection *connection)
{
    if (m_chosen) {
        m_chosen->setChosen(false);
    }
    m_chosen = m_connections.value(connection);
    if (m_chosen) {
        m_graph->setSelectedNodes({});
        m_chosen->setChosen(true);
    }
}

void CanvasScene::hoverConnection(Connection *connection)
{
    ConnectionItem *item = m_connections.value(connection);
    if (item != m_hoveredConnection) {
        if (m_hoveredConnection) {
            m_hoveredConnection->setHovered(false);
        }
        m_hoveredConnection = item;
        if (item) {
            item->setHovered(true);
        }
    }
}
