#include "biffwriter.h"

#include "biffrecords.h"
#include "utf8.h"

#include <QString>
#include <algorithm>
#include <functional>

namespace {

constexpr size_t countsSize = 8; // uses, texts
constexpr size_t firstSlots = size_t(1) << 10;
constexpr size_t mostSlots = size_t(1) << 19;

bool isHighSurrogate(const BiffText &text, size_t number)
{
    return QChar::isHighSurrogate(qFromLittleEndian<quint16>(text.bytes.data() + 2 * number));
}

} // namespace

void appendBiffRecord(quint16 id, std::string_view data, std::string *out)
{
    Q_ASSERT(data.size() <= size_t(Biff::mostRecordData));
    appendBiff(id, out);
    appendBiff(quint16(data.size()), out);
    out->append(data);
}

void BiffText::set(std::string_view utf8)
{
    wide = false;
    if (Utf8::isAscii(utf8)) {
        count = utf8.size();
        bytes.assign(utf8);
        return;
    }
    const QString text = Utf8::decoded(utf8);
    constexpr ushort lastNarrow = 0xff;
    wide = std::any_of(text.begin(), text.end(), [](QChar c) { return c.unicode() > lastNarrow; });
    count = size_t(text.size());
    bytes.clear();
    for (const QChar c : text) {
        if (wide) {
            appendBiff(quint16(c.unicode()), &bytes);
        } else {
            bytes.push_back(char(c.unicode()));
        }
    }
}

void appendBiffText(std::string_view utf8, int lengthBytes, std::string *out)
{
    BiffText text;
    text.set(utf8);
    if (lengthBytes == 1) {
        appendBiff(quint8(text.count), out);
    } else {
        appendBiff(quint16(text.count), out);
    }
    appendBiff(text.wide ? Biff::wideCharacters : quint8(0), out);
    out->append(text.bytes);
}

BiffTexts::BiffTexts()
    : m_known(firstSlots)
{
    m_data.assign(countsSize, '\0');
}

void BiffTexts::continueAfter(quint32 oldTexts)
{
    m_oldCount = oldTexts;
    m_count = oldTexts;
    m_continues = true;
    m_data.clear();
}

size_t BiffTexts::slotOf(std::string_view utf8, size_t hash) const
{
    const size_t mask = m_known.size() - 1;
    size_t slot = hash & mask;
    while (m_known[slot].bytes &&
           (m_known[slot].hash != hash ||
            std::string_view(m_known[slot].bytes, m_known[slot].size) != utf8)) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

void BiffTexts::grow()
{
    std::vector<Known> old(m_known.size() * 2);
    old.swap(m_known);
    for (const Known &known : old) {
        if (known.bytes) {
            m_known[slotOf({known.bytes, known.size}, known.hash)] = known;
        }
    }
}

quint32 BiffTexts::add(std::string_view utf8)
{
    ++m_uses;
    const size_t hash = std::hash<std::string_view>()(utf8);
    size_t slot = slotOf(utf8, hash);
    if (m_known[slot].bytes) {
        return m_known[slot].number;
    }
    const quint32 number = m_count++;
    if (2 * m_knownCount >= m_known.size() && m_known.size() < mostSlots) {
        grow();
        slot = slotOf(utf8, hash);
    }
    if (2 * m_knownCount < m_known.size()) {
        m_known[slot] = {utf8.data(), quint32(utf8.size()), number, hash};
        ++m_knownCount;
    }
    write(utf8);
    return number;
}

size_t BiffTexts::room() const
{
    return size_t(Biff::mostRecordData) - m_data.size();
}

/// A text may go on in the next record, where the size of its characters stands again. Its head
/// stays whole and with the first character; so do the halves of a pair, which other programs read
/// record by record.
void BiffTexts::write(std::string_view utf8)
{
    m_text.set(utf8);
    const size_t size = m_text.wide ? 2 : 1;
    const quint8 flags = m_text.wide ? Biff::wideCharacters : quint8(0);
    constexpr size_t head = 3;
    if (room() < head + 2 * size) {
        endRecord();
    }
    appendBiff(quint16(m_text.count), &m_data);
    appendBiff(flags, &m_data);
    for (size_t at = 0; at < m_text.count;) {
        size_t step = std::min(m_text.count - at, room() / size);
        if (m_text.wide && step > 0 && at + step < m_text.count &&
            isHighSurrogate(m_text, at + step - 1)) {
            --step;
        }
        m_data.append(m_text.bytes, at * size, step * size);
        at += step;
        if (at < m_text.count) {
            endRecord();
            appendBiff(flags, &m_data);
        }
    }
}

void BiffTexts::endRecord()
{
    m_record.clear();
    appendBiffRecord(m_continues ? Biff::Continue : Biff::Sst, m_data, &m_record);
    m_data.clear();
    if (m_continues) {
        m_failed = !m_more.append(m_record) || m_failed;
    } else {
        m_first = m_record;
        m_continues = true;
    }
}

void BiffTexts::finish()
{
    if (m_count > m_oldCount) {
        endRecord();
    }
    if (!m_first.empty()) {
        patchBiff(m_uses, Biff::recordHeaderSize, &m_first);
        patchBiff(m_count, Biff::recordHeaderSize + 4, &m_first);
    }
}
