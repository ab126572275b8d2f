#pragma once

#include "dataset.h"
#include "filetypes.h"
#include "messages.h"
#include "progress.h"

#include <QString>

struct InputOptions;

/// Reads the table of an input item with the reader that its file type asks for, then drops empty
/// columns and applies the schema as the options say. `path` is the absolute path of the file
/// (unused for a clipboard input, whose text stands in the options). Whatever goes wrong is told in
/// the messages, and messages.failed is set; the table is then empty. It is also empty when the
/// progress asked to stop.
Dataset readInput(const InputOptions &options, const QString &path, Messages *messages,
                  const Progress &progress);

/// Told when a file, or the text of the clipboard, does not fit into memory.
QString tooBigText(const QString &path);

/// Told when an input has no path.
QString noInputFileText();

/// Told for a type whose reader is to come.
QString notBuiltText(FileType type);
