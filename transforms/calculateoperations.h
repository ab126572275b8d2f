#pragma once

#include <QDate>
#include <QString>
#include <QTime>
#include <functional>
#include <variant>
#include <vector>

/// One of the two values that a calculation works on. Which of the fields is set depends on what
/// the operation takes; the text is always.
struct CalculationOperand
{
    enum class State : quint8 { Empty, Unreadable, Readable };

    QString text;
    /// The date pattern of the column; empty when there is none.
    QString dateFormat;
    double number = 0;
    qint64 integer = 0;
    QDate date;
    QTime time;
    bool truth = false;
    State state = State::Empty;
};

/// Nothing, NaN, an infinity and an invalid date stand for a result that there is not.
using CalculationResult = std::variant<std::monostate, double, qint64, bool, QString, QDate>;

/// An operation that makes a new value of one or two values.
struct CalculationOperation
{
    enum class Takes : quint8 { Nothing, Number, Integer, Truth, Text, Date, Time };
    enum class Empties : quint8 {
        GiveEmpty, ///< an empty operand gives an empty result
        UseOther,  ///< the other operand takes the place of an empty one
        AreText    ///< an empty operand is a text like others
    };
    using Kernel =
        std::function<CalculationResult(const CalculationOperand &, const CalculationOperand &)>;

    bool isBinary() const { return second != Takes::Nothing; }

    /// Stored in documents.
    const char *name;
    /// Marked for translation in the context "Calculate", as is the help.
    const char *help;
    Takes first;
    Takes second;
    /// Gets operands that can be read. For an operation on one date, the date of the second operand
    /// is the day of the run.
    Kernel kernel;
    Empties empties = Empties::GiveEmpty;
    const char *group = "";
};

using CalculationOperations = std::vector<CalculationOperation>;

/// All operations, group by group, and the groups one by one.
namespace CalculateOperations {

const CalculationOperations &all();

CalculationOperations arithmetic();
CalculationOperations rounding();
CalculationOperations logarithms();
CalculationOperations trigonometry();
CalculationOperations bits();
CalculationOperations comparisons();
CalculationOperations logic();
CalculationOperations texts();
CalculationOperations dateToNumber();
CalculationOperations dateToText();
CalculationOperations toDate();
CalculationOperations betweenDates();
CalculationOperations times();

} // namespace CalculateOperations
