#include "rowstable.h"

#include "columnlist.h"
#include "icons.h"
#include "rowsview.h"

#include <QAction>
#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QToolButton>
#include <QVBoxLayout>

RowsTable::RowsTable(const RowsTexts &texts, QWidget *parent)
    : QWidget(parent)
    , m_model(new RowsModel(this))
    , m_view(new RowsView(m_model))
    , m_buttons(new QHBoxLayout)
{
    m_view->setAccessibleName(texts.name);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(m_view);
    m_buttons->setSpacing(2);
    m_buttons->addStretch(1);
    layout->addLayout(m_buttons);

    addAction(QStringLiteral("list-add"), texts.add, Qt::Key_Insert, &RowsTable::add);
    addAction(QStringLiteral("list-remove"), texts.remove, Qt::Key_Delete, &RowsTable::remove);
    m_remove = m_lastAction;
    addAction(QStringLiteral("edit-delete"), texts.removeAll, {}, &RowsTable::removeAll);
    m_removeAll = m_lastAction;
    addAction(QStringLiteral("go-up"), texts.up, Qt::ALT + Qt::Key_Up, &RowsTable::moveUp);
    m_up = m_lastAction;
    addAction(QStringLiteral("go-down"), texts.down, Qt::ALT + Qt::Key_Down, &RowsTable::moveDown);
    m_down = m_lastAction;

    connect(m_model, &RowsModel::edited, this, &RowsTable::edited);
    for (const auto signal :
         {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved}) {
        connect(m_model, signal, this, &RowsTable::enableButtons);
    }
    connect(m_model, &QAbstractItemModel::modelReset, this, &RowsTable::enableButtons);
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &RowsTable::enableButtons);
    connect(m_view->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &current) { Q_EMIT currentRowChanged(current.row()); });
    enableButtons();
}

void RowsTable::setFields(const QVector<RowField> &fields)
{
    m_model->setFields(fields);
    m_view->shareWidth();
}

QToolButton *RowsTable::addButton(const QString &icon, const QString &toolTip)
{
    QToolButton *const button = makeToolButton(icon, toolTip);
    addButton(button);
    return button;
}

void RowsTable::addButton(QToolButton *button)
{
    m_buttons->insertWidget(m_buttons->count() - 1, button);
}

QToolButton *RowsTable::addAction(const QString &icon, const QString &toolTip,
                                  const QKeySequence &keys, void (RowsTable::*slot)())
{
    m_lastAction = nullptr;
    if (toolTip.isEmpty()) {
        return nullptr;
    }
    const QString text = toolTip.contains(QLatin1String("%1"))
                             ? toolTip.arg(keys.toString(QKeySequence::NativeText))
                             : toolTip;
    auto *const action = new QAction(Icons::action(icon), text, this);
    action->setShortcut(keys);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(action, &QAction::triggered, this, slot);
    QWidget::addAction(action);
    QToolButton *const button = addButton(icon, text);
    button->setDefaultAction(action);
    button->setToolTip(text);
    m_lastAction = action;
    return button;
}

QWidget *RowsTable::view() const
{
    return m_view;
}

int RowsTable::currentRow() const
{
    return m_view->currentIndex().row();
}

void RowsTable::setCurrentRow(int row)
{
    int field = 0;
    while (field + 1 < m_model->columnCount() &&
           m_model->field(field).kind == RowField::Kind::Label) {
        ++field;
    }
    m_view->setCurrentIndex(m_model->index(row, field));
}

QList<int> RowsTable::selectedRows() const
{
    QList<int> rows;
    const QModelIndexList selected = m_view->selectionModel()->selectedRows();
    for (const QModelIndex &index : selected) {
        rows.append(index.row());
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

void RowsTable::filter(const std::function<bool(int row)> &isShown)
{
    for (int row = 0; row < m_model->rowCount(); ++row) {
        m_view->setRowHidden(row, !isShown(row));
    }
}

void RowsTable::add()
{
    const int current = currentRow();
    const int row = current < 0 ? m_model->rowCount() : current + 1;
    m_model->insertRowAt(row, m_newRow ? m_newRow(current) : QStringList());
    setCurrentRow(row);
    m_view->setFocus();
    if (m_model->field(m_view->currentIndex().column()).kind == RowField::Kind::Text) {
        m_view->edit(m_view->currentIndex());
    }
}

void RowsTable::remove()
{
    const QList<int> rows = selectedRows();
    if (rows.isEmpty()) {
        return;
    }
    m_model->removeRowsAt(rows);
    if (m_model->rowCount() > 0) {
        setCurrentRow(qMin(rows.first(), m_model->rowCount() - 1));
    }
}

void RowsTable::removeAll()
{
    QList<int> rows;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        rows.append(row);
    }
    m_model->removeRowsAt(rows);
}

void RowsTable::move(int by)
{
    m_model->moveRowsAt(selectedRows(), by);
    enableButtons();
}

void RowsTable::enableButtons()
{
    const QList<int> rows = selectedRows();
    const auto enable = [](QAction *action, bool isOn) {
        if (action) {
            action->setEnabled(isOn);
        }
    };
    enable(m_remove, !rows.isEmpty());
    enable(m_removeAll, m_model->rowCount() > 0);
    enable(m_up, !rows.isEmpty() && rows.first() > 0);
    enable(m_down, !rows.isEmpty() && rows.last() + 1 < m_model->rowCount());
}
