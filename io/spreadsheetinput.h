#pragma once

#include "dataset.h"
#include "messages.h"
#include "progress.h"

struct InputOptions;

/// Reads one sheet of a workbook, XLSX or XLS, into a table.
Dataset readSpreadsheet(const InputOptions &options, const QString &path, Messages *messages,
                        const Progress &progress);
