#include "graphscene.h"

#include "connection.h"
#include "inputnode.h"
#include "outputnode.h"
#include "runengine.h"
#include "transform.h"
#include "transformnode.h"
#include "userinterface.h"

#include <QUndoStack>
#include <algorithm>
#include <limits>

namespace {

template <class T, ItemKind kind>
QList<T *> ofKind(const QList<Node *> &nodes)
{
    QList<T *> result;
    for (Node *node : nodes) {
        if (node->kind() == kind) {
            result.append(static_cast<T *>(node));
        }
    }
    return result;
}

bool isInputBefore(const Connection *a, const Connection *b)
{
    const QPointF p = a->from()->pos();
    const QPointF q = b->from()->pos();
    if (p.y() < q.y() || p.y() > q.y()) {
        return p.y() < q.y();
    }
    if (p.x() < q.x() || p.x() > q.x()) {
        return p.x() < q.x();
    }
    return a->from()->id() < b->from()->id();
}

/// One side of a search for a path: goes up or down from an item.
class Walker
{
public:
    Walker(const Node *start, bool up)
        : m_up(up)
    {
        visit(start);
    }

    bool isDone() const { return m_waiting.isEmpty(); }
    /// Visits the items next to one more item; true when `wanted` is among them.
    bool step(const Node *wanted)
    {
        const Node *node = m_waiting.takeLast();
        for (const Connection *connection :
             m_up ? node->upstreamConnections() : node->downstreamConnections()) {
            const Node *next = m_up ? connection->from() : connection->to();
            if (next == wanted) {
                return true;
            }
            visit(next);
        }
        return false;
    }

private:
    void visit(const Node *node)
    {
        if (!m_seen.contains(node)) {
            m_seen.insert(node);
            m_waiting.append(node);
        }
    }

    bool m_up;
    QSet<const Node *> m_seen;
    QVector<const Node *> m_waiting;
};

/// Whether `end` can be reached from `start` going downstream. Searched from both ends in turn, so
/// that building a long chain costs little from whichever end it is built.
bool hasPath(const Node *start, const Node *end)
{
    Walker down(start, false);
    Walker up(end, true);
    while (!down.isDone() && !up.isDone()) {
        if (down.step(end) || up.step(start)) {
            return true;
        }
    }
    return false;
}

} // namespace

GraphScene::GraphScene(UserInterface *userInterface, QObject *parent)
    : QObject(parent)
    , m_userInterface(userInterface)
    , m_undoStack(std::make_unique<QUndoStack>())
    , m_runEngine(std::make_unique<RunEngine>(this))
{
    connect(this, &GraphScene::showStatusBarMessage, this,
            [this](const QString &text) { m_userInterface->showStatus(text); });
}

GraphScene::~GraphScene() = default;

bool GraphScene::isRunning() const
{
    return m_runEngine->isRunning();
}

void GraphScene::setPreferences(const Preferences &preferences)
{
    const bool datesChanged = preferences.dateFormats != m_preferences.dateFormats ||
                              preferences.localeName != m_preferences.localeName;
    m_preferences = preferences;
    if (!datesChanged) {
        return;
    }
    const QList<TransformNode *> items = transforms();
    for (TransformNode *item : items) {
        if (item->transform().dependsOnDateFormats()) {
            item->setStatus(ItemStatus::NeedsUpdating, true);
        }
    }
}

QList<Node *> GraphScene::nodes() const
{
    QList<Node *> nodes;
    nodes.reserve(nodeCount());
    for (auto it = m_nodes.rbegin(); it != m_nodes.rend(); ++it) {
        nodes.append(it->second.get());
    }
    std::stable_sort(nodes.begin(), nodes.end(), [](const Node *a, const Node *b) {
        return a->stackingOrder() > b->stackingOrder();
    });
    return nodes;
}

QList<Node *> GraphScene::nodesByAddition() const
{
    QList<Node *> nodes;
    nodes.reserve(nodeCount());
    for (const auto &entry : m_nodes) {
        nodes.append(entry.second.get());
    }
    return nodes;
}

QList<InputNode *> GraphScene::inputs() const
{
    return ofKind<InputNode, ItemKind::Input>(nodesByAddition());
}

QList<TransformNode *> GraphScene::transforms() const
{
    return ofKind<TransformNode, ItemKind::Transform>(nodesByAddition());
}

