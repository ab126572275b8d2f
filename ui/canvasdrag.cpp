#include "canvasdrag.h"

#include "canvasgeometry.h"
#include "canvasscene.h"
#include "connectionitem.h"
#include "graphscene.h"
#include "node.h"
#include "nodeitem.h"
#include "theme.h"

#include <QPainter>

/// Thin lines between things that are aligned.
class GuidesItem final : public QGraphicsItem
{
public:
    GuidesItem() { setZValue(5.0); }

    void set(const QVector<QLineF> &lines)
    {
        prepareGeometryChange();
        m_lines = lines;
    }
    QRectF boundingRect() const override
    {
        QRectF bounds;
        for (const QLineF &line : m_lines) {
            bounds |= QRectF(line.p1(), line.p2()).normalized().adjusted(-2, -2, 2, 2);
        }
        return bounds;
    }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *) override
    {
        QPen pen(Theme::current().accent, 1.0, Qt::DashLine);
        pen.setCosmetic(true);
        painter->setPen(pen);
        painter->drawLines(m_lines);
    }

private:
    QVector<QLineF> m_lines;
};

namespace {

/// In pixels of the screen.
constexpr double alignmentReach = 6.0;

} // namespace

MoveDrag::MoveDrag(CanvasScene *scene, NodeItem *grabbed, const QList<NodeItem *> &items,
                   const QPointF &start)
    : m_scene(scene)
    , m_grabbed(grabbed)
    , m_items(items)
    , m_start(start)
    , m_grabbedPlace(grabbed->pos())
    , m_guides(std::make_unique<GuidesItem>())
{
    for (const NodeItem *item : items) {
        m_places.append(item->pos());
    }
    const QList<NodeItem *> all = scene->nodeItems();
    for (NodeItem *item : all) {
        if (!items.contains(item) && scene->isInView(item)) {
            m_others.append(item->cardRect());
        }
    }
    scene->addItem(m_guides.get());
}

MoveDrag::~MoveDrag()
{
    // The model may be half taken apart here: connections are drawn anew by the scene.
    if (!m_isDone) {
        for (int i = 0; i < m_items.size(); ++i) {
            m_items[i]->setPos(m_places[i]);
        }
    }
}

void MoveDrag::show(const QPointF &offset)
{
    m_offset = offset;
    for (int i = 0; i < m_items.size(); ++i) {
        m_items[i]->setPos(m_places[i] + offset);
    }
    m_scene->followItems(m_items);
}

void MoveDrag::moveTo(const QPointF &scenePos, double scale, bool free)
{
    QPointF offset = scenePos - m_start;
    CanvasGeometry::Alignment alignment;
    if (!free) {
        const QRectF moved(m_grabbedPlace + offset, m_grabbed->size());
        alignment = CanvasGeometry::aligned(moved, m_others, alignmentReach / scale);
        const QPointF place = moved.topLeft() + alignment.shift;
        const QPointF grid = m_scene->snapToGrid() ? CanvasGeometry::onGrid(place) : place;
        offset = QPointF(alignment.isAlignedX ? place.x() : grid.x(),
                         alignment.isAlignedY ? place.y() : grid.y()) -
                 m_grabbedPlace;
    }
    m_guides->set(alignment.guides);
    show(offset);
}

void MoveDrag::moveBy(const QPointF &step)
{
    show(m_offset + step);
}

void MoveDrag::finish(const QPointF &)
{
    m_isDone = true;
    QList<Node *> nodes;
    for (const NodeItem *item : std::as_const(m_items)) {
        nodes.append(item->node());
    }
    m_scene->graph()->moveItems(nodes, m_offset);
}

ConnectDrag::ConnectDrag(CanvasScene *scene, NodeItem *start, bool fromOutput)
    : m_scene(scene)
    , m_start(start)
    , m_fromOutput(fromOutput)
    , m_draft(std::make_unique<DraftItem>())
{
    const GraphScene *graph = scene->graph();
    const QList<NodeItem *> items = scene->nodeItems();
    for (NodeItem *item : items) {
        if (item == start) {
            continue;
        }
        QString reason;
        const bool isPossible = fromOutput
                                    ? graph->canConnect(start->node(), item->node(), &reason)
                                    : graph->canConnect(item->node(), start->node(), &reason);
        m_reasons.insert(item, reason);
        item->setOffer(isPossible ? NodeItem::Offer::Possible : NodeItem::Offer::Impossible);
    }
    scene->addItem(m_draft.get());
    Q_EMIT scene->hintChanged(CanvasScene::tr("Drop the connection on an item."));
}

ConnectDrag::~ConnectDrag()
{
    clearOffers();
    Q_EMIT m_scene->hintChanged(QString());
}

void ConnectDrag::clearOffers()
{
    for (auto it = m_reasons.constBegin(); it != m_reasons.constEnd(); ++it) {
        it.key()->setOffer(NodeItem::Offer::None);
    }
    m_reasons.clear();
}

void ConnectDrag::moveTo(const QPointF &scenePos, double, bool)
{
    NodeItem *target = m_scene->nodeAt(scenePos);
    if (target != m_target) {
        if (m_target && m_target != m_start && m_reasons.value(m_target).isEmpty()) {
            m_target->setOffer(NodeItem::Offer::Possible);
        }
        m_target = target;
        const QString reason = m_reasons.value(target);
        if (!target) {
            Q_EMIT m_scene->hintChanged(CanvasScene::tr("Drop the connection on an item."));
        } else if (target != m_start && reason.isEmpty()) {
            target->setOffer(NodeItem::Offer::Target);
            const Node *from = m_fromOutput ? m_start->node() : target->node();
            const Node *to = m_fromOutput ? target->node() : m_start->node();
            Q_EMIT m_scene->hintChanged(CanvasScene::tr("Connect '%1' to '%2'.")
                                            .arg(from->displayName(), to->displayName()));
        } else {
            Q_EMIT m_scene->hintChanged(reason);
        }
    }
    showDraft(scenePos);
}

void ConnectDrag::showDraft(const QPointF &pointer)
{
    const bool isOverOther = m_target && m_target != m_start;
    const bool isRefused = isOverOther && !m_reasons.value(m_target).isEmpty();
    const QColor color = isRefused ? Theme::current().error : Theme::current().accent;
    // Over an item that takes it, the line ends where the connection will.
    QPointF end = pointer;
    if (isOverOther && !isRefused) {
        end = m_fromOutput ? m_target->inputEnd(0, 1) : m_target->outputEnd();
    }
    if (m_fromOutput) {
        m_draft->set(m_start->outputEnd(), end, color);
    } else {
        m_draft->set(end, m_start->inputEnd(0, 1), color);
    }
}

void ConnectDrag::finish(const QPointF &scenePos)
{
    const NodeItem *target = m_scene->nodeAt(scenePos);
    const bool isPossible =
        target && target == m_target && target != m_start && m_reasons.value(m_target).isEmpty();
    // An edit may take items away, so nothing refers to them any more.
    clearOffers();
    Node *start = m_start->node();
    if (isPossible) {
        m_scene->graph()->addConnection(m_fromOutput ? start : target->node(),
                                        m_fromOutput ? target->node() : start);
    } else if (!target && m_fromOutput) {
        Q_EMIT m_scene->connectionDropped(start, scenePos);
    }
}
