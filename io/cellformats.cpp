#include "cellformats.h"

#include "numberreader.h"
#include "utf8.h"
#include "valueinterpretation.h"

#include <QCoreApplication>
#include <QUrl>
#include <charconv>

namespace {

constexpr const char *labels[] = {
    QT_TRANSLATE_NOOP("CellFormats", "Automatic"), QT_TRANSLATE_NOOP("CellFormats", "Boolean"),
    QT_TRANSLATE_NOOP("CellFormats", "Date"),      QT_TRANSLATE_NOOP("CellFormats", "General"),
    QT_TRANSLATE_NOOP("CellFormats", "Number"),    QT_TRANSLATE_NOOP("CellFormats", "Text"),
    QT_TRANSLATE_NOOP("CellFormats", "Formula"),   QT_TRANSLATE_NOOP("CellFormats", "Time"),
    QT_TRANSLATE_NOOP("CellFormats", "Hyperlink")};

// What a 64-bit floating point number holds for certain.
constexpr int mostDigits = 15;
// A cell without a number format shows more digits with an exponent.
constexpr int mostGeneralDigits = 11;
constexpr double dayMs = 86400000;
// Longer texts are no links in spreadsheet programs.
constexpr size_t longestLink = 2079;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// The layout of a pattern of one day, one month and a year with four digits, between which single
/// characters stand.
bool layoutOfPattern(const QString &pattern, ValueLayout *layout)
{
    layout->kind = ValueLayout::Kind::Date;
    int at = 0;
    for (size_t i = 0; i < layout->fields.size(); ++i) {
        if (i > 0) {
            const QChar separator = pattern.size() > at ? pattern.at(at) : QChar();
            if (separator != QLatin1Char('/') && separator != QLatin1Char('-') &&
                separator != QLatin1Char('.') && separator != QLatin1Char(' ')) {
                return false;
            }
            layout->separators[i - 1] = separator.toLatin1();
            ++at;
        }
        const int from = at;
        while (at < pattern.size() && pattern.at(at) == pattern.at(from)) {
            ++at;
        }
        const int letters = at - from;
        const QChar letter = from < pattern.size() ? pattern.at(from) : QChar();
        const bool isYear = letter == QLatin1Char('y');
        if ((letter != QLatin1Char('d') && letter != QLatin1Char('M') && !isYear) ||
            (isYear ? letters != 4 : letters > 2 || letters < 1)) {
            return false;
        }
        layout->fields[i] = letter.toLower().toLatin1();
        layout->digits[i] = quint8(letters);
    }
    const auto &fields = layout->fields;
    return at == pattern.size() && fields[0] != fields[1] && fields[1] != fields[2] &&
           fields[0] != fields[2];
}

/// Reads a date whose fields stand in the layout's order, and sets how many digits they have.
bool readInLayout(std::string_view text, ValueLayout *layout, QDate *date)
{
    int day = 0;
    int month = 0;
    int year = 0;
    size_t at = 0;
    for (size_t i = 0; i < layout->fields.size(); ++i) {
        if (i > 0 && (at >= text.size() || text[at++] != layout->separators[i - 1])) {
            return false;
        }
        const size_t from = at;
        int value = 0;
        while (at < text.size() && isDigit(text[at]) && at - from < 4) {
            value = value * 10 + (text[at++] - '0');
        }
        const size_t digits = at - from;
        const char field = layout->fields[i];
        if (field == 'y' ? digits != 4 : digits < 1 || digits > 2) {
            return false;
        }
        // A second digit other than a leading 0 says nothing.
        if (field != 'y' && (digits == 1 || text[from] == '0')) {
            layout->digits[i] = quint8(digits);
        }
        (field == 'd' ? day : field == 'm' ? month : year) = value;
    }
    *date = QDate(year, month, day);
    return at == text.size() && date->isValid();
}

const std::string isoDateCode = "yyyy\\-mm\\-dd";

} // namespace

