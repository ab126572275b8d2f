#include "calculation.h"

#include "columnnumbers.h"
#include "dateformats.h"
#include "messages.h"
#include "numbertext.h"
#include "texts.h"
#include "transformsettings.h"
#include "utf8.h"
#include "valueinterpretation.h"
#include "writtendates.h"

#include <QCoreApplication>
#include <QVariant>
#include <cmath>

namespace {

using Operand = CalculationOperand;
using Operation = CalculationOperation;
using State = CalculationOperand::State;
using Takes = CalculationOperation::Takes;

QString translated(const char *text)
{
    return QCoreApplication::translate("Calculate", text);
}

/// Makes operands of texts.
class OperandReader
{
public:
    /// A text typed by the user may have any of the date formats, one of a column only its own.
    OperandReader(const Operation &operation, Takes takes, const QString &dateFormat, bool isTyped)
        : m_takes(takes)
        , m_emptiesAreText(operation.empties == Operation::Empties::AreText)
        , m_dateFormat(dateFormat)
        , m_pattern(dateFormat)
        , m_isTyped(isTyped)
    {
    }

    Operand read(const QString &text) const
    {
        Operand operand;
        operand.text = text;
        operand.dateFormat = m_dateFormat;
        if (text.isEmpty() && !m_emptiesAreText) {
            return operand;
        }
        operand.state = readInto(&operand) ? State::Readable : State::Unreadable;
        return operand;
    }

private:
    bool readInto(Operand *operand) const
    {
        bool ok = false;
        switch (m_takes) {
        case Takes::Number:
            operand->number = m_numbers.toReal(operand->text, false, true, &ok);
            return ok;
        case Takes::Integer:
            return readInteger(operand);
        case Takes::Truth:
            operand->truth = toBoolean(operand->text, true, true, &ok);
            return ok;
        case Takes::Date:
            operand->date = m_dateFormat.isEmpty() ? QDate() : m_pattern.read(operand->text);
            if (!operand->date.isValid() && m_isTyped) {
                operand->date = toDate(operand->text, TransformSettings::current().dateFormats);
            }
            return operand->date.isValid();
        case Takes::Time:
            operand->time = toTime(operand->text);
            return operand->time.isValid();
        case Takes::Text:
        case Takes::Nothing:
            break;
        }
        return true;
    }

    /// Whole numbers, however they are written: 1e3 too.
    bool readInteger(Operand *operand) const
    {
        constexpr double mostExact = 9007199254740992.0;
        bool ok = false;
        operand->integer = m_numbers.toInteger64(operand->text, false, true, &ok);
        if (ok) {
            return true;
        }
        const double number = m_numbers.toReal(operand->text, false, true, &ok);
        if (!ok || number != std::floor(number) || std::fabs(number) > mostExact) {
            return false;
        }
        operand->integer = qint64(number);
        return true;
    }

    Takes m_takes;
    bool m_emptiesAreText;
    QString m_dateFormat;
    DatePattern m_pattern;
    bool m_isTyped;
    NumberReader m_numbers;
};

class ColumnOperands final : public OperandSource
{
public:
    ColumnOperands(const OperandReader &reader, Takes takes, const Dataset &table, ColIndex column)
        : m_reader(reader)
        , m_takes(takes)
        , m_cells(table.columnReader(column))
        , m_columnName(table.columnName(column))
    {
        if (m_cells.isPooled()) {
            m_known.resize(m_cells.codeCount());
            m_isKnown.resize(m_cells.codeCount());
        }
    }

    const Operand &at(int row) override
    {
        const ColumnReader::Code code = m_cells.code(row);
        if (m_known.empty()) {
            m_operand = m_reader.read(m_cells.textOfCode(code));
            return m_operand;
        }
        if (!m_isKnown[code]) {
            m_known[code] = m_reader.read(m_cells.textOfCode(code));
            m_isKnown[code] = true;
        }
        return m_known[code];
    }
    bool isConstant() const override { return false; }
    QString unreadableText(qint64 count) const override
    {
        const char *text =
            QT_TRANSLATE_NOOP("Calculate", "%1 non-numeric value(s) ignored in column '%2'.");
        switch (m_takes) {
        case Takes::Integer:
            text =
                QT_TRANSLATE_NOOP("Calculate", "%1 value(s) in column '%2' are not whole numbers.");
            break;
        case Takes::Truth:
            text = QT_TRANSLATE_NOOP("Calculate",
                                     "%1 value(s) not recognised as true or false in column '%2'.");
            break;
        case Takes::Date:
            text = QT_TRANSLATE_NOOP("Calculate",
                                     "%1 value(s) not recognised as dates in column '%2'.");
            break;
        case Takes::Time:
            text = QT_TRANSLATE_NOOP("Calculate",
                                     "%1 value(s) not recognised as times in column '%2'.");
            break;
        default:
            break;
        }
        return translated(text).arg(Texts::count(count), m_columnName);
    }

private:
    OperandReader m_reader;
    Takes m_takes;
    ColumnReader m_cells;
    QString m_columnName;
    Operand m_operand;
    std::vector<Operand> m_known; // by code
    std::vector<bool> m_isKnown;
};

/// A text typed by the user, which may hold values of the row.
class TypedOperand final : public OperandSource
{
public:
    TypedOperand(const OperandReader &reader, const QString &text, const Dataset &table)
        : m_reader(reader)
        , m_text(text)
        , m_template(text, table)
        , m_operand(reader.read(text))
    {
    }

