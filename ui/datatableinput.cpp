// Keys, mouse and menus of the data table.

#include "celltext.h"
#include "datatableheader.h"
#include "datatableview.h"
#include "tablecopy.h"
#include "texts.h"
#include "utf8.h"

#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QDialogButtonBox>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QToolTip>
#include <QVBoxLayout>
#include <memory>

namespace {

constexpr int dragMilliseconds = 40;
const QKeySequence copyWithHeaderKeys(Qt::CTRL | Qt::SHIFT | Qt::Key_C);

QString withKeys(const QString &text, const QKeySequence &keys)
{
    return text + QLatin1Char('\t') + keys.toString(QKeySequence::NativeText);
}

/// Keys that the window around may use as well; in the table they are the table's.
bool isTableKey(const QKeyEvent *event)
{
    for (const QKeySequence::StandardKey key :
         {QKeySequence::Copy, QKeySequence::SelectAll, QKeySequence::Find, QKeySequence::FindNext,
          QKeySequence::FindPrevious}) {
        if (event->matches(key)) {
            return true;
        }
    }
    return QKeySequence(int(event->modifiers()) | event->key()) == copyWithHeaderKeys ||
           (event->key() == Qt::Key_Space &&
            (event->modifiers() == Qt::ControlModifier || event->modifiers() == Qt::ShiftModifier));
}

} // namespace

CellRange DataTableView::selection() const
{
    if (!m_current.isValid()) {
        return {};
    }
    CellRange range{qMin(m_anchor.row, m_current.row), qMin(m_anchor.column, m_current.column),
                    qMax(m_anchor.row, m_current.row), qMax(m_anchor.column, m_current.column)};
    if (m_whole == Whole::Rows) {
        range.left = 0;
        range.right = m_model->columnCount() - 1;
    } else if (m_whole == Whole::Columns) {
        range.top = 0;
        range.bottom = m_model->rowCount() - 1;
    }
    return range;
}

bool DataTableView::isColumnSelected(int column) const
{
    const CellRange range = selection();
    return !range.isEmpty() && column >= range.left && column <= range.right;
}

void DataTableView::setSelection(CellPlace anchor, CellPlace current, Whole whole)
{
    const bool moved = current != m_current;
    m_anchor = anchor;
    m_current = current;
    m_whole = whole;
    viewport()->update();
    m_header->update();
    if (moved || !current.isValid()) {
        announceCurrent();
    }
}

void DataTableView::setCurrent(CellPlace place, bool extend)
{
    if (m_model->rowCount() == 0 || m_model->columnCount() == 0) {
        return;
    }
    const CellPlace bounded{qBound(0, place.row, m_model->rowCount() - 1),
                            qBound(0, place.column, m_model->columnCount() - 1)};
    setSelection(extend && m_anchor.isValid() ? m_anchor : bounded, bounded,
                 extend ? m_whole : Whole::Cells);
    scrollTo(bounded);
}

void DataTableView::selectColumn(int column, bool extend)
{
    if (column < 0 || m_model->rowCount() == 0) {
        return;
    }
    const int row = qMax(0, verticalScrollBar()->value());
    const bool extends = extend && m_anchor.isValid();
    setSelection(extends ? m_anchor : CellPlace{row, column}, {row, column}, Whole::Columns);
}

void DataTableView::selectRow(int row, bool extend)
{
    if (row < 0 || m_model->columnCount() == 0) {
        return;
    }
    const int column = qMax(0, columnAt(m_rowNumberWidth));
    const bool extends = extend && m_anchor.isValid();
    setSelection(extends ? m_anchor : CellPlace{row, column}, {row, column}, Whole::Rows);
}

void DataTableView::selectAll()
{
    if (m_current.isValid()) {
        setSelection({m_current.row, 0}, {m_current.row, m_model->columnCount() - 1},
                     Whole::Columns);
    }
}

void DataTableView::scrollTo(CellPlace place)
{
    QScrollBar *const rows = verticalScrollBar();
    rows->setValue(qBound(place.row - wholeRowsInSight() + 1, rows->value(), place.row));
    QScrollBar *const columns = horizontalScrollBar();
    const int width = viewport()->width() - m_rowNumberWidth;
    const int left = m_columns.left(place.column);
    // Of a column wider than the view the start is shown.
    const int lowest = qMin(left, m_columns.right(place.column) - width);
    columns->setValue(qBound(lowest, columns->value(), left));
}

bool DataTableView::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && isTableKey(static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    return QAbstractScrollArea::event(event);
}

void DataTableView::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
    announceCurrent();
}

void DataTableView::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

void DataTableView::keyPressEvent(QKeyEvent *event)
{
    if (!handleCommandKey(event) && !moveByKey(event)) {
        event->ignore();
    }
}

