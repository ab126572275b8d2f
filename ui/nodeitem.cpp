#include "nodeitem.h"

#include "node.h"
#include "texts.h"
#include "theme.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QStyleOptionGraphicsItem>
#include <cmath>

namespace {

/// How near to the right edge a card is taken by its output port.
constexpr double edgeGrip = 7.0;

} // namespace

NodeItem::NodeItem(Node *node, const CanvasStyle *style)
    : m_node(node)
    , m_style(style)
{
    setFlag(ItemIsSelectable);
    setCacheMode(DeviceCoordinateCache);
}

void NodeItem::setSize(const QSizeF &size, double margin)
{
    m_size = size;
    const QRectF bounds = QRectF(QPointF(), size).adjusted(-margin, -margin, margin, margin);
    QPainterPath path;
    path.addRect(QRectF(QPointF(), size));
    if (hasInput()) {
        path.addRect(QRectF(-margin, 0.0, margin, size.height()));
    }
    if (hasOutput()) {
        path.addRect(QRectF(size.width(), 0.0, margin, size.height()));
    }
    if (bounds != m_bounds) {
        prepareGeometryChange();
        m_bounds = bounds;
        m_shape = path;
    }
}

void NodeItem::refresh()
{
    setSize(m_style->card, CanvasStyle::portGrip);
    layoutTexts();
    update();
}

void NodeItem::stack()
{
    // Cards above notes, notes above connections.
    const double least = m_node->kind() == ItemKind::Note ? 1.0 : 2.0;
    setZValue(least + 0.9 * (1.0 - 1.0 / (1.0 + qMax(0, m_node->stackingOrder()) / 1000.0)));
}

bool NodeItem::hasInput() const
{
    return m_node->maximumUpstream() > 0;
}

bool NodeItem::hasOutput() const
{
    return m_node->canHaveDownstream();
}

QPointF NodeItem::inputEnd(int index, int count) const
{
    return pos() + QPointF(0.0, m_size.height() * (index + 1) / (count + 1));
}

QPointF NodeItem::outputEnd() const
{
    return pos() + QPointF(m_size.width(), m_size.height() / 2);
}

NodeItem::Grip NodeItem::gripAt(const QPointF &scenePos) const
{
    const QPointF place = scenePos - pos();
    if (!m_shape.contains(place)) {
        return Grip::None;
    }
    if (hasInput() && place.x() < CanvasStyle::portRadius) {
        return Grip::Input;
    }
    return hasOutput() && place.x() > m_size.width() - edgeGrip ? Grip::Output : Grip::Body;
}

bool NodeItem::isInWork() const
{
    return m_node->status() == ItemStatus::Updating;
}

void NodeItem::setProgress(double fraction)
{
    m_progress = fraction;
    m_sizeLine = sizeLine();
    update();
}

void NodeItem::setTurn(double turn)
{
    m_turn = turn;
    update(statusRect());
}

void NodeItem::setOffer(Offer offer)
{
    if (m_offer != offer) {
        m_offer = offer;
        setOpacity(offer == Offer::Impossible ? 0.4 : 1.0);
        update();
    }
}

void NodeItem::setHoveredGrip(Grip grip)
{
    if (m_hoveredGrip != grip) {
        m_hoveredGrip = grip;
        update();
    }
}

void NodeItem::markCurrent(bool current)
{
    if (m_isMarkedCurrent != current) {
        m_isMarkedCurrent = current;
        update();
    }
}

QString NodeItem::sizeLine() const
{
    if (!isInWork()) {
        return m_node->sizeLabel();
    }
    return QCoreApplication::translate("NodeItem", "%1, %2 %")
        .arg(itemStatusText(ItemStatus::Updating), QString::number(qRound(m_progress * 100)));
}

QRectF NodeItem::statusRect() const
{
    return QRectF(m_size.width() - CanvasStyle::padding - CanvasStyle::statusSize,
                  CanvasStyle::padding, CanvasStyle::statusSize, CanvasStyle::statusSize);
}

