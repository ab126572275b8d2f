#pragma once

#include "dataset.h"
#include "numberreader.h"

#include <QString>
#include <vector>

struct Messages;

/// The numbers in the cells of a column, each distinct value read once where values repeat.
class ColumnNumbers
{
public:
    enum class Kind : quint8 { Unknown, Empty, Other, Number };

    /// The table must neither change nor be destroyed while this is used.
    ColumnNumbers(const Dataset &table, ColIndex column);

    /// What the cell of a row is; `number` is set when it is one.
    Kind at(int row, double *number);

    static Kind read(std::string_view utf8, const NumberReader &reader, double *number);

private:
    struct Known
    {
        double number = 0;
        Kind kind = Kind::Unknown;
    };

    ColumnReader m_cells;
    NumberReader m_reader;
    std::vector<Known> m_known; // by code; empty: not remembered
};

/// What transforms tell about numbers.
namespace NumberMessages {

/// "%1 non-numeric value(s) ignored in column '%2'.", unless there are none.
void tellIgnored(qint64 count, const QString &columnName, Messages *messages);
/// "%1 result(s) could not be calculated.", unless there are none.
void tellNotCalculated(qint64 count, Messages *messages);

} // namespace NumberMessages
