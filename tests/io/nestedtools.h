#pragma once

#include "readertools.h"

/// A table as text: the names, then the rows, cells parted by "|" and rows by line feeds.
inline QString tableText(const Dataset &dataset)
{
    QStringList lines;
    for (RowIndex row(-1); row < RowIndex(dataset.rowCount()); ++row) {
        QStringList cells;
        for (ColIndex column(0); column < dataset.columnCount(); ++column) {
            cells.append(row < RowIndex(0) ? dataset.columnName(column)
                                           : dataset.cell(row, column));
        }
        lines.append(cells.join(QLatin1Char('|')));
    }
    return lines.join(QLatin1Char('\n'));
}

/// Reads bytes; the messages are added to those given.
inline Dataset readBytes(const QByteArray &bytes, const InputOptions &options, Messages *messages,
                         const Progress &progress = Progress())
{
    const ReadResult result = readBytes(bytes, options, progress);
    messages->information += result.messages.information;
    messages->warnings += result.messages.warnings;
    messages->failed = messages->failed || result.messages.failed;
    return result.table;
}
