#include "numberreader.h"
#include "utf8.h"
#include "valueinterpretation.h"

#include <charconv>

namespace {

template <class Char>
bool isAsciiSpace(Char c)
{
    return c == Char(' ') || (c >= Char('\t') && c <= Char('\r'));
}

template <class Char>
bool isAscii(Char c)
{
    return (unsigned(c) & ~0x7fU) == 0;
}

// The length of a currency symbol at the start; the rare ones are left to the general path.
int currencyLength(const char *begin, const char *end)
{
    const std::string_view text(begin, size_t(end - begin));
    for (const std::string_view symbol : {"$", "\xC2\xA3", "\xC2\xA5", "\xE2\x82\xAC"}) {
        if (text.substr(0, symbol.size()) == symbol) {
            return int(symbol.size());
        }
    }
    return 0;
}

int currencyLength(const char16_t *begin, const char16_t *end)
{
    const bool found = begin < end && (*begin == u'$' || *begin == u'\u00A3' ||
                                       *begin == u'\u00A5' || *begin == u'\u20AC');
    return found ? 1 : 0;
}

// 10^0 to 10^22 are exact doubles.
constexpr std::array<double, 23> powersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// All digits fit in 64 bits below this count.
constexpr int safeDigits = 19;

bool isWord(QStringView text, const char *word)
{
    return text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
}

// "12.000" and "12." become "12"; anything else after the decimal point stays.
QStringView withoutZeroFraction(QStringView text, QChar decimalPoint)
{
    for (qsizetype at = text.size() - 1; at >= 0; --at) {
        if (text[at] == decimalPoint) {
            return text.left(at);
        }
        if (text[at] != QLatin1Char('0')) {
            break;
        }
    }
    return text;
}

// Some locales group otherwise (12,34,567), or not before there are five digits.
bool groupsByThousands(QLocale locale)
{
    locale.setNumberOptions(QLocale::DefaultNumberOptions);
    const QChar separator = locale.groupSeparator();
    const QString grouped = locale.toString(1234) + locale.toString(1234567890);
    return grouped.size() == 4 + 1 + 10 + 3 && grouped[1] == separator && grouped[6] == separator &&
           grouped[10] == separator && grouped[14] == separator;
}

void report(bool *ok, bool value)
{
    if (ok) {
        *ok = value;
    }
}

} // namespace

// A sign, digits with well-placed group separators, and a fraction.
template <class Char>
struct NumberReader::Scan
{
    const Char *begin = nullptr; // the first digit or the decimal point
    const Char *end = nullptr;
    quint64 digits = 0; // all digits without the decimal point, while there are at most safeDigits
    quint64 whole = 0;  // the digits before the decimal point
    int count = 0;
    int wholeCount = 0;
    bool negative = false;
    bool hasFraction = false; // other digits than 0 after the decimal point
};

NumberReader::NumberReader()
{
    const QLocale::NumberOptions rejecting = QLocale::RejectGroupSeparator |
                                             QLocale::RejectTrailingZeroesAfterDot |
                                             QLocale::RejectLeadingZeroInExponent;
    m_quick = !(m_locale.numberOptions() & rejecting);

    m_kinds.fill(Kind::Other);
    for (int c = '!'; c < 0x7f; ++c) {
        m_kinds[size_t(c)] = Kind::Impossible;
    }
    for (const char c : std::string_view("+-.,;%$eEiInNfFaA")) {
        m_kinds[uchar(c)] = Kind::Other;
    }
    const auto set = [this](QChar c, Kind kind) {
        if (c.unicode() < m_kinds.size()) {
            m_kinds[c.unicode()] = kind;
        }
    };
    set(m_locale.positiveSign(), Kind::Other);
    set(m_locale.negativeSign(), Kind::Other);
    set(m_locale.exponential(), Kind::Other);
    set(m_locale.percent(), Kind::Other);
    set(m_locale.groupSeparator(), groupsByThousands(m_locale) ? Kind::Group : Kind::Other);
    set(m_locale.decimalPoint(), Kind::Decimal);
    for (char c = '0'; c <= '9'; ++c) {
        m_kinds[uchar(c)] = Kind::Digit;
    }
}

const NumberReader &NumberReader::current()
{
    static NumberReader reader;
    if (QLocale() != reader.m_locale) {
        reader = NumberReader();
    }
    return reader;
}

NumberReader::Kind NumberReader::kind(char c) const
{
    return isAscii(c) ? m_kinds[uchar(c)] : Kind::Other;
}

NumberReader::Kind NumberReader::kind(char16_t c) const
{
    return isAscii(c) ? m_kinds[size_t(c)] : Kind::Other;
}

