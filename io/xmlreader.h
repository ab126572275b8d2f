#pragma once

#include "dataset.h"
#include "messages.h"
#include "progress.h"

class TextSource;
struct InputOptions;

/// Reads XML: one row for each record. `path` is used in messages only.
Dataset readXml(const InputOptions &options, const QString &path, TextSource *source,
                Messages *messages, const Progress &progress);