QString cellFormatLabel(CellFormat format)
{
    const auto number = size_t(format);
    return QCoreApplication::translate("CellFormats",
                                       labels[number < std::size(labels) ? number : 0]);
}

CellFormat cellFormatOf(const QString &text)
{
    for (size_t i = 0; i < std::size(labels); ++i) {
        if (text == QLatin1String(labels[i]) || text == QString::number(i)) {
            return CellFormat(i);
        }
    }
    return CellFormat::Automatic;
}

std::string linkTarget(std::string_view text)
{
    const QByteArray encoded = Utf8::decoded(Utf8::trimmed(text))
                                   .toUtf8()
                                   .toPercentEncoding(QByteArrayLiteral("!#$%&'()*+,/:;=?@[]"));
    const QUrl url = QUrl::fromEncoded(encoded, QUrl::StrictMode);
    const bool needsHost =
        url.scheme().startsWith(QLatin1String("http")) || url.scheme() == QLatin1String("ftp");
    const bool isAddress = url.isValid() && !(needsHost && url.host().isEmpty());
    return isAddress && size_t(encoded.size()) <= longestLink ? encoded.toStdString()
                                                              : std::string();
}

NumberFormats::NumberFormats()
{
    for (const char *code : {"General", "@", "0"}) {
        idOf(code);
    }
}

quint16 NumberFormats::idOf(const std::string &code)
{
    const auto [at, added] = m_ids.insert({code, quint16(m_codes.size())});
    if (added) {
        m_codes.push_back(code);
    }
    return at->second;
}

CellColumn::CellColumn(CellFormat format, const ColumnReader &reader,
                       const QStringList &dateFormats, DateSystem dateSystem, size_t mostRemembered,
                       NumberFormats *formats)
    : m_format(format)
    , m_reader(reader)
    , m_dateFormats(dateFormats)
    , m_dateSystem(dateSystem)
    , m_formats(formats)
{
    for (const QString &pattern : dateFormats) {
        ValueLayout layout;
        if (layoutOfPattern(pattern, &layout)) {
            m_dateLayouts.push_back(layout);
        }
    }
    const QLocale &locale = NumberReader::current().locale();
    const bool comma = locale.decimalPoint() == QLatin1Char(',');
    m_decimalPoint = comma ? ',' : '.';
    const QChar group = comma ? QLatin1Char('.') : QLatin1Char(',');
    m_groupSeparator = locale.groupSeparator() == group ? group.toLatin1() : '\0';
    if (reader.isPooled() && reader.codeCount() <= mostRemembered) {
        m_known.resize(reader.codeCount());
        m_isKnown.resize(reader.codeCount());
    }
}

CellValue CellColumn::value(int row)
{
    const ColumnReader::Code code = m_reader.code(row);
    if (m_known.empty()) {
        return make(m_reader.utf8OfCode(code));
    }
    if (!m_isKnown[code]) {
        m_isKnown[code] = true;
        m_known[code] = make(m_reader.utf8OfCode(code));
    }
    return m_known[code];
}

CellValue CellColumn::make(std::string_view text)
{
    CellValue value;
    if (text.empty()) {
        return value;
    }
    // Each unit takes one to three bytes.
    if (text.size() > mostCharacters && size_t(Utf8::decoded(text).size()) > mostCharacters) {
        value.kind = CellValue::Kind::TooLong;
        return value;
    }
    bool fits = true;
    switch (m_format) {
    case CellFormat::Automatic:
        readAutomatic(text, &value);
        break;
    case CellFormat::Boolean:
        fits = readBoolean(text, true, &value);
        break;
    case CellFormat::Date:
        fits = readDate(text, true, &value);
        break;
    case CellFormat::General:
        if (readNumber(text, &value)) {
            value.numberFormat = NumberFormats::general;
        }
        break;
    case CellFormat::Number:
        fits = readPlainNumber(text, &value) || readNumber(text, &value);
        break;
    case CellFormat::Text:
        value.numberFormat = NumberFormats::text;
        break;
    case CellFormat::Formula:
        value.kind = CellValue::Kind::Formula;
        break;
    case CellFormat::Time:
        fits = readTime(text, &value);
        break;
    case CellFormat::Hyperlink:
        fits = !linkTarget(text).empty();
        value.kind = fits ? CellValue::Kind::Link : CellValue::Kind::Text;
        break;
    }
    value.unfit = !fits;
    if (value.kind == CellValue::Kind::Empty) {
        value.kind = CellValue::Kind::Text;
    }
    return value;
}