// The quick reading cannot go on at `at`; says whether the locale's parser certainly fails too.
template <class Char>
NumberReader::Outcome NumberReader::judgeRest(const Char *at, const Char *end,
                                              bool afterDigits) const
{
    // A sign stands in front or in an exponent: this is an ISO date or a telephone number.
    if (afterDigits && at < end && *at == Char('-') && kind(*at) == Kind::Other) {
        return Outcome::NotANumber;
    }
    for (; at < end; ++at) {
        if (kind(*at) == Kind::Impossible) {
            return Outcome::NotANumber;
        }
    }
    return Outcome::Unsure;
}

template <class Char>
NumberReader::Outcome NumberReader::scanDigits(const Char *begin, const Char *end,
                                               Scan<Char> *result) const
{
    const Char *at = begin;
    if (*at == Char('-')) {
        result->negative = true;
        ++at;
    }
    result->begin = at;
    result->end = end;
    quint64 digits = 0;
    int count = 0;
    int sinceGroup = 0;
    bool grouped = false;
    for (; at < end; ++at) {
        const Kind k = kind(*at);
        if (k == Kind::Digit) {
            digits = digits * 10 + quint64(*at - Char('0'));
            ++count;
            ++sinceGroup;
            continue;
        }
        if (k != Kind::Group) {
            break;
        }
        if (sinceGroup == 0 || sinceGroup > 3 || (grouped && sinceGroup != 3)) {
            return Outcome::Unsure;
        }
        grouped = true;
        sinceGroup = 0;
    }
    if (grouped && sinceGroup != 3) {
        return judgeRest(at, end, false);
    }
    result->whole = digits;
    result->wholeCount = count;
    if (at < end && kind(*at) == Kind::Decimal) {
        for (++at; at < end && kind(*at) == Kind::Digit; ++at) {
            digits = digits * 10 + quint64(*at - Char('0'));
            ++count;
            result->hasFraction |= *at != Char('0');
        }
    }
    result->digits = digits;
    result->count = count;
    return at == end && count > 0 ? Outcome::Number : judgeRest(at, end, count > 0);
}

template <class Char>
NumberReader::Outcome NumberReader::scan(const Char *begin, const Char *end, bool stripCurrency,
                                         Scan<Char> *result) const
{
    while (begin < end && isAsciiSpace(*begin)) {
        ++begin;
    }
    while (begin < end && isAsciiSpace(end[-1])) {
        --end;
    }
    if (begin == end) {
        return Outcome::Empty;
    }
    if (!m_quick) {
        return Outcome::Unsure;
    }
    if (stripCurrency) {
        const int symbol = currencyLength(begin, end);
        if (symbol > 0) {
            begin += symbol;
            while (begin < end && isAsciiSpace(*begin)) {
                ++begin;
            }
            if (begin == end) {
                return Outcome::Unsure;
            }
        }
    }
    return scanDigits(begin, end, result);
}

// For numbers of many digits. Those of very many are left to the locale's parser.
template <class Char>
bool NumberReader::correctlyRounded(const Scan<Char> &number, double *value) const
{
    std::array<char, 64> plain;
    if (number.end - number.begin > qptrdiff(plain.size())) {
        return false;
    }
    char *to = plain.data();
    for (const Char *at = number.begin; at < number.end; ++at) {
        const Kind k = kind(*at);
        if (k != Kind::Group) {
            *to++ = k == Kind::Decimal ? '.' : char(*at);
        }
    }
    const auto parsed = std::from_chars(plain.data(), to, *value);
    return parsed.ec == std::errc() && parsed.ptr == to;
}

template <class Char>
NumberReader::Outcome NumberReader::quickReal(const Char *begin, const Char *end,
                                              bool stripCurrency, double *value) const
{
    Scan<Char> number;
    const Outcome outcome = scan(begin, end, stripCurrency, &number);
    if (outcome != Outcome::Number) {
        return outcome;
    }
    const int fraction = number.count - number.wholeCount;
    double magnitude = 0;
    if (number.count <= safeDigits && fraction == 0) {
        magnitude = double(number.digits);
    } else if (number.count <= safeDigits && number.digits <= (1ULL << 53)) {
        // Both operands are exact, so that the quotient is the correctly rounded value.
        magnitude = double(number.digits) / powersOfTen[size_t(fraction)];
    } else if (!correctlyRounded(number, &magnitude)) {
        return Outcome::Unsure;
    }
    *value = number.negative ? -magnitude : magnitude;
    return Outcome::Number;
}

