#include "connection.h"
#include "graphcommands.h"
#include "graphedithelpers.h"
#include "graphscene.h"
#include "texts.h"
#include "transform.h"
#include "transformparameter.h"
#include "userinterface.h"

#include <algorithm>

using namespace GraphEdit;

QList<Connection *> GraphEdit::inOrder(const QSet<Connection *> &connections)
{
    QList<Connection *> result(connections.begin(), connections.end());
    std::sort(result.begin(), result.end(), [](const Connection *a, const Connection *b) {
        return a->sequence() < b->sequence();
    });
    return result;
}

QSet<Connection *> GraphEdit::connectionsOf(const QList<Node *> &nodes)
{
    QSet<Connection *> result;
    for (const Node *node : nodes) {
        for (Connection *connection : node->upstreamConnections()) {
            result.insert(connection);
        }
        for (Connection *connection : node->downstreamConnections()) {
            result.insert(connection);
        }
    }
    return result;
}

bool GraphScene::mayDisconnect(const QSet<const Node *> &deleted,
                               const QList<Connection *> &connections) const
{
    QSet<Node *> affected;
    for (const Connection *connection : connections) {
        affected.insert(connection->to());
    }
    QList<Node *> items(affected.begin(), affected.end());
    items += downstreamOf(items);
    int count = 0;
    for (const Node *node : std::as_const(items)) {
        const auto *transform = qobject_cast<const TransformNode *>(node);
        if (!transform || deleted.contains(node)) {
            continue;
        }
        const QList<TransformParameter *> parameters = transform->transform().parameters();
        count += int(std::count_if(parameters.begin(), parameters.end(),
                                   [](const TransformParameter *parameter) {
                                       return parameter->refersToColumns() && parameter->isSet();
                                   }));
    }
    return count == 0 ||
           m_userInterface->confirm(
               tr("This disconnection may reset %1 column related option(s) downstream. Are you "
                  "sure you want to do that?\n\nTo put a transform between two items there is no "
                  "need to disconnect them: insert it into their connection instead.")
                   .arg(Texts::count(count)));
}

void GraphScene::deleteItems(const QList<Node *> &nodes, const QList<Connection *> &connections)
{
    QSet<const Node *> deleted;
    QList<int> ids;
    for (const Node *node : nodes) {
        if (contains(node) && !deleted.contains(node)) {
            deleted.insert(node);
            ids.append(node->id());
        }
    }
    QList<Connection *> cut;
    QList<QPair<int, int>> pairs;
    for (Connection *connection : connections) {
        cut.append(connection);
        pairs.append({connection->from()->id(), connection->to()->id()});
    }
    for (const Node *node : std::as_const(deleted)) {
        cut += node->downstreamConnections().toList();
    }
    if ((ids.isEmpty() && pairs.isEmpty()) || !mayDisconnect(deleted, cut)) {
        return;
    }
    doOrKeep([this, ids, pairs] {
        QList<Connection *> found;
        for (const auto &[from, to] : pairs) {
            if (Connection *cutNow = connection(node(from), node(to))) {
                found.append(cutNow);
            }
        }
        deleteNow(nodesOf(ids), found);
    });
}

void GraphScene::deleteNow(const QList<Node *> &nodes, const QList<Connection *> &connections)
{
    QSet<Connection *> cut(connections.begin(), connections.end());
    cut += connectionsOf(nodes);
    if (nodes.isEmpty() && cut.isEmpty()) {
        return;
    }
    const bool remind = !nodes.isEmpty() && !cut.isEmpty() && !m_deleteHintShown;
    push(std::make_unique<StructureCommand>(this, tr("delete"), nodes, inOrder(cut)));
    if (remind) {
        m_deleteHintShown = true;
        Q_EMIT showTempMessage(tr("You can delete/insert transforms without deleting connections. "
                                  "See 'Reference>Connections' in the help."));
    }
}

// --- Deleting so that what is above stays connected to what is below

