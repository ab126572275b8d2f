#pragma once

#include "sheetjob.h"
#include "xlsworkbook.h"

#include <string>
#include <vector>

/// Writes rows of a sheet as the records of an XLS workbook.
class XlsRows
{
public:
    /// `firstRow` counts from 0. The arguments must outlive this object, and this object the
    /// writing of the workbook, to which it lends the column names.
    XlsRows(SheetJob *job, XlsWorkbook *workbook, qint64 firstRow, quint16 rowHeight,
            XlsWorkbook::Content *content);

    /// The header, if there is one, and all rows. Answers false when the progress asked to stop, or
    /// with an error.
    bool write(const Progress &progress, QString *error);

private:
    struct RowExtent
    {
        int row;
        int first = -1;
        int last = -1;
    };

    void addHeader();
    bool addRow(int row, const std::vector<SheetJob::Cell> &cells);
    void startRow();
    bool endRow();
    bool flush();
    void addCell(int row, int column, const SheetJob::Cell &cell);
    void addRecord(quint16 id, int column, int style);
    void addNumber(int column, int style, double number);
    void addText(int column, int style, std::string_view text);
    bool addFormula(int column, int style, std::string_view text);
    bool addLink(int column, std::string_view target);
    int styleOf(const CellValue &value);
    QString spillError() const;

    SheetJob *m_job;
    XlsWorkbook *m_workbook;
    XlsWorkbook::Content *m_content;
    int m_row;
    quint16 m_rowHeight;
    int m_links = 0;
    std::vector<std::string> m_names;
    /// By number format.
    std::vector<int> m_styles;
    /// Of the rows that are not handed on yet.
    std::vector<RowExtent> m_extents;
    std::string m_cells;
    /// What follows row, column and style in a record.
    std::string m_data;
    std::string m_block;
    bool m_spills = true;
};
