#include "rowgroups.h"

#include "utf8.h"

#include <deque>
#include <string>
#include <unordered_map>

bool NumberedValues::read(const Dataset &table, ColIndex column, const ValueKey &key,
                          const Progress &progress)
{
    DistinctValues cells;
    if (!cells.read(table, column, progressBetween(progress, 0.0, 0.5))) {
        return false;
    }
    std::unordered_map<std::string_view, quint32> known;
    known.reserve(cells.values.size());
    std::deque<std::string> keys;
    std::vector<quint32> numbers;
    numbers.reserve(cells.values.size());
    for (std::string_view value : cells.values) {
        if (numbers.size() % progressInterval == 0 &&
            !reportProgress(progress, 0.5 + 0.5 * double(numbers.size()) / cells.values.size())) {
            return false;
        }
        if (key) {
            keys.push_back(Utf8::encoded(key(Utf8::decoded(value))));
            value = keys.back();
        }
        numbers.push_back(known.emplace(value, quint32(known.size())).first->second);
    }
    count = quint32(known.size());
    ofRow = std::move(cells.ofRow);
    for (quint32 &number : ofRow) {
        number = numbers[number];
    }
    return true;
}

bool RowGroups::read(const Dataset &table, const QList<ColIndex> &columns, const ValueKey &key,
                     const Progress &progress)
{
    const auto rowCount = size_t(table.rowCount());
    m_ofRow.assign(rowCount, 0);
    quint32 count = rowCount > 0 ? 1 : 0;
    for (int i = 0; i < columns.size(); ++i) {
        NumberedValues values;
        const double from = double(i) / columns.size();
        if (!values.read(table, columns[i], key,
                         progressBetween(progress, from, from + 1.0 / columns.size()))) {
            return false;
        }
        if (count <= 1) {
            m_ofRow = std::move(values.ofRow);
            count = values.count;
            continue;
        }
        // Pairs of the group so far and the value.
        std::unordered_map<quint64, quint32> known;
        known.reserve(count);
        for (size_t row = 0; row < rowCount; ++row) {
            if (row % progressInterval == 0 && !reportProgress(progress, from)) {
                return false;
            }
            const quint64 pair = (quint64(m_ofRow[row]) << 32) | values.ofRow[row];
            m_ofRow[row] = known.emplace(pair, quint32(known.size())).first->second;
        }
        count = quint32(known.size());
    }
    list(count);
    return true;
}

void RowGroups::merge(const std::vector<quint32> &merged, quint32 count)
{
    for (quint32 &group : m_ofRow) {
        group = merged[group];
    }
    list(count);
}

void RowGroups::list(quint32 count)
{
    m_starts.assign(size_t(count) + 1, 0);
    for (const quint32 group : m_ofRow) {
        ++m_starts[group + 1];
    }
    for (size_t group = 1; group < m_starts.size(); ++group) {
        m_starts[group] += m_starts[group - 1];
    }
    m_rows.resize(m_ofRow.size());
    std::vector<quint32> places(m_starts);
    for (size_t row = 0; row < m_ofRow.size(); ++row) {
        m_rows[places[m_ofRow[row]]++] = qint32(row);
    }
}
