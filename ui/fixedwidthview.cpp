#include "fixedwidthview.h"

#include "textwidth.h"
#include "theme.h"

#include <QAccessible>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>

namespace {

constexpr int grip = 5;
constexpr int leftMargin = 6;
constexpr int tintAlpha = 24;

/// What is drawn for a character; a tab and the like would leave no trace.
QString glyph(uint character)
{
    if (character == '\t') {
        return QStringLiteral("\u2192");
    }
    return character < 0x20 || character == 0x7f ? QStringLiteral("\u00b7")
                                                 : QString::fromUcs4(&character, 1);
}

} // namespace

FixedWidthView::FixedWidthView(QWidget *parent)
    : QAbstractScrollArea(parent)
{
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Text with the boundaries of its columns"));
    viewport()->setMouseTracking(true);
    viewport()->setBackgroundRole(QPalette::Base);
    m_lineHeight = fontMetrics().lineSpacing();
    m_rulerHeight = m_lineHeight + 6;
    setMinimumSize(fontMetrics().averageCharWidth() * 30, m_rulerHeight + m_lineHeight * 8);
}

void FixedWidthView::setLines(const QStringList &lines, int ignored)
{
    m_lines.clear();
    m_longest = 0;
    m_ignored = ignored;
    bool anyWide = false;
    for (const QString &line : lines) {
        m_lines.append(line.toUcs4());
        m_longest = qMax(m_longest, m_lines.last().size());
        const QByteArray utf8 = line.toUtf8();
        const std::string_view text(utf8.constData(), size_t(utf8.size()));
        anyWide = anyWide || textWidth(text) > m_lines.last().size();
    }
    m_cellWidth = fontMetrics().horizontalAdvance(QLatin1Char('0'));
    if (anyWide) {
        m_cellWidth = qMax(m_cellWidth, fontMetrics().horizontalAdvance(QChar(0x65e5)));
    }
    updateScrollBars();
    viewport()->update();
}

void FixedWidthView::setBoundaries(const QList<int> &boundaries)
{
    m_boundaries = boundaries;
    updateScrollBars();
    viewport()->update();
}

int FixedWidthView::xOf(int position) const
{
    return leftMargin + position * m_cellWidth - horizontalScrollBar()->value();
}

int FixedWidthView::positionAt(int x) const
{
    const int inText = x - leftMargin + horizontalScrollBar()->value();
    return qMax(0, (inText + m_cellWidth / 2) / m_cellWidth);
}

int FixedWidthView::boundaryAt(int x) const
{
    for (const int boundary : m_boundaries) {
        if (qAbs(xOf(boundary) - x) <= grip) {
            return boundary;
        }
    }
    return -1;
}

void FixedWidthView::add(int position)
{
    if (position > 0 && !m_boundaries.contains(position)) {
        m_boundaries.insert(std::lower_bound(m_boundaries.begin(), m_boundaries.end(), position),
                            position);
        edited();
    }
}

void FixedWidthView::remove(int position)
{
    if (m_boundaries.removeAll(position) > 0) {
        edited();
    }
}

bool FixedWidthView::moveBoundary(int from, int to)
{
    if (to <= 0 || from == to || m_boundaries.contains(to) || !m_boundaries.removeOne(from)) {
        return false;
    }
    m_boundaries.insert(std::lower_bound(m_boundaries.begin(), m_boundaries.end(), to), to);
    edited();
    return true;
}

void FixedWidthView::edited()
{
    updateScrollBars();
    viewport()->update();
    announce();
    Q_EMIT boundariesEdited();
}

void FixedWidthView::announce()
{
    const QString what = m_boundaries.contains(m_mark) ? tr("Boundary at %1") : tr("Position %1");
    setAccessibleDescription(what.arg(m_mark));
    QAccessibleEvent event(this, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&event);
}

void FixedWidthView::setMark(int position)
{
    m_mark = qBound(0, position, qMax(m_longest, m_boundaries.isEmpty() ? 0 : m_boundaries.last()));
    const int x = xOf(m_mark);
    QScrollBar *bar = horizontalScrollBar();
    if (x < leftMargin) {
        bar->setValue(bar->value() + x - leftMargin);
    } else if (x > viewport()->width() - m_cellWidth) {
        bar->setValue(bar->value() + x - viewport()->width() + m_cellWidth);
    }
    announce();
    viewport()->update();
}

void FixedWidthView::moveMark(int by, Qt::KeyboardModifiers modifiers)
{
    int to = m_mark + by;
    if (modifiers & Qt::ControlModifier) {
        const auto after = std::upper_bound(m_boundaries.begin(), m_boundaries.end(), m_mark);
        const auto before = std::lower_bound(m_boundaries.begin(), m_boundaries.end(), m_mark);
        to = by > 0 ? (after == m_boundaries.end() ? m_longest : *after)
                    : (before == m_boundaries.begin() ? 0 : *(before - 1));
    } else if (modifiers & Qt::ShiftModifier) {
        if (!moveBoundary(m_mark, to)) {
            return;
        }
    }
    setMark(to);
}

