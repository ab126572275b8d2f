#include "transformscale.h"

#include "columnnumbers.h"
#include "numbertext.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"

#include <cmath>
#include <limits>

namespace {

enum class ScaleType {
    Unit,
    Hundred,
    Range,
    PercentOfTotal,
    PercentOfMaximum,
    ZScore,
    Mean,
    Factor
};

constexpr double largest = 1e15;

struct Options
{
    const TransformOption<QList<ColIndex>> columns{
        ParameterType::MultipleColumns, "Columns", QT_TRANSLATE_NOOP("Transform", "Columns"),
        QT_TRANSLATE_NOOP("Transform", "The columns whose numbers are scaled. Other values are "
                                       "left as they are.")};
    const TransformOption<int> type =
        TransformOption<int>(
            ParameterType::Selection, "Type", QT_TRANSLATE_NOOP("Transform", "Scale to"),
            QT_TRANSLATE_NOOP(
                "Transform", "What the numbers become.\n\n"
                             "0 to 1: the least becomes 0, the greatest 1\n"
                             "0 to 100: the least becomes 0, the greatest 100\n"
                             "Range: the least becomes Minimum, the greatest Maximum\n"
                             "Percent of total: the share of the sum, in per cent\n"
                             "Percent of maximum: the share of the greatest, in per cent\n"
                             "Z-score: the distance from the mean in (sample) standard deviations\n"
                             "Mean of 1: divided by the mean\n"
                             "Multiply by: multiplied by Factor\n\n"
                             "When all numbers are equal, the first three and Z-score give 0."))
            .choices({"0 to 1", "0 to 100", "Range", "Percent of total", "Percent of maximum",
                      "Z-score", "Mean of 1", "Multiply by"});
    const TransformOption<double> minimum =
        TransformOption<double>(ParameterType::Real, "Minimum",
                                QT_TRANSLATE_NOOP("Transform", "Minimum"),
                                QT_TRANSLATE_NOOP("Transform", "What the least number becomes."), 0)
            .range(-largest, largest);
    const TransformOption<double> maximum =
        TransformOption<double>(
            ParameterType::Real, "Maximum", QT_TRANSLATE_NOOP("Transform", "Maximum"),
            QT_TRANSLATE_NOOP("Transform", "What the greatest number becomes."), 1)
            .range(-largest, largest);
    const TransformOption<double> factor =
        TransformOption<double>(
            ParameterType::Real, "Factor", QT_TRANSLATE_NOOP("Transform", "Factor"),
            QT_TRANSLATE_NOOP("Transform", "What the numbers are multiplied by."), 1)
            .range(-largest, largest);
    const TransformOption<bool> together{
        ParameterType::Bool, "Together",
        QT_TRANSLATE_NOOP("Transform", "scale all columns together"),
        QT_TRANSLATE_NOOP("Transform", "Check to take least, greatest, sum and mean over all the "
                                       "columns instead of for each column."),
        false};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

struct Settings
{
    ScaleType type = ScaleType::Unit;
    double minimum = 0;
    double maximum = 1;
    double factor = 1;
    bool together = false;

    bool read(const Transform &transform)
    {
        int choice = 0;
        const bool ok = options().type.read(transform, &choice) &&
                        options().minimum.read(transform, &minimum) &&
                        options().maximum.read(transform, &maximum) &&
                        options().factor.read(transform, &factor) &&
                        options().together.read(transform, &together);
        type = ScaleType(choice);
        return ok;
    }
};

} // namespace

/// What the numbers of a column come to, added up one by one.
struct NumberStatistics
{
    void add(double number)
    {
        minimum = qMin(minimum, number);
        maximum = qMax(maximum, number);
        sum += number;
        ++count;
        const long double delta = number - runningMean;
        runningMean += delta / count;
        squares += delta * (number - runningMean);
    }
    double mean() const { return double(sum / count); }
    double deviation() const { return count > 1 ? double(std::sqrt(squares / (count - 1))) : 0.0; }

    double minimum = std::numeric_limits<double>::infinity();
    double maximum = -std::numeric_limits<double>::infinity();
    long double sum = 0;
    long double runningMean = 0;
    long double squares = 0;
    qint64 count = 0;
};

/// The new value of each number of a column.
class Scaler
{
public:
    Scaler(const Settings &settings, const NumberStatistics &numbers)
        : m_settings(settings)
        , m_numbers(numbers)
    {
    }

    /// True when every number would have to be divided by 0.
    bool dividesByZero() const
    {
        switch (m_settings.type) {
        case ScaleType::PercentOfTotal:
        case ScaleType::Mean:
            return m_numbers.sum == 0;
        case ScaleType::PercentOfMaximum:
            return m_numbers.maximum == 0;
        default:
            return false;
        }
    }

