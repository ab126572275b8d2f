#pragma once

#include <QByteArray>
#include <QString>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class QTextCodec;
class QTextEncoder;

/// The encoding of an output: which characters it can hold, and how a text looks in it.
class OutputCodec
{
public:
    /// An empty name stands for UTF-8.
    explicit OutputCodec(const QString &name);

    bool isKnown() const { return m_codec != nullptr; }
    QString name() const { return m_name; }
    bool isUtf8() const { return m_isUtf8; }
    /// Holds every character; only unpaired surrogates have no place in it.
    bool isUnicode() const { return m_isUnicode; }
    /// False when even some ASCII characters have no place in it.
    bool holdsAscii() const { return m_holdsAscii; }
    bool holds(uint codePoint) const;
    bool holds(const QString &text) const;
    /// Empty for encodings that have no such mark.
    QByteArray byteOrderMark() const;
    /// Without a byte-order mark.
    QByteArray encoded(const QString &text) const;
    /// The text of bytes in this encoding; a byte-order mark is a character like any other.
    QString decoded(const QByteArray &bytes) const;
    /// For encoding a text in parts with encodedPart(); without a byte-order mark.
    std::unique_ptr<QTextEncoder> makeEncoder() const;
    QByteArray encodedPart(QTextEncoder *encoder, const QString &text) const;

private:
    bool survives(uint codePoint) const;

    QString m_name;
    QTextCodec *m_codec = nullptr;
    bool m_isUtf8 = false;
    bool m_isUtf32 = false;
    bool m_isUnicode = false;
    bool m_holdsAscii = true;
    /// What holds() found out, by code point.
    mutable std::vector<quint8> m_known;
};

/// Collects UTF-8 in one large block and hands it on in the output's encoding, a block at a time.
/// The caller keeps out of it what the encoding cannot hold (see replaceUnencodable()).
class TextEncoder
{
public:
    /// Takes encoded bytes; answers false when nothing more can be taken.
    using Sink = std::function<bool(const char *bytes, qint64 size)>;
    /// The most that room() gives.
    static constexpr size_t largestRoom = size_t(1) << 16;

    TextEncoder(const OutputCodec &codec, Sink sink);
    ~TextEncoder();
    TextEncoder(const TextEncoder &) = delete;
    TextEncoder &operator=(const TextEncoder &) = delete;

    const OutputCodec &codec() const { return m_codec; }

    /// A place for this many bytes; setEnd() tells how far it was filled.
    char *room(size_t bytes)
    {
        if (size_t(m_blockEnd - m_at) < bytes) {
            flush();
        }
        return m_at;
    }
    void setEnd(char *end) { m_at = end; }
    /// Bytes of any number; a piece may end inside a character.
    void append(std::string_view utf8);
    /// Hands everything on. Answers whether the sink took all so far.
    bool flush();
    bool hasFailed() const { return m_failed; }

    /// Copies a value with "?" for each character that the encoding cannot hold, and answers
    /// whether there was one.
    bool replaceUnencodable(std::string_view utf8, std::string *out) const;

private:
    bool sinkEncoded(std::string_view utf8);

    const OutputCodec &m_codec;
    Sink m_sink;
    std::unique_ptr<QTextEncoder> m_encoder;
    std::unique_ptr<char[]> m_block;
    char *m_at;
    char *m_blockEnd;
    bool m_failed = false;
};
