#include "columnstatistics.h"

#include "utf8.h"

#include <cmath>

namespace {

constexpr size_t itemsPerStep = 512;

int characterCount(std::string_view value)
{
    return int(std::count_if(value.begin(), value.end(),
                             [](char c) { return (uchar(c) & 0xC0) != 0x80; }));
}

bool isMoreFrequent(const ValueCount &a, const ValueCount &b)
{
    return a.count > b.count;
}

} // namespace

ColumnStatistics::ColumnStatistics(const Dataset &table, ColIndex column,
                                   const QStringList &datePatterns)
    : m_table(table)
    , m_reader(m_table.columnReader(column))
    , m_kinds(datePatterns)
    , m_codesAreValues(m_reader.isPooled() && ValuePool::isPoolingEnabled())
    , m_countOfCode(m_reader.codeCount(), 0)
{
    // Growing would copy all at once.
    m_codes.reserve(std::min(size_t(m_table.rowCount()), m_countOfCode.size()));
}

size_t ColumnStatistics::itemCount() const
{
    return m_phase == Phase::CountRows ? size_t(m_table.rowCount()) : m_codes.size();
}

bool ColumnStatistics::step()
{
    if (m_phase == Phase::Done) {
        return false;
    }
    const size_t end = std::min(itemCount(), m_at + itemsPerStep);
    for (; m_at < end; ++m_at) {
        switch (m_phase) {
        case Phase::CountRows:
            countRow(int(m_at));
            break;
        case Phase::Unite:
            unite(m_at);
            break;
        case Phase::Read:
            readValue(m_at);
            break;
        case Phase::Bins:
            addToBin(m_at);
            break;
        case Phase::Done:
            break;
        }
    }
    if (m_at == itemCount()) {
        startNextPhase();
    }
    return m_phase != Phase::Done;
}

double ColumnStatistics::fractionDone() const
{
    const double inPhase = itemCount() == 0 ? 0.0 : double(m_at) / double(itemCount());
    return (double(m_phase) + inPhase) / double(Phase::Done);
}

void ColumnStatistics::startNextPhase()
{
    m_at = 0;
    switch (m_phase) {
    case Phase::CountRows:
        m_phase = m_codesAreValues ? Phase::Read : Phase::Unite;
        if (!m_codesAreValues) {
            startUniting();
        }
        return;
    case Phase::Unite:
        m_slots = {};
        m_phase = Phase::Read;
        return;
    case Phase::Read:
        m_phase = Phase::Bins;
        m_numbers.bins.assign(binCount, 0);
        m_dates.bins.assign(binCount, 0);
        return;
    case Phase::Bins:
    case Phase::Done:
        break;
    }
    m_phase = Phase::Done;
    std::stable_sort(m_frequent.begin(), m_frequent.end(), isMoreFrequent);
    m_kindCounts.isExact = true;
    m_codes = {};
    m_countOfCode = {};
}

void ColumnStatistics::countRow(int row)
{
    const quint32 code = m_reader.code(row);
    if (m_countOfCode[code]++ == 0) {
        m_codes.push_back(code);
    }
}

void ColumnStatistics::startUniting()
{
    size_t size = 16;
    while (size < m_codes.size() * 3 / 2) {
        size *= 2;
    }
    m_slots.assign(size, 0);
}

/// Gives the cells of a value to the first code that stands for the same value.
void ColumnStatistics::unite(size_t at)
{
    const quint32 code = m_codes[at];
    const std::string_view value = m_reader.utf8OfCode(code);
    const size_t mask = m_slots.size() - 1;
    size_t slot = std::hash<std::string_view>()(value) & mask;
    for (; m_slots[slot] != 0; slot = (slot + 1) & mask) {
        const quint32 known = m_codes[m_slots[slot] - 1];
        if (m_reader.utf8OfCode(known) == value) {
            m_countOfCode[known] += m_countOfCode[code];
            m_countOfCode[code] = 0;
            return;
        }
    }
    m_slots[slot] = quint32(at) + 1;
}

void ColumnStatistics::readValue(size_t at)
{
    const std::string_view value = m_reader.utf8OfCode(m_codes[at]);
    const qint64 count = m_countOfCode[m_codes[at]];
    if (count == 0) {
        return;
    }
    addFrequent(value, count);
    double place = 0;
    const ValueKind kind = m_kinds.kind(value, &place);
    m_kindCounts.add(kind, count);
    if (kind == ValueKind::Empty) {
        return;
    }
    ++m_distinct;
    const int length = characterCount(value);
    if (m_shortest.empty() || length < m_shortestLength) {
        m_shortest = value;
        m_shortestLength = length;
    }
    if (length > m_longestLength) {
        m_longest = value;
        m_longestLength = length;
    }
    if (kind == ValueKind::Date) {
        addToSpread(&m_dates, place, value, count);
    } else if (kind != ValueKind::Text && kind != ValueKind::Boolean && std::isfinite(place)) {
        addToSpread(&m_numbers, place, value, count);
    }
}

void ColumnStatistics::addToSpread(Spread *spread, double place, std::string_view value,
                                   qint64 count)
{
    if (spread->count == 0 || place < spread->smallest) {
        spread->smallest = place;
        spread->smallestValue = value;
    }
    if (spread->count == 0 || place > spread->largest) {
        spread->largest = place;
        spread->largestValue = value;
    }
    spread->count += count;
}

/// Keeps the most frequent values in a heap with the rarest of them on top. Of equally frequent
/// values those that come first in the table stay.
void ColumnStatistics::addFrequent(std::string_view value, qint64 count)
{
    if (int(m_frequent.size()) == mostFrequent) {
        if (count <= m_frequent.front().count) {
            return;
        }
        std::pop_heap(m_frequent.begin(), m_frequent.end(), isMoreFrequent);
        m_frequent.pop_back();
    }
    m_frequent.push_back({value, count});
    std::push_heap(m_frequent.begin(), m_frequent.end(), isMoreFrequent);
}

void ColumnStatistics::addToBin(size_t at)
{
    const qint64 count = m_countOfCode[m_codes[at]];
    double place = 0;
    const ValueKind kind = m_kinds.kind(m_reader.utf8OfCode(m_codes[at]), &place);
    if (kind != ValueKind::Date && kind != ValueKind::Integer && kind != ValueKind::Real) {
        return;
    }
    Spread &spread = kind == ValueKind::Date ? m_dates : m_numbers;
    if (!std::isfinite(place)) {
        return;
    }
    // Halves, because the whole range may be larger than the largest number.
    const double range = spread.largest / 2 - spread.smallest / 2;
    const double share = range > 0 ? (place / 2 - spread.smallest / 2) / range : 0.0;
    spread.bins[size_t(qBound(0, int(share * binCount), binCount - 1))] += count;
}
