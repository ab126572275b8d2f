#pragma once

#include "cellformats.h"
#include "progress.h"

#include <QCoreApplication>
#include <vector>

struct Messages;
struct OutputContext;
struct OutputOptions;

/// A table that is to become a sheet, and what is told of it: walks over the rows and says what
/// each value becomes.
class SheetJob
{
    Q_DECLARE_TR_FUNCTIONS(SheetJob)

public:
    /// The arguments must outlive this object.
    SheetJob(const OutputOptions &options, const OutputContext &context, const Dataset &dataset);

    /// To be called before the rows are walked over.
    void setDateSystem(DateSystem system) { m_dateSystem = system; }
    const OutputOptions &options() const { return m_options; }
    const OutputContext &context() const { return m_context; }
    NumberFormats &numberFormats() { return m_formats; }
    int columnCount() const { return m_dataset.columnCount().value(); }
    int rowCount() const { return m_dataset.rowCount(); }
    bool mayHaveFormulas() const;
    /// The column names, when the table has some and they are to be written.
    bool hasNames() const { return m_hasNames; }
    void leaveOutNames() { m_hasNames = false; }
    QStringList names() const { return m_dataset.header(); }
    /// Rows of the sheet that the table takes.
    qint64 sheetRows() const { return qint64(rowCount()) + (m_hasNames ? 1 : 0); }
    /// Fails when the sheet would pass the limits of its kind of workbook.
    bool fits(qint64 firstRow, int mostRows, int mostColumns, Messages *messages) const;
    /// Widths that show most values whole, in characters.
    std::vector<double> columnWidths();

    struct Cell
    {
        CellValue value;
        std::string_view text;
    };
    /// Hands the rows on as (row, cells); cells above the limits of a cell come as empty ones.
    /// Answers false when the progress or the receiver asked to stop.
    template <class WriteRow>
    bool forEachRow(const Progress &progress, WriteRow &&writeRow)
    {
        makeColumns();
        std::vector<Cell> cells(m_columns.size());
        for (int row = 0; row < rowCount(); ++row) {
            if (row % progressInterval == 0 &&
                !reportProgress(progress, double(row) / rowCount())) {
                return false;
            }
            for (size_t column = 0; column < cells.size(); ++column) {
                Cell &cell = cells[column];
                cell.text = m_columns[column].utf8(row);
                cell.value = cell.text.empty() ? CellValue() : m_columns[column].value(row);
                if (cell.value.unfit || cell.value.kind == CellValue::Kind::TooLong) {
                    countProblem(row, int(column), &cell);
                }
            }
            if (!writeRow(row, cells)) {
                return false;
            }
        }
        return true;
    }

    /// A value that could not be written in its column's format after all.
    void countUnfit(int row, int column);
    /// Where the first data row stands in the sheet, for the addresses in messages.
    void setFirstDataRow(qint64 row) { m_firstDataRow = row; }
    void tell(Messages *messages) const;

private:
    struct Problems
    {
        qint64 count = 0;
        QStringList cells;
    };

    void makeColumns();
    void countProblem(int row, int column, Cell *cell);
    void count(Problems *problems, int row, int column) const;

    const OutputOptions &m_options;
    const OutputContext &m_context;
    const Dataset &m_dataset;
    bool m_hasNames;
    DateSystem m_dateSystem = DateSystem::From1900;
    NumberFormats m_formats;
    std::vector<CellFormat> m_columnFormats;
    std::vector<CellColumn> m_columns;
    qint64 m_firstDataRow = 0;
    Problems m_tooLong;
    Problems m_unfit;
};
