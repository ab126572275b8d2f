#pragma once

#include <QtEndian>
#include <string>
#include <string_view>
#include <vector>

class QTextCodec;

/// A number of the file, which stores the low byte first. The bytes must be there.
template <class Number>
Number biffNumber(std::string_view data, size_t at)
{
    return qFromLittleEndian<Number>(data.data() + at);
}

/// Walks over the records of an XLS stream.
class BiffStream
{
public:
    /// `at` must be the start of a record.
    explicit BiffStream(std::string_view bytes, size_t at = 0)
        : m_bytes(bytes)
        , m_next(at)
    {
    }

    /// False at the end of the stream and where a record is cut off.
    bool next();
    quint16 id() const { return m_id; }
    std::string_view data() const { return m_data; }
    /// Where the record after the present one starts.
    size_t nextAt() const { return m_next; }
    /// The data of the present record and of those that continue it, which are then behind it.
    const std::vector<std::string_view> &continuedData();

private:
    bool readHeader(quint16 *id, size_t *size) const;

    std::string_view m_bytes;
    size_t m_next;
    quint16 m_id = 0;
    std::string_view m_data;
    std::vector<std::string_view> m_continued;
};

/// Reads the texts of a record that may go on in further ones.
class BiffTextReader
{
public:
    /// A codec for the texts of BIFF5, which are bytes; null for those of BIFF8.
    BiffTextReader(const std::vector<std::string_view> &parts, size_t at, const QTextCodec *codec)
        : m_parts(parts)
        , m_at(at)
        , m_codec(codec)
    {
    }

    /// Appends a text whose length takes one or two bytes. False when it is cut off.
    bool read(int lengthBytes, std::string *out);
    /// Passes over bytes.
    bool skip(size_t count);
    /// Everything was read.
    bool atEnd() const { return m_part + 1 >= m_parts.size() && left() == 0; }

private:
    bool nextPart();
    size_t left() const { return m_parts[m_part].size() - m_at; }
    bool take(int bytes, quint32 *number);
    bool readCharacters(size_t count, bool wide);
    bool readBytes(size_t count, std::string *out);

    const std::vector<std::string_view> &m_parts;
    size_t m_part = 0;
    size_t m_at;
    const QTextCodec *m_codec;
    std::u16string m_characters;
};
