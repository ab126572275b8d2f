#include "verifyrules.h"

#include "codepoints.h"
#include "utf8.h"
#include "valueinterpretation.h"

#include <QCoreApplication>
#include <QStringList>
#include <QUrl>
#include <algorithm>

namespace {

struct Rule
{
    const char *label;
    bool takesValue = false;
};

// In the order of VerifyCheck.
constexpr Rule rules[VerifyRules::count] = {
    {QT_TRANSLATE_NOOP("VerifyRules", "Is not empty")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is empty")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is a number")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is a whole number")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is a boolean")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is a date")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is a date in format"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is text")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Equal to"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Not equal to"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Greater than"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Greater than equal"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Less than"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Less than equal"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Between"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is one of"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is not one of"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Contains"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Doesn't contain"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Starts with"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Ends with"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Matches regex"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Doesn't match regex"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Length at least"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Length at most"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Length equal to"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "No leading or trailing whitespace")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is upper case")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is lower case")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is an email address")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is a URL")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Passes check digit (Luhn)")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Not in the future")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is unique")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is ascending")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is descending")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Is constant")},
    {QT_TRANSLATE_NOOP("VerifyRules", "Same as column"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Rows at least"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Rows at most"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Columns equal to"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "Column exists"), true},
    {QT_TRANSLATE_NOOP("VerifyRules", "No duplicate rows")},
    {QT_TRANSLATE_NOOP("VerifyRules", "No duplicate column names")},
};

/// The comparison of a cell with the value that a check comes to.
ComparisonOperator comparisonOf(VerifyCheck check)
{
    switch (check) {
    case VerifyCheck::NotEqual:
        return ComparisonOperator::NotEqual;
    case VerifyCheck::Greater:
        return ComparisonOperator::Greater;
    case VerifyCheck::GreaterEqual:
        return ComparisonOperator::GreaterEqual;
    case VerifyCheck::Less:
        return ComparisonOperator::Less;
    case VerifyCheck::LessEqual:
        return ComparisonOperator::LessEqual;
    case VerifyCheck::Contains:
        return ComparisonOperator::Contains;
    case VerifyCheck::NotContains:
        return ComparisonOperator::NotContains;
    case VerifyCheck::StartsWith:
        return ComparisonOperator::StartsWith;
    case VerifyCheck::EndsWith:
        return ComparisonOperator::EndsWith;
    default:
        return ComparisonOperator::Equal;
    }
}

bool isDomainName(const QString &text)
{
    const QStringList labels = text.split(QLatin1Char('.'));
    const auto isLabel = [](const QString &label) {
        return !label.isEmpty() && !label.startsWith(QLatin1Char('-')) &&
               !label.endsWith(QLatin1Char('-')) &&
               std::all_of(label.begin(), label.end(), [](QChar c) {
                   return c.isLetterOrNumber() || c == QLatin1Char('-') || c.isSurrogate();
               });
    };
    return labels.size() > 1 && labels.last().size() > 1 &&
           std::all_of(labels.begin(), labels.end(), isLabel);
}

bool isEmailAddress(const QString &text)
{
    const int at = text.indexOf(QLatin1Char('@'));
    const QString name = text.left(at);
    if (at < 1 || at > 64 || name.startsWith(QLatin1Char('.')) || name.endsWith(QLatin1Char('.')) ||
        name.contains(QStringLiteral(".."))) {
        return false;
    }
    const QString forbidden = QStringLiteral("()<>[]:;,\\\"");
    const auto isAllowed = [&](QChar c) {
        return c.isPrint() && !c.isSpace() && !forbidden.contains(c);
    };
    return std::all_of(name.begin(), name.end(),
                       [&](QChar c) { return c.isSurrogate() || isAllowed(c); }) &&
           isDomainName(text.mid(at + 1));
}

bool isUrl(const QString &text)
{
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.scheme().isEmpty() && !url.host().isEmpty();
}

/// The check of card and account numbers: every second digit from the right counts double, by its
/// digit sum, and the total must end in 0. Blanks and hyphens between digits are ignored.
bool passesCheckDigit(std::string_view cell)
{
    int sum = 0;
    int digits = 0;
    for (auto at = cell.rbegin(); at != cell.rend(); ++at) {
        if (*at == ' ' || *at == '-') {
            continue;
        }
        if (*at < '0' || *at > '9') {
            return false;
        }
        const int digit = *at - '0';
        const int doubled = digit * 2;
        sum += digits % 2 == 0 ? digit : doubled > 9 ? doubled - 9 : doubled;
        sum %= 10;
        ++digits;
    }
    return digits > 1 && sum == 0;
}

bool isNumber(std::string_view cell)
{
    bool ok = false;
    toReal(cell, false, true, &ok);
    return ok;
}

bool isWholeNumber(std::string_view cell)
{
    bool ok = false;
    toInteger64(cell, false, true, &ok);
    return ok;
}

bool isBoolean(std::string_view cell)
{
    bool ok = false;
    toBoolean(cell, true, false, &ok);
    return ok;
}

} // namespace

