#include "xlssheet.h"

#include "biffrecords.h"

#include <cstring>

namespace {

constexpr size_t cellHeader = 6; // row, column, style
constexpr size_t rkSize = 6;     // style, number
constexpr int recordsPerReport = 4096;

double doubleAt(std::string_view data, size_t at)
{
    const auto bits = biffNumber<quint64>(data, at);
    double number = 0;
    memcpy(&number, &bits, sizeof number);
    return number;
}

/// A number in four bytes: the upper 30 bits of a double or a whole number, either perhaps times
/// 100.
double rkNumber(quint32 rk)
{
    constexpr quint32 isHundredfold = 1;
    constexpr quint32 isWhole = 2;
    double number = 0;
    if ((rk & isWhole) != 0) {
        number = double(qint32(rk) >> 2);
    } else {
        const quint64 bits = quint64(rk & ~quint32(3)) << 32;
        memcpy(&number, &bits, sizeof number);
    }
    return (rk & isHundredfold) != 0 ? number / 100 : number;
}

} // namespace

XlsSheetScan::XlsSheetScan(const XlsBook *book, size_t at, SheetSink *sink)
    : m_book(*book)
    , m_at(at)
    , m_sink(sink)
    , m_hiddenRows(size_t(Biff::mostRows))
{
}

void XlsSheetScan::fail(const QString &error)
{
    if (!m_stopped) {
        m_stopped = true;
        m_error = error;
    }
}

/// Finds what is hidden and sees that the sheet is there up to its end.
bool XlsSheetScan::scanLayout()
{
    BiffStream stream(m_book.bytes, m_at);
    if (!stream.next() || stream.id() != Biff::Bof || stream.data().size() < 4 ||
        biffNumber<quint16>(stream.data(), 2) != Biff::sheetStream) {
        fail(tr("The sheet is not where the workbook says."));
        return false;
    }
    for (int depth = 1; depth > 0;) {
        if (!stream.next()) {
            fail(tr("The workbook ends in the middle of the sheet."));
            return false;
        }
        const std::string_view data = stream.data();
        if (stream.id() == Biff::Bof) {
            ++depth; // a chart in the sheet
        } else if (stream.id() == Biff::Eof) {
            --depth;
        } else if (depth > 1) {
            continue;
        } else if (stream.id() == Biff::Row && data.size() >= 14) {
            if ((biffNumber<quint16>(data, 12) & Biff::rowHidden) != 0) {
                m_hiddenRows[biffNumber<quint16>(data, 0)] = true;
            }
        } else if (stream.id() == Biff::ColInfo && data.size() >= 10) {
            const int first = biffNumber<quint16>(data, 0);
            const int last = std::min<int>(biffNumber<quint16>(data, 2), mostSheetColumns - 1);
            if ((biffNumber<quint16>(data, 8) & Biff::columnHidden) != 0 && first <= last) {
                m_sink->hideColumns(first, last);
            }
        }
    }
    return true;
}

SheetEnd XlsSheetScan::run(const Progress &progress, QString *error)
{
    if (scanLayout()) {
        BiffStream stream(m_book.bytes, m_at);
        int depth = 0;
        for (int records = 1; !m_stopped && stream.next(); ++records) {
            if (stream.id() == Biff::Bof) {
                ++depth;
            } else if (stream.id() == Biff::Eof) {
                if (--depth == 0) {
                    break;
                }
            } else if (depth == 1) {
                takeRecord(&stream);
            }
            if (records % recordsPerReport == 0 &&
                !reportProgress(progress, double(stream.nextAt()) / double(m_book.bytes.size()))) {
                return SheetEnd::Stopped;
            }
        }
        endFormula();
    }
    if (!m_stopped) {
        return reportProgress(progress, 1) ? SheetEnd::Complete : SheetEnd::Stopped;
    }
    *error = m_error;
    return m_error.isEmpty() ? SheetEnd::Stopped : SheetEnd::Failed;
}

void XlsSheetScan::takeRecord(BiffStream *stream)
{
    const std::string_view data = stream->data();
    switch (stream->id()) {
    case Biff::Number:
        if (startCell(data, 14)) {
            addNumber(doubleAt(data, cellHeader));
        }
        break;
    case Biff::Rk:
        if (startCell(data, 10)) {
            addNumber(rkNumber(biffNumber<quint32>(data, cellHeader)));
        }
        break;
    case Biff::MulRk:
        if (startCell(data, 4 + rkSize + 2)) {
            addRks(data);
        }
        break;
    case Biff::LabelSst:
        if (startCell(data, 10)) {
            addShared(data);
        }
        break;
    case Biff::Label:
    case Biff::RString:
        if (startCell(data, cellHeader)) {
            addText(stream, cellHeader);
        }
        break;
    case Biff::BoolErr:
        if (startCell(data, 8)) {
            addBoolOrError(data[7] != 0, quint8(data[6]));
        }
        break;
    case Biff::Formula:
        if (startCell(data, 14)) {
            takeFormula(data);
        }
        break;
    case Biff::String:
        takeFormulaText(stream);
        break;
    default:
        break;
    }
}

