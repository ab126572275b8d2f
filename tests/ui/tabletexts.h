#pragma once

#include "dataset.h"

#include <QStringList>

/// "A|B;1|x": columns between bars, rows between semicolons, the first is the header.
inline Dataset parsed(const QString &text)
{
    const QStringList rows = text.split(';');
    const int width = rows.first().count('|') + 1;
    Dataset table;
    table.setColumnCount(ColIndex(width));
    table.resize(rows.size() - 1, width);
    table.setHeader(rows.first().split('|'));
    for (int row = 1; row < rows.size(); ++row) {
        const QStringList cells = rows[row].split('|');
        for (int column = 0; column < cells.size(); ++column) {
            table.setCell(RowIndex(row - 1), ColIndex(column), cells[column]);
        }
    }
    return table;
}

/// A table that repeats the rows of a small one.
inline Dataset repeated(const Dataset &table, int rows)
{
    RowSelection selection;
    selection.resize(size_t(rows));
    for (int row = 0; row < rows; ++row) {
        selection[size_t(row)] = row % table.rowCount();
    }
    return table.selectRows(std::move(selection));
}
