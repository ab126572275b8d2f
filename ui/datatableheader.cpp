#include "datatableheader.h"

#include "datatableview.h"
#include "texts.h"
#include "theme.h"

#include <QHelpEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

namespace {

constexpr int padding = 8;
constexpr int barHeight = 4;
constexpr int grip = 4;
constexpr int arrowSide = 8;

QFont nameFont(const QWidget *widget)
{
    QFont font = widget->font();
    font.setBold(true);
    return font;
}

QPolygonF arrow(const QRectF &rect, bool up)
{
    const qreal tip = up ? rect.top() : rect.bottom();
    const qreal base = up ? rect.bottom() : rect.top();
    return QPolygonF({{rect.left(), base}, {rect.right(), base}, {rect.center().x(), tip}});
}

} // namespace

DataTableHeader::DataTableHeader(DataTableView *view)
    : QWidget(view)
    , m_view(view)
{
    setMouseTracking(true);
    setAccessibleName(tr("Column headers"));
    connect(view->model(), &DataTableModel::kindsChanged, this, qOverload<>(&QWidget::update));
    connect(view->model(), &DataTableModel::sortChanged, this, qOverload<>(&QWidget::update));
}

int DataTableHeader::neededHeight() const
{
    return QFontMetrics(nameFont(this)).height() + barHeight + 14;
}

int DataTableHeader::neededWidth(int column) const
{
    const QFontMetrics metrics(nameFont(this));
    const QString name = m_view->model()->columnName(column).left(200).simplified();
    return metrics.horizontalAdvance(name) + 2 * padding + arrowSide + 4;
}

int DataTableHeader::borderAt(int x) const
{
    // Left of a border counts first, so that a column made very narrow can be widened again.
    for (const int at : {x + grip, x - grip}) {
        const int column = m_view->columnAt(at);
        if (at >= m_view->rowNumberWidth() && column >= 0) {
            const int right = m_view->columnX(column) + m_view->columns().width(column);
            if (qAbs(right - x) <= grip) {
                return column;
            }
        }
    }
    // The border of the last column has nothing behind it.
    const int last = m_view->columns().count() - 1;
    const bool atEnd = last >= 0 && x > m_view->rowNumberWidth() &&
                       qAbs(m_view->columnX(last) + m_view->columns().width(last) - x) <= grip;
    return atEnd ? last : -1;
}

void DataTableHeader::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::current();
    QPainter painter(this);
    painter.fillRect(rect(), theme.window);
    const int numbers = m_view->rowNumberWidth();
    painter.save();
    painter.setClipRect(rect().adjusted(numbers, 0, 0, 0));
    const ColumnLayout &columns = m_view->columns();
    const int first = m_view->columnAt(numbers);
    for (int column = first; column >= 0 && column < columns.count(); ++column) {
        const QRect cell(m_view->columnX(column), 0, columns.width(column), height());
        if (cell.left() >= width()) {
            break;
        }
        paintColumn(&painter, column, cell);
    }
    painter.restore();
    painter.setPen(theme.border);
    painter.drawLine(0, height() - 1, width(), height() - 1);
    if (columns.count() > 0) {
        painter.drawLine(numbers - 1, 0, numbers - 1, height());
        painter.setPen(theme.secondaryText);
        painter.drawText(QRect(0, 0, numbers - padding, height()),
                         int(Qt::AlignRight) | int(Qt::AlignVCenter), QStringLiteral("#"));
    }
    if (m_view->isOutdated()) {
        QColor veil = theme.window;
        veil.setAlphaF(0.45);
        painter.fillRect(rect(), veil);
    }
}

void DataTableHeader::paintColumn(QPainter *painter, int column, const QRect &rect) const
{
    const Theme &theme = Theme::current();
    const DataTableModel *const model = m_view->model();
    if (m_view->isColumnSelected(column)) {
        QColor fill = theme.accent;
        fill.setAlphaF(theme.isDark ? 0.26 : 0.14);
        painter->fillRect(rect, fill);
    }
    painter->setPen(theme.border);
    painter->drawLine(rect.right(), rect.top() + 4, rect.right(), rect.bottom() - 4);

    const QRect bar(rect.left() + padding, rect.bottom() - barHeight - 4,
                    rect.width() - 2 * padding, barHeight);
    QRect text(rect.left() + padding, rect.top() + 4, rect.width() - 2 * padding,
               bar.top() - rect.top() - 6);
    const bool rightAligned = model->isNumeric(column);
    if (model->sortColumn() == column) {
        const QRectF place(rightAligned ? text.left() : text.right() - arrowSide,
                           text.center().y() - 2, arrowSide, 5);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(theme.accent);
        painter->drawPolygon(arrow(place, model->sortOrder() == Qt::AscendingOrder));
        painter->restore();
        text.adjust(rightAligned ? arrowSide + 4 : 0, 0, rightAligned ? 0 : -arrowSide - 4, 0);
    }
    painter->setPen(theme.text);
    painter->setFont(nameFont(this));
    const QString name = model->columnName(column).left(1000).simplified();
    const int side = int(rightAligned ? Qt::AlignRight : Qt::AlignLeft);
    painter->drawText(text, side | int(Qt::AlignVCenter) | int(Qt::TextSingleLine),
                      painter->fontMetrics().elidedText(name, Qt::ElideRight, text.width()));
    paintKinds(painter, model->kinds(column), bar);
}

