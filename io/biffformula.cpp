#include "biffformula.h"

#include "biffrecords.h"
#include "biffwriter.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>
#include <vector>

namespace {

enum Token : quint8 {
    Add = 0x03,
    Subtract,
    Multiply,
    Divide,
    Power,
    Concatenate,
    Less,
    LessOrEqual,
    Equal,
    GreaterOrEqual,
    Greater,
    NotEqual,
    Plus = 0x12,
    Minus,
    Percent,
    Parenthesis,
    MissingArgument,
    Text,
    Attribute = 0x19,
    Boolean = 0x1d,
    Integer,
    Number,
    // Of these there is one for each class of operand.
    Function = 0x01,
    VariableFunction = 0x02,
    Cell = 0x04,
    Range = 0x05
};

/// What an operand stands for: the cells themselves, one value, or a list of values.
enum class Class : quint8 { Reference = 0x20, Value = 0x40, Array = 0x60 };

constexpr int noLimit = 30;
constexpr size_t mostTokens = 1800;
// Programs of the format's time refuse more.
constexpr int mostNesting = 7;
constexpr int mostDepth = 64;

struct KnownFunction
{
    const char *name;
    quint16 number;
    int least;
    int most;
    /// Classes of the arguments; the last one stands for all that follow.
    const char *classes;
    bool isVolatile = false;
};

constexpr KnownFunction functions[] = {
    {"ABS", 24, 1, 1, "V"},
    {"AND", 36, 1, noLimit, "R"},
    {"AVERAGE", 5, 1, noLimit, "R"},
    {"CEILING", 288, 2, 2, "V"},
    {"CHAR", 111, 1, 1, "V"},
    {"CLEAN", 162, 1, 1, "V"},
    {"CODE", 121, 1, 1, "V"},
    {"COLUMN", 9, 0, 1, "R"},
    {"COLUMNS", 77, 1, 1, "R"},
    {"CONCATENATE", 336, 0, noLimit, "V"},
    {"COUNT", 0, 0, noLimit, "R"},
    {"COUNTA", 169, 0, noLimit, "R"},
    {"COUNTBLANK", 347, 1, 1, "R"},
    {"COUNTIF", 346, 2, 2, "RV"},
    {"DATE", 65, 3, 3, "V"},
    {"DATEVALUE", 140, 1, 1, "V"},
    {"DAY", 67, 1, 1, "V"},
    {"EXACT", 117, 2, 2, "V"},
    {"EXP", 21, 1, 1, "V"},
    {"FALSE", 35, 0, 0, "V"},
    {"FIND", 124, 2, 3, "V"},
    {"FIXED", 14, 2, 3, "V"},
    {"FLOOR", 285, 2, 2, "V"},
    {"HLOOKUP", 101, 3, 4, "VRRV"},
    {"HOUR", 71, 1, 1, "V"},
    {"IF", 1, 2, 3, "V"},
    {"INDEX", 29, 2, 4, "RV"},
    {"INT", 25, 1, 1, "V"},
    {"ISBLANK", 129, 1, 1, "V"},
    {"ISERR", 126, 1, 1, "V"},
    {"ISERROR", 3, 1, 1, "V"},
    {"ISLOGICAL", 198, 1, 1, "V"},
    {"ISNA", 2, 1, 1, "V"},
    {"ISNUMBER", 128, 1, 1, "V"},
    {"ISTEXT", 127, 1, 1, "V"},
    {"LARGE", 325, 2, 2, "RV"},
    {"LEFT", 115, 1, 2, "V"},
    {"LEN", 32, 1, 1, "V"},
    {"LN", 22, 1, 1, "V"},
    {"LOG", 109, 1, 2, "V"},
    {"LOG10", 23, 1, 1, "V"},
    {"LOOKUP", 28, 2, 3, "VR"},
    {"LOWER", 112, 1, 1, "V"},
    {"MATCH", 64, 2, 3, "VR"},
    {"MAX", 7, 1, noLimit, "R"},
    {"MEDIAN", 227, 1, noLimit, "R"},
    {"MID", 31, 3, 3, "V"},
    {"MIN", 6, 1, noLimit, "R"},
    {"MINUTE", 72, 1, 1, "V"},
    {"MOD", 39, 2, 2, "V"},
    {"MONTH", 68, 1, 1, "V"},
    {"NA", 10, 0, 0, "V"},
    {"NOT", 38, 1, 1, "V"},
    {"NOW", 74, 0, 0, "V", true},
    {"OR", 37, 1, noLimit, "R"},
    {"PI", 19, 0, 0, "V"},
    {"POWER", 337, 2, 2, "V"},
    {"PRODUCT", 183, 0, noLimit, "R"},
    {"PROPER", 114, 1, 1, "V"},
    {"RAND", 63, 0, 0, "V", true},
    {"RANK", 216, 2, 3, "VRV"},
    {"REPLACE", 119, 4, 4, "V"},
    {"REPT", 30, 2, 2, "V"},
    {"RIGHT", 116, 1, 2, "V"},
    {"ROUND", 27, 2, 2, "V"},
    {"ROUNDDOWN", 213, 2, 2, "V"},
    {"ROUNDUP", 212, 2, 2, "V"},
    {"ROW", 8, 0, 1, "R"},
    {"ROWS", 76, 1, 1, "R"},
    {"SEARCH", 82, 2, 3, "V"},
    {"SECOND", 73, 1, 1, "V"},
    {"SIGN", 26, 1, 1, "V"},
    {"SMALL", 326, 2, 2, "RV"},
    {"SQRT", 20, 1, 1, "V"},
    {"STDEV", 12, 1, noLimit, "R"},
    {"SUBSTITUTE", 120, 3, 4, "V"},
    {"SUM", 4, 0, noLimit, "R"},
    {"SUMIF", 345, 2, 3, "RVR"},
    {"SUMPRODUCT", 228, 1, noLimit, "A"},
    {"TEXT", 48, 2, 2, "V"},
    {"TIME", 66, 3, 3, "V"},
    {"TODAY", 221, 0, 0, "V", true},
    {"TRIM", 118, 1, 1, "V"},
    {"TRUE", 34, 0, 0, "V"},
    {"TRUNC", 197, 1, 2, "V"},
    {"UPPER", 113, 1, 1, "V"},
    {"VALUE", 33, 1, 1, "V"},
    {"VAR", 46, 1, noLimit, "R"},
    {"VLOOKUP", 102, 3, 4, "VRRV"},
    {"WEEKDAY", 70, 1, 2, "V"},
    {"YEAR", 69, 1, 1, "V"},
};

struct Operator
{
    const char *text;
    Token token;
    /// What binds closer is higher.
    int level;
};

constexpr int highestLevel = 5;
// Longer ones first.
constexpr Operator operators[] = {
    {"<>", NotEqual, 1}, {"<=", LessOrEqual, 1}, {">=", GreaterOrEqual, 1}, {"<", Less, 1},
    {">", Greater, 1},   {"=", Equal, 1},        {"&", Concatenate, 2},     {"+", Add, 3},
    {"-", Subtract, 3},  {"*", Multiply, 4},     {"/", Divide, 4},          {"^", Power, 5},
};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

char upper(char c)
{
    return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
}

bool isLetter(char c)
{
    return upper(c) >= 'A' && upper(c) <= 'Z';
}

const KnownFunction *findFunction(const std::string &name)
{
    const auto *const found =
        std::lower_bound(std::begin(functions), std::end(functions), name,
                         [](const KnownFunction &f, const std::string &n) { return f.name < n; });
    return found != std::end(functions) && found->name == name ? found : nullptr;
}

struct Address
{
    quint16 row = 0;
    /// With the marks of what is relative.
    quint16 column = 0;
};

/// Compiles by walking down the levels of operators; tokens come out in the order in which they
/// are calculated.
class Compiler
{
public:
    explicit Compiler(std::string_view text)
        : m_text(text)
    {
    }

