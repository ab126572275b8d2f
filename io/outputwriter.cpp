#include "outputwriter.h"

#include "multifileoutput.h"
#include "outputfile.h"
#include "outputoptions.h"
#include "textoutput.h"

#include <QCoreApplication>
#include <QDir>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("OutputWriter", text);
}

void writeClipboard(OutputOptions options, const Dataset &dataset, const OutputContext &context,
                    Messages *messages, const Progress &progress)
{
    if (!context.setClipboard) {
        messages->fail(
            translated(QT_TRANSLATE_NOOP("OutputWriter", "Clipboard is not available.")));
        return;
    }
    noteLineEndings(options, messages);
    if (isSpreadsheet(options.fileType)) {
        // Cells of a spreadsheet are pasted from text with tabs between them.
        options.fileType = FileType::DelimitedText;
        options.delimiter = Delimiter::Tab;
        options.quoting = OutputQuoting::AsNeeded;
    }
    options.encoding = QStringLiteral("UTF-8"); // a text on the clipboard has none
    OutputFile file(options, context, messages);
    QString text;
    if (!file.canWrite(dataset) || makeText(options, context.name, dataset, &text, messages,
                                            progress) != WriteResult::Written) {
        return;
    }
    if (context.setClipboard(text)) {
        messages->note(translated(QT_TRANSLATE_NOOP("OutputWriter", "Written to the clipboard")));
    } else {
        messages->fail(
            translated(QT_TRANSLATE_NOOP("OutputWriter", "Clipboard is not available.")));
    }
}

void writeSingleFile(const OutputOptions &options, const Dataset &dataset,
                     const OutputContext &context, Messages *messages, const Progress &progress)
{
    if (options.path.isEmpty()) {
        messages->fail(
            translated(QT_TRANSLATE_NOOP("OutputWriter", "No file name set, nothing written.")));
        return;
    }
    const QString path = resolvedPath(options.path, context.documentFolder);
    if (path.isEmpty()) {
        messages->warn(translated(QT_TRANSLATE_NOOP(
                                      "OutputWriter",
                                      "Relative file path for '%1', but .transform not saved for "
                                      "it to be relative to."))
                           .arg(options.path));
        return;
    }
    if (options.path.endsWith(QLatin1Char('/'))) {
        messages->fail(
            translated(QT_TRANSLATE_NOOP("OutputWriter", "No file name in '%1', nothing written."))
                .arg(options.path));
        return;
    }
    OutputFile file(options, context, messages);
    const QString sheet = isSpreadsheet(options.fileType) ? options.worksheet : QString();
    file.write(path, sheet, dataset, progress);
}

} // namespace

void writeOutput(const OutputOptions &options, const Dataset &dataset, const OutputContext &context,
                 Messages *messages, const Progress &progress)
{
    if (options.medium == Medium::Clipboard) {
        writeClipboard(options, dataset, context, messages, progress);
    } else if (options.writeMode == WriteMode::Disabled) {
        messages->note(translated(QT_TRANSLATE_NOOP("OutputWriter", "Write mode='%1'"))
                           .arg(writeModeLabel(options.writeMode)));
    } else if (options.multiFile) {
        writeMultiFile(options, dataset, context, messages, progress);
    } else {
        writeSingleFile(options, dataset, context, messages, progress);
    }
}

QString resolvedPath(const QString &path, const QString &documentFolder)
{
    // Not QDir::isRelativePath(), for which a path that begins with a colon is absolute.
    if (path.startsWith(QLatin1Char('/'))) {
        return QDir::cleanPath(path);
    }
    if (path.isEmpty() || documentFolder.isEmpty()) {
        return QString();
    }
    return QDir::cleanPath(QDir(documentFolder).absolutePath() + QLatin1Char('/') + path);
}
