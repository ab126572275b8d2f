#pragma once

#include "indices.h"

#include <QString>
#include <QStringList>
#include <vector>

class Dataset;

/// A script with column variables, in which each of them became the name of a parameter that
/// holds the row's value: values are never part of the script. Line numbers stay.
///
/// In the code and inside `${ }` a variable becomes the bare parameter; in a quoted text the text
/// is cut there and put together again with "+"; in a template it becomes `${parameter}`.
/// Comments, regular expressions and what names no column stay as written.
struct ScriptVariables
{
    ScriptVariables(const QString &script, const Dataset &table);

    QString script;
    /// The columns used, each once, and the names of their parameters.
    std::vector<ColIndex> columns;
    QStringList parameters;
    /// What stands in brackets where no column is named, each once.
    QStringList unknown;
};
