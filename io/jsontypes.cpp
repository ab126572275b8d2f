#include "jsontypes.h"

#include "dataset.h"

#include <QCoreApplication>
#include <algorithm>
#include <cctype>
#include <cstring>
#include <vector>

namespace {

// What a 64-bit floating point number holds for certain.
constexpr int mostDigits = 15;
constexpr int largestExponent = 280;

constexpr const char *labels[] = {
    QT_TRANSLATE_NOOP("JsonTypes", "Automatic"), QT_TRANSLATE_NOOP("JsonTypes", "Boolean"),
    QT_TRANSLATE_NOOP("JsonTypes", "Number"), QT_TRANSLATE_NOOP("JsonTypes", "String"),
    QT_TRANSLATE_NOOP("JsonTypes", "Raw data")};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

struct NumberParts
{
    bool isNumber = false;
    int digits = 0;
    int exponent = 0;
};

NumberParts scanNumber(std::string_view text)
{
    NumberParts parts;
    size_t at = 0;
    const auto next = [&] { return at < text.size() ? text[at] : '\0'; };
    const auto skipDigits = [&] {
        const size_t from = at;
        while (isDigit(next())) {
            ++at;
        }
        return int(at - from);
    };
    at += next() == '-' ? 1 : 0;
    const bool startsWithZero = next() == '0';
    parts.digits = skipDigits();
    if (parts.digits == 0 || (startsWithZero && parts.digits > 1)) {
        return parts;
    }
    if (next() == '.') {
        ++at;
        const int decimals = skipDigits();
        if (decimals == 0) {
            return parts;
        }
        parts.digits += decimals;
    }
    if (next() == 'e' || next() == 'E') {
        ++at;
        at += next() == '-' || next() == '+' ? 1 : 0;
        const size_t from = at;
        if (skipDigits() == 0) {
            return parts;
        }
        for (size_t i = from; i < at && parts.exponent <= largestExponent; ++i) {
            parts.exponent = parts.exponent * 10 + (text[i] - '0');
        }
    }
    parts.isNumber = at == text.size();
    return parts;
}

/// Checks by the letter of the standard; the reader of inputs is more lenient.
class ValueCheck
{
public:
    explicit ValueCheck(std::string_view text)
        : m_text(text)
    {
    }

    bool passes()
    {
        bool wantsValue = true;
        for (;;) {
            if (wantsValue && !skipValue(&wantsValue)) {
                return false;
            }
            if (wantsValue) {
                continue; // an object or array has begun
            }
            skipSpace();
            if (m_open.empty()) {
                return m_at == m_text.size();
            }
            const char close = m_open.back() ? '}' : ']';
            if (skip(close)) {
                m_open.pop_back();
            } else if (!skip(',') || (m_open.back() && !skipKey())) {
                return false;
            } else {
                wantsValue = true;
            }
        }
    }

private:
    char next() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }
    void skipSpace()
    {
        while (next() == ' ' || next() == '\t' || next() == '\n' || next() == '\r') {
            ++m_at;
        }
    }
    bool skip(char c)
    {
        skipSpace();
        const bool found = m_at < m_text.size() && m_text[m_at] == c;
        m_at += found ? 1 : 0;
        return found;
    }
    bool skipWord(std::string_view word)
    {
        const bool found = m_text.substr(m_at, word.size()) == word;
        m_at += found ? word.size() : 0;
        return found;
    }
    bool skipKey() { return skip('"') && skipString() && skip(':'); }

    /// `opened`: what was met is the beginning of an object or array that has a first value.
    bool skipValue(bool *opened)
    {
        *opened = false;
        if (skip('{')) {
            if (!skip('}')) {
                m_open.push_back(true);
                *opened = true;
                return skipKey();
            }
            return true;
        }
        if (skip('[')) {
            if (!skip(']')) {
                m_open.push_back(false);
                *opened = true;
            }
            return true;
        }
        if (skip('"')) {
            return skipString();
        }
        return skipWord("true") || skipWord("false") || skipWord("null") || skipNumber();
    }

    bool skipNumber()
    {
        const size_t end =
            std::min(m_text.find_first_not_of("+-.0123456789eE", m_at), m_text.size());
        const bool found = scanNumber(m_text.substr(m_at, end - m_at)).isNumber;
        m_at = end;
        return found;
    }

    /// From behind the opening quote.
    bool skipString()
    {
        while (m_at < m_text.size()) {
            const char c = m_text[m_at++];
            if (c == '"') {
                return true;
            }
            if (uchar(c) < 0x20 || (c == '\\' && !skipEscape())) {
                return false;
            }
        }
        return false;
    }
    bool skipEscape()
    {
        const char c = next();
        ++m_at;
        if (c != 'u') {
            return c != '\0' && strchr("\"\\/bfnrt", c);
        }
        for (int i = 0; i < 4; ++i, ++m_at) {
            if (!isxdigit(uchar(next()))) {
                return false;
            }
        }
        return true;
    }

    std::string_view m_text;
    size_t m_at = 0;
    /// What has begun and not ended yet: true for objects.
    std::vector<bool> m_open;
};

} // namespace

QString jsonTypeLabel(JsonType type)
{
    const auto number = size_t(type);
    return QCoreApplication::translate("JsonTypes",
                                       labels[number < std::size(labels) ? number : 0]);
}

JsonType jsonTypeOf(const QString &text)
{
    for (size_t i = 0; i < std::size(labels); ++i) {
        if (text == QLatin1String(labels[i]) || text == QString::number(i)) {
            return JsonType(i);
        }
    }
    return JsonType::Automatic;
}

bool isJsonNumber(std::string_view utf8)
{
    return scanNumber(utf8).isNumber;
}

bool isSafeJsonNumber(std::string_view utf8)
{
    const NumberParts parts = scanNumber(utf8);
    return parts.isNumber && parts.digits <= mostDigits && parts.exponent <= largestExponent &&
           utf8 != "-0";
}

JsonType automaticJsonType(const ColumnReader &reader, int rowCount)
{
    const bool remembers = reader.isPooled() && reader.codeCount() / 2 <= uint(rowCount);
    std::vector<bool> seen(remembers ? reader.codeCount() : 0);
    bool isBoolean = true;
    bool isNumber = true;
    bool hasValues = false;
    for (int row = 0; row < rowCount && (isBoolean || isNumber); ++row) {
        const ColumnReader::Code code = reader.code(row);
        if (remembers) {
            if (seen[code]) {
                continue;
            }
            seen[code] = true;
        }
        const std::string_view value = reader.utf8OfCode(code);
        if (value.empty()) {
            continue;
        }
        hasValues = true;
        isBoolean = isBoolean && (value == "true" || value == "false");
        isNumber = isNumber && isSafeJsonNumber(value);
    }
    if (!hasValues) {
        return JsonType::String;
    }
    return isBoolean ? JsonType::Boolean : isNumber ? JsonType::Number : JsonType::String;
}

bool isJsonValue(std::string_view utf8)
{
    return ValueCheck(utf8).passes();
}
