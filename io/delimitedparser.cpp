#include "delimitedparser.h"

#include "utf8.h"

#include <QtAlgorithms>
#include <algorithm>
#include <cstring>
#include <limits>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

constexpr size_t maskBits = 64;
constexpr size_t noBlock = std::numeric_limits<size_t>::max();
constexpr size_t smallestBlock = 16;
// Beyond these a table could not be worked with: a column costs about a kilobyte, and a text of
// more bytes can't be turned into characters.
constexpr int mostValues = 1 << 20;
constexpr size_t mostRowBytes = size_t(1) << 30;
constexpr char quote = '"';

#ifdef __SSE2__
quint64 maskOf(__m128i a, __m128i b, __m128i c, __m128i d)
{
    const auto bits = [](__m128i hits) { return quint64(uint(_mm_movemask_epi8(hits))); };
    return bits(a) | bits(b) << 16 | bits(c) << 32 | bits(d) << 48;
}
#endif

} // namespace

DelimitedParser::DelimitedParser(TextSource *source, Progress progress, qint64 blockSize)
    : m_source(source)
    , m_progress(std::move(progress))
    , m_blockSize(std::max(size_t(blockSize), smallestBlock))
    , m_delimiter(",")
    , m_block(noBlock)
    , m_values(64)
{
}

std::string_view DelimitedParser::sample(qint64 size)
{
    while (m_end - m_at < size && !m_textEnded && m_ending == Ending::None) {
        refill();
    }
    return {m_at, size_t(m_end - m_at)};
}

void DelimitedParser::setGrammar(Grammar grammar, const QString &delimiter,
                                 bool ignoreRepeatedDelimiter)
{
    m_delimiter = Utf8::encoded(delimiter);
    m_first = uchar(m_delimiter.front());
    m_dropRepeated = ignoreRepeatedDelimiter;
    m_keepFirst = grammar == Grammar::Unquoted;
    if (grammar == Grammar::Quoted) {
        // A quote that is the delimiter groups nothing.
        m_quoted = m_first != quote;
        return;
    }
    m_quoted = false;
    // A line end is never a delimiter here.
    if (m_first == '\n' || m_first == '\r') {
        m_first = -1;
    }
}

bool DelimitedParser::next()
{
    while (m_ending == Ending::None) {
        switch (cutRow()) {
        case Stop::Delimiter:
        case Stop::RowEnd:
            return true;
        case Stop::TextEnd:
            m_ending = m_ending == Ending::None ? Ending::TextEnd : m_ending;
            break;
        case Stop::Starved:
            refill();
            break;
        }
    }
    return false;
}

DelimitedParser::Stop DelimitedParser::cutRow()
{
    m_count = 0;
    m_assembled.clear();
    const char *at = m_at;
    if (at == m_end) {
        return m_textEnded ? Stop::TextEnd : Stop::Starved;
    }
    for (;;) {
        std::string_view value;
        const char *found = nullptr;
        // Behind the text stand zero bytes, so that a value may be looked at there.
        if (m_quoted && *at == quote) {
            if (!cutQuoted(at, &value, &found)) {
                return Stop::Starved;
            }
        } else {
            found = nextSeparator(at);
            value = {at, size_t(found - at)};
        }
        const char *next = m_end;
        const Stop stop = stopAt(found, &next);
        if (stop == Stop::Starved) {
            return stop;
        }
        const bool repeated = m_dropRepeated && value.empty() && stop == Stop::Delimiter &&
                              !(m_keepFirst && at == m_at);
        if (!repeated && !addValue(value)) {
            m_ending = Ending::TooBig;
            return Stop::TextEnd;
        }
        if (stop != Stop::Delimiter) {
            endRow(next);
            return Stop::RowEnd;
        }
        at = next;
    }
}

