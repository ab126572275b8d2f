#include "connection.h"
#include "graphcommands.h"
#include "graphedithelpers.h"
#include "graphscene.h"
#include "outputnode.h"
#include "texts.h"
#include "transform.h"
#include "transformparameter.h"
#include "userinterface.h"

#include <QFileInfo>
#include <algorithm>

using namespace GraphEdit;

namespace {

/// Another file beside `path` that none of the taken paths names.
QString freePath(const QString &path, const QSet<QString> &taken)
{
    const QString suffix = QFileInfo(path).suffix();
    const int end = suffix.isEmpty() ? path.size() : path.size() - suffix.size() - 1;
    QString result = path;
    for (int number = 2; taken.contains(result); ++number) {
        result = path.left(end) + QString::number(number) + path.mid(end);
    }
    return result;
}

} // namespace

QList<Connection *> GraphEdit::inOrder(const QSet<Connection *> &connections)
{
    QList<Connection *> result(connections.begin(), connections.end());
    std::sort(result.begin(), result.end(), [](const Connection *a, const Connection *b) {
        return a->sequence() < b->sequence();
    });
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
    for (const Node *node : nodes) {
        for (Connection *connection : node->upstreamConnections()) {
            cut.insert(connection);
        }
        for (Connection *connection : node->downstreamConnections()) {
            cut.insert(connection);
        }
    }
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

// --- Duplicating and moving

void GraphScene::duplicateBranch(const QList<Node *> &nodes)
{
    doOrKeep([this, ids = idsOf(nodes)] {
        QList<Node *> branch = nodesOf(ids);
        branch += downstreamOf(branch);
        if (!branch.isEmpty()) {
            duplicateNow(branch);
        }
    });
}

void GraphScene::duplicateNow(const QList<Node *> &nodes)
{
    QList<Node *> branch(nodes);
    std::sort(branch.begin(), branch.end(),
              [](const Node *a, const Node *b) { return a->sequence() < b->sequence(); });
    double top = branch.first()->pos().y();
    double bottom = top;
    QSet<QString> takenPaths;
    QSet<QString> takenAliases = aliases();
    for (const Node *node : std::as_const(branch)) {
        top = std::min(top, node->pos().y());
        bottom = std::max(bottom, node->pos().y());
    }
    const QList<OutputNode *> existing = outputs();
    for (const OutputNode *output : existing) {
        takenPaths.insert(output->path());
    }

    QHash<const Node *, Node *> copies;
    std::vector<std::unique_ptr<Node>> owned;
    for (const Node *node : std::as_const(branch)) {
        std::unique_ptr<Node> copy = node->clone();
        copy->setId(newId());
        copy->setPos(node->pos() + QPointF(0.0, bottom - top + itemSpacing));
        if (auto *item = qobject_cast<IONode *>(copy.get())) {
            // The copy of an output must not overwrite what the first one writes.
            if (item->kind() == ItemKind::Output) {
                item->setPath(freePath(item->path(), takenPaths));
                takenPaths.insert(item->path());
            }
            item->setAlias(freeAlias(item->path(), QStringLiteral("clipboard"), takenAliases));
            takenAliases.insert(item->alias());
        }
        copies.insert(node, copy.get());
        owned.push_back(std::move(copy));
    }

    QSet<Connection *> above;
    for (const Node *node : std::as_const(branch)) {
        for (Connection *connection : node->upstreamConnections()) {
            above.insert(connection);
        }
    }
    std::vector<std::unique_ptr<Connection>> connections;
    const QList<Connection *> ordered = inOrder(above);
    for (const Connection *connection : ordered) {
        Node *from = copies.value(connection->from(), connection->from());
        connections.push_back(std::make_unique<Connection>(from, copies.value(connection->to())));
    }
    push(std::make_unique<StructureCommand>(this, tr("duplicate branch"), std::move(owned),
                                            std::move(connections)));
}
