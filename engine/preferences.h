#pragma once

#include "filetypes.h"

#include <QMap>
#include <QString>
#include <QStringList>

/// The user's preferences as far as the model needs them. Handed in at start-up; only the program
/// and the window know where they are kept.
struct Preferences
{
    /// Name of the locale ("en_GB"); empty: the system's.
    QString localeName;
    /// Patterns of dates; empty: the built-in list.
    QStringList dateFormats;
    /// In units of 2^30 bytes; 0: MemoryCeiling::defaultLimitGb().
    double maxMemoryGb = 0.0;
    /// 0 "Minimum memory use", 1 "Maximum speed".
    int optimizeFor = 0;
    /// How long the window waits after an edit before an automatic run.
    double autoRunDelaySeconds = 0.0;
    /// "make a sound when processing completed"
    bool soundWhenCompleted = false;
    /// Extensions in lower case, without the dot.
    QStringList blockedInputExtensions;
    QStringList blockedOutputExtensions;
    /// The user's own extension table (lower case, without the dot); empty: the built-in one.
    QMap<QString, FileType> fileTypesByExtension;
};

/// Hands the date formats in force to the transforms: the user's, else those usual in the country
/// of the default locale. Again whenever either changes.
void applyDateFormats(const Preferences &preferences);
