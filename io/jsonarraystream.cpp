#include "jsonarraystream.h"

#include "textdecoder.h"

#include <cstring>

namespace {

constexpr size_t firstWindow = size_t(4) << 20;
// As little as a read is worth.
constexpr size_t leastRead = 4096;

} // namespace

JsonArrayStream::JsonArrayStream(TextSource *source, std::unique_ptr<NestedRecords> records,
                                 const Progress &progress)
    : m_source(source)
    , m_records(std::move(records))
    , m_finder(Top::Document, m_records.get(), progress, double(source->size()), 0)
{
}

JsonArrayStream::End JsonArrayStream::read()
{
    m_window.resize(firstWindow);
    if (!fill() || !skipSpace() || m_window[m_at] != '[' || !m_finder.beginArray()) {
        return End::NotPossible;
    }
    ++m_at;
    for (;;) {
        const End end = skipSpace() ? readElement() : End::NotPossible;
        if (end != End::Read) {
            return end;
        }
        if (!skipSpace() || (m_window[m_at] != ',' && m_window[m_at] != ']')) {
            return End::NotPossible;
        }
        if (m_window[m_at++] == ']') {
            // skipSpace() fails at the end of the text, and when something went wrong.
            return m_finder.endArray() && !skipSpace() && m_atEnd ? End::Read : End::NotPossible;
        }
    }
}

/// Reads on, behind what has not been parsed yet. False after a failure.
bool JsonArrayStream::fill()
{
    m_start += qint64(m_at);
    memmove(m_window.data(), m_window.data() + m_at, m_filled - m_at);
    m_filled -= m_at;
    m_at = 0;
    if (m_filled > m_window.size() / 2) {
        m_window.resize(2 * m_window.size());
    }
    while (!m_atEnd && m_window.size() - m_filled >= leastRead) {
        const qint64 bytes =
            m_source->read(&m_window[m_filled], qint64(m_window.size() - m_filled));
        if (bytes < 0 || !m_source->isClean()) {
            return false;
        }
        m_atEnd = bytes == 0;
        m_filled += size_t(bytes);
    }
    return true;
}

bool JsonArrayStream::skipSpace()
{
    for (;;) {
        while (m_at < m_filled && (m_window[m_at] == ' ' || m_window[m_at] == '\n' ||
                                   m_window[m_at] == '\r' || m_window[m_at] == '\t')) {
            ++m_at;
        }
        if (m_at < m_filled) {
            return true;
        }
        if (m_atEnd || !fill()) {
            return false;
        }
    }
}

JsonArrayStream::End JsonArrayStream::readElement()
{
    for (;;) {
        const std::string_view rest(m_window.data() + m_at, m_filled - m_at);
        JsonParser parser(rest, &m_finder, m_records->texts());
        m_finder.setParser(&parser, m_start + qint64(m_at));
        const JsonParser::Outcome outcome = parser.parseElement();
        if (outcome == JsonParser::Outcome::Done) {
            m_at += size_t(parser.position());
            return End::Read;
        }
        if (outcome == JsonParser::Outcome::Stopped) {
            return End::Stopped;
        }
        // Most likely the text ends in the element.
        if (m_atEnd || !fill()) {
            return End::NotPossible;
        }
        m_finder.restartElement();
    }
}
