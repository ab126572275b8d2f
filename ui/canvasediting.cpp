#include "canvasgeometry.h"
#include "canvasscene.h"
#include "canvasview.h"
#include "connection.h"
#include "graphclipboard.h"
#include "graphscene.h"
#include "icons.h"
#include "nodeitem.h"
#include "quickadd.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QMenu>
#include <QMimeData>
#include <QUrl>
#include <algorithm>

// What the canvas lets the user do with items: commands, menus and what is dropped on it.

namespace {

const QLatin1String transformMime("application/x-tabweave-transform");

QStringList localFiles(const QMimeData *data)
{
    QStringList paths;
    const QList<QUrl> urls = data->urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile()) {
            paths.append(url.toLocalFile());
        }
    }
    return paths;
}

} // namespace

// --- Commands

void CanvasView::selectAll()
{
    m_scene->chooseConnection(nullptr);
    m_graph->setSelectedNodes(m_graph->nodes());
}

void CanvasView::deleteSelection()
{
    if (Connection *connection = m_scene->chosenConnection()) {
        m_graph->deleteItems({}, {connection});
    } else {
        m_graph->deleteItems(m_graph->selectedNodes());
    }
}

void CanvasView::deleteSelectionHealed()
{
    m_graph->deleteHealed(m_graph->selectedNodes());
}

void CanvasView::copySelection()
{
    const QList<Node *> nodes = m_graph->selectedNodes();
    if (!nodes.isEmpty()) {
        QApplication::clipboard()->setMimeData(GraphClipboard::copied(*m_graph, nodes));
    }
}

void CanvasView::cutSelection()
{
    copySelection();
    m_graph->deleteItems(m_graph->selectedNodes());
}

void CanvasView::paste()
{
    pasteAt(nullptr);
}

void CanvasView::pasteAt(const QPointF *scenePos)
{
    const GraphClipboard::Content content =
        GraphClipboard::content(QApplication::clipboard()->mimeData(), m_catalogue, m_graph);
    if (!content.graph) {
        Q_EMIT hintChanged(content.error);
        return;
    }
    const QList<Node *> pasted = m_graph->paste(
        *content.graph, GraphClipboard::offset(*content.graph, *m_graph, visibleRect(), scenePos));
    m_graph->setSelectedNodes(pasted);
    if (!pasted.isEmpty()) {
        centerOn(pasted.first());
    }
}

void CanvasView::selectAdded(const std::function<void()> &edit)
{
    const QList<Node *> nodes = m_graph->nodesByAddition();
    const QSet<Node *> before(nodes.begin(), nodes.end());
    edit();
    QList<Node *> added = m_graph->nodesByAddition();
    added.erase(std::remove_if(added.begin(), added.end(),
                               [&before](Node *node) { return before.contains(node); }),
                added.end());
    if (!added.isEmpty()) {
        m_graph->setSelectedNodes(added);
        centerOn(added.first());
    }
}

void CanvasView::duplicateSelection()
{
    selectAdded([this] { m_graph->duplicateBranch(m_graph->selectedNodes()); });
}

void CanvasView::connectSelection()
{
    QList<Node *> nodes = m_graph->selectedNodes();
    std::sort(nodes.begin(), nodes.end(), [](const Node *a, const Node *b) {
        return a->pos().x() < b->pos().x() ||
               (!(b->pos().x() < a->pos().x()) && a->pos().y() < b->pos().y());
    });
    if (nodes.size() < 2) {
        Q_EMIT hintChanged(tr("Select the items to connect first."));
        return;
    }
    Node *target = nodes.takeLast();
    QString reason;
    bool isAny = false;
    for (Node *node : std::as_const(nodes)) {
        if (m_graph->canConnect(node, target, &reason)) {
            isAny = m_graph->addConnection(node, target) || isAny;
        }
    }
    if (!isAny) {
        Q_EMIT hintChanged(reason);
    }
}

// --- Quick add

