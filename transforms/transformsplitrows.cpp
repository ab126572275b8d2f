#include "transformsplitrows.h"

#include "columnparts.h"
#include "delimitertext.h"
#include "distinctvalues.h"
#include "newcolumns.h"
#include "numbertext.h"
#include "rowlimit.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"
#include "utf8.h"
#include "valueparts.h"

#include <algorithm>
#include <limits>

namespace {

struct Options
{
    const TransformOption<SplitRowsSpec> columns{
        ParameterType::SplitRows, "Columns", QT_TRANSLATE_NOOP("Transform", "Split columns"),
        QT_TRANSLATE_NOOP(
            "Transform",
            "Which columns go under each other. Each row becomes one row for each part; the other "
            "columns repeat.\n\n"
            "Every so many columns: the first part begins at the chosen column, the next parts "
            "follow it\n"
            "Automatically by column names: columns whose names differ only in their numbers, such "
            "as Item1 and Item2, in the order of the numbers\n"
            "By matching column names: columns of the same name")};
    const TransformOption<QList<ColIndex>> valueColumns{
        ParameterType::MultipleColumns, "Value_Columns",
        QT_TRANSLATE_NOOP("Transform", "Split values in"),
        QT_TRANSLATE_NOOP("Transform",
                          "Columns whose values are cut at the delimiter, with a row for each "
                          "part. Several columns are cut side by side.")};
    const TransformOption<QString> delimiter{
        ParameterType::Text, "Delimiter", QT_TRANSLATE_NOOP("Transform", "Delimiter"),
        QT_TRANSLATE_NOOP("Transform", "What stands between the parts of a value. \\t is a tab, "
                                       "\\n a line end and \\\\ a backslash."),
        QStringLiteral(",")};
    const TransformOption<bool> trim{
        ParameterType::Bool, "Trim", QT_TRANSLATE_NOOP("Transform", "trim whitespace"),
        QT_TRANSLATE_NOOP("Transform",
                          "Check to remove leading and trailing whitespace of the parts."),
        true};
    const TransformOption<bool> ignoreEmpty{
        ParameterType::Bool, "Ignore_Empty", QT_TRANSLATE_NOOP("Transform", "ignore empty rows"),
        QT_TRANSLATE_NOOP("Transform",
                          "Check to leave out rows in which all split cells are empty. At least "
                          "one row stays of each."),
        true};
    const TransformOption<bool> addNumber{
        ParameterType::Bool, "Add_Number", QT_TRANSLATE_NOOP("Transform", "add number column"),
        QT_TRANSLATE_NOOP("Transform",
                          "Check to add a column with the number of the part, counted from 1."),
        false};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

constexpr TransformFacts splitRowsFacts =
    TransformFacts(54, "TransformSplitRows", "Split Rows", "Split_Rows", TransformCategory::Row,
                   QT_TRANSLATE_NOOP("Transform", "Split each row into multiple rows."))
        .words("explode unpivot repeat")
        .with(TransformFacts::Advanced | TransformFacts::DateFormats);

constexpr qint32 noRow = -1;

/// The columns of every part as a table to be put under the others.
std::vector<StackedTable> stackedParts(const ColumnParts &parts, const Dataset &input)
{
    std::vector<StackedTable> tables(parts.groups.front().columns.size());
    for (size_t part = 0; part < tables.size(); ++part) {
        tables[part].table = input;
        for (const ColumnParts::Group &group : parts.groups) {
            tables[part].columns.push_back(part < group.columns.size() ? group.columns[part]
                                                                       : ColIndex());
        }
    }
    return tables;
}

/// Tells which parts of a row are empty.
class PartCells
{
public:
    explicit PartCells(const std::vector<StackedTable> &tables)
    {
        for (const StackedTable &each : tables) {
            m_cells.emplace_back();
            for (const ColIndex column : each.columns) {
                if (column.isValid()) {
                    m_cells.back().push_back(each.table.columnReader(column));
                }
            }
        }
    }

