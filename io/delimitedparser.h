#pragma once

#include "progress.h"
#include "rowtext.h"
#include "textdecoder.h"

#include <QString>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// A row as it was cut from the text. The bytes belong to the parser, and the values are valid
/// until the next row is cut; they may be changed.
struct CutRow
{
    std::string_view *values;
    int count;
    /// False when values may hold something that could not be decoded.
    bool clean;
};

/// Cuts delimited text into rows of values, in one pass over blocks of bytes that become masks of
/// the bytes that matter. Values are not copied, but for those that hold doubled quotes or text
/// after their closing quote.
class DelimitedParser
{
public:
    enum class Grammar {
        Quoted,  ///< a value in double quotes may hold delimiters and line ends
        Unquoted ///< a double quote is a character like any other
    };
    enum class Ending {
        None, ///< there may be more rows
        TextEnd,
        Stopped, ///< the user has asked to stop
        Failed,  ///< the source can't be read; it knows why
        TooBig   ///< a single row has too many values or bytes
    };
    static constexpr qint64 standardBlockSize = qint64(256) * 1024;

    /// At most `blockSize` bytes (at least 16) are read at once.
    explicit DelimitedParser(TextSource *source, Progress progress = Progress(),
                             qint64 blockSize = standardBlockSize);

    /// The first `size` bytes of the text, or more; less when it is shorter. Before next().
    std::string_view sample(qint64 size);
    /// `delimiter` is one character. To be called before next().
    void setGrammar(Grammar grammar, const QString &delimiter, bool ignoreRepeatedDelimiter);
    /// Instead of setGrammar(): every line is a row of one value.
    void setLines() { setGrammar(Grammar::Unquoted, QStringLiteral("\n"), false); }

    /// Cuts the next row. After the answer false, ending() tells why.
    bool next();
    CutRow row() { return {m_values.data(), m_count, m_rowStart >= m_damageEnd}; }
    Ending ending() const { return m_ending; }

private:
    enum class Stop { Delimiter, RowEnd, TextEnd, Starved };

    Stop cutRow();
    Stop stopAt(const char *found, const char **next) const;
    /// The value that begins with the quote at `at`. Answers false when more text is needed.
    bool cutQuoted(const char *at, std::string_view *value, const char **found);
    const char *nextSeparator(const char *from);
    const char *nextQuote(const char *from);
    bool isDelimiter(const char *at) const;
    void classify(size_t block);
    bool addValue(std::string_view value);
    void endRow(const char *next);
    void refill();
    void makeRoom(size_t unread, size_t wanted);

    TextSource *m_source;
    Progress m_progress;
    size_t m_blockSize;
    Ending m_ending = Ending::None;

    /// Unread text reaches from m_at to m_end; text in front of m_damageEnd may be damaged.
    std::unique_ptr<char[]> m_buffer;
    size_t m_capacity = 0;
    const char *m_rowStart = nullptr;
    const char *m_at = nullptr;
    const char *m_end = nullptr;
    const char *m_damageEnd = nullptr;
    bool m_textEnded = false;

    std::string m_delimiter;
    /// The delimiter's first byte; -1 when no delimiter can occur.
    int m_first = ',';
    bool m_quoted = true;
    bool m_dropRepeated = false;
    /// The unquoted grammar keeps an empty value in front of a row's first delimiter.
    bool m_keepFirst = false;

    /// The masks of block m_block of 64 bytes, one bit a byte.
    size_t m_block = 0;
    quint64 m_separators = 0;
    quint64 m_quotes = 0;

    std::vector<std::string_view> m_values;
    int m_count = 0;
    RowText m_assembled;
};
