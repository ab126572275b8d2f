#include "columnlayout.h"

#include <algorithm>
#include <numeric>

void ColumnLayout::setWidths(const std::vector<int> &widths)
{
    m_ends.resize(widths.size());
    std::partial_sum(widths.begin(), widths.end(), m_ends.begin());
}

void ColumnLayout::setWidth(int column, int width)
{
    const int change = width - this->width(column);
    for (size_t i = size_t(column); i < m_ends.size(); ++i) {
        m_ends[i] += change;
    }
}

int ColumnLayout::at(int x) const
{
    if (x < 0 || x >= total()) {
        return -1;
    }
    return int(std::upper_bound(m_ends.begin(), m_ends.end(), x) - m_ends.begin());
}
