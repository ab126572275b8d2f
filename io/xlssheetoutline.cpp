#include "xlssheetoutline.h"

#include "biffrecords.h"
#include "bifftext.h"
#include "biffwriter.h"

#include <algorithm>

namespace {

constexpr size_t dimensionsSize = 14;

/// Records that hold a cell with a value.
bool isValue(quint16 id)
{
    switch (id) {
    case Biff::Number:
    case Biff::Rk:
    case Biff::MulRk:
    case Biff::LabelSst:
    case Biff::Label:
    case Biff::RString:
    case Biff::BoolErr:
    case Biff::Formula:
        return true;
    default:
        return false;
    }
}

/// Records that belong to the table of rows and cells.
bool isOfCells(quint16 id)
{
    switch (id) {
    case Biff::Row:
    case Biff::Blank:
    case Biff::MulBlank:
    case Biff::String:
    case Biff::SharedFormula:
    case Biff::Array:
    case Biff::Table:
        return true;
    default:
        return isValue(id);
    }
}

/// Records that stand before those of the links, or are such.
bool isBeforeLinks(quint16 id)
{
    switch (id) {
    case Biff::Window2:
    case Biff::Scl:
    case Biff::Pane:
    case Biff::Selection:
    case Biff::MergeCells:
    case Biff::LabelRanges:
    case Biff::PhoneticInfo:
    case Biff::CondFmt:
    case Biff::Cf:
    case Biff::CondFmt12:
    case Biff::Cf12:
    case Biff::CfEx:
    case Biff::HLink:
    case Biff::HLinkTooltip:
        return true;
    default:
        return false;
    }
}

} // namespace

bool XlsSheetOutline::takeRecord(const Record &record, std::string_view data)
{
    const size_t number = m_records.size();
    if (record.id == Biff::Dimensions) {
        m_dimensions = data;
        m_dimensionsAt = m_cellsAt = number;
    } else if (isOfCells(record.id)) {
        // Cells go behind what they are described by.
        if (m_dimensions.empty()) {
            return false;
        }
        if (isValue(record.id)) {
            m_lastRow = std::max(m_lastRow, qint64(record.row) + 1);
        }
        m_cellsAt = number;
    } else if (record.id == Biff::DefColWidth || record.id == Biff::ColInfo) {
        m_columnsAt = number;
        m_hasColumns = m_hasColumns || record.id == Biff::ColInfo;
    } else if (record.id == Biff::DefaultRowHeight && data.size() >= 4) {
        constexpr quint16 highest = 8192;
        const auto height = biffNumber<quint16>(data, 2);
        m_rowHeight = height > 1 && height <= highest ? height : m_rowHeight;
    } else if (isBeforeLinks(record.id)) {
        m_linksAt = number;
    }
    m_records.push_back(record);
    return true;
}

bool XlsSheetOutline::read(std::string_view records, QString *error)
{
    m_bytes = records;
    BiffStream stream(records);
    int depth = 0;
    size_t from = 0;
    for (; stream.next(); from = stream.nextAt()) {
        const quint16 id = stream.id();
        const std::string_view data = stream.data();
        const bool isInside = depth > 1;
        depth += id == Biff::Bof ? 1 : id == Biff::Eof ? -1 : 0;
        if (isInside || id == Biff::Continue) {
            m_records.back().to = stream.nextAt();
            continue;
        }
        const int row = isOfCells(id) && data.size() >= 2 ? biffNumber<quint16>(data, 0) : -1;
        if (!takeRecord({id, from, stream.nextAt(), row}, data)) {
            break;
        }
    }
    if (depth != 0 || from != records.size() || m_dimensions.size() < dimensionsSize - 2 ||
        m_linksAt < m_cellsAt) {
        *error = tr("The sheet has a form that cannot be extended.");
        return false;
    }
    return true;
}

/// A string, or a formula that cells share, belongs to the cell before it.
bool XlsSheetOutline::isDropped(const Record &record, bool replacesAll, bool replacesCells) const
{
    if (record.id == Biff::Dimensions || record.id == Biff::Index || record.id == Biff::DbCell) {
        return true;
    }
    if (replacesAll && isOfCells(record.id)) {
        return true;
    }
    if (replacesCells) {
        return record.id == Biff::MergeCells || record.id == Biff::HLink ||
               record.id == Biff::HLinkTooltip;
    }
    // Rows without values that follow would stand in the way.
    const bool isEmptyCell =
        record.id == Biff::Row || record.id == Biff::Blank || record.id == Biff::MulBlank;
    return isEmptyCell && record.row >= m_lastRow;
}

std::string XlsSheetOutline::dimensions(bool replacesCells, qint64 firstRow, qint64 rows,
                                        int columns) const
{
    quint32 from = quint32(firstRow);
    quint32 to = quint32(firstRow + rows);
    quint16 left = 0;
    quint16 right = quint16(columns);
    if (rows == 0 || columns == 0) {
        from = to = right = 0;
    }
    const auto oldTo = biffNumber<quint32>(m_dimensions, 4);
    const auto oldRight = biffNumber<quint16>(m_dimensions, 10);
    if (!replacesCells && m_lastRow > 0) {
        from = std::min(biffNumber<quint32>(m_dimensions, 0), quint32(m_lastRow));
        to = std::max({to, oldTo, quint32(m_lastRow)});
        left = right > 0 ? 0 : biffNumber<quint16>(m_dimensions, 8);
        right = std::max(right, oldRight);
    }
    std::string data;
    appendBiff(from, &data);
    appendBiff(to, &data);
    appendBiff(left, &data);
    appendBiff(right, &data);
    data.resize(dimensionsSize);
    std::string record;
    appendBiffRecord(Biff::Dimensions, data, &record);
    return record;
}

XlsSheetOutline::Parts XlsSheetOutline::parts(bool replacesCells, qint64 firstRow, qint64 rows,
                                              int columns, const std::string &columnRecords) const
{
    const bool replacesAll = replacesCells || m_lastRow == 0;
    Parts parts;
    std::string *part = &parts.beforeCells;
    const bool addsColumns = replacesAll && !m_hasColumns;
    for (size_t i = 0; i < m_records.size(); ++i) {
        const Record &record = m_records[i];
        if (record.id == Biff::Dimensions) {
            if (addsColumns && m_columnsAt == 0) {
                *part += columnRecords;
            }
            *part += dimensions(replacesCells, firstRow, rows, columns);
        }
        if (!isDropped(record, replacesAll, replacesCells)) {
            part->append(m_bytes.substr(record.from, record.to - record.from));
        }
        if (addsColumns && i == m_columnsAt && i > 0) {
            *part += columnRecords;
        }
        if (i == m_cellsAt) {
            part = &parts.betweenThem;
        }
        if (i == m_linksAt) {
            part = &parts.afterLinks;
        }
    }
    return parts;
}
