#include "reordercolumnseditor.h"

#include "columnlist.h"

#include <QHBoxLayout>
#include <QToolButton>

namespace {

/// Farther than any list is long.
constexpr int toTheEnd = 1 << 30;

} // namespace

ReorderColumnsParameterWidget::ReorderColumnsParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_list(new ColumnList)
    , m_up(makeToolButton(QStringLiteral("go-up"), tr("Move selected columns up.")))
    , m_down(makeToolButton(QStringLiteral("go-down"), tr("Move selected columns down.")))
    , m_top(makeToolButton(QStringLiteral("go-top"), tr("Move selected columns to the top.")))
    , m_bottom(
          makeToolButton(QStringLiteral("go-bottom"), tr("Move selected columns to the bottom.")))
    , m_reset(makeToolButton(QStringLiteral("edit-undo"), tr("Go back to the order of the input.")))
{
    m_list->setOrdered();
    contents()->addWidget(m_list);
    auto *const buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    for (QToolButton *const button : {m_top, m_up, m_down, m_bottom, m_reset}) {
        buttons->addWidget(button);
    }
    buttons->addStretch(1);
    contents()->addLayout(buttons);
    setMainField(m_list);
    m_up->setShortcut(Qt::ALT + Qt::Key_Up);
    m_down->setShortcut(Qt::ALT + Qt::Key_Down);
    connect(m_up, &QToolButton::clicked, this, [this] { move(-1); });
    connect(m_down, &QToolButton::clicked, this, [this] { move(1); });
    connect(m_top, &QToolButton::clicked, this, [this] { move(-toTheEnd); });
    connect(m_bottom, &QToolButton::clicked, this, [this] { move(toTheEnd); });
    connect(m_reset, &QToolButton::clicked, this, [this] {
        choose(QVariant::fromValue(QList<ColumnRef>()));
        fill();
    });
    connect(m_list, &ColumnList::dropped, this, &ReorderColumnsParameterWidget::tell);
    connect(m_list, &QListWidget::itemSelectionChanged, this,
            &ReorderColumnsParameterWidget::enableButtons);
}

void ReorderColumnsParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (take(parameter)) {
        fill();
    }
}

void ReorderColumnsParameterWidget::fill()
{
    QList<ColumnList::Item> items;
    QList<int> listed;
    const auto order = value<QList<ColumnRef>>();
    for (const ColumnRef &column : order) {
        items.append({columns().bound(column)});
        listed.append(columns().find(column));
    }
    for (int i = 0; i < columns().count(); ++i) {
        if (!listed.contains(i)) {
            items.append({columns().column(i)});
        }
    }
    m_list->setItems(columns(), items);
    showNotice(items.isEmpty() ? ParameterColumns::unknownText() : QString(), false);
    enableButtons();
}

void ReorderColumnsParameterWidget::tell()
{
    QList<ColumnRef> order;
    for (const ColumnList::Item &item : m_list->items()) {
        order.append(item.column);
    }
    choose(QVariant::fromValue(order));
    enableButtons();
}

void ReorderColumnsParameterWidget::move(int by)
{
    QList<int> rows;
    for (int i = 0; i < m_list->count(); ++i) {
        if (m_list->item(i)->isSelected()) {
            rows.append(i);
        }
    }
    if (rows.isEmpty()) {
        return;
    }
    by = qBound(-rows.first(), by, m_list->count() - 1 - rows.last());
    if (by == 0) {
        return;
    }
    if (by > 0) {
        std::reverse(rows.begin(), rows.end());
    }
    QListWidgetItem *const current = m_list->currentItem();
    QList<QListWidgetItem *> moved;
    for (const int row : std::as_const(rows)) {
        QListWidgetItem *const item = m_list->takeItem(row);
        m_list->insertItem(row + by, item);
        moved.append(item);
    }
    m_list->setCurrentItem(current, QItemSelectionModel::NoUpdate);
    m_list->clearSelection();
    for (QListWidgetItem *const item : std::as_const(moved)) {
        item->setSelected(true);
    }
    m_list->scrollToItem(moved.first());
    tell();
}

void ReorderColumnsParameterWidget::enableButtons()
{
    const int count = m_list->count();
    bool canRise = false;
    bool canSink = false;
    for (int i = 0; i < count; ++i) {
        canRise = canRise || (m_list->item(i)->isSelected() && !m_list->item(0)->isSelected());
        canSink =
            canSink || (m_list->item(i)->isSelected() && !m_list->item(count - 1)->isSelected());
    }
    for (QToolButton *const button : {m_up, m_top}) {
        button->setEnabled(canRise);
    }
    for (QToolButton *const button : {m_down, m_bottom}) {
        button->setEnabled(canSink);
    }
    m_reset->setEnabled(!value<QList<ColumnRef>>().isEmpty());
}
