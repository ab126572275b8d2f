#include "canvasgeometry.h"
#include "canvasscene.h"
#include "canvasview.h"
#include "graphscene.h"
#include "nodeitem.h"

#include <QKeyEvent>
#include <algorithm>

// What keys do on the canvas.

using CanvasGeometry::Direction;

void CanvasView::goTo(Node *node)
{
    m_scene->selectOnly(node);
    if (const NodeItem *item = m_scene->itemOf(node)) {
        ensureVisible(item->cardRect(), 24, 24);
    }
}

bool CanvasView::handleArrow(QKeyEvent *event)
{
    struct Arrow
    {
        int key;
        Direction direction;
        QPointF step;
    };
    static const Arrow arrows[] = {{Qt::Key_Left, Direction::Left, {-1.0, 0.0}},
                                   {Qt::Key_Right, Direction::Right, {1.0, 0.0}},
                                   {Qt::Key_Up, Direction::Up, {0.0, -1.0}},
                                   {Qt::Key_Down, Direction::Down, {0.0, 1.0}}};
    const auto *arrow = std::find_if(std::begin(arrows), std::end(arrows),
                                     [event](const Arrow &a) { return a.key == event->key(); });
    if (arrow == std::end(arrows)) {
        return false;
    }
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        m_scene->keyMove(arrow->step * CanvasStyle::grid);
        return true;
    }
    const QList<NodeItem *> items = m_scene->nodeItems();
    QVector<QPointF> centres;
    int from = -1;
    for (const NodeItem *item : items) {
        if (item->node() == m_scene->current()) {
            from = centres.size();
        }
        centres.append(item->cardRect().center());
    }
    if (from < 0) {
        focusNextPrevChild(true);
        return true;
    }
    const int next = CanvasGeometry::neighbour(centres, from, arrow->direction);
    if (next >= 0) {
        goTo(items[next]->node());
    }
    return true;
}

// Tab leaves the canvas at the end of a chain, so that the keyboard is not caught in it.
bool CanvasView::focusNextPrevChild(bool next)
{
    const Node *current = m_scene->current();
    if (!current) {
        QList<Node *> nodes = m_graph->nodesByAddition();
        if (nodes.isEmpty()) {
            return QGraphicsView::focusNextPrevChild(next);
        }
        goTo(*std::min_element(nodes.begin(), nodes.end(), [](const Node *a, const Node *b) {
            return a->pos().x() + a->pos().y() < b->pos().x() + b->pos().y();
        }));
        return true;
    }
    const QList<Node *> ways = next ? current->downstreamNodes() : current->upstreamNodes();
    if (ways.isEmpty()) {
        return QGraphicsView::focusNextPrevChild(next);
    }
    goTo(*std::min_element(ways.begin(), ways.end(), [](const Node *a, const Node *b) {
        return a->pos().y() < b->pos().y();
    }));
    return true;
}

bool CanvasView::handleCommand(QKeyEvent *event)
{
    const bool isShifted = event->modifiers().testFlag(Qt::ShiftModifier);
    if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (event->matches(QKeySequence::Copy)) {
        copySelection();
    } else if (event->matches(QKeySequence::Paste)) {
        paste();
    } else if (event->key() == Qt::Key_Delete) {
        // Before "cut", which Shift+Delete is elsewhere.
        isShifted ? deleteSelectionHealed() : deleteSelection();
    } else if (event->matches(QKeySequence::Cut)) {
        cutSelection();
    } else if (event->matches(QKeySequence::ZoomIn)) {
        zoomIn();
    } else if (event->matches(QKeySequence::ZoomOut)) {
        zoomOut();
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (Node *node = m_scene->current()) {
            Q_EMIT editRequested(node);
        }
    } else if (event->key() == Qt::Key_Escape && m_scene->isDragging()) {
        m_scene->abortDrag();
    } else if (event->key() == Qt::Key_Escape && !m_graph->selectedNodes().isEmpty()) {
        m_scene->selectOnly(nullptr);
    } else {
        return false;
    }
    return true;
}

void CanvasView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space) {
        m_isSpaceDown = m_isSpaceDown || !event->isAutoRepeat();
        return;
    }
    if (handleArrow(event) || handleCommand(event)) {
        event->accept();
        return;
    }
    // Not to the view's own keys, which scroll.
    event->ignore();
}

void CanvasView::keyReleaseEvent(QKeyEvent *event)
{
    if (event->isAutoRepeat()) {
        return;
    }
    if (event->key() == Qt::Key_Space && m_isSpaceDown) {
        m_isSpaceDown = false;
        showQuickAdd();
        return;
    }
    m_scene->endKeyMove();
    event->ignore();
}

void CanvasView::focusOutEvent(QFocusEvent *event)
{
    m_isSpaceDown = false;
    m_scene->endKeyMove();
    QGraphicsView::focusOutEvent(event);
}
