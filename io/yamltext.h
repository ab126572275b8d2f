#pragma once

#include <string>
#include <string_view>

/// Texts as YAML scalars.
namespace YamlText {

/// Whether a reader of YAML 1.1 or 1.2 gives a text back as it is when it stands without quotes.
/// Whole and decimal numbers count, whose text is their value's; so do true and false.
bool isPlain(std::string_view utf8);
/// The same, and it is read as a text, not as a number or a truth value.
bool isPlainText(std::string_view utf8);

/// What has to stand for a character between double quotes, appended; false when it may stay.
bool escapeCharacter(unsigned codePoint, std::string *out);
/// Appends the form that every character has.
void appendEscape(unsigned codePoint, std::string *out);

} // namespace YamlText
