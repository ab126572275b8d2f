#include "outputfile.h"

#include "messages.h"
#include "outputoptions.h"
#include "outputwriter.h"
#include "spreadsheetoutput.h"
#include "textoutput.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("OutputFile", text);
}

} // namespace

OutputFile::OutputFile(const OutputOptions &options, const OutputContext &context,
                       Messages *messages)
    : m_options(options)
    , m_context(context)
    , m_messages(messages)
{
}

bool OutputFile::canWrite(const Dataset &dataset)
{
    if (isSpreadsheet(m_options.fileType)) {
        return checkSpreadsheetOutput(m_options, dataset, m_messages);
    }
    if (!isTextOutput(m_options.fileType)) {
        m_messages->fail(
            translated(QT_TRANSLATE_NOOP("OutputFile", "Files of type '%1' cannot be written."))
                .arg(fileTypeLabel(m_options.fileType)));
        return false;
    }
    return checkTextOutput(m_options, dataset, m_messages);
}

FileOutcome OutputFile::write(const QString &path, const QString &sheet, const Dataset &dataset,
                              const Progress &progress)
{
    const bool isAgain = m_written.contains(path);
    if (!isAgain && !isAllowed(path)) {
        return FileOutcome::NotWritten;
    }
    if (!isAgain) {
        noteExtension(path);
    }
    if (!m_lineEndingsNoted) {
        m_lineEndingsNoted = true;
        noteLineEndings(m_options, m_messages);
    }
    if (!canWrite(dataset) || !isAllowedForInput(path)) {
        return FileOutcome::NotWritten;
    }
    const WriteResult result =
        isSpreadsheet(m_options.fileType)
            ? writeSpreadsheetFile(m_options, {path, sheet, isAgain}, m_context, dataset,
                                   m_messages, progress)
            : writeTextFile(m_options, path, m_context.name, dataset, m_messages, progress);
    switch (result) {
    case WriteResult::Written:
        m_written.insert(path);
        m_messages->note(translated(QT_TRANSLATE_NOOP("OutputFile", "Written to '%1'"))
                             .arg(sheet.isEmpty() ? path : sheetPath(path, sheet)));
        return FileOutcome::Written;
    case WriteResult::Stopped:
        return FileOutcome::Stopped;
    case WriteResult::Failed:
        break;
    }
    return FileOutcome::NotWritten;
}

bool OutputFile::isAllowed(const QString &path)
{
    if (m_options.writeMode == WriteMode::New && QFileInfo::exists(path)) {
        m_messages->warn(
            translated(QT_TRANSLATE_NOOP("OutputFile", "Write mode='%1' and '%2' already exists"))
                .arg(writeModeLabel(m_options.writeMode), path));
        return false;
    }
    if (isBlockedExtension(path, m_context)) {
        m_messages->warn(
            translated(QT_TRANSLATE_NOOP("OutputFile", "The extension for this file is blocked in "
                                                       "'Preferences>Output Extensions':\n%1"))
                .arg(path));
        return false;
    }
    return true;
}

/// A file that is read and written by one document: to replace it is what the user asked for, but
/// appending would make it grow with every run.
bool OutputFile::isAllowedForInput(const QString &path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    if (canonical.isEmpty() || !m_context.inputPaths.contains(canonical)) {
        return true;
    }
    if (m_options.writeMode == WriteMode::Append) {
        m_messages->fail(
            translated(QT_TRANSLATE_NOOP("OutputFile",
                                         "'%1' is also an input of this document and cannot be "
                                         "appended to, nothing written."))
                .arg(path));
        return false;
    }
    m_messages->note(
        translated(QT_TRANSLATE_NOOP("OutputFile", "'%1' is also an input of this document. It is "
                                                   "replaced now that it has been read."))
            .arg(path));
    return true;
}

void OutputFile::noteExtension(const QString &path)
{
    const QString extension = fileExtension(path);
    if (!extension.isEmpty() && fileTypeForExtension(extension) != m_options.fileType) {
        m_messages->note(
            translated(
                QT_TRANSLATE_NOOP("OutputFile", "'%1' extension is '%2' but file type is %3."))
                .arg(path, extension, fileTypeLabel(m_options.fileType)));
    }
}

void noteLineEndings(const OutputOptions &options, Messages *messages)
{
    if (options.fileType == FileType::DelimitedText &&
        options.lineEnding == LineEnding::Automatic) {
        messages->note(
            translated(QT_TRANSLATE_NOOP("OutputFile",
                                         "Line endings=Automatic sets line endings as %1. Set "
                                         "'Line endings' option to change.\n"))
                .arg(lineEndingLabel(options.lineEnding, true)));
    }
}

QString fileExtension(const QString &path)
{
    return QFileInfo(path).suffix();
}

bool isBlockedExtension(const QString &path, const OutputContext &context)
{
    return context.blockedExtensions.contains(fileExtension(path).toLower());
}
