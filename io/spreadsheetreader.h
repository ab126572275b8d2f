#pragma once

#include "filetypes.h"
#include "progress.h"

#include <QString>
#include <QStringList>
#include <memory>
#include <string_view>

/// The largest sheet that any workbook has.
constexpr int mostSheetRows = 1048576;
constexpr int mostSheetColumns = 16384;

/// Takes what a sheet holds, in the order of the file. Rows and columns count from 0 and are below
/// the limits above.
class SheetSink
{
public:
    virtual ~SheetSink() = default;

    virtual void hideColumns(int first, int last) = 0;
    /// The values that follow are of this row. A row may be given more than once. False: the order
    /// cannot be used, and the reader ends.
    virtual bool startRow(int row, bool hidden) = 0;
    /// Never called with an empty value. `lasting` when the bytes stay until the sheet is read.
    virtual void add(int column, std::string_view utf8, bool lasting) = 0;
    /// A formula whose result the file does not hold.
    virtual void addUnknownResult() = 0;
};

enum class SheetEnd { Complete, Failed, Stopped };

/// An open workbook of one of the two formats.
class SpreadsheetReader
{
public:
    virtual ~SpreadsheetReader() = default;

    virtual FileType fileType() const = 0;
    /// The sheets of cells, in the order of the workbook; chart sheets and the like are left out.
    virtual QStringList sheetNames() const = 0;
    /// Hands over the cells of a sheet, from the start on each call. Stopped when the sink refuses
    /// a row or the progress asks for it; an error says why it failed.
    virtual SheetEnd readSheet(int sheet, SheetSink *sink, const Progress &progress,
                               QString *error) = 0;
};

/// Opens a workbook by what the file holds, whatever its name. Null with an error that says what
/// the file is instead.
std::unique_ptr<SpreadsheetReader> openSpreadsheet(const QString &path, QString *error);

/// "B7" for row 6, column 1.
QString cellName(int row, int column);

/// Told when a cell refers to a shared text that the workbook does not have.
QString missingTextText(int row, int column, const QString &number, bool hasTexts);
