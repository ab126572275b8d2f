#include "viewsort.h"

#include <cstring>
#include <limits>
#include <numeric>

namespace {

constexpr int itemsPerStep = 2048;
constexpr quint32 unseen = std::numeric_limits<quint32>::max();

/// A number whose order is that of the doubles.
quint64 orderedBits(double value)
{
    value += 0.0; // one zero
    quint64 bits = 0;
    memcpy(&bits, &value, sizeof bits);
    const quint64 sign = quint64(1) << 63;
    return (bits & sign) != 0 ? ~bits : bits | sign;
}

uchar folded(char c)
{
    return c >= 'A' && c <= 'Z' ? uchar(c - 'A' + 'a') : uchar(c);
}

quint64 headOf(std::string_view text)
{
    quint64 head = 0;
    for (size_t i = 0; i < sizeof head; ++i) {
        head = head << 8 | (i < text.size() ? folded(text[i]) : 0U);
    }
    return head;
}

bool isTextLess(std::string_view a, std::string_view b)
{
    const size_t common = std::min(a.size(), b.size());
    for (size_t i = 0; i < common; ++i) {
        if (folded(a[i]) != folded(b[i])) {
            return folded(a[i]) < folded(b[i]);
        }
    }
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

} // namespace

bool ViewSort::Less::operator()(const Key &a, const Key &b) const
{
    if (a.group == Group::Empty || b.group == Group::Empty) {
        return a.group < b.group;
    }
    const Key &x = ascending ? a : b;
    const Key &y = ascending ? b : a;
    if (x.group != y.group) {
        return x.group < y.group;
    }
    if (x.head != y.head || x.group != Group::Text) {
        return x.head < y.head;
    }
    return isTextLess(reader->utf8OfCode(x.code), reader->utf8OfCode(y.code));
}

ViewSort::ViewSort(const Dataset &table, ColIndex column, bool ascending,
                   const QStringList &datePatterns)
    : m_table(table)
    , m_reader(m_table.columnReader(column))
    , m_kinds(datePatterns)
    , m_ascending(ascending)
    , m_rankOfCode(m_reader.codeCount(), unseen)
{
    // Growing would copy all at once.
    m_keys.reserve(std::min(size_t(m_table.rowCount()), m_rankOfCode.size()));
}

bool ViewSort::step()
{
    const bool hasMore = m_phase == Phase::Heads  ? readSomeHeads()
                         : m_phase == Phase::Sort ? m_sort->step()
                         : m_phase == Phase::Rank ? rankSome()
                                                  : stepOverRows();
    return hasMore || startNextPhase();
}

bool ViewSort::stepOverRows()
{
    const int end = std::min(m_table.rowCount() - m_row, itemsPerStep) + m_row;
    for (; m_row < end; ++m_row) {
        if (m_phase == Phase::Collect) {
            takeKeyOf(m_row);
            continue;
        }
        const size_t rank = m_rankOfCode[m_reader.code(m_row)];
        if (m_phase == Phase::Count) {
            ++m_starts[rank + 1];
        } else {
            m_order[m_starts[rank]++] = m_row;
        }
    }
    return m_row < m_table.rowCount();
}

bool ViewSort::readSomeHeads()
{
    const size_t end = std::min(m_keys.size(), m_keyAt + size_t(itemsPerStep));
    for (; m_keyAt < end; ++m_keyAt) {
        Key &key = m_keys[m_keyAt];
        if (key.group == Group::Text) {
            key.head = headOf(m_reader.utf8OfCode(key.code).substr(m_commonStart.size()));
        }
    }
    return m_keyAt < m_keys.size();
}

void ViewSort::noteCommonStart(std::string_view text)
{
    if (!m_hasText) {
        m_commonStart = text;
        m_hasText = true;
        return;
    }
    const auto ends =
        std::mismatch(m_commonStart.begin(), m_commonStart.end(), text.begin(), text.end());
    m_commonStart = m_commonStart.substr(0, size_t(ends.first - m_commonStart.begin()));
}

/// Equal values get the same rank.
bool ViewSort::rankSome()
{
    const Less less{&m_reader, m_ascending};
    const size_t end = std::min(m_keys.size(), m_keyAt + size_t(itemsPerStep));
    for (; m_keyAt < end; ++m_keyAt) {
        if (m_keyAt > 0 && less(m_keys[m_keyAt - 1], m_keys[m_keyAt])) {
            ++m_rank;
        }
        m_rankOfCode[m_keys[m_keyAt].code] = m_rank;
    }
    return m_keyAt < m_keys.size();
}

bool ViewSort::startNextPhase()
{
    m_row = 0;
    switch (m_phase) {
    case Phase::Collect:
        m_phase = Phase::Heads;
        return true;
    case Phase::Heads:
        m_keyAt = 0;
        m_sort = std::make_unique<SlicedSort<Key, Less>>(std::move(m_keys),
                                                         Less{&m_reader, m_ascending});
        m_phase = Phase::Sort;
        return true;
    case Phase::Sort:
        m_keys = m_sort->take();
        m_sort.reset();
        m_phase = Phase::Rank;
        return true;
    case Phase::Rank:
        m_keys = {};
        m_starts.assign(size_t(m_rank) + 2, 0);
        m_phase = Phase::Count;
        return true;
    case Phase::Count:
        std::partial_sum(m_starts.begin(), m_starts.end(), m_starts.begin());
        m_order.resize(size_t(m_table.rowCount()));
        m_phase = Phase::Place;
        return true;
    case Phase::Place:
        break;
    }
    return false;
}

ViewSort::Key ViewSort::keyOf(quint32 code)
{
    const std::string_view value = m_reader.utf8OfCode(code);
    double place = 0;
    switch (m_kinds.kind(value, &place)) {
    case ValueKind::Integer:
    case ValueKind::Real:
        return {orderedBits(place), code, Group::Number};
    case ValueKind::Date:
        return {orderedBits(place), code, Group::Date};
    case ValueKind::Empty:
        return {0, code, Group::Empty};
    case ValueKind::Boolean:
    case ValueKind::Text:
        break;
    }
    noteCommonStart(value);
    return {0, code, Group::Text};
}

void ViewSort::takeKeyOf(int row)
{
    const quint32 code = m_reader.code(row);
    if (m_rankOfCode[code] == unseen) {
        m_rankOfCode[code] = 0;
        m_keys.push_back(keyOf(code));
    }
}