bool XlsSheetScan::startCell(std::string_view data, size_t needed)
{
    endFormula();
    if (data.size() < needed) {
        fail(tr("A record of the sheet is cut off."));
        return false;
    }
    m_column = biffNumber<quint16>(data, 2);
    const size_t style = biffNumber<quint16>(data, 4);
    m_format = style < m_book.styles.size() ? m_book.styles[style] : CellNumberFormat();
    if (m_column >= mostSheetColumns) {
        fail(tr("A sheet cannot have more than %1 columns.").arg(mostSheetColumns));
        return false;
    }
    const int row = biffNumber<quint16>(data, 0);
    return row == m_row || moveToRow(row);
}

bool XlsSheetScan::moveToRow(int row)
{
    bool inOrder = true;
    for (int between = m_row + 1; between < row && inOrder; ++between) {
        inOrder = !m_hiddenRows[size_t(between)] || m_sink->startRow(between, true);
    }
    m_row = row;
    if (!inOrder || !m_sink->startRow(row, m_hiddenRows[size_t(row)])) {
        fail(QString());
        return false;
    }
    return true;
}

void XlsSheetScan::addNumber(double number)
{
    m_text.clear();
    appendFormatted(number, m_format, m_book.dateSystem, &m_text);
    if (!m_text.empty()) {
        m_sink->add(m_column, m_text, false);
    }
}

void XlsSheetScan::addRks(std::string_view data)
{
    // Row, first column, the numbers, last column.
    const size_t end = data.size() - 2;
    for (size_t at = 4; at + rkSize <= end; at += rkSize) {
        const size_t style = biffNumber<quint16>(data, at);
        m_format = style < m_book.styles.size() ? m_book.styles[style] : CellNumberFormat();
        addNumber(rkNumber(biffNumber<quint32>(data, at + 2)));
        if (++m_column >= mostSheetColumns) {
            return;
        }
    }
}

void XlsSheetScan::addShared(std::string_view data)
{
    const auto number = biffNumber<quint32>(data, cellHeader);
    if (number >= m_book.texts.count()) {
        fail(missingTextText(m_row, m_column, QString::number(number), m_book.texts.count() > 0));
        return;
    }
    const std::string_view text = m_book.texts.at(number);
    if (!text.empty()) {
        m_sink->add(m_column, text, true);
    }
}

void XlsSheetScan::addText(BiffStream *stream, size_t at)
{
    m_text.clear();
    BiffTextReader reader(stream->continuedData(), at, m_book.codec);
    if (!reader.read(2, &m_text)) {
        fail(tr("The text of cell %1 is cut off.").arg(cellName(m_row, m_column)));
    } else if (!m_text.empty()) {
        m_sink->add(m_column, m_text, false);
    }
}

void XlsSheetScan::addBoolOrError(bool isError, quint8 value)
{
    if (!isError) {
        m_sink->add(m_column, booleanText(value != 0, m_format), true);
        return;
    }
    for (const Biff::ErrorText &error : Biff::errorTexts) {
        if (error.code == value) {
            m_sink->add(m_column, error.text, true);
            return;
        }
    }
    m_sink->add(m_column, "#ERROR!", true);
}

/// The stored result is a number, or its last two bytes are set and its first tells the kind.
void XlsSheetScan::takeFormula(std::string_view data)
{
    constexpr quint16 noNumber = 0xffff;
    if (biffNumber<quint16>(data, cellHeader + 6) != noNumber) {
        addNumber(doubleAt(data, cellHeader));
        return;
    }
    const auto value = quint8(data[cellHeader + 2]);
    switch (data[cellHeader]) {
    case 0:
        m_awaitsText = true;
        break;
    case 1:
        addBoolOrError(false, value);
        break;
    case 2:
        addBoolOrError(true, value);
        break;
    default: // an empty text
        if (data.size() >= cellHeader + 10 &&
            biffNumber<quint64>(data, cellHeader) == Biff::emptyResult &&
            biffNumber<quint16>(data, cellHeader + 8) == Biff::calculateAlways) {
            m_sink->addUnknownResult(); // that is how ours are written
        }
        break;
    }
}

void XlsSheetScan::takeFormulaText(BiffStream *stream)
{
    if (m_awaitsText) {
        m_awaitsText = false;
        addText(stream, 0);
    }
}

void XlsSheetScan::endFormula()
{
    if (m_awaitsText) {
        m_awaitsText = false;
        m_sink->addUnknownResult();
    }
}
