#include "textencoder.h"

#include "utf8.h"

#include <QTextCodec>
#include <algorithm>

namespace {

constexpr size_t blockSize = size_t(1) << 20;
constexpr size_t largestPiece = size_t(1) << 15;
constexpr size_t codePoints = 0x110000;
// Registered numbers of encodings.
constexpr int utf8Mib = 106;
constexpr int utf16Mibs[] = {1013, 1014, 1015};
constexpr int utf32Mibs[] = {1017, 1018, 1019};

enum Knowledge : quint8 { Unknown, Held, NotHeld };

bool contains(const int (&mibs)[3], int mib)
{
    return std::find(std::begin(mibs), std::end(mibs), mib) != std::end(mibs);
}

// The UTF-32 codec makes room for each half of a surrogate pair and leaves what is too much of it
// at the end, as it was in memory.
void dropSurplus(const QString &text, QByteArray *utf32)
{
    const auto pairs =
        std::count_if(text.begin(), text.end(), [](QChar c) { return c.isHighSurrogate(); });
    utf32->truncate(int(text.size() - pairs) * 4);
}

bool isSurrogate(uint codePoint)
{
    return codePoint >= 0xd800 && codePoint <= 0xdfff;
}

} // namespace

OutputCodec::OutputCodec(const QString &name)
    : m_name(name.isEmpty() ? QStringLiteral("UTF-8") : name)
    , m_codec(QTextCodec::codecForName(m_name.toLatin1()))
{
    if (!m_codec) {
        return;
    }
    const int mib = m_codec->mibEnum();
    m_isUtf8 = mib == utf8Mib;
    m_isUtf32 = contains(utf32Mibs, mib);
    m_isUnicode = m_isUtf8 || m_isUtf32 || contains(utf16Mibs, mib);
    for (uint codePoint = 0; m_holdsAscii && codePoint < 0x80; ++codePoint) {
        m_holdsAscii = holds(codePoint);
    }
}

bool OutputCodec::holds(uint codePoint) const
{
    if (isSurrogate(codePoint) || codePoint >= codePoints) {
        return false;
    }
    if (m_isUnicode) {
        return true;
    }
    if (m_known.empty()) {
        m_known.resize(codePoints, Unknown);
    }
    quint8 &known = m_known[codePoint];
    if (known == Unknown) {
        known = survives(codePoint) ? Held : NotHeld;
    }
    return known == Held;
}

bool OutputCodec::holds(const QString &text) const
{
    const QVector<uint> all = text.toUcs4();
    return text.isValidUtf16() &&
           std::all_of(all.begin(), all.end(), [this](uint c) { return holds(c); });
}

/// Not every codec tells what it could not encode, so the way there and back has to.
bool OutputCodec::survives(uint codePoint) const
{
    // QString::fromUcs4() would take U+FEFF for a byte-order mark.
    const QString text = QChar::requiresSurrogates(codePoint)
                             ? QString(QChar(QChar::highSurrogate(codePoint))) +
                                   QChar(QChar::lowSurrogate(codePoint))
                             : QString(QChar(ushort(codePoint)));
    return m_codec->toUnicode(encoded(text)) == text;
}

QByteArray OutputCodec::byteOrderMark() const
{
    return m_isUnicode ? encoded(QString(QChar(QChar::ByteOrderMark))) : QByteArray();
}

QByteArray OutputCodec::encoded(const QString &text) const
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QByteArray bytes = m_codec->fromUnicode(text.constData(), text.size(), &state);
    if (m_isUtf32) {
        dropSurplus(text, &bytes);
    }
    return bytes;
}

QString OutputCodec::decoded(const QByteArray &bytes) const
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    return m_codec->toUnicode(bytes.constData(), bytes.size(), &state);
}

std::unique_ptr<QTextEncoder> OutputCodec::makeEncoder() const
{
    return std::unique_ptr<QTextEncoder>(m_codec->makeEncoder(QTextCodec::IgnoreHeader));
}

QByteArray OutputCodec::encodedPart(QTextEncoder *encoder, const QString &text) const
{
    QByteArray bytes = encoder->fromUnicode(text);
    if (m_isUtf32) {
        dropSurplus(text, &bytes);
    }
    return bytes;
}

TextEncoder::TextEncoder(const OutputCodec &codec, Sink sink)
    : m_codec(codec)
    , m_sink(std::move(sink))
    , m_block(new char[blockSize])
    , m_at(m_block.get())
    , m_blockEnd(m_at + blockSize)
{
    if (!codec.isUtf8()) {
        m_encoder = codec.makeEncoder();
    }
}

TextEncoder::~TextEncoder() = default;

void TextEncoder::append(std::string_view utf8)
{
    while (!utf8.empty()) {
        const size_t size = std::min(utf8.size(), largestRoom);
        char *const at = room(size);
        memcpy(at, utf8.data(), size);
        setEnd(at + size);
        utf8.remove_prefix(size);
    }
}

bool TextEncoder::flush()
{
    const std::string_view all(m_block.get(), size_t(m_at - m_block.get()));
    size_t kept = 0;
    if (!m_failed && !all.empty()) {
        if (m_encoder) {
            kept = size_t(Utf8::incompleteTail(all));
            m_failed = !sinkEncoded(all.substr(0, all.size() - kept));
        } else {
            m_failed = !m_sink(all.data(), qint64(all.size()));
        }
        memmove(m_block.get(), all.data() + all.size() - kept, kept);
    }
    m_at = m_block.get() + kept;
    return !m_failed;
}

/// Encodes piece by piece: the texts in between then stay small enough to be made cheaply.
bool TextEncoder::sinkEncoded(std::string_view utf8)
{
    while (!utf8.empty()) {
        std::string_view piece = utf8.substr(0, largestPiece);
        piece.remove_suffix(size_t(Utf8::incompleteTail(piece)));
        const QByteArray bytes = m_codec.encodedPart(m_encoder.get(), Utf8::decoded(piece));
        if (!m_sink(bytes.constData(), bytes.size())) {
            return false;
        }
        utf8.remove_prefix(piece.size());
    }
    return true;
}

bool TextEncoder::replaceUnencodable(std::string_view utf8, std::string *out) const
{
    bool replaced = false;
    out->clear();
    for (size_t at = 0; at < utf8.size();) {
        const size_t start = at;
        if (m_codec.holds(Utf8::nextCodePoint(utf8, &at))) {
            out->append(utf8.substr(start, at - start));
        } else {
            out->push_back('?');
            replaced = true;
        }
    }
    return replaced;
}