    bool compile(std::string *tokens)
    {
        const bool done = level(1, Class::Value) && (skipBlanks(), m_at == m_text.size());
        tokens->clear();
        if (m_isVolatile) {
            tokens->assign({char(Attribute), 1, 0, 0});
        }
        tokens->append(m_tokens);
        return done && tokens->size() <= mostTokens;
    }

private:
    void put(quint8 token) { m_tokens.push_back(char(token)); }
    void put(Token token, Class of) { put(quint8(token | quint8(of))); }
    char next() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }
    void skipBlanks()
    {
        while (next() == ' ' || next() == '\n' || next() == '\r' || next() == '\t') {
            ++m_at;
        }
    }
    bool take(std::string_view text)
    {
        skipBlanks();
        const bool isThere = m_text.substr(m_at, text.size()) == text;
        m_at += isThere ? text.size() : 0;
        return isThere;
    }

    bool level(int number, Class wanted);
    bool signedOperand(Class wanted);
    bool operand(Class wanted);
    bool number();
    bool text();
    bool word(Class wanted);
    bool call(const std::string &name, Class wanted);
    bool arguments(const KnownFunction &function, Class wanted, int *count);
    bool address(Address *address);
    bool reference(Class wanted);

    std::string_view m_text;
    size_t m_at = 0;
    int m_depth = 0;
    int m_nesting = 0;
    bool m_isVolatile = false;
    std::string m_tokens;
};

