#include "xlsxsheet.h"

#include "utf8.h"

#include <charconv>
#include <cstring>

namespace {

constexpr std::string_view escapeStart = "_x";
constexpr size_t escapeSize = 7; // _xHHHH_

/// The UTF-16 unit that an escape at the start of the text stands for, -1 when it is none.
int escapedUnit(std::string_view text)
{
    if (text.size() < escapeSize || text.substr(0, 2) != escapeStart || text[6] != '_') {
        return -1;
    }
    unsigned unit = 0;
    const char *const end = text.data() + 6;
    const auto [at, error] = std::from_chars(text.data() + 2, end, unit, 16);
    return error == std::errc() && at == end ? int(unit) : -1;
}

std::string unescaped(std::string_view text)
{
    QString result;
    size_t plainFrom = 0;
    for (size_t at = text.find(escapeStart); at != std::string_view::npos;) {
        const int unit = escapedUnit(text.substr(at));
        if (unit < 0) {
            at = text.find(escapeStart, at + 1);
            continue;
        }
        result += Utf8::decoded(text.substr(plainFrom, at - plainFrom));
        result += QChar(ushort(unit));
        plainFrom = at + escapeSize;
        at = text.find(escapeStart, plainFrom);
    }
    result += Utf8::decoded(text.substr(plainFrom));
    return Utf8::encoded(result);
}

int positiveNumber(const char *text)
{
    int number = -1;
    const char *const end = text + strlen(text);
    const auto [at, error] = std::from_chars(text, end, number);
    return error == std::errc() && at == end ? number : -1;
}

} // namespace

void RichText::startElement(std::string_view name)
{
    if (name == "rPh") {
        ++m_phonetic;
    } else if (name == "t") {
        m_inText = true;
    }
}

void RichText::endElement(std::string_view name)
{
    if (name == "rPh") {
        --m_phonetic;
    } else if (name == "t") {
        m_inText = false;
    }
}

void RichText::finish()
{
    const std::string_view added = std::string_view(*m_out).substr(m_from);
    if (added.find(escapeStart) != std::string_view::npos) {
        const std::string decoded = unescaped(added);
        m_out->resize(m_from);
        m_out->append(decoded);
    }
    m_inText = false;
    m_phonetic = 0;
}

XlsxSheetHandler::XlsxSheetHandler(const XlsxBook *book, SheetSink *sink)
    : m_book(*book)
    , m_sink(sink)
    , m_inlineText(&m_value)
{
}

void XlsxSheetHandler::startElement(std::string_view name, const char *const *attributes)
{
    if (m_level == Level::Inline) {
        ++m_skipped;
        m_inlineText.startElement(name);
        return;
    }
    if (m_skipped > 0) {
        ++m_skipped;
        return;
    }
    switch (m_level) {
    case Level::Outside:
        if (name != "worksheet") {
            stop(tr("The sheet's part holds no sheet of cells."));
        }
        m_level = Level::Sheet;
        return;
    case Level::Sheet:
        if (name == "sheetData") {
            m_level = Level::Data;
            return;
        }
        if (name == "cols") {
            m_level = Level::Columns;
            return;
        }
        break;
    case Level::Columns:
        if (name == "col") {
            startColumns(attributes);
        }
        break;
    case Level::Data:
        if (name == "row") {
            startRow(attributes);
            return;
        }
        break;
    case Level::Row:
        if (name == "c") {
            startCell(attributes);
            return;
        }
        break;
    case Level::Cell:
        startInCell(name);
        return;
    case Level::Value:
    case Level::Inline:
        break;
    }
    ++m_skipped;
}

void XlsxSheetHandler::endElement(std::string_view name)
{
    if (m_skipped > 0) {
        --m_skipped;
        if (m_level == Level::Inline) {
            m_inlineText.endElement(name);
        }
        return;
    }
    switch (m_level) {
    case Level::Outside:
        break;
    case Level::Sheet:
        m_level = Level::Outside;
        break;
    case Level::Columns:
    case Level::Data:
        m_level = Level::Sheet;
        break;
    case Level::Row:
        m_level = Level::Data;
        break;
    case Level::Cell:
        endCell();
        m_level = Level::Row;
        break;
    case Level::Inline:
        m_inlineText.finish();
        m_level = Level::Cell;
        break;
    case Level::Value:
        if (m_kind == Kind::Text && m_value.find(escapeStart) != std::string::npos) {
            m_value = unescaped(m_value);
        }
        m_level = Level::Cell;
        break;
    }
}

void XlsxSheetHandler::characters(std::string_view text)
{
    if (m_skipped == 0 && m_level == Level::Value) {
        m_value.append(text);
    } else if (m_level == Level::Inline) {
        m_inlineText.characters(text);
    }
}

void XlsxSheetHandler::startColumns(const char *const *attributes)
{
    const char *const first = attributeValue(attributes, "min");
    const char *const last = attributeValue(attributes, "max");
    if (!first || !last || !isTrueAttribute(attributeValue(attributes, "hidden"))) {
        return;
    }
    const int from = std::max(positiveNumber(first) - 1, 0);
    const int to = std::min(positiveNumber(last) - 1, mostSheetColumns - 1);
    if (from <= to) {
        m_sink->hideColumns(from, to);
    }
}