std::optional<VerifyCheck> VerifyRules::fromNumber(int number)
{
    if (number < 0 || number >= count) {
        return std::nullopt;
    }
    return VerifyCheck(number);
}

QString VerifyRules::label(VerifyCheck check)
{
    return QCoreApplication::translate("VerifyRules", rules[int(check)].label);
}

bool VerifyRules::takesValue(VerifyCheck check)
{
    return rules[int(check)].takesValue;
}

VerifyRules::Scope VerifyRules::scope(VerifyCheck check)
{
    if (check >= VerifyCheck::RowsAtLeast) {
        return Scope::Table;
    }
    return check >= VerifyCheck::Unique ? Scope::Column : Scope::Cell;
}

bool VerifyRules::readsDates(VerifyCheck check)
{
    return check == VerifyCheck::Date || check == VerifyCheck::DateInFormat ||
           (check >= VerifyCheck::Equal && check <= VerifyCheck::Between) ||
           check == VerifyCheck::NotInFuture || check == VerifyCheck::Ascending ||
           check == VerifyCheck::Descending;
}

bool VerifyRules::isRegex(VerifyCheck check)
{
    return check == VerifyCheck::MatchesRegex || check == VerifyCheck::NotMatchesRegex;
}

QString VerifyRules::text(VerifyCheck check, const QString &value)
{
    return takesValue(check) ? QStringLiteral("%1 %2").arg(label(check), value) : label(check);
}

std::optional<int> VerifyRules::wholeValue(const QString &value)
{
    bool ok = false;
    const int number = toInteger(value, false, false, &ok);
    return ok && number >= 0 ? std::optional<int>(number) : std::nullopt;
}

CellRule::CellRule(VerifyCheck check, const QString &value, const QString &datePattern,
                   bool caseSensitive, const QRegularExpression &regex)
    : m_check(check)
    , m_regex(regex)
{
    prepare(value, datePattern, caseSensitive);
}

void CellRule::prepare(const QString &value, const QString &datePattern, bool caseSensitive)
{
    switch (m_check) {
    case VerifyCheck::Date:
    case VerifyCheck::Text:
    case VerifyCheck::NotInFuture:
        if (!datePattern.isEmpty()) {
            m_pattern.emplace(datePattern);
        }
        m_today = QDate::currentDate();
        return;
    case VerifyCheck::DateInFormat:
        m_isValid = !value.trimmed().isEmpty();
        m_pattern.emplace(value.trimmed());
        return;
    case VerifyCheck::Between: {
        const QString joiner = QStringLiteral(" to ");
        const int at = value.indexOf(joiner, 0, Qt::CaseInsensitive);
        m_isValid = at > 0 && at + joiner.size() < value.size();
        addTest(ComparisonOperator::GreaterEqual, value.left(at).trimmed(), datePattern,
                caseSensitive);
        addTest(ComparisonOperator::LessEqual, value.mid(at + joiner.size()).trimmed(), datePattern,
                caseSensitive);
        return;
    }
    case VerifyCheck::OneOf:
    case VerifyCheck::NotOneOf: {
        const QStringList choices = value.split(QLatin1Char('|'));
        for (const QString &choice : choices) {
            addTest(ComparisonOperator::Equal, choice, datePattern, caseSensitive);
        }
        return;
    }
    case VerifyCheck::LengthAtLeast:
    case VerifyCheck::LengthAtMost:
    case VerifyCheck::LengthEqual: {
        const auto length = VerifyRules::wholeValue(value);
        m_isValid = length.has_value();
        m_length = length.value_or(0);
        return;
    }
    default:
        addTest(comparisonOf(m_check), value, datePattern, caseSensitive);
    }
}

