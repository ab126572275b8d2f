#pragma once

#include "dataset.h"
#include "slicedsort.h"
#include "valuekinds.h"

#include <memory>

/// The order of a table's rows by one column, worked out in slices: numbers by value, then dates by
/// day, then texts without regard to case; empty cells come last in either direction, and rows that
/// are equal stay as they were.
class ViewSort
{
public:
    ViewSort(const Dataset &table, ColIndex column, bool ascending,
             const QStringList &datePatterns);

    /// Does a slice of the work; false when the order is ready.
    bool step();
    RowSelection takeOrder() { return std::move(m_order); }

private:
    enum class Phase : quint8 { Collect, Heads, Sort, Rank, Count, Place };
    enum class Group : quint8 { Number, Date, Text, Empty };
    /// `head` orders the values of a group, texts only by the first bytes behind what all of them
    /// begin with.
    struct Key
    {
        quint64 head = 0;
        quint32 code = 0;
        Group group = Group::Empty;
    };
    struct Less
    {
        const ColumnReader *reader;
        bool ascending;
        bool operator()(const Key &a, const Key &b) const;
    };

    bool stepOverRows();
    bool readSomeHeads();
    bool rankSome();
    void noteCommonStart(std::string_view text);
    void takeKeyOf(int row);
    Key keyOf(quint32 code);
    bool startNextPhase();

    Dataset m_table;
    ColumnReader m_reader;
    ValueKinds m_kinds;
    bool m_ascending;
    std::vector<quint32> m_rankOfCode;
    std::vector<Key> m_keys; // of the distinct values
    std::unique_ptr<SlicedSort<Key, Less>> m_sort;
    std::vector<quint32> m_starts; // by rank: where its next row goes
    RowSelection m_order;
    std::string_view m_commonStart;
    bool m_hasText = false;
    int m_row = 0;
    size_t m_keyAt = 0;
    quint32 m_rank = 0;
    Phase m_phase = Phase::Collect;
};
