#include "rowsorter.h"

#include "dateformats.h"
#include "distinctvalues.h"
#include "numberreader.h"
#include "sortinruns.h"
#include "utf8.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <optional>

namespace {

struct NumberItem
{
    double value;
    quint32 number;
};

struct PackedRow
{
    quint64 key;
    qint32 row;
};

int sign(double a, double b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}

/// True when the first rows of the column hold numbers and nothing else.
bool isNumericColumn(const Dataset &table, ColIndex column)
{
    constexpr int rowsLookedAt = 100;
    const NumberReader &numbers = NumberReader::current();
    const ColumnReader cells = table.columnReader(column);
    bool anyNumber = false;
    for (int row = 0; row < std::min(table.rowCount(), rowsLookedAt); ++row) {
        const std::string_view cell = cells.utf8(row);
        if (cell.empty()) {
            continue;
        }
        bool ok = false;
        numbers.toReal(cell, false, false, &ok);
        if (!ok && Utf8::decoded(cell).toLower() != QLatin1String("nan")) {
            return false;
        }
        anyNumber |= ok;
    }
    return anyNumber;
}

} // namespace

bool SortKeys::read(const Dataset &table, const SortLevel &level, const SortRules &rules,
                    const Progress &progress)
{
    m_ascending = level.ascending;
    DistinctValues cells;
    if (!cells.read(table, level.column, progressBetween(progress, 0.0, 0.3))) {
        return false;
    }
    m_ofRow = std::move(cells.ofRow);
    const std::vector<std::string_view> &values = cells.values;

    std::vector<MixedKey> keys(values.size());
    if (rules.intelligent && !readValues(table, level.column, rules.datePatterns, values,
                                         progressBetween(progress, 0.3, 0.4), &keys)) {
        return false;
    }

    const Kind kind = kindOf(keys, values);
    const Progress ranking = progressBetween(progress, 0.4, 1.0);
    std::vector<quint32> ranks;
    if (kind == Kind::Date || kind == Kind::Number) {
        if (!rankNumbers(keys, kind, values, ranking, &ranks)) {
            return false;
        }
    } else if (!rankTexts(values, rules.texts, ranking, &ranks)) {
        return false;
    }
    if (kind == Kind::Mixed) {
        for (size_t i = 0; i < keys.size(); ++i) {
            keys[i].textRank = ranks[i];
        }
        m_mixed = std::move(keys);
        return true;
    }
    m_mixed.clear();
    takeRanks(ranks);
    return true;
}

/// Reads the values as dates and as numbers, as far as the column holds such.
bool SortKeys::readValues(const Dataset &table, ColIndex column, const QStringList &datePatterns,
                          const std::vector<std::string_view> &values, const Progress &progress,
                          std::vector<MixedKey> *keys)
{
    const QString pattern = detectDateFormat(table, column, datePatterns).pattern;
    std::optional<DatePattern> dates;
    if (!pattern.isEmpty()) {
        dates.emplace(pattern);
    }
    const bool isNumeric = isNumericColumn(table, column);
    if (!dates && !isNumeric) {
        return true;
    }
    const NumberReader &numbers = NumberReader::current();
    for (size_t i = 0; i < values.size(); ++i) {
        if (i % progressInterval == 0 &&
            !reportProgress(progress, double(i) / double(values.size()))) {
            return false;
        }
        MixedKey &key = (*keys)[i];
        if (dates) {
            const QDate date = dates->read(values[i]);
            key.isDate = date.isValid();
            key.day = double(date.toJulianDay());
        }
        if (isNumeric) {
            key.number = numbers.toReal(values[i], false, false, &key.isNumber);
        }
    }
    return true;
}

SortKeys::Kind SortKeys::kindOf(const std::vector<MixedKey> &keys,
                                const std::vector<std::string_view> &values)
{
    // An empty cell compares as text and so comes before every other one: it fits all kinds.
    size_t filled = 0;
    size_t dates = 0;
    size_t numbers = 0;
    for (size_t i = 0; i < keys.size(); ++i) {
        filled += values[i].empty() ? 0 : 1;
        dates += keys[i].isDate ? 1 : 0;
        numbers += keys[i].isNumber && std::isfinite(keys[i].number) ? 1 : 0;
    }
    if (dates == filled && dates > 0) {
        return Kind::Date;
    }
    if (dates > 0) {
        return Kind::Mixed;
    }
    if (numbers == filled && numbers > 0) {
        return Kind::Number;
    }
    const bool noNumbers =
        std::none_of(keys.begin(), keys.end(), [](const MixedKey &key) { return key.isNumber; });
    return noNumbers ? Kind::Text : Kind::Mixed;
}

