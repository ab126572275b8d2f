#include "editdistance.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

namespace {

constexpr int wordBits = 64;

// For each code unit, the positions in a piece of at most 64 code units where it stands. The
// tables are reused, so that a pair of short texts costs no clearing of whole tables.
class Positions
{
public:
    void fill(QStringView piece)
    {
        quint64 bit = 1;
        for (const QChar c : piece) {
            at(c.unicode()) |= bit;
            bit <<= 1;
        }
    }

    void clear(QStringView piece)
    {
        bool hashed = false;
        for (const QChar c : piece) {
            if (c.unicode() < m_direct.size()) {
                m_direct[c.unicode()] = 0;
            } else {
                hashed = true;
            }
        }
        if (hashed) {
            m_hashed.fill({});
        }
    }

    quint64 of(ushort unit) const
    {
        if (unit < m_direct.size()) {
            return m_direct[unit];
        }
        for (size_t slot = unit % m_hashed.size();; slot = (slot + 1) % m_hashed.size()) {
            if (m_hashed[slot].unit == unit || m_hashed[slot].bits == 0) {
                return m_hashed[slot].bits;
            }
        }
    }

private:
    struct Entry
    {
        quint64 bits = 0;
        ushort unit = 0;
    };

    quint64 &at(ushort unit)
    {
        if (unit < m_direct.size()) {
            return m_direct[unit];
        }
        size_t slot = unit % m_hashed.size();
        while (m_hashed[slot].bits != 0 && m_hashed[slot].unit != unit) {
            slot = (slot + 1) % m_hashed.size();
        }
        m_hashed[slot].unit = unit;
        return m_hashed[slot].bits;
    }

    std::array<quint64, 256> m_direct{};
    std::array<Entry, size_t(2) * wordBits> m_hashed{}; // never more than half full
};

Positions &sharedPositions()
{
    static thread_local Positions positions;
    return positions;
}

// 64 rows of one column of the distance table as vertical differences: +1 and -1 bits (Myers).
struct Column
{
    quint64 plus = ~quint64(0);
    quint64 minus = 0;

    // Moves on by one column. `matches` has a bit for each row whose code unit equals the column's,
    // `above` is the horizontal difference (-1, 0, 1) over the top row; answers that of row `last`.
    int advance(quint64 matches, int above, quint64 last)
    {
        const quint64 vertical = matches | minus;
        matches |= above < 0 ? 1 : 0;
        const quint64 diagonal = (((matches & plus) + plus) ^ plus) | matches;
        quint64 rightPlus = minus | ~(diagonal | plus);
        quint64 rightMinus = plus & diagonal;
        const int below = ((rightPlus & last) ? 1 : 0) - ((rightMinus & last) ? 1 : 0);
        rightPlus = (rightPlus << 1) | (above > 0 ? 1 : 0);
        rightMinus = (rightMinus << 1) | (above < 0 ? 1 : 0);
        plus = rightMinus | ~(vertical | rightPlus);
        minus = rightPlus & vertical;
        return below;
    }
};

// The whole of `rows` fits in one word.
int distanceInOneWord(QStringView rows, QStringView columns, int limit)
{
    Positions &positions = sharedPositions();
    positions.fill(rows);
    const quint64 last = quint64(1) << (rows.size() - 1);
    int score = int(rows.size());
    auto left = int(columns.size());
    Column column;
    for (const QChar c : columns) {
        score += column.advance(positions.of(c.unicode()), 1, last);
        --left;
        // Each column can lower the score by one at most.
        if (score - left > limit) {
            score = limit + 1;
            break;
        }
    }
    positions.clear(rows);
    return std::min(score, limit + 1);
}

// Blocks of 64 rows, one after the other, each over the columns that a distance within the limit
// can pass through. What lies outside counts as growing by one a step, never too little.
int distanceInBlocks(QStringView rows, QStringView columns, int limit)
{
    const auto rowCount = int(rows.size());
    const auto columnCount = int(columns.size());
    Positions &positions = sharedPositions();
    // Horizontal differences along the last row of the block before.
    std::vector<qint8> steps(size_t(columnCount), 1);
    int left = 0;      // the block's first column
    int leftScore = 0; // the distance in the row above the block, before its first column
    for (int top = 0; top < rowCount; top += wordBits) {
        const int height = std::min(wordBits, rowCount - top);
        const int first = std::min(columnCount, std::max(0, top - limit));
        const auto end = int(std::min<qint64>(columnCount, qint64(top) + height + limit));
        for (; left < first; ++left) {
            leftScore += steps[size_t(left)];
        }

        const QStringView piece = rows.mid(top, height);
        positions.fill(piece);
        const quint64 last = quint64(1) << (height - 1);
        Column column;
        int score = leftScore + height;
        int best = score;
        leftScore = score;
        for (int at = left; at < end; ++at) {
            qint8 &step = steps[size_t(at)];
            step = qint8(column.advance(positions.of(columns[at].unicode()), step, last));
            score += step;
            best = std::min(best, score);
        }
        positions.clear(piece);
        if (best > limit) {
            return limit + 1;
        }
        if (top + height == rowCount) {
            return std::min(score + (columnCount - end), limit + 1);
        }
    }
    return limit + 1;
}

} // namespace

int editDistance(QStringView a, QStringView b, int limit)
{
    if (limit < 0) {
        return limit + 1;
    }
    limit = std::min(limit, std::numeric_limits<int>::max() - 1);
    const auto shorter = std::min(a.size(), b.size());
    qsizetype prefix = 0;
    while (prefix < shorter && a[prefix] == b[prefix]) {
        ++prefix;
    }
    qsizetype suffix = 0;
    while (suffix < shorter - prefix && a[a.size() - 1 - suffix] == b[b.size() - 1 - suffix]) {
        ++suffix;
    }
    a = a.mid(prefix, a.size() - prefix - suffix);
    b = b.mid(prefix, b.size() - prefix - suffix);
    if (a.size() < b.size()) {
        std::swap(a, b);
    }
    if (a.size() - b.size() > limit) {
        return limit + 1;
    }
    if (b.isEmpty()) {
        return int(a.size());
    }
    if (limit == 0) {
        return 1;
    }
    if (a.size() <= wordBits) {
        return distanceInOneWord(a, b, limit);
    }
    if (b.size() <= wordBits) {
        return distanceInOneWord(b, a, limit);
    }
    return distanceInBlocks(b, a, std::min(limit, int(a.size())));
}

int fuzzySimilarity(QStringView a, QStringView b, int threshold)
{
    const auto length = qint64(std::max(a.size(), b.size()));
    if (length == 0) {
        return 100;
    }
    const auto limit = int(std::max(0, 100 - threshold) * length / 100);
    const int distance = editDistance(a, b, limit);
    if (distance > limit) {
        return -1;
    }
    return 100 - int((qint64(distance) * 100 + length - 1) / length);
}
