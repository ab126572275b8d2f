#pragma once

#include "dataset.h"
#include "messages.h"
#include "progress.h"

class TextSource;
struct InputOptions;

/// Reads plain text: one column with a row for each line. `path` is used in messages only.
Dataset readPlainText(const InputOptions &options, const QString &path, TextSource *source,
                      Messages *messages, const Progress &progress);
