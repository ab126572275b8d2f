#include "jsonparser.h"

#include "textarena.h"

#include <QByteArray>
#include <QChar>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

constexpr int mostNested = 1024;

bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

/// The first quote or backslash.
const char *findQuoteOrEscape(const char *at, const char *end)
{
#ifdef __SSE2__
    const __m128i quotes = _mm_set1_epi8('"');
    const __m128i escapes = _mm_set1_epi8('\\');
    while (end - at >= 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at));
        const int found = _mm_movemask_epi8(
            _mm_or_si128(_mm_cmpeq_epi8(bytes, quotes), _mm_cmpeq_epi8(bytes, escapes)));
        if (found != 0) {
            return at + __builtin_ctz(unsigned(found));
        }
        at += 16;
    }
#endif
    while (at < end && *at != '"' && *at != '\\') {
        ++at;
    }
    return at;
}

/// Appends a character, or half of a surrogate pair, as UTF-8.
char *appendUtf8(uint code, char *out)
{
    const auto put = [&out](uint byte) { *out++ = char(uchar(byte)); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xc0 | code >> 6);
        put(0x80 | (code & 0x3f));
    } else if (code < 0x10000) {
        put(0xe0 | code >> 12);
        put(0x80 | (code >> 6 & 0x3f));
        put(0x80 | (code & 0x3f));
    } else {
        put(0xf0 | code >> 18);
        put(0x80 | (code >> 12 & 0x3f));
        put(0x80 | (code >> 6 & 0x3f));
        put(0x80 | (code & 0x3f));
    }
    return out;
}

