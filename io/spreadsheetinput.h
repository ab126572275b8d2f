#pragma once

#include "dataset.h"
#include "messages.h"
#include "progress.h"

#include <QList>
#include <QString>

struct InputOptions;

/// Reads one sheet of a workbook, XLSX or XLS, into a table.
Dataset readSpreadsheet(const InputOptions &options, const QString &path, Messages *messages,
                        const Progress &progress);

/// A sheet to choose from.
struct SheetChoice
{
    QString name;
    /// What the sheet uses: up to its last column and row that hold a value.
    int columns = 0;
    int rows = 0;

    /// "Sales (12 cols x 3,400 rows)"
    QString label() const;
};

/// The sheets of a workbook with their sizes, for which all of it is read. Empty with a failure in
/// the messages when there is none to choose, empty without one when the progress asked to stop.
QList<SheetChoice> sheetChoices(const QString &path, Messages *messages, const Progress &progress);