bool CellColumn::readAutomatic(std::string_view text, CellValue *value)
{
    const char first = text.front();
    if (isDigit(first) || first == '-') {
        return readPlainNumber(text, value) || readDate(text, false, value);
    }
    return readBoolean(text, false, value);
}

bool CellColumn::readBoolean(std::string_view text, bool lenient, CellValue *value)
{
    ValueLayout layout;
    bool ok = true;
    bool isTrue = text == "true" || text == "True" || text == "TRUE";
    if (text == "true" || text == "false") {
        layout.kind = ValueLayout::Kind::LowerCaseBoolean;
    } else if (text == "True" || text == "False") {
        layout.kind = ValueLayout::Kind::CapitalizedBoolean;
    } else if (text != "TRUE" && text != "FALSE") {
        isTrue = lenient && toBoolean(text, true, true, &ok);
        ok = ok && lenient;
    }
    if (ok) {
        value->kind = CellValue::Kind::Boolean;
        value->number = isTrue ? 1 : 0;
        if (layout.kind != ValueLayout::Kind::None) {
            value->numberFormat = m_formats->idOf(layout.formatCode());
        }
    }
    return ok;
}

quint16 CellColumn::decimalFormat(int decimals, bool grouped)
{
    quint16 &known = m_decimalFormats[grouped ? 1 : 0][size_t(decimals)];
    if (known == 0) {
        ValueLayout layout;
        layout.kind = ValueLayout::Kind::Decimal;
        layout.decimals = quint8(decimals);
        layout.grouped = grouped;
        layout.comma = m_decimalPoint == ',' && (decimals > 0 || grouped);
        known = m_formats->idOf(layout.formatCode());
    }
    return known;
}

/// A number without an exponent that looks the same when it is written again.
bool CellColumn::readPlainNumber(std::string_view text, CellValue *value)
{
    constexpr size_t longest = 24;
    constexpr size_t group = 3;
    std::array<char, longest> digits;
    size_t count = 0;
    size_t groups = 0;
    size_t sinceGroup = 0;
    size_t at = text.front() == '-' ? 1 : 0;
    if (text.size() > longest || at == text.size() || !isDigit(text[at])) {
        return false;
    }
    if (at == 1) {
        digits[count++] = '-';
    }
    const size_t sign = at;
    for (; at < text.size() && text[at] != m_decimalPoint; ++at) {
        const char c = text[at];
        if (isDigit(c)) {
            digits[count++] = c;
            ++sinceGroup;
        } else if (m_groupSeparator != '\0' && c == m_groupSeparator &&
                   (groups > 0 ? sinceGroup == group : sinceGroup <= group && sinceGroup > 0)) {
            ++groups;
            sinceGroup = 0;
        } else {
            return false;
        }
    }
    const size_t whole = count - sign;
    const bool leadsWithZero = whole > 1 && digits[sign] == '0';
    if (leadsWithZero || (groups > 0 && sinceGroup != group)) {
        return false;
    }
    size_t decimals = 0;
    if (at < text.size()) {
        digits[count++] = '.';
        for (++at; at < text.size(); ++at, ++decimals) {
            if (!isDigit(text[at])) {
                return false;
            }
            digits[count++] = text[at];
        }
        if (decimals == 0) {
            return false;
        }
    }
    const size_t leadingZeros = digits[sign] == '0' ? 1 : 0;
    if (whole - leadingZeros + decimals > size_t(mostDigits)) {
        return false;
    }
    std::from_chars(digits.data(), digits.data() + count, value->number);
    if (value->number == 0 && sign == 1) {
        return false; // a cell has no minus zero
    }
    value->kind = CellValue::Kind::Number;
    if (decimals > 0 || groups > 0) {
        value->numberFormat = decimalFormat(int(decimals), groups > 0);
    } else if (whole > size_t(mostGeneralDigits)) {
        value->numberFormat = NumberFormats::wholeNumber;
    }
    return true;
}

