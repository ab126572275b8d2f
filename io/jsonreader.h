#pragma once

#include "dataset.h"
#include "messages.h"
#include "progress.h"

class TextSource;
struct InputOptions;

/// Reads JSON, or JSON lines: one row for each object. `path` is used in messages only.
Dataset readJson(const InputOptions &options, const QString &path, TextSource *source,
                 Messages *messages, const Progress &progress);
