#include "utf8.h"

#include <QByteArray>
#include <cstring>

namespace {

constexpr quint64 highBits = 0x8080808080808080ull;

bool isContinuation(uchar byte)
{
    return (byte & 0xc0) == 0x80;
}

/// Length of the well-formed sequence at the start, or 0. Surrogates count when allowed.
int sequenceLength(const uchar *p, size_t left, bool surrogates)
{
    const uchar lead = p[0];
    if (lead < 0x80) {
        return 1;
    }
    if (lead < 0xc2 || lead > 0xf4) {
        return 0;
    }
    if (lead < 0xe0) {
        return left >= 2 && isContinuation(p[1]) ? 2 : 0;
    }
    if (lead < 0xf0) {
        if (left < 3 || !isContinuation(p[1]) || !isContinuation(p[2])) {
            return 0;
        }
        if ((lead == 0xe0 && p[1] < 0xa0) || (lead == 0xed && p[1] >= 0xa0 && !surrogates)) {
            return 0;
        }
        return 3;
    }
    if (left < 4 || !isContinuation(p[1]) || !isContinuation(p[2]) || !isContinuation(p[3])) {
        return 0;
    }
    return (lead == 0xf0 && p[1] < 0x90) || (lead == 0xf4 && p[1] >= 0x90) ? 0 : 4;
}

uint codePoint(const uchar *p, int length)
{
    switch (length) {
    case 1:
        return p[0];
    case 2:
        return uint(p[0] & 0x1f) << 6 | uint(p[1] & 0x3f);
    case 3:
        return uint(p[0] & 0x0f) << 12 | uint(p[1] & 0x3f) << 6 | uint(p[2] & 0x3f);
    default:
        return uint(p[0] & 0x07) << 18 | uint(p[1] & 0x3f) << 12 | uint(p[2] & 0x3f) << 6 |
               uint(p[3] & 0x3f);
    }
}

const uchar *bytesOf(std::string_view text)
{
    return reinterpret_cast<const uchar *>(text.data());
}

bool isSpace(uint c)
{
    return c < 0x80 ? c == ' ' || (c >= '\t' && c <= '\r') : QChar::isSpace(c);
}

} // namespace

