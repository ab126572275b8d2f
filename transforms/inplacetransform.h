#pragma once

#include "transform.h"

#include <QList>
#include <QString>
#include <functional>

/// Base of the transforms that change the cells of selected columns where they stand. What does not
/// change stays shared with the input.
class InPlaceTransform : public Transform
{
    Q_OBJECT

protected:
    using Transform::Transform;

    /// The new value of a cell, from its value alone.
    using CellFunction = std::function<QString(const QString &)>;

    /// The table with the cells of the columns changed, after which the status tells how many. The
    /// functions are asked once for each distinct value. Nothing when the run was stopped.
    Dataset mapCells(const Dataset &input, const QList<ColIndex> &columns,
                     const CellFunction &changed);
    /// The same with a function for each column.
    Dataset mapColumns(const Dataset &input, const QList<ColIndex> &columns,
                       const std::function<CellFunction(ColIndex)> &functionFor);
    /// The same for new values that depend on other cells of the row; asked for every cell.
    Dataset mapRows(const Dataset &input, const QList<ColIndex> &columns,
                    const std::function<QString(int row, const QString &)> &changed);

private:
    /// A question for row loops over one of several columns.
    std::function<bool(int row)> reporter(const Dataset &input, int column, int columnCount);
};
