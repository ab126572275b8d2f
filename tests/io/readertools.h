#pragma once

#include "dataset.h"
#include "inputoptions.h"
#include "inputreader.h"
#include "messages.h"

#include <QFile>
#include <QTemporaryDir>

/// What a reader made of some bytes.
struct ReadResult
{
    Dataset table;
    Messages messages;

    /// The names, if there is a header, and the rows: values joined with "|".
    QStringList lines() const
    {
        QStringList lines;
        if (table.hasHeader()) {
            lines.append(table.header().join(QLatin1Char('|')));
        }
        for (RowIndex row(0); row < RowIndex(table.rowCount()); ++row) {
            QStringList values;
            for (ColIndex column(0); column < table.columnCount(); ++column) {
                values.append(table.cell(row, column));
            }
            lines.append(values.join(QLatin1Char('|')));
        }
        return lines;
    }
};

/// Reads bytes from a file with the reader of the options' type.
inline ReadResult readBytes(const QByteArray &bytes, const InputOptions &options,
                            const Progress &progress = Progress())
{
    ReadResult result;
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("input"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("The test's input cannot be written.");
    }
    file.close();
    result.table = readInput(options, path, &result.messages, progress);
    return result;
}

/// Texts one a line; an empty text has none.
inline QStringList linesOf(const char *text)
{
    const QString all = QString::fromUtf8(text);
    return all.isEmpty() ? QStringList() : all.split(QLatin1Char('\n'));
}
