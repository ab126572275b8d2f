#pragma once

#include "delimitedparser.h"
#include "messages.h"
#include "progress.h"

#include <QString>
#include <optional>
#include <string>

class TextSource;
struct InputOptions;

/// What the readers of all text formats share.

/// Tells which encoding was taken when the options leave it open or name one that is not known.
void noteEncoding(const InputOptions &options, const TextSource &source, Messages *messages);

/// The whole text as well-formed UTF-8, with U+FFFD in place of bytes that could not be decoded,
/// which are told. Nothing when reading failed (told, too) or the progress asked to stop; it is
/// given the part of the file that has been read, scaled to `share`.
std::optional<std::string> readWholeText(const QString &path, TextSource *source,
                                         Messages *messages, const Progress &progress,
                                         double share);

/// Tells why rows or lines could not be cut to the end of the text; true when they were.
[[nodiscard]] bool tellEnding(DelimitedParser::Ending ending, const QString &path,
                              const TextSource &source, Messages *messages);

/// "Can't read file ..."
QString unreadableText(const QString &path, const QString &reason);
