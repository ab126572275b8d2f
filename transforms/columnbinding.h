#pragma once

#include "parametervalues.h"
#include "transformparameter.h"

#include <QVariant>

/// The column references inside the values of parameters, and how they follow the columns of the
/// input.
namespace ColumnBinding {

inline const ColumnRef &columnOf(const ColumnRef &column)
{
    return column;
}
template <class Item>
const ColumnRef &columnOf(const Item &item)
{
    return item.column;
}

/// See TransformParameter::columnNames() and setColumnNames().
QStringList names(ParameterType type, const QVariant &value);
void setNames(ParameterType type, const QStringList &names, QVariant *value);

/// Binds the references to the given columns. Answers the names of those that are gone.
QStringList bind(ParameterType type, const QStringList &columns, bool hasHeader, QVariant *value);

} // namespace ColumnBinding
