#pragma once

#include "dataset.h"
#include "messages.h"
#include "progress.h"

class TextSource;
struct InputOptions;

/// Reads Lines that are cut into columns at fixed places. `path` is used in messages only.
Dataset readFixedWidth(const InputOptions &options, const QString &path, TextSource *source,
                       Messages *messages, const Progress &progress);