void CanvasView::showQuickAdd()
{
    openQuickAdd(pointerOrMiddle(), PlaceFor::Selection);
}

void CanvasView::openQuickAdd(const QPoint &pos, PlaceFor placeFor)
{
    m_isSpaceDown = false;
    const bool isForConnection = placeFor == PlaceFor::Connection;
    const Connection *connection = isForConnection ? m_scene->chosenConnection() : nullptr;
    const int fromId = connection ? connection->from()->id() : -1;
    const int toId = connection ? connection->to()->id() : -1;
    const QPointF pointer = mapToScene(pos);
    auto *box = new QuickAdd(m_catalogue, isForConnection, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(box, &QuickAdd::chosen, this, [=](const QString &choice) {
        // The graph may have changed while the box was open.
        const QList<Node *> selected = m_graph->selectedNodes();
        const bool isBeside = placeFor == PlaceFor::Selection && !selected.isEmpty();
        want(choice, isBeside ? placeBeside(selected) : freePlace(pointer),
             m_graph->connection(m_graph->node(fromId), m_graph->node(toId)));
    });
    box->openAt(viewport()->mapToGlobal(pos));
}

QPointF CanvasView::freePlace(const QPointF &scenePos) const
{
    return CanvasGeometry::freePlace(m_scene->cardRects(), scenePos, m_scene->canvasStyle().card);
}

void CanvasView::want(const QString &choice, const QPointF &scenePos, Connection *connection)
{
    if (choice == QuickAdd::inputChoice) {
        Q_EMIT inputWanted(scenePos);
    } else if (choice == QuickAdd::outputChoice) {
        Q_EMIT outputWanted(scenePos);
    } else if (choice == QuickAdd::noteChoice) {
        Q_EMIT noteWanted(scenePos);
    } else if (connection) {
        Q_EMIT transformWantedOn(choice, connection);
    } else {
        Q_EMIT transformWanted(choice, scenePos);
    }
}

// --- Menus

void CanvasView::fillItemMenu(QMenu *menu)
{
    const QList<Node *> nodes = m_graph->selectedNodes();
    menu->addAction(tr("Edit"), this, [this] {
        if (Node *node = m_scene->current()) {
            Q_EMIT editRequested(node);
        }
    });
    menu->addAction(Icons::action(QStringLiteral("connect")), tr("Connect"), this,
                    &CanvasView::connectSelection)
        ->setEnabled(nodes.size() > 1);
    menu->addSeparator();
    menu->addAction(Icons::action(QStringLiteral("edit-cut")), tr("Cut"), this,
                    &CanvasView::cutSelection);
    menu->addAction(Icons::action(QStringLiteral("edit-copy")), tr("Copy"), this,
                    &CanvasView::copySelection);
    menu->addAction(Icons::action(QStringLiteral("duplicate")), tr("Duplicate branch"), this,
                    &CanvasView::duplicateSelection);
    menu->addSeparator();
    menu->addAction(Icons::action(QStringLiteral("edit-delete")), tr("Delete"), this,
                    &CanvasView::deleteSelection);
    const bool isBetween = std::any_of(nodes.begin(), nodes.end(), [](const Node *node) {
        return !node->upstreamConnections().isEmpty() && !node->downstreamConnections().isEmpty();
    });
    menu->addAction(tr("Delete and connect what is left"), this, &CanvasView::deleteSelectionHealed)
        ->setEnabled(isBetween);
}

void CanvasView::fillConnectionMenu(QMenu *menu, const QPoint &pos)
{
    menu->addAction(tr("Insert transform…"), this,
                    [this, pos] { openQuickAdd(pos, PlaceFor::Connection); });
    menu->addAction(Icons::action(QStringLiteral("edit-delete")), tr("Delete connection"), this,
                    &CanvasView::deleteSelection);
}

void CanvasView::fillCanvasMenu(QMenu *menu, const QPoint &pos)
{
    const QPointF place = mapToScene(pos);
    menu->addAction(tr("Add…"), this, [this, pos] { openQuickAdd(pos, PlaceFor::Pointer); });
    menu->addAction(Icons::action(QStringLiteral("edit-paste")), tr("Paste"), this,
                    [this, place] { pasteAt(&place); })
        ->setEnabled(GraphClipboard::hasItems(QApplication::clipboard()->mimeData()));
    menu->addAction(tr("Select all"), this, &CanvasView::selectAll)
        ->setEnabled(m_graph->nodeCount() > 0);
    menu->addSeparator();
    menu->addAction(Icons::action(QStringLiteral("fit")), tr("Show all"), this, &CanvasView::fit);
    QAction *snap = menu->addAction(tr("Snap to grid"), this, &CanvasView::setSnapToGrid);
    snap->setCheckable(true);
    snap->setChecked(snapToGrid());
}

void CanvasView::contextMenuEvent(QContextMenuEvent *event)
{
    m_scene->abortDrag();
    QPoint pos = event->pos();
    const NodeItem *item = nullptr;
    Connection *connection = nullptr;
    if (event->reason() == QContextMenuEvent::Keyboard) {
        item = m_scene->itemOf(m_scene->current());
        pos = item ? mapFromScene(item->cardRect().center()) : viewport()->rect().center();
    } else {
        item = m_scene->nodeAt(mapToScene(pos));
        connection = m_scene->connectionAt(mapToScene(pos));
    }
    QMenu menu(this);
    if (item) {
        if (!item->isSelected()) {
            m_scene->selectOnly(item->node());
        }
        m_scene->setCurrent(item->node());
        fillItemMenu(&menu);
    } else if (connection) {
        m_scene->chooseConnection(connection);
        fillConnectionMenu(&menu, pos);
    } else {
        fillCanvasMenu(&menu, pos);
    }
    menu.exec(viewport()->mapToGlobal(pos));
    event->accept();
}

// --- Dropping

void CanvasView::dragEnterEvent(QDragEnterEvent *event)
{
    m_isDropOffered =
        event->mimeData()->hasFormat(transformMime) || !localFiles(event->mimeData()).isEmpty();
    if (m_isDropOffered) {
        event->acceptProposedAction();
    }
    viewport()->update();
}

void CanvasView::dragMoveEvent(QDragMoveEvent *event)
{
    if (!m_isDropOffered) {
        event->ignore();
        return;
    }
    if (event->mimeData()->hasFormat(transformMime)) {
        Connection *connection = m_scene->connectionAt(mapToScene(event->pos()));
        m_scene->hoverConnection(connection);
        Q_EMIT hintChanged(connection ? tr("Insert between '%1' and '%2'.")
                                            .arg(connection->from()->displayName(),
                                                 connection->to()->displayName())
                                      : QString());
    }
    event->acceptProposedAction();
}

void CanvasView::dragLeaveEvent(QDragLeaveEvent *event)
{
    m_isDropOffered = false;
    m_scene->hoverConnection(nullptr);
    Q_EMIT hintChanged(QString());
    viewport()->update();
    event->accept();
}

void CanvasView::dropEvent(QDropEvent *event)
{
    m_isDropOffered = false;
    m_scene->hoverConnection(nullptr);
    Q_EMIT hintChanged(QString());
    viewport()->update();
    const QPointF place = mapToScene(event->pos());
    const QStringList paths = localFiles(event->mimeData());
    if (event->mimeData()->hasFormat(transformMime)) {
        // On an item: to work on what that gives.
        const NodeItem *item = m_scene->nodeAt(place);
        if (item && item->hasOutput()) {
            m_scene->selectOnly(item->node());
        }
        want(QString::fromUtf8(event->mimeData()->data(transformMime)),
             item ? placeBeside({item->node()}) : freePlace(place), m_scene->connectionAt(place));
    } else if (!paths.isEmpty()) {
        Q_EMIT filesDropped(paths, place);
    } else {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
}
