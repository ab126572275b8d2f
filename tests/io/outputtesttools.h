#pragma once

#include "dataset.h"

#include <QDir>
#include <QFile>
#include <QList>
#include <QStringList>

/// What the tests of writing share: small tables, and whole files as bytes.
namespace OutputTest {

using Rows = QList<QStringList>;

inline Dataset tableOf(const QStringList &header, const Rows &rows)
{
    Dataset dataset;
    const int columns = !header.isEmpty() ? header.size() : rows.value(0).size();
    dataset.setColumnCount(ColIndex(columns));
    dataset.resize(rows.size(), columns);
    for (int row = 0; row < rows.size(); ++row) {
        for (int column = 0; column < columns; ++column) {
            dataset.setCell(RowIndex(row), ColIndex(column), rows.at(row).value(column));
        }
    }
    if (!header.isEmpty()) {
        dataset.setHeader(header);
    }
    return dataset;
}

inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<no file>");
}

inline void makeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("the test cannot write its own files");
    }
}

/// Names of everything in a folder, forgotten temporary files included.
inline QStringList namesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                  QDir::NoDotAndDotDot);
}

} // namespace OutputTest
