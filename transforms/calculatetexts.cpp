#include "calculateoperations.h"

#include "codepoints.h"
#include "comparison.h"
#include "editdistance.h"

#include <algorithm>

namespace {

using Operand = CalculationOperand;
using Operation = CalculationOperation;
using Result = CalculationResult;
using Takes = CalculationOperation::Takes;
using Op = ComparisonOperator;

Operation comparison(const char *name, const char *help, Op op)
{
    return {name,
            help,
            Takes::Text,
            Takes::Text,
            [op](const Operand &a, const Operand &b) {
                return Result(compareValue(op, a.text, b.text, a.dateFormat, true));
            },
            Operation::Empties::AreText};
}

Operation truth(const char *name, const char *help, bool (*kernel)(bool, bool))
{
    return {name, help, Takes::Truth, Takes::Truth, [kernel](const Operand &a, const Operand &b) {
                return Result(kernel(a.truth, b.truth));
            }};
}

/// A count of the text, which is 0 for an empty one.
Operation count(const char *name, const char *help, qint64 (*kernel)(const QString &))
{
    return {name,
            help,
            Takes::Text,
            Takes::Nothing,
            [kernel](const Operand &a, const Operand &) { return Result(kernel(a.text)); },
            Operation::Empties::AreText};
}

Operation texts(const char *name, const char *help,
                Result (*kernel)(const QString &, const QString &),
                Operation::Empties empties = Operation::Empties::GiveEmpty)
{
    return {name,
            help,
            Takes::Text,
            Takes::Text,
            [kernel](const Operand &a, const Operand &b) { return kernel(a.text, b.text); },
            empties};
}

qint64 wordCount(const QString &text)
{
    qint64 words = 0;
    bool inWord = false;
    for (const QChar c : text) {
        words += !c.isSpace() && !inWord ? 1 : 0;
        inWord = !c.isSpace();
    }
    return words;
}

/// A line end at the very end begins no further line.
qint64 lineCount(const QString &text)
{
    qint64 ends = 0;
    for (int i = 0; i < text.size(); ++i) {
        const bool isPair =
            i > 0 && text[i] == QLatin1Char('\n') && text[i - 1] == QLatin1Char('\r');
        ends += !isPair && (text[i] == QLatin1Char('\n') || text[i] == QLatin1Char('\r')) ? 1 : 0;
    }
    const bool isOpen =
        !text.isEmpty() && !text.endsWith(QLatin1Char('\n')) && !text.endsWith(QLatin1Char('\r'));
    return ends + (isOpen ? 1 : 0);
}

Result countOf(const QString &text, const QString &sought)
{
    qint64 number = 0;
    int at = sought.isEmpty() ? -1 : text.indexOf(sought);
    while (at >= 0) {
        ++number;
        at = text.indexOf(sought, at + sought.size());
    }
    return Result(number);
}

Result positionOf(const QString &text, const QString &sought)
{
    const int at = text.indexOf(sought);
    return Result(at < 0 ? qint64(0) : qint64(CodePoints::count(text.left(at)) + 1));
}

/// The work grows with the product of the lengths; beyond this it would take minutes.
bool areComparable(const QString &a, const QString &b)
{
    constexpr double mostWork = 1e10;
    return double(a.size()) * b.size() <= mostWork;
}

Result distance(const QString &a, const QString &b)
{
    return areComparable(a, b) ? Result(qint64(editDistance(a, b, std::max(a.size(), b.size()))))
                               : Result();
}

Result similarity(const QString &a, const QString &b)
{
    return areComparable(a, b) ? Result(qint64(std::max(0, fuzzySimilarity(a, b, 1)))) : Result();
}

} // namespace

CalculationOperations CalculateOperations::comparisons()
{
    return {
        comparison(
            "Equal",
            QT_TRANSLATE_NOOP("Calculate", "true when v1 equals v2, as dates, numbers or text"),
            Op::Equal),
        comparison("NotEqual", QT_TRANSLATE_NOOP("Calculate", "true when they differ"),
                   Op::NotEqual),
        comparison("GreaterThan", QT_TRANSLATE_NOOP("Calculate", "true when v1 is greater"),
                   Op::Greater),
        comparison("GreaterThanEqual",
                   QT_TRANSLATE_NOOP("Calculate", "true when v1 is greater or equal"),
                   Op::GreaterEqual),
        comparison("LessThan", QT_TRANSLATE_NOOP("Calculate", "true when v1 is less"), Op::Less),
        comparison("LessThanEqual", QT_TRANSLATE_NOOP("Calculate", "true when v1 is less or equal"),
                   Op::LessEqual),
    };
}

CalculationOperations CalculateOperations::logic()
{
    return {
        truth("And",
              QT_TRANSLATE_NOOP("Calculate",
                                "true when both are true; 0 is false, other numbers true"),
              [](bool a, bool b) { return a && b; }),
        truth("Or", QT_TRANSLATE_NOOP("Calculate", "true when one or both are true"),
              [](bool a, bool b) { return a || b; }),
        truth("Xor", QT_TRANSLATE_NOOP("Calculate", "true when just one is true"),
              [](bool a, bool b) { return a != b; }),
        {"Not", QT_TRANSLATE_NOOP("Calculate", "true when v1 is false"), Takes::Truth,
         Takes::Nothing, [](const Operand &a, const Operand &) { return Result(!a.truth); }},
    };
}

CalculationOperations CalculateOperations::texts()
{
    return {
        count("TextLength", QT_TRANSLATE_NOOP("Calculate", "the number of characters"),
              [](const QString &a) { return qint64(CodePoints::count(a)); }),
        count(
            "WordCount",
            QT_TRANSLATE_NOOP("Calculate", "the number of words, which are parted by white space"),
            wordCount),
        count("LineCount", QT_TRANSLATE_NOOP("Calculate", "the number of lines"), lineCount),
        ::texts("CountOf", QT_TRANSLATE_NOOP("Calculate", "how often v2 occurs in v1"), countOf,
                Operation::Empties::AreText),
        ::texts("PositionOf",
                QT_TRANSLATE_NOOP(
                    "Calculate", "where v2 begins in v1, counted from 1; 0 when it does not occur"),
                positionOf),
        ::texts("EditDistance",
                QT_TRANSLATE_NOOP("Calculate",
                                  "the least number of characters to insert, remove or change"),
                distance),
        ::texts("Similarity", QT_TRANSLATE_NOOP("Calculate", "how alike v1 and v2 are, 0 to 100"),
                similarity),
    };
}
