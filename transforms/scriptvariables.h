#pragma once

#include "dataset.h"

#include <QString>
#include <QStringList>
#include <vector>

/// A script in which the column variables `$(2)` and `$(Name)` have become identifiers, so that the
/// contents of cells are never part of the program. Inside quotes, comments and regular expressions
/// a variable is ordinary text.
struct ScriptVariables
{
    /// Looks at the code only as far as needed to tell code from text.
    static ScriptVariables replaced(const QString &script, const Dataset &table);

    QString script;
    /// The columns in use, each once, and the identifiers that stand for their cells.
    std::vector<ColIndex> columns;
    QStringList identifiers;
    /// Variables that name no column, and those that stand inside quotes, each once.
    QStringList unknown;
    QStringList quoted;
};
