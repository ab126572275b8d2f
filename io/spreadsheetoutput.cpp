#include "spreadsheetoutput.h"

#include "biffrecords.h"
#include "messages.h"
#include "outputoptions.h"
#include "outputwriter.h"
#include "sheetjob.h"
#include "spreadsheetreader.h"
#include "xlswriter.h"
#include "xlsxwriter.h"

#include <QFileInfo>

namespace {

struct SpreadsheetOutput
{
    Q_DECLARE_TR_FUNCTIONS(SpreadsheetOutput)
};

constexpr int longestSheetName = 31;

QString withReason(const QString &text, const QString &reason)
{
    return reason.isEmpty() ? text : text + QLatin1Char('\n') + reason;
}

bool checkSheetName(const QString &name, const QString &path, Messages *messages)
{
    const QString problem = sheetNameProblem(name);
    if (!problem.isEmpty()) {
        messages->fail(unableToAddSheetText(path, QString()) + problem);
    }
    return problem.isEmpty();
}

} // namespace

QString sheetNameProblem(const QString &name)
{
    constexpr ushort firstNone = 0xfffe;
    for (const QChar c : name) {
        if (QStringLiteral("[]:*?/\\").contains(c) || c < QLatin1Char(' ') ||
            c.unicode() >= firstNone || (c.isSurrogate() && !name.isValidUtf16())) {
            return SpreadsheetOutput::tr("\n'%1' is not allowed in Excel sheet names.").arg(c);
        }
    }
    if (name.startsWith(QLatin1Char('\'')) || name.endsWith(QLatin1Char('\''))) {
        return SpreadsheetOutput::tr("\n'%1' is not allowed in Excel sheet names.")
                   .arg(QLatin1Char('\'')) +
               SpreadsheetOutput::tr(" (at their beginning and end)");
    }
    if (name.size() > longestSheetName) {
        return SpreadsheetOutput::tr("\nThe sheet name '%1' is longer than %2 characters.")
            .arg(name, QString::number(longestSheetName));
    }
    if (name.compare(QLatin1String("History"), Qt::CaseInsensitive) == 0) {
        return SpreadsheetOutput::tr("\nThe sheet name '%1' is used by Excel itself.").arg(name);
    }
    return {};
}

QString unableToOpenText(const QString &path, const QString &reason)
{
    return withReason(SpreadsheetOutput::tr("Unable to open/create Excel workbook '%1'.").arg(path),
                      reason);
}

QString unableToSaveText(const QString &path, const QString &reason)
{
    return withReason(
        SpreadsheetOutput::tr("Unable to save to '%1'. If this file is already open, close it and "
                              "click the refresh button in the 'Data' tab.")
            .arg(path),
        reason);
}

QString unableToSaveChangesText(const QString &path, const QString &reason)
{
    return withReason(SpreadsheetOutput::tr("Unable to save changes to '%1'.").arg(path), reason);
}

QString unableToAddSheetText(const QString &path, const QString &reason)
{
    return withReason(SpreadsheetOutput::tr("Unable to add sheet to '%1'.").arg(path), reason);
}

QString sheetWithoutCellsText(const QString &sheet)
{
    return SpreadsheetOutput::tr("'%1' is a sheet that has no cells, such as a chart.").arg(sheet);
}

QString defaultSheetName()
{
    return QStringLiteral("Sheet1");
}

bool changesWorkbook(const OutputOptions &options, const SheetTarget &target)
{
    const bool keepsWorkbook =
        target.keepsWorkbook || options.overwriteSheet || options.writeMode == WriteMode::Append;
    return keepsWorkbook && QFileInfo(target.path).size() > 0;
}

bool checkSpreadsheetOutput(const OutputOptions &options, const Dataset &dataset,
                            Messages *messages)
{
    const OutputContext context;
    const SheetJob job(options, context, dataset);
    const bool isXls = options.fileType == FileType::ExcelXls;
    // Of several files each has only some of the rows.
    return options.multiFile || (job.fits(0, isXls ? Biff::mostRows : mostSheetRows,
                                          isXls ? Biff::mostColumns : mostSheetColumns, messages) &&
                                 checkSheetName(options.worksheet, options.path, messages));
}

WriteResult writeSpreadsheetFile(const OutputOptions &options, const SheetTarget &target,
                                 const OutputContext &context, const Dataset &dataset,
                                 Messages *messages, const Progress &progress)
{
    if (!checkSheetName(target.sheet, target.path, messages)) {
        return WriteResult::Failed;
    }
    SheetJob job(options, context, dataset);
    const WriteResult result = options.fileType == FileType::ExcelXls
                                   ? writeXls(&job, target, messages, progress)
                                   : writeXlsx(&job, target, messages, progress);
    if (result == WriteResult::Written) {
        job.tell(messages);
    }
    return result;
}

QString sheetPath(const QString &path, const QString &sheet)
{
    return path + QLatin1Char('[') + sheet + QLatin1Char(']');
}

bool splitSheetPath(const QString &text, QString *path, QString *sheet)
{
    const int open = text.lastIndexOf(QLatin1Char('['));
    if (open <= 0 || !text.endsWith(QLatin1Char(']'))) {
        *path = text;
        sheet->clear();
        return false;
    }
    *path = text.left(open);
    *sheet = text.mid(open + 1, text.size() - open - 2);
    return true;
}
