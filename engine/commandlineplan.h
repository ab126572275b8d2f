#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

class GraphScene;

/// What a command-line run will do with a document: found out before anything is processed.
struct CommandLinePlan
{
    /// Not empty: the document cannot be run.
    QString error;
    QStringList warnings;
    /// Ids of the items that take no part.
    QSet<int> leftOut;

    static CommandLinePlan made(const GraphScene &scene);
};
