#include "textdecoder.h"

#include "utf8.h"

#include <QFile>
#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr char replacementBytes[] = "\xef\xbf\xbd";
constexpr qint64 codecBlockSize = 1 << 16;
constexpr int utf8Mib = 106;

struct ByteOrderMark
{
    std::string_view bytes;
    const char *codec;
};

// The marks of UTF-32 come first: that of its little-endian form begins with that of UTF-16.
constexpr std::array<ByteOrderMark, 5> byteOrderMarks{{
    {std::string_view("\xff\xfe\0\0", 4), "UTF-32LE"},
    {std::string_view("\0\0\xfe\xff", 4), "UTF-32BE"},
    {std::string_view("\xff\xfe", 2), "UTF-16LE"},
    {std::string_view("\xfe\xff", 2), "UTF-16BE"},
    {std::string_view("\xef\xbb\xbf", 3), "UTF-8"},
}};
constexpr size_t longestMark = 4;
constexpr std::string_view utf8Mark = byteOrderMarks.back().bytes;

bool startsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

/// Bytes that the codec takes at a time.
size_t unitSize(const QTextCodec *codec)
{
    const QByteArray name = codec->name();
    return name.startsWith("UTF-16") ? 2 : name.startsWith("UTF-32") ? 4 : 1;
}

/// Replaces every U+FFFD by the damage mark. Answers whether there was one.
bool markDamage(std::string *text)
{
    size_t to = text->find(replacementBytes);
    if (to == std::string::npos) {
        return false;
    }
    size_t from = to;
    while (from < text->size()) {
        if (text->compare(from, 3, replacementBytes) == 0) {
            (*text)[to] = TextSource::damageMark;
            from += 3;
        } else {
            (*text)[to] = (*text)[from];
            ++from;
        }
        ++to;
    }
    text->resize(to);
    return true;
}

} // namespace

std::unique_ptr<TextSource> TextSource::fromFile(const QString &path, const QString &encoding,
                                                 QString *error)
{
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        *error = file->errorString();
        return nullptr;
    }
    return fromDevice(std::move(file), encoding);
}

std::unique_ptr<TextSource> TextSource::fromDevice(std::unique_ptr<QIODevice> device,
                                                   const QString &encoding)
{
    std::unique_ptr<TextSource> source(new TextSource);
    source->m_size = device->isSequential() ? 0 : device->size();
    source->m_device = std::move(device);
    source->choose(encoding);
    return source;
}

std::unique_ptr<TextSource> TextSource::fromText(const QString &text)
{
    std::unique_ptr<TextSource> source(new TextSource);
    source->m_decoded = Utf8::encoded(text);
    source->m_atEnd = true;
    if (startsWith(source->m_decoded, utf8Mark)) {
        source->m_delivered = utf8Mark.size();
    }
    return source;
}

bool TextSource::isAutomatic(const QString &encoding)
{
    return encoding.isEmpty() ||
           encoding.compare(QLatin1String("Automatic"), Qt::CaseInsensitive) == 0;
}

void TextSource::choose(const QString &encoding)
{
    m_raw = true;
    // A pipe may deliver its first bytes one by one.
    m_ahead.resize(longestMark);
    size_t filled = 0;
    while (filled < longestMark && m_error.isEmpty()) {
        const qint64 count = readRaw(&m_ahead[filled], qint64(longestMark - filled));
        if (count <= 0) {
            break;
        }
        filled += size_t(count);
    }
    m_ahead.resize(filled);

    if (isAutomatic(encoding)) {
        for (const ByteOrderMark &mark : byteOrderMarks) {
            if (startsWith(m_ahead, mark.bytes)) {
                m_ahead.erase(0, mark.bytes.size());
                setCodec(QTextCodec::codecForName(mark.codec));
                return;
            }
        }
        return;
    }
    QTextCodec *codec = QTextCodec::codecForName(encoding.toUtf8());
    m_encodingKnown = codec != nullptr;
    setCodec(codec);
    if (m_raw && startsWith(m_ahead, utf8Mark)) {
        m_ahead.erase(0, utf8Mark.size());
    }
}

void TextSource::setCodec(QTextCodec *codec)
{
    if (!codec || codec->mibEnum() == utf8Mib) {
        return;
    }
    m_raw = false;
    m_codec = codec;
    m_unitSize = unitSize(codec);
    m_encodingName = QString::fromLatin1(codec->name());
    m_state = std::make_unique<QTextCodec::ConverterState>();
}

