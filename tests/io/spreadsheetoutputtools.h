#pragma once

#include "inputoptions.h"
#include "inputreader.h"
#include "outputoptions.h"
#include "outputtesttools.h"
#include "outputwriter.h"

#include <QTemporaryDir>
#include <memory>

/// Writes tables to workbooks of one folder and reads them back.
class SpreadsheetOutputTest
{
public:
    explicit SpreadsheetOutputTest(FileType fileType)
        : type(fileType)
        , path(inFolder(type == FileType::ExcelXls ? "book.xls" : "book.xlsx"))
    {
        options.fileType = type;
        options.path = path;
        context.dateFormats = QStringList{"yyyy-MM-dd", "dd/MM/yyyy", "d.M.yyyy", "d/M/yyyy"};
    }

    QString inFolder(const QString &name) const { return folder.filePath(name); }

    void write(const Dataset &dataset)
    {
        messages.clear();
        writeOutput(options, dataset, context, &messages, {});
    }
    void writeText(const QString &rows, const QString &sheet = QString())
    {
        options.worksheet = sheet;
        write(OutputTest::tableOf({}, {{rows}}));
    }

    Dataset read(const QString &sheet = QString(), bool header = true, const QString &from = {})
    {
        InputOptions input;
        input.fileType = type;
        input.worksheet = sheet;
        input.header = header;
        input.ignoreEmptyRows = false;
        readMessages.clear();
        return readInput(input, from.isEmpty() ? path : from, &readMessages, {});
    }
    /// Rows parted by ";", cells by "|".
    QString text(const QString &sheet = QString(), const QString &from = {})
    {
        const Dataset table = read(sheet, false, from);
        QStringList rows;
        for (RowIndex row(0); row < RowIndex(table.rowCount()); ++row) {
            QStringList cells;
            for (ColIndex column(0); column < table.columnCount(); ++column) {
                cells.append(table.cell(row, column));
            }
            rows.append(cells.join("|"));
        }
        return readMessages.failed ? readMessages.warnings.join(";") : rows.join(";");
    }
    QString warnings() const { return messages.warnings.join("\n").replace(path, "%1"); }

    FileType type;
    QTemporaryDir folder;
    QString path;
    OutputOptions options;
    OutputContext context;
    Messages messages;
    Messages readMessages;
};
