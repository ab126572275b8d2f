#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

/// Holds texts until all of them are let go together. No text moves while others are added.
class TextArena
{
public:
    /// Room for `size` bytes, of which the first `used` are kept by the next keep(used).
    char *room(size_t size)
    {
        if (m_blocks.empty() || m_blocks[m_current].size - m_used < size) {
            nextBlock(size);
        }
        return m_blocks[m_current].bytes.get() + m_used;
    }
    void keep(size_t used) { m_used += used; }
    std::string_view store(std::string_view text)
    {
        if (text.empty()) {
            return {};
        }
        char *const to = room(text.size());
        memcpy(to, text.data(), text.size());
        keep(text.size());
        return {to, text.size()};
    }
    void clear()
    {
        m_current = 0;
        m_used = 0;
    }

private:
    static constexpr size_t blockSize = size_t(1) << 16;
    struct Block
    {
        std::unique_ptr<char[]> bytes;
        size_t size;
    };

    void nextBlock(size_t size)
    {
        m_current = m_blocks.empty() ? 0 : m_current + 1;
        if (m_current == m_blocks.size()) {
            m_blocks.push_back({nullptr, 0});
        }
        if (m_blocks[m_current].size < size) {
            const size_t newSize = std::max(size, blockSize);
            m_blocks[m_current] = {std::unique_ptr<char[]>(new char[newSize]), newSize};
        }
        m_used = 0;
    }

    std::vector<Block> m_blocks;
    size_t m_current = 0;
    size_t m_used = 0;
};
