#pragma once

#include <string>
#include <string_view>

/// Texts as YAML scalars that readers of YAML 1.1 and of YAML 1.2 give back as they are. The bytes
/// are those of Utf8.
namespace YamlText {

/// Without quotes the value is read as itself: as a text, or as a number whose usual spelling it
/// is. Does not look at what the encoding can hold.
bool isPlain(std::string_view utf8);
/// The same, and it is read as a text, not as a number.
bool isPlainText(std::string_view utf8);

/// Readers take the character as it is, also in a comment or between double quotes.
bool isPrintable(unsigned codePoint);
/// What has to stand for a character between double quotes, appended; false when it may stay.
bool escapeCharacter(unsigned codePoint, std::string *out);
/// Appends the form that every character has.
void appendEscape(unsigned codePoint, std::string *out);

} // namespace YamlText