template <class Char>
NumberReader::Outcome NumberReader::quickInteger(const Char *begin, const Char *end,
                                                 bool stripCurrency, qint64 *value) const
{
    Scan<Char> number;
    const Outcome outcome = scan(begin, end, stripCurrency, &number);
    if (outcome != Outcome::Number) {
        return outcome;
    }
    if (number.hasFraction) {
        return Outcome::NotANumber;
    }
    if (number.wholeCount == 0 || number.wholeCount >= safeDigits) {
        return Outcome::Unsure;
    }
    const auto magnitude = qint64(number.whole);
    *value = number.negative ? -magnitude : magnitude;
    return Outcome::Number;
}

double NumberReader::toReal(QStringView text, bool emptyIsValid, bool stripCurrency, bool *ok) const
{
    double value = 0;
    const Outcome outcome =
        quickReal(text.utf16(), text.utf16() + text.size(), stripCurrency, &value);
    if (outcome == Outcome::Unsure) {
        return realByLocale(text, emptyIsValid, stripCurrency, ok);
    }
    report(ok, outcome == Outcome::Number || (outcome == Outcome::Empty && emptyIsValid));
    return value;
}

double NumberReader::toReal(std::string_view utf8, bool emptyIsValid, bool stripCurrency,
                            bool *ok) const
{
    double value = 0;
    const Outcome outcome =
        quickReal(utf8.data(), utf8.data() + utf8.size(), stripCurrency, &value);
    if (outcome == Outcome::Unsure) {
        return realByLocale(Utf8::decoded(utf8), emptyIsValid, stripCurrency, ok);
    }
    report(ok, outcome == Outcome::Number || (outcome == Outcome::Empty && emptyIsValid));
    return value;
}

int NumberReader::toInteger(QStringView text, bool emptyIsValid, bool stripCurrency, bool *ok) const
{
    bool fits = false;
    const qint64 value = toInteger64(text, emptyIsValid, stripCurrency, &fits);
    fits = fits && value == qint64(int(value));
    report(ok, fits);
    return fits ? int(value) : 0;
}

int NumberReader::toInteger(std::string_view utf8, bool emptyIsValid, bool stripCurrency,
                            bool *ok) const
{
    bool fits = false;
    const qint64 value = toInteger64(utf8, emptyIsValid, stripCurrency, &fits);
    fits = fits && value == qint64(int(value));
    report(ok, fits);
    return fits ? int(value) : 0;
}

qint64 NumberReader::toInteger64(QStringView text, bool emptyIsValid, bool stripCurrency,
                                 bool *ok) const
{
    qint64 value = 0;
    const Outcome outcome =
        quickInteger(text.utf16(), text.utf16() + text.size(), stripCurrency, &value);
    if (outcome == Outcome::Unsure) {
        return integerByLocale(text, emptyIsValid, stripCurrency, ok);
    }
    report(ok, outcome == Outcome::Number || (outcome == Outcome::Empty && emptyIsValid));
    return value;
}

qint64 NumberReader::toInteger64(std::string_view utf8, bool emptyIsValid, bool stripCurrency,
                                 bool *ok) const
{
    qint64 value = 0;
    const Outcome outcome =
        quickInteger(utf8.data(), utf8.data() + utf8.size(), stripCurrency, &value);
    if (outcome == Outcome::Unsure) {
        return integerByLocale(Utf8::decoded(utf8), emptyIsValid, stripCurrency, ok);
    }
    report(ok, outcome == Outcome::Number || (outcome == Outcome::Empty && emptyIsValid));
    return value;
}

double NumberReader::realByLocale(QStringView text, bool emptyIsValid, bool stripCurrency,
                                  bool *ok) const
{
    text = text.trimmed();
    // The locale's parser would take these for numbers.
    if (isWord(text, "nan") || isWord(text, "inf") || isWord(text, "-inf")) {
        report(ok, false);
        return 0;
    }
    QString stripped;
    if (stripCurrency) {
        stripped = removeCurrencySymbols(text.toString());
        text = stripped;
    }
    if (emptyIsValid && text.isEmpty()) {
        report(ok, true);
        return 0;
    }
    bool valid = false;
    const double value = m_locale.toDouble(text, &valid);
    report(ok, valid);
    return valid ? value : 0;
}

qint64 NumberReader::integerByLocale(QStringView text, bool emptyIsValid, bool stripCurrency,
                                     bool *ok) const
{
    text = text.trimmed();
    QString stripped;
    if (isWord(text, "nan")) {
        report(ok, false);
        return 0;
    }
    if (stripCurrency) {
        stripped = removeCurrencySymbols(text.toString());
        text = stripped;
    }
    if (emptyIsValid && text.isEmpty()) {
        report(ok, true);
        return 0;
    }
    bool valid = false;
    const qint64 value =
        m_locale.toLongLong(withoutZeroFraction(text, m_locale.decimalPoint()), &valid);
    report(ok, valid);
    return valid ? value : 0;
}
