#pragma once

#include <QPointF>
#include <QString>
#include <memory>

class GraphScene;
class Node;
class QMimeData;
class QRectF;
class TransformCatalogue;

/// Items of a graph on the clipboard, as a document of their own, so that they can be pasted into
/// another window too.
namespace GraphClipboard {

/// The caller, usually the clipboard, owns it.
QMimeData *copied(const GraphScene &graph, const QList<Node *> &nodes);
bool hasItems(const QMimeData *data);

struct Content
{
    /// Null when there are no items; then `error` tells why.
    std::unique_ptr<GraphScene> graph;
    QString error;
};
Content content(const QMimeData *data, const TransformCatalogue &catalogue, GraphScene *target);

/// How far the copies are to be moved: to `place` when it is given, else beside what they were
/// copied from, else to the middle of what is visible.
QPointF offset(const GraphScene &copied, const GraphScene &target, const QRectF &visible,
               const QPointF *place);

} // namespace GraphClipboard
