#pragma once

#include "progress.h"
#include "textoutput.h"

#include <QString>

class Dataset;
struct Messages;
struct OutputContext;
struct OutputOptions;

/// Where a table goes: a sheet of a workbook.
struct SheetTarget
{
    /// Absolute.
    QString path;
    /// Empty: the first sheet of the workbook.
    QString sheet;
    /// The workbook was written in this run already, so that its other sheets stay whatever the
    /// options say.
    bool keepsWorkbook = false;
};

/// Fails when the table cannot be written as a spreadsheet with these options at all.
bool checkSpreadsheetOutput(const OutputOptions &options, const Dataset &dataset,
                            Messages *messages);

/// Writes a table to a sheet of a new or an existing workbook. Leaves the old file untouched unless
/// all went well.
WriteResult writeSpreadsheetFile(const OutputOptions &options, const SheetTarget &target,
                                 const OutputContext &context, const Dataset &dataset,
                                 Messages *messages, const Progress &progress);

/// "Unable to open/create Excel workbook '%1'.", with the reason when there is one.
QString unableToOpenText(const QString &path, const QString &reason);
/// "Unable to save to '%1'. If this file is already open, ...", with the reason.
QString unableToSaveText(const QString &path, const QString &reason);
/// "Unable to save changes to '%1'.", with the reason.
QString unableToSaveChangesText(const QString &path, const QString &reason);
/// "Unable to add sheet to '%1'.", with the reason.
QString unableToAddSheetText(const QString &path, const QString &reason);
QString sheetWithoutCellsText(const QString &sheet);
QString defaultSheetName();
/// Why a name cannot be that of a sheet, on a line of its own; empty when it can.
QString sheetNameProblem(const QString &name);
/// Whether a sheet of the workbook that is there is changed, or one added, instead of a new
/// workbook written.
bool changesWorkbook(const OutputOptions &options, const SheetTarget &target);

/// "file.xlsx[Sheet]"
QString sheetPath(const QString &path, const QString &sheet);
/// Takes "file.xlsx[Sheet]" apart; false when no sheet is named, and `path` is all of it.
bool splitSheetPath(const QString &text, QString *path, QString *sheet);
