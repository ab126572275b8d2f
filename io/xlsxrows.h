#pragma once

#include "sheetjob.h"

#include <functional>
#include <string>
#include <vector>

class XlsxStyles;

/// A link of a cell to something outside the workbook.
struct XlsxLink
{
    std::string cell;
    std::string target;
};

/// Which styles of a workbook the header cells and the cells below them are to look like, by
/// column; beyond the last column the workbook's ordinary one.
struct XlsxLook
{
    std::vector<int> header;
    std::vector<int> data;
};

/// Writes rows of a sheet as XML.
class XlsxRows
{
public:
    /// Takes the next piece; answers false when nothing more can be taken.
    using Sink = std::function<bool(std::string_view xml)>;

    /// `firstRow` counts from 0. The arguments must outlive this object.
    XlsxRows(SheetJob *job, XlsxStyles *styles, const XlsxLook &look, qint64 firstRow, Sink sink);

    /// The header, if there is one, and all rows. Answers false when the progress or the sink asked
    /// to stop.
    bool write(const Progress &progress);
    const std::vector<XlsxLink> &links() const { return m_links; }

private:
    void addHeader();
    bool addRow(int row, std::vector<SheetJob::Cell> *cells);
    void startCell(int column, int style, const char *type);
    void addCell(int row, int column, SheetJob::Cell *cell);
    void addInlineText(std::string_view text);
    int styleOf(int column, const CellValue &value);
    bool addFormula(std::string_view text, int column, const CellValue &value);
    bool flush();

    SheetJob *m_job;
    XlsxStyles *m_styles;
    const XlsxLook &m_look;
    qint64 m_row;
    Sink m_sink;
    std::vector<std::string> m_columnNames;
    /// By column and number format.
    std::vector<std::vector<int>> m_cellStyles;
    std::string m_rowNumber;
    std::string m_text;
    std::vector<XlsxLink> m_links;
};

/// Appends a text as XML content in which nothing of it is lost: characters that XML does not allow
/// stand as _xHHHH_, the way of this format.
void appendXlsxText(std::string_view utf8, std::string *out);
