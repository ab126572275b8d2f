#pragma once

#include "dataset.h"
#include "messages.h"
#include "progress.h"

#include <QStringList>

class TextSource;
struct InputOptions;

/// Reads lines that are cut into columns at fixed places, counted in characters (code points).
/// `path` is used in messages only.
Dataset readFixedWidth(const InputOptions &options, const QString &path, TextSource *source,
                       Messages *messages, const Progress &progress);

/// The first lines of a text as they stand, at most 50, for choosing the widths by hand; fewer when
/// they are very long or the source fails. See also guessColumnWidths().
QStringList fixedWidthPreview(TextSource *source);
