#include "xlsrows.h"

#include "biffformula.h"
#include "biffrecords.h"
#include "utf8.h"

#include <cmath>
#include <cstring>

namespace {

// Programs expect the records of so many rows in front of their cells.
constexpr size_t rowsInBlock = 32;
// More than programs read.
constexpr int mostLinks = 65530;

quint64 bitsOf(double number)
{
    quint64 bits = 0;
    memcpy(&bits, &number, sizeof bits);
    return bits;
}

/// Whether a number is a whole one of 30 bits.
bool isShortInteger(double number)
{
    constexpr double limit = 1 << 29;
    return number >= -limit && number < limit && number == std::floor(number) &&
           !(number == 0 && std::signbit(number));
}

/// The form of a number in four bytes; false when it would lose something.
bool toRk(double number, quint32 *rk)
{
    constexpr quint32 isHundredfold = 1;
    constexpr quint32 isWhole = 2;
    constexpr quint64 lostBits = (quint64(1) << 34) - 1;
    if (isShortInteger(number)) {
        *rk = quint32(qint32(number)) << 2 | isWhole;
        return true;
    }
    const double hundredfold = std::round(number * 100);
    if (isShortInteger(hundredfold) && hundredfold / 100 == number) {
        *rk = quint32(qint32(hundredfold)) << 2 | isWhole | isHundredfold;
        return true;
    }
    *rk = quint32(bitsOf(number) >> 32);
    return (bitsOf(number) & lostBits) == 0;
}

} // namespace

XlsRows::XlsRows(SheetJob *job, XlsWorkbook *workbook, qint64 firstRow, quint16 rowHeight,
                 XlsWorkbook::Content *content)
    : m_job(job)
    , m_workbook(workbook)
    , m_content(content)
    , m_row(int(firstRow) - 1)
    , m_rowHeight(rowHeight)
{
}

QString XlsRows::spillError() const
{
    for (const SpilledBytes *const bytes :
         {&m_content->cells, &m_content->links, &m_workbook->texts()->moreRecords()}) {
        if (!bytes->error().isEmpty()) {
            return bytes->error();
        }
    }
    return {};
}

bool XlsRows::write(const Progress &progress, QString *error)
{
    m_job->setFirstDataRow(m_row + 1 + (m_job->hasNames() ? 1 : 0));
    if (m_job->hasNames()) {
        addHeader();
    }
    const bool complete =
        m_job->forEachRow(progress, [this](int row, std::vector<SheetJob::Cell> &cells) {
            return addRow(row, cells);
        });
    const bool done = complete && flush();
    *error = spillError();
    return done;
}

void XlsRows::addHeader()
{
    for (const QString &name : m_job->names()) {
        m_names.push_back(Utf8::encoded(name.left(int(CellColumn::mostCharacters))));
    }
    startRow();
    for (size_t column = 0; column < m_names.size(); ++column) {
        if (!m_names[column].empty()) {
            addText(int(column), m_workbook->styles()->bold(), m_names[column]);
        }
    }
    m_spills = endRow() && m_spills;
}

bool XlsRows::addRow(int row, const std::vector<SheetJob::Cell> &cells)
{
    startRow();
    for (size_t column = 0; column < cells.size(); ++column) {
        addCell(row, int(column), cells[column]);
    }
    return endRow() && m_spills && !m_workbook->texts()->hasFailed();
}

void XlsRows::startRow()
{
    ++m_row;
    m_extents.push_back({m_row});
}

bool XlsRows::endRow()
{
    return m_extents.size() < rowsInBlock || flush();
}

bool XlsRows::flush()
{
    constexpr quint32 options = 0x000f0100;
    m_block.clear();
    for (const RowExtent &extent : m_extents) {
        appendBiff(quint16(Biff::Row), &m_block);
        appendBiff(quint16(16), &m_block);
        appendBiff(quint16(extent.row), &m_block);
        appendBiff(quint16(std::max(extent.first, 0)), &m_block);
        appendBiff(quint16(extent.last + 1), &m_block);
        appendBiff(m_rowHeight, &m_block);
        appendBiff(quint32(0), &m_block);
        appendBiff(options, &m_block);
    }
    m_extents.clear();
    m_block += m_cells;
    m_cells.clear();
    return m_content->cells.append(m_block);
}

