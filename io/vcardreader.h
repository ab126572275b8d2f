#pragma once

#include "dataset.h"
#include "messages.h"
#include "progress.h"

class TextSource;
struct InputOptions;

/// Reads vCards: one row for each card. `path` is used in messages only.
Dataset readVCards(const InputOptions &options, const QString &path, TextSource *source,
                   Messages *messages, const Progress &progress);