bool SortKeys::rankNumbers(const std::vector<MixedKey> &keys, Kind kind,
                           const std::vector<std::string_view> &values, const Progress &progress,
                           std::vector<quint32> *ranks)
{
    std::vector<NumberItem> items(keys.size());
    for (size_t i = 0; i < keys.size(); ++i) {
        const double value = kind == Kind::Date ? keys[i].day : keys[i].number;
        items[i] = {values[i].empty() ? -std::numeric_limits<double>::infinity() : value,
                    quint32(i)};
    }
    const auto less = [](const NumberItem &a, const NumberItem &b) { return a.value < b.value; };
    if (!sortInRuns(&items, less, progress)) {
        return false;
    }
    rankSorted(items, less, ranks);
    return true;
}

void SortKeys::takeRanks(const std::vector<quint32> &ranks)
{
    if (ranks.empty()) {
        return;
    }
    const quint32 highest = *std::max_element(ranks.begin(), ranks.end());
    m_rankCount = highest + 1;
    for (quint32 &value : m_ofRow) {
        value = m_ascending ? ranks[value] : highest - ranks[value];
    }
}

int SortKeys::compare(int a, int b) const
{
    const quint32 x = m_ofRow[size_t(a)];
    const quint32 y = m_ofRow[size_t(b)];
    if (x == y) {
        return 0;
    }
    if (m_mixed.empty()) {
        return x < y ? -1 : 1;
    }
    const int order = compareMixed(m_mixed[x], m_mixed[y]);
    return m_ascending ? order : -order;
}

int SortKeys::compareMixed(const MixedKey &a, const MixedKey &b) const
{
    if (a.isDate && b.isDate) {
        return sign(a.day, b.day);
    }
    if (a.isNumber && b.isNumber) {
        return sign(a.number, b.number);
    }
    return a.textRank < b.textRank ? -1 : (b.textRank < a.textRank ? 1 : 0);
}

bool RowSorter::sort(const Dataset &table, const std::vector<SortLevel> &levels,
                     const SortRules &rules, const Progress &progress, RowSelection *rows)
{
    constexpr double readingEnds = 0.6;
    m_levels.assign(levels.size(), SortKeys());
    for (size_t i = 0; i < levels.size(); ++i) {
        const double share = readingEnds / double(levels.size());
        const Progress reading =
            progressBetween(progress, double(i) * share, double(i + 1) * share);
        if (!m_levels[i].read(table, levels[i], rules, reading)) {
            return false;
        }
    }
    const Progress sorting = progressBetween(progress, readingEnds, 1.0);
    if (canPack()) {
        return sortPacked(table.rowCount(), sorting, rows);
    }
    rows->resize(size_t(table.rowCount()));
    std::iota(rows->begin(), rows->end(), 0);
    return sortCompared(sorting, rows);
}

int RowSorter::compare(int a, int b) const
{
    for (const SortKeys &level : m_levels) {
        const int order = level.compare(a, b);
        if (order != 0) {
            return order;
        }
    }
    return 0;
}

/// True when the ranks of a row on all levels fit into one number.
bool RowSorter::canPack() const
{
    quint64 count = 1;
    for (const SortKeys &level : m_levels) {
        if (!level.isConsistent() ||
            count > std::numeric_limits<quint64>::max() / level.rankCount()) {
            return false;
        }
        count *= level.rankCount();
    }
    return true;
}

bool RowSorter::sortPacked(int rowCount, const Progress &progress, RowSelection *rows) const
{
    std::vector<PackedRow> packed(static_cast<size_t>(rowCount));
    for (int row = 0; row < rowCount; ++row) {
        quint64 key = 0;
        for (const SortKeys &level : m_levels) {
            key = key * level.rankCount() + level.rank(row);
        }
        packed[size_t(row)] = {key, row};
    }
    const auto less = [](const PackedRow &a, const PackedRow &b) { return a.key < b.key; };
    if (!sortInRuns(&packed, less, progress)) {
        return false;
    }
    rows->resize(packed.size());
    std::transform(packed.begin(), packed.end(), rows->begin(),
                   [](const PackedRow &each) { return each.row; });
    return true;
}

bool RowSorter::sortCompared(const Progress &progress, RowSelection *rows) const
{
    const auto less = [this](qint32 a, qint32 b) { return compare(a, b) < 0; };
    const bool consistent = std::all_of(m_levels.begin(), m_levels.end(),
                                        [](const SortKeys &l) { return l.isConsistent(); });
    if (consistent) {
        return sortInRuns(rows, less, progress);
    }
    // std::sort may leave the list when the order contradicts itself; a merge sort cannot.
    return sortInRuns(
        rows, less, [&less](auto begin, auto end) { std::stable_sort(begin, end, less); },
        progress);
}
