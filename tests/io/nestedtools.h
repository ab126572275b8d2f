#pragma once

#include "dataset.h"
#include "inputoptions.h"
#include "inputreader.h"
#include "messages.h"

#include <QFile>
#include <QTemporaryDir>

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

/// Reads a file of these bytes.
inline Dataset readBytes(const QByteArray &bytes, InputOptions options, Messages *messages,
                         const Progress &progress = Progress())
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("in.txt"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        messages->fail(QStringLiteral("cannot write the test's file"));
        return {};
    }
    file.close();
    return readInput(options, path, messages, progress);
}
