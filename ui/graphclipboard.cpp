#include "graphclipboard.h"

#include "canvasgeometry.h"
#include "canvasstyle.h"
#include "documentfile.h"
#include "graphscene.h"

#include <QCoreApplication>
#include <QMimeData>
#include <algorithm>

namespace {

const QLatin1String itemsMime("application/x-tabweave-items");

bool isTaken(const GraphScene &graph, const QPointF &place)
{
    const QList<Node *> nodes = graph.nodesByAddition();
    return std::any_of(nodes.begin(), nodes.end(),
                       [&place](const Node *node) { return node->pos() == place; });
}

} // namespace

QMimeData *GraphClipboard::copied(const GraphScene &graph, const QList<Node *> &nodes)
{
    auto *data = new QMimeData;
    data->setData(itemsMime, DocumentFile::copyOf(nodes, graph));
    return data;
}

bool GraphClipboard::hasItems(const QMimeData *data)
{
    return data && data->hasFormat(itemsMime);
}

GraphClipboard::Content GraphClipboard::content(const QMimeData *data,
                                                const TransformCatalogue &catalogue,
                                                GraphScene *target)
{
    Content result;
    if (!hasItems(data)) {
        result.error =
            QCoreApplication::translate("GraphClipboard", "There are no items on the clipboard.");
        return result;
    }
    auto graph = std::make_unique<GraphScene>(target->userInterface());
    if (DocumentFile::loadCopy(data->data(itemsMime), catalogue, graph.get(), &result.error)) {
        result.graph = std::move(graph);
    }
    return result;
}

QPointF GraphClipboard::offset(const GraphScene &copied, const GraphScene &target,
                               const QRectF &visible, const QPointF *place)
{
    const QList<Node *> nodes = copied.nodesByAddition();
    QPolygonF corners;
    for (const Node *node : nodes) {
        corners.append(node->pos());
    }
    const QRectF bounds = corners.boundingRect();
    if (place) {
        return CanvasGeometry::onGrid(*place - bounds.topLeft());
    }
    const QPointF step(4 * CanvasStyle::grid, 4 * CanvasStyle::grid);
    QPointF offset;
    if (!visible.contains(bounds.topLeft())) {
        offset = CanvasGeometry::onGrid(visible.center() - bounds.center());
    }
    while (std::any_of(nodes.begin(), nodes.end(),
                       [&](const Node *node) { return isTaken(target, node->pos() + offset); })) {
        offset += step;
    }
    return offset;
}