void NodeItem::layoutTexts()
{
    if (!isInWork()) {
        m_progress = 0.0;
    }
    const double left = CanvasStyle::bandWidth + CanvasStyle::padding;
    const double width = m_size.width() - left - CanvasStyle::padding + 2.0;
    const double nameWidth = width - CanvasStyle::statusSize - CanvasStyle::padding / 2;
    m_nameLines = CanvasPaint::wrapped(m_node->displayName(), m_style->nameFont, nameWidth, 2);
    const QFontMetricsF hint(m_style->hintFont);
    const int warnings = m_node->warnings().size();
    m_warningCount = warnings > 0 ? Texts::count(warnings) : QString();
    m_warningWidth =
        warnings > 0 ? qMax(m_style->hintHeight, hint.horizontalAdvance(m_warningCount) + 8) : 0.0;

    m_sizeLine = hint.elidedText(sizeLine(), Qt::ElideRight, width);
    m_summary = hint.elidedText(summaryText().simplified(), Qt::ElideMiddle, width);
    double height = m_nameLines.size() * m_style->nameHeight + m_style->hintHeight;
    // A name of two lines leaves no room for the options: they stay in the tooltip.
    if (height + m_style->hintHeight > m_size.height() - 4) {
        m_summary.clear();
    }
    if (!m_summary.isEmpty()) {
        height += m_style->hintHeight;
    }
    m_textTop = std::round((m_size.height() - height) / 2);
}

void NodeItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *)
{
    painter->setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                            QPainter::SmoothPixmapTransform);
    const double scale = option->levelOfDetailFromTransform(painter->worldTransform());
    const double detail = qBound(
        0.0, (scale - CanvasStyle::mapScale) / (CanvasStyle::detailScale - CanvasStyle::mapScale),
        1.0);
    paintCard(painter, detail);
    if (detail > 0.0) {
        painter->setOpacity(painter->opacity() * detail);
        CanvasPaint::picture(painter, QRectF(7.0, (m_size.height() - 18.0) / 2, 18.0, 18.0),
                             CanvasPaint::pictureOf(*m_node),
                             Theme::textOn(CanvasPaint::colorOf(*m_node)), scale);
        paintTexts(painter);
        CanvasPaint::status(painter, statusRect(), m_node->status(), m_turn);
        painter->setOpacity(painter->opacity() / detail);
    }
    if (detail < 1.0) {
        painter->setOpacity(painter->opacity() * (1.0 - detail));
        paintMap(painter, scale);
        painter->setOpacity(painter->opacity() / (1.0 - detail));
    }
    paintOutline(painter, scale);
    paintPorts(painter);
    if (detail > 0.0) {
        painter->setOpacity(painter->opacity() * detail);
        paintWarnings(painter);
    }
}

void NodeItem::paintCard(QPainter *painter, double detail) const
{
    const Theme &theme = Theme::current();
    const QColor color = CanvasPaint::colorOf(*m_node);
    const QRectF card(QPointF(), m_size);
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    painter->drawRoundedRect(card, CanvasStyle::cornerRadius, CanvasStyle::cornerRadius);
    if (detail > 0.0) {
        painter->setOpacity(painter->opacity() * detail);
        painter->setBrush(theme.card);
        QPainterPath body;
        body.addRoundedRect(card, CanvasStyle::cornerRadius, CanvasStyle::cornerRadius);
        painter->setClipRect(card.adjusted(CanvasStyle::bandWidth, 0, 0, 0));
        painter->drawPath(body);
        painter->setClipping(false);
        painter->setOpacity(painter->opacity() / detail);
    }
    painter->setBrush(Qt::NoBrush);
    painter->setPen(QPen(theme.border, 1.0));
    painter->drawRoundedRect(card.adjusted(0.5, 0.5, -0.5, -0.5), CanvasStyle::cornerRadius,
                             CanvasStyle::cornerRadius);
}

void NodeItem::paintTexts(QPainter *painter) const
{
    const Theme &theme = Theme::current();
    const double left = CanvasStyle::bandWidth + CanvasStyle::padding;
    double y = m_textTop;
    painter->setPen(theme.text);
    painter->setFont(m_style->nameFont);
    for (const QString &line : m_nameLines) {
        painter->drawText(QPointF(left, y + m_style->nameAscent), line);
        y += m_style->nameHeight;
    }
    painter->setFont(m_style->hintFont);
    painter->setPen(isInWork() ? theme.accent : theme.secondaryText);
    painter->drawText(QPointF(left, y + m_style->hintAscent), m_sizeLine);
    if (!m_summary.isEmpty()) {
        painter->setPen(theme.secondaryText);
        painter->drawText(QPointF(left, y + m_style->hintHeight + m_style->hintAscent), m_summary);
    }
}

