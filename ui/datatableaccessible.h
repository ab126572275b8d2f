#pragma once

#include <QAccessibleWidget>

class DataTableView;

/// Tells screen readers that the view is a table, and its current cell.
class DataTableAccessible final : public QAccessibleWidget
{
public:
    explicit DataTableAccessible(DataTableView *view);

    QString text(QAccessible::Text kind) const override;

    static void install();
    /// To be called when the current cell has changed.
    static void announce(DataTableView *view);
};
