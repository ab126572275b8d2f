#pragma once

#include <QString>

#include "progress.h"

class Dataset;
struct Messages;
struct OutputOptions;

enum class WriteResult { Written, Stopped, Failed };

/// Why delimited text cannot be written with these options at all; empty when it can.
QString delimitedTextProblem(const OutputOptions &options);

/// Writes a table to a file, or adds it to the end of one when the write mode says so. Leaves the
/// old file untouched unless all went well.
WriteResult writeDelimitedFile(const OutputOptions &options, const QString &path,
                               const Dataset &dataset, Messages *messages,
                               const Progress &progress);

/// The table as the text of a whole file; encoding and write mode play no part.
WriteResult makeDelimitedText(const OutputOptions &options, const Dataset &dataset, QString *text,
                              Messages *messages, const Progress &progress);