void NodeItem::paintWarnings(QPainter *painter) const
{
    if (m_warningCount.isEmpty()) {
        return;
    }
    const QColor color = Theme::current().warning;
    const double height = m_style->hintHeight;
    // Across the lower edge, where it covers no text.
    const QRectF badge(m_size.width() - CanvasStyle::padding - m_warningWidth,
                       m_size.height() - height / 2 + 1, m_warningWidth, height);
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    painter->drawRoundedRect(badge, height / 2, height / 2);
    painter->setPen(Theme::textOn(color));
    painter->setFont(m_style->hintFont);
    painter->drawText(badge, Qt::AlignCenter, m_warningCount);
}

// Far away, a card is a patch of its colour with a large picture, and its status when it is of
// interest.
void NodeItem::paintMap(QPainter *painter, double scale) const
{
    const QColor color = CanvasPaint::colorOf(*m_node);
    const double side = m_size.height() * 0.7;
    CanvasPaint::picture(
        painter, QRectF((m_size.width() - side) / 2, (m_size.height() - side) / 2, side, side),
        CanvasPaint::pictureOf(*m_node), Theme::textOn(color), scale);
    const bool isWarning = !m_node->warnings().isEmpty();
    if (m_node->status() == ItemStatus::UpToDate && !isWarning) {
        return;
    }
    const QRectF place(m_size.width() - 40.0, 4.0, 36.0, 36.0);
    painter->setPen(Qt::NoPen);
    painter->setBrush(Theme::current().card);
    painter->drawEllipse(place);
    const QRectF glyph = place.adjusted(7, 6, -7, -8);
    if (m_node->status() != ItemStatus::UpToDate) {
        CanvasPaint::status(painter, glyph, m_node->status(), m_turn);
    } else {
        painter->setBrush(Theme::current().warning);
        painter->drawEllipse(glyph.adjusted(3, 3, -3, -3));
    }
}

void NodeItem::paintPorts(QPainter *painter) const
{
    const Theme &theme = Theme::current();
    const auto port = [&](const QPointF &middle, bool isStrong) {
        const double radius = CanvasStyle::portRadius + (isStrong ? 1.5 : 0.0);
        painter->setPen(QPen(isStrong ? theme.accent : theme.secondaryText, 1.5));
        painter->setBrush(isStrong ? theme.accent : theme.card);
        painter->drawEllipse(middle, radius, radius);
    };
    const bool isOffered = m_offer == Offer::Possible || m_offer == Offer::Target;
    if (hasInput()) {
        const int count = qMax(1, m_node->upstreamConnections().size());
        for (int i = 0; i < count; ++i) {
            port(inputEnd(i, count) - pos(), m_hoveredGrip == Grip::Input || isOffered);
        }
    }
    if (hasOutput()) {
        port(QPointF(m_size.width(), m_size.height() / 2), m_hoveredGrip == Grip::Output);
    }
}

void NodeItem::paintOutline(QPainter *painter, double scale) const
{
    if (!isSelected() && !m_isMarkedCurrent && m_offer != Offer::Target) {
        return;
    }
    // As wide on the screen when it is far away.
    const double width = 2.0 / qBound(0.35, scale, 1.0);
    const QRectF outline = QRectF(QPointF(), m_size).adjusted(-width, -width, width, width);
    const double radius = CanvasStyle::cornerRadius + width;
    painter->setBrush(Qt::NoBrush);
    if (isSelected() || m_offer == Offer::Target) {
        painter->setPen(QPen(Theme::current().accent, width));
        painter->drawRoundedRect(outline, radius, radius);
    }
    if (m_isMarkedCurrent) {
        painter->setPen(QPen(Theme::current().text, width / 2, Qt::DotLine));
        painter->drawRoundedRect(outline.adjusted(-width, -width, width, width), radius + width,
                                 radius + width);
    }
}