inline DelimitedParser::Stop DelimitedParser::stopAt(const char *found, const char **next) const
{
    if (found >= m_end) {
        return m_textEnded ? Stop::TextEnd : Stop::Starved;
    }
    const char byte = *found;
    if (uchar(byte) == m_first && byte != '\r') {
        *next = found + m_delimiter.size();
        return Stop::Delimiter;
    }
    *next = found + 1;
    if (byte == '\n') {
        return Stop::RowEnd;
    }
    if (*next == m_end && !m_textEnded) {
        return Stop::Starved;
    }
    // A carriage return in front of a line feed counts for nothing.
    if (*next < m_end && **next == '\n') {
        ++*next;
        return m_first == '\n' ? Stop::Delimiter : Stop::RowEnd;
    }
    return m_first == '\r' ? Stop::Delimiter : Stop::RowEnd;
}

bool DelimitedParser::cutQuoted(const char *at, std::string_view *value, const char **found)
{
    const size_t from = m_assembled.size();
    const char *piece = at + 1;
    const char *close = nextQuote(piece);
    for (;;) {
        if (close + 1 >= m_end && !m_textEnded) {
            return false;
        }
        if (close + 1 >= m_end || close[1] != quote) {
            break;
        }
        // Two quotes stand for one.
        m_assembled.text()->append(piece, close + 1);
        piece = close + 2;
        close = nextQuote(piece);
    }
    *found = close < m_end ? nextSeparator(close + 1) : m_end;
    const char *const rest = std::min(close + 1, *found);
    if (rest == *found && m_assembled.size() == from) {
        *value = {piece, size_t(close - piece)};
        return true;
    }
    std::string *const text = m_assembled.text();
    text->append(piece, close);
    // The start of a damaged sequence must not become whole by what follows the quote.
    const auto cut = size_t(Utf8::incompleteTail(*text));
    std::fill(text->end() - ptrdiff_t(cut), text->end(), TextSource::damageMark);
    text->append(rest, *found);
    m_assembled.end(m_count, from);
    *value = std::string_view(*text).substr(from);
    return true;
}

inline const char *DelimitedParser::nextSeparator(const char *from)
{
    const char *const buffer = m_buffer.get();
    const auto end = size_t(m_end - buffer);
    for (;;) {
        const auto offset = size_t(from - buffer);
        size_t block = offset / maskBits;
        if (block != m_block) {
            classify(block);
        }
        quint64 hits = m_separators & (~quint64(0) << (offset % maskBits));
        while (hits == 0) {
            ++block;
            if (block * maskBits >= end) {
                return m_end;
            }
            classify(block);
            hits = m_separators;
        }
        const char *const found = buffer + block * maskBits + qCountTrailingZeroBits(hits);
        if (found >= m_end) {
            return m_end;
        }
        if (m_delimiter.size() == 1 || uchar(*found) != m_first || isDelimiter(found)) {
            return found;
        }
        if (!m_textEnded && size_t(m_end - found) < m_delimiter.size()) {
            return m_end;
        }
        from = found + 1;
    }
}

bool DelimitedParser::isDelimiter(const char *at) const
{
    return size_t(m_end - at) >= m_delimiter.size() &&
           memcmp(at, m_delimiter.data(), m_delimiter.size()) == 0;
}

const char *DelimitedParser::nextQuote(const char *from)
{
    const char *const buffer = m_buffer.get();
    const auto end = size_t(m_end - buffer);
    const auto offset = size_t(from - buffer);
    size_t block = offset / maskBits;
    if (offset >= end) {
        return m_end;
    }
    if (block != m_block) {
        classify(block);
    }
    quint64 hits = m_quotes & (~quint64(0) << (offset % maskBits));
    while (hits == 0) {
        ++block;
        if (block * maskBits >= end) {
            return m_end;
        }
        classify(block);
        hits = m_quotes;
    }
    return std::min(buffer + block * maskBits + qCountTrailingZeroBits(hits), m_end);
}

