#include "transformoption.h"

#include <algorithm>

namespace {

bool isInside(const ColumnRef &column, const Dataset &table)
{
    return column.isBound() && column.number < table.columnCount().value();
}

} // namespace

ColIndex OptionColumns::one(const TransformParameter &parameter, const Dataset &table)
{
    const auto column = parameter.value.value<ColumnRef>();
    return isInside(column, table) ? ColIndex(column.number) : ColIndex();
}

QList<ColIndex> OptionColumns::many(const TransformParameter &parameter, const Dataset &table)
{
    QList<ColumnRef> chosen;
    if (parameter.type == ParameterType::ColumnSet) {
        const auto choice = parameter.value.value<ColumnChoice>();
        chosen = choice.checked;
        for (int i = 0; choice.everything && i < table.columnCount().value(); ++i) {
            chosen.append(ColumnRef(i));
        }
    } else {
        chosen = parameter.value.value<QList<ColumnRef>>();
    }
    QList<ColIndex> columns;
    for (const ColumnRef &column : std::as_const(chosen)) {
        if (isInside(column, table)) {
            columns.append(ColIndex(column.number));
        }
    }
    if (parameter.type != ParameterType::ReorderColumns) {
        std::sort(columns.begin(), columns.end());
        columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
    }
    return columns;
}
