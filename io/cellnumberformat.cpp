#include "cellnumberformat.h"

#include <QDate>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace {

constexpr qint64 secondMs = 1000;
constexpr qint64 minuteMs = 60 * secondMs;
constexpr qint64 hourMs = 60 * minuteMs;
constexpr qint64 dayMs = 24 * hourMs;

// Day numbers up to 9999-12-31.
constexpr qint64 lastDay1900 = 2958465;
constexpr qint64 lastDay1904 = 2957003;
constexpr qint64 daysFrom1900To1904 = 1462;
// The day that only the 1900 system has.
constexpr qint64 leapDay1900 = 60;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

bool equalsIgnoringCase(std::string_view text, std::string_view lowerCase)
{
    if (text.size() != lowerCase.size()) {
        return false;
    }
    for (size_t i = 0; i < text.size(); ++i) {
        if (lower(text[i]) != lowerCase[i]) {
            return false;
        }
    }
    return true;
}

/// Reads the first section of a format code.
class FormatScanner
{
public:
    explicit FormatScanner(std::string_view code)
        : m_code(code)
    {
    }

    CellNumberFormat scan()
    {
        while (m_at < m_code.size() && m_code[m_at] != ';') {
            step();
        }
        endMonth(false);
        return m_format;
    }

private:
    void step()
    {
        const char c = lower(m_code[m_at]);
        switch (c) {
        case '"':
            skipTo('"');
            return;
        case '\\':
        case '_':
        case '*':
            m_at += 2;
            return;
        case '[':
            bracket();
            return;
        default:
            break;
        }
        if (skipWord("general") || skipWord("am/pm") || skipWord("a/p")) {
            return;
        }
        letter(c);
    }

    void letter(char c)
    {
        size_t end = m_at + 1;
        while (end < m_code.size() && lower(m_code[end]) == c) {
            ++end;
        }
        const char next = end < m_code.size() ? m_code[end] : '\0';
        m_at = end;
        if (c == 'e' && (next == '+' || next == '-')) {
            return; // an exponent
        }
        take(c);
    }

    void take(char c)
    {
        switch (c) {
        case 'y':
        case 'd':
        case 'e': // year of an era
        case 'g': // era
        case 'b': // Buddhist year
            endMonth(false);
            m_format.date = true;
            break;
        case 'h':
            endMonth(false);
            m_format.time = true;
            break;
        case 's':
            endMonth(true);
            m_format.time = true;
            m_format.seconds = true;
            break;
        case 'm':
            endMonth(false);
            if (m_last == 'h') {
                m_format.time = true;
            } else {
                m_pendingMonth = true;
            }
            break;
        default:
            return;
        }
        m_last = c;
    }

    // An m is a month unless it follows an hour or seconds follow it.
    void endMonth(bool isMinute)
    {
        if (m_pendingMonth) {
            (isMinute ? m_format.time : m_format.date) = true;
            m_pendingMonth = false;
        }
    }

    void bracket()
    {
        const size_t from = m_at + 1;
        skipTo(']');
        if (m_at <= from) {
            return;
        }
        const std::string_view content = m_code.substr(from, m_at - 1 - from);
        const char first = content.empty() ? '\0' : lower(content.front());
        if (first != 'h' && first != 'm' && first != 's') {
            return;
        }
        for (const char c : content) {
            if (lower(c) != first) {
                return;
            }
        }
        m_format.time = true;
        m_format.elapsed = true;
        m_format.seconds = m_format.seconds || first == 's';
        m_last = first == 'm' ? ' ' : first;
    }

    bool skipWord(std::string_view word)
    {
        if (!equalsIgnoringCase(m_code.substr(m_at, word.size()), word)) {
            return false;
        }
        m_at += word.size();
        if (word.front() == 'a') {
            m_format.time = true;
        }
        return true;
    }

    void skipTo(char end)
    {
        const size_t found = m_code.find(end, m_at + 1);
        m_at = found == std::string_view::npos ? m_code.size() : found + 1;
    }

    std::string_view m_code;
    size_t m_at = 0;
    CellNumberFormat m_format;
    char m_last = ' ';
    bool m_pendingMonth = false;
};

template <class... Numbers>
void appendPrinted(std::string *out, const char *format, Numbers... numbers)
{
    std::array<char, 64> buffer;
    const int size = snprintf(buffer.data(), buffer.size(), format, numbers...);
    out->append(buffer.data(), size_t(size));
}