void XlsxSheetHandler::startRow(const char *const *attributes)
{
    m_level = Level::Row;
    ++m_row;
    m_column = -1;
    m_rowHidden = false;
    m_rowStarted = false;
    bool isNumbered = false;
    for (; *attributes; attributes += 2) {
        if (strcmp(*attributes, "r") == 0) {
            m_row = positiveNumber(attributes[1]) - 1;
            isNumbered = true;
        } else if (strcmp(*attributes, "hidden") == 0) {
            m_rowHidden = isTrueAttribute(attributes[1]);
        }
    }
    // A row without its number may get one from its first cell.
    if (isNumbered || m_rowHidden) {
        moveToRow(m_row);
    }
}

bool XlsxSheetHandler::moveToRow(int row)
{
    if (row < 0 || row >= mostSheetRows) {
        stop(tr("A sheet cannot have a row of number %1.").arg(qint64(row) + 1));
        return false;
    }
    m_row = row;
    m_rowStarted = true;
    if (!m_sink->startRow(row, m_rowHidden)) {
        stop();
        return false;
    }
    return true;
}

void XlsxSheetHandler::startCell(const char *const *attributes)
{
    m_level = Level::Cell;
    m_kind = Kind::Number;
    m_format = {};
    m_hasFormula = false;
    m_hasValue = false;
    m_value.clear();
    ++m_column;
    for (; *attributes; attributes += 2) {
        const char *const name = attributes[0];
        const char *const value = attributes[1];
        if (name[0] == '\0' || name[1] != '\0') {
            continue;
        }
        if (name[0] == 'r') {
            if (!readReference(value)) {
                return;
            }
        } else if (name[0] == 's') {
            const int style = positiveNumber(value);
            if (style >= 0 && size_t(style) < m_book.styles.size()) {
                m_format = m_book.styles[size_t(style)];
            }
        } else if (name[0] == 't') {
            const std::string_view type = value;
            m_kind = type == "s"                   ? Kind::Shared
                     : type == "b"                 ? Kind::Boolean
                     : type == "d"                 ? Kind::Date
                     : type == "n" || type.empty() ? Kind::Number
                                                   : Kind::Text;
        }
    }
    if (m_column >= mostSheetColumns) {
        stop(tr("A sheet cannot have more than %1 columns.").arg(mostSheetColumns));
    } else if (!m_rowStarted) {
        moveToRow(m_row);
    }
}

bool XlsxSheetHandler::readReference(const char *reference)
{
    constexpr int letters = 26;
    int column = 0;
    const char *at = reference;
    for (; (*at >= 'A' && *at <= 'Z') || (*at >= 'a' && *at <= 'z'); ++at) {
        column = std::min(column * letters + ((*at | 0x20) - 'a' + 1), mostSheetColumns + 1);
    }
    const int row = positiveNumber(at) - 1;
    if (column == 0 || row < 0) {
        stop(tr("The cell reference '%1' cannot be read.")
                 .arg(QString::fromUtf8(reference).left(40)));
        return false;
    }
    m_column = column - 1;
    return (m_rowStarted && row == m_row) || moveToRow(row);
}

void XlsxSheetHandler::startInCell(std::string_view name)
{
    if (name == "v") {
        m_level = Level::Value;
        m_hasValue = true;
        m_value.clear();
    } else if (name == "is") {
        m_level = Level::Inline;
        m_kind = Kind::Text;
        m_hasValue = true;
        m_value.clear();
        m_inlineText.start();
    } else {
        m_hasFormula = m_hasFormula || name == "f";
        ++m_skipped;
    }
}

void XlsxSheetHandler::endCell()
{
    if (!m_value.empty()) {
        addValue();
    } else if (m_hasFormula && !m_hasValue && m_kind == Kind::Number) {
        m_sink->addUnknownResult();
    }
}

void XlsxSheetHandler::addValue()
{
    switch (m_kind) {
    case Kind::Shared:
        addShared();
        return;
    case Kind::Boolean:
        addBoolean();
        return;
    case Kind::Text:
        m_sink->add(m_column, m_value, false);
        return;
    case Kind::Date:
        m_text.clear();
        appendIsoDate(m_value, &m_text);
        break;
    case Kind::Number:
        m_text.clear();
        appendNumberText(m_value, m_format, m_book.dateSystem, &m_text);
        break;
    }
    m_sink->add(m_column, m_text, false);
}

void XlsxSheetHandler::addShared()
{
    quint32 index = 0;
    const char *const end = m_value.data() + m_value.size();
    const auto [at, error] = std::from_chars(m_value.data(), end, index);
    if (error != std::errc() || at != end || index >= m_book.texts.count()) {
        stop(missingTextText(m_row, m_column, QString::fromStdString(m_value).left(40),
                             m_book.hasTexts));
        return;
    }
    const std::string_view text = m_book.texts.at(index);
    if (!text.empty()) {
        m_sink->add(m_column, text, true);
    }
}

void XlsxSheetHandler::addBoolean()
{
    if (m_value == "1" || m_value == "true") {
        m_sink->add(m_column, booleanText(true, m_format), true);
    } else if (m_value == "0" || m_value == "false") {
        m_sink->add(m_column, booleanText(false, m_format), true);
    } else {
        m_sink->add(m_column, m_value, false);
    }
}
