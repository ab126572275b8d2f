#pragma once

#include "dataset.h"
#include "valuekinds.h"

#include <vector>

/// A value and the number of cells that hold it.
struct ValueCount
{
    std::string_view value;
    qint64 count = 0;
};

/// What the values of one column are, worked out in slices.
class ColumnStatistics
{
public:
    static constexpr int mostFrequent = 200;
    static constexpr int binCount = 24;

    /// Smallest and largest number or date of a column, and how they spread between.
    struct Spread
    {
        qint64 count = 0; ///< cells
        double smallest = 0;
        double largest = 0;
        std::string_view smallestValue;
        std::string_view largestValue;
        std::vector<qint64> bins;
    };

    ColumnStatistics(const Dataset &table, ColIndex column, const QStringList &datePatterns);

    /// Does a slice of the work; false when all is known.
    bool step();
    double fractionDone() const;

    /// These are complete once step() answered false. Texts live as long as this object.
    const KindCounts &kinds() const { return m_kindCounts; }
    /// Different values that are not empty.
    qint64 distinctCount() const { return m_distinct; }
    /// By number of characters, of the values that are not empty; empty when there is none.
    std::string_view shortest() const { return m_shortest; }
    std::string_view longest() const { return m_longest; }
    int shortestLength() const { return m_shortestLength; }
    int longestLength() const { return m_longestLength; }
    const Spread &numbers() const { return m_numbers; }
    const Spread &dates() const { return m_dates; }
    /// By descending number of cells, at most mostFrequent of them.
    const std::vector<ValueCount> &frequent() const { return m_frequent; }

private:
    enum class Phase : quint8 { CountRows, Unite, Read, Bins, Done };

    void countRow(int row);
    void unite(size_t at);
    void readValue(size_t at);
    void addToBin(size_t at);
    void addToSpread(Spread *spread, double place, std::string_view value, qint64 count);
    void addFrequent(std::string_view value, qint64 count);
    size_t itemCount() const;
    void startNextPhase();
    void startUniting();

    Dataset m_table;
    ColumnReader m_reader;
    ValueKinds m_kinds;
    bool m_codesAreValues;
    Phase m_phase = Phase::CountRows;
    size_t m_at = 0;
    std::vector<quint32> m_countOfCode;
    std::vector<quint32> m_codes; // in order of their first rows
    std::vector<quint32> m_slots; // hash table: place in m_codes + 1

    KindCounts m_kindCounts;
    qint64 m_distinct = 0;
    std::string_view m_shortest;
    std::string_view m_longest;
    int m_shortestLength = 0;
    int m_longestLength = 0;
    Spread m_numbers;
    Spread m_dates;
    std::vector<ValueCount> m_frequent; // a heap until done
};