/// The shares always stand in the same order, and empty is hollow, so that the colours only help.
void DataTableHeader::paintKinds(QPainter *painter, const KindCounts &kinds, const QRect &rect)
{
    const Theme &theme = Theme::current();
    const qint64 total = kinds.total();
    if (total == 0 || rect.width() < 4) {
        return;
    }
    const struct
    {
        qint64 count;
        QColor color;
    } parts[] = {{kinds.numbers(), theme.accent},
                 {kinds.of(ValueKind::Date), theme.output},
                 {kinds.of(ValueKind::Text) + kinds.of(ValueKind::Boolean), theme.secondaryText},
                 {kinds.of(ValueKind::Empty), QColor()}};
    qint64 before = 0;
    for (const auto &part : parts) {
        const int from = rect.left() + int(double(before) / double(total) * rect.width());
        before += part.count;
        const int to = rect.left() + int(double(before) / double(total) * rect.width());
        // What there is at all is seen.
        const QRect place(from, rect.top(), part.count > 0 ? qMax(2, to - from - 1) : 0,
                          rect.height());
        if (part.count == 0) {
            continue;
        }
        if (part.color.isValid()) {
            painter->fillRect(place, part.color);
        } else {
            painter->setPen(theme.secondaryText);
            painter->drawRect(place.adjusted(0, 0, -1, -1));
        }
    }
}

QString DataTableHeader::kindsText(const KindCounts &kinds)
{
    QStringList lines;
    for (int i = 0; i < valueKindCount; ++i) {
        if (kinds.counts[size_t(i)] > 0) {
            //: a kind of value ("Date") and the number of such values
            lines.append(tr("%1: %2").arg(valueKindLabel(ValueKind(i)),
                                          Texts::count(kinds.counts[size_t(i)])));
        }
    }
    if (!kinds.isExact && kinds.total() > 0) {
        lines.append(tr("In a sample of %1 %2; the whole column is being counted.")
                         .arg(Texts::count(kinds.total()), Texts::rows(kinds.total())));
    }
    return lines.join(QLatin1Char('\n'));
}

bool DataTableHeader::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip) {
        return QWidget::event(event);
    }
    const auto *const help = static_cast<QHelpEvent *>(event);
    const int column = m_view->columnAt(help->x());
    if (help->x() < m_view->rowNumberWidth() || column < 0) {
        QToolTip::hideText();
        return true;
    }
    const DataTableModel *const model = m_view->model();
    const QString text = QStringLiteral("<p style=\"white-space:pre-wrap\"><b>%1</b><br>%2</p>")
                             .arg(model->columnName(column).left(1000).toHtmlEscaped(),
                                  kindsText(model->kinds(column)).toHtmlEscaped());
    QToolTip::showText(help->globalPos(), text, this);
    return true;
}

void DataTableHeader::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        return;
    }
    m_view->setFocus(Qt::MouseFocusReason);
    m_resized = borderAt(event->x());
    if (m_resized >= 0) {
        m_resizeOffset =
            m_view->columnX(m_resized) + m_view->columns().width(m_resized) - event->x();
        return;
    }
    if (event->x() < m_view->rowNumberWidth()) {
        m_view->selectAll();
        return;
    }
    const bool extend = (event->modifiers() & Qt::ShiftModifier) != 0;
    const int column = m_view->columnAt(event->x());
    m_view->selectColumn(column, extend);
    m_pressed = extend ? -1 : column;
}

void DataTableHeader::mouseMoveEvent(QMouseEvent *event)
{
    if (m_resized >= 0) {
        m_view->resizeColumn(m_resized, event->x() + m_resizeOffset - m_view->columnX(m_resized));
        return;
    }
    if (m_pressed >= 0) {
        const int column = m_view->columnAt(event->x());
        if (column >= 0 && column != m_view->current().column) {
            m_view->selectColumn(column, true);
        }
        return;
    }
    setCursor(borderAt(event->x()) >= 0 ? Qt::SplitHCursor : Qt::ArrowCursor);
}

void DataTableHeader::mouseReleaseEvent(QMouseEvent *event)
{
    if (m_pressed >= 0 && m_view->columnAt(event->x()) == m_pressed) {
        Q_EMIT m_view->columnValuesWanted(m_pressed);
    }
    m_resized = -1;
    m_pressed = -1;
}

void DataTableHeader::mouseDoubleClickEvent(QMouseEvent *event)
{
    const int column = borderAt(event->x());
    if (column >= 0) {
        m_view->fitColumn(column);
    }
}

void DataTableHeader::contextMenuEvent(QContextMenuEvent *event)
{
    const int column = m_view->columnAt(event->x());
    if (event->x() < m_view->rowNumberWidth() || column < 0) {
        return;
    }
    m_view->selectColumn(column);
    QMenu menu;
    m_view->addColumnActions(&menu, column);
    menu.exec(event->globalPos());
}
