#include "joinkeys.h"

#include "distinctvalues.h"
#include "utf8.h"

#include <algorithm>
#include <deque>
#include <string>
#include <unordered_map>

namespace {

/// Numbers texts in the order in which they are met.
class KeyNumbers
{
public:
    explicit KeyNumbers(bool caseSensitive)
        : m_caseSensitive(caseSensitive)
    {
    }

    quint32 count() const { return quint32(m_numbers.size()); }

    /// Replaces the number of each row's value by that of its key. Without `add` all keys not met
    /// before get the number count(). False when the user asked to stop.
    bool apply(DistinctValues *column, bool add, const Progress &progress)
    {
        std::vector<quint32> numbers;
        numbers.reserve(column->values.size());
        if (add) {
            m_numbers.reserve(m_numbers.size() + column->values.size());
        }
        for (const std::string_view value : column->values) {
            if (numbers.size() % progressInterval == 0 &&
                !reportProgress(progress, double(numbers.size()) / column->values.size())) {
                return false;
            }
            numbers.push_back(numberOf(value, add));
        }
        for (quint32 &number : column->ofRow) {
            number = numbers[number];
        }
        return true;
    }

private:
    quint32 numberOf(std::string_view value, bool add)
    {
        std::string_view key = value;
        if (!m_caseSensitive) {
            lower(value);
            key = m_lower;
        }
        const auto known = m_numbers.find(key);
        if (known != m_numbers.end()) {
            return known->second;
        }
        const quint32 number = count();
        if (add) {
            if (!m_caseSensitive) {
                m_own.push_back(m_lower);
                key = m_own.back();
            }
            m_numbers.emplace(key, number);
        }
        return number;
    }

    void lower(std::string_view value)
    {
        if (!Utf8::isAscii(value)) {
            m_lower = Utf8::encoded(Utf8::decoded(value).toLower());
            return;
        }
        m_lower.assign(value);
        std::transform(m_lower.begin(), m_lower.end(), m_lower.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    }

    bool m_caseSensitive;
    std::unordered_map<std::string_view, quint32> m_numbers;
    std::deque<std::string> m_own;
    std::string m_lower;
};

qint64 countRowsWithBlanks(const DistinctValues &column)
{
    std::vector<bool> hasBlanks;
    hasBlanks.reserve(column.values.size());
    for (const std::string_view value : column.values) {
        hasBlanks.push_back(Utf8::trimmed(value).size() != value.size());
    }
    return std::count_if(column.ofRow.begin(), column.ofRow.end(),
                         [&hasBlanks](quint32 value) { return hasBlanks[value]; });
}

} // namespace

bool JoinKeys::read(const Dataset &top, ColIndex topKey, const Dataset &bottom, ColIndex bottomKey,
                    const Options &options, const Progress &progress)
{
    DistinctValues topCells;
    DistinctValues bottomCells;
    if (!bottomCells.read(bottom, bottomKey, progressBetween(progress, 0.0, 0.2)) ||
        !topCells.read(top, topKey, progressBetween(progress, 0.2, 0.4))) {
        return false;
    }
    m_top = {};
    m_bottom = {};
    if (options.detailed) {
        m_top.rowsWithBlanks = countRowsWithBlanks(topCells);
        m_bottom.rowsWithBlanks = countRowsWithBlanks(bottomCells);
    }
    KeyNumbers numbers(options.caseSensitive);
    if (!numbers.apply(&bottomCells, true, progressBetween(progress, 0.4, 0.7))) {
        return false;
    }
    m_bottomKeyCount = numbers.count();
    if (!numbers.apply(&topCells, options.detailed, progressBetween(progress, 0.7, 1.0))) {
        return false;
    }
    m_topKeys = std::move(topCells.ofRow);
    m_bottomKeys = std::move(bottomCells.ofRow);
    // One more than there are: all keys of the top table that were only looked for.
    const quint32 keyCount = numbers.count() + 1;
    groupBottomRows(keyCount);
    count(keyCount, options.detailed);
    return true;
}

void JoinKeys::groupBottomRows(quint32 keyCount)
{
    m_starts.assign(size_t(keyCount) + 1, 0);
    for (const quint32 key : m_bottomKeys) {
        ++m_starts[key + 1];
    }
    for (size_t key = 1; key < m_starts.size(); ++key) {
        m_starts[key] += m_starts[key - 1];
    }
    m_bottomRows.resize(m_bottomKeys.size());
    std::vector<quint32> places(m_starts);
    for (size_t row = 0; row < m_bottomKeys.size(); ++row) {
        m_bottomRows[places[m_bottomKeys[row]]++] = qint32(row);
    }
}

void JoinKeys::count(quint32 keyCount, bool detailed)
{
    m_topCounts.assign(keyCount, 0);
    for (const quint32 key : m_topKeys) {
        ++m_topCounts[key];
    }
    m_pairCount = 0;
    m_keysInBoth = 0;
    for (quint32 key = 0; key < m_bottomKeyCount; ++key) {
        const qint64 topRows = m_topCounts[key];
        const qint64 bottomRows = m_starts[key + 1] - m_starts[key];
        m_pairCount += topRows * bottomRows;
        m_keysInBoth += topRows > 0 ? 1 : 0;
        m_top.rowsMatched += topRows;
        m_bottom.rowsMatched += topRows > 0 ? bottomRows : 0;
        m_bottom.keysRepeated += bottomRows > 1 ? 1 : 0;
    }
    if (detailed) {
        m_top.keysAlone = qint64(keyCount) - 1 - m_bottomKeyCount;
        m_bottom.keysAlone = m_bottomKeyCount - m_keysInBoth;
        m_top.keysRepeated = std::count_if(m_topCounts.begin(), m_topCounts.end(),
                                           [](qint32 rows) { return rows > 1; });
    }
}
