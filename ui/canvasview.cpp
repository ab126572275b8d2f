#include "canvasview.h"

#include "canvasgeometry.h"
#include "canvasscene.h"
#include "graphscene.h"
#include "nodeitem.h"
#include "theme.h"

#include <QApplication>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QShowEvent>
#include <QToolTip>
#include <QWheelEvent>
#include <QtMath>

namespace {

constexpr double smallestZoom = 0.03;
constexpr double largestZoom = 3.0;
constexpr double zoomStep = 1.25;
constexpr double margin = 48.0;
/// The dots of the grid are further apart than it is, or they would be all that one sees.
constexpr double dotDistance = 3 * CanvasStyle::grid;

} // namespace

CanvasView::CanvasView(GraphScene *graph, QWidget *parent)
    : QGraphicsView(parent)
    , m_graph(graph)
    , m_scene(new CanvasScene(graph, font(), this))
{
    setScene(m_scene);
    setAccessibleName(tr("Canvas"));
    setFrameShape(NoFrame);
    setDragMode(RubberBandDrag);
    setAcceptDrops(true);
    viewport()->setMouseTracking(true);
    setRenderHint(QPainter::Antialiasing);
    setViewportUpdateMode(SmartViewportUpdate);
    setOptimizationFlags(DontSavePainterState | DontAdjustForAntialiasing);
    // The canvas has no end: one moves it itself.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTransformationAnchor(NoAnchor);
    applyZoom(1.0);
    connect(m_scene, &CanvasScene::hintChanged, this, &CanvasView::tellHint);
    connect(m_scene, &CanvasScene::editRequested, this, &CanvasView::editRequested);
    connect(m_scene, &CanvasScene::currentChanged, this, &CanvasView::tellCurrent);
    connect(m_scene, &CanvasScene::contentChanged, this, [this] { viewport()->update(); });
    connect(m_scene, &CanvasScene::connectionDropped, this,
            [this](Node *from, const QPointF &scenePos) {
                m_scene->selectOnly(from);
                openQuickAdd(mapFromScene(scenePos), PlaceFor::Pointer);
            });
}

CanvasView::~CanvasView()
{
    // Before the members that its slots use.
    delete m_scene;
}

// --- Zoom and place

QRectF CanvasView::visibleRect() const
{
    return mapToScene(viewport()->rect()).boundingRect();
}

double CanvasView::zoom() const
{
    return transform().m11() / m_scene->canvasStyle().scale;
}

void CanvasView::applyZoom(double zoom)
{
    const double scale = qBound(smallestZoom, zoom, largestZoom) * m_scene->canvasStyle().scale;
    setTransform(QTransform::fromScale(scale, scale));
}

void CanvasView::setZoom(double zoom, const QPoint &fixed)
{
    const QPointF place = mapToScene(fixed);
    applyZoom(zoom);
    const QPoint way = mapFromScene(place) - fixed;
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() + way.x());
    verticalScrollBar()->setValue(verticalScrollBar()->value() + way.y());
}

void CanvasView::zoomIn()
{
    setZoom(zoom() * zoomStep, viewport()->rect().center());
}

void CanvasView::zoomOut()
{
    setZoom(zoom() / zoomStep, viewport()->rect().center());
}

void CanvasView::resetZoom()
{
    setZoom(1.0, viewport()->rect().center());
}

void CanvasView::fit()
{
    const QRectF content = m_scene->contentRect().adjusted(-margin, -margin, margin, margin);
    const double scale =
        qMin(viewport()->width() / content.width(), viewport()->height() / content.height());
    // A few items are not made larger than they are.
    applyZoom(qMin(scale / m_scene->canvasStyle().scale, 1.0));
    centerOn(content.center());
}