double TextSource::fraction() const
{
    if (!m_device) {
        return m_decoded.empty() ? 1.0 : double(m_delivered) / double(m_decoded.size());
    }
    return m_size > 0 ? std::min(1.0, double(m_position) / double(m_size)) : 0.0;
}

qint64 TextSource::readRaw(char *to, qint64 space)
{
    const qint64 count = m_device->read(to, space);
    if (count < 0) {
        m_error = m_device->errorString();
        return -1;
    }
    m_position += count;
    return count;
}

qint64 TextSource::read(char *to, qint64 space)
{
    if (!m_error.isEmpty()) {
        return -1;
    }
    return m_raw ? readUtf8(to, space) : readDecoded(to, space);
}

qint64 TextSource::readUtf8(char *to, qint64 space)
{
    // A sequence that the end of the block cuts waits for its rest, so that each block can be
    // checked by itself.
    size_t filled = m_ahead.copy(to, size_t(space));
    m_ahead.clear();
    int tail = int(filled);
    while (!m_atEnd && size_t(tail) == filled && filled < size_t(space)) {
        const qint64 count = readRaw(to + filled, space - qint64(filled));
        if (count < 0) {
            return -1;
        }
        m_atEnd = count == 0;
        filled += size_t(count);
        tail = m_atEnd ? 0 : Utf8::incompleteTail({to, filled});
    }
    if (m_atEnd) {
        tail = 0;
    }
    filled -= size_t(tail);
    m_ahead.assign(to + filled, size_t(tail));
    m_clean = Utf8::isValid({to, filled});
    return qint64(filled);
}

qint64 TextSource::readDecoded(char *to, qint64 space)
{
    while (m_delivered == m_decoded.size()) {
        m_decoded.clear();
        m_delivered = 0;
        if (m_atEnd) {
            return 0;
        }
        if (!decodeBlock()) {
            return -1;
        }
    }
    const size_t count = m_decoded.copy(to, size_t(space), m_delivered);
    m_delivered += count;
    m_clean = memchr(to, uchar(damageMark), count) == nullptr;
    return qint64(count);
}

bool TextSource::decodeBlock()
{
    std::array<char, codecBlockSize> raw;
    size_t filled = m_ahead.copy(raw.data(), raw.size());
    m_ahead.clear();
    const qint64 count = readRaw(raw.data() + filled, qint64(raw.size() - filled));
    if (count < 0) {
        return false;
    }
    m_atEnd = count == 0;
    filled += size_t(count);
    // Codecs get whole units, so that a cut end can be told.
    const size_t cut = filled % m_unitSize;
    QString text = m_codec->toUnicode(raw.data(), int(filled - cut), m_state.get());
    if (m_atEnd) {
        text += decodedEnd();
    } else {
        m_ahead.assign(raw.data() + filled - cut, cut);
    }
    encode(text);
    if (m_unitSize == 1) {
        markDamage(&m_decoded);
    } else if (m_atEnd && cut > 0) {
        // In UTF-16 and UTF-32 U+FFFD is a character like any other; a cut end is the damage.
        m_decoded.push_back(damageMark);
    }
    return true;
}

void TextSource::encode(QString text)
{
    if (!m_halfPair.isNull()) {
        text.prepend(m_halfPair);
        m_halfPair = QChar();
    }
    const int last = text.size() - 1;
    if (!m_atEnd && last >= 0 && text.at(last).isHighSurrogate()) {
        m_halfPair = text.at(last);
        text.chop(1);
    }
    if (text.isEmpty()) {
        return;
    }
    const bool hasMark = !m_anyCharacter && text.at(0) == QChar(QChar::ByteOrderMark);
    m_anyCharacter = true;
    Utf8::encode(QStringView(text).mid(hasMark ? 1 : 0), &m_decoded);
}

QString TextSource::decodedEnd()
{
    if (m_unitSize > 1) {
        return QString();
    }
    // The codecs keep back a sequence that is not complete and do not tell so. One more line feed
    // brings it out.
    const QString lineFeed = m_codec->toUnicode("\n", 1);
    QString end = m_codec->toUnicode("\n", 1, m_state.get());
    if (end.endsWith(lineFeed)) {
        end.chop(lineFeed.size());
    }
    return end;
}

std::optional<std::string> TextSource::mended(std::string_view value) const
{
    if (m_raw) {
        if (Utf8::isValid(value)) {
            return std::nullopt;
        }
        return Utf8::repaired(value);
    }
    if (value.find(damageMark) == std::string_view::npos) {
        return std::nullopt;
    }
    std::string text;
    for (const char byte : value) {
        if (byte == damageMark) {
            text.append(replacementBytes);
        } else {
            text.push_back(byte);
        }
    }
    return text;
}
