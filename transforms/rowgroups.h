#pragma once

#include "dataset.h"
#include "distinctvalues.h"
#include "progress.h"

#include <QString>
#include <functional>
#include <vector>

/// What two values are compared by; an empty function compares the values themselves.
using ValueKey = std::function<QString(const QString &)>;

/// The values of a column numbered so that those of equal keys have equal numbers, from 0 in order
/// of first appearance.
struct NumberedValues
{
    /// False when the user asked to stop.
    bool read(const Dataset &table, ColIndex column, const ValueKey &key, const Progress &progress);

    std::vector<quint32> ofRow;
    quint32 count = 0;
};

/// The rows of a table grouped by the values of columns. Groups are numbered in order of first
/// appearance, and the rows of each stand in their order.
class RowGroups
{
public:
    struct Rows
    {
        const qint32 *first;
        const qint32 *last;
        const qint32 *begin() const { return first; }
        const qint32 *end() const { return last; }
        int size() const { return int(last - first); }
    };

    /// False when the user asked to stop.
    bool read(const Dataset &table, const QList<ColIndex> &columns, const ValueKey &key,
              const Progress &progress);
    /// Puts whole groups together: group i becomes part of the group merged[i]; the new numbers too
    /// are in order of first appearance.
    void merge(const std::vector<quint32> &merged, quint32 count);

    int count() const { return int(m_starts.size()) - 1; }
    Rows rows(int group) const
    {
        return {m_rows.data() + m_starts[size_t(group)],
                m_rows.data() + m_starts[size_t(group) + 1]};
    }

private:
    void list(quint32 count);

    std::vector<quint32> m_ofRow;
    std::vector<quint32> m_starts{0};
    std::vector<qint32> m_rows;
};
