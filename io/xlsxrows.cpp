#include "xlsxrows.h"

#include "utf8.h"
#include "xlsxstyles.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace {

constexpr size_t blockSize = size_t(1) << 16;
// More than a sheet of this format may have.
constexpr size_t mostLinks = 65530;

enum Needs : quint8 { Nothing, Escape, Look };

/// Which bytes cannot simply be copied.
std::array<quint8, 256> specialBytes()
{
    std::array<quint8, 256> special{};
    for (size_t i = 0; i < 0x20; ++i) {
        special[i] = Escape;
    }
    special['\t'] = Nothing;
    special['\n'] = Nothing;
    for (const char c : {'&', '<', '>'}) {
        special[uchar(c)] = Escape;
    }
    special[uchar('_')] = Look;
    special[0xed] = Look; // may begin a surrogate
    special[0xef] = Look; // may begin U+FFFE or U+FFFF
    return special;
}

void appendUnit(unsigned unit, std::string *out)
{
    std::array<char, 8> text;
    snprintf(text.data(), text.size(), "_x%04X_", unit);
    out->append(text.data(), 7);
}

/// True where the text reads _xHHHH_, which would be taken for an escape.
bool looksEscaped(std::string_view text)
{
    if (text.size() < 7 || text[1] != 'x' || text[6] != '_') {
        return false;
    }
    for (const char c : text.substr(2, 4)) {
        if (!isxdigit(uchar(c))) {
            return false;
        }
    }
    return true;
}

/// Whether parentheses and quotes of a formula are closed; what is not makes spreadsheet programs
/// refuse the whole workbook.
bool isClosed(std::string_view formula)
{
    int depth = 0;
    char quote = '\0';
    for (const char c : formula) {
        if (quote != '\0') {
            quote = c == quote ? '\0' : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '(') {
            ++depth;
        } else if (c == ')' && --depth < 0) {
            return false;
        }
    }
    return depth == 0 && quote == '\0';
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

} // namespace

void appendXlsxText(std::string_view utf8, std::string *out)
{
    static const std::array<quint8, 256> special = specialBytes();
    size_t from = 0;
    for (size_t at = 0; at < utf8.size();) {
        const char c = utf8[at];
        if (special[uchar(c)] == Nothing) {
            ++at;
            continue;
        }
        if (special[uchar(c)] == Look) {
            size_t next = at;
            const uint codePoint = Utf8::nextCodePoint(utf8, &next);
            const bool isForbidden =
                QChar::isSurrogate(codePoint) || codePoint == 0xfffe || codePoint == 0xffff;
            if (c == '_' ? !looksEscaped(utf8.substr(at)) : !isForbidden) {
                at = next;
                continue;
            }
            out->append(utf8.substr(from, at - from));
            appendUnit(codePoint, out);
            at = from = next;
            continue;
        }
        out->append(utf8.substr(from, at - from));
        switch (c) {
        case '&':
            out->append("&amp;");
            break;
        case '<':
            out->append("&lt;");
            break;
        case '>':
            out->append("&gt;");
            break;
        default:
            appendUnit(uchar(c), out);
            break;
        }
        from = ++at;
    }
    out->append(utf8.substr(from));
}

XlsxRows::XlsxRows(SheetJob *job, XlsxStyles *styles, const XlsxLook &look, qint64 firstRow,
                   Sink sink)
    : m_job(job)
    , m_styles(styles)
    , m_look(look)
    , m_row(firstRow)
    , m_sink(std::move(sink))
    , m_cellStyles(size_t(job->columnCount()))
{
    constexpr int letters = 26;
    for (int column = 0; column < job->columnCount(); ++column) {
        std::string name;
        for (int rest = column; rest >= 0; rest = rest / letters - 1) {
            name.insert(name.begin(), char('A' + rest % letters));
        }
        m_columnNames.push_back(std::move(name));
    }
}

bool XlsxRows::flush()
{
    const bool taken = m_sink(m_text);
    m_text.clear();
    return taken;
}

bool XlsxRows::write(const Progress &progress)
{
    m_job->setFirstDataRow(m_row + (m_job->hasNames() ? 1 : 0));
    if (m_job->hasNames()) {
        addHeader();
    }
    const bool complete =
        m_job->forEachRow(progress, [this](int row, std::vector<SheetJob::Cell> &cells) {
            return addRow(row, &cells);
        });
    return complete && flush();
}