    bool isEmpty(int row, int part) const
    {
        const std::vector<ColumnReader> &cells = m_cells[size_t(part)];
        return std::all_of(cells.begin(), cells.end(), [row](const ColumnReader &each) {
            return each.code(row) == ValuePool::emptyCode;
        });
    }

private:
    std::vector<std::vector<ColumnReader>> m_cells; // by part
};

/// Which columns the result has: those of the input, and behind them one for each group. A group
/// stands where the first of its columns stood.
struct Layout
{
    std::vector<ColIndex> chosen;
    QStringList names;
    std::vector<ColIndex> columnOfInput; // where each column of the input went
};

Layout layoutOf(const ColumnParts &parts, const Dataset &input)
{
    const int columnCount = input.columnCount().value();
    std::vector<int> groupOf;
    groupOf.resize(size_t(columnCount), -1);
    for (size_t g = 0; g < parts.groups.size(); ++g) {
        for (const ColIndex column : parts.groups[g].columns) {
            if (column.isValid()) {
                groupOf[size_t(column.value())] = int(g);
            }
        }
    }
    Layout layout;
    layout.columnOfInput.resize(size_t(columnCount));
    std::vector<ColIndex> places(parts.groups.size());
    for (ColIndex column(0); column < input.columnCount(); ++column) {
        const int g = groupOf[size_t(column.value())];
        const ColIndex place(int(layout.chosen.size()));
        if (g < 0) {
            layout.chosen.push_back(column);
            layout.names.append(input.columnName(column));
            layout.columnOfInput[size_t(column.value())] = place;
        } else if (parts.groups[size_t(g)].place == column) {
            layout.chosen.push_back(ColIndex(columnCount + g));
            layout.names.append(parts.groups[size_t(g)].name);
            places[size_t(g)] = place;
        }
    }
    for (size_t column = 0; column < groupOf.size(); ++column) {
        if (groupOf[column] >= 0) {
            layout.columnOfInput[column] = places[size_t(groupOf[column])];
        }
    }
    return layout;
}

} // namespace

struct TransformSplitRows::Settings
{
    SplitRowsSpec columns;
    QList<ColIndex> valueColumns;
    QString delimiter;
    bool trim = true;
    bool ignoreEmpty = true;
    bool addNumber = false;
};

/// The work done so far.
struct TransformSplitRows::Split
{
    Dataset table;
    /// Input row and number of the part (counted from 0) of each row; empty: nothing was split.
    RowSelection sources;
    std::vector<qint32> numbers;
    /// The column of the table that each column of the input went to.
    std::vector<ColIndex> columnOfInput;
};

TransformSplitRows::TransformSplitRows()
    : Transform(splitRowsFacts)
{
}

std::unique_ptr<Transform> TransformSplitRows::clone() const
{
    return cloned(*this);
}

void TransformSplitRows::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().columns.create(inputs.value(0)));
    append(options().valueColumns.create(inputs.value(0)));
    append(options().delimiter.create());
    append(options().trim.create());
    append(options().ignoreEmpty.create());
    append(options().addNumber.create());
}

QList<QPair<QString, int>> TransformSplitRows::optionalParameters() const
{
    return {{options().valueColumns.key(), 0}, {options().delimiter.key(), 0}};
}

bool TransformSplitRows::readSettings(const Dataset &input, Settings *settings) const
{
    return options().columns.read(*this, &settings->columns) &&
           options().valueColumns.read(*this, input, &settings->valueColumns) &&
           options().delimiter.read(*this, &settings->delimiter) &&
           options().trim.read(*this, &settings->trim) &&
           options().ignoreEmpty.read(*this, &settings->ignoreEmpty) &&
           options().addNumber.read(*this, &settings->addNumber);
}

