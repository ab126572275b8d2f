#include "biffformula.h"

#include "biffformulafunctions.h"
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

constexpr size_t mostTokens = 1800;
// Programs of the format's time refuse more.
constexpr int mostNesting = 7;
constexpr int mostDepth = 64;

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
    bool arguments(const BiffFunction &function, Class wanted, int *count);
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
    const BiffFunction *const function = findBiffFunction(name);
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

bool Compiler::arguments(const BiffFunction &function, Class wanted, int *count)
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
