#include "columnlist.h"

#include "hintdelegate.h"
#include "icons.h"
#include "theme.h"

#include <QToolButton>

namespace {

constexpr int keyRole = Qt::UserRole;
constexpr int fewestShown = 3;
constexpr int mostShown = 8;

} // namespace

ColumnList::ColumnList(QWidget *parent)
    : QListWidget(parent)
{
    setItemDelegate(new HintDelegate(ChoiceBox::hintRole, this));
    setUniformItemSizes(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextElideMode(Qt::ElideMiddle);
}

void ColumnList::setItems(const ParameterColumns &columns, const QList<Item> &items)
{
    const QSignalBlocker blocker(this);
    m_columns = columns;
    // Taking all items away would lose the place.
    while (count() > items.size()) {
        delete takeItem(count() - 1);
    }
    while (count() < items.size()) {
        addItem(QString());
    }
    for (int i = 0; i < items.size(); ++i) {
        const ColumnRef &column = items[i].column;
        const bool isMissing = columns.isMissing(column);
        QListWidgetItem *const shown = item(i);
        shown->setText(columns.shownName(column));
        shown->setData(keyRole, columns.key(column));
        shown->setToolTip(isMissing ? ParameterColumns::notFoundText(column.name)
                                    : columns.shownName(column));
        shown->setIcon(
            isMissing ? Icons::colored(QStringLiteral("notice-warning"), Theme::current().warning)
                      : QIcon());
        const bool isNew = !m_isOrdered && items[i].state == Qt::PartiallyChecked;
        shown->setData(ChoiceBox::hintRole, isNew ? tr("new") : columns.hint(columns.find(column)));
        if (!m_isOrdered) {
            shown->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
            shown->setCheckState(items[i].state);
        }
    }
    updateGeometry();
}

QList<ColumnList::Item> ColumnList::items() const
{
    QList<Item> items;
    for (int i = 0; i < count(); ++i) {
        items.append({m_columns.fromKey(item(i)->data(keyRole).toString()),
                      m_isOrdered ? Qt::Unchecked : item(i)->checkState()});
    }
    return items;
}

void ColumnList::setOrdered()
{
    m_isOrdered = true;
    setDragDropMode(QAbstractItemView::InternalMove);
    setDefaultDropAction(Qt::MoveAction);
}

void ColumnList::filter(const QString &text)
{
    for (int i = 0; i < count(); ++i) {
        item(i)->setHidden(!item(i)->text().contains(text, Qt::CaseInsensitive));
    }
}

void ColumnList::checkShown(Qt::CheckState state)
{
    const QSignalBlocker blocker(this);
    for (int i = 0; i < count(); ++i) {
        if (!item(i)->isHidden()) {
            item(i)->setCheckState(state);
        }
    }
    viewport()->update();
}

QSize ColumnList::sizeHint() const
{
    const int rowHeight = count() > 0 ? sizeHintForRow(0) : fontMetrics().height() + 8;
    return {200, qBound(fewestShown, count(), mostShown) * rowHeight + 2 * frameWidth() + 2};
}

QSize ColumnList::minimumSizeHint() const
{
    return {120, sizeHint().height()};
}

void ColumnList::dropEvent(QDropEvent *event)
{
    QListWidget::dropEvent(event);
    Q_EMIT dropped();
}

QToolButton *makeToolButton(const QString &icon, const QString &toolTip)
{
    QToolButton *const button = makeTextButton({}, toolTip);
    button->setIcon(Icons::action(icon));
    return button;
}

QToolButton *makeTextButton(const QString &text, const QString &toolTip)
{
    auto *const button = new QToolButton;
    button->setText(text);
    button->setToolTip(toolTip);
    button->setAccessibleName(toolTip);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}