Dataset TransformSplitRows::execute(const QList<Dataset> &inputs)
{
    Settings settings;
    if (inputs.size() != 1 || !readSettings(inputs.first(), &settings)) {
        return {};
    }
    const Dataset &input = inputs.first();
    setStatus(Texts::noChanges());
    const ColumnParts parts = findColumnParts(settings.columns, input);
    Split split;
    split.table = input;
    for (ColIndex column(0); column < input.columnCount(); ++column) {
        split.columnOfInput.push_back(column);
    }
    if (!parts.isEmpty() && !splitColumns(parts, settings.ignoreEmpty, &split)) {
        return {};
    }
    QList<ColIndex> valueColumns;
    for (const ColIndex column : std::as_const(settings.valueColumns)) {
        const ColIndex place = split.columnOfInput[size_t(column.value())];
        if (!valueColumns.contains(place)) {
            valueColumns.append(place);
        }
    }
    if (!valueColumns.isEmpty() && !splitValues(settings, valueColumns, &split)) {
        return {};
    }
    const qint64 added = qint64(split.table.rowCount()) - input.rowCount();
    if (added > 0 || split.table.columnCount() != input.columnCount()) {
        setStatus(tr("%1 %2 added").arg(Texts::count(added), Texts::rows(added)));
    }
    if (settings.addNumber) {
        addNumbers(split, &split.table);
    }
    return split.table;
}

bool TransformSplitRows::splitColumns(const ColumnParts &parts, bool ignoreEmpty, Split *split)
{
    const Dataset input = split->table;
    if (parts.missingCells > 0) {
        messages().note(tr("%1 cell(s) of each row lie beyond the last column and are empty.")
                            .arg(Texts::count(parts.missingCells)));
    }
    const std::vector<StackedTable> tables = stackedParts(parts, input);
    const qint64 stackedCount = qint64(input.rowCount()) * qint64(tables.size());
    const qint64 leastCount =
        ignoreEmpty ? input.rowCount() : qint64(input.rowCount()) * parts.partCount;
    RowSelection stackedRows;
    if (!canHold(std::max(stackedCount, leastCount)) ||
        !chooseRows(parts, tables, ignoreEmpty, split, &stackedRows)) {
        return false;
    }
    const Dataset stacked =
        Dataset::stacked(tables, int(parts.groups.size()),
                         [this](double fraction) { return report(0.5 + 0.4 * fraction); });
    if (isStopped()) {
        return false;
    }
    const Layout layout = layoutOf(parts, input);
    split->table = Dataset::sideBySide(input.selectRows(split->sources),
                                       stacked.selectRows(std::move(stackedRows)))
                       .selectColumns(layout.chosen);
    if (input.hasHeader()) {
        split->table.setHeader(layout.names);
    }
    split->columnOfInput = layout.columnOfInput;
    return true;
}

bool TransformSplitRows::chooseRows(const ColumnParts &parts,
                                    const std::vector<StackedTable> &tables, bool ignoreEmpty,
                                    Split *split, RowSelection *stackedRows)
{
    const int rowCount = split->table.rowCount();
    const int partCount = ignoreEmpty ? int(tables.size()) : parts.partCount;
    const PartCells cells(tables);
    for (int row = 0; row < rowCount; ++row) {
        if (!reportRow(row, 2 * rowCount)) {
            return false;
        }
        const size_t before = split->sources.size();
        const auto keep = [&](int part) {
            split->sources.push_back(row);
            split->numbers.push_back(part);
            stackedRows->push_back(part < int(tables.size()) ? part * rowCount + row : noRow);
        };
        for (int part = 0; part < partCount; ++part) {
            if (!ignoreEmpty || !cells.isEmpty(row, part)) {
                keep(part);
            }
        }
        if (split->sources.size() == before) {
            keep(0);
        }
        if (row % progressInterval == 0 && !canHold(qint64(split->sources.size()))) {
            return false;
        }
    }
    return true;
}

