#pragma once

#include "dataset.h"
#include "messages.h"
#include "progress.h"

#include <QSet>
#include <QString>
#include <functional>

struct OutputOptions;

/// What writing needs to know of the document and the user beside the options.
struct OutputContext
{
    /// The output item's name, for titles.
    QString name;
    /// Folder of the saved document; empty while it has never been saved.
    QString documentFolder;
    /// Extensions (lower case, without the dot) that the user does not want to be written.
    QStringList blockedExtensions;
    /// Canonical paths of the files that the inputs of the document read.
    QStringList inputPaths;
    /// Date patterns (QDate's syntax) that cells of spreadsheets may be dates by.
    QStringList dateFormats;
    /// Asks whether a multi-file write may go ahead; null: it may.
    std::function<bool(const QString &text)> confirm;
    /// Puts a text on the clipboard; answers false when there is none. Null: there is none.
    std::function<bool(const QString &text)> setClipboard;
};

/// Writes a table as the options of an output item say: to one file, to one file for each value of
/// a column, or to the clipboard. An existing file is replaced only by a whole new one. What was
/// done, left out or went wrong is told in the messages; messages.failed is set when a write
/// failed, not when the options asked for nothing to be written.
void writeOutput(const OutputOptions &options, const Dataset &dataset, const OutputContext &context,
                 Messages *messages, const Progress &progress);

/// The absolute path of an output's or input's path: relative ones are resolved against the
/// document's folder; empty when that is not known.
QString resolvedPath(const QString &path, const QString &documentFolder);
