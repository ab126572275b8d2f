#pragma once

#include "dataset.h"
#include "delimitedparser.h"
#include "filetypes.h"
#include "messages.h"
#include "progress.h"

struct InputOptions;

/// Reads delimited text: guesses what the options leave open, cuts rows, makes the table. Why a
/// reading failed is told in the messages; the table is empty then, and after a stop.
/// `path` stands in the messages.
Dataset readDelimitedText(const InputOptions &options, const QString &path, TextSource *source,
                          Messages *messages, const Progress &progress,
                          qint64 blockSize = DelimitedParser::standardBlockSize);

/// What the delimiter of a text most likely is, and the note that tells so.
struct DelimiterGuess
{
    Delimiter delimiter = Delimiter::Comma;
    QString note;
};
/// `start` is the text, or at least its first 4096 characters.
DelimiterGuess guessDelimiter(const QString &start);
