#pragma once

#include "dataset.h"

#include <QSet>
#include <QString>
#include <QStringList>

/// The names of new columns.
namespace NewColumns {

/// The name, or with "_2", "_3"... the first that is not in use.
QString uniqueName(const QString &name, const QSet<QString> &used);
/// The names with the repeated ones made different in the same way. The first of each keeps it.
QStringList uniqueNames(const QStringList &names);
/// Appends an empty column at the right end under a name that is not in use; an empty name stands
/// for the default one.
ColIndex append(Dataset *table, const QString &name, const QString &defaultName);

} // namespace NewColumns
