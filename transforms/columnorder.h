#pragma once

#include "columnnumbers.h"
#include "dataset.h"
#include "progress.h"

#include <vector>

/// How a column's values are put in order: as dates when the detected date pattern reads all that
/// were tried, else as numbers when at least half of the values that are not empty are numbers,
/// else as texts.
class ColumnOrder
{
public:
    enum class Kind { Dates, Numbers, Texts };

    /// False when the user asked to stop.
    bool read(const Dataset &table, ColIndex column, bool caseSensitive, const Progress &progress);

    Kind kind() const { return m_kind; }
    /// False for empty cells and for those that are not of the column's kind.
    bool hasPlace(int row) const { return m_isPlaced[m_numberOfRow[size_t(row)]]; }
    /// The day number of a date, a number itself, the rank of a text.
    double place(int row) const { return m_places[m_numberOfRow[size_t(row)]]; }
    /// Cells that are neither empty nor of the column's kind.
    qint64 ignoredCount() const { return m_ignored; }

private:
    std::vector<quint32> m_numberOfRow;
    std::vector<double> m_places; // by number of the value
    std::vector<bool> m_isPlaced;
    Kind m_kind = Kind::Texts;
    qint64 m_ignored = 0;
};
