#include "xlswriter.h"

#include "biffnewrecords.h"
#include "biffrecords.h"
#include "messages.h"
#include "outputoptions.h"
#include "safefile.h"
#include "sheetjob.h"
#include "spreadsheetoutput.h"
#include "xlsrows.h"
#include "xlssheetoutline.h"
#include "xlsworkbook.h"
#include "xlsxtemplate.h"

namespace {

/// Writes one workbook.
class XlsWriter
{
public:
    XlsWriter(SheetJob *job, const SheetTarget &target, Messages *messages,
              const Progress &progress)
        : m_job(job)
        , m_target(target)
        , m_messages(messages)
        , m_progress(progress)
    {
    }

    WriteResult writeNew();
    WriteResult change();

private:
    WriteResult fail(const QString &text)
    {
        m_messages->fail(text);
        return WriteResult::Failed;
    }
    int addSheet(bool isSelected);
    WriteResult writeSheet(int sheet, const XlsSheetOutline &outline, bool replacesCells,
                           qint64 firstRow);

    SheetJob *m_job;
    const SheetTarget &m_target;
    Messages *m_messages;
    const Progress &m_progress;
    std::unique_ptr<XlsWorkbook> m_workbook;
    SafeFile m_file;
};

int XlsWriter::addSheet(bool isSelected)
{
    return m_workbook->addSheet(m_target.sheet.isEmpty() ? defaultSheetName() : m_target.sheet,
                                newXlsSheet(m_job->hasNames(), isSelected));
}

WriteResult XlsWriter::writeSheet(int sheet, const XlsSheetOutline &outline, bool replacesCells,
                                  qint64 firstRow)
{
    if (!m_file.open(m_target.path, SafeFile::Start::Empty)) {
        return fail(unableToOpenText(m_target.path, m_file.error()));
    }
    XlsWorkbook::Content content;
    XlsRows rows(m_job, m_workbook.get(), firstRow, outline.rowHeight(), &content);
    QString error;
    if (!rows.write(m_progress, &error)) {
        return error.isEmpty() ? WriteResult::Stopped
                               : fail(unableToSaveText(m_target.path, error));
    }
    XlsSheetOutline::Parts parts =
        outline.parts(replacesCells, firstRow, m_job->sheetRows(), m_job->columnCount(),
                      xlsColumnRecords(m_job->columnWidths()));
    content.beforeCells = std::move(parts.beforeCells);
    content.betweenThem = std::move(parts.betweenThem);
    content.afterLinks = std::move(parts.afterLinks);
    m_workbook->setContent(sheet, &content);
    bool isStopped = false;
    const bool isWritten = m_workbook->write(
        &m_file,
        [&] {
            isStopped = !reportProgress(m_progress, 1);
            return !isStopped;
        },
        &error);
    if (isStopped) {
        return WriteResult::Stopped;
    }
    if (!error.isEmpty()) {
        return fail(unableToSaveChangesText(m_target.path, error));
    }
    if (!isWritten || !m_file.commit()) {
        return fail(unableToSaveText(m_target.path, m_file.error()));
    }
    return WriteResult::Written;
}

WriteResult XlsWriter::writeNew()
{
    if (!m_job->fits(0, Biff::mostRows, Biff::mostColumns, m_messages) ||
        (m_job->options().excelUseStyleTemplate && !refuseTemplate(*m_job, m_target, m_messages))) {
        return WriteResult::Failed;
    }
    m_workbook = XlsWorkbook::make();
    const int sheet = addSheet(true);
    XlsSheetOutline outline;
    QString error;
    const bool isSound = outline.read(m_workbook->records(sheet), &error);
    return isSound ? writeSheet(sheet, outline, true, 0)
                   : fail(unableToSaveText(m_target.path, error));
}

WriteResult XlsWriter::change()
{
    const OutputOptions &options = m_job->options();
    QString error;
    m_workbook = XlsWorkbook::open(m_target.path, &error);
    if (!m_workbook) {
        return fail(unableToOpenText(m_target.path, error));
    }
    m_job->setDateSystem(m_workbook->dateSystem());
    if (options.excelUseStyleTemplate && !refuseTemplate(*m_job, m_target, m_messages)) {
        return WriteResult::Failed;
    }
    int sheet = m_workbook->sheetNumber(m_target.sheet);
    const bool isNew = sheet < 0;
    if (isNew && !m_target.sheet.isEmpty() && m_workbook->hasSheet(m_target.sheet)) {
        return fail(unableToAddSheetText(m_target.path, sheetWithoutCellsText(m_target.sheet)));
    }
    const bool extends = !isNew && options.writeMode == WriteMode::Append;
    XlsSheetOutline outline;
    if (!isNew && !outline.read(m_workbook->records(sheet), &error)) {
        return fail(unableToOpenText(m_target.path, error));
    }
    const qint64 firstRow = extends ? outline.lastRow() : 0;
    if (firstRow > 0 && options.headerOnlyIfEmpty) {
        m_job->leaveOutNames();
    }
    if (!m_job->fits(firstRow, Biff::mostRows, Biff::mostColumns, m_messages)) {
        return WriteResult::Failed;
    }
    if (isNew) {
        sheet = addSheet(false);
        if (!outline.read(m_workbook->records(sheet), &error)) {
            return fail(unableToOpenText(m_target.path, error));
        }
    }
    return writeSheet(sheet, outline, !extends, firstRow);
}

} // namespace

WriteResult writeXls(SheetJob *job, const SheetTarget &target, Messages *messages,
                     const Progress &progress)
{
    XlsWriter writer(job, target, messages, progress);
    return changesWorkbook(job->options(), target) ? writer.change() : writer.writeNew();
}