/// Operators work on values, also where their result is to be a reference.
Class ofOperands(Class wanted)
{
    return wanted == Class::Array ? Class::Array : Class::Value;
}

bool Compiler::level(int number, Class wanted)
{
    if (number > highestLevel) {
        return signedOperand(wanted);
    }
    // A left operand's class is known only when the operator is: it is compiled once more then.
    const size_t from = m_at;
    const size_t tokens = m_tokens.size();
    if (!level(number + 1, wanted)) {
        return false;
    }
    for (bool isFirst = true;; isFirst = false) {
        const Operator *found = nullptr;
        for (const Operator &one : operators) {
            if (take(one.text)) {
                found = one.level == number ? &one : nullptr;
                m_at -= found ? 0 : strlen(one.text);
                break;
            }
        }
        if (!found) {
            return true;
        }
        if (isFirst && wanted == Class::Reference) {
            const size_t at = m_at;
            m_at = from;
            m_tokens.resize(tokens);
            if (!level(number + 1, Class::Value)) {
                return false;
            }
            m_at = at;
        }
        if (!level(number + 1, ofOperands(wanted))) {
            return false;
        }
        put(found->token);
    }
}

bool Compiler::signedOperand(Class wanted)
{
    if (++m_depth > mostDepth) {
        return false;
    }
    bool good = false;
    if (take("-")) {
        good = signedOperand(ofOperands(wanted));
        put(Minus);
    } else if (take("+")) {
        good = signedOperand(ofOperands(wanted));
        put(Plus);
    } else {
        good = operand(wanted);
        while (good && take("%")) {
            put(Percent);
        }
    }
    --m_depth;
    return good;
}

bool Compiler::operand(Class wanted)
{
    skipBlanks();
    if (take("(")) {
        const bool good = level(1, wanted) && take(")");
        put(Parenthesis);
        return good;
    }
    if (next() == '"') {
        return text();
    }
    return isDigit(next()) || next() == '.' ? number() : word(wanted);
}

bool Compiler::number()
{
    double value = 0;
    const char *const from = m_text.data() + m_at;
    const auto [end, problem] = std::from_chars(from, m_text.data() + m_text.size(), value);
    if (problem != std::errc()) {
        return false;
    }
    m_at += size_t(end - from);
    constexpr double largestInteger = 65535;
    if (value <= largestInteger && value == double(quint16(value))) {
        put(Integer);
        appendBiff(quint16(value), &m_tokens);
        return true;
    }
    quint64 bits = 0;
    memcpy(&bits, &value, sizeof bits);
    put(Number);
    appendBiff(bits, &m_tokens);
    return true;
}

bool Compiler::text()
{
    constexpr size_t longest = 255;
    std::string value;
    for (++m_at; m_at < m_text.size(); ++m_at) {
        if (m_text[m_at] != '"') {
            value += m_text[m_at];
        } else if (m_text.substr(m_at, 2) == "\"\"") {
            value += m_text[m_at++];
        } else {
            ++m_at;
            BiffText text;
            text.set(value);
            put(Text);
            appendBiffText(value, 1, &m_tokens);
            return text.count <= longest;
        }
    }
    return false;
}

