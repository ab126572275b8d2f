#include "valueinterpretation.h"
#include "dateformats.h"
#include "numberreader.h"
#include "utf8.h"

#include <type_traits>

namespace {

// The plain form of a time: one or two digits in each field. Fills the fields and answers their
// number, or 0.
template <class Char>
int timeFields(const Char *at, const Char *end, int *fields)
{
    int count = 0;
    while (count < 3) {
        int digits = 0;
        fields[count] = 0;
        for (; digits < 2 && at < end && *at >= Char('0') && *at <= Char('9'); ++at, ++digits) {
            fields[count] = fields[count] * 10 + int(*at - Char('0'));
        }
        ++count;
        if (digits == 0) {
            return 0;
        }
        if (at == end) {
            return count >= 2 ? count : 0;
        }
        if (*at != Char(':')) {
            return 0;
        }
        ++at;
    }
    return 0;
}

// QTime also reads plus signs and the digits of the default locale; nothing else is ever a time.
template <class Char>
bool mayBeUnusualTime(const Char *at, const Char *end)
{
    // Three fields of at most two characters, of at most three bytes each.
    if (end - at > 20) {
        return false;
    }
    bool unusual = false;
    for (; at < end; ++at) {
        const unsigned c = std::make_unsigned_t<Char>(*at);
        if (c >= 0x80 || c == '+') {
            unusual = true;
        } else if (c > ':' || (c < '0' && c != ' ')) {
            return false;
        }
    }
    return unusual;
}

template <class Char>
bool quickTime(const Char *begin, const Char *end, QTime *time)
{
    int fields[3] = {0, 0, 0};
    if (timeFields(begin, end, fields) > 0) {
        *time = QTime(fields[0], fields[1], fields[2]);
        return true;
    }
    return !mayBeUnusualTime(begin, end);
}

QTime timeByQt(const QString &text)
{
    const QTime time = QTime::fromString(text, QStringLiteral("h:m:s"));
    return time.isValid() ? time : QTime::fromString(text, QStringLiteral("h:m"));
}

} // namespace

double toReal(QStringView text, bool emptyIsValid, bool stripCurrency, bool *ok)
{
    return NumberReader::current().toReal(text, emptyIsValid, stripCurrency, ok);
}

double toReal(std::string_view utf8, bool emptyIsValid, bool stripCurrency, bool *ok)
{
    return NumberReader::current().toReal(utf8, emptyIsValid, stripCurrency, ok);
}

int toInteger(QStringView text, bool emptyIsValid, bool stripCurrency, bool *ok)
{
    return NumberReader::current().toInteger(text, emptyIsValid, stripCurrency, ok);
}

int toInteger(std::string_view utf8, bool emptyIsValid, bool stripCurrency, bool *ok)
{
    return NumberReader::current().toInteger(utf8, emptyIsValid, stripCurrency, ok);
}

qint64 toInteger64(QStringView text, bool emptyIsValid, bool stripCurrency, bool *ok)
{
    return NumberReader::current().toInteger64(text, emptyIsValid, stripCurrency, ok);
}

qint64 toInteger64(std::string_view utf8, bool emptyIsValid, bool stripCurrency, bool *ok)
{
    return NumberReader::current().toInteger64(utf8, emptyIsValid, stripCurrency, ok);
}

bool toBoolean(QStringView text, bool emptyIsInvalid, bool allowNumbers, bool *ok)
{
    text = text.trimmed();
    bool valid = false;
    bool value = false;
    if (emptyIsInvalid && text.isEmpty()) {
        // No boolean, and no number either.
    } else if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0) {
        valid = true;
        value = true;
    } else if (text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0) {
        valid = true;
    } else if (allowNumbers) {
        const double number = toReal(text, false, false, &valid);
        value = valid && number != 0.0;
    }
    if (ok) {
        *ok = valid;
    }
    return value;
}

bool toBoolean(std::string_view utf8, bool emptyIsInvalid, bool allowNumbers, bool *ok)
{
    // Nearly all texts are too long for a boolean, and none of the numbers needs decoding.
    const std::string_view trimmed = Utf8::trimmed(utf8);
    if (trimmed.size() <= 5) {
        return toBoolean(QStringView(Utf8::decoded(trimmed)), emptyIsInvalid, allowNumbers, ok);
    }
    bool valid = false;
    const double number = allowNumbers ? toReal(trimmed, false, false, &valid) : 0.0;
    if (ok) {
        *ok = valid;
    }
    return valid && number != 0.0;
}

QDate toDate(QStringView text, const QString &pattern)
{
    return DatePattern::compiled(pattern).read(text);
}

QDate toDate(std::string_view utf8, const QString &pattern)
{
    return DatePattern::compiled(pattern).read(utf8);
}

QDate toDate(QStringView text, const QStringList &patterns)
{
    for (const QString &pattern : patterns) {
        const QDate date = toDate(text, pattern);
        if (date.isValid()) {
            return date;
        }
    }
    return {};
}

QDate toDate(std::string_view utf8, const QStringList &patterns)
{
    for (const QString &pattern : patterns) {
        const QDate date = toDate(utf8, pattern);
        if (date.isValid()) {
            return date;
        }
    }
    return {};
}

QTime toTime(QStringView text)
{
    text = text.trimmed();
    QTime time;
    if (quickTime(text.utf16(), text.utf16() + text.size(), &time)) {
        return time;
    }
    return timeByQt(text.toString());
}

QTime toTime(std::string_view utf8)
{
    const std::string_view text = Utf8::trimmed(utf8);
    QTime time;
    if (quickTime(text.data(), text.data() + text.size(), &time)) {
        return time;
    }
    return timeByQt(Utf8::decoded(text));
}

QString removeCurrencySymbols(const QString &text)
{
    QString result;
    int copied = 0;
    for (int at = 0; at < text.size();) {
        uint character = text[at].unicode();
        int length = 1;
        if (text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate()) {
            character = QChar::surrogateToUcs4(text[at], text[at + 1]);
            length = 2;
        }
        if (QChar::category(character) == QChar::Symbol_Currency) {
            result.append(text.midRef(copied, at - copied));
            copied = at + length;
        }
        at += length;
    }
    if (copied == 0) {
        return text;
    }
    result.append(text.midRef(copied));
    return result;
}
