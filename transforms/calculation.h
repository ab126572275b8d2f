#pragma once

#include "calculateoperations.h"
#include "columnvariables.h"
#include "dataset.h"
#include "numberreader.h"

#include <memory>
#include <vector>

struct Messages;

/// Reads one operand of a calculation, row by row.
class OperandSource
{
public:
    virtual ~OperandSource() = default;
    virtual const CalculationOperand &at(int row) = 0;
    /// True when the operand is the same for all rows.
    virtual bool isConstant() const = 0;
    /// What to tell of values that cannot be read.
    virtual QString unreadableText(qint64 count) const = 0;
};

/// A calculation over the rows of one table. Results are remembered where they depend on one column
/// with repeated values.
class Calculation
{
public:
    /// The table must neither change nor be destroyed while this is used.
    Calculation(const CalculationOperation &operation, const Dataset &table, ColIndex column);

    void setSecondColumn(ColIndex column);
    void setSecondText(const QString &text);

    /// The new cell of a row.
    QString at(int row);
    /// "%1 calculated, %2 not calculated"; empty results of empty cells are neither.
    QString status() const;
    void report(Messages *messages) const;

private:
    enum class Outcome : quint8 {
        Unknown,
        Calculated,
        Empty,
        Failed,
        FirstUnreadable,
        SecondUnreadable
    };
    struct Cell
    {
        QString text;
        Outcome outcome = Outcome::Unknown;
    };

    Cell calculated(int row);
    Cell cellOf(const CalculationResult &result) const;

    const CalculationOperation &m_operation;
    const Dataset &m_table;
    ColumnReader m_cells;
    QString m_dateFormat;
    QString m_writtenFormat;
    std::unique_ptr<OperandSource> m_first;
    std::unique_ptr<OperandSource> m_second;
    std::vector<Cell> m_known; // by code of the first column; empty: not remembered
    qint64 m_counts[6] = {};
};