QList<OutputNode *> GraphScene::outputs() const
{
    return ofKind<OutputNode, ItemKind::Output>(nodesByAddition());
}

QList<NoteNode *> GraphScene::notes() const
{
    return ofKind<NoteNode, ItemKind::Note>(nodesByAddition());
}

bool GraphScene::contains(const Node *node) const
{
    return node && m_nodesById.value(node->id()) == node;
}

QList<Connection *> GraphScene::connections() const
{
    QList<Connection *> connections;
    connections.reserve(int(m_connections.size()));
    for (const auto &entry : m_connections) {
        connections.append(entry.second.get());
    }
    return connections;
}

Connection *GraphScene::connection(const Node *from, const Node *to) const
{
    if (!from || !to) {
        return nullptr;
    }
    for (Connection *connection : to->upstreamConnections()) {
        if (connection->from() == from) {
            return connection;
        }
    }
    return nullptr;
}

QList<Node *> GraphScene::downstreamOf(const QList<Node *> &nodes) const
{
    QList<Node *> result;
    QSet<const Node *> seen(nodes.begin(), nodes.end());
    QList<Node *> waiting(nodes);
    while (!waiting.isEmpty()) {
        const Node *above = waiting.takeLast();
        for (const Connection *connection : above->downstreamConnections()) {
            Node *below = connection->to();
            if (!seen.contains(below)) {
                seen.insert(below);
                result.append(below);
                waiting.append(below);
            }
        }
    }
    return result;
}

int GraphScene::newId()
{
    if (m_highestId < std::numeric_limits<int>::max()) {
        ++m_highestId;
    } else {
        // A document used the last number there is.
        m_highestId = 1;
    }
    while (m_usedIds.contains(m_highestId)) {
        m_highestId = m_highestId < std::numeric_limits<int>::max() ? m_highestId + 1 : 1;
    }
    m_usedIds.insert(m_highestId);
    return m_highestId;
}

bool GraphScene::insertNode(std::unique_ptr<Node> node)
{
    if (node->id() < 0) {
        node->setId(newId());
    } else if (m_nodesById.contains(node->id())) {
        return false;
    }
    attachNode(std::move(node));
    Q_EMIT nodesAdded();
    return true;
}

void GraphScene::attachNode(std::unique_ptr<Node> node)
{
    Node *raw = node.get();
    if (raw->m_sequence < 0) {
        raw->m_sequence = m_nextNodeSequence++;
    }
    m_usedIds.insert(raw->id());
    m_highestId = std::max(m_highestId, raw->id());
    m_nodesById.insert(raw->id(), raw);
    m_nodes.emplace(raw->m_sequence, std::move(node));

    connect(raw, &Node::nodePosChanged, this, &GraphScene::nodePosChanged);
    connect(raw, &Node::processingStart, this, &GraphScene::processingStart);
    connect(raw, &Node::processed, this, &GraphScene::processed);
    connect(raw, &Node::processingEnd, this, &GraphScene::processingEnd);
    connect(raw, &Node::dataChanged, this, &GraphScene::nodeDataChanged);
    connect(raw, &Node::marked, this, &GraphScene::nodeMarked);
    if (auto *transform = qobject_cast<TransformNode *>(raw)) {
        connect(transform, &TransformNode::parametersChanged, this,
                &GraphScene::nodeParametersChanged);
    }
    if (raw->kind() != ItemKind::Note) {
        raw->setStatus(ItemStatus::NeedsUpdating, false);
    }
}

std::unique_ptr<Node> GraphScene::detachNode(Node *node)
{
    Q_ASSERT(node->m_upstream.isEmpty() && node->m_downstream.isEmpty());
    disconnect(node, nullptr, this, nullptr);
    const auto it = m_nodes.find(node->m_sequence);
    std::unique_ptr<Node> owned = std::move(it->second);
    m_nodes.erase(it);
    m_nodesById.remove(node->id());
    if (m_selectedIds.remove(node->id())) {
        Q_EMIT selectionChanged();
    }
    // Undo brings the item back without its table.
    owned->setDataset(Dataset());
    return owned;
}

