#include "transformreorder.h"

#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"

#include <QCollator>
#include <algorithm>

namespace {

enum class Order { AsArranged, NameAscending, NameDescending, Reverse };

struct Options
{
    const TransformOption<QList<ColIndex>> columns{
        ParameterType::ReorderColumns, "Columns", QT_TRANSLATE_NOOP("Transform", "Order"),
        QT_TRANSLATE_NOOP("Transform", "The order that the columns are to have. Columns that are "
                                       "not in the list follow it in their order.")};
    const TransformOption<int> order =
        TransformOption<int>(
            ParameterType::Selection, "Order", QT_TRANSLATE_NOOP("Transform", "Order by"),
            QT_TRANSLATE_NOOP(
                "Transform",
                "What the order comes from.\n\n"
                "As arranged: the list above\n"
                "Name ascending: the names; numbers in them count as numbers, so Q2 comes before "
                "Q10\n"
                "Name descending: the same from the end\n"
                "Reverse: the order of the input from right to left"))
            .choices({"As arranged", "Name ascending", "Name descending", "Reverse"});
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

std::vector<ColIndex> allColumns(const Dataset &table)
{
    std::vector<ColIndex> columns;
    for (ColIndex column(0); column < table.columnCount(); ++column) {
        columns.push_back(column);
    }
    return columns;
}

std::vector<ColIndex> arranged(const Dataset &table, const QList<ColIndex> &list)
{
    std::vector<ColIndex> columns;
    std::vector<bool> taken(size_t(table.columnCount().value()), false);
    const auto take = [&](ColIndex column) {
        if (!taken[size_t(column.value())]) {
            taken[size_t(column.value())] = true;
            columns.push_back(column);
        }
    };
    std::for_each(list.begin(), list.end(), take);
    const std::vector<ColIndex> all = allColumns(table);
    std::for_each(all.begin(), all.end(), take);
    return columns;
}

std::vector<ColIndex> byName(const Dataset &table, bool ascending)
{
    QCollator collator{QLocale()};
    collator.setNumericMode(true);
    const QStringList names = table.columnNames();
    std::vector<QCollatorSortKey> keys;
    for (const QString &name : names) {
        keys.push_back(collator.sortKey(name));
    }
    std::vector<ColIndex> columns = allColumns(table);
    std::stable_sort(columns.begin(), columns.end(), [&](ColIndex a, ColIndex b) {
        const int order = keys[size_t(a.value())].compare(keys[size_t(b.value())]);
        return ascending ? order < 0 : order > 0;
    });
    return columns;
}

std::vector<ColIndex> ordered(const Dataset &table, const QList<ColIndex> &list, Order order)
{
    switch (order) {
    case Order::NameAscending:
        return byName(table, true);
    case Order::NameDescending:
        return byName(table, false);
    case Order::Reverse: {
        std::vector<ColIndex> columns = allColumns(table);
        std::reverse(columns.begin(), columns.end());
        return columns;
    }
    case Order::AsArranged:
        break;
    }
    return arranged(table, list);
}

constexpr TransformFacts reorderFacts =
    TransformFacts(43, "TransformReorder", "Reorder Cols", "Reorder", TransformCategory::Column,
                   QT_TRANSLATE_NOOP("Transform", "Drag columns to reorder."))
        .words("move arrange");

} // namespace

TransformReorder::TransformReorder()
    : Transform(reorderFacts)
{
}

std::unique_ptr<Transform> TransformReorder::clone() const
{
    return cloned(*this);
}

void TransformReorder::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().columns.create(inputs.value(0)));
    append(options().order.create());
}

Dataset TransformReorder::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    setStatus(Texts::noChanges());
    const Dataset &input = inputs.first();
    QList<ColIndex> list;
    int order = 0;
    if (!options().columns.read(*this, input, &list) || !options().order.read(*this, &order)) {
        return {};
    }
    const std::vector<ColIndex> columns = ordered(input, list, Order(order));
    int moved = 0;
    for (size_t i = 0; i < columns.size(); ++i) {
        moved += columns[i].value() != int(i) ? 1 : 0;
    }
    if (moved == 0) {
        return input;
    }
    setStatus(tr("%1 %2 moved").arg(Texts::count(moved), Texts::columns(moved)));
    return input.selectColumns(columns);
}
