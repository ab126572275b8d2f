#pragma once

#include "dataset.h"
#include "messages.h"
#include "progress.h"

class TextSource;
struct InputOptions;

/// Reads vCards (2.1, 3.0, 4.0): one row for each card, one column for each property name with its
/// group and parameters; the k-th property of the same name goes to the column "NAME k". `path` is
/// used in messages only.
Dataset readVCards(const InputOptions &options, const QString &path, TextSource *source,
                   Messages *messages, const Progress &progress);
