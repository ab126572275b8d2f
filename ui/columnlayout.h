#pragma once

#include <cstddef>
#include <vector>

/// Widths and positions of a table's columns, in pixels from the left end of the first.
class ColumnLayout
{
public:
    void setWidths(const std::vector<int> &widths);
    void setWidth(int column, int width);

    int count() const { return int(m_ends.size()); }
    int left(int column) const { return column == 0 ? 0 : m_ends[std::size_t(column) - 1]; }
    int right(int column) const { return m_ends[std::size_t(column)]; }
    int width(int column) const { return right(column) - left(column); }
    int total() const { return m_ends.empty() ? 0 : m_ends.back(); }
    /// The column at a position, or -1.
    int at(int x) const;

private:
    std::vector<int> m_ends;
};