bool CellColumn::readNumber(std::string_view text, CellValue *value)
{
    bool ok = false;
    const double number = NumberReader::current().toReal(text, false, false, &ok);
    if (!ok) {
        return false;
    }
    int digits = 0;
    for (const char c : text) {
        digits += isDigit(c) && (digits > 0 || c != '0') ? 1 : 0;
        if (c == 'e' || c == 'E') {
            break;
        }
    }
    // More digits than the cell keeps.
    if (digits > mostDigits) {
        return false;
    }
    value->kind = CellValue::Kind::Number;
    value->number = number;
    return true;
}

void CellColumn::setDate(const QDate &date, int millisecond, const std::string &code,
                         CellValue *value)
{
    value->kind = CellValue::Kind::Number;
    value->number = double(daySerial(date, m_dateSystem)) + millisecond / dayMs;
    value->numberFormat = m_formats->idOf(code);
}

bool CellColumn::readDate(std::string_view text, bool lenient, CellValue *value)
{
    const auto isKept = [this](const QDate &date) { return daySerial(date, m_dateSystem) >= 0; };
    ValueLayout iso;
    iso.fields = {'y', 'm', 'd'};
    iso.digits = {4, 2, 2};
    iso.separators = {'-', '-'};
    constexpr size_t dateSize = 10;
    QDate date;
    ValueLayout layout = iso;
    if (readInLayout(text.substr(0, dateSize), &layout, &date) && layout == iso && isKept(date)) {
        if (text.size() == dateSize) {
            setDate(date, 0, isoDateCode, value);
            return true;
        }
        const std::string_view rest = text.substr(dateSize);
        const bool hasBlank = rest.front() == ' ';
        const QTime time =
            hasBlank || (lenient && rest.front() == 'T')
                ? QTime::fromString(Utf8::decoded(rest.substr(1)), QStringLiteral("hh:mm:ss"))
                : QTime();
        // Midnight would be read back as the date alone.
        if (time.isValid() && (lenient || time != QTime(0, 0))) {
            setDate(date, time.msecsSinceStartOfDay(), isoDateCode + "\\ hh:mm:ss", value);
            return true;
        }
        if (!lenient) {
            return false;
        }
    }
    for (ValueLayout candidate : m_dateLayouts) {
        if (readInLayout(text, &candidate, &date)) {
            if (!isKept(date)) {
                return false;
            }
            candidate.kind = ValueLayout::Kind::Date;
            setDate(date, 0, candidate.formatCode(), value);
            return true;
        }
    }
    date = lenient ? toDate(text, m_dateFormats) : QDate();
    if (!date.isValid() || !isKept(date)) {
        return false;
    }
    setDate(date, 0, isoDateCode, value);
    return true;
}

bool CellColumn::readTime(std::string_view text, CellValue *value)
{
    const QTime time = toTime(text);
    if (!time.isValid()) {
        return false;
    }
    value->kind = CellValue::Kind::Number;
    value->number = time.msecsSinceStartOfDay() / dayMs;
    value->numberFormat = m_formats->idOf(time.second() != 0 ? "hh:mm:ss" : "hh:mm");
    return true;
}
