#include "jsontypes.h"

#include "dataset.h"

#include <QCoreApplication>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <vector>

namespace {

// What a 64-bit floating point number holds for certain.
constexpr int mostDigits = 15;
constexpr int largestExponent = 280;

constexpr const char *labels[] = {
    QT_TRANSLATE_NOOP("JsonTypes", "Automatic"), QT_TRANSLATE_NOOP("JsonTypes", "Boolean"),
    QT_TRANSLATE_NOOP("JsonTypes", "Number"), QT_TRANSLATE_NOOP("JsonTypes", "String"),
    QT_TRANSLATE_NOOP("JsonTypes", "Raw data")};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

struct NumberParts
{
    bool isNumber = false;
    int digits = 0;
    int exponent = 0;
};

NumberParts scanNumber(std::string_view text)
{
    NumberParts parts;
    size_t at = 0;
    const auto next = [&] { return at < text.size() ? text[at] : '\0'; };
    const auto skipDigits = [&] {
        const size_t from = at;
        while (isDigit(next())) {
            ++at;
        }
        return int(at - from);
    };
    at += next() == '-' ? 1 : 0;
    const bool startsWithZero = next() == '0';
    parts.digits = skipDigits();
    if (parts.digits == 0 || (startsWithZero && parts.digits > 1)) {
        return parts;
    }
    if (next() == '.') {
        ++at;
        const int decimals = skipDigits();
        if (decimals == 0) {
            return parts;
        }
        parts.digits += decimals;
    }
    if (next() == 'e' || next() == 'E') {
        ++at;
        at += next() == '-' || next() == '+' ? 1 : 0;
        const size_t from = at;
        if (skipDigits() == 0) {
            return parts;
        }
        for (size_t i = from; i < at && parts.exponent <= largestExponent; ++i) {
            parts.exponent = parts.exponent * 10 + (text[i] - '0');
        }
    }
    parts.isNumber = at == text.size();
    return parts;
}

bool isSafeNumber(std::string_view text)
{
    const NumberParts parts = scanNumber(text);
    return parts.isNumber && parts.digits <= mostDigits && parts.exponent <= largestExponent &&
           text != "-0";
}

} // namespace

QString jsonTypeLabel(JsonType type)
{
    const auto number = size_t(type);
    return QCoreApplication::translate("JsonTypes",
                                       labels[number < std::size(labels) ? number : 0]);
}

JsonType jsonTypeOf(const QString &text)
{
    for (size_t i = 0; i < std::size(labels); ++i) {
        if (text == QLatin1String(labels[i]) || text == QString::number(i)) {
            return JsonType(i);
        }
    }
    return JsonType::Automatic;
}

bool isJsonNumber(std::string_view utf8)
{
    return scanNumber(utf8).isNumber;
}

JsonType automaticJsonType(const ColumnReader &reader, int rowCount)
{
    const bool remembers = reader.isPooled() && reader.codeCount() / 2 <= uint(rowCount);
    std::vector<bool> seen(remembers ? reader.codeCount() : 0);
    bool isBoolean = true;
    bool isNumber = true;
    bool hasValues = false;
    for (int row = 0; row < rowCount && (isBoolean || isNumber); ++row) {
        const ColumnReader::Code code = reader.code(row);
        if (remembers) {
            if (seen[code]) {
                continue;
            }
            seen[code] = true;
        }
        const std::string_view value = reader.utf8OfCode(code);
        if (value.empty()) {
            continue;
        }
        hasValues = true;
        isBoolean = isBoolean && (value == "true" || value == "false");
        isNumber = isNumber && isSafeNumber(value);
    }
    if (!hasValues) {
        return JsonType::String;
    }
    return isBoolean ? JsonType::Boolean : isNumber ? JsonType::Number : JsonType::String;
}

bool isJsonValue(std::string_view utf8)
{
    rapidjson::MemoryStream stream(utf8.data(), utf8.size());
    rapidjson::Reader reader;
    rapidjson::BaseReaderHandler<> handler;
    return !reader
                .Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag>(
                    stream, handler)
                .IsError();
}
