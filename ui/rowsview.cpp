#include "rowsview.h"

#include "rowsdelegate.h"
#include "rowsmodel.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>

namespace {

constexpr int fewestRowsShown = 2;
constexpr int mostRowsShown = 8;
/// Longer tables get rows of one line, because measuring every row takes time.
constexpr int mostRowsWrapped = 100;

} // namespace

RowsView::RowsView(RowsModel *model)
    : m_rows(model)
{
    setModel(model);
    setItemDelegate(new RowsDelegate(this));
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed |
                    QAbstractItemView::DoubleClicked);
    setTabKeyNavigation(false);
    setShowGrid(true);
    setAlternatingRowColors(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    verticalHeader()->hide();
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setMinimumSectionSize(24);
    connect(this, &QTableView::clicked, this, &RowsView::editClicked);
    for (const auto signal :
         {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved}) {
        connect(model, signal, this, &RowsView::fitRows);
    }
    connect(model, &QAbstractItemModel::modelReset, this, &RowsView::fitRows);
    connect(model, &QAbstractItemModel::dataChanged, this, &RowsView::fitRows);
}

void RowsView::shareWidth()
{
    const int fields = m_rows->columnCount();
    int room = viewport()->width();
    int shares = 0;
    for (int i = 0; i < fields; ++i) {
        if (m_rows->field(i).share == 0) {
            setColumnWidth(i, qMax(sizeHintForColumn(i), horizontalHeader()->sectionSizeHint(i)));
            room -= columnWidth(i);
        }
        shares += m_rows->field(i).share;
    }
    for (int i = 0; i < fields; ++i) {
        const int share = m_rows->field(i).share;
        if (share > 0) {
            const int width = room * share / shares;
            setColumnWidth(i, width);
            room -= width;
            shares -= share;
        }
    }
    fitRows();
}

void RowsView::fitRows()
{
    const bool wraps = m_rows->rowCount() <= mostRowsWrapped;
    setWordWrap(wraps);
    if (wraps) {
        resizeRowsToContents();
    }
    updateGeometry();
}

QSize RowsView::sizeHint() const
{
    int height = horizontalHeader()->sizeHint().height() + 2 * frameWidth();
    const int least = fontMetrics().height() + 8;
    const int rows = qBound(fewestRowsShown, m_rows->rowCount(), mostRowsShown);
    for (int i = 0; i < rows; ++i) {
        height += i < m_rows->rowCount() ? qMax(least, rowHeight(i)) : least;
    }
    return {200, height};
}

QSize RowsView::minimumSizeHint() const
{
    return {120, sizeHint().height()};
}

void RowsView::resizeEvent(QResizeEvent *event)
{
    QTableView::resizeEvent(event);
    if (event->size().width() != event->oldSize().width()) {
        shareWidth();
    }
}

void RowsView::changeEvent(QEvent *event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        fitRows();
    }
}

void RowsView::editClicked(const QModelIndex &index)
{
    if (QApplication::keyboardModifiers() != Qt::NoModifier || state() == EditingState ||
        !(index.flags() & Qt::ItemIsEditable) || index.flags() & Qt::ItemIsUserCheckable) {
        return;
    }
    edit(index);
}

void RowsView::keyPressEvent(QKeyEvent *event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool opensChoice = event->key() == Qt::Key_Space && currentIndex().isValid() &&
                             m_rows->field(currentIndex().column()).kind == RowField::Kind::Choice;
    if ((isEnter || opensChoice) && event->modifiers() == Qt::NoModifier &&
        currentIndex().flags() & Qt::ItemIsEditable && state() != EditingState) {
        edit(currentIndex());
        return;
    }
    QTableView::keyPressEvent(event);
}
