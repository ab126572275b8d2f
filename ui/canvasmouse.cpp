#include "canvasdrag.h"
#include "canvasscene.h"
#include "graphscene.h"
#include "nodeitem.h"

#include <QApplication>
#include <QGraphicsSceneMouseEvent>
#include <QGraphicsView>

// What the mouse does on the canvas.

namespace {

using Grip = NodeItem::Grip;

bool isFree(const QGraphicsSceneMouseEvent *event)
{
    return event->modifiers().testFlag(Qt::AltModifier);
}

} // namespace

void CanvasScene::cancelDrag()
{
    m_drag.reset();
    m_keyMove.reset();
    m_pressed = nullptr;
}

void CanvasScene::abortDrag()
{
    cancelDrag();
    followItems(nodeItems());
}

void CanvasScene::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    endKeyMove();
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    if (NodeItem *item = nodeAt(event->scenePos())) {
        pressNode(item, event);
        event->accept();
        return;
    }
    Connection *connection = connectionAt(event->scenePos());
    chooseConnection(connection);
    if (connection) {
        event->accept();
    } else {
        // The view draws a rubber band.
        event->ignore();
    }
}

void CanvasScene::pressNode(NodeItem *item, QGraphicsSceneMouseEvent *event)
{
    chooseConnection(nullptr);
    m_pressed = item;
    m_pressedGrip = int(item->gripAt(event->scenePos()));
    m_selectOnRelease = false;
    if (event->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier)) {
        const bool selected = !item->isSelected();
        item->setSelected(selected);
        setCurrent(item->node());
    } else if (item->isSelected()) {
        m_selectOnRelease = true;
        setCurrent(item->node());
    } else if (m_pressedGrip == int(Grip::Body)) {
        selectOnly(item->node());
    } else {
        m_selectOnRelease = true;
    }
}

void CanvasScene::startDrag(QGraphicsSceneMouseEvent *event)
{
    const QPointF start = event->buttonDownScenePos(Qt::LeftButton);
    NodeItem *item = m_pressed;
    if (m_pressedGrip != int(Grip::Body)) {
        m_drag = std::make_unique<ConnectDrag>(this, item, m_pressedGrip == int(Grip::Output));
        return;
    }
    QList<NodeItem *> moved;
    for (NodeItem *each : std::as_const(m_nodes)) {
        if (each->isSelected() || each == item) {
            moved.append(each);
        }
    }
    m_drag = std::make_unique<MoveDrag>(this, item, moved, start);
}

void CanvasScene::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    if (!event->buttons().testFlag(Qt::LeftButton)) {
        hover(event->scenePos());
        event->ignore();
        return;
    }
    if (m_pressed && !m_drag) {
        const QPoint way = event->screenPos() - event->buttonDownScreenPos(Qt::LeftButton);
        if (way.manhattanLength() >= QApplication::startDragDistance()) {
            startDrag(event);
        }
    }
    if (m_drag) {
        m_drag->moveTo(event->scenePos(), viewScale(), isFree(event));
        event->accept();
    }
}

void CanvasScene::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    NodeItem *pressed = m_pressed;
    m_pressed = nullptr;
    // The edit that it ends with must not find a drag under way.
    const std::unique_ptr<CanvasDrag> drag = std::move(m_drag);
    if (drag) {
        drag->moveTo(event->scenePos(), viewScale(), isFree(event));
        drag->finish(event->scenePos());
        event->accept();
    } else if (pressed) {
        if (m_selectOnRelease) {
            selectOnly(pressed->node());
        }
        event->accept();
    }
}

void CanvasScene::mouseDoubleClickEvent(QGraphicsSceneMouseEvent *event)
{
    const NodeItem *item = nodeAt(event->scenePos());
    if (item && event->button() == Qt::LeftButton) {
        Q_EMIT editRequested(item->node());
        event->accept();
    } else {
        event->ignore();
    }
}

void CanvasScene::hover(const QPointF &scenePos)
{
    NodeItem *item = nodeAt(scenePos);
    const Grip grip = item ? item->gripAt(scenePos) : Grip::None;
    if (m_hovered && m_hovered != item) {
        m_hovered->setHoveredGrip(Grip::None);
    }
    const bool wasPort = m_hovered != nullptr;
    m_hovered = grip == Grip::Input || grip == Grip::Output ? item : nullptr;
    if (item) {
        item->setHoveredGrip(m_hovered ? grip : Grip::None);
    }
    hoverConnection(item ? nullptr : connectionAt(scenePos));
    if (wasPort != (m_hovered != nullptr)) {
        const QList<QGraphicsView *> all = views();
        for (QGraphicsView *view : all) {
            view->viewport()->setCursor(m_hovered ? Qt::CrossCursor : Qt::ArrowCursor);
        }
        Q_EMIT hintChanged(m_hovered ? tr("Drag to another item to connect them.") : QString());
    }
}

void CanvasScene::endHover()
{
    if (m_hovered) {
        m_hovered->setHoveredGrip(Grip::None);
        m_hovered = nullptr;
        Q_EMIT hintChanged(QString());
    }
    hoverConnection(nullptr);
}

void CanvasScene::keyMove(const QPointF &step)
{
    if (m_drag) {
        return;
    }
    if (!m_keyMove) {
        QList<NodeItem *> moved;
        for (NodeItem *item : std::as_const(m_nodes)) {
            if (item->isSelected()) {
                moved.append(item);
            }
        }
        if (moved.isEmpty()) {
            return;
        }
        m_keyMove = std::make_unique<MoveDrag>(this, moved.first(), moved, QPointF());
    }
    m_keyMove->moveBy(step);
}

void CanvasScene::endKeyMove()
{
    if (const std::unique_ptr<MoveDrag> move = std::move(m_keyMove)) {
        move->finish(QPointF());
    }
}
