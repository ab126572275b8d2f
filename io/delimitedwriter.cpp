#include "delimitedwriter.h"

#include "dataset.h"
#include "delimitedlines.h"
#include "messages.h"
#include "outputoptions.h"
#include "safefile.h"
#include "textencoder.h"
#include "texts.h"
#include "utf8.h"

#include <QCoreApplication>
#include <string>

namespace {

// What a text object can surely hold.
constexpr size_t largestText = 1000000000;

QString translated(const char *text)
{
    return QCoreApplication::translate("DelimitedWriter", text);
}

DelimitedFormat formatOf(const OutputOptions &options)
{
    DelimitedFormat format;
    format.delimiter = delimiterText(options.delimiter, options.customDelimiter);
    format.lineEnding = lineEndingText(options.lineEnding);
    format.quoting = options.quoting;
    return format;
}

void tellWhatWasReplaced(const DelimitedLines &lines, const OutputCodec &codec, Messages *messages)
{
    if (lines.replacedValues() > 0) {
        messages->warn(
            translated(
                QT_TRANSLATE_NOOP(
                    "DelimitedWriter",
                    "Delimiter, Line Feed or Carriage Return characters were found within %1 "
                    "unquoted "
                    "data value(s). These have been replaced with '%2'. You may want to use a "
                    "'Replace' transform to replace these characters or output the file with "
                    "'Quoting' set to '%3'."))
                .arg(Texts::count(lines.replacedValues()), QString(lines.replacement()),
                     outputQuotingLabel(OutputQuoting::AsNeeded)));
    }
    if (lines.unencodableValues() > 0) {
        messages->warn(
            translated(
                QT_TRANSLATE_NOOP("DelimitedWriter",
                                  "%1 value(s) contain characters that encoding '%2' cannot hold."))
                .arg(Texts::count(lines.unencodableValues()), codec.name()));
    }
}

bool endsWithLineEnd(const SafeFile &file, const OutputCodec &codec)
{
    for (const char c : {'\n', '\r', '\x1e'}) {
        const QByteArray lineEnd = codec.encoded(QString(QLatin1Char(c)));
        if (!lineEnd.isEmpty() && file.oldTail(lineEnd.size()) == lineEnd) {
            return true;
        }
    }
    return false;
}

/// Writes what has to stand between the old content and the first new line.
bool begin(const OutputOptions &options, const OutputCodec &codec, bool isEmpty, bool hasLines,
           SafeFile *file)
{
    QByteArray first;
    if (file->oldSize() == 0) {
        first = options.byteOrderMark ? codec.byteOrderMark() : QByteArray();
    } else if (!isEmpty && hasLines && !endsWithLineEnd(*file, codec)) {
        first = codec.encoded(lineEndingText(options.lineEnding));
    }
    return file->write(first.constData(), first.size());
}

} // namespace

QString delimitedTextProblem(const OutputOptions &options)
{
    const OutputCodec codec(options.encoding);
    if (!codec.isKnown()) {
        return translated(QT_TRANSLATE_NOOP("DelimitedWriter",
                                            "Encoding '%1' is not known, nothing written."))
            .arg(codec.name());
    }
    const DelimitedFormat format = formatOf(options);
    if (!codec.holds(format.delimiter)) {
        return translated(QT_TRANSLATE_NOOP(
                              "DelimitedWriter",
                              "Encoding '%1' cannot hold the delimiter '%2', nothing written."))
            .arg(codec.name(), format.delimiter);
    }
    if (!codec.holds(format.lineEnding + QLatin1Char('"'))) {
        return translated(QT_TRANSLATE_NOOP(
                              "DelimitedWriter",
                              "Encoding '%1' cannot hold the line endings '%2', nothing written."))
            .arg(codec.name(), lineEndingLabel(options.lineEnding, true));
    }
    return QString();
}

WriteResult writeDelimitedFile(const OutputOptions &options, const QString &path,
                               const Dataset &dataset, Messages *messages, const Progress &progress)
{
    const QString problem = delimitedTextProblem(options);
    if (!problem.isEmpty()) {
        messages->fail(problem);
        return WriteResult::Failed;
    }
    const OutputCodec codec(options.encoding);
    const bool appends = options.writeMode == WriteMode::Append;
    SafeFile file;
    const auto failed = [&] {
        messages->fail(file.error());
        return WriteResult::Failed;
    };
    if (!file.open(path, appends ? SafeFile::Start::OldContent : SafeFile::Start::Empty)) {
        return failed();
    }
    const QByteArray mark = codec.byteOrderMark();
    const bool isEmpty =
        file.oldSize() == 0 || (file.oldSize() == mark.size() && file.oldHead(mark.size()) == mark);
    const bool withHeader = options.writeHeader && dataset.hasHeader() &&
                            (!appends || !options.headerOnlyIfEmpty || isEmpty);
    const bool hasLines = withHeader || (dataset.hasRows() && dataset.hasColumns());
    if (!begin(options, codec, isEmpty, hasLines, &file)) {
        return failed();
    }

    TextEncoder out(codec,
                    [&file](const char *bytes, qint64 size) { return file.write(bytes, size); });
    DelimitedLines lines(formatOf(options), &out);
    if (withHeader) {
        lines.addHeader(dataset.header());
    }
    const bool complete = lines.addRows(dataset, progress);
    if (!complete && !out.hasFailed()) {
        return WriteResult::Stopped;
    }
    if (!out.flush() || !file.commit()) {
        return failed();
    }
    tellWhatWasReplaced(lines, codec, messages);
    return WriteResult::Written;
}

WriteResult makeDelimitedText(const OutputOptions &options, const Dataset &dataset, QString *text,
                              Messages *messages, const Progress &progress)
{
    const OutputCodec codec(QStringLiteral("UTF-8"));
    std::string bytes;
    TextEncoder out(codec, [&bytes](const char *block, qint64 size) {
        bytes.append(block, size_t(size));
        return bytes.size() <= largestText;
    });
    DelimitedLines lines(formatOf(options), &out);
    if (options.writeHeader && dataset.hasHeader()) {
        lines.addHeader(dataset.header());
    }
    const bool complete = lines.addRows(dataset, progress);
    if (!complete && !out.hasFailed()) {
        return WriteResult::Stopped;
    }
    if (!out.flush()) {
        messages->fail(translated(QT_TRANSLATE_NOOP(
            "DelimitedWriter", "The table is too large for the clipboard, nothing written.")));
        return WriteResult::Failed;
    }
    *text = Utf8::decoded(bytes);
    tellWhatWasReplaced(lines, codec, messages);
    return WriteResult::Written;
}
