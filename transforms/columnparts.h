#pragma once

#include "dataset.h"
#include "parametervalues.h"

#include <QStringList>
#include <vector>

/// Columns of a table that go under each other: a row of the table becomes one row for each part.
struct ColumnParts
{
    struct Group
    {
        /// Name of the one column that the group becomes.
        QString name;
        /// The group's column of each part; invalid where a part has none.
        std::vector<ColIndex> columns;
        /// Where the column of the result stands in the table.
        ColIndex place;
    };

    int partCount = 1;
    std::vector<Group> groups;
    /// Cells of parts that reach beyond the last column of the table, for each row.
    qint64 missingCells = 0;

    bool isEmpty() const { return groups.empty(); }
};

/// Finds the parts of each row as the option says. Parts that lie wholly beyond the table are only
/// counted in partCount, and groups are shorter.
ColumnParts findColumnParts(const SplitRowsSpec &spec, const Dataset &table);
