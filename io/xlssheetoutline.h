#pragma once

#include <QCoreApplication>
#include <string>
#include <string_view>
#include <vector>

/// What the records of an XLS sheet are for, so that cells can be added or replaced without
/// touching the rest.
class XlsSheetOutline
{
    Q_DECLARE_TR_FUNCTIONS(XlsSheetOutline)

public:
    /// Reads the records of a sheet, which must outlive this object; fails with an error when the
    /// sheet has a shape that cannot be changed.
    bool read(std::string_view records, QString *error);

    /// The last row that holds a value, counted from 1; 0 for an empty sheet.
    qint64 lastRow() const { return m_lastRow; }
    /// The height of an ordinary row, in twentieths of a point.
    quint16 rowHeight() const { return m_rowHeight; }

    /// The records between which the new cells and links go.
    struct Parts
    {
        std::string beforeCells;
        std::string betweenThem;
        std::string afterLinks;
    };
    /// The new cells take `rows` rows from `firstRow` on. `columnRecords` are for sheets without
    /// records on columns.
    Parts parts(bool replacesCells, qint64 firstRow, qint64 rows, int columns,
                const std::string &columnRecords) const;

private:
    /// A record with those that continue it; a chart in the sheet is one.
    struct Record
    {
        quint16 id;
        size_t from;
        size_t to;
        /// Of a cell or a row.
        int row;
    };

    bool takeRecord(const Record &record, std::string_view data);
    bool isDropped(const Record &record, bool replacesAll, bool replacesCells) const;
    std::string dimensions(bool replacesCells, qint64 firstRow, qint64 rows, int columns) const;

    std::string_view m_bytes;
    std::vector<Record> m_records;
    qint64 m_lastRow = 0;
    quint16 m_rowHeight = 255;
    std::string_view m_dimensions;
    /// Numbers of the records behind which something goes.
    size_t m_dimensionsAt = 0;
    size_t m_cellsAt = 0;
    size_t m_linksAt = 0;
    size_t m_columnsAt = 0;
    bool m_hasColumns = false;
};
