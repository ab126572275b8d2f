#pragma once

#include "dataset.h"
#include "progress.h"

#include <algorithm>
#include <string_view>
#include <vector>

/// Hands a table on in blocks of some rows, row by row, as (cells, first row, row count). The
/// cells of a block are looked up at once, so that the memory of some is fetched while others are
/// written. Answers false when the progress or the receiver asked to stop.
template <class WriteBlock>
bool forEachCellBlock(const Dataset &dataset, const Progress &progress, WriteBlock &&writeBlock)
{
    constexpr int cellsAtOnce = 2048;
    const int columns = dataset.columnCount().value();
    const int rows = dataset.rowCount();
    if (columns == 0) {
        return true;
    }
    std::vector<ColumnReader> readers;
    readers.reserve(size_t(columns));
    for (ColIndex column(0); column < ColIndex(columns); ++column) {
        readers.push_back(dataset.columnReader(column));
    }
    const int rowsAtOnce = qBound(1, cellsAtOnce / columns, progressInterval);
    std::vector<std::string_view> cells(size_t(rowsAtOnce) * size_t(columns));

    for (int row = 0; row < rows;) {
        const int sinceReport = row % progressInterval;
        if (sinceReport == 0 && !reportProgress(progress, double(row) / rows)) {
            return false;
        }
        const int count = std::min({rows - row, rowsAtOnce, progressInterval - sinceReport});
        for (int column = 0; column < columns; ++column) {
            const ColumnReader &reader = readers[size_t(column)];
            std::string_view *cell = &cells[size_t(column)];
            for (int i = 0; i < count; ++i, cell += columns) {
                *cell = reader.utf8(row + i);
                __builtin_prefetch(cell->data());
            }
        }
        if (!writeBlock(cells.data(), row, count)) {
            return false;
        }
        row += count;
    }
    return true;
}
