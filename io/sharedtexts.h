#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The texts that the cells of a workbook share, one after the other as UTF-8. A text is valid as
/// long as no other is appended.
class SharedTexts
{
public:
    size_t count() const { return m_ends.size(); }
    std::string_view at(size_t index) const
    {
        const size_t from = index == 0 ? 0 : m_ends[index - 1];
        return {m_text.data() + from, m_ends[index] - from};
    }

    /// Where the text that is being added is appended.
    std::string *text() { return &m_text; }
    /// Where it begins.
    size_t from() const { return m_ends.empty() ? 0 : m_ends.back(); }
    void endText() { m_ends.push_back(m_text.size()); }

private:
    std::string m_text;
    std::vector<size_t> m_ends;
};
