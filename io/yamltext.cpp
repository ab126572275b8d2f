#include "yamltext.h"

#include "jsontypes.h"
#include "utf8.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr const char *digits = "0123456789";
// With one zero more, readers spell a number with an exponent.
constexpr std::string_view tooSmall = "0.0000";

// What YAML 1.1 or 1.2 takes for a truth value, nothing, a number, a default or a merge. Python
// spells true in another way, too.
constexpr std::string_view typeWords[] = {
    "~",    "null", "Null", "NULL", "true",  "True",  "TRUE",  "false", "False", "FALSE",
    "yes",  "Yes",  "YES",  "no",   "No",    "NO",    "on",    "On",    "ON",    "off",
    "Off",  "OFF",  "y",    "Y",    "n",     "N",     "=",     "<<",    ".nan",  ".NaN",
    ".NAN", ".inf", ".Inf", ".INF", "-.inf", "-.Inf", "-.INF", "+.inf", "+.Inf", "+.INF",
};
constexpr size_t longestTypeWord = 5;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

/// Walks over a text from its start.
class Scanner
{
public:
    explicit Scanner(std::string_view text)
        : m_rest(text)
    {
    }

    bool at(const char *characters) const
    {
        return !m_rest.empty() && m_rest[0] != '\0' && strchr(characters, m_rest[0]);
    }
    bool accept(const char *characters)
    {
        const bool accepted = at(characters);
        m_rest.remove_prefix(accepted ? 1 : 0);
        return accepted;
    }
    size_t skip(const char *characters)
    {
        size_t count = 0;
        while (accept(characters)) {
            ++count;
        }
        return count;
    }
    bool atEnd() const { return m_rest.empty(); }

private:
    std::string_view m_rest;
};

/// Readers differ, so this is what any of them takes for a number: with "_" or "," in between, in
/// other bases, "1:30" to the base of 60, with digits on one side of the point only.
bool looksLikeNumber(std::string_view value)
{
    Scanner scanner(value);
    scanner.accept("+-");
    const bool startsWithZero = scanner.at("0");
    const bool startsWithDigit = scanner.at(digits);
    const size_t whole = startsWithDigit ? scanner.skip("0123456789_,") : 0;
    if (startsWithZero && whole == 1 && scanner.accept("xXoObB")) {
        return scanner.skip("0123456789abcdefABCDEF_") > 0 && scanner.atEnd();
    }
    while (startsWithDigit && scanner.accept(":")) {
        if (scanner.skip(digits) == 0) {
            return false;
        }
    }
    if (scanner.accept(".")) {
        if (!startsWithDigit && !scanner.at(digits)) {
            return false;
        }
        scanner.skip("0123456789_");
    } else if (!startsWithDigit) {
        return false;
    }
    if (scanner.accept("eE")) {
        scanner.accept("+-");
        return scanner.skip(digits) > 0 && scanner.atEnd();
    }
    return scanner.atEnd();
}

/// A date, or a date with something behind it that may be a time.
bool looksLikeDate(std::string_view value)
{
    Scanner scanner(value);
    if (scanner.skip(digits) != 4 || !scanner.accept("-")) {
        return false;
    }
    const size_t month = scanner.skip(digits);
    if (month < 1 || month > 2 || !scanner.accept("-")) {
        return false;
    }
    const size_t day = scanner.skip(digits);
    return day >= 1 && day <= 2 && (scanner.atEnd() || scanner.at("Tt \t"));
}

/// A number that readers spell in the same way again.
bool isUsualNumber(std::string_view value)
{
    if (!isSafeJsonNumber(value) || value.find_first_of("eE") != std::string_view::npos) {
        return false;
    }
    const std::string_view magnitude = value.substr(value[0] == '-' ? 1 : 0);
    return value.find('.') == std::string_view::npos ||
           (value.back() != '0' && magnitude.substr(0, tooSmall.size()) != tooSmall);
}

bool mayBeNumber(std::string_view value)
{
    return isDigit(value[0]) || value[0] == '-' || value[0] == '+' || value[0] == '.';
}

bool isTypeWord(std::string_view value)
{
    return value.size() <= longestTypeWord &&
           std::find(std::begin(typeWords), std::end(typeWords), value) != std::end(typeWords);
}

bool mayStart(std::string_view text)
{
    if (text[0] == '-' || text[0] == '?') {
        return text.size() > 1 && !isBlank(text[1]);
    }
    return !strchr(" :,[]{}#&*!|>'\"%@`", text[0]);
}

/// Whether a text can stand without quotes at all, whatever readers make of it.
bool hasPlainForm(std::string_view text)
{
    if (text.empty() || !mayStart(text) || text.back() == ' ' || text.back() == ':') {
        return false;
    }
    for (size_t at = 0; at < text.size();) {
        const char c = text[at];
        if ((c == ':' && isBlank(text[at + 1])) || (c == '#' && isBlank(text[at - 1])) ||
            c == '\t') {
            return false;
        }
        if (c >= 0x20 && c < 0x7f) {
            ++at;
        } else if (!YamlText::isPrintable(Utf8::nextCodePoint(text, &at))) {
            return false;
        }
    }
    return true;
}

} // namespace

bool YamlText::isPlain(std::string_view utf8)
{
    return isUsualNumber(utf8) || isPlainText(utf8);
}

bool YamlText::isPlainText(std::string_view utf8)
{
    return hasPlainForm(utf8) && !isTypeWord(utf8) &&
           !(mayBeNumber(utf8) && (looksLikeNumber(utf8) || looksLikeDate(utf8)));
}

bool YamlText::isPrintable(unsigned c)
{
    if (c < 0x80) {
        return c == '\t' || (c >= 0x20 && c < 0x7f);
    }
    // Readers of YAML 1.1 end lines at U+0085, U+2028 and U+2029.
    return (c >= 0xa0 && c < 0xd800 && c != 0x2028 && c != 0x2029) ||
           (c >= 0xe000 && c < 0xfffe && c != 0xfeff) || c >= 0x10000;
}

void YamlText::appendEscape(unsigned codePoint, std::string *out)
{
    static const char hexDigits[] = "0123456789abcdef";
    const int length = codePoint > 0xffff ? 8 : codePoint > 0xff ? 4 : 2;
    out->push_back('\\');
    out->push_back(length == 8 ? 'U' : length == 4 ? 'u' : 'x');
    for (int shift = 4 * (length - 1); shift >= 0; shift -= 4) {
        out->push_back(hexDigits[codePoint >> shift & 0xf]);
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
