#include "connection.h"
#include "graphcommands.h"
#include "graphedithelpers.h"
#include "graphscene.h"
#include "outputnode.h"

#include <QDir>
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

/// Copies of items and connections, not yet in a scene.
struct Copies
{
    std::vector<std::unique_ptr<Node>> nodes;
    std::vector<std::unique_ptr<Connection>> connections;
};

/// Connections are made as those that end at the items; from the copy of their upper item when
/// there is one, from that item itself otherwise.
Copies copiesOf(const QList<Node *> &nodes, const QPointF &offset)
{
    Copies result;
    QHash<const Node *, Node *> copies;
    QSet<Connection *> above;
    for (const Node *node : nodes) {
        std::unique_ptr<Node> copy = node->clone();
        copy->setPos(node->pos() + offset);
        copies.insert(node, copy.get());
        result.nodes.push_back(std::move(copy));
        for (Connection *connection : node->upstreamConnections()) {
            above.insert(connection);
        }
    }
    const QList<Connection *> ordered = inOrder(above);
    for (const Connection *connection : ordered) {
        Node *from = copies.value(connection->from(), connection->from());
        result.connections.push_back(
            std::make_unique<Connection>(from, copies.value(connection->to())));
    }
    return result;
}

/// Paths that are relative to the folder of one document still name the same files elsewhere.
void resolvePaths(const std::vector<std::unique_ptr<Node>> &nodes, const QString &folder)
{
    for (const std::unique_ptr<Node> &node : nodes) {
        auto *item = qobject_cast<IONode *>(node.get());
        if (item && item->medium() == Medium::File && !item->path().isEmpty()) {
            item->setPath(QDir::cleanPath(QDir(folder).absoluteFilePath(item->path())));
        }
    }
}

} // namespace

void GraphScene::makeUnique(const std::vector<std::unique_ptr<Node>> &copies)
{
    QSet<QString> takenAliases = aliases();
    QSet<QString> takenPaths;
    const QList<OutputNode *> existing = outputs();
    for (const OutputNode *output : existing) {
        takenPaths.insert(output->path());
    }
    for (const std::unique_ptr<Node> &copy : copies) {
        copy->setId(newId());
        auto *item = qobject_cast<IONode *>(copy.get());
        if (!item) {
            continue;
        }
        // The copy of an output must not overwrite what the first one writes.
        if (item->kind() == ItemKind::Output) {
            item->setPath(freePath(item->path(), takenPaths));
            takenPaths.insert(item->path());
        }
        if (item->alias().isEmpty() || takenAliases.contains(item->alias())) {
            item->setAlias(freeAlias(item->path(), QStringLiteral("clipboard"), takenAliases));
        }
        takenAliases.insert(item->alias());
    }
}

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
    for (const Node *node : std::as_const(branch)) {
        top = std::min(top, node->pos().y());
        bottom = std::max(bottom, node->pos().y());
    }
    Copies copies = copiesOf(branch, QPointF(0.0, bottom - top + itemSpacing));
    makeUnique(copies.nodes);
    push(std::make_unique<StructureCommand>(this, tr("duplicate branch"), std::move(copies.nodes),
                                            std::move(copies.connections)));
}

QList<Node *> GraphScene::paste(const GraphScene &copied, const QPointF &offset)
{
    Copies copies = copiesOf(copied.nodesByAddition(), offset);
    if (copies.nodes.empty()) {
        return {};
    }
    const QString folder = copied.document().folder();
    if (!folder.isEmpty() && folder != m_document.folder()) {
        resolvePaths(copies.nodes, folder);
    }
    return doOrKeep([this, kept = std::move(copies)]() mutable {
        makeUnique(kept.nodes);
        QList<Node *> pasted;
        for (const std::unique_ptr<Node> &node : kept.nodes) {
            pasted.append(node.get());
        }
        push(std::make_unique<StructureCommand>(this, tr("paste"), std::move(kept.nodes),
                                                std::move(kept.connections)));
        return pasted;
    });
}