void appendDate(qint64 day, DateSystem system, const ValueLayout &layout, std::string *out)
{
    if (system == DateSystem::From1904) {
        day += daysFrom1900To1904;
    } else if (day == leapDay1900) {
        out->append("1900-02-29");
        return;
    }
    // Before the day that never was the count is one ahead of the calendar.
    const QDate date = QDate(1899, 12, day < leapDay1900 ? 31 : 30).addDays(day);
    if (layout.kind == ValueLayout::Kind::Date) {
        layout.appendDate(date, out);
        return;
    }
    appendPrinted(out, "%04d-%02d-%02d", date.year(), date.month(), date.day());
}

void appendTime(qint64 ms, bool withSeconds, std::string *out)
{
    appendPrinted(out, "%02lld:%02lld", static_cast<long long>(ms / hourMs),
                  static_cast<long long>(ms % hourMs / minuteMs));
    if (withSeconds || ms % minuteMs != 0) {
        appendPrinted(out, ":%02lld", static_cast<long long>(ms % minuteMs / secondMs));
    }
    if (ms % secondMs != 0) {
        appendPrinted(out, ".%03lld", static_cast<long long>(ms % secondMs));
    }
}

/// True for a number that is spelled just as appendNumber() would.
bool isPlain(std::string_view text)
{
    size_t at = !text.empty() && text.front() == '-' ? 1 : 0;
    const size_t whole = at;
    while (at < text.size() && isDigit(text[at])) {
        ++at;
    }
    const size_t wholeDigits = at - whole;
    constexpr size_t mostDigits = 15;
    if (wholeDigits == 0 || wholeDigits > mostDigits || (text[whole] == '0' && wholeDigits > 1)) {
        return false;
    }
    if (at == text.size()) {
        return text[whole] != '0' || whole == 0;
    }
    if (text[at] != '.' || text.back() == '0') {
        return false;
    }
    const size_t fraction = ++at;
    while (at < text.size() && isDigit(text[at])) {
        ++at;
    }
    const size_t fractionDigits = at - fraction;
    // Numbers below 0.0001 are written with an exponent.
    return at == text.size() && fractionDigits > 0 && wholeDigits + fractionDigits <= mostDigits &&
           (text[whole] != '0' || text.substr(fraction, 4) != "0000");
}

} // namespace

CellNumberFormat builtInNumberFormat(int id)
{
    const CellNumberFormat date{true, false, false, false, {}};
    const CellNumberFormat shortTime{false, true, false, false, {}};
    const CellNumberFormat time{false, true, false, true, {}};
    switch (id) {
    case 18: // h:mm AM/PM
    case 20: // h:mm
    case 32: // h:mm in East Asian signs
    case 75: // h:mm, Thai
        return shortTime;
    case 19: // h:mm:ss AM/PM
    case 21: // h:mm:ss
    case 33: // h:mm:ss in East Asian signs
    case 45: // mm:ss
    case 47: // mm:ss.0
    case 76: // h:mm:ss, Thai
    case 78: // mm:ss, Thai
    case 80: // mm:ss.0, Thai
        return time;
    case 46: // [h]:mm:ss
    case 79: // the same, Thai
        return {false, true, true, true, {}};
    case 22: // d/m/yyyy h:mm
    case 77: // the same, Thai
        return {true, true, false, false, {}};
    default:
        break;
    }
    const bool isDate = (id >= 14 && id <= 17) || (id >= 27 && id <= 36) ||
                        (id >= 50 && id <= 58) || (id >= 71 && id <= 74) || id == 81;
    return isDate ? date : CellNumberFormat();
}

CellNumberFormat parseNumberFormat(std::string_view code)
{
    // Some writers spell "General" in their own language.
    if (equalsIgnoringCase(code, "standard")) {
        return {};
    }
    CellNumberFormat format = FormatScanner(code).scan();
    format.layout = ValueLayout::ofFormatCode(code);
    return format;
}

void appendNumber(double number, std::string *out)
{
    constexpr double exactWhole = 9007199254740992.0; // 2^53
    if (!std::isfinite(number)) {
        return;
    }
    std::array<char, 32> buffer;
    char *const first = buffer.data();
    char *const last = first + buffer.size();
    const bool isWhole = std::fabs(number) < exactWhole && std::trunc(number) == number;
    const char *const end =
        isWhole ? std::to_chars(first, last, qint64(number)).ptr
                : std::to_chars(first, last, number, std::chars_format::general, 15).ptr;
    out->append(first, size_t(end - first));
}