bool Compiler::word(Class wanted)
{
    const size_t from = m_at;
    std::string name;
    size_t end = m_at;
    while (end < m_text.size() && (isLetter(m_text[end]) || isDigit(m_text[end]))) {
        name += upper(m_text[end++]);
    }
    m_at = end;
    if (take("(")) {
        return call(name, wanted);
    }
    if (name == "TRUE" || name == "FALSE") {
        put(Boolean);
        put(name == "TRUE" ? quint8(1) : quint8(0));
        return true;
    }
    m_at = from;
    return reference(wanted);
}

bool Compiler::call(const std::string &name, Class wanted)
{
    const KnownFunction *const function = findFunction(name);
    if (!function || ++m_nesting > mostNesting) {
        return false;
    }
    int count = 0;
    if (!arguments(*function, wanted, &count) || count < function->least ||
        count > function->most) {
        return false;
    }
    --m_nesting;
    m_isVolatile = m_isVolatile || function->isVolatile;
    const bool hasFixedCount = function->least == function->most;
    put(hasFixedCount ? Function : VariableFunction, ofOperands(wanted));
    if (!hasFixedCount) {
        put(quint8(count));
    }
    appendBiff(function->number, &m_tokens);
    return true;
}

bool Compiler::arguments(const KnownFunction &function, Class wanted, int *count)
{
    if (take(")")) {
        return true;
    }
    for (;; ++*count) {
        const size_t last = strlen(function.classes) - 1;
        const char letter = function.classes[std::min(size_t(*count), last)];
        const Class own = letter == 'R'   ? Class::Reference
                          : letter == 'A' ? Class::Array
                                          : ofOperands(wanted);
        skipBlanks();
        if (next() == ',' || next() == ')') {
            put(MissingArgument);
        } else if (!level(1, own)) {
            return false;
        }
        if (take(")")) {
            ++*count;
            return true;
        }
        if (!take(",")) {
            return false;
        }
    }
}

bool Compiler::address(Address *address)
{
    constexpr quint16 relativeColumn = 0x4000;
    constexpr quint16 relativeRow = 0x8000;
    constexpr int letters = 26;
    const bool isColumnFixed = take("$");
    int column = 0;
    for (; isLetter(next()) && column <= Biff::mostColumns; ++m_at) {
        column = column * letters + (upper(next()) - 'A' + 1);
    }
    bool isRowFixed = false;
    if (next() == '$') {
        isRowFixed = true;
        ++m_at;
    }
    int row = 0;
    for (; isDigit(next()) && row <= Biff::mostRows; ++m_at) {
        row = row * 10 + (next() - '0');
    }
    address->row = quint16(row - 1);
    address->column = quint16((column - 1) | (isColumnFixed ? 0 : relativeColumn) |
                              (isRowFixed ? 0 : relativeRow));
    // A letter behind makes it a name.
    return column > 0 && column <= Biff::mostColumns && row > 0 && row <= Biff::mostRows &&
           !isLetter(next()) && !isDigit(next()) && next() != '_' && next() != '!' && next() != '.';
}

bool Compiler::reference(Class wanted)
{
    constexpr quint16 columnBits = 0x00ff;
    Address first;
    if (!address(&first)) {
        return false;
    }
    if (!take(":")) {
        put(Cell, wanted);
        appendBiff(first.row, &m_tokens);
        appendBiff(first.column, &m_tokens);
        return true;
    }
    Address last;
    if (!address(&last) || last.row < first.row ||
        (last.column & columnBits) < (first.column & columnBits)) {
        return false;
    }
    put(Range, wanted);
    for (const quint16 part : {first.row, last.row, first.column, last.column}) {
        appendBiff(part, &m_tokens);
    }
    return true;
}

} // namespace

bool compileBiffFormula(std::string_view formula, std::string *tokens)
{
    return Compiler(formula).compile(tokens);
}
