#pragma once

#include "columnnumbers.h"
#include "columnorder.h"
#include "dataset.h"
#include "rowgroups.h"

#include <QString>
#include <QStringList>
#include <vector>

struct Messages;

/// What Unique makes of the values of a column in a group of rows. The order is that in which the
/// actions are offered.
enum class UniqueOperation {
    Unique,
    First,
    Last,
    Count,
    CountNonEmpty,
    CountDistinct,
    Sum,
    Average,
    Median,
    Minimum,
    Maximum,
    Range,
    StandardDeviation,
    Mode,
    Concatenate,
    ConcatenateDistinct,
    Shortest,
    Longest,
    Remove
};

namespace UniqueOperations {

/// The stored texts of the operations, in their order.
const QStringList &names();
/// First for a text that is none of them.
UniqueOperation find(const QString &name);
/// Minimum, Maximum and Range.
bool isOrdering(UniqueOperation operation);

} // namespace UniqueOperations

/// Works an operation out for one group of rows after another.
class UniqueAggregate
{
public:
    struct Options
    {
        UniqueOperation operation = UniqueOperation::First;
        QString delimiter;
        bool caseSensitive = true;
    };

    /// The table must neither change nor be destroyed while this is used.
    UniqueAggregate(const Dataset &table, ColIndex column, const Options &options);

    /// Reads what the operation needs to know of the whole column. False when the user asked to
    /// stop.
    bool prepare(const Progress &progress);
    QString valueOf(RowGroups::Rows rows);
    /// Tells what was left out and what could not be calculated.
    void report(Messages *messages) const;

private:
    QString orderedValue(RowGroups::Rows rows) const;
    QString numericValue(RowGroups::Rows rows);
    QString pickedValue(RowGroups::Rows rows) const;
    QString mostFrequent(RowGroups::Rows rows);
    QString concatenated(RowGroups::Rows rows);
    int distinctCount(RowGroups::Rows rows);
    bool isNewInGroup(qint32 row);
    QString written(double number);

    const Dataset &m_table;
    ColIndex m_column;
    Options m_options;
    ColumnReader m_cells;
    ColumnNumbers m_numbers;
    ColumnOrder m_order;
    NumberedValues m_values;
    std::vector<qint32> m_seenIn; // by value: the last group it was met in
    std::vector<qint32> m_counts; // by value
    std::vector<double> m_scratch;
    qint32 m_group = 0;
    qint64 m_ignored = 0;
    qint64 m_failures = 0;
};
