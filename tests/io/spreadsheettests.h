#pragma once

#include "inputoptions.h"
#include "inputreader.h"

#include <QList>
#include <QStringList>

/// The table of a workbook as rows of texts parted by "|", the header first when there is one.
inline QStringList readWorkbook(const QString &path, const InputOptions &options,
                                Messages *messages, const Progress &progress = Progress())
{
    const Dataset table = readInput(options, path, messages, progress);
    QStringList rows;
    if (table.hasHeader()) {
        rows.append(table.header().join("|"));
    }
    for (RowIndex row(0); row < RowIndex(table.rowCount()); ++row) {
        QStringList cells;
        for (ColIndex column(0); column < table.columnCount(); ++column) {
            cells.append(table.cell(row, column));
        }
        rows.append(cells.join("|"));
    }
    return rows;
}

/// Without a header.
inline InputOptions spreadsheetOptions(FileType type)
{
    InputOptions options;
    options.fileType = type;
    options.header = false;
    return options;
}
