#pragma once

#include <QtGlobal>

/// A row or column number, counted from 0. The two are distinct types, so that a row number can
/// never be passed where a column number is wanted.
template <class Tag>
class TableIndex
{
public:
    constexpr TableIndex() = default;
    constexpr explicit TableIndex(qint32 value)
        : m_value(value)
    {
    }

    constexpr qint32 value() const { return m_value; }
    constexpr bool isValid() const { return m_value >= 0; }

    TableIndex &operator++()
    {
        ++m_value;
        return *this;
    }

    friend constexpr bool operator==(TableIndex a, TableIndex b) { return a.m_value == b.m_value; }
    friend constexpr bool operator!=(TableIndex a, TableIndex b) { return a.m_value != b.m_value; }
    friend constexpr bool operator<(TableIndex a, TableIndex b) { return a.m_value < b.m_value; }
    friend constexpr bool operator<=(TableIndex a, TableIndex b) { return a.m_value <= b.m_value; }
    friend constexpr bool operator>(TableIndex a, TableIndex b) { return a.m_value > b.m_value; }
    friend constexpr bool operator>=(TableIndex a, TableIndex b) { return a.m_value >= b.m_value; }
    friend uint qHash(TableIndex a, uint seed = 0) { return uint(a.m_value) ^ seed; }

private:
    qint32 m_value = -1;
};

using RowIndex = TableIndex<struct RowTag>;
using ColIndex = TableIndex<struct ColTag>;