void XlsxRows::addHeader()
{
    m_rowNumber = std::to_string(++m_row);
    m_text += "<row r=\"" + m_rowNumber + "\">";
    const QStringList names = m_job->names();
    for (int column = 0; column < names.size(); ++column) {
        const auto number = size_t(column);
        startCell(column, number < m_look.header.size() ? m_look.header[number] : m_styles->bold(),
                  "inlineStr");
        addInlineText(Utf8::encoded(names.at(column).left(int(CellColumn::mostCharacters))));
    }
    m_text += "</row>";
}

bool XlsxRows::addRow(int row, std::vector<SheetJob::Cell> *cells)
{
    m_rowNumber = std::to_string(++m_row);
    m_text += "<row r=\"";
    m_text += m_rowNumber;
    m_text += "\">";
    for (size_t column = 0; column < cells->size(); ++column) {
        addCell(row, int(column), &(*cells)[column]);
    }
    m_text += "</row>";
    return m_text.size() < blockSize || flush();
}

int XlsxRows::styleOf(int column, const CellValue &value)
{
    std::vector<int> &known = m_cellStyles[size_t(column)];
    if (known.size() <= value.numberFormat) {
        known.resize(size_t(value.numberFormat) + 1, -1);
    }
    int &style = known[value.numberFormat];
    if (style < 0) {
        const int base = size_t(column) < m_look.data.size() ? m_look.data[size_t(column)] : 0;
        style =
            m_styles->withNumberFormat(base, m_job->numberFormats().codes()[value.numberFormat]);
    }
    return style;
}

void XlsxRows::startCell(int column, int style, const char *type)
{
    m_text += "<c r=\"";
    m_text += m_columnNames[size_t(column)];
    m_text += m_rowNumber;
    if (style != 0) {
        std::array<char, 16> digits;
        const char *const end =
            std::to_chars(digits.data(), digits.data() + digits.size(), style).ptr;
        m_text += "\" s=\"";
        m_text.append(digits.data(), size_t(end - digits.data()));
    }
    if (type) {
        m_text += "\" t=\"";
        m_text += type;
    }
    m_text += "\">";
}

void XlsxRows::addInlineText(std::string_view text)
{
    const bool hasOuterBlanks = !text.empty() && (isBlank(text.front()) || isBlank(text.back()) ||
                                                  text.find('\n') != std::string_view::npos);
    m_text += hasOuterBlanks ? "<is><t xml:space=\"preserve\">" : "<is><t>";
    appendXlsxText(text, &m_text);
    m_text += "</t></is></c>";
}

void XlsxRows::addCell(int row, int column, SheetJob::Cell *cell)
{
    const CellValue &value = cell->value;
    const int style = styleOf(column, value);
    switch (value.kind) {
    case CellValue::Kind::Empty:
    case CellValue::Kind::TooLong:
        // A look, such as a border, shows in empty cells too.
        if (style != 0) {
            startCell(column, style, nullptr);
            m_text += "</c>";
        }
        return;
    case CellValue::Kind::Number: {
        startCell(column, style, nullptr);
        std::array<char, 32> digits;
        const char *const end =
            std::to_chars(digits.data(), digits.data() + digits.size(), value.number).ptr;
        m_text += "<v>";
        m_text.append(digits.data(), size_t(end - digits.data()));
        m_text += "</v></c>";
        return;
    }
    case CellValue::Kind::Boolean:
        startCell(column, style, "b");
        m_text += value.number != 0 ? "<v>1</v></c>" : "<v>0</v></c>";
        return;
    case CellValue::Kind::Formula:
        if (addFormula(cell->text, column, value)) {
            return;
        }
        m_job->countUnfit(row, column);
        break;
    case CellValue::Kind::Link:
        if (m_links.size() < mostLinks) {
            m_links.push_back(
                {m_columnNames[size_t(column)] + m_rowNumber, linkTarget(cell->text)});
            startCell(column, m_styles->link(style), "inlineStr");
            addInlineText(cell->text);
            return;
        }
        m_job->countUnfit(row, column);
        break;
    case CellValue::Kind::Text:
        break;
    }
    startCell(column, style, "inlineStr");
    addInlineText(cell->text);
}

bool XlsxRows::addFormula(std::string_view text, int column, const CellValue &value)
{
    constexpr size_t longestFormula = 8192;
    if (text.front() == '=') {
        text.remove_prefix(1);
    }
    if (Utf8::trimmed(text).empty() || text.size() > longestFormula || !isClosed(text)) {
        return false;
    }
    startCell(column, styleOf(column, value), nullptr);
    m_text += "<f>";
    appendXlsxText(text, &m_text);
    m_text += "</f></c>";
    return true;
}