    double scaled(double number) const
    {
        const bool isConstant = m_numbers.minimum == m_numbers.maximum;
        switch (m_settings.type) {
        case ScaleType::Unit:
            return isConstant ? 0 : share(number);
        case ScaleType::Hundred:
            return isConstant ? 0 : 100 * share(number);
        case ScaleType::Range:
            return isConstant ? 0
                              : m_settings.minimum +
                                    share(number) * (m_settings.maximum - m_settings.minimum);
        case ScaleType::PercentOfTotal:
            return 100 * number / double(m_numbers.sum);
        case ScaleType::PercentOfMaximum:
            return 100 * number / m_numbers.maximum;
        case ScaleType::ZScore:
            return isConstant ? 0 : (number - m_numbers.mean()) / m_numbers.deviation();
        case ScaleType::Mean:
            return number / m_numbers.mean();
        case ScaleType::Factor:
            break;
        }
        return number * m_settings.factor;
    }

private:
    double share(double number) const
    {
        return (number - m_numbers.minimum) / (m_numbers.maximum - m_numbers.minimum);
    }

    const Settings &m_settings;
    const NumberStatistics &m_numbers;
};

namespace {

/// The cells of a column whose number has no scaled value.
qint64 failuresOf(const Dataset &table, ColIndex column, const Scaler &scaler)
{
    ColumnNumbers cells(table, column);
    qint64 failures = 0;
    for (int row = 0; row < table.rowCount(); ++row) {
        double number = 0;
        if (cells.at(row, &number) == ColumnNumbers::Kind::Number &&
            (scaler.dividesByZero() || !std::isfinite(scaler.scaled(number)))) {
            ++failures;
        }
    }
    return failures;
}

constexpr TransformFacts scaleFacts =
    TransformFacts(
        48, "TransformScale", "Scale", "Scale", TransformCategory::Format,
        QT_TRANSLATE_NOOP("Transform", "Scale numeric values, e.g. to a percentage or 0 to 1."))
        .words("normalise standardise z-score percent")
        .with(TransformFacts::Advanced | TransformFacts::EditsInPlace |
              TransformFacts::DependentParameters);

} // namespace

TransformScale::TransformScale()
    : InPlaceTransform(scaleFacts)
{
}

std::unique_ptr<Transform> TransformScale::clone() const
{
    return cloned(*this);
}

void TransformScale::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().columns.create(inputs.value(0)));
    append(options().type.create());
    append(options().minimum.create());
    append(options().maximum.create());
    append(options().factor.create());
    append(options().together.create());
}

bool TransformScale::isParameterShown(const TransformParameter &shown) const
{
    int type = 0;
    options().type.read(*this, &type);
    if (shown.key == options().minimum.key() || shown.key == options().maximum.key()) {
        return ScaleType(type) == ScaleType::Range;
    }
    return shown.key != options().factor.key() || ScaleType(type) == ScaleType::Factor;
}

Dataset TransformScale::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    setStatus(Texts::noChanges());
    const Dataset &input = inputs.first();
    QList<ColIndex> columns;
    Settings settings;
    if (!options().columns.read(*this, input, &columns) || !settings.read(*this)) {
        return {};
    }
    const auto numbers = statistics(input, columns, settings.together);
    if (!numbers) {
        return {};
    }
    const NumberReader reader;
    qint64 failures = 0;
    const auto functionFor = [&](ColIndex column) -> CellFunction {
        const Scaler scaler(settings, (*numbers)[size_t(columns.indexOf(column))]);
        failures += failuresOf(input, column, scaler);
        return [scaler, &reader](const QString &value) {
            bool ok = false;
            const double number = reader.toReal(value, false, true, &ok);
            return ok && !scaler.dividesByZero() ? plainNumberText(scaler.scaled(number)) : value;
        };
    };
    Dataset output = mapColumns(input, columns, functionFor);
    NumberMessages::tellNotCalculated(failures, &messages());
    return output;
}

std::optional<std::vector<NumberStatistics>>
TransformScale::statistics(const Dataset &input, const QList<ColIndex> &columns, bool together)
{
    std::vector<NumberStatistics> list{size_t(columns.size())};
    for (int i = 0; i < columns.size(); ++i) {
        ColumnNumbers cells(input, columns[i]);
        NumberStatistics &numbers = list[together ? 0 : size_t(i)];
        qint64 ignored = 0;
        for (int row = 0; row < input.rowCount(); ++row) {
            if (!reportRow(row, input.rowCount())) {
                return std::nullopt;
            }
            double number = 0;
            const ColumnNumbers::Kind kind = cells.at(row, &number);
            if (kind == ColumnNumbers::Kind::Number) {
                numbers.add(number);
            }
            ignored += kind == ColumnNumbers::Kind::Other ? 1 : 0;
        }
        NumberMessages::tellIgnored(ignored, input.columnName(columns[i]), &messages());
    }
    if (together && !list.empty()) {
        list.assign(list.size(), NumberStatistics(list.front()));
    }
    return list;
}