void FixedWidthView::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Left:
        moveMark(-1, event->modifiers());
        break;
    case Qt::Key_Right:
        moveMark(1, event->modifiers());
        break;
    case Qt::Key_Home:
        setMark(0);
        break;
    case Qt::Key_End:
        setMark(m_longest);
        break;
    case Qt::Key_Space:
        if (m_boundaries.contains(m_mark)) {
            remove(m_mark);
        } else {
            add(m_mark);
        }
        break;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        remove(m_mark);
        break;
    default:
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    event->accept();
}

void FixedWidthView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        return;
    }
    const int boundary = boundaryAt(event->x());
    m_dragged = boundary >= 0 ? boundary : positionAt(event->x());
    add(m_dragged);
    setMark(m_dragged);
}

void FixedWidthView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_dragged < 0) {
        viewport()->setCursor(boundaryAt(event->x()) >= 0 ? Qt::SplitHCursor : Qt::ArrowCursor);
        return;
    }
    const int to = positionAt(event->x());
    if (moveBoundary(m_dragged, to)) {
        m_dragged = to;
        setMark(to);
    }
}

void FixedWidthView::mouseReleaseEvent(QMouseEvent *event)
{
    Q_UNUSED(event)
    m_dragged = -1;
}

void FixedWidthView::mouseDoubleClickEvent(QMouseEvent *event)
{
    remove(boundaryAt(event->x()));
}

void FixedWidthView::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
}

void FixedWidthView::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

void FixedWidthView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBars();
}

void FixedWidthView::updateScrollBars()
{
    const int longest = qMax(m_longest, m_boundaries.isEmpty() ? 0 : m_boundaries.last()) + 4;
    horizontalScrollBar()->setRange(
        0, qMax(0, leftMargin + longest * m_cellWidth - viewport()->width()));
    horizontalScrollBar()->setPageStep(viewport()->width());
    horizontalScrollBar()->setSingleStep(m_cellWidth);
    const int page = qMax(1, (viewport()->height() - m_rulerHeight) / m_lineHeight);
    verticalScrollBar()->setRange(0, qMax(0, m_lines.size() - page));
    verticalScrollBar()->setPageStep(page);
}

void FixedWidthView::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    QPainter painter(viewport());
    painter.setFont(font());
    const int first = qMax(0, positionAt(0) - 1);
    const int last = positionAt(viewport()->width()) + 1;
    // Every other column is tinted, so that columns are seen as areas.
    QColor tint = Theme::current().accent;
    tint.setAlpha(tintAlpha);
    int from = 0;
    for (int i = 0; i < m_boundaries.size(); ++i) {
        if (i % 2 == 1) {
            painter.fillRect(QRect(QPoint(xOf(from), m_rulerHeight),
                                   QPoint(xOf(m_boundaries.at(i)) - 1, viewport()->height())),
                             tint);
        }
        from = m_boundaries.at(i);
    }
    paintLines(&painter, first, last);
    paintRuler(&painter, first, last);
    paintBoundaries(&painter);
}

void FixedWidthView::paintRuler(QPainter *painter, int first, int last) const
{
    painter->fillRect(0, 0, viewport()->width(), m_rulerHeight, palette().color(QPalette::Window));
    painter->setPen(palette().color(QPalette::PlaceholderText));
    for (int position = first - first % 5; position <= last; position += 5) {
        const int x = xOf(position);
        painter->drawLine(x, m_rulerHeight - (position % 10 == 0 ? 6 : 3), x, m_rulerHeight - 1);
        if (position % 10 == 0 && position > 0) {
            painter->drawText(QRect(x - m_cellWidth * 4, 0, m_cellWidth * 8, m_lineHeight),
                              Qt::AlignCenter, QString::number(position));
        }
    }
}

void FixedWidthView::paintLines(QPainter *painter, int first, int last) const
{
    const QColor read = palette().color(QPalette::Text);
    const QColor unread = palette().color(QPalette::Disabled, QPalette::Text);
    const int end = m_boundaries.isEmpty() ? m_longest : m_boundaries.last();
    int y = m_rulerHeight;
    for (int line = verticalScrollBar()->value(); line < m_lines.size() && y < viewport()->height();
         ++line, y += m_lineHeight) {
        const QVector<uint> &characters = m_lines.at(line);
        for (int i = first; i < qMin(last, characters.size()); ++i) {
            painter->setPen(line < m_ignored || i >= end ? unread : read);
            painter->drawText(QRect(xOf(i), y, m_cellWidth, m_lineHeight),
                              Qt::AlignCenter | Qt::TextDontClip, glyph(characters.at(i)));
        }
    }
}

void FixedWidthView::paintBoundaries(QPainter *painter) const
{
    const QColor accent = Theme::current().accent;
    painter->setRenderHint(QPainter::Antialiasing);
    for (const int boundary : m_boundaries) {
        const int x = xOf(boundary);
        painter->setPen(QPen(accent, boundary == m_dragged ? 3 : 2));
        painter->drawLine(x, m_rulerHeight - 4, x, viewport()->height());
        painter->setPen(Qt::NoPen);
        painter->setBrush(accent);
        painter->drawPolygon(
            QPolygon({QPoint(x - 5, m_rulerHeight - 8), QPoint(x + 5, m_rulerHeight - 8),
                      QPoint(x, m_rulerHeight)}));
    }
    if (hasFocus()) {
        painter->setPen(QPen(palette().color(QPalette::Text), 1, Qt::DashLine));
        painter->drawLine(xOf(m_mark), 0, xOf(m_mark), viewport()->height());
    }
}
