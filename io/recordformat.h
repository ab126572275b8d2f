#pragma once

#include "byteset.h"
#include "dataset.h"
#include "filetypes.h"
#include "textformat.h"

#include <QStringList>
#include <array>
#include <string>
#include <string_view>
#include <vector>

class OutputCodec;

/// A format in which each row is a run of fields between fixed bytes. A subclass fills frame and
/// fields before the rows come and says how a value that cannot stand as it is looks.
class RecordFormat : public TextFormat
{
public:
    bool addRows(const Progress &progress) override;
    void tell(Messages *messages) const override;

protected:
    explicit RecordFormat(const TextJob &job);

    /// How is known that a value can be written as it stands.
    enum class Plain : quint8 {
        /// None of its bytes is one of those given to watchFor().
        ByBytes,
        /// isPlain() says so, asked about once for each distinct value.
        ByValue,
        Always
    };
    struct Field
    {
        std::string before;
        std::string after;
        /// What an empty value looks like, with all that stands around it.
        std::string empty;
        Plain plain = Plain::ByBytes;
    };
    struct Frame
    {
        std::string firstRow;
        std::string nextRow;
        std::string rowEnd;
        /// Between two fields.
        std::string separator;
        /// Behind the fields of a row that has any.
        std::string fieldsEnd;
        /// In place of the fields of a row that has none.
        std::string noFields;
        bool omitsEmpty = false;
    };

    Frame &frame() { return m_frame; }
    std::vector<Field> &fields() { return m_fields; }
    void watchFor(const char *characters);
    void watchForControls();
    /// The same, in any number, for formats in which no field is plain by its bytes.
    void watchInEscapes(const char *characters);
    bool isWatched(char byte) const { return m_watched[uchar(byte)]; }

    virtual bool isPlain(int column, std::string_view value);
    /// Appends a value that is not plain as it has to stand between `before` and `after`.
    virtual void format(int column, std::string_view value, std::string *out);
    /// Appends what stands for a character, or answers false when it may stay.
    virtual bool escapeCharacter(uint codePoint, std::string *out) = 0;
    /// Appends what stands for a character that the encoding cannot hold.
    virtual void escapeUnencodable(uint codePoint, std::string *out);
    void escape(std::string_view value, std::string *out);
    std::string escaped(const QString &text);
    /// A text without any escaping but for what the encoding cannot hold.
    std::string encodable(const QString &text);

    /// The line ending as UTF-8.
    const std::string &lineEnd() const { return m_lineEnd; }
    /// For formats in which the record separator is no line ending: a line feed takes its place.
    void useRealLineEnds();
    void write(std::string_view bytes);
    void writeLine(std::string_view line);
    void countLost() { m_hasLost = true; }
    /// Appends U+FFFD in place of a character that the format does not allow. tell() says in how
    /// many values.
    void replaceCharacter(uint codePoint, std::string *out);
    /// A comment without any escaping, but with U+FFFD for each character that is not allowed.
    std::string cleanComment(const QString &text, bool (*isAllowed)(uint codePoint));
    /// To be called after each value that is written without writeRow().
    void endValue();

    /// The column names in use: "Column 1" and so on without a header, repeated ones told apart
    /// by "_2", "_3" and so on.
    QStringList uniqueNames(Messages *messages) const;

private:
    bool addEmptyRows(const Progress &progress);
    void judge(int firstRow, int rowCount);
    void addRow(const std::string_view *cells, const quint8 *isPlain);
    void addField(int column, std::string_view value, bool withSeparator, bool isPlain);

    Frame m_frame;
    std::vector<Field> m_fields;
    ByteSet m_special;
    std::array<bool, 256> m_watched{};
    size_t m_plainLimit;
    std::string m_lineEnd;
    std::string m_text;
    bool m_replacesLineEnds = false;
    bool m_hasRows = false;
    bool m_hasLost = false;
    qint64 m_lostValues = 0;
    bool m_hasReplaced = false;
    qint64 m_replacedValues = 0;
    uint m_firstReplaced = 0;
    // What is known of the columns that are judged by value.
    struct Judged
    {
        int column;
        ColumnReader reader;
        /// By code; empty when remembering does not pay.
        std::vector<quint8> known;
    };
    std::vector<Judged> m_judged;
    std::vector<quint8> m_isPlain;

protected:
    /// Set before begin() when rows of the document are there already.
    void setHasRows() { m_hasRows = true; }
};

/// "%1 value(s) contain characters that encoding '%2' cannot hold.", when there are any.
void warnOfUnencodable(qint64 values, const OutputCodec &codec, Messages *messages);
/// A warning that one item gives once, whatever the number of its files.
void warnOnce(Messages *messages, const QString &text);