void CanvasView::showBeginning()
{
    constexpr double leastReadable = 0.75;
    fit();
    if (zoom() >= leastReadable) {
        return;
    }
    applyZoom(leastReadable);
    const QRectF content = m_scene->contentRect().adjusted(-margin, -margin, margin, margin);
    const QSizeF seen = visibleRect().size();
    const double x =
        seen.width() < content.width() ? content.left() + seen.width() / 2 : content.center().x();
    // The inputs are at the left; a document that is too high begins at its top.
    const double y =
        seen.height() < content.height() ? content.top() + seen.height() / 2 : content.center().y();
    centerOn(QPointF(x, y));
}

void CanvasView::centerOn(Node *node)
{
    const NodeItem *item = m_scene->itemOf(node);
    if (item && !visibleRect().contains(item->cardRect())) {
        centerOn(item->cardRect().center());
    }
}

void CanvasView::setSnapToGrid(bool snap)
{
    m_graph->document().snapToGrid = snap;
    viewport()->update();
}

bool CanvasView::snapToGrid() const
{
    return m_scene->snapToGrid();
}

QPointF CanvasView::placeForInput() const
{
    QRectF inputs;
    const QList<NodeItem *> items = m_scene->nodeItems();
    for (const NodeItem *item : items) {
        if (item->node()->kind() == ItemKind::Input) {
            inputs |= item->cardRect();
        }
    }
    const QPointF start =
        inputs.isNull() ? visibleRect().topLeft() + QPointF(margin, margin) : inputs.topLeft();
    return CanvasGeometry::freePlace(m_scene->cardRects(), start, m_scene->canvasStyle().card);
}

QPointF CanvasView::placeBeside(const QList<Node *> &upstream) const
{
    double right = 0.0;
    double height = 0.0;
    int count = 0;
    for (const Node *node : upstream) {
        if (const NodeItem *item = m_scene->itemOf(node)) {
            const QRectF card = item->cardRect();
            right = count ? qMax(right, card.right()) : card.right();
            height += card.top();
            ++count;
        }
    }
    if (count == 0) {
        return placeForInput();
    }
    return CanvasGeometry::freePlace(m_scene->cardRects(),
                                     QPointF(right + CanvasStyle::gap, height / count),
                                     m_scene->canvasStyle().card);
}

QPoint CanvasView::pointerOrMiddle() const
{
    const QPoint pointer = viewport()->mapFromGlobal(QCursor::pos());
    return viewport()->rect().contains(pointer) ? pointer : viewport()->rect().center();
}

// --- Painting around the items

void CanvasView::showEvent(QShowEvent *event)
{
    QGraphicsView::showEvent(event);
    if (!m_wasShown) {
        m_wasShown = true;
        fit();
    }
}

void CanvasView::changeEvent(QEvent *event)
{
    QGraphicsView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange ||
        event->type() == QEvent::StyleChange) {
        const double before = zoom();
        m_scene->restyle(font());
        setZoom(before, viewport()->rect().center());
        viewport()->update();
    }
}

void CanvasView::drawBackground(QPainter *painter, const QRectF &rect)
{
    const Theme &theme = Theme::current();
    painter->fillRect(rect, theme.canvas);
    if (!snapToGrid() || zoom() < 0.5) {
        return;
    }
    const QRect cells(
        QPoint(qFloor(rect.left() / dotDistance), qFloor(rect.top() / dotDistance)),
        QPoint(qCeil(rect.right() / dotDistance), qCeil(rect.bottom() / dotDistance)));
    QVector<QPointF> dots;
    dots.reserve(cells.width() * cells.height());
    for (int x = cells.left(); x <= cells.right(); ++x) {
        for (int y = cells.top(); y <= cells.bottom(); ++y) {
            dots.append(QPointF(x, y) * dotDistance);
        }
    }
    QPen pen(theme.border, 2.0, Qt::SolidLine, Qt::RoundCap);
    pen.setCosmetic(true);
    painter->setPen(pen);
    painter->drawPoints(dots.constData(), dots.size());
}

