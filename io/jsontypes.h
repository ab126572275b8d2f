#pragma once

#include <QString>
#include <string_view>

class ColumnReader;

/// The type of a column's values in a JSON document; the numbers are stored in documents.
enum class JsonType : qint32 { Automatic = 0, Boolean = 1, Number = 2, String = 3, RawData = 4 };

QString jsonTypeLabel(JsonType type);
/// The type with that label or stored number; Automatic for any other text.
JsonType jsonTypeOf(const QString &text);

/// A text that stands for a number in JSON as it is.
bool isJsonNumber(std::string_view utf8);
/// The same, with digits and a range that common readers keep.
bool isSafeJsonNumber(std::string_view utf8);
/// Boolean or Number when every non-empty value reads back to the same text from it, else String.
/// Numbers beyond the digits and the range that common readers keep count as texts.
JsonType automaticJsonType(const ColumnReader &reader, int rowCount);

/// A whole JSON value of any kind.
bool isJsonValue(std::string_view utf8);
