#pragma once

#include "inputoptions.h"

#include <QString>
#include <QStringList>

/// The beginning of what an input reads, as an input of its own that can be read at once. A
/// document that is cut off is closed, so that it reads as far as it goes.
struct InputExcerpt
{
    /// Of medium Clipboard, but for small workbooks. Without a schema.
    InputOptions options;
    /// Of a workbook.
    QString path;
    /// There is more than this.
    bool isCut = false;
    /// Why there is nothing to read; empty otherwise.
    QString problem;
};

/// `path` is the absolute path of a file input. Reads at most the first 64 KiB of a text.
InputExcerpt inputExcerpt(const InputOptions &options, const QString &path);

/// At most the first 50 lines of what an input reads, as they stand.
QStringList firstInputLines(const InputOptions &options, const QString &path);

/// The beginning of a JSON, XML or vCard text, closed so that it is a whole one.
QString closedText(const QString &beginning, FileType type);
