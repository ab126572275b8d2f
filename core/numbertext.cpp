#include "numbertext.h"
#include "numberreader.h"

#include <cmath>

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
    QString text = isWhole ? locale.toString(qint64(number)) : locale.toString(number, 'g', 15);
    text.remove(locale.groupSeparator());
    return text;
}
