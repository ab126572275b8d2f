#include "datatableaccessible.h"

#include "datatableview.h"

static QAccessibleInterface *makeInterface(const QString &, QObject *object)
{
    auto *const view = qobject_cast<DataTableView *>(object);
    return view ? new DataTableAccessible(view) : nullptr;
}

DataTableAccessible::DataTableAccessible(DataTableView *view)
    : QAccessibleWidget(view, QAccessible::Table)
{
}

QString DataTableAccessible::text(QAccessible::Text kind) const
{
    if (kind == QAccessible::Value) {
        return static_cast<DataTableView *>(widget())->currentCellText();
    }
    return QAccessibleWidget::text(kind);
}

void DataTableAccessible::install()
{
    QAccessible::installFactory(makeInterface); // does nothing the second time
}

void DataTableAccessible::announce(DataTableView *view)
{
    if (QAccessible::isActive()) {
        QAccessibleValueChangeEvent event(view, view->currentCellText());
        QAccessible::updateAccessibility(&event);
    }
}
