#pragma once

#include "parametervalues.h"

#include <QString>

/// The stored texts of the structured parameter values. Columns are numbered from 1 in the texts,
/// 0 stands for no column. Reading answers false, and leaves the value alone, for a text that
/// write() cannot have made.
namespace ParameterCodec {

/// A whole number within bounds.
bool read(const QString &text, int minimum, int maximum, int *value);

QString write(const ColumnRef &column);
bool read(const QString &text, ColumnRef *column);

QString write(const QList<ColumnRef> &columns);
bool read(const QString &text, QList<ColumnRef> *columns);

QString write(const ColumnChoice &choice);
bool read(const QString &text, ColumnChoice *choice);

QString write(const QList<SortKey> &keys);
bool read(const QString &text, QList<SortKey> *keys);

QString write(const FilterSpec &spec);
bool read(const QString &text, FilterSpec *spec);

QString write(const IfSpec &spec);
bool read(const QString &text, IfSpec *spec);

QString write(const QList<ColumnRename> &renames);
bool read(const QString &text, QList<ColumnRename> *renames);

QString write(const SplitRowsSpec &spec);
bool read(const QString &text, SplitRowsSpec *spec);

QString write(const QList<UniqueAction> &actions);
bool read(const QString &text, QList<UniqueAction> *actions);

QString write(const QList<ReplaceTerm> &terms);
bool read(const QString &text, QList<ReplaceTerm> *terms);

QString write(const QList<VerifyRule> &rules);
bool read(const QString &text, QList<VerifyRule> *rules);

} // namespace ParameterCodec
