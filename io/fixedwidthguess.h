#pragma once

#include <QList>
#include <QStringList>

/// The widths, in characters (code points), of the columns that the first lines of a text most
/// likely have. They cover the longest line of those looked at. Empty when every line is blank.
///
/// Lines that hold only dashes (or "=", "_") and blanks give the columns themselves. Otherwise a
/// boundary stands where nearly all groups of lines are blank; the first line is taken to be a
/// header, which has a say only in where within such a gap its words are parted.
QList<int> guessColumnWidths(const QStringList &lines);
