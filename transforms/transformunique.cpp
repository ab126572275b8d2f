#include "transformunique.h"

#include "delimitertext.h"
#include "distinctvalues.h"
#include "newcolumns.h"
#include "numbertext.h"
#include "parametervalues.h"
#include "rowgroups.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"
#include "uniqueaggregates.h"

#include <algorithm>

namespace {

struct Options
{
    const TransformOption<QList<UniqueAction>> columns{
        ParameterType::Unique, "Columns", QT_TRANSLATE_NOOP("Transform", "Columns"),
        QT_TRANSLATE_NOOP(
            "Transform",
            "What becomes of each column when the rows with the same keys become one. Without a "
            "column set to Unique nothing changes.\n\n"
            "Unique: the column is a key\n"
            "First: the value of the top row\n"
            "Last: the value of the bottom row\n"
            "Count: the number of rows\n"
            "Count non-empty: the number of values that are not empty\n"
            "Count distinct: the number of different values that are not empty\n"
            "Sum: the sum of the numbers\n"
            "Average: their mean\n"
            "Median: the one in the middle\n"
            "Minimum: the least date, number or text\n"
            "Maximum: the greatest date, number or text\n"
            "Range: the difference of the two, for dates in days\n"
            "Standard deviation: that of a sample, from two numbers on\n"
            "Mode: the most frequent value\n"
            "Concatenate: all values that are not empty, one after the other\n"
            "Concatenate distinct: the same without repeats\n"
            "Shortest: the value with the fewest characters that is not empty\n"
            "Longest: the value with the most characters\n"
            "Remove: the column is left out")};
    const TransformOption<QString> delimiter{
        ParameterType::Text, "Delimiter", QT_TRANSLATE_NOOP("Transform", "Concatenate with"),
        QT_TRANSLATE_NOOP("Transform", "What stands between concatenated values. \\t is a tab, \\n "
                                       "a line end and \\\\ a backslash."),
        QStringLiteral(",")};
    const TransformOption<bool> caseSensitive{
        ParameterType::Bool, "Case_Sensitive", QT_TRANSLATE_NOOP("Transform", "case sensitive"),
        QT_TRANSLATE_NOOP("Transform", "Check to tell capitals from small letters."), true};
    const TransformOption<bool> addCount{
        ParameterType::Bool, "Add_Count", QT_TRANSLATE_NOOP("Transform", "add count column"),
        QT_TRANSLATE_NOOP("Transform", "Check to add a column with the number of rows that each "
                                       "row stands for."),
        false};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

constexpr TransformFacts uniqueFacts =
    TransformFacts(
        66, "TransformUnique", "Unique", "Unique", TransformCategory::Row,
        QT_TRANSLATE_NOOP("Transform", "Aggregate rows with unique values in selected column(s)."))
        .words("group aggregate distinct")
        .with(TransformFacts::Advanced | TransformFacts::HasDrillDown);

} // namespace

struct TransformUnique::Settings
{
    std::vector<UniqueOperation> operations; // by column
    QString delimiter;
    bool caseSensitive = true;
    bool addCount = false;
};

TransformUnique::TransformUnique()
    : Transform(uniqueFacts)
{
}

std::unique_ptr<Transform> TransformUnique::clone() const
{
    return cloned(*this);
}

void TransformUnique::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().columns.create(inputs.value(0)));
    append(options().delimiter.create());
    append(options().caseSensitive.create());
    append(options().addCount.create());
}

bool TransformUnique::dependsOnDateFormats() const
{
    QList<UniqueAction> actions;
    options().columns.read(*this, &actions);
    return std::any_of(actions.begin(), actions.end(), [](const UniqueAction &each) {
        return UniqueOperations::isOrdering(UniqueOperations::find(each.action));
    });
}

QList<QPair<QString, int>> TransformUnique::optionalParameters() const
{
    return {{options().delimiter.key(), 0}};
}

bool TransformUnique::readSettings(const Dataset &input, Settings *settings) const
{
    QList<UniqueAction> actions;
    if (!options().columns.read(*this, &actions) ||
        !options().delimiter.read(*this, &settings->delimiter) ||
        !options().caseSensitive.read(*this, &settings->caseSensitive) ||
        !options().addCount.read(*this, &settings->addCount)) {
        return false;
    }
    settings->delimiter = delimiterFromText(settings->delimiter);
    settings->operations.assign(size_t(input.columnCount().value()), UniqueOperation::First);
    for (const UniqueAction &each : std::as_const(actions)) {
        if (each.column.isBound() && each.column.number < input.columnCount().value()) {
            settings->operations[size_t(each.column.number)] = UniqueOperations::find(each.action);
        }
    }
    return true;
}

Dataset TransformUnique::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    setStatus(Texts::noChanges());
    const Dataset &input = inputs.first();
    Settings settings;
    if (!readSettings(input, &settings)) {
        return {};
    }
    QList<ColIndex> keys;
    std::vector<ColIndex> kept;
    for (ColIndex column(0); column < input.columnCount(); ++column) {
        const UniqueOperation operation = settings.operations[size_t(column.value())];
        if (operation == UniqueOperation::Unique) {
            keys.append(column);
        }
        if (operation != UniqueOperation::Remove) {
            kept.push_back(column);
        }
    }
    if (keys.isEmpty()) {
        return input;
    }
    const Progress progress = [this](double fraction) { return report(fraction); };
    const ValueKey lower = [](const QString &value) { return value.toLower(); };
    RowGroups groups;
    if (!groups.read(input, keys, settings.caseSensitive ? ValueKey() : lower,
                     progressBetween(progress, 0.0, 0.5))) {
        return {};
    }
    RowSelection firstRows;
    for (int group = 0; group < groups.count(); ++group) {
        firstRows.push_back(*groups.rows(group).begin());
    }
    Dataset output = input.selectRows(std::move(firstRows));
    for (const ColIndex column : kept) {
        if (!aggregate(input, settings, groups, column, &output)) {
            return {};
        }
    }
    output = output.selectColumns(kept);
    if (settings.addCount) {
        const ColIndex column = NewColumns::append(&output, QString(), QStringLiteral("Count"));
        for (int group = 0; group < groups.count(); ++group) {
            output.setCell(RowIndex(group), column, plainNumberText(groups.rows(group).size()));
        }
    }
    setStatus(tr("%1 unique from %2 rows")
                  .arg(Texts::count(groups.count()), Texts::count(input.rowCount())));
    return output;
}

bool TransformUnique::aggregate(const Dataset &input, const Settings &settings,
                                const RowGroups &groups, ColIndex column, Dataset *output)
{
    UniqueAggregate::Options how;
    how.operation = settings.operations[size_t(column.value())];
    if (how.operation == UniqueOperation::Unique || how.operation == UniqueOperation::First) {
        return true;
    }
    how.delimiter = settings.delimiter;
    how.caseSensitive = settings.caseSensitive;
    const double from = 0.5 + 0.5 * column.value() / input.columnCount().value();
    const Progress progress = [this, from](double) { return report(from); };
    UniqueAggregate values(input, column, how);
    if (!values.prepare(progress)) {
        return false;
    }
    int rowsDone = 0;
    for (int group = 0; group < groups.count(); ++group) {
        const RowGroups::Rows rows = groups.rows(group);
        if (rowsDone / progressInterval != (rowsDone + rows.size()) / progressInterval &&
            !report(from)) {
            return false;
        }
        rowsDone += rows.size();
        const QString value = values.valueOf(rows);
        if (value != input.cell(RowIndex(*rows.begin()), column)) {
            output->setCell(RowIndex(group), column, value);
        }
    }
    values.report(&messages());
    return true;
}
