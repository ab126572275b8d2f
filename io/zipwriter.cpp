#include "zipwriter.h"

#include <new>
#include <string>
#include <zlib.h>

namespace {

constexpr quint64 largestPlain = 0xfffffffe;
constexpr quint32 instead = 0xffffffff; // of what does not fit into 32 bits
constexpr quint16 version = 20;
constexpr quint16 largeVersion = 45;
constexpr quint16 sizesFollow = 0x0008;
constexpr quint16 utf8Name = 0x0800;
constexpr quint16 firstDate = 0x0021; // 1980-01-01
constexpr quint16 largeExtra = 0x0001;
// Fast, and within a few per cent of the best on sheets.
constexpr int level = 1;

/// Bytes of an archive, which stores the low byte first.
class Bytes
{
public:
    template <class Number>
    Bytes &add(Number number)
    {
        for (size_t i = 0; i < sizeof number; ++i) {
            m_bytes.push_back(char(quint64(number) >> (8 * i)));
        }
        return *this;
    }
    Bytes &add(const QByteArray &text)
    {
        m_bytes.append(text.constData(), size_t(text.size()));
        return *this;
    }
    std::string_view view() const { return m_bytes; }

private:
    std::string m_bytes;
};

quint32 limited(quint64 number)
{
    return number > largestPlain ? instead : quint32(number);
}

} // namespace

struct ZipWriter::Entry
{
    QByteArray name;
    bool deflated = true;
    quint16 flags = 0;
    quint32 crc = 0;
    quint64 packedSize = 0;
    quint64 size = 0;
    quint64 at = 0;
};

struct ZipWriter::Deflater
{
    Deflater()
    {
        if (deflateInit2(&stream, level, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~Deflater() { deflateEnd(&stream); }
    Deflater(const Deflater &) = delete;
    Deflater &operator=(const Deflater &) = delete;

    z_stream stream{};
    char buffer[1 << 16];
};

ZipWriter::ZipWriter(Sink sink)
    : m_sink(std::move(sink))
{
}

ZipWriter::~ZipWriter() = default;

void ZipWriter::put(std::string_view bytes)
{
    m_failed = m_failed || !m_sink(bytes.data(), qint64(bytes.size()));
    m_at += bytes.size();
}

void ZipWriter::putHeader(const Entry &entry)
{
    const bool known = (entry.flags & sizesFollow) == 0;
    const bool large = known && (entry.packedSize > largestPlain || entry.size > largestPlain);
    Bytes header;
    header.add(quint32(0x04034b50)).add(large ? largeVersion : version).add(entry.flags);
    header.add(quint16(entry.deflated ? 8 : 0)).add(quint16(0)).add(firstDate).add(entry.crc);
    header.add(large ? instead : quint32(entry.packedSize));
    header.add(large ? instead : quint32(entry.size));
    header.add(quint16(entry.name.size())).add(quint16(large ? 20 : 0)).add(entry.name);
    if (large) {
        header.add(largeExtra).add(quint16(16)).add(entry.size).add(entry.packedSize);
    }
    put(header.view());
}

void ZipWriter::beginEntry(const QByteArray &name)
{
    Entry entry;
    entry.name = name;
    entry.flags = sizesFollow | utf8Name;
    entry.crc = 0;
    entry.at = m_at;
    putHeader(entry);
    m_entries.push_back(entry);
    if (m_deflater) {
        deflateReset(&m_deflater->stream);
    } else {
        m_deflater = std::make_unique<Deflater>();
    }
}

void ZipWriter::deflateMore(std::string_view content, bool isLast)
{
    z_stream &stream = m_deflater->stream;
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(content.data()));
    stream.avail_in = uInt(content.size());
    do {
        stream.next_out = reinterpret_cast<Bytef *>(m_deflater->buffer);
        stream.avail_out = sizeof m_deflater->buffer;
        deflate(&stream, isLast ? Z_FINISH : Z_NO_FLUSH);
        const size_t packed = sizeof m_deflater->buffer - stream.avail_out;
        m_entries.back().packedSize += packed;
        put({m_deflater->buffer, packed});
    } while (stream.avail_out == 0);
}

void ZipWriter::append(std::string_view content)
{
    constexpr size_t most = size_t(1) << 30; // the library counts in 32 bits
    for (; !content.empty(); content.remove_prefix(std::min(content.size(), most))) {
        const std::string_view part = content.substr(0, most);
        Entry &entry = m_entries.back();
        entry.crc = quint32(
            crc32(entry.crc, reinterpret_cast<const Bytef *>(part.data()), uInt(part.size())));
        entry.size += part.size();
        deflateMore(part, false);
    }
}

void ZipWriter::endEntry()
{
    deflateMore({}, true);
    const Entry &entry = m_entries.back();
    Bytes sizes;
    sizes.add(quint32(0x08074b50)).add(entry.crc);
    if (entry.packedSize > largestPlain || entry.size > largestPlain) {
        sizes.add(entry.packedSize).add(entry.size);
    } else {
        sizes.add(quint32(entry.packedSize)).add(quint32(entry.size));
    }
    put(sizes.view());
}

void ZipWriter::addEntry(const QByteArray &name, std::string_view content)
{
    beginEntry(name);
    append(content);
    endEntry();
}

void ZipWriter::beginRaw(const QByteArray &name, bool deflated, quint32 crc, quint64 packedSize,
                         quint64 size)
{
    m_entries.push_back({name, deflated, utf8Name, crc, packedSize, size, m_at});
    putHeader(m_entries.back());
}

bool ZipWriter::finish()
{
    const quint64 start = m_at;
    for (const Entry &entry : m_entries) {
        Bytes extra;
        for (const quint64 number : {entry.size, entry.packedSize, entry.at}) {
            if (number > largestPlain) {
                extra.add(number);
            }
        }
        const auto extraSize = quint16(extra.view().size());
        Bytes line;
        line.add(quint32(0x02014b50)).add(version).add(extraSize ? largeVersion : version);
        line.add(entry.flags).add(quint16(entry.deflated ? 8 : 0)).add(quint16(0)).add(firstDate);
        line.add(entry.crc).add(limited(entry.packedSize)).add(limited(entry.size));
        line.add(quint16(entry.name.size())).add(quint16(extraSize ? extraSize + 4 : 0));
        line.add(quint16(0)).add(quint16(0)).add(quint16(0)).add(quint32(0));
        line.add(limited(entry.at)).add(entry.name);
        if (extraSize) {
            line.add(largeExtra).add(extraSize);
        }
        put(line.view());
        put(extra.view());
    }
    const quint64 size = m_at - start;
    const quint64 count = m_entries.size();
    constexpr quint64 mostPlainEntries = 0xfffe;
    if (start > largestPlain || size > largestPlain || count > mostPlainEntries) {
        const quint64 largeEnd = m_at;
        Bytes end;
        end.add(quint32(0x06064b50)).add(quint64(44)).add(largeVersion).add(largeVersion);
        end.add(quint32(0)).add(quint32(0)).add(count).add(count).add(size).add(start);
        end.add(quint32(0x07064b50)).add(quint32(0)).add(largeEnd).add(quint32(1));
        put(end.view());
    }
    Bytes end;
    const auto plainCount = quint16(std::min<quint64>(count, 0xffff));
    end.add(quint32(0x06054b50)).add(quint16(0)).add(quint16(0)).add(plainCount).add(plainCount);
    end.add(limited(size)).add(limited(start)).add(quint16(0));
    put(end.view());
    return !m_failed;
}
