#pragma once

#include "filetypes.h"

#include <QString>

/// The file type that a text from the clipboard, or dropped on the window, most likely has. A
/// first guess, which the user may change.
FileType sniffFileType(const QString &text);
