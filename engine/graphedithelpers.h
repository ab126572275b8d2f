#pragma once

#include "node.h"

#include <QSet>
#include <memory>
#include <vector>

/// Small helpers of the scene's editing operations.
namespace GraphEdit {

/// Vertical distance between items that are placed one below another, in scene units.
constexpr double itemSpacing = 100.0;
/// Horizontal distance between an item and the next one downstream.
constexpr double columnSpacing = 240.0;

/// An alias made from a file's name, or from `otherwise` when it has none; not one of those taken.
QString freeAlias(const QString &path, const QString &otherwise, const QSet<QString> &taken);

inline QList<int> idsOf(const QList<Node *> &nodes)
{
    QList<int> ids;
    for (const Node *node : nodes) {
        ids.append(node->id());
    }
    return ids;
}

/// In the order in which the connections were made.
QList<Connection *> inOrder(const QSet<Connection *> &connections);

/// All that start or end at one of the items.
QSet<Connection *> connectionsOf(const QList<Node *> &nodes);

/// A list of one item, or of none for null.
template <class Item>
std::vector<std::unique_ptr<Item>> oneOf(std::unique_ptr<Item> item)
{
    std::vector<std::unique_ptr<Item>> items;
    if (item) {
        items.push_back(std::move(item));
    }
    return items;
}

} // namespace GraphEdit
