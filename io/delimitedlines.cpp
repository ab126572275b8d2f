#include "delimitedlines.h"

#include "cellblocks.h"
#include "textencoder.h"
#include "utf8.h"

#include <algorithm>

namespace {

// Longer values do not gain from being copied while they are looked at.
constexpr size_t longestPlain = 4096;
constexpr char surrogateLead = char(0xed);

} // namespace

DelimitedLines::DelimitedLines(const DelimitedFormat &format, TextEncoder *out)
    : m_out(out)
    , m_quoting(format.quoting)
    , m_delimiter(Utf8::encoded(format.delimiter))
    , m_delimiterMark(markOf(m_delimiter))
    , m_lineEnd(markOf(Utf8::encoded(format.lineEnding)))
    , m_plainLimit(out->codec().holdsAscii() ? longestPlain : 0)
    , m_replacement(format.delimiter == QLatin1String(" ") ? '_' : ' ')
{
    for (const char c : {'=', '+', '-', '@', '\t', '\r'}) {
        m_startsFormula[uchar(c)] = true;
    }
    if (m_quoting != OutputQuoting::Never) {
        m_special.add('"');
    }
    if (m_quoting != OutputQuoting::Always) {
        m_special.add(m_delimiter.front());
        m_special.add('\r');
        m_special.add('\n');
    }
    if (out->codec().isUtf8()) {
        m_special.add(surrogateLead);
    } else {
        m_special.addNonAscii();
    }
}

DelimitedLines::Mark DelimitedLines::markOf(std::string_view bytes)
{
    Mark mark;
    mark.size = std::min(bytes.size(), sizeof mark.bytes);
    memcpy(mark.bytes, bytes.data(), mark.size);
    return mark;
}

void DelimitedLines::addHeader(const QStringList &names)
{
    for (int i = 0; i < names.size(); ++i) {
        addValue(Utf8::encoded(names.at(i)), i + 1 < names.size() ? m_delimiterMark : m_lineEnd);
    }
}

bool DelimitedLines::addRows(const Dataset &dataset, const Progress &progress)
{
    const int columns = dataset.columnCount().value();
    const auto writeBlock = [&](const std::string_view *cell, int, int rowCount) {
        for (int i = 0; i < rowCount; ++i) {
            for (int column = 1; column < columns; ++column) {
                addValue(*cell++, m_delimiterMark);
            }
            addValue(*cell++, m_lineEnd);
        }
        return !m_out->hasFailed();
    };
    return forEachCellBlock(dataset, progress, writeBlock) && !m_out->hasFailed();
}

inline void DelimitedLines::addValue(std::string_view value, const Mark &after)
{
    if (!value.empty() && m_startsFormula[uchar(value.front())]) {
        countFormula(value);
    }
    if (value.size() > m_plainLimit) {
        addSpecialValue(value, after);
        return;
    }
    const bool quotes = m_quoting == OutputQuoting::Always;
    char *at = m_out->room(value.size() + 2 + sizeof after.bytes);
    *at = '"';
    at += quotes;
    if (!m_special.copyWithout(value.data(), value.size(), at)) {
        addSpecialValue(value, after);
        return;
    }
    at += value.size();
    *at = '"';
    at += quotes;
    memcpy(at, after.bytes, sizeof after.bytes);
    m_out->setEnd(at + after.size);
}

void DelimitedLines::addSpecialValue(std::string_view value, const Mark &after)
{
    if (hasUnencodable(value)) {
        ++m_unencodableValues;
        value = m_clean;
    }
    if (m_quoting == OutputQuoting::Always ||
        (m_quoting == OutputQuoting::AsNeeded && needsQuotes(value))) {
        value = quoted(value);
    } else if (m_quoting == OutputQuoting::Never && needsQuotes(value)) {
        value = unquotable(value);
    }
    m_out->append(value);
    m_out->append(std::string_view(after.bytes, after.size));
}

/// A signed number is no formula, whatever a spreadsheet program makes of it.
void DelimitedLines::countFormula(std::string_view value)
{
    bool isNumber = false;
    if (value.front() == '+' || value.front() == '-') {
        m_numbers.toReal(value, false, false, &isNumber);
    }
    m_formulaValues += isNumber ? 0 : 1;
}

bool DelimitedLines::hasUnencodable(std::string_view value)
{
    const OutputCodec &codec = m_out->codec();
    const bool mayHave = codec.isUnicode() ? Utf8::hasSurrogates(value)
                                           : !codec.holdsAscii() || !Utf8::isAscii(value);
    return mayHave && m_out->replaceUnencodable(value, &m_clean);
}

bool DelimitedLines::needsQuotes(std::string_view value) const
{
    const auto has = [value](char byte) {
        return !value.empty() && memchr(value.data(), byte, value.size());
    };
    return has('\n') || has('\r') || (m_quoting != OutputQuoting::Never && has('"')) ||
           value.find(m_delimiter) != std::string_view::npos;
}

std::string_view DelimitedLines::quoted(std::string_view value)
{
    m_formatted.assign(1, '"');
    while (!value.empty()) {
        const size_t quote = value.find('"');
        if (quote == std::string_view::npos) {
            m_formatted.append(value);
            break;
        }
        m_formatted.append(value.substr(0, quote + 1));
        m_formatted.push_back('"');
        value.remove_prefix(quote + 1);
    }
    m_formatted.push_back('"');
    return m_formatted;
}

/// The value without the characters that only quotes could protect.
std::string_view DelimitedLines::unquotable(std::string_view value)
{
    ++m_replacedValues;
    m_formatted.clear();
    while (!value.empty()) {
        const bool isDelimiter = value.substr(0, m_delimiter.size()) == m_delimiter;
        if (isDelimiter || value.front() == '\r' || value.front() == '\n') {
            m_formatted.push_back(m_replacement);
        } else {
            m_formatted.push_back(value.front());
        }
        value.remove_prefix(isDelimiter ? m_delimiter.size() : 1);
    }
    return m_formatted;
}
