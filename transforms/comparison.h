#pragma once

#include "dateformats.h"
#include "parametervalues.h"

#include <QDate>
#include <QHash>
#include <QRegularExpression>
#include <QString>
#include <optional>
#include <string>
#include <string_view>

class NumberReader;

namespace Comparison {

constexpr int operatorCount = 21;

/// The operator of a stored number; Contains for a number that is none.
ComparisonOperator fromNumber(int number);
/// ">=  Greater than equal".
QString label(ComparisonOperator op);
/// ">=".
QString symbol(ComparisonOperator op);
/// False for the tests of emptiness.
bool takesValue(ComparisonOperator op);
/// The least similarity, in per cent, of a fuzzy operator.
int threshold(ComparisonOperator op);

} // namespace Comparison

/// One test of a cell against a value whose column variables are expanded already. Comparisons are
/// by date where the column has a date format and both sides read as dates in it, else by number
/// where both are numbers, else by text. For tests of many cells use CellTest.
bool compareValue(ComparisonOperator op, const QString &cell, const QString &value,
                  const QString &dateFormat, bool caseSensitive);

/// The same test with all that depends on the value alone done once. Takes the cells as the tables
/// hold them. Not for use by several threads.
class CellTest
{
public:
    CellTest(ComparisonOperator op, const QString &dateFormat, bool caseSensitive);

    void setValue(const QString &value);
    bool holds(std::string_view cell) const;

    /// The value as a regular expression when it is one and is invalid.
    const QRegularExpression *invalidRegex() const;
    /// Cells on which the regular expression gave up, because it needed too many steps.
    int regexFailures() const { return m_regexFailures; }

private:
    enum class Kind { Contains, StartsWith, EndsWith, Order, Regex, Fuzzy, Empty };

    bool positiveHolds(std::string_view cell) const;
    int order(std::string_view cell) const;
    int textOrder(std::string_view cell) const;
    bool orderHolds(int order) const;
    bool contains(std::string_view cell) const;
    bool startsWith(std::string_view cell) const;
    bool endsWith(std::string_view cell) const;
    bool matches(std::string_view cell) const;
    /// True when both sides may be compared byte by byte, the value as `m_bytes`.
    bool comparesBytes(std::string_view cell) const;
    Qt::CaseSensitivity sensitivity() const;

    ComparisonOperator m_op;
    Kind m_kind;
    bool m_isNegated = false;
    bool m_caseSensitive;
    std::optional<DatePattern> m_pattern;
    const NumberReader &m_numbers;

    QString m_value;
    /// The value in UTF-8, in lower case when case does not count and all of it is ASCII.
    std::string m_bytes;
    bool m_valueIsAscii = false;
    bool m_valueHasSurrogates = false;
    QDate m_date;
    double m_number = 0;
    bool m_isNumber = false;
    QRegularExpression m_regex;
    QHash<QString, QRegularExpression> m_regexes;
    mutable std::string m_folded;
    mutable int m_regexFailures = 0;
};
