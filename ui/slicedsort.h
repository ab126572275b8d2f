#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

/// A stable merge sort that can be interrupted after every slice, for orders without
/// contradictions.
template <class Item, class Less>
class SlicedSort
{
public:
    SlicedSort(std::vector<Item> items, const Less &less)
        : m_items(std::move(items))
        , m_less(less)
    {
    }

    /// Does a slice of the work; false when the items are sorted.
    bool step() { return m_width == 0 ? sortRun() : mergeSome(); }
    /// The items; sorted once step() answered false.
    std::vector<Item> take() { return std::move(m_items); }

private:
    static constexpr size_t runSize = 1024;
    static constexpr size_t sliceSize = 4096;

    bool sortRun()
    {
        const size_t end = std::min(m_out + runSize, m_items.size());
        std::stable_sort(m_items.begin() + std::ptrdiff_t(m_out),
                         m_items.begin() + std::ptrdiff_t(end), m_less);
        m_out = end;
        return m_out < m_items.size() || startPass(runSize);
    }

    bool startPass(size_t width)
    {
        if (width >= m_items.size()) {
            m_merged = {};
            return false;
        }
        m_width = width;
        m_merged.reserve(m_items.size());
        m_out = 0;
        startPair();
        return true;
    }

    void startPair()
    {
        m_left = m_out;
        m_middle = std::min(m_out + m_width, m_items.size());
        m_right = m_middle;
        m_end = std::min(m_middle + m_width, m_items.size());
    }

    bool mergeSome()
    {
        for (size_t n = 0; n < sliceSize; ++n) {
            if (m_out == m_items.size()) {
                m_items.swap(m_merged);
                m_merged.clear();
                return startPass(m_width * 2);
            }
            if (m_out == m_end) {
                startPair();
            }
            const bool fromRight = m_left == m_middle ||
                                   (m_right < m_end && m_less(m_items[m_right], m_items[m_left]));
            m_merged.push_back(m_items[fromRight ? m_right++ : m_left++]);
            ++m_out;
        }
        return true;
    }

    std::vector<Item> m_items;
    std::vector<Item> m_merged;
    Less m_less;
    size_t m_width = 0; // 0 while the runs are sorted
    size_t m_out = 0;
    size_t m_left = 0;
    size_t m_middle = 0;
    size_t m_right = 0;
    size_t m_end = 0;
};
