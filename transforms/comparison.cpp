#include "comparison.h"

#include "editdistance.h"
#include "numberreader.h"
#include "utf8.h"
#include "valueinterpretation.h"

#include <QCoreApplication>
#include <algorithm>
#include <iterator>

namespace {

using Op = ComparisonOperator;

// The blanks line the texts up in the choice of operators.
constexpr const char *labels[] = {
    QT_TRANSLATE_NOOP("Comparison", "c   Contains"),
    QT_TRANSLATE_NOOP("Comparison", "=   Equal to"),
    QT_TRANSLATE_NOOP("Comparison", "^   Starts with"),
    QT_TRANSLATE_NOOP("Comparison", "$   Ends with"),
    QT_TRANSLATE_NOOP("Comparison", ">   Greater than"),
    QT_TRANSLATE_NOOP("Comparison", "<   Less than"),
    QT_TRANSLATE_NOOP("Comparison", ">=  Greater than equal"),
    QT_TRANSLATE_NOOP("Comparison", "<=  Less than equal"),
    QT_TRANSLATE_NOOP("Comparison", "rx  Matches regex"),
    QT_TRANSLATE_NOOP("Comparison", "!c   Doesn't contain"),
    QT_TRANSLATE_NOOP("Comparison", "!=  Not equal to"),
    QT_TRANSLATE_NOOP("Comparison", "!^  Doesn't start with"),
    QT_TRANSLATE_NOOP("Comparison", "!$  Doesn't end with"),
    QT_TRANSLATE_NOOP("Comparison", "!rx Doesn't match regex"),
    QT_TRANSLATE_NOOP("Comparison", "\u22489  90% fuzzy match"),
    QT_TRANSLATE_NOOP("Comparison", "\u22488  80% fuzzy match"),
    QT_TRANSLATE_NOOP("Comparison", "\u22487  70% fuzzy match"),
    QT_TRANSLATE_NOOP("Comparison", "\u22486  60% fuzzy match"),
    QT_TRANSLATE_NOOP("Comparison", "\u22485  50% fuzzy match"),
    QT_TRANSLATE_NOOP("Comparison", "%1   Is empty"),
    QT_TRANSLATE_NOOP("Comparison", "!%1  Is not empty"),
};
static_assert(std::size(labels) == Comparison::operatorCount);

/// The operator that a negated one is the exact opposite of; any other operator itself.
Op positive(Op op)
{
    switch (op) {
    case Op::NotContains:
        return Op::Contains;
    case Op::NotEqual:
        return Op::Equal;
    case Op::NotStartsWith:
        return Op::StartsWith;
    case Op::NotEndsWith:
        return Op::EndsWith;
    case Op::NotMatchesRegex:
        return Op::MatchesRegex;
    case Op::IsNotEmpty:
        return Op::IsEmpty;
    default:
        return op;
    }
}

template <class T>
int sign(const T &a, const T &b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}

bool orderFits(Op op, int order)
{
    switch (op) {
    case Op::Greater:
        return order > 0;
    case Op::Less:
        return order < 0;
    case Op::GreaterEqual:
        return order >= 0;
    case Op::LessEqual:
        return order <= 0;
    default:
        return order == 0;
    }
}

int compareOrder(const QString &cell, const QString &value, const QString &dateFormat,
                 Qt::CaseSensitivity sensitivity)
{
    if (!dateFormat.isEmpty()) {
        const QDate cellDate = toDate(QStringView(cell), dateFormat);
        const QDate valueDate = toDate(QStringView(value), dateFormat);
        if (cellDate.isValid() && valueDate.isValid()) {
            return sign(cellDate, valueDate);
        }
    }
    bool cellIsNumber = false;
    bool valueIsNumber = false;
    const double cellNumber = toReal(QStringView(cell), false, false, &cellIsNumber);
    const double valueNumber = toReal(QStringView(value), false, false, &valueIsNumber);
    if (cellIsNumber && valueIsNumber) {
        return sign(cellNumber, valueNumber);
    }
    return cell.compare(value, sensitivity);
}

QRegularExpression regexOf(const QString &pattern, bool caseSensitive)
{
    QRegularExpression::PatternOptions options = QRegularExpression::UseUnicodePropertiesOption;
    if (!caseSensitive) {
        options |= QRegularExpression::CaseInsensitiveOption;
    }
    return QRegularExpression(pattern, options);
}

bool isFuzzyMatch(const QString &cell, const QString &value, int threshold)
{
    return fuzzySimilarity(cell, value, threshold) >= threshold;
}

char lowerAscii(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

/// Compares in the order of UTF-16 code units. Bytes give the same order, but for characters
/// beyond U+FFFF (and unpaired surrogates) against U+E000 to U+FFFF.
int compareCodeUnits(std::string_view a, std::string_view b)
{
    constexpr uchar firstUnequalLead = 0xED;
    const size_t common = std::min(a.size(), b.size());
    const auto at = std::mismatch(a.begin(), a.begin() + std::ptrdiff_t(common), b.begin());
    if (at.first == a.begin() + std::ptrdiff_t(common)) {
        return sign(a.size(), b.size());
    }
    const uchar x = uchar(*at.first);
    const uchar y = uchar(*at.second);
    if (x >= firstUnequalLead && y >= firstUnequalLead) {
        return Utf8::decoded(a).compare(Utf8::decoded(b));
    }
    return sign(x, y);
}

} // namespace

namespace Comparison {

ComparisonOperator fromNumber(int number)
{
    return number >= 0 && number < operatorCount ? Op(number) : Op::Contains;
}

QString label(ComparisonOperator op)
{
    const QString text =
        QCoreApplication::translate("Comparison", labels[int(fromNumber(int(op)))]);
    return op == Op::IsEmpty || op == Op::IsNotEmpty ? text.arg(QChar(0x2205)) : text;
}

QString symbol(ComparisonOperator op)
{
    return label(op).section(QLatin1Char(' '), 0, 0, QString::SectionSkipEmpty);
}

bool takesValue(ComparisonOperator op)
{
    return op != Op::IsEmpty && op != Op::IsNotEmpty;
}

int threshold(ComparisonOperator op)
{
    switch (op) {
    case Op::Fuzzy80:
        return 80;
    case Op::Fuzzy70:
        return 70;
    case Op::Fuzzy60:
        return 60;
    case Op::Fuzzy50:
        return 50;
    default:
        return 90;
    }
}

} // namespace Comparison

bool compareValue(ComparisonOperator op, const QString &cell, const QString &value,
                  const QString &dateFormat, bool caseSensitive)
{
    const Op test = positive(op);
    if (test != op) {
        return !compareValue(test, cell, value, dateFormat, caseSensitive);
    }
    const Qt::CaseSensitivity sensitivity = caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    switch (op) {
    case Op::Contains:
        return value.isEmpty() || cell.contains(value, sensitivity);
    case Op::StartsWith:
        return value.isEmpty() || cell.startsWith(value, sensitivity);
    case Op::EndsWith:
        return value.isEmpty() || cell.endsWith(value, sensitivity);
    case Op::MatchesRegex:
        return regexOf(value, caseSensitive).match(cell).hasMatch();
    case Op::Fuzzy90:
    case Op::Fuzzy80:
    case Op::Fuzzy70:
    case Op::Fuzzy60:
    case Op::Fuzzy50:
        return caseSensitive
                   ? isFuzzyMatch(cell, value, Comparison::threshold(op))
                   : isFuzzyMatch(cell.toLower(), value.toLower(), Comparison::threshold(op));
    case Op::IsEmpty:
        return cell.isEmpty();
    default:
        return orderFits(op, compareOrder(cell, value, dateFormat, sensitivity));
    }
}

CellTest::CellTest(ComparisonOperator op, const QString &dateFormat, bool caseSensitive)
    : m_op(positive(op))
    , m_isNegated(m_op != op)
    , m_caseSensitive(caseSensitive)
    , m_numbers(NumberReader::current())
{
    switch (m_op) {
    case Op::Contains:
        m_kind = Kind::Contains;
        break;
    case Op::StartsWith:
        m_kind = Kind::StartsWith;
        break;
    case Op::EndsWith:
        m_kind = Kind::EndsWith;
        break;
    case Op::MatchesRegex:
        m_kind = Kind::Regex;
        break;
    case Op::Fuzzy90:
    case Op::Fuzzy80:
    case Op::Fuzzy70:
    case Op::Fuzzy60:
    case Op::Fuzzy50:
        m_kind = Kind::Fuzzy;
        break;
    case Op::IsEmpty:
        m_kind = Kind::Empty;
        break;
    default:
        m_kind = Kind::Order;
        if (!dateFormat.isEmpty()) {
            m_pattern.emplace(dateFormat);
        }
        break;
    }
    setValue(QString());
}

void CellTest::setValue(const QString &value)
{
    m_value = m_kind == Kind::Fuzzy && !m_caseSensitive ? value.toLower() : value;
    m_bytes = Utf8::encoded(m_value);
    m_valueIsAscii = Utf8::isAscii(m_bytes);
    m_valueHasSurrogates = !m_valueIsAscii && Utf8::hasSurrogates(m_bytes);
    if (m_valueIsAscii && !m_caseSensitive) {
        std::transform(m_bytes.begin(), m_bytes.end(), m_bytes.begin(), lowerAscii);
    }
    if (m_kind == Kind::Order) {
        m_date = m_pattern ? m_pattern->read(QStringView(value)) : QDate();
        m_number = m_numbers.toReal(QStringView(value), false, false, &m_isNumber);
    } else if (m_kind == Kind::Regex) {
        // Values with column variables come back again and again.
        constexpr int mostKept = 256;
        const auto known = m_regexes.constFind(value);
        if (known != m_regexes.constEnd()) {
            m_regex = *known;
            return;
        }
        if (m_regexes.size() >= mostKept) {
            m_regexes.clear();
        }
        m_regex = regexOf(value, m_caseSensitive);
        if (m_regex.isValid()) {
            m_regex.optimize();
        }
        m_regexes.insert(value, m_regex);
    }
}

bool CellTest::holds(std::string_view cell) const
{
    return positiveHolds(cell) != m_isNegated;
}

const QRegularExpression *CellTest::invalidRegex() const
{
    return m_kind == Kind::Regex && !m_regex.isValid() ? &m_regex : nullptr;
}

bool CellTest::positiveHolds(std::string_view cell) const
{
    switch (m_kind) {
    case Kind::Contains:
        return contains(cell);
    case Kind::StartsWith:
        return startsWith(cell);
    case Kind::EndsWith:
        return endsWith(cell);
    case Kind::Order:
        return orderFits(m_op, order(cell));
    case Kind::Regex:
        return matches(cell);
    case Kind::Fuzzy: {
        const QString text = Utf8::decoded(cell);
        return isFuzzyMatch(m_caseSensitive ? text : text.toLower(), m_value,
                            Comparison::threshold(m_op));
    }
    case Kind::Empty:
        break;
    }
    return cell.empty();
}

int CellTest::order(std::string_view cell) const
{
    if (m_date.isValid()) {
        const QDate date = m_pattern->read(cell);
        if (date.isValid()) {
            return sign(date, m_date);
        }
    }
    if (m_isNumber) {
        bool ok = false;
        const double number = m_numbers.toReal(cell, false, false, &ok);
        if (ok) {
            return sign(number, m_number);
        }
    }
    return textOrder(cell);
}

int CellTest::textOrder(std::string_view cell) const
{
    if (m_caseSensitive) {
        return compareCodeUnits(cell, m_bytes);
    }
    if (!m_valueIsAscii || !Utf8::isAscii(cell)) {
        return Utf8::decoded(cell).compare(m_value, Qt::CaseInsensitive);
    }
    const size_t common = std::min(cell.size(), m_bytes.size());
    for (size_t i = 0; i < common; ++i) {
        const char c = lowerAscii(cell[i]);
        if (c != m_bytes[i]) {
            return sign(c, m_bytes[i]);
        }
    }
    return sign(cell.size(), m_bytes.size());
}

bool CellTest::comparesBytes(std::string_view cell) const
{
    if (m_caseSensitive) {
        // Half a pair would be found inside a pair, but not among its bytes.
        return !m_valueHasSurrogates;
    }
    return m_valueIsAscii && Utf8::isAscii(cell);
}

Qt::CaseSensitivity CellTest::sensitivity() const
{
    return m_caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
}

bool CellTest::contains(std::string_view cell) const
{
    if (m_bytes.empty()) {
        return true;
    }
    if (!comparesBytes(cell)) {
        return Utf8::decoded(cell).contains(m_value, sensitivity());
    }
    if (m_caseSensitive) {
        return cell.find(m_bytes) != std::string_view::npos;
    }
    m_folded.resize(cell.size());
    std::transform(cell.begin(), cell.end(), m_folded.begin(), lowerAscii);
    return m_folded.find(m_bytes) != std::string::npos;
}

bool CellTest::startsWith(std::string_view cell) const
{
    if (m_bytes.empty()) {
        return true;
    }
    if (!comparesBytes(cell)) {
        return Utf8::decoded(cell).startsWith(m_value, sensitivity());
    }
    if (cell.size() < m_bytes.size()) {
        return false;
    }
    return m_caseSensitive ? cell.compare(0, m_bytes.size(), m_bytes) == 0
                           : std::equal(m_bytes.begin(), m_bytes.end(), cell.begin(),
                                        [](char v, char c) { return v == lowerAscii(c); });
}

bool CellTest::endsWith(std::string_view cell) const
{
    if (m_bytes.empty()) {
        return true;
    }
    if (!comparesBytes(cell)) {
        return Utf8::decoded(cell).endsWith(m_value, sensitivity());
    }
    return cell.size() >= m_bytes.size() && startsWith(cell.substr(cell.size() - m_bytes.size()));
}

bool CellTest::matches(std::string_view cell) const
{
    if (!m_regex.isValid()) {
        return false;
    }
    const QRegularExpressionMatch match = m_regex.match(Utf8::decoded(cell));
    if (!match.isValid()) {
        ++m_regexFailures;
    }
    return match.hasMatch();
}