bool GraphScene::canConnect(const Node *from, const Node *to, QString *error) const
{
    QString reason;
    if (!contains(from) || !contains(to)) {
        reason = tr("An item of the connection does not exist.");
    } else if (from == to) {
        reason = tr("An item cannot be connected to itself.");
    } else if (from->kind() == ItemKind::Note || to->kind() == ItemKind::Note) {
        reason = tr("A note cannot be connected.");
    } else if (!from->canHaveDownstream()) {
        reason = tr("Nothing can be connected below output '%1'.").arg(from->displayName());
    } else if (to->maximumUpstream() == 0) {
        reason = tr("Nothing can be connected above input '%1'.").arg(to->displayName());
    } else if (connection(from, to)) {
        reason =
            tr("'%1' is already connected to '%2'.").arg(from->displayName(), to->displayName());
    } else if (to->upstreamConnections().size() >= to->maximumUpstream()) {
        reason = tr("'%1' has no room for another upstream connection (maximum %2).")
                     .arg(to->displayName(), QString::number(to->maximumUpstream()));
    } else if (hasPath(to, from)) {
        reason = tr("Connecting '%1' to '%2' would make a cycle.")
                     .arg(from->displayName(), to->displayName());
    }
    if (error) {
        *error = reason;
    }
    return reason.isEmpty();
}

bool GraphScene::connectNodes(Node *from, Node *to, QString *error)
{
    if (!canConnect(from, to, error)) {
        return false;
    }
    attachConnection(std::make_unique<Connection>(from, to));
    Q_EMIT connectionsChanged();
    return true;
}

void GraphScene::attachConnection(std::unique_ptr<Connection> connection)
{
    Connection *raw = connection.get();
    if (raw->m_sequence < 0) {
        raw->m_sequence = m_nextConnectionSequence++;
    }
    m_connections.emplace(raw->m_sequence, std::move(connection));
    QVector<Connection *> &below = raw->m_from->m_downstream;
    const auto bySequence = [](const Connection *a, const Connection *b) {
        return a->m_sequence < b->m_sequence;
    };
    below.insert(std::upper_bound(below.begin(), below.end(), raw, bySequence), raw);
    raw->m_to->m_upstream.append(raw);
    sortInputs(raw->m_to);
    inputsChanged(raw->m_to);
}

std::unique_ptr<Connection> GraphScene::detachConnection(Connection *connection)
{
    connection->m_from->m_downstream.removeOne(connection);
    connection->m_to->m_upstream.removeOne(connection);
    const auto it = m_connections.find(connection->m_sequence);
    std::unique_ptr<Connection> owned = std::move(it->second);
    m_connections.erase(it);
    inputsChanged(owned->m_to);
    return owned;
}

bool GraphScene::sortInputs(Node *node)
{
    const QVector<Connection *> before = node->m_upstream;
    std::sort(node->m_upstream.begin(), node->m_upstream.end(), isInputBefore);
    return node->m_upstream != before;
}

void GraphScene::inputsChanged(Node *node)
{
    node->upstreamChanged();
    node->setStatus(ItemStatus::NeedsUpdating, true);
}

bool GraphScene::clear()
{
    if (isRunning()) {
        return false;
    }
    m_undoStack->clear();
    m_selectedIds.clear();
    for (const auto &entry : m_nodes) {
        disconnect(entry.second.get(), nullptr, this, nullptr);
        entry.second->m_upstream.clear();
        entry.second->m_downstream.clear();
    }
    m_connections.clear();
    m_nodes.clear();
    m_nodesById.clear();
    m_usedIds.clear();
    m_highestId = 0;
    m_nextNodeSequence = 0;
    m_nextConnectionSequence = 0;
    m_document = DocumentSettings();
    Q_EMIT nodesDeleted();
    Q_EMIT selectionChanged();
    return true;
}

QList<Node *> GraphScene::selectedNodes() const
{
    QList<Node *> selected = nodes();
    selected.erase(
        std::remove_if(selected.begin(), selected.end(),
                       [this](const Node *node) { return !m_selectedIds.contains(node->id()); }),
        selected.end());
    return selected;
}

void GraphScene::setSelectedNodes(const QList<Node *> &nodes)
{
    QSet<int> ids;
    for (const Node *node : nodes) {
        if (contains(node)) {
            ids.insert(node->id());
        }
    }
    if (ids != m_selectedIds) {
        m_selectedIds = ids;
        Q_EMIT selectionChanged();
    }
}
