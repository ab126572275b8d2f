#include "uniqueaggregates.h"

#include "codepoints.h"
#include "messages.h"
#include "numbertext.h"
#include "texts.h"

#include <QCoreApplication>
#include <algorithm>
#include <cmath>
#include <utility>

namespace {

double medianOf(std::vector<double> *numbers)
{
    const auto middle = numbers->begin() + std::ptrdiff_t(numbers->size() / 2);
    std::nth_element(numbers->begin(), middle, numbers->end());
    if (numbers->size() % 2 == 1) {
        return *middle;
    }
    return (*std::max_element(numbers->begin(), middle) + *middle) / 2;
}

long double sumOf(const std::vector<double> &numbers)
{
    long double sum = 0;
    for (const double number : numbers) {
        sum += number;
    }
    return sum;
}

double deviationOf(const std::vector<double> &numbers)
{
    const long double mean = sumOf(numbers) / numbers.size();
    long double squares = 0;
    for (const double number : numbers) {
        squares += (number - mean) * (number - mean);
    }
    return double(std::sqrt(squares / (numbers.size() - 1)));
}

} // namespace

const QStringList &UniqueOperations::names()
{
    static const QStringList list =
        QStringLiteral("Unique|First|Last|Count|Count non-empty|Count distinct|Sum|Average|Median|"
                       "Minimum|Maximum|Range|Standard deviation|Mode|Concatenate|"
                       "Concatenate distinct|Shortest|Longest|Remove")
            .split(QLatin1Char('|'));
    return list;
}

UniqueOperation UniqueOperations::find(const QString &name)
{
    const int number = names().indexOf(name);
    return number < 0 ? UniqueOperation::First : UniqueOperation(number);
}

bool UniqueOperations::isOrdering(UniqueOperation operation)
{
    return operation == UniqueOperation::Minimum || operation == UniqueOperation::Maximum ||
           operation == UniqueOperation::Range;
}

UniqueAggregate::UniqueAggregate(const Dataset &table, ColIndex column, const Options &options)
    : m_table(table)
    , m_column(column)
    , m_options(options)
    , m_cells(table.columnReader(column))
    , m_numbers(table, column)
{
}

bool UniqueAggregate::prepare(const Progress &progress)
{
    if (UniqueOperations::isOrdering(m_options.operation)) {
        return m_order.read(m_table, m_column, m_options.caseSensitive, progress);
    }
    if (m_options.operation == UniqueOperation::CountDistinct ||
        m_options.operation == UniqueOperation::ConcatenateDistinct ||
        m_options.operation == UniqueOperation::Mode) {
        const ValueKey lower = [](const QString &value) { return value.toLower(); };
        if (!m_values.read(m_table, m_column, m_options.caseSensitive ? ValueKey() : lower,
                           progress)) {
            return false;
        }
        m_seenIn.assign(m_values.count, 0);
        m_counts.assign(m_values.count, 0);
    }
    return true;
}

QString UniqueAggregate::valueOf(RowGroups::Rows rows)
{
    ++m_group;
    switch (m_options.operation) {
    case UniqueOperation::Unique:
    case UniqueOperation::First:
    case UniqueOperation::Remove:
        return m_cells.text(*rows.begin());
    case UniqueOperation::Last:
        return m_cells.text(*(rows.end() - 1));
    case UniqueOperation::Count:
        return plainNumberText(rows.size());
    case UniqueOperation::CountNonEmpty:
        return plainNumberText(double(std::count_if(
            rows.begin(), rows.end(), [this](qint32 row) { return !m_cells.utf8(row).empty(); })));
    case UniqueOperation::CountDistinct:
        return plainNumberText(distinctCount(rows));
    case UniqueOperation::Minimum:
    case UniqueOperation::Maximum:
    case UniqueOperation::Range:
        return orderedValue(rows);
    case UniqueOperation::Mode:
        return mostFrequent(rows);
    case UniqueOperation::Concatenate:
    case UniqueOperation::ConcatenateDistinct:
        return concatenated(rows);
    case UniqueOperation::Shortest:
    case UniqueOperation::Longest:
        return pickedValue(rows);
    default:
        return numericValue(rows);
    }
}

