#pragma once

#include "comparison.h"
#include "dateformats.h"

#include <QDate>
#include <QRegularExpression>
#include <QString>
#include <optional>
#include <string_view>
#include <vector>

/// What a table can be checked for. The numbers are stored in documents.
enum class VerifyCheck : qint32 {
    NotEmpty = 0,
    Empty = 1,
    Number = 2,
    WholeNumber = 3,
    Boolean = 4,
    Date = 5,
    DateInFormat = 6,
    Text = 7,
    Equal = 8,
    NotEqual = 9,
    Greater = 10,
    GreaterEqual = 11,
    Less = 12,
    LessEqual = 13,
    Between = 14,
    OneOf = 15,
    NotOneOf = 16,
    Contains = 17,
    NotContains = 18,
    StartsWith = 19,
    EndsWith = 20,
    MatchesRegex = 21,
    NotMatchesRegex = 22,
    LengthAtLeast = 23,
    LengthAtMost = 24,
    LengthEqual = 25,
    NoOuterWhitespace = 26,
    UpperCase = 27,
    LowerCase = 28,
    EmailAddress = 29,
    Url = 30,
    CheckDigit = 31,
    NotInFuture = 32,
    Unique = 33,
    Ascending = 34,
    Descending = 35,
    Constant = 36,
    SameAsColumn = 37,
    RowsAtLeast = 38,
    RowsAtMost = 39,
    ColumnsEqual = 40,
    ColumnExists = 41,
    NoDuplicateRows = 42,
    NoDuplicateNames = 43
};

namespace VerifyRules {

constexpr int count = 44;

enum class Scope { Cell, Column, Table };

/// The check of a stored number; nothing for a number that is none.
std::optional<VerifyCheck> fromNumber(int number);
/// "Is not empty".
QString label(VerifyCheck check);
bool takesValue(VerifyCheck check);
Scope scope(VerifyCheck check);
/// True when the outcome can depend on the date formats of the preferences.
bool readsDates(VerifyCheck check);
bool isRegex(VerifyCheck check);
/// The label and the value: "Length at least 3".
QString text(VerifyCheck check, const QString &value);
/// The value as a whole number that is not negative; nothing when it is none.
std::optional<int> wholeValue(const QString &value);

} // namespace VerifyRules

/// A check of single cells, made ready for the cells of one column. Cells come as UTF-8.
class CellRule
{
public:
    /// `datePattern` is the column's; empty when it has no dates. A regular expression is handed in
    /// compiled, to match whole cells.
    CellRule(VerifyCheck check, const QString &value, const QString &datePattern,
             bool caseSensitive, const QRegularExpression &regex = {});

    /// False when the value makes no sense for the check.
    bool isValid() const { return m_isValid; }
    bool passes(std::string_view cell) const;
    /// Cells on which the regular expression gave up; they fail.
    qint64 regexFailures() const { return m_regexFailures; }

private:
    void prepare(const QString &value, const QString &datePattern, bool caseSensitive);
    void addTest(ComparisonOperator op, const QString &value, const QString &datePattern,
                 bool caseSensitive);
    bool isDate(std::string_view cell) const;
    bool holdsAny(std::string_view cell) const;
    bool holdsAll(std::string_view cell) const;
    bool passesText(const QString &text) const;
    bool passesRegex(const QString &text) const;

    VerifyCheck m_check;
    bool m_isValid = true;
    std::vector<CellTest> m_tests;
    std::optional<DatePattern> m_pattern;
    QDate m_today;
    int m_length = 0;
    QRegularExpression m_regex;
    mutable qint64 m_regexFailures = 0;
};
