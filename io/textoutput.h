#pragma once

#include "filetypes.h"
#include "progress.h"

#include <QString>

class Dataset;
struct Messages;
struct OutputOptions;

enum class WriteResult { Written, Stopped, Failed };

/// True for the types that are written as text.
bool isTextOutput(FileType type);

/// Fails when the table cannot be written as text with these options at all.
bool checkTextOutput(const OutputOptions &options, const Dataset &dataset, Messages *messages);

/// Writes a table to a file, or adds it to the one that is there when the write mode says so.
/// Leaves the old file untouched unless all went well. The title is for formats that have one.
WriteResult writeTextFile(const OutputOptions &options, const QString &path, const QString &title,
                          const Dataset &dataset, Messages *messages, const Progress &progress);

/// The table as the text of a whole file; encoding and write mode play no part.
WriteResult makeText(const OutputOptions &options, const QString &title, const Dataset &dataset,
                     QString *text, Messages *messages, const Progress &progress);