bool DataTableView::handleCommandKey(QKeyEvent *event)
{
    const bool hasControl = (event->modifiers() & Qt::ControlModifier) != 0;
    const bool hasShift = (event->modifiers() & Qt::ShiftModifier) != 0;
    if (event->matches(QKeySequence::Copy)) {
        copy(false);
    } else if (QKeySequence(int(event->modifiers()) | event->key()) == copyWithHeaderKeys) {
        copy(true);
    } else if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (event->matches(QKeySequence::Find)) {
        Q_EMIT findWanted();
    } else if (event->matches(QKeySequence::FindNext)) {
        Q_EMIT findNextWanted(true);
    } else if (event->matches(QKeySequence::FindPrevious)) {
        Q_EMIT findNextWanted(false);
    } else if (event->key() == Qt::Key_Space && hasControl) {
        selectColumn(m_current.column);
    } else if (event->key() == Qt::Key_Space && hasShift) {
        selectRow(m_current.row);
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        showValue(m_current);
    } else {
        return false;
    }
    return true;
}

bool DataTableView::moveByKey(QKeyEvent *event)
{
    const bool toEnd = (event->modifiers() & Qt::ControlModifier) != 0;
    const int lastRow = m_model->rowCount() - 1;
    const int lastColumn = m_model->columnCount() - 1;
    const int page = qMax(1, wholeRowsInSight() - 1);
    CellPlace place = m_current;
    switch (event->key()) {
    case Qt::Key_Up:
        place.row = toEnd ? 0 : place.row - 1;
        break;
    case Qt::Key_Down:
        place.row = toEnd ? lastRow : qMin(place.row, lastRow - 1) + 1;
        break;
    case Qt::Key_Left:
        place.column = toEnd ? 0 : place.column - 1;
        break;
    case Qt::Key_Right:
        place.column = toEnd ? lastColumn : place.column + 1;
        break;
    case Qt::Key_PageUp:
        place.row -= page;
        break;
    case Qt::Key_PageDown:
        place.row = qMin(place.row, lastRow - page) + page;
        break;
    case Qt::Key_Home:
        place = {toEnd ? 0 : place.row, 0};
        break;
    case Qt::Key_End:
        place = {toEnd ? lastRow : place.row, lastColumn};
        break;
    default:
        return false;
    }
    setCurrent(place, (event->modifiers() & Qt::ShiftModifier) != 0);
    return true;
}

void DataTableView::mousePressEvent(QMouseEvent *event)
{
    const CellPlace place{rowAt(event->y()), columnAt(event->x())};
    if (event->button() != Qt::LeftButton || place.row < 0) {
        return;
    }
    const bool extend = (event->modifiers() & Qt::ShiftModifier) != 0;
    if (event->x() < m_rowNumberWidth) {
        selectRow(place.row, extend);
    } else if (place.column >= 0) {
        if (extend) {
            m_whole = Whole::Cells;
        }
        setCurrent(place, extend);
    } else {
        return;
    }
    m_dragging = true;
}

void DataTableView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging) {
        return;
    }
    const bool isOutside =
        !viewport()->rect().adjusted(m_rowNumberWidth, 0, 0, 0).contains(event->pos());
    if (!isOutside) {
        m_dragTimer.stop();
    } else if (!m_dragTimer.isActive()) {
        m_dragTimer.start(dragMilliseconds, this);
    }
    dragTo(event->pos());
}

void DataTableView::dragTo(const QPoint &position)
{
    const QRect inside = viewport()->rect().adjusted(m_rowNumberWidth, 0, 0, 0);
    // One row or column further than what is in sight.
    const int row = verticalScrollBar()->value() +
                    qBound(-1, position.y() < 0 ? -1 : position.y() / m_rowHeight,
                           inside.height() / m_rowHeight);
    if (m_whole == Whole::Rows) {
        const int bounded = qBound(0, row, m_model->rowCount() - 1);
        scrollTo({bounded, m_current.column});
        setSelection(m_anchor, {bounded, m_current.column}, m_whole);
        return;
    }
    const int x = qBound(inside.left() - 1, position.x(), inside.right() + 1);
    const int column = columnAt(x);
    const int beyond = x > inside.left() ? m_model->columnCount() - 1 : 0;
    setCurrent({row, column >= 0 ? column : beyond}, true);
}

void DataTableView::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_dragTimer.timerId()) {
        dragTo(viewport()->mapFromGlobal(QCursor::pos()));
        return;
    }
    QAbstractScrollArea::timerEvent(event);
}

void DataTableView::mouseReleaseEvent(QMouseEvent *)
{
    m_dragging = false;
    m_dragTimer.stop();
}

void DataTableView::mouseDoubleClickEvent(QMouseEvent *event)
{
    const CellPlace place{rowAt(event->y()), columnAt(event->x())};
    if (event->x() >= m_rowNumberWidth && place.isValid()) {
        showValue(place);
    }
}

void DataTableView::contextMenuEvent(QContextMenuEvent *event)
{
    QPoint position = event->pos();
    CellPlace place{rowAt(position.y()), columnAt(position.x())};
    if (event->reason() == QContextMenuEvent::Keyboard) {
        place = m_current;
        if (place.isValid()) {
            scrollTo(place);
            position = cellRect(place).center();
        }
    }
    if (!place.isValid()) {
        return;
    }
    if (!selection().contains(place)) {
        setCurrent(place);
    }
    const std::unique_ptr<QMenu> menu(makeMenu(place));
    menu->exec(viewport()->mapToGlobal(position));
}