QString UniqueAggregate::orderedValue(RowGroups::Rows rows) const
{
    qint32 least = -1;
    qint32 greatest = -1;
    for (const qint32 row : rows) {
        if (!m_order.hasPlace(row)) {
            continue;
        }
        if (least < 0 || m_order.place(row) < m_order.place(least)) {
            least = row;
        }
        if (greatest < 0 || m_order.place(row) > m_order.place(greatest)) {
            greatest = row;
        }
    }
    if (least < 0) {
        return QString();
    }
    if (m_options.operation == UniqueOperation::Range) {
        return m_order.kind() == ColumnOrder::Kind::Texts
                   ? QString()
                   : plainNumberText(m_order.place(greatest) - m_order.place(least));
    }
    const qint32 row = m_options.operation == UniqueOperation::Minimum ? least : greatest;
    return m_order.kind() == ColumnOrder::Kind::Numbers ? plainNumberText(m_order.place(row))
                                                        : m_cells.text(row);
}

QString UniqueAggregate::numericValue(RowGroups::Rows rows)
{
    std::vector<double> &numbers = m_scratch;
    numbers.clear();
    for (const qint32 row : rows) {
        double number = 0;
        const ColumnNumbers::Kind kind = m_numbers.at(row, &number);
        if (kind == ColumnNumbers::Kind::Number) {
            numbers.push_back(number);
        }
        m_ignored += kind == ColumnNumbers::Kind::Other ? 1 : 0;
    }
    if (m_options.operation == UniqueOperation::Sum) {
        return written(double(sumOf(numbers)));
    }
    const size_t least = m_options.operation == UniqueOperation::StandardDeviation ? 2 : 1;
    if (numbers.size() < least) {
        return QString();
    }
    switch (m_options.operation) {
    case UniqueOperation::Average:
        return written(double(sumOf(numbers) / numbers.size()));
    case UniqueOperation::Median:
        return written(medianOf(&numbers));
    default:
        return written(deviationOf(numbers));
    }
}

QString UniqueAggregate::written(double number)
{
    m_failures += std::isfinite(number) ? 0 : 1;
    return plainNumberText(number);
}

QString UniqueAggregate::pickedValue(RowGroups::Rows rows) const
{
    QString best;
    int bestSize = 0;
    for (const qint32 row : rows) {
        const QString value = m_cells.text(row);
        const int size = CodePoints::count(value);
        const bool isBetter =
            m_options.operation == UniqueOperation::Shortest ? size < bestSize : size > bestSize;
        if (size > 0 && (bestSize == 0 || isBetter)) {
            best = value;
            bestSize = size;
        }
    }
    return best;
}

bool UniqueAggregate::isNewInGroup(qint32 row)
{
    qint32 &seen = m_seenIn[m_values.ofRow[size_t(row)]];
    return std::exchange(seen, m_group) != m_group;
}

int UniqueAggregate::distinctCount(RowGroups::Rows rows)
{
    return int(std::count_if(rows.begin(), rows.end(), [this](qint32 row) {
        return !m_cells.utf8(row).empty() && isNewInGroup(row);
    }));
}

QString UniqueAggregate::mostFrequent(RowGroups::Rows rows)
{
    qint32 most = 0;
    for (const qint32 row : rows) {
        if (!m_cells.utf8(row).empty()) {
            qint32 &count = m_counts[m_values.ofRow[size_t(row)]];
            count = isNewInGroup(row) ? 1 : count + 1;
            most = std::max(most, count);
        }
    }
    for (const qint32 row : rows) {
        if (!m_cells.utf8(row).empty() && m_counts[m_values.ofRow[size_t(row)]] == most) {
            return m_cells.text(row);
        }
    }
    return QString();
}

QString UniqueAggregate::concatenated(RowGroups::Rows rows)
{
    const bool onlyDistinct = m_options.operation == UniqueOperation::ConcatenateDistinct;
    QString result;
    bool isFirst = true;
    for (const qint32 row : rows) {
        if (m_cells.utf8(row).empty() || (onlyDistinct && !isNewInGroup(row))) {
            continue;
        }
        if (!std::exchange(isFirst, false)) {
            result += m_options.delimiter;
        }
        result += m_cells.text(row);
    }
    return result;
}

void UniqueAggregate::report(Messages *messages) const
{
    const bool areDates = UniqueOperations::isOrdering(m_options.operation) &&
                          m_order.kind() == ColumnOrder::Kind::Dates;
    if (areDates && m_order.ignoredCount() > 0) {
        messages->warn(
            QCoreApplication::translate("Unique",
                                        "%1 value(s) not recognised as dates in column '%2'.")
                .arg(Texts::count(m_order.ignoredCount()), m_table.columnName(m_column)));
    } else {
        NumberMessages::tellIgnored(m_ignored + m_order.ignoredCount(),
                                    m_table.columnName(m_column), messages);
    }
    NumberMessages::tellNotCalculated(m_failures, messages);
}
