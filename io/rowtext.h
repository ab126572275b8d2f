#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Keeps those values of a row that are not found as they stand in the text that was read.
class RowText
{
public:
    void clear()
    {
        m_text.clear();
        m_parts.clear();
    }
    bool isEmpty() const { return m_parts.empty(); }
    /// Where the next value is appended.
    std::string *text() { return &m_text; }
    size_t size() const { return m_text.size(); }
    /// The text from `from` on is the value of that number.
    void end(int value, size_t from) { m_parts.push_back({value, from, m_text.size() - from}); }
    /// Points the values at their texts; only now, because the text may move while it grows.
    void place(std::string_view *values) const
    {
        for (const Part &part : m_parts) {
            values[part.value] = {m_text.data() + part.from, part.size};
        }
    }

private:
    struct Part
    {
        int value;
        size_t from;
        size_t size;
    };
    std::string m_text;
    std::vector<Part> m_parts;
};
