#pragma once

#include <QString>

struct ColumnRef;
struct TransformParameter;

/// The name of a column that is referred to, or "Column %1" while no name is known.
QString nameOf(const ColumnRef &column);

/// A delimiter for showing: "<Space>", "<Tab>", or the text itself.
QString shownSeparator(const QString &text);

/// See TransformParameter::summary().
QString parameterSummary(const TransformParameter &parameter);
