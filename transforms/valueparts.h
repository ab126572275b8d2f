#pragma once

#include "dataset.h"
#include "progress.h"

#include <string_view>
#include <vector>

/// The values of a column, cut at a delimiter. Each distinct value is cut once, and each part is a
/// row of a table of its own, from which columns of parts are taken without copying.
class ValueParts
{
public:
    struct Options
    {
        std::string_view delimiter; ///< UTF-8; empty: values stay whole
        bool trim = false;
    };
    enum class Result { Cut, Stopped, TooMany };

    Result cut(const Dataset &table, ColIndex column, const Options &options,
               const Progress &progress);

    int count(int row) const
    {
        const quint32 value = m_valueOfRow[size_t(row)];
        return m_starts[value + 1] - m_starts[value];
    }
    bool isEmpty(int row, int part) const { return m_isEmpty[size_t(partRow(row, part))]; }
    /// The row of parts() that holds a part of a row's value; -1 beyond the last.
    qint32 partRow(int row, int part) const
    {
        const quint32 value = m_valueOfRow[size_t(row)];
        return part < m_starts[value + 1] - m_starts[value] ? m_starts[value] + part : -1;
    }
    const Dataset &parts() const { return m_parts; }

private:
    std::vector<quint32> m_valueOfRow;
    std::vector<qint32> m_starts; // by value, and the end
    std::vector<bool> m_isEmpty;  // by row of m_parts
    Dataset m_parts;
};
