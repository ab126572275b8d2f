#include "multiplecolumnseditor.h"

#include "columnlist.h"
#include "columnsearch.h"
#include "noticelabel.h"
#include "texts.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QToolButton>

MultipleColumnsParameterWidget::MultipleColumnsParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_search(makeColumnSearch())
    , m_list(new ColumnList)
    , m_count(new NoticeLabel)
{
    QToolButton *const all = makeTextButton(tr("All"), tr("Check all columns in the list."));
    QToolButton *const none = makeTextButton(tr("None"), tr("Uncheck all columns in the list."));
    auto *const top = new QHBoxLayout;
    top->setSpacing(2);
    top->addWidget(m_search, 1);
    top->addWidget(all);
    top->addWidget(none);
    contents()->addLayout(top);
    contents()->addWidget(m_list);
    contents()->addWidget(m_count);
    setMainField(m_list);
    connect(m_list, &QListWidget::itemChanged, this, &MultipleColumnsParameterWidget::tell);
    connect(all, &QToolButton::clicked, this, [this] { checkShown(Qt::Checked); });
    connect(none, &QToolButton::clicked, this, [this] { checkShown(Qt::Unchecked); });
    connect(m_search, &QLineEdit::textChanged, m_list, &ColumnList::filter);
}

void MultipleColumnsParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (take(parameter)) {
        fill();
    }
}

void MultipleColumnsParameterWidget::fill()
{
    const bool isChoice = parameter().type == ParameterType::ColumnSet;
    const auto choice = value<ColumnChoice>();
    const QList<ColumnRef> checked = isChoice ? choice.checked : value<QList<ColumnRef>>();
    QList<ColumnList::Item> items;
    for (int i = 0; i < columns().count(); ++i) {
        ColumnList::Item item{columns().column(i), Qt::Unchecked};
        if (isChoice && choice.everything) {
            item.state = Qt::Checked;
        } else if (isChoice && !choice.seen.isEmpty() && choice.seen.value(i).isEmpty()) {
            item.state = Qt::PartiallyChecked;
        }
        items.append(item);
    }
    for (const ColumnRef &column : checked) {
        const int number = columns().find(column);
        if (number >= 0) {
            items[number].state = Qt::Checked;
        } else {
            items.append({columns().bound(column), Qt::Checked});
        }
    }
    m_list->setItems(columns(), items);
    m_list->filter(m_search->text());
    showCount();
}

void MultipleColumnsParameterWidget::tell()
{
    QList<ColumnRef> checked;
    QStringList seen;
    for (const ColumnList::Item &item : m_list->items()) {
        if (item.state == Qt::Checked) {
            checked.append(item.column);
        }
        const bool isNew = item.state == Qt::PartiallyChecked;
        seen.append(isNew ? QString() : columns().shownName(item.column));
    }
    if (parameter().type != ParameterType::ColumnSet) {
        choose(QVariant::fromValue(checked));
    } else {
        choose(QVariant::fromValue(seenChoice(checked, seen)));
    }
    showCount();
}

ColumnChoice MultipleColumnsParameterWidget::seenChoice(const QList<ColumnRef> &checked,
                                                        const QStringList &seen) const
{
    ColumnChoice choice;
    choice.everything = false;
    choice.seen = seen.mid(0, columns().count());
    choice.checked = checked;
    // Columns that are gone are remembered, each at the place that its number tells.
    for (const QString &name : value<ColumnChoice>().seen) {
        if (!name.isEmpty() && !columns().names().contains(name)) {
            choice.seen.append(name);
        }
    }
    for (ColumnRef &column : choice.checked) {
        if (column.missing && !column.name.isEmpty()) {
            column.number = choice.seen.lastIndexOf(column.name);
        }
    }
    return choice;
}

void MultipleColumnsParameterWidget::checkShown(Qt::CheckState state)
{
    m_list->checkShown(state);
    tell();
}

void MultipleColumnsParameterWidget::showCount()
{
    int checked = 0;
    bool isMissing = false;
    const QList<ColumnList::Item> items = m_list->items();
    for (const ColumnList::Item &item : items) {
        checked += item.state == Qt::Checked ? 1 : 0;
        isMissing = isMissing || item.column.missing;
    }
    const QString count =
        tr("%1 of %2 checked").arg(Texts::count(checked), Texts::count(items.size()));
    m_count->setNotice(NoticeLabel::Kind::Hint, items.isEmpty() ? QString() : count);
    showNotice(items.isEmpty() ? ParameterColumns::unknownText()
               : isMissing     ? tr("A checked column is not found. Uncheck it to forget it.")
                               : QString(),
               isMissing);
}
