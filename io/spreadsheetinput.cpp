#include "spreadsheetinput.h"

#include "inputoptions.h"
#include "inputreader.h"
#include "sheettable.h"
#include "spreadsheetreader.h"
#include "texts.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace {

struct SpreadsheetInput
{
    Q_DECLARE_TR_FUNCTIONS(SpreadsheetInput)
};

QString withReason(const QString &text, const QString &reason)
{
    return reason.isEmpty() ? text : text + SpreadsheetInput::tr("\nError: %1").arg(reason);
}

bool isThere(const QString &path, Messages *messages)
{
    if (QFileInfo::exists(path)) {
        return true;
    }
    messages->fail(SpreadsheetInput::tr("File '%1' not found.").arg(path));
    return false;
}

QString nothingToImportText()
{
    return SpreadsheetInput::tr(
        "Can't import any sheets. The spreadsheet may be empty or the sheets might be too large to "
        "import - check you don't have thousands of empty rows or columns.");
}

/// The number of the sheet to read, -1 with a failure.
int chosenSheet(const SpreadsheetReader &reader, const QString &worksheet, Messages *messages)
{
    const QStringList names = reader.sheetNames();
    if (names.isEmpty()) {
        messages->fail(nothingToImportText());
        return -1;
    }
    if (worksheet.isEmpty()) {
        return 0;
    }
    int sheet = names.indexOf(worksheet);
    if (sheet < 0) {
        // Workbooks do not tell sheets apart by case.
        for (int i = 0; i < names.size() && sheet < 0; ++i) {
            sheet = names.at(i).compare(worksheet, Qt::CaseInsensitive) == 0 ? i : -1;
        }
    }
    if (sheet < 0) {
        messages->fail(SpreadsheetInput::tr("Sheet '%1' not found.").arg(worksheet));
    }
    return sheet;
}

Dataset readSheet(SpreadsheetReader *reader, int sheet, const InputOptions &options,
                  const QString &path, Messages *messages, const Progress &progress)
{
    for (const SheetTable::Order order : {SheetTable::Order::AsRead, SheetTable::Order::Sorted}) {
        SheetTable table(options, order);
        QString error;
        const SheetEnd end = reader->readSheet(sheet, &table, progress, &error);
        if (table.isOutOfOrder()) {
            continue;
        }
        switch (end) {
        case SheetEnd::Complete:
            return table.finish(messages);
        case SheetEnd::Stopped:
            return {};
        case SheetEnd::Failed:
            messages->fail(withReason(
                SpreadsheetInput::tr("Unable to open Excel workbook '%1'.").arg(path), error));
            return {};
        }
    }
    return {};
}

} // namespace

Dataset readSpreadsheet(const InputOptions &options, const QString &path, Messages *messages,
                        const Progress &progress)
{
    if (path.isEmpty()) {
        messages->fail(noInputFileText());
        return {};
    }
    if (!isThere(path, messages)) {
        return {};
    }
    QString error;
    const std::unique_ptr<SpreadsheetReader> reader = openSpreadsheet(path, &error);
    if (!reader) {
        messages->fail(withReason(
            SpreadsheetInput::tr("Unable to open Excel document '%1'.").arg(path), error));
        return {};
    }
    if (reader->fileType() != options.fileType) {
        messages->note(
            SpreadsheetInput::tr("The file is of type '%1', not '%2', and was read as "
                                 "such.")
                .arg(fileTypeLabel(reader->fileType()), fileTypeLabel(options.fileType)));
    }
    const int sheet = chosenSheet(*reader, options.worksheet, messages);
    return sheet < 0 ? Dataset()
                     : readSheet(reader.get(), sheet, options, path, messages, progress);
}

QString SheetChoice::label() const
{
    return SpreadsheetInput::tr("%1 (%2 cols x %3 rows)")
        .arg(name, Texts::count(columns), Texts::count(rows));
}

QList<SheetChoice> sheetChoices(const QString &path, Messages *messages, const Progress &progress)
{
    if (!isThere(path, messages)) {
        return {};
    }
    QString error;
    const std::unique_ptr<SpreadsheetReader> reader = openSpreadsheet(path, &error);
    if (!reader) {
        messages->fail(withReason(
            SpreadsheetInput::tr("Unable to load Excel workbook '%1' information.").arg(path),
            error));
        return {};
    }
    QList<SheetChoice> choices;
    bool anyUsed = false;
    const QStringList names = reader->sheetNames();
    for (int sheet = 0; sheet < names.size(); ++sheet) {
        SheetMeasure measure;
        const SheetEnd end = reader->readSheet(sheet, &measure, progress, &error);
        if (end == SheetEnd::Stopped) {
            return {};
        }
        if (end == SheetEnd::Failed) {
            messages->fail(withReason(
                SpreadsheetInput::tr("Unable to get sheets from '%1'.").arg(path), error));
            return {};
        }
        anyUsed = anyUsed || measure.rows() > 0;
        choices.append({names.at(sheet), measure.columns(), measure.rows()});
    }
    if (!anyUsed) {
        messages->fail(nothingToImportText());
        return {};
    }
    return choices;
}
