#include "dateformats.h"
#include "dataset.h"
#include "utf8.h"

#include <QHash>
#include <type_traits>
#include <vector>

namespace {

bool isDigit(int c)
{
    return c >= '0' && c <= '9';
}

} // namespace

DatePattern::DatePattern(const QString &pattern)
    : m_pattern(pattern)
{
    m_isSimple = compile();
}

const DatePattern &DatePattern::compiled(const QString &pattern)
{
    static QHash<QString, DatePattern> patterns;
    auto found = patterns.find(pattern);
    if (found == patterns.end()) {
        // Far more than any list of formats has; bounds what endless changes of it would cost.
        if (patterns.size() >= 256) {
            patterns.clear();
        }
        found = patterns.insert(pattern, DatePattern(pattern));
    }
    return *found;
}

bool DatePattern::setField(QChar letter, int letters, Field *field)
{
    field->unit = letter == QLatin1Char('y')   ? Unit::Year
                  : letter == QLatin1Char('M') ? Unit::Month
                                               : Unit::Day;
    const bool isYear = field->unit == Unit::Year;
    field->minDigits = qint8(letters);
    field->maxDigits = qint8(isYear ? letters : 2);
    return letters == 2 || letters == (isYear ? 4 : 1);
}

bool DatePattern::compile()
{
    size_t fields = 0;
    std::array<bool, 3> seen{};
    for (int at = 0; at < m_pattern.size();) {
        const QChar letter = m_pattern[at];
        if (QLatin1String("/-., :_").contains(letter)) {
            if (fields == 0) {
                return false;
            }
            m_fields[fields - 1].separator.push_back(letter.toLatin1());
            ++at;
            continue;
        }
        int letters = 1;
        while (at + letters < m_pattern.size() && m_pattern[at + letters] == letter) {
            ++letters;
        }
        at += letters;
        if (!QLatin1String("dMy").contains(letter) || fields == m_fields.size()) {
            return false;
        }
        Field &field = m_fields[fields++];
        if (!setField(letter, letters, &field) || seen[size_t(field.unit)]) {
            return false;
        }
        seen[size_t(field.unit)] = true;
    }
    if (fields != m_fields.size() || !m_fields.back().separator.empty()) {
        return false;
    }
    for (const Field &field : m_fields) {
        // Where a number of one or two digits ends is only clear before a separator.
        const bool isLast = &field == &m_fields.back();
        if (!isLast && field.separator.empty() && field.minDigits != field.maxDigits) {
            return false;
        }
        m_minLength += field.minDigits + int(field.separator.size());
        m_maxLength += field.maxDigits + int(field.separator.size());
    }
    return true;
}

template <class Char>
QDate DatePattern::readFields(const Char *at, const Char *end) const
{
    std::array<int, 3> values{};
    for (const Field &field : m_fields) {
        int value = 0;
        int digits = 0;
        while (digits < field.maxDigits && at < end && isDigit(*at)) {
            value = value * 10 + (*at - '0');
            ++digits;
            ++at;
        }
        if (digits < field.minDigits) {
            return {};
        }
        for (const char separator : field.separator) {
            if (at == end || *at != Char(separator)) {
                return {};
            }
            ++at;
        }
        if (field.unit == Unit::Year && field.maxDigits == 2) {
            value += 1900;
        }
        values[size_t(field.unit)] = value;
    }
    if (at != end || values[size_t(Unit::Year)] == 0) {
        return {};
    }
    return QDate(values[size_t(Unit::Year)], values[size_t(Unit::Month)],
                 values[size_t(Unit::Day)]);
}

// Texts that QDate may still read: it takes plus signs and the digits of the default locale.
template <class Char>
bool DatePattern::isUnusual(const Char *begin, const Char *end) const
{
    bool unusual = false;
    for (const Char *at = begin; at < end; ++at) {
        const unsigned c = std::make_unsigned_t<Char>(*at);
        if (c >= 0x80 || c == '+') {
            unusual = true;
            continue;
        }
        if (isDigit(int(c))) {
            continue;
        }
        const bool isSeparator = m_fields[0].separator.find(char(c)) != std::string::npos ||
                                 m_fields[1].separator.find(char(c)) != std::string::npos;
        if (!isSeparator) {
            return false;
        }
    }
    return unusual;
}

QDate DatePattern::readByQt(const QString &trimmedText) const
{
    if (m_isSimple && (trimmedText.size() < m_minLength || trimmedText.size() > m_maxLength)) {
        return {};
    }
    return QDate::fromString(trimmedText, m_pattern);
}

QDate DatePattern::read(QStringView text) const
{
    text = text.trimmed();
    if (m_isSimple) {
        const QDate date = readFields(text.utf16(), text.utf16() + text.size());
        if (date.isValid() || !isUnusual(text.utf16(), text.utf16() + text.size())) {
            return date;
        }
    }
    return readByQt(text.toString());
}

QDate DatePattern::read(std::string_view utf8) const
{
    if (m_isSimple) {
        const std::string_view text = Utf8::trimmed(utf8);
        const QDate date = readFields(text.data(), text.data() + text.size());
        if (date.isValid() || !isUnusual(text.data(), text.data() + text.size())) {
            return date;
        }
    }
    return readByQt(Utf8::decoded(Utf8::trimmed(utf8)));
}

DetectedDateFormat detectDateFormat(const Dataset &dataset, ColIndex column,
                                    const QStringList &patterns)
{
    constexpr size_t maxSamples = 25;
    std::vector<std::string_view> samples;
    const ColumnReader reader = dataset.columnReader(column);
    const int rows = dataset.rowCount();
    for (int row = 0; row < rows && samples.size() < maxSamples; ++row) {
        const std::string_view value = reader.utf8(row);
        if (!value.empty()) {
            samples.push_back(value);
        }
    }

    DetectedDateFormat best;
    size_t bestCount = 0;
    for (const QString &pattern : patterns) {
        size_t count = 0;
        const DatePattern &compiled = DatePattern::compiled(pattern);
        for (const std::string_view sample : samples) {
            count += compiled.read(sample).isValid() ? 1 : 0;
        }
        if (count > bestCount) {
            bestCount = count;
            best.pattern = pattern;
        }
        if (bestCount > 0 && bestCount == samples.size()) {
            best.readsAll = true;
            break;
        }
    }
    return best;
}

const QString &defaultDateFormats(QLocale::Country country)
{
    static const QString monthFirst =
        QStringLiteral("M/d/yyyy\nd/M/yyyy\nyyyy/M/d\nM/d/yy\nd/M/yy\nyy/M/d\n"
                       "M-d-yyyy\nd-M-yyyy\nyyyy-M-d\nM-d-yy\nd-M-yy\nyy-M-d");
    static const QString dayFirst =
        QStringLiteral("d/M/yyyy\nM/d/yyyy\nyyyy/M/d\nd/M/yy\nM/d/yy\nyy/M/d\n"
                       "d-M-yyyy\nM-d-yyyy\nyyyy-M-d\nd-M-yy\nM-d-yy\nyy-M-d");
    return country == QLocale::UnitedStates ? monthFirst : dayFirst;
}

QStringList dateFormatList(const QString &preference, QLocale::Country country)
{
    const QString &text = preference.isEmpty() ? defaultDateFormats(country) : preference;
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}
