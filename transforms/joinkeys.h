#pragma once

#include "dataset.h"
#include "progress.h"

#include <vector>

/// The keys of two tables, numbered so that equal keys have equal numbers, and the bottom rows of
/// each.
class JoinKeys
{
public:
    struct Options
    {
        bool caseSensitive = true;
        /// Count what only a report needs too.
        bool detailed = false;
    };
    struct Side
    {
        qint64 rowsMatched = 0;
        /// Only when detailed: keys of several rows, rows whose key has white space at an end, and
        /// keys that the other table lacks.
        qint64 keysRepeated = 0;
        qint64 rowsWithBlanks = 0;
        qint64 keysAlone = 0;
    };
    struct Rows
    {
        const qint32 *first;
        const qint32 *last;
        const qint32 *begin() const { return first; }
        const qint32 *end() const { return last; }
    };

    /// False when the user asked to stop. Afterwards the tables may go.
    bool read(const Dataset &top, ColIndex topKey, const Dataset &bottom, ColIndex bottomKey,
              const Options &options, const Progress &progress);

    /// The bottom rows with the key of a top row, in their order.
    Rows matchesOf(int topRow) const
    {
        const quint32 key = m_topKeys[size_t(topRow)];
        return {m_bottomRows.data() + m_starts[key], m_bottomRows.data() + m_starts[key + 1]};
    }
    bool isTopMatched(int row) const { return m_topKeys[size_t(row)] < m_bottomKeyCount; }
    bool isBottomMatched(int row) const { return m_topCounts[m_bottomKeys[size_t(row)]] > 0; }

    const Side &top() const { return m_top; }
    const Side &bottom() const { return m_bottom; }
    /// Pairs of rows with equal keys.
    qint64 pairCount() const { return m_pairCount; }
    qint64 keysInBoth() const { return m_keysInBoth; }

private:
    void groupBottomRows(quint32 keyCount);
    void count(quint32 keyCount, bool detailed);

    std::vector<quint32> m_topKeys;    // by row
    std::vector<quint32> m_bottomKeys; // by row
    // The keys of the bottom table come first in the numbering.
    quint32 m_bottomKeyCount = 0;
    std::vector<qint32> m_topCounts;  // rows by key
    std::vector<quint32> m_starts;    // by key: its place in m_bottomRows
    std::vector<qint32> m_bottomRows; // grouped by key
    Side m_top;
    Side m_bottom;
    qint64 m_pairCount = 0;
    qint64 m_keysInBoth = 0;
};
