#pragma once

#include "dataset.h"
#include "progress.h"
#include "textranks.h"

#include <QStringList>
#include <vector>

struct SortLevel
{
    ColIndex column;
    bool ascending = true;
};

/// How the cells of one sort level compare.
struct SortRules
{
    /// Dates as dates and numbers as numbers, decided anew for each pair of cells.
    bool intelligent = true;
    TextOrder texts;
    /// Date patterns in order of preference.
    QStringList datePatterns;
};

/// How the rows of a table compare by one level, worked out once for each distinct value.
class SortKeys
{
public:
    /// False when the user asked to stop.
    bool read(const Dataset &table, const SortLevel &level, const SortRules &rules,
              const Progress &progress);

    /// Negative when row a comes before row b.
    int compare(int a, int b) const;
    /// False when dates, numbers and texts meet, whose order may contradict itself: 9 comes before
    /// 10, 10 before 1x and 1x before 9.
    bool isConsistent() const { return m_mixed.empty(); }
    /// The place of a row's value among all, below rankCount(); only when consistent.
    quint32 rank(int row) const { return m_ofRow[size_t(row)]; }
    quint32 rankCount() const { return m_rankCount; }

private:
    /// One value, as date, number and text.
    struct MixedKey
    {
        double day = 0;
        double number = 0;
        quint32 textRank = 0;
        bool isDate = false;
        bool isNumber = false;
    };
    enum class Kind { Text, Date, Number, Mixed };

    static bool readValues(const Dataset &table, ColIndex column, const QStringList &datePatterns,
                           const std::vector<std::string_view> &values, const Progress &progress,
                           std::vector<MixedKey> *keys);
    static Kind kindOf(const std::vector<MixedKey> &keys,
                       const std::vector<std::string_view> &values);
    static bool rankNumbers(const std::vector<MixedKey> &keys, Kind kind,
                            const std::vector<std::string_view> &values, const Progress &progress,
                            std::vector<quint32> *ranks);
    void takeRanks(const std::vector<quint32> &ranks);
    int compareMixed(const MixedKey &a, const MixedKey &b) const;

    bool m_ascending = true;
    std::vector<quint32> m_ofRow; // rank, or number of the value in m_mixed
    quint32 m_rankCount = 1;
    std::vector<MixedKey> m_mixed;
};

/// Sorts the rows of a table by several levels. Rows that are equal on every level come in any
/// order.
class RowSorter
{
public:
    /// The row numbers in sorted order. False when the user asked to stop.
    bool sort(const Dataset &table, const std::vector<SortLevel> &levels, const SortRules &rules,
              const Progress &progress, RowSelection *rows);
    /// Negative when row a comes before row b of the table sorted last.
    int compare(int a, int b) const;

private:
    bool canPack() const;
    bool sortPacked(int rowCount, const Progress &progress, RowSelection *rows) const;
    bool sortCompared(const Progress &progress, RowSelection *rows) const;

    std::vector<SortKeys> m_levels;
};