inline void DelimitedParser::classify(size_t block)
{
    m_block = block;
    const char *const p = m_buffer.get() + block * maskBits;
    const char first = m_first < 0 ? '\n' : char(m_first);
#ifdef __SSE2__
    const __m128i firsts = _mm_set1_epi8(first);
    const __m128i lineFeeds = _mm_set1_epi8('\n');
    const __m128i returns = _mm_set1_epi8('\r');
    const __m128i quotes = _mm_set1_epi8(quote);
    const auto load = [p](int index) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p) + index);
    };
    const auto separators = [&](__m128i bytes) {
        return _mm_or_si128(
            _mm_cmpeq_epi8(bytes, firsts),
            _mm_or_si128(_mm_cmpeq_epi8(bytes, lineFeeds), _mm_cmpeq_epi8(bytes, returns)));
    };
    const __m128i a = load(0);
    const __m128i b = load(1);
    const __m128i c = load(2);
    const __m128i d = load(3);
    m_separators = maskOf(separators(a), separators(b), separators(c), separators(d));
    m_quotes = maskOf(_mm_cmpeq_epi8(a, quotes), _mm_cmpeq_epi8(b, quotes),
                      _mm_cmpeq_epi8(c, quotes), _mm_cmpeq_epi8(d, quotes));
#else
    m_separators = 0;
    m_quotes = 0;
    for (size_t i = 0; i < maskBits; ++i) {
        const char byte = p[i];
        m_separators |= quint64(byte == first || byte == '\n' || byte == '\r') << i;
        m_quotes |= quint64(byte == quote) << i;
    }
#endif
}

inline bool DelimitedParser::addValue(std::string_view value)
{
    if (size_t(m_count) == m_values.size()) {
        if (m_count >= mostValues) {
            return false;
        }
        m_values.resize(m_values.size() * 2);
    }
    m_values[size_t(m_count)] = value;
    ++m_count;
    return true;
}

void DelimitedParser::endRow(const char *next)
{
    m_assembled.place(m_values.data());
    m_rowStart = m_at;
    m_at = next;
}

void DelimitedParser::refill()
{
    const auto unread = size_t(m_end - m_at);
    if (unread > mostRowBytes) {
        m_ending = Ending::TooBig;
        return;
    }
    makeRoom(unread, unread + std::max(unread, m_blockSize) + smallestBlock);
    // A row that is not complete is cut again from its start: at least as much is read as there
    // is, so that the work stays linear however long the row.
    const size_t enough = 2 * unread;
    size_t filled = unread;
    do {
        const auto space = qint64(std::min(m_blockSize, m_capacity - filled));
        const qint64 count = m_source->read(m_buffer.get() + filled, space);
        if (count < 0) {
            m_ending = Ending::Failed;
            return;
        }
        filled += size_t(count);
        m_end = m_buffer.get() + filled;
        if (!m_source->isClean()) {
            m_damageEnd = m_end;
        }
        m_textEnded = count == 0;
        if (!reportProgress(m_progress, m_source->fraction())) {
            m_ending = Ending::Stopped;
            return;
        }
    } while (!m_textEnded && filled < enough);
    memset(m_buffer.get() + filled, 0, maskBits);
    m_block = noBlock;
}

/// Moves the unread text to the start of a buffer that holds `wanted` bytes.
void DelimitedParser::makeRoom(size_t unread, size_t wanted)
{
    const auto damaged = size_t(std::max<ptrdiff_t>(m_damageEnd - m_at, 0));
    if (wanted > m_capacity) {
        std::unique_ptr<char[]> larger(new char[wanted + maskBits]);
        if (unread > 0) {
            memcpy(larger.get(), m_at, unread);
        }
        m_buffer = std::move(larger);
        m_capacity = wanted;
    } else if (unread > 0) {
        memmove(m_buffer.get(), m_at, unread);
    }
    m_at = m_buffer.get();
    m_rowStart = m_at;
    m_end = m_at + unread;
    m_damageEnd = m_at + damaged;
}