void appendFormatted(double number, CellNumberFormat format, DateSystem system, std::string *out)
{
    const qint64 lastDay = system == DateSystem::From1904 ? lastDay1904 : lastDay1900;
    if (format.isNumber() && format.layout.kind == ValueLayout::Kind::Decimal &&
        format.layout.appendDecimal(number, out)) {
        return;
    }
    if (format.isNumber() || !(number >= 0) || number >= double(lastDay + 1)) {
        appendNumber(number, out);
        return;
    }
    // Times are kept as parts of a day: rounded before they are taken apart, or 12:00 would come
    // out as 11:59:59.
    const qint64 ms = std::llround(number * double(dayMs));
    const qint64 day = ms / dayMs;
    const qint64 timeOfDay = ms % dayMs;
    if (day > lastDay) {
        appendNumber(number, out);
    } else if (!format.date) {
        appendTime(format.elapsed ? ms : timeOfDay, format.seconds, out);
    } else if (day == 0 && system == DateSystem::From1900) {
        appendTime(timeOfDay, true, out); // there is no day 0
    } else {
        appendDate(day, system, format.layout, out);
        if (timeOfDay != 0) {
            out->push_back(' ');
            appendTime(timeOfDay, true, out);
        }
    }
}

void appendNumberText(std::string_view text, CellNumberFormat format, DateSystem system,
                      std::string *out)
{
    if (format.isNumber() && format.layout.kind == ValueLayout::Kind::None && isPlain(text)) {
        out->append(text);
        return;
    }
    std::string_view digits = text;
    while (!digits.empty() && (digits.front() == ' ' || digits.front() == '\n')) {
        digits.remove_prefix(1);
    }
    while (!digits.empty() && (digits.back() == ' ' || digits.back() == '\n')) {
        digits.remove_suffix(1);
    }
    if (digits.size() > 1 && digits.front() == '+') {
        digits.remove_prefix(1);
    }
    double number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size() || !std::isfinite(number)) {
        out->append(text);
        return;
    }
    appendFormatted(number, format, system, out);
}

void appendIsoDate(std::string_view text, std::string *out)
{
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    double second = 0;
    const std::string whole(text);
    const size_t split = whole.find('T');
    const std::string datePart = whole.substr(0, split);
    const std::string timePart =
        split == std::string::npos ? std::string() : whole.substr(split + 1);
    const auto hasDate = sscanf(datePart.c_str(), "%4d-%2d-%2d", &year, &month, &day) == 3;
    const bool hasTime = sscanf(timePart.c_str(), "%2d:%2d:%lf", &hour, &minute, &second) >= 2;
    const bool timeIsRight = hasTime && hour >= 0 && hour < 24 && minute >= 0 && minute < 60 &&
                             second >= 0 && second < 60;
    if ((!datePart.empty() && (!hasDate || !QDate::isValid(year, month, day))) ||
        (!timePart.empty() && !timeIsRight) || (datePart.empty() && timePart.empty())) {
        out->append(text);
        return;
    }
    if (hasDate) {
        appendPrinted(out, "%04d-%02d-%02d", year, month, day);
    }
    const qint64 ms = hour * hourMs + minute * minuteMs + std::llround(second * double(secondMs));
    if (hasTime && (ms != 0 || !hasDate)) {
        if (hasDate) {
            out->push_back(' ');
        }
        appendTime(ms, true, out);
    }
}

std::string_view booleanText(bool value, const CellNumberFormat &format)
{
    switch (format.layout.kind) {
    case ValueLayout::Kind::LowerCaseBoolean:
        return value ? "true" : "false";
    case ValueLayout::Kind::CapitalizedBoolean:
        return value ? "True" : "False";
    default:
        return value ? "TRUE" : "FALSE";
    }
}

qint64 daySerial(const QDate &date, DateSystem system)
{
    const qint64 day = QDate(1899, 12, 30).daysTo(date);
    if (day <= leapDay1900 || day > lastDay1900) {
        return -1;
    }
    return system == DateSystem::From1904 ? day - daysFrom1900To1904 : day;
}