namespace Utf8 {

void encode(QStringView text, std::string *out)
{
    const size_t start = out->size();
    out->resize(start + size_t(text.size()) * 3);
    char *to = &(*out)[start];
    const QChar *p = text.data();
    const QChar *const end = p + text.size();
    while (p < end) {
        uint c = p->unicode();
        ++p;
        if (c < 0x80) {
            *to++ = char(c);
            continue;
        }
        if (QChar::isHighSurrogate(c) && p < end && p->isLowSurrogate()) {
            c = QChar::surrogateToUcs4(ushort(c), p->unicode());
            ++p;
            *to++ = char(0xf0 | c >> 18);
            *to++ = char(0x80 | (c >> 12 & 0x3f));
            *to++ = char(0x80 | (c >> 6 & 0x3f));
        } else if (c < 0x800) {
            *to++ = char(0xc0 | c >> 6);
        } else {
            *to++ = char(0xe0 | c >> 12);
            *to++ = char(0x80 | (c >> 6 & 0x3f));
        }
        *to++ = char(0x80 | (c & 0x3f));
    }
    out->resize(size_t(to - out->data()));
}

std::string encoded(QStringView text)
{
    std::string out;
    encode(text, &out);
    return out;
}

QString decoded(std::string_view bytes)
{
    if (isAscii(bytes)) {
        return QString::fromLatin1(bytes.data(), int(bytes.size()));
    }
    // Not QString::fromUtf8(), which drops a leading U+FEFF and unpaired surrogates.
    QString text(int(bytes.size()), Qt::Uninitialized);
    QChar *to = text.data();
    const uchar *p = bytesOf(bytes);
    for (size_t left = bytes.size(); left > 0;) {
        const int length = sequenceLength(p, left, true);
        const uint c = length == 0 ? uint(QChar::ReplacementCharacter) : codePoint(p, length);
        if (QChar::requiresSurrogates(c)) {
            *to++ = QChar(QChar::highSurrogate(c));
            *to++ = QChar(QChar::lowSurrogate(c));
        } else {
            *to++ = QChar(c);
        }
        p += qMax(length, 1);
        left -= size_t(qMax(length, 1));
    }
    text.resize(int(to - text.constData()));
    return text;
}

bool isAscii(std::string_view bytes)
{
    const char *p = bytes.data();
    size_t left = bytes.size();
    for (; left >= 8; p += 8, left -= 8) {
        quint64 word;
        memcpy(&word, p, 8);
        if (word & highBits) {
            return false;
        }
    }
    for (; left > 0; ++p, --left) {
        if (uchar(*p) & 0x80) {
            return false;
        }
    }
    return true;
}

bool isValid(std::string_view bytes)
{
    const uchar *p = bytesOf(bytes);
    size_t left = bytes.size();
    while (left > 0) {
        quint64 word;
        if (left >= 8 && (memcpy(&word, p, 8), (word & highBits) == 0)) {
            p += 8;
            left -= 8;
            continue;
        }
        const int length = sequenceLength(p, left, false);
        if (length == 0) {
            return false;
        }
        p += length;
        left -= size_t(length);
    }
    return true;
}

std::string repaired(std::string_view bytes)
{
    std::string out;
    out.reserve(bytes.size() + 16);
    const uchar *p = bytesOf(bytes);
    for (size_t left = bytes.size(); left > 0;) {
        const int length = sequenceLength(p, left, false);
        if (length == 0) {
            out.append("\xef\xbf\xbd");
        } else {
            out.append(reinterpret_cast<const char *>(p), size_t(length));
        }
        p += qMax(length, 1);
        left -= size_t(qMax(length, 1));
    }
    return out;
}

bool hasSurrogates(std::string_view bytes)
{
    // Only a lead byte 0xed followed by 0xa0 or more encodes a surrogate.
    const char *p = bytes.data();
    const char *const end = p + bytes.size();
    while (p < end) {
        p = static_cast<const char *>(memchr(p, 0xed, size_t(end - p)));
        if (!p) {
            return false;
        }
        if (p + 1 < end && uchar(p[1]) >= 0xa0) {
            return true;
        }
        ++p;
    }
    return false;
}

int incompleteTail(std::string_view bytes)
{
    const int size = int(qMin<size_t>(bytes.size(), 4));
    for (int back = 1; back < 4 && back <= size; ++back) {
        const uchar byte = uchar(bytes[bytes.size() - size_t(back)]);
        if (isContinuation(byte)) {
            continue;
        }
        const int wanted = byte >= 0xf0 ? 4 : byte >= 0xe0 ? 3 : byte >= 0xc2 ? 2 : 1;
        return wanted > back && byte <= 0xf4 ? back : 0;
    }
    return 0;
}

int characterLength(std::string_view bytes)
{
    return qMax(sequenceLength(bytesOf(bytes), bytes.size(), true), 1);
}

uint nextCodePoint(std::string_view bytes, size_t *position)
{
    const auto byte = [&](size_t i) { return uint(uchar(bytes[*position + i])); };
    const uint lead = byte(0);
    const size_t length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    uint c = length == 1 ? lead : lead & (0x7fu >> length);
    for (size_t i = 1; i < length && *position + i < bytes.size(); ++i) {
        c = c << 6 | (byte(i) & 0x3f);
    }
    *position = qMin(*position + length, bytes.size());
    return c;
}

std::string_view trimmed(std::string_view bytes)
{
    const uchar *p = bytesOf(bytes);
    size_t begin = 0;
    size_t end = bytes.size();
    while (begin < end) {
        const int length = sequenceLength(p + begin, end - begin, true);
        if (length == 0 || !isSpace(codePoint(p + begin, length))) {
            break;
        }
        begin += size_t(length);
    }
    while (end > begin) {
        size_t at = end - 1;
        while (at > begin && isContinuation(p[at])) {
            --at;
        }
        const int length = sequenceLength(p + at, end - at, true);
        if (length != int(end - at) || !isSpace(codePoint(p + at, length))) {
            break;
        }
        end = at;
    }
    return bytes.substr(begin, end - begin);
}

} // namespace Utf8