bool TransformSplitRows::splitValues(const Settings &settings, const QList<ColIndex> &columns,
                                     Split *split)
{
    const std::string delimiter = Utf8::encoded(delimiterFromText(settings.delimiter));
    if (delimiter.empty()) {
        messages().warn(tr("No delimiter is set, so no value is split."));
        return true;
    }
    const Dataset &input = split->table;
    if (input.isEmpty()) {
        return true; // a table of parts without a row would have no column either
    }
    const Progress progress = [this](double) { return report(0.9); };
    std::vector<ValueParts> values(size_t(columns.size()));
    for (int i = 0; i < columns.size(); ++i) {
        const ValueParts::Result result =
            values[size_t(i)].cut(input, columns[i], {delimiter, settings.trim}, progress);
        if (result == ValueParts::Result::TooMany) {
            messages().fail(
                tr("Column '%1' has too many values to split.").arg(input.columnName(columns[i])));
        }
        if (result != ValueParts::Result::Cut) {
            return false;
        }
    }
    Split result;
    result.columnOfInput = split->columnOfInput;
    RowSelection rows;
    std::vector<RowSelection> partRows(values.size());
    if (!chooseParts(values, settings.ignoreEmpty, *split, &result, &rows, &partRows)) {
        return false;
    }
    result.table = input.selectRows(std::move(rows));
    std::vector<ColIndex> chosen;
    for (ColIndex column(0); column < input.columnCount(); ++column) {
        chosen.push_back(column);
    }
    const QStringList names = input.header();
    for (int i = 0; i < columns.size(); ++i) {
        chosen[size_t(columns[i].value())] = result.table.columnCount();
        result.table = Dataset::sideBySide(
            result.table, values[size_t(i)].parts().selectRows(std::move(partRows[size_t(i)])));
    }
    result.table = result.table.selectColumns(chosen);
    if (!names.isEmpty()) {
        result.table.setHeader(names);
    }
    *split = std::move(result);
    return true;
}

bool TransformSplitRows::chooseParts(const std::vector<ValueParts> &values, bool ignoreEmpty,
                                     const Split &split, Split *result, RowSelection *rows,
                                     std::vector<RowSelection> *partRows)
{
    const int rowCount = split.table.rowCount();
    qint32 number = 0;
    for (int row = 0; row < rowCount; ++row) {
        if (row % progressInterval == 0 && (!report(0.9) || !canHold(qint64(rows->size())))) {
            return false;
        }
        const qint32 source = split.sources.empty() ? row : split.sources[size_t(row)];
        if (result->sources.empty() || result->sources.back() != source) {
            number = 0;
        }
        int count = 0;
        for (const ValueParts &each : values) {
            count = std::max(count, each.count(row));
        }
        const size_t before = rows->size();
        const auto keep = [&](int part) {
            rows->push_back(row);
            result->sources.push_back(source);
            result->numbers.push_back(number + part);
            for (size_t i = 0; i < values.size(); ++i) {
                (*partRows)[i].push_back(values[i].partRow(row, part));
            }
        };
        for (int part = 0; part < count; ++part) {
            const bool isEmpty =
                std::all_of(values.begin(), values.end(), [row, part](const ValueParts &each) {
                    return part >= each.count(row) || each.isEmpty(row, part);
                });
            if (!isEmpty || !ignoreEmpty) {
                keep(part);
            }
        }
        if (rows->size() == before) {
            keep(0);
        }
        number += count;
        if (rows->size() - before > size_t(progressInterval) && !canHold(qint64(rows->size()))) {
            return false;
        }
    }
    return canHold(qint64(rows->size()));
}

bool TransformSplitRows::canHold(qint64 rowCount)
{
    // Row numbers of the cells that repeat and of those that were split, source and number.
    constexpr double bytesPerRow = 16;
    const QString problem = rowLimitProblem(rowCount, bytesPerRow);
    if (!problem.isEmpty()) {
        messages().fail(problem);
    }
    return problem.isEmpty();
}

void TransformSplitRows::addNumbers(const Split &split, Dataset *output) const
{
    Dataset numbers;
    numbers.setColumnCount(ColIndex(1));
    qint32 largest = 0;
    for (const qint32 number : split.numbers) {
        largest = std::max(largest, number);
    }
    numbers.resize(largest + 1, 1);
    for (qint32 i = 0; i <= largest; ++i) {
        numbers.setCell(RowIndex(i), ColIndex(0), plainNumberText(i + 1));
    }
    const bool hasHeader = output->hasHeader();
    QStringList names = output->columnNames();
    RowSelection rows = split.sources.empty() ? RowSelection(size_t(output->rowCount()), 0)
                                              : RowSelection(split.numbers);
    *output = Dataset::sideBySide(*output, numbers.selectRows(std::move(rows)));
    if (hasHeader) {
        names.append(NewColumns::uniqueName(QStringLiteral("Number"),
                                            QSet<QString>(names.begin(), names.end())));
        output->setHeader(names);
    }
}
