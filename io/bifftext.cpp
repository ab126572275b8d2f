#include "bifftext.h"

#include "biffrecords.h"
#include "utf8.h"

#include <QTextCodec>
#include <algorithm>

bool BiffStream::readHeader(quint16 *id, size_t *size) const
{
    constexpr auto header = size_t(Biff::recordHeaderSize);
    if (m_next > m_bytes.size() || m_bytes.size() - m_next < header) {
        return false;
    }
    *id = biffNumber<quint16>(m_bytes, m_next);
    *size = biffNumber<quint16>(m_bytes, m_next + 2);
    return m_bytes.size() - m_next - header >= *size;
}

bool BiffStream::next()
{
    size_t size = 0;
    if (!readHeader(&m_id, &size)) {
        return false;
    }
    m_data = m_bytes.substr(m_next + Biff::recordHeaderSize, size);
    m_next += Biff::recordHeaderSize + size;
    return true;
}

const std::vector<std::string_view> &BiffStream::continuedData()
{
    m_continued.assign(1, m_data);
    quint16 id = 0;
    size_t size = 0;
    while (readHeader(&id, &size) && id == Biff::Continue) {
        m_continued.push_back(m_bytes.substr(m_next + Biff::recordHeaderSize, size));
        m_next += Biff::recordHeaderSize + size;
    }
    return m_continued;
}

bool BiffTextReader::nextPart()
{
    if (m_part + 1 >= m_parts.size()) {
        return false;
    }
    ++m_part;
    m_at = 0;
    return true;
}

bool BiffTextReader::take(int bytes, quint32 *number)
{
    *number = 0;
    for (int i = 0; i < bytes; ++i) {
        while (m_at >= m_parts[m_part].size()) {
            if (!nextPart()) {
                return false;
            }
        }
        *number |= quint32(quint8(m_parts[m_part][m_at])) << (8 * i);
        ++m_at;
    }
    return true;
}

bool BiffTextReader::skip(size_t count)
{
    while (count > 0) {
        if (m_at >= m_parts[m_part].size()) {
            if (!nextPart()) {
                return false;
            }
            continue;
        }
        const size_t step = std::min(count, left());
        m_at += step;
        count -= step;
    }
    return true;
}

bool BiffTextReader::read(int lengthBytes, std::string *out)
{
    quint32 count = 0;
    if (m_parts.empty() || m_at > m_parts[m_part].size() || !take(lengthBytes, &count)) {
        return false;
    }
    if (m_codec) {
        return readBytes(count, out);
    }
    quint32 flags = 0;
    quint32 runs = 0;
    quint32 farEastBytes = 0;
    if (!take(1, &flags) || ((flags & Biff::formattingRuns) != 0 && !take(2, &runs)) ||
        ((flags & Biff::farEastData) != 0 && !take(4, &farEastBytes)) ||
        !readCharacters(count, (flags & Biff::wideCharacters) != 0)) {
        return false;
    }
    Utf8::encode(m_characters, out);
    constexpr size_t runBytes = 4;
    return skip(runs * runBytes + farEastBytes);
}

/// Where a text goes on in another record, the flags stand there again.
bool BiffTextReader::readCharacters(size_t count, bool wide)
{
    m_characters.clear();
    while (count > 0) {
        if (m_at >= m_parts[m_part].size()) {
            quint32 flags = 0;
            if (!nextPart() || !take(1, &flags)) {
                return false;
            }
            wide = (flags & Biff::wideCharacters) != 0;
            continue;
        }
        const size_t size = wide ? 2 : 1;
        const size_t step = std::min(count, left() / size);
        if (step == 0) {
            return false; // half a character
        }
        const std::string_view data = m_parts[m_part];
        for (size_t i = 0; i < step; ++i, m_at += size) {
            m_characters.push_back(wide ? biffNumber<quint16>(data, m_at)
                                        : char16_t(quint8(data[m_at])));
        }
        count -= step;
    }
    return true;
}

bool BiffTextReader::readBytes(size_t count, std::string *out)
{
    std::string bytes;
    while (count > 0) {
        if (m_at >= m_parts[m_part].size()) {
            if (!nextPart()) {
                return false;
            }
            continue;
        }
        const size_t step = std::min(count, left());
        bytes.append(m_parts[m_part].substr(m_at, step));
        m_at += step;
        count -= step;
    }
    if (Utf8::isAscii(bytes)) {
        out->append(bytes);
    } else {
        Utf8::encode(m_codec->toUnicode(bytes.data(), int(bytes.size())), out);
    }
    return true;
}
