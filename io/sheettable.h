#pragma once

#include "rowcollector.h"
#include "rowtext.h"
#include "spreadsheetreader.h"

/// Makes a table of a sheet's cells. Column A and row 1 are the first column and row; what is empty
/// to the right of all values and below them does not count.
class SheetTable final : public SheetSink
{
    Q_DECLARE_TR_FUNCTIONS(SheetTable)

public:
    enum class Order {
        AsRead, ///< rows go to the table as they come, which ends when one comes too late
        Sorted  ///< all cells are kept and put in order at the end
    };

    SheetTable(const InputOptions &options, Order order);

    void hideColumns(int first, int last) override;
    bool startRow(int row, bool hidden) override;
    void add(int column, std::string_view utf8, bool lasting) override;
    void addUnknownResult() override { ++m_unknownResults; }

    /// A row came after one of a higher number: read again with Sorted.
    bool isOutOfOrder() const { return m_outOfOrder; }
    Dataset finish(Messages *messages);

private:
    struct Cell
    {
        int row;
        int column;
        size_t from;
        size_t size;
    };

    bool isLeftOut(int row) const;
    void endRow();
    int compact();
    void sortRows();
    void noteHidden(Messages *messages) const;

    RowCollector m_collector;
    Order m_order;
    int m_ignoredRows;
    bool m_ignoreHiddenRows;
    bool m_ignoreHiddenColumns;

    // The row that is being read.
    int m_row = -1;
    bool m_hidden = false;
    int m_width = 0;
    std::vector<std::string_view> m_values;
    RowText m_texts;

    int m_nextRow = 0;
    int m_hiddenEmptyRows = 0; // since m_nextRow
    int m_usedColumns = 0;
    int m_hiddenRows = 0;
    qint64 m_unknownResults = 0;
    bool m_outOfOrder = false;
    std::vector<bool> m_hiddenColumns;

    std::vector<Cell> m_cells;
    std::string m_cellTexts;
    std::vector<int> m_hiddenRowNumbers;
};

/// Finds out how large a sheet is.
class SheetMeasure final : public SheetSink
{
public:
    void hideColumns(int, int) override {}
    bool startRow(int row, bool) override
    {
        m_row = row;
        return true;
    }
    void add(int column, std::string_view, bool) override
    {
        m_rows = std::max(m_rows, m_row + 1);
        m_columns = std::max(m_columns, column + 1);
    }
    void addUnknownResult() override {}

    int rows() const { return m_rows; }
    int columns() const { return m_columns; }

private:
    int m_row = 0;
    int m_rows = 0;
    int m_columns = 0;
};