namespace {

/// The items outside `deleted` from which one can reach `node` through deleted items alone.
QList<Node *> sourcesThrough(const Node *node, const QSet<const Node *> &deleted)
{
    QList<Node *> sources;
    QSet<const Node *> seen{node};
    QVector<const Node *> waiting{node};
    while (!waiting.isEmpty()) {
        const Node *below = waiting.takeFirst();
        for (const Connection *connection : below->upstreamConnections()) {
            Node *above = connection->from();
            if (seen.contains(above)) {
                continue;
            }
            seen.insert(above);
            if (deleted.contains(above)) {
                waiting.append(above);
            } else {
                sources.append(above);
            }
        }
    }
    return sources;
}

/// The connections that bridge the gap which deleting leaves above `target`.
std::vector<std::unique_ptr<Connection>> bridges(Node *target, const QSet<const Node *> &deleted)
{
    std::vector<std::unique_ptr<Connection>> result;
    QSet<const Node *> above;
    QList<const Node *> gone;
    for (const Connection *connection : target->upstreamConnections()) {
        if (deleted.contains(connection->from())) {
            gone.append(connection->from());
        } else {
            above.insert(connection->from());
        }
    }
    for (const Node *node : std::as_const(gone)) {
        const QList<Node *> sources = sourcesThrough(node, deleted);
        for (Node *source : sources) {
            if (above.size() < target->maximumUpstream() && !above.contains(source)) {
                above.insert(source);
                result.push_back(std::make_unique<Connection>(source, target));
            }
        }
    }
    return result;
}

/// The items below the deleted ones, each once, in the order of the connections to them.
QList<Node *> targetsOf(const QSet<const Node *> &deleted)
{
    QSet<Connection *> cut;
    for (const Node *node : deleted) {
        for (Connection *connection : node->downstreamConnections()) {
            if (!deleted.contains(connection->to())) {
                cut.insert(connection);
            }
        }
    }
    QList<Node *> targets;
    const QList<Connection *> ordered = inOrder(cut);
    for (const Connection *connection : ordered) {
        if (!targets.contains(connection->to())) {
            targets.append(connection->to());
        }
    }
    return targets;
}

} // namespace

void GraphScene::deleteHealed(const QList<Node *> &nodes)
{
    const QList<Node *> items = nodesOf(idsOf(nodes));
    const QSet<const Node *> deleted(items.begin(), items.end());
    // Only where nothing takes the place of what is cut may options be lost for good.
    QList<Connection *> lost;
    const QList<Node *> targets = targetsOf(deleted);
    for (Node *target : targets) {
        if (bridges(target, deleted).empty()) {
            for (Connection *connection : target->upstreamConnections()) {
                if (deleted.contains(connection->from())) {
                    lost.append(connection);
                }
            }
        }
    }
    if (items.isEmpty() || !mayDisconnect(deleted, lost)) {
        return;
    }
    doOrKeep([this, ids = idsOf(items)] { deleteHealedNow(nodesOf(ids)); });
}

void GraphScene::deleteHealedNow(const QList<Node *> &nodes)
{
    if (nodes.isEmpty()) {
        return;
    }
    const QSet<const Node *> deleted(nodes.begin(), nodes.end());
    std::vector<std::unique_ptr<Connection>> healing;
    const QList<Node *> targets = targetsOf(deleted);
    for (Node *target : targets) {
        for (std::unique_ptr<Connection> &bridge : bridges(target, deleted)) {
            healing.push_back(std::move(bridge));
        }
    }
    auto command = std::make_unique<CompositeCommand>(tr("delete"));
    command->add(
        std::make_unique<StructureCommand>(this, QString(), nodes, inOrder(connectionsOf(nodes))));
    if (!healing.empty()) {
        command->add(std::make_unique<StructureCommand>(this, QString(), oneOf<Node>(nullptr),
                                                        std::move(healing)));
    }
    push(std::move(command));
}
