#pragma once

#include <QString>
#include <string>
#include <string_view>

/// UTF-8 as the tables store it. It is ordinary UTF-8, but unpaired surrogates (which a QString may
/// hold, from a script or a damaged UTF-16 file) are kept as their three-byte forms, so that no
/// value changes by being stored.
namespace Utf8 {

/// Appends the bytes of a text.
void encode(QStringView text, std::string *out);
std::string encoded(QStringView text);

/// The text of bytes that encode() made or that isValid() accepts.
QString decoded(std::string_view bytes);

/// True when all bytes are ASCII.
bool isAscii(std::string_view bytes);

/// True for well-formed UTF-8 (no unpaired surrogates, no overlong forms).
bool isValid(std::string_view bytes);

/// Well-formed UTF-8 in which every byte that cannot be decoded became U+FFFD.
std::string repaired(std::string_view bytes);

/// True when the bytes hold an unpaired surrogate.
bool hasSurrogates(std::string_view bytes);

/// The number of bytes at the end that begin a sequence which is not complete yet (0 to 3).
int incompleteTail(std::string_view bytes);

/// The number of bytes of the character at the start; 1 for a byte that begins none. The bytes must
/// not be empty.
int characterLength(std::string_view bytes);

/// The code point at a position of bytes that encode() made; moves the position behind it.
uint nextCodePoint(std::string_view bytes, size_t *position);

/// Without white space (QChar::isSpace) at both ends.
std::string_view trimmed(std::string_view bytes);

} // namespace Utf8