QMenu *DataTableView::makeMenu(CellPlace place)
{
    auto *const menu = new QMenu(this);
    menu->addAction(withKeys(tr("Copy"), QKeySequence(QKeySequence::Copy)), this,
                    [this] { copy(false); });
    menu->addAction(withKeys(tr("Copy with header"), copyWithHeaderKeys), this,
                    [this] { copy(true); });
    menu->addSeparator();
    menu->addAction(withKeys(tr("Show whole value"), QKeySequence(Qt::Key_Return)), this,
                    [this, place] { showValue(place); });
    menu->addAction(tr("Filter by this value"), this, [this, place] {
        Q_EMIT filterWanted(m_model->columnName(place.column),
                            Utf8::decoded(m_model->value(place.row, place.column)));
    });
    menu->addSeparator();
    addColumnActions(menu, place.column);
    return menu;
}

void DataTableView::addColumnActions(QMenu *menu, int column)
{
    const auto addSort = [this, menu, column](const QString &text, Qt::SortOrder order) {
        QAction *const action =
            menu->addAction(text, this, [this, column, order] { m_model->sort(column, order); });
        action->setCheckable(true);
        action->setChecked(m_model->sortColumn() == column && m_model->sortOrder() == order);
    };
    menu->addAction(tr("Column values"), this,
                    [this, column] { Q_EMIT columnValuesWanted(column); });
    menu->addAction(tr("Fit column width"), this, [this, column] { fitColumn(column); });
    menu->addSection(tr("Sort for viewing only"));
    addSort(tr("Ascending"), Qt::AscendingOrder);
    addSort(tr("Descending"), Qt::DescendingOrder);
    QAction *const unsorted =
        menu->addAction(tr("As in the data"), m_model, &DataTableModel::endSort);
    unsorted->setCheckable(true);
    unsorted->setChecked(m_model->sortColumn() < 0);
}

void DataTableView::copy(bool withHeader)
{
    CellRange range = selection();
    if (range.isEmpty()) {
        return;
    }
    const int columns = range.right - range.left + 1;
    const int rows = range.bottom - range.top + 1;
    const int most = int(qMax(qint64(1), TableCopy::largestCount / columns));
    range.bottom = range.top + qMin(rows, most) - 1;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QApplication::clipboard()->setMimeData(TableCopy::mimeData(*m_model, range, withHeader));
    QApplication::restoreOverrideCursor();
    if (rows > most) {
        Q_EMIT noted(tr("Only the first %1 of %2 rows were copied. For more, add an output that "
                        "writes a file.")
                         .arg(Texts::count(most), Texts::count(rows)));
    }
}

bool DataTableView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto *const help = static_cast<QHelpEvent *>(event);
        showTip(help->pos(), help->globalPos());
        return true;
    }
    return QAbstractScrollArea::viewportEvent(event);
}

void DataTableView::showTip(const QPoint &position, const QPoint &globalPosition)
{
    constexpr int charactersShown = 5000;
    const CellPlace place{rowAt(position.y()), columnAt(position.x())};
    if (!place.isValid() || position.x() < m_rowNumberWidth) {
        QToolTip::hideText();
        return;
    }
    const QRect rect = cellRect(place);
    const std::string_view value = m_model->value(place.row, place.column);
    const CellText text(value, rect.width(), false);
    QStringList parts;
    if (text.hasLineBreaks() || text.isElidedAt(fontMetrics(), rect.width() - 16)) {
        parts.append(firstCharacters(value, charactersShown).toHtmlEscaped());
    }
    if (m_model->isChanged(place.row, place.column)) {
        const QString before = m_model->valueBefore(place.row, place.column).left(charactersShown);
        parts.append(
            tr("Changed. Before: %1").arg(before.isEmpty() ? tr("empty") : before).toHtmlEscaped());
    }
    const QString shown =
        QStringLiteral("<p style=\"white-space:pre-wrap\">%1</p>")
            .arg(parts.join(QLatin1String("</p><p style=\"white-space:pre-wrap\">")));
    QToolTip::showText(globalPosition, parts.isEmpty() ? QString() : shown, viewport(), rect);
}

void DataTableView::showValue(CellPlace place)
{
    if (!place.isValid()) {
        return;
    }
    QDialog dialog(this);
    dialog.setWindowTitle(tr("%1, row %2")
                              .arg(m_model->columnName(place.column).left(80),
                                   Texts::count(qint64(m_model->dataRow(place.row)) + 1)));
    auto *const edit =
        new QPlainTextEdit(Utf8::decoded(m_model->value(place.row, place.column)), &dialog);
    edit->setReadOnly(true);
    edit->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    edit->setAccessibleName(tr("Value"));
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Close, &dialog);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto *const layout = new QVBoxLayout(&dialog);
    layout->addWidget(edit);
    layout->addWidget(buttons);
    dialog.resize(fontMetrics().averageCharWidth() * 70, fontMetrics().height() * 18);
    dialog.exec();
}