int hexDigit(char byte)
{
    if (isDigit(byte)) {
        return byte - '0';
    }
    const char lower = char(byte | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

JsonParser::JsonParser(std::string_view text, JsonHandler *handler, TextArena *texts)
    : m_begin(text.data())
    , m_at(text.data())
    , m_end(text.data() + text.size())
    , m_handler(handler)
    , m_texts(texts)
{
}

QString JsonParser::errorText() const
{
    QJsonParseError error;
    error.offset = 0;
    error.error = m_code;
    return error.errorString();
}

bool JsonParser::skipSpace()
{
    while (m_at < m_end && (*m_at == ' ' || *m_at == '\n' || *m_at == '\r' || *m_at == '\t')) {
        ++m_at;
    }
    return m_at < m_end;
}

/// Takes the next byte; 0 when it is no punctuation.
char JsonParser::nextToken()
{
    if (!skipSpace()) {
        return 0;
    }
    const char token = *m_at++;
    switch (token) {
    case '[':
    case ']':
    case '{':
    case '}':
    case ':':
    case ',':
    case '"':
        return token;
    default:
        return 0;
    }
}

bool JsonParser::fail(Code code)
{
    m_code = code;
    return false;
}

bool JsonParser::stopUnless(bool goOn)
{
    m_stopped = m_stopped || !goOn;
    return goOn;
}

JsonParser::Outcome JsonParser::parse()
{
    const std::string_view mark = "\xef\xbb\xbf";
    if (std::string_view(m_at, size_t(m_end - m_at)).substr(0, mark.size()) == mark) {
        m_at += mark.size();
    }
    if (parseTop()) {
        return Outcome::Done;
    }
    return m_stopped ? Outcome::Stopped : Outcome::Failed;
}

JsonParser::Outcome JsonParser::parseElement()
{
    m_depth = 1;
    if (m_at < m_end ? parseValue() : fail(QJsonParseError::UnterminatedArray)) {
        return Outcome::Done;
    }
    return m_stopped ? Outcome::Stopped : Outcome::Failed;
}

bool JsonParser::parseTop()
{
    const char token = nextToken();
    if (token != '[' && token != '{') {
        return fail(QJsonParseError::IllegalValue);
    }
    if (!(token == '[' ? parseArray() : parseObject())) {
        return false;
    }
    return skipSpace() ? fail(QJsonParseError::GarbageAtEnd) : true;
}

bool JsonParser::parseObject()
{
    if (++m_depth > mostNested) {
        return fail(QJsonParseError::DeepNesting);
    }
    if (!stopUnless(m_handler->beginObject())) {
        return false;
    }
    char token = nextToken();
    while (token == '"') {
        if (!parseMember()) {
            return false;
        }
        token = nextToken();
        if (token != ',') {
            break;
        }
        token = nextToken();
        if (token == '}') {
            return fail(QJsonParseError::MissingObject);
        }
    }
    if (token != '}') {
        return fail(QJsonParseError::UnterminatedObject);
    }
    --m_depth;
    return stopUnless(m_handler->endObject());
}

bool JsonParser::parseMember()
{
    std::string_view name;
    if (!parseString(&name)) {
        return false;
    }
    if (nextToken() != ':') {
        return fail(QJsonParseError::MissingNameSeparator);
    }
    if (!skipSpace()) {
        return fail(QJsonParseError::UnterminatedObject);
    }
    return stopUnless(m_handler->key(name)) && parseValue();
}

bool JsonParser::parseArray()
{
    if (++m_depth > mostNested) {
        return fail(QJsonParseError::DeepNesting);
    }
    if (!stopUnless(m_handler->beginArray())) {
        return false;
    }
    if (!skipSpace()) {
        return fail(QJsonParseError::UnterminatedArray);
    }
    if (*m_at == ']') {
        ++m_at;
    } else {
        for (;;) {
            if (!skipSpace()) {
                return fail(QJsonParseError::UnterminatedArray);
            }
            if (!parseValue()) {
                return false;
            }
            const char token = nextToken();
            if (token == ']') {
                break;
            }
            if (token != ',') {
                return fail(skipSpace() ? QJsonParseError::MissingValueSeparator
                                        : QJsonParseError::UnterminatedArray);
            }
        }
    }
    --m_depth;
    return stopUnless(m_handler->endArray());
}

bool JsonParser::parseValue()
{
    std::string_view text;
    switch (*m_at++) {
    case 'n':
        return parseWord("ull") && stopUnless(m_handler->null());
    case 't':
        return parseWord("rue") && stopUnless(m_handler->value("true"));
    case 'f':
        return parseWord("alse") && stopUnless(m_handler->value("false"));
    case '"':
        return parseString(&text) && stopUnless(m_handler->value(text));
    case '[':
        return parseArray();
    case '{':
        return parseObject();
    case ',':
        return fail(QJsonParseError::IllegalValue);
    case '}':
    case ']':
        return fail(QJsonParseError::MissingObject);
    default:
        --m_at;
        return parseNumber();
    }
}

/// The rest of a word of letters. Something must follow it.
bool JsonParser::parseWord(std::string_view rest)
{
    if (m_end - m_at <= std::ptrdiff_t(rest.size())) {
        return fail(QJsonParseError::IllegalValue);
    }
    for (const char expected : rest) {
        if (*m_at++ != expected) {
            return fail(QJsonParseError::IllegalValue);
        }
    }
    return true;
}

bool JsonParser::parseNumber()
{
    const char *const start = m_at;
    const auto skipDigits = [this] {
        const char *const first = m_at;
        while (m_at < m_end && isDigit(*m_at)) {
            ++m_at;
        }
        return m_at > first;
    };
    const auto skip = [this](char one, char other) {
        const bool there = m_at < m_end && (*m_at == one || *m_at == other);
        m_at += there ? 1 : 0;
        return there;
    };
    skip('-', '-');
    bool plain = skip('0', '0') || skipDigits();
    if (skip('.', '.')) {
        plain = skipDigits() && plain;
    }
    if (skip('e', 'E')) {
        skip('+', '-');
        plain = skipDigits() && plain;
    }
    if (m_at >= m_end) {
        return fail(QJsonParseError::TerminationByNumber);
    }
    const std::string_view text(start, size_t(m_at - start));
    if (!plain) { // such as ".5", "5." or nothing at all
        bool isNumber = false;
        QByteArray(text.data(), int(text.size())).toDouble(&isNumber);
        if (!isNumber) {
            return fail(QJsonParseError::IllegalNumber);
        }
    }
    return stopUnless(m_handler->value(text));
}

bool JsonParser::parseString(std::string_view *text)
{
    const char *const start = m_at;
    m_at = findQuoteOrEscape(m_at, m_end);
    const bool escape = m_at < m_end && *m_at == '\\';
    if (++m_at >= m_end) {
        return fail(QJsonParseError::UnterminatedString);
    }
    if (escape) {
        m_at = start;
        return parseEscapedString(text);
    }
    *text = {start, size_t(m_at - start) - 1};
    return true;
}

bool JsonParser::parseEscapedString(std::string_view *text)
{
    // An escape is never shorter than what it stands for.
    const char *close = m_at;
    while (close < m_end && *close != '"') {
        close = findQuoteOrEscape(close, m_end);
        close += close < m_end && *close == '\\' ? 2 : 0;
    }
    char *const start = m_texts->room(size_t(std::min(close, m_end) - m_at));
    char *out = start;
    while (m_at < m_end && *m_at != '"') {
        if (*m_at == '\\') {
            if (!parseEscape(&out)) {
                return false;
            }
            continue;
        }
        const char *const next = findQuoteOrEscape(m_at, m_end);
        memcpy(out, m_at, size_t(next - m_at));
        out += next - m_at;
        m_at = next;
    }
    if (++m_at >= m_end) {
        return fail(QJsonParseError::UnterminatedString);
    }
    *text = {start, size_t(out - start)};
    m_texts->keep(text->size());
    return true;
}

bool JsonParser::parseEscape(char **out)
{
    if (++m_at >= m_end) {
        return fail(QJsonParseError::IllegalEscapeSequence);
    }
    const char escaped = *m_at++;
    if (escaped == 'u') {
        uint code = 0;
        if (!parseCodeUnit(&code)) {
            return false;
        }
        if (QChar::isHighSurrogate(code) && m_end - m_at >= 2 && m_at[0] == '\\' &&
            m_at[1] == 'u') {
            const char *const second = m_at;
            uint low = 0;
            m_at += 2;
            if (!parseCodeUnit(&low)) {
                return false;
            }
            if (QChar::isLowSurrogate(low)) {
                code = QChar::surrogateToUcs4(ushort(code), ushort(low));
            } else {
                m_at = second;
            }
        }
        *out = appendUtf8(code, *out);
        return true;
    }
    if (uchar(escaped) >= 0x80) {
        return fail(QJsonParseError::IllegalUTF8String);
    }
    // Any other character stands for itself.
    constexpr std::string_view names = "bfnrt";
    constexpr std::string_view meanings = "\b\f\n\r\t";
    const size_t index = names.find(escaped);
    *(*out)++ = index == std::string_view::npos ? escaped : meanings[index];
    return true;
}

bool JsonParser::parseCodeUnit(uint *unit)
{
    if (m_end - m_at < 4) {
        return fail(QJsonParseError::IllegalEscapeSequence);
    }
    for (int i = 0; i < 4; ++i) {
        const int digit = hexDigit(*m_at);
        if (digit < 0) {
            return fail(QJsonParseError::IllegalEscapeSequence);
        }
        *unit = *unit << 4 | uint(digit);
        ++m_at;
    }
    return true;
}
