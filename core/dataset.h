#pragma once

#include "indices.h"
#include "progress.h"
#include "valuepool.h"

#include <QSharedDataPointer>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

class ColumnReader;
class TableBuilder;
struct StackedTable;

/// Row numbers of a source table, one for each row of a result; -1 stands for a row of empty cells.
using RowSelection = std::vector<qint32>;

/// How many cells an operation changed and how many it left as they were.
struct CellChanges
{
    qint64 changed = 0;
    qint64 unchanged = 0;
};

/// A table of text values with an optional header of column names: what every item of the graph
/// holds. Copies are O(1); a copy shares everything until it is written to, column by column.
///
/// Cells are kept by column as codes into the column's ValuePool. Taking rows (filter, sort,
/// sample) shares all columns and adds 4 bytes a row; adding a column or joining two tables copies
/// no cell.
class Dataset
{
public:
    Dataset();
    Dataset(const Dataset &);
    Dataset(Dataset &&) noexcept;
    Dataset &operator=(const Dataset &);
    Dataset &operator=(Dataset &&) noexcept;
    ~Dataset();

    ColIndex columnCount() const;
    /// Data rows; the header is never counted.
    int rowCount() const;
    bool isEmpty() const { return rowCount() == 0; }
    bool hasRows() const { return rowCount() > 0; }
    bool hasColumns() const { return columnCount().value() > 0; }

    /// The value of a cell. No bounds check: callers iterate inside the shape.
    QString cell(RowIndex row, ColIndex column) const;
    /// The same value as UTF-8 (see Utf8), without making a text; valid while a copy of the table
    /// lives. For loops over a column use columnReader().
    std::string_view utf8(RowIndex row, ColIndex column) const;
    /// Stores a value through the column's pool.
    void setCell(RowIndex row, ColIndex column, const QString &value);

    /// Fast reading of one column; valid while this object is neither changed nor destroyed.
    ColumnReader columnReader(ColIndex column) const;

    /// Widens (with empty cells and empty names) or narrows the table.
    void setColumnCount(ColIndex count);
    /// Removes rows at the end or appends rows of empty cells. Nothing happens when `columns` is 0.
    /// The column count is the caller's business.
    void resize(int rows, int columns);
    /// Does nothing when there is no such row. O(rows): to remove many, use selectRows().
    void removeRow(RowIndex row);

    /// Stores the names; the header flag becomes true exactly when the list is not empty. A header
    /// shorter than the table is filled with empty names, a longer one widens the table.
    void setHeader(const QStringList &names);
    /// Off puts the header back as row 0, on takes row 0 as header; without rows only the flag
    /// changes.
    void setHasHeader(bool on);
    QStringList header() const;
    bool hasHeader() const;
    /// The header's name, or "Column %1" (counted from 1) without a header.
    QString columnName(ColIndex column) const;
    QStringList columnNames() const;
    /// The first column of that name, else an invalid index.
    ColIndex columnIndex(const QString &name) const;

    /// This table with the given rows in the given order (repeats allowed). Shares all cells.
    Dataset selectRows(RowSelection rows) const;
    /// This table with the given columns in the given order (repeats allowed). Shares all cells.
    Dataset selectColumns(const std::vector<ColIndex> &columns) const;
    /// The first table's columns, then the second's, both of the same row count. Shares all cells;
    /// there is a header when either has one.
    static Dataset sideBySide(const Dataset &left, const Dataset &right);
    /// The rows of the tables one under another, without a header. Shares the cells of the first
    /// table; the values of the others are taken over once for each of their codes. Together the
    /// tables must not have more rows than an int can count. Nothing when the user asked to stop.
    static Dataset stacked(const std::vector<StackedTable> &tables, int columnCount,
                           const Progress &progress = {});
    /// Adds an empty column at the right end and answers its number. An empty name in a table with
    /// a header becomes "Column %1".
    ColIndex appendColumn(const QString &name);

    /// Replaces every value of a column by what a function of the value alone answers, asked once
    /// for each distinct value. A column in which nothing changes stays shared. `goOn` is asked
    /// before every row; false ends the work and leaves the column as it was.
    CellChanges mapColumn(ColIndex column, const std::function<QString(const QString &)> &changed,
                          const std::function<bool(int row)> &goOn = {});

    /// Header flag, header, shape and all values are the same.
    bool operator==(const Dataset &other) const;
    bool operator!=(const Dataset &other) const { return !(*this == other); }

    /// Bytes held by the cells and pools, shared parts counted in full; for memory reports.
    size_t memoryUsed() const;

private:
    friend class ColumnReader;
    friend class TableBuilder;
    struct Data;
    QSharedDataPointer<Data> d;
};

/// A table to be put under others, and for each column of the result the table's own column that
/// goes there; an invalid one stands for empty cells.
struct StackedTable
{
    Dataset table;
    std::vector<ColIndex> columns;
};

/// Reads one column of a table by row number: codes (equal codes of a column are equal values, so
/// that a test or conversion can be remembered per code), bytes or texts.
class ColumnReader
{
public:
    using Code = ValuePool::Code;

    /// The code of a row's value; 0 when it is empty. Different codes may hold equal values.
    Code code(int row) const
    {
        if (m_map) {
            row = m_map[row];
        }
        if (row < 0 || row >= m_size) {
            return ValuePool::emptyCode;
        }
        return m_chunks[row >> chunkBits].get()[row & chunkMask];
    }
    /// Codes lie below this.
    Code codeCount() const { return m_pool ? m_pool->count() : 1; }
    std::string_view utf8OfCode(Code code) const
    {
        return code == ValuePool::emptyCode ? std::string_view() : m_pool->utf8(code);
    }
    QString textOfCode(Code code) const
    {
        return code == ValuePool::emptyCode ? ValuePool::emptyText() : m_pool->text(code);
    }
    std::string_view utf8(int row) const { return utf8OfCode(code(row)); }
    QString text(int row) const { return textOfCode(code(row)); }
    /// True when values repeat, so that remembering results per code pays.
    bool isPooled() const { return m_pool && m_pool->hasLookups(); }

private:
    friend class Dataset;
    friend struct TableColumn;
    static constexpr int chunkBits = 16;
    static constexpr int chunkMask = (1 << chunkBits) - 1;

    const qint32 *m_map = nullptr;
    const std::shared_ptr<quint32[]> *m_chunks = nullptr;
    int m_size = 0;
    const ValuePool *m_pool = nullptr;
};
