#include "yamltext.h"

#include "jsontypes.h"
#include "utf8.h"

#include <QLatin1String>
#include <QRegularExpression>
#include <QString>
#include <algorithm>
#include <cstring>

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

/// Characters that readers refuse, or take for line breaks, outside double quotes.
bool isPrintable(uint c)
{
    return (c >= 0x20 && c < 0x7f) || (c >= 0xa0 && !QChar::isSurrogate(c) && c != 0x2028 &&
                                       c != 0x2029 && c != 0xfeff && c != 0xfffe && c != 0xffff);
}

bool isPrintable(std::string_view utf8)
{
    for (size_t at = 0; at < utf8.size();) {
        const char c = utf8[at];
        if (c >= 0x20 && c < 0x7f) {
            ++at;
        } else if (!isPrintable(Utf8::nextCodePoint(utf8, &at))) {
            return false;
        }
    }
    return true;
}

/// Whether a text can be a plain scalar at all, whatever readers make of it.
bool hasPlainForm(std::string_view text)
{
    if (text.empty() || isBlank(text.front()) || isBlank(text.back())) {
        return false;
    }
    const char first = text.front();
    if (strchr(",[]{}#&*!|>'\"%@`", first)) {
        return false;
    }
    // These begin something only in front of a blank.
    if (strchr("-?:", first) && (text.size() == 1 || isBlank(text[1]))) {
        return false;
    }
    if (text.back() == ':' || text.substr(0, 3) == "---" || text.substr(0, 3) == "...") {
        return false;
    }
    for (size_t i = 1; i < text.size(); ++i) {
        if ((text[i] == '#' && isBlank(text[i - 1])) || (isBlank(text[i]) && text[i - 1] == ':')) {
            return false;
        }
    }
    return isPrintable(text);
}

/// Words that readers of one version or the other take for something else.
bool isReservedWord(std::string_view text)
{
    static const char *const words[] = {"~",    "null",  "y",  "yes", "n", "no",
                                        "true", "false", "on", "off", "=", "<<"};
    return text.size() <= 5 &&
           std::any_of(std::begin(words), std::end(words), [&](const char *word) {
               return text.size() == strlen(word) &&
                      qstrnicmp(text.data(), word, uint(text.size())) == 0;
           });
}

/// A number of any spelling, or a date: for readers of 1.1 also with underscores, colons or bases.
bool looksLikeNumber(std::string_view text)
{
    const char first = text.front();
    if (!isDigit(first) && first != '+' && first != '-' && first != '.') {
        return false;
    }
    if (text.size() > 4 && isDigit(text[0]) && isDigit(text[1]) && isDigit(text[2]) &&
        isDigit(text[3]) && text[4] == '-') {
        return text.size() > 5 && isDigit(text[5]);
    }
    static const QRegularExpression number(QStringLiteral(
        "\\A[-+]?(0b[01_]+|0o[0-7]+|0x[0-9a-fA-F_]+|"
        "([0-9][0-9_]*)?\\.?[0-9_.]*([eE][-+]?[0-9]+)?|"
        "[0-9][0-9_]*(:[0-5]?[0-9])+(\\.[0-9_]*)?|\\.(inf|Inf|INF|nan|NaN|NAN))\\z"));
    // Longer ones are no numbers that any reader would keep as such; better safe.
    return text.size() > 1000 ||
           number.match(QString::fromUtf8(text.data(), int(text.size()))).hasMatch();
}

/// A number whose text a reader makes again from its value: no exponent, no zero too much at either
/// end.
bool isCanonicalNumber(std::string_view text)
{
    const bool hasPoint = text.find('.') != std::string_view::npos;
    return isSafeJsonNumber(text) && text.find_first_of("eE") == std::string_view::npos &&
           !(hasPoint && text.back() == '0');
}

} // namespace

bool YamlText::isPlain(std::string_view utf8)
{
    return utf8 == "true" || utf8 == "false" || isCanonicalNumber(utf8) || isPlainText(utf8);
}

bool YamlText::isPlainText(std::string_view utf8)
{
    return hasPlainForm(utf8) && !isReservedWord(utf8) && !looksLikeNumber(utf8);
}

void YamlText::appendEscape(unsigned codePoint, std::string *out)
{
    static const char digits[] = "0123456789abcdef";
    const int length = codePoint > 0xffff ? 8 : codePoint > 0xff ? 4 : 2;
    out->push_back('\\');
    out->push_back(length == 8 ? 'U' : length == 4 ? 'u' : 'x');
    for (int shift = 4 * (length - 1); shift >= 0; shift -= 4) {
        out->push_back(digits[codePoint >> shift & 0xf]);
    }
}

bool YamlText::escapeCharacter(unsigned codePoint, std::string *out)
{
    switch (codePoint) {
    case '"':
    case '\\':
        out->push_back('\\');
        out->push_back(char(codePoint));
        return true;
    case '\n':
        out->append("\\n");
        return true;
    case '\r':
        out->append("\\r");
        return true;
    case '\t':
        out->append("\\t");
        return true;
    default:
        break;
    }
    if (isPrintable(codePoint)) {
        return false;
    }
    appendEscape(codePoint, out);
    return true;
}
