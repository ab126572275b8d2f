#include "columnbinding.h"

#include "parametersummary.h"

#include <QHash>
#include <QSet>
#include <algorithm>

namespace {

ColumnRef &writable(ColumnRef &column)
{
    return column;
}
template <class Item>
ColumnRef &writable(Item &item)
{
    return item.column;
}

template <class List, class Visit>
void visitList(QVariant *value, Visit visit)
{
    auto list = value->value<List>();
    for (auto &item : list) {
        visit(writable(item));
    }
    *value = QVariant::fromValue(list);
}

/// Calls visit(ColumnRef &) for every reference of the value, in stored order.
template <class Visit>
void visitColumns(ParameterType type, QVariant *value, Visit visit)
{
    switch (type) {
    case ParameterType::SingleColumn: {
        auto column = value->value<ColumnRef>();
        visit(column);
        *value = QVariant::fromValue(column);
        break;
    }
    case ParameterType::MultipleColumns:
    case ParameterType::ReorderColumns:
        visitList<QList<ColumnRef>>(value, visit);
        break;
    case ParameterType::SortColumns:
        visitList<QList<SortKey>>(value, visit);
        break;
    case ParameterType::ColumnSet: {
        auto choice = value->value<ColumnChoice>();
        for (ColumnRef &column : choice.checked) {
            visit(column);
        }
        *value = QVariant::fromValue(choice);
        break;
    }
    case ParameterType::RenameColumns:
        visitList<QList<ColumnRename>>(value, visit);
        break;
    case ParameterType::SplitRows: {
        auto spec = value->value<SplitRowsSpec>();
        visit(spec.first);
        *value = QVariant::fromValue(spec);
        break;
    }
    case ParameterType::Unique:
        visitList<QList<UniqueAction>>(value, visit);
        break;
    default:
        // Filter terms and the like name their columns themselves, and a name that the input lacks
        // is no error there.
        break;
    }
}

/// Marks the columns seen before among the present ones, each at its column's number, so that the
/// stored numbers are places in this list. Those that are gone follow at the end.
void followSeen(const QStringList &columns, ColumnChoice *choice)
{
    QSet<QString> before(choice->seen.begin(), choice->seen.end());
    QStringList seen;
    for (const QString &name : columns) {
        seen.append(before.contains(name) ? name : QString());
    }
    before.subtract(QSet<QString>(columns.begin(), columns.end()));
    for (const QString &name : std::as_const(choice->seen)) {
        if (!name.isEmpty() && before.remove(name)) {
            seen.append(name);
        }
    }
    for (ColumnRef &column : choice->checked) {
        if (column.missing && !column.name.isEmpty()) {
            column.number = seen.lastIndexOf(column.name);
        }
    }
    choice->seen = seen;
}

/// Looks up columns of one table; of several with a name, the one with the number sought is meant,
/// else the first.
class Binder
{
public:
    Binder(const QStringList &columns, bool hasHeader)
        : m_columns(columns)
        , m_hasHeader(hasHeader)
    {
        for (int i = columns.size() - 1; hasHeader && i >= 0; --i) {
            m_numbers.insert(columns[i], i);
        }
    }

    void bind(ColumnRef *column) const
    {
        const bool isInside = column->number >= 0 && column->number < m_columns.size();
        if (!m_hasHeader || column->name.isEmpty()) {
            column->missing = column->number >= 0 && !isInside;
            if (m_hasHeader && isInside) {
                column->name = m_columns[column->number];
            }
            return;
        }
        if (isInside && m_columns[column->number] == column->name) {
            column->missing = false;
            return;
        }
        const auto found = m_numbers.constFind(column->name);
        column->missing = found == m_numbers.constEnd();
        if (!column->missing) {
            column->number = *found;
        }
    }

private:
    QStringList m_columns;
    bool m_hasHeader;
    QHash<QString, int> m_numbers;
};

/// Lists every column: those there are in their order, then the renamed ones that are gone.
void completeRenames(const QStringList &columns, bool hasHeader, QVariant *value)
{
    const auto renames = value->value<QList<ColumnRename>>();
    QList<ColumnRename> result;
    for (int i = 0; i < columns.size(); ++i) {
        ColumnRename rename;
        rename.column = ColumnRef(i, hasHeader ? columns[i] : QString());
        result.append(rename);
    }
    QList<ColumnRename> gone;
    for (const ColumnRename &rename : renames) {
        if (rename.renamed) {
            if (rename.column.isBound()) {
                result[rename.column.number] = rename;
            } else {
                gone.append(rename);
            }
        }
    }
    *value = QVariant::fromValue(result + gone);
}

QStringList goneNames(ParameterType type, QVariant *value)
{
    QStringList names;
    if (type == ParameterType::RenameColumns) {
        // Only a column with a new name is missed.
        const auto renames = value->value<QList<ColumnRename>>();
        for (const ColumnRename &rename : renames) {
            if (rename.renamed && rename.column.missing) {
                names.append(nameOf(rename.column));
            }
        }
        return names;
    }
    visitColumns(type, value, [&names](ColumnRef &column) {
        if (column.missing) {
            names.append(nameOf(column));
        }
    });
    return names;
}

} // namespace

QStringList ColumnBinding::names(ParameterType type, const QVariant &value)
{
    QStringList names;
    if (type == ParameterType::ColumnSet) {
        names = value.value<ColumnChoice>().seen;
    } else {
        QVariant copy(value);
        visitColumns(type, &copy, [&names](const ColumnRef &c) { names.append(c.name); });
    }
    const bool noneKnown =
        std::all_of(names.begin(), names.end(), [](const QString &n) { return n.isEmpty(); });
    return noneKnown ? QStringList() : names;
}

void ColumnBinding::setNames(ParameterType type, const QStringList &names, QVariant *value)
{
    if (type == ParameterType::ColumnSet) {
        auto choice = value->value<ColumnChoice>();
        choice.seen = names;
        for (ColumnRef &column : choice.checked) {
            column.name = names.value(column.number);
        }
        *value = QVariant::fromValue(choice);
        return;
    }
    int i = 0;
    visitColumns(type, value, [&](ColumnRef &column) { column.name = names.value(i++); });
}

QStringList ColumnBinding::bind(ParameterType type, const QStringList &columns, bool hasHeader,
                                QVariant *value)
{
    if (type == ParameterType::ColumnSet) {
        auto choice = value->value<ColumnChoice>();
        if (choice.everything) {
            choice.everything = false;
            for (int i = 0; i < columns.size(); ++i) {
                choice.checked.append(ColumnRef(i, hasHeader ? columns[i] : QString()));
            }
        }
        if (choice.seen.isEmpty()) {
            choice.seen = columns;
        }
        *value = QVariant::fromValue(choice);
    }
    const Binder binder(columns, hasHeader);
    visitColumns(type, value, [&binder](ColumnRef &column) { binder.bind(&column); });
    if (type == ParameterType::ColumnSet && hasHeader) {
        auto choice = value->value<ColumnChoice>();
        followSeen(columns, &choice);
        *value = QVariant::fromValue(choice);
    }
    QStringList gone = goneNames(type, value);
    if (type == ParameterType::RenameColumns) {
        completeRenames(columns, hasHeader, value);
    }
    return gone;
}