    const Operand &at(int row) override
    {
        if (m_template.hasVariables()) {
            m_operand = m_reader.read(m_template.expanded(row));
        }
        return m_operand;
    }
    bool isConstant() const override { return !m_template.hasVariables(); }
    QString unreadableText(qint64 count) const override
    {
        return translated("Value 2 '%1' cannot be read in %2 row(s).")
            .arg(m_text, Texts::count(count));
    }

private:
    OperandReader m_reader;
    QString m_text;
    ColumnTemplate m_template;
    Operand m_operand;
};

/// What an operation on one value gets as its second: the day of the run.
class TodayOperand final : public OperandSource
{
public:
    TodayOperand()
    {
        m_operand.state = State::Readable;
        m_operand.date = QDate::currentDate();
    }

    const Operand &at(int) override { return m_operand; }
    bool isConstant() const override { return true; }
    QString unreadableText(qint64) const override { return QString(); }

private:
    Operand m_operand;
};

} // namespace

Calculation::Calculation(const CalculationOperation &operation, const Dataset &table,
                         ColIndex column)
    : m_operation(operation)
    , m_table(table)
    , m_cells(table.columnReader(column))
{
    const bool mayBeDates =
        operation.first == Takes::Date || (operation.first == Takes::Text && operation.isBinary());
    if (mayBeDates) {
        m_dateFormat =
            detectDateFormat(table, column, TransformSettings::current().dateFormats).pattern;
    }
    m_writtenFormat = writtenDateFormat(table, column, m_dateFormat);
    const OperandReader reader(operation, operation.first, m_dateFormat, false);
    m_first = std::make_unique<ColumnOperands>(reader, operation.first, table, column);
    m_second = std::make_unique<TodayOperand>();
}

void Calculation::setSecondColumn(ColIndex column)
{
    const QString format =
        m_operation.second == Takes::Date
            ? detectDateFormat(m_table, column, TransformSettings::current().dateFormats).pattern
            : QString();
    const OperandReader reader(m_operation, m_operation.second, format, false);
    m_second = std::make_unique<ColumnOperands>(reader, m_operation.second, m_table, column);
}

void Calculation::setSecondText(const QString &text)
{
    const OperandReader reader(m_operation, m_operation.second, m_dateFormat, true);
    m_second = std::make_unique<TypedOperand>(reader, text, m_table);
}

QString Calculation::at(int row)
{
    if (m_known.empty() && m_second->isConstant() && m_cells.isPooled()) {
        m_known.resize(m_cells.codeCount());
    }
    if (m_known.empty()) {
        const Cell cell = calculated(row);
        ++m_counts[size_t(cell.outcome)];
        return cell.text;
    }
    Cell &cell = m_known[m_cells.code(row)];
    if (cell.outcome == Outcome::Unknown) {
        cell = calculated(row);
    }
    ++m_counts[size_t(cell.outcome)];
    return cell.text;
}

Calculation::Cell Calculation::calculated(int row)
{
    const Operand *first = &m_first->at(row);
    const Operand *second = &m_second->at(row);
    if (m_operation.empties == Operation::Empties::UseOther) {
        first = first->state == State::Empty ? second : first;
        second = second->state == State::Empty ? first : second;
    }
    if (first->state == State::Empty || second->state == State::Empty) {
        return {QString(), Outcome::Empty};
    }
    if (first->state == State::Unreadable || second->state == State::Unreadable) {
        const bool isFirst = m_first->at(row).state == State::Unreadable;
        return {QString(), isFirst ? Outcome::FirstUnreadable : Outcome::SecondUnreadable};
    }
    return cellOf(m_operation.kernel(*first, *second));
}

Calculation::Cell Calculation::cellOf(const CalculationResult &result) const
{
    QString text;
    if (const double *const number = std::get_if<double>(&result)) {
        text = plainNumberText(*number);
    } else if (const qint64 *const integer = std::get_if<qint64>(&result)) {
        text = QString::number(*integer);
    } else if (const bool *const truth = std::get_if<bool>(&result)) {
        text = *truth ? QStringLiteral("true") : QStringLiteral("false");
    } else if (const QString *const words = std::get_if<QString>(&result)) {
        text = *words;
    } else if (const QDate *const date = std::get_if<QDate>(&result)) {
        text = date->toString(m_writtenFormat);
    }
    return {text, text.isEmpty() ? Outcome::Failed : Outcome::Calculated};
}

QString Calculation::status() const
{
    const auto count = [this](Outcome outcome) { return m_counts[size_t(outcome)]; };
    const qint64 failed =
        count(Outcome::Failed) + count(Outcome::FirstUnreadable) + count(Outcome::SecondUnreadable);
    return translated("%1 calculated, %2 not calculated")
        .arg(Texts::count(count(Outcome::Calculated)), Texts::count(failed));
}

void Calculation::report(Messages *messages) const
{
    const qint64 first = m_counts[size_t(Outcome::FirstUnreadable)];
    if (first > 0) {
        messages->warn(m_first->unreadableText(first));
    }
    const qint64 second = m_counts[size_t(Outcome::SecondUnreadable)];
    if (second > 0) {
        messages->warn(m_second->unreadableText(second));
    }
    NumberMessages::tellNotCalculated(m_counts[size_t(Outcome::Failed)], messages);
}