void CanvasView::drawForeground(QPainter *painter, const QRectF &)
{
    if (m_graph->nodeCount() > 0 && !m_isDropOffered) {
        return;
    }
    const Theme &theme = Theme::current();
    painter->save();
    painter->resetTransform();
    const QRectF frame = QRectF(viewport()->rect()).adjusted(12, 12, -12, -12);
    if (m_isDropOffered) {
        painter->setPen(QPen(theme.accent, 2.0, Qt::DashLine));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(frame, 8.0, 8.0);
    }
    if (m_graph->nodeCount() == 0) {
        painter->setFont(Theme::titleFont(font()));
        painter->setPen(theme.secondaryText);
        painter->drawText(frame, Qt::AlignCenter | Qt::TextWordWrap,
                          tr("Drop a file here, or press Ctrl+I"));
    }
    painter->restore();
}

// Where one looks while dragging, too.
void CanvasView::tellHint(const QString &text)
{
    if (m_scene->isDragging()) {
        QToolTip::showText(QCursor::pos(), text, viewport());
    }
    Q_EMIT hintChanged(text);
}

void CanvasView::tellCurrent()
{
    const NodeItem *item = m_scene->itemOf(m_scene->current());
    setAccessibleDescription(item ? item->spokenText() : QString());
}

// --- Mouse

bool CanvasView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::ToolTip && !m_scene->isDragging()) {
        const auto *help = static_cast<QHelpEvent *>(event);
        const NodeItem *item = m_scene->nodeAt(mapToScene(help->pos()));
        QToolTip::showText(help->globalPos(), item ? item->tooltip() : QString(), viewport());
        return true;
    }
    if (event->type() == QEvent::Leave) {
        m_scene->endHover();
    }
    return QGraphicsView::viewportEvent(event);
}

void CanvasView::panTo(const QPoint &pos)
{
    const QPoint way = pos - m_panFrom;
    m_panFrom = pos;
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - way.x());
    verticalScrollBar()->setValue(verticalScrollBar()->value() - way.y());
}

void CanvasView::mousePressEvent(QMouseEvent *event)
{
    const bool isSpacePan = m_isSpaceDown && event->button() == Qt::LeftButton;
    if (event->button() == Qt::MiddleButton || isSpacePan) {
        m_isPanning = true;
        m_isSpaceDown = false;
        m_panFrom = event->pos();
        viewport()->setCursor(Qt::ClosedHandCursor);
        return;
    }
    QGraphicsView::mousePressEvent(event);
}

void CanvasView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_isPanning) {
        panTo(event->pos());
        return;
    }
    QGraphicsView::mouseMoveEvent(event);
}

void CanvasView::mouseReleaseEvent(QMouseEvent *event)
{
    if (m_isPanning) {
        m_isPanning = false;
        viewport()->setCursor(Qt::ArrowCursor);
        return;
    }
    QGraphicsView::mouseReleaseEvent(event);
}

void CanvasView::mouseDoubleClickEvent(QMouseEvent *event)
{
    const QPointF place = mapToScene(event->pos());
    if (event->button() == Qt::LeftButton && !m_scene->nodeAt(place) &&
        !m_scene->connectionAt(place)) {
        openQuickAdd(event->pos(), PlaceFor::Pointer);
        return;
    }
    QGraphicsView::mouseDoubleClickEvent(event);
}

void CanvasView::wheelEvent(QWheelEvent *event)
{
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        setZoom(zoom() * qPow(zoomStep, event->angleDelta().y() / 120.0),
                event->position().toPoint());
        event->accept();
        return;
    }
    // The same distance for wheels and for touch pads, which tell pixels.
    QPoint way = event->pixelDelta().isNull() ? event->angleDelta() / 2 : event->pixelDelta();
    if (event->modifiers().testFlag(Qt::ShiftModifier)) {
        way = QPoint(way.y(), way.x());
    }
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - way.x());
    verticalScrollBar()->setValue(verticalScrollBar()->value() - way.y());
    event->accept();
}