int XlsRows::styleOf(const CellValue &value)
{
    if (m_styles.size() <= value.numberFormat) {
        m_styles.resize(size_t(value.numberFormat) + 1, -1);
    }
    int &style = m_styles[value.numberFormat];
    if (style < 0) {
        style = m_workbook->styles()->withNumberFormat(
            m_job->numberFormats().codes()[value.numberFormat]);
    }
    return style;
}

/// Appends a record of a cell, whose data are those collected.
void XlsRows::addRecord(quint16 id, int column, int style)
{
    appendBiff(id, &m_cells);
    appendBiff(quint16(m_data.size() + 6), &m_cells);
    appendBiff(quint16(m_row), &m_cells);
    appendBiff(quint16(column), &m_cells);
    appendBiff(quint16(style), &m_cells);
    m_cells += m_data;
    m_data.clear();
    RowExtent &extent = m_extents.back();
    extent.first = extent.first < 0 ? column : extent.first;
    extent.last = column;
}

void XlsRows::addNumber(int column, int style, double number)
{
    quint32 rk = 0;
    if (toRk(number, &rk)) {
        appendBiff(rk, &m_data);
        addRecord(Biff::Rk, column, style);
    } else {
        appendBiff(bitsOf(number), &m_data);
        addRecord(Biff::Number, column, style);
    }
}

void XlsRows::addText(int column, int style, std::string_view text)
{
    appendBiff(m_workbook->texts()->add(text), &m_data);
    addRecord(Biff::LabelSst, column, style);
}

void XlsRows::addCell(int row, int column, const SheetJob::Cell &cell)
{
    const CellValue &value = cell.value;
    switch (value.kind) {
    case CellValue::Kind::Empty:
    case CellValue::Kind::TooLong:
        return;
    case CellValue::Kind::Number:
        addNumber(column, styleOf(value), value.number);
        return;
    case CellValue::Kind::Boolean:
        appendBiff(quint8(value.number != 0 ? 1 : 0), &m_data);
        appendBiff(quint8(0), &m_data);
        addRecord(Biff::BoolErr, column, styleOf(value));
        return;
    case CellValue::Kind::Formula:
        if (addFormula(column, styleOf(value), cell.text)) {
            return;
        }
        m_job->countUnfit(row, column);
        break;
    case CellValue::Kind::Link:
        if (addLink(column, cell.text)) {
            addText(column, m_workbook->styles()->link(styleOf(value)), cell.text);
            return;
        }
        m_job->countUnfit(row, column);
        break;
    case CellValue::Kind::Text:
        break;
    }
    addText(column, styleOf(value), cell.text);
}

/// The result is left empty, for programs to calculate it.
bool XlsRows::addFormula(int column, int style, std::string_view text)
{
    if (text.front() == '=') {
        text.remove_prefix(1);
    }
    std::string tokens;
    if (!compileBiffFormula(text, &tokens)) {
        return false;
    }
    appendBiff(Biff::emptyResult, &m_data);
    appendBiff(Biff::calculateAlways, &m_data);
    appendBiff(quint32(0), &m_data);
    appendBiff(quint16(tokens.size()), &m_data);
    m_data += tokens;
    addRecord(Biff::Formula, column, style);
    return true;
}

bool XlsRows::addLink(int column, std::string_view target)
{
    if (++m_links > mostLinks) {
        return false;
    }
    // Class ids of a link and of the address of a page.
    static const std::string link(
        "\xd0\xc9\xea\x79\xf9\xba\xce\x11\x8c\x82\x00\xaa\x00\x4b\xa9\x0b", 16);
    static const std::string page(
        "\xe0\xc9\xea\x79\xf9\xba\xce\x11\x8c\x82\x00\xaa\x00\x4b\xa9\x0b", 16);
    constexpr quint32 streamVersion = 2;
    constexpr quint32 hasAbsoluteTarget = 3;
    std::string data;
    for (const int number : {m_row, m_row, column, column}) {
        appendBiff(quint16(number), &data);
    }
    data += link;
    appendBiff(streamVersion, &data);
    appendBiff(hasAbsoluteTarget, &data);
    data += page;
    const std::string text = linkTarget(target);
    appendBiff(quint32(2 * (text.size() + 1)), &data);
    for (const char c : text) {
        appendBiff(quint16(uchar(c)), &data);
    }
    appendBiff(quint16(0), &data);
    std::string record;
    appendBiffRecord(Biff::HLink, data, &record);
    m_spills = m_content->links.append(record) && m_spills;
    return true;
}