void CellRule::addTest(ComparisonOperator op, const QString &value, const QString &datePattern,
                       bool caseSensitive)
{
    m_tests.emplace_back(op, datePattern, caseSensitive);
    m_tests.back().setValue(value);
}

bool CellRule::passes(std::string_view cell) const
{
    if (m_check == VerifyCheck::NotEmpty || m_check == VerifyCheck::Empty) {
        return cell.empty() == (m_check == VerifyCheck::Empty);
    }
    if (cell.empty()) {
        return true;
    }
    switch (m_check) {
    case VerifyCheck::Number:
        return isNumber(cell);
    case VerifyCheck::WholeNumber:
        return isWholeNumber(cell);
    case VerifyCheck::Boolean:
        return isBoolean(cell);
    case VerifyCheck::Date:
    case VerifyCheck::DateInFormat:
        return isDate(cell);
    case VerifyCheck::NotInFuture:
        return isDate(cell) && m_pattern->read(cell) <= m_today;
    case VerifyCheck::Text:
        return !isNumber(cell) && !isBoolean(cell) && !isDate(cell);
    case VerifyCheck::OneOf:
        return holdsAny(cell);
    case VerifyCheck::NotOneOf:
        return !holdsAny(cell);
    case VerifyCheck::CheckDigit:
        return passesCheckDigit(cell);
    default:
        break;
    }
    if (m_check >= VerifyCheck::MatchesRegex && m_check <= VerifyCheck::Url) {
        return passesText(Utf8::decoded(cell));
    }
    return holdsAll(cell);
}

bool CellRule::isDate(std::string_view cell) const
{
    return m_pattern && m_pattern->read(cell).isValid();
}

bool CellRule::holdsAny(std::string_view cell) const
{
    return std::any_of(m_tests.begin(), m_tests.end(),
                       [&](const CellTest &test) { return test.holds(cell); });
}

bool CellRule::holdsAll(std::string_view cell) const
{
    return std::all_of(m_tests.begin(), m_tests.end(),
                       [&](const CellTest &test) { return test.holds(cell); });
}

bool CellRule::passesText(const QString &text) const
{
    switch (m_check) {
    case VerifyCheck::LengthAtLeast:
        return CodePoints::count(text) >= m_length;
    case VerifyCheck::LengthAtMost:
        return CodePoints::count(text) <= m_length;
    case VerifyCheck::LengthEqual:
        return CodePoints::count(text) == m_length;
    case VerifyCheck::NoOuterWhitespace:
        return !text.front().isSpace() && !text.back().isSpace();
    case VerifyCheck::UpperCase:
        return text == text.toUpper();
    case VerifyCheck::LowerCase:
        return text == text.toLower();
    case VerifyCheck::EmailAddress:
        return isEmailAddress(text);
    case VerifyCheck::Url:
        return isUrl(text);
    default:
        return passesRegex(text);
    }
}

bool CellRule::passesRegex(const QString &text) const
{
    const QRegularExpressionMatch match = m_regex.match(text);
    if (!match.isValid()) {
        ++m_regexFailures;
        return false;
    }
    return match.hasMatch() == (m_check == VerifyCheck::MatchesRegex);
}
