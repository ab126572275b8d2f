#include "numbertext.h"
#include "numberreader.h"

#include <array>
#include <charconv>
#include <cmath>

namespace {

using NumberBuffer = std::array<char, 32>;

// Digits, signs and exponent as std::to_chars writes them.
bool writesAscii(const QLocale &locale)
{
    return locale.zeroDigit() == QLatin1Char('0') && locale.negativeSign() == QLatin1Char('-') &&
           locale.positiveSign() == QLatin1Char('+') && locale.exponential() == QLatin1Char('e');
}

// Half way between two texts of 15 digits QLocale rounds up, std::to_chars to the even one.
bool mayBeTie(double number)
{
    NumberBuffer buffer;
    char *const first = buffer.data();
    const char *const end = std::to_chars(first, first + buffer.size(), std::fabs(number),
                                          std::chars_format::scientific, 15)
                                .ptr;
    constexpr int sixteenthDigit = 16; // after the first digit and the point
    return end - first > sixteenthDigit && buffer[sixteenthDigit] == '5';
}

} // namespace

QString numberToText(double number, char format, int precision, bool keepGroupSeparator)
{
    const QLocale &locale = NumberReader::current().locale();
    QString text = locale.toString(number, format, precision);
    if (!keepGroupSeparator) {
        text.remove(locale.groupSeparator());
    }
    return text;
}

QString plainNumberText(double number)
{
    if (!std::isfinite(number)) {
        return {};
    }
    const QLocale &locale = NumberReader::current().locale();
    const bool isWhole = std::fabs(number) < 1e15 && std::trunc(number) == number;
    if (!writesAscii(locale) || (!isWhole && mayBeTie(number))) {
        QString text = isWhole ? locale.toString(qint64(number)) : locale.toString(number, 'g', 15);
        text.remove(locale.groupSeparator());
        return text;
    }
    NumberBuffer buffer;
    char *const first = buffer.data();
    char *const last = first + buffer.size();
    const char *const end =
        isWhole ? std::to_chars(first, last, qint64(number)).ptr
                : std::to_chars(first, last, number, std::chars_format::general, 15).ptr;
    QString text = QString::fromLatin1(first, int(end - first));
    if (!isWhole && locale.decimalPoint() != QLatin1Char('.')) {
        text.replace(QLatin1Char('.'), locale.decimalPoint());
    }
    return text;
}
