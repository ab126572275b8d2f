#include "transformremovecols.h"

#include "parametervalues.h"
#include "regexreplacement.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"

#include <algorithm>

namespace {

struct Options
{
    const TransformOption<QList<ColIndex>> columns{
        ParameterType::ColumnSet, "Columns", QT_TRANSLATE_NOOP("Transform", "Keep"),
        QT_TRANSLATE_NOOP("Transform", "Uncheck the columns that are to be removed.")};
    const TransformOption<bool> removeEmpty{
        ParameterType::Bool, "Remove_Empty",
        QT_TRANSLATE_NOOP("Transform", "also remove empty columns"),
        QT_TRANSLATE_NOOP("Transform",
                          "Check to remove columns too in which every cell is empty. A cell with "
                          "blanks is not empty, and a table without rows has no empty columns."),
        false};
    const TransformOption<QString> pattern{
        ParameterType::Text, "Pattern",
        QT_TRANSLATE_NOOP("Transform", "Also remove names matching regex"),
        QT_TRANSLATE_NOOP("Transform", "A regular expression. Columns in whose name it matches "
                                       "somewhere are removed too.")};
    const TransformOption<bool> keepNew{
        ParameterType::Bool, "Keep_New", QT_TRANSLATE_NOOP("Transform", "keep new columns"),
        QT_TRANSLATE_NOOP("Transform",
                          "Check to keep columns that were not there yet when the columns to keep "
                          "were chosen."),
        true};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

/// True for a column that was not there to choose from.
bool isNew(const ColumnChoice &choice, const Dataset &table, ColIndex column)
{
    if (choice.everything || choice.seen.isEmpty()) {
        return false;
    }
    const int number = column.value();
    return number >= choice.seen.size() ||
           (choice.seen[number].isEmpty() && !table.columnName(column).isEmpty());
}

bool isEmptyColumn(const Dataset &table, ColIndex column)
{
    const ColumnReader cells = table.columnReader(column);
    for (int row = 0; row < table.rowCount(); ++row) {
        if (!cells.utf8(row).empty()) {
            return false;
        }
    }
    return table.hasRows();
}

constexpr TransformFacts removeFacts =
    TransformFacts(40, "TransformRemoveCols", "Remove Cols", "Remove", TransformCategory::Column,
                   QT_TRANSLATE_NOOP("Transform", "Uncheck the column(s) you wish to remove."))
        .words("delete drop select keep");

} // namespace

TransformRemoveCols::TransformRemoveCols()
    : Transform(removeFacts)
{
}

std::unique_ptr<Transform> TransformRemoveCols::clone() const
{
    return cloned(*this);
}

void TransformRemoveCols::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().columns.create(inputs.value(0)));
    append(options().removeEmpty.create());
    append(options().pattern.create());
    append(options().keepNew.create());
}

void TransformRemoveCols::setInitialValues()
{
    if (TransformParameter *const columns = parameter(options().columns.key())) {
        columns->value = QVariant::fromValue(ColumnChoice());
    }
}

QList<QPair<QString, int>> TransformRemoveCols::optionalParameters() const
{
    return {{options().pattern.key(), 0}};
}

Dataset TransformRemoveCols::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    setStatus(Texts::noChanges());
    const Dataset &input = inputs.first();
    QList<ColIndex> checked;
    bool removeEmpty = false;
    QString pattern;
    bool keepNew = false;
    if (!options().columns.read(*this, input, &checked) ||
        !options().removeEmpty.read(*this, &removeEmpty) ||
        !options().pattern.read(*this, &pattern) || !options().keepNew.read(*this, &keepNew)) {
        return {};
    }

    std::vector<ColIndex> columns = kept(input, checked, keepNew);
    if (!pattern.isEmpty()) {
        const auto regex = Regex::compiled(pattern, true, &messages());
        if (!regex) {
            return input;
        }
        dropMatching(input, *regex, &columns);
    }
    if (removeEmpty) {
        columns.erase(std::remove_if(columns.begin(), columns.end(),
                                     [&](ColIndex c) { return isEmptyColumn(input, c); }),
                      columns.end());
    }
    const int removed = input.columnCount().value() - int(columns.size());
    if (removed == 0) {
        return input;
    }
    setStatus(Texts::columnsRemoved(removed));
    if (columns.empty()) {
        messages().warn(tr("All columns removed."));
        return {};
    }
    return input.selectColumns(columns);
}

std::vector<ColIndex> TransformRemoveCols::kept(const Dataset &input,
                                                const QList<ColIndex> &checked, bool keepNew)
{
    const auto choice = parameter(options().columns.key())->value.value<ColumnChoice>();
    std::vector<ColIndex> columns;
    for (ColIndex column(0); column < input.columnCount(); ++column) {
        if (!isNew(choice, input, column)) {
            // Both lists are in table order.
            if (std::binary_search(checked.begin(), checked.end(), column)) {
                columns.push_back(column);
            }
        } else if (keepNew) {
            columns.push_back(column);
        } else {
            messages().note(tr("New column '%1' not kept.").arg(input.columnName(column)));
        }
    }
    return columns;
}

void TransformRemoveCols::dropMatching(const Dataset &input, const QRegularExpression &regex,
                                       std::vector<ColIndex> *columns)
{
    int failures = 0;
    const auto matches = [&](ColIndex column) {
        const QRegularExpressionMatch match = regex.match(input.columnName(column));
        failures += match.isValid() ? 0 : 1;
        return match.hasMatch();
    };
    columns->erase(std::remove_if(columns->begin(), columns->end(), matches), columns->end());
    Regex::tellFailures(regex.pattern(), failures, &messages());
}
