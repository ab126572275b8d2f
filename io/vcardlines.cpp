#include "vcardlines.h"

#include "utf8.h"

#include <QByteArray>
#include <algorithm>
#include <cstring>

namespace {

bool isFoldingBlank(char byte)
{
    return byte == ' ' || byte == '\t';
}

bool isLineEnd(char byte)
{
    return byte == '\n' || byte == '\r';
}

bool isSame(std::string_view text, const char *other)
{
    return text.size() == strlen(other) && qstrnicmp(text.data(), other, uint(text.size())) == 0;
}

/// Where a part of a head ends: at the first of the stops outside quotes. Quotes group only from
/// the beginning of a parameter's value on.
size_t partEnd(std::string_view text, std::string_view stops)
{
    for (size_t at = 0; at < text.size(); ++at) {
        if (stops.find(text[at]) != std::string_view::npos) {
            return at;
        }
        if (text[at] == '"' && at > 0 && (text[at - 1] == '=' || text[at - 1] == ',')) {
            const size_t close = text.find('"', at + 1);
            at = close == std::string_view::npos ? at : close;
        }
    }
    return std::string_view::npos;
}

size_t colonOf(std::string_view line)
{
    const size_t first = line.find_first_of(":;");
    if (first == std::string_view::npos || line[first] == ':') {
        return first;
    }
    const size_t end = partEnd(line.substr(first), ":");
    return end == std::string_view::npos ? end : first + end;
}

int hexValue(char digit)
{
    return digit >= '0' && digit <= '9'   ? digit - '0'
           : digit >= 'A' && digit <= 'F' ? digit - 'A' + 10
           : digit >= 'a' && digit <= 'f' ? digit - 'a' + 10
                                          : -1;
}

size_t undoQuotedPrintable(char *text, size_t size)
{
    char *to = text;
    const char *const end = text + size;
    for (const char *from = text; from < end; ++from) {
        if (*from == '=' && end - from > 2 && hexValue(from[1]) >= 0 && hexValue(from[2]) >= 0) {
            *to++ = char(hexValue(from[1]) * 16 + hexValue(from[2]));
            from += 2;
        } else {
            *to++ = *from;
        }
    }
    return size_t(to - text);
}

/// The character that an escaped one stands for; 0 when the backslash is an ordinary one.
char escapedCharacter(char byte, VCardVersion version)
{
    if (byte == ';' || byte == ':') {
        return byte;
    }
    if (version == VCardVersion::Old) {
        return 0;
    }
    return byte == 'n' || byte == 'N' ? '\n' : byte == ',' || byte == '\\' ? byte : char(0);
}

} // namespace

VCardHead::VCardHead(std::string_view head)
{
    size_t end = std::min(head.find(';'), head.size());
    name.assign(head.substr(0, end));
    while (end < head.size()) {
        head.remove_prefix(end + 1);
        end = std::min(partEnd(head, ";"), head.size());
        const std::string_view parameter = head.substr(0, end);
        const size_t equals = std::min(parameter.find('='), parameter.size());
        const std::string_view key = parameter.substr(0, equals);
        const std::string_view value = parameter.substr(std::min(equals + 1, parameter.size()));
        const bool bare = equals == parameter.size();
        // 2.1 allows the encoding without its key.
        const std::string_view encoding = bare                      ? parameter
                                          : isSame(key, "ENCODING") ? value
                                                                    : std::string_view();
        if (isSame(encoding, "QUOTED-PRINTABLE")) {
            isQuotedPrintable = true;
            continue;
        }
        if (!bare && isSame(key, "CHARSET")) {
            charset.assign(value);
            continue;
        }
        isBase64 = isBase64 || isSame(encoding, "BASE64") || (!bare && isSame(encoding, "B"));
        name.append(1, ';').append(parameter);
    }
}

VCardLines::VCardLines(std::string *text)
    : m_begin(text->data())
    , m_at(text->data())
    , m_end(text->data() + text->size())
{
}

double VCardLines::fraction() const
{
    return m_end == m_begin ? 1.0 : double(m_at - m_begin) / double(m_end - m_begin);
}

bool VCardLines::next(VCardVersion version)
{
    while (m_at < m_end && isLineEnd(*m_at)) {
        ++m_at;
    }
    m_line = m_at;
    m_size = 0;
    m_colon = 0;
    if (m_at == m_end) {
        return false;
    }
    takePhysicalLine();
    while (m_at < m_end && isFoldingBlank(*m_at)) {
        // In 2.1 only the line break is taken away, later the blank as well.
        m_at += version == VCardVersion::New ? 1 : 0;
        takePhysicalLine();
    }
    const size_t colon = colonOf(line());
    if (colon != std::string_view::npos) {
        m_colon = colon;
        joinSoftBreaks();
    }
    return true;
}

/// Appends the rest of a line of the text, up to its end, and steps over the end.
void VCardLines::takePhysicalLine()
{
    char *const from = m_at;
    const auto left = size_t(m_end - from);
    const auto *lineFeed = static_cast<char *>(memchr(from, '\n', left));
    const size_t toLineFeed = lineFeed ? size_t(lineFeed - from) : left;
    const auto *carriageReturn = static_cast<char *>(memchr(from, '\r', toLineFeed));
    const size_t size = carriageReturn ? size_t(carriageReturn - from) : toLineFeed;
    if (m_line + m_size != from) {
        memmove(m_line + m_size, from, size);
    }
    m_size += size;
    m_at = from + size;
    if (m_at < m_end) {
        m_at += *m_at == '\r' && m_at + 1 < m_end && m_at[1] == '\n' ? 2 : 1;
    }
}

/// Quoted-printable values go on in the next line when theirs ends with an equals sign.
void VCardLines::joinSoftBreaks()
{
    if (line().back() != '=' || !VCardHead(head()).isQuotedPrintable) {
        return;
    }
    while (m_size > m_colon + 1 && line().back() == '=' && m_at < m_end) {
        --m_size;
        takePhysicalLine();
    }
}

std::string_view VCardLines::decodedValue(const VCardHead &head)
{
    char *const from = m_line + m_colon + 1;
    size_t size = value().size();
    if (head.isBase64) {
        size = size_t(std::remove_if(from, from + size, isFoldingBlank) - from);
    } else if (head.isQuotedPrintable) {
        size = undoQuotedPrintable(from, size);
    }
    m_size = m_colon + 1 + size;
    return value();
}

std::string_view VCardLines::unescapedValue(VCardVersion version)
{
    const size_t size = unescapeVCardText(m_line + m_colon + 1, value().size(), version);
    m_size = m_colon + 1 + size;
    return value();
}

size_t unescapeVCardText(char *text, size_t size, VCardVersion version)
{
    char *to = std::find_if(text, text + size, [](char c) { return c == '\\' || c == '\r'; });
    const char *const end = text + size;
    for (const char *from = to; from < end; ++from) {
        const char next = from + 1 < end ? from[1] : char(0);
        if (*from == '\r') {
            // Quoted-printable values hold line ends of their own.
            *to++ = '\n';
            from += next == '\n' ? 1 : 0;
        } else if (const char meant = *from == '\\' ? escapedCharacter(next, version) : char(0)) {
            *to++ = meant;
            ++from;
        } else {
            *to++ = *from;
        }
    }
    return size_t(to - text);
}
