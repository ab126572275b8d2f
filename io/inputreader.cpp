#include "inputreader.h"

#include "delimitedreader.h"
#include "fixedwidthreader.h"
#include "inputoptions.h"
#include "jsonreader.h"
#include "plaintextreader.h"
#include "schema.h"
#include "spreadsheetinput.h"
#include "textdecoder.h"
#include "vcardreader.h"
#include "xmlreader.h"

#include <QCoreApplication>
#include <new>

namespace {

struct InputReader
{
    Q_DECLARE_TR_FUNCTIONS(InputReader)
};

std::unique_ptr<TextSource> openSource(const InputOptions &options, const QString &path,
                                       Messages *messages)
{
    if (options.medium == Medium::Clipboard) {
        return TextSource::fromText(options.text);
    }
    if (path.isEmpty()) {
        messages->fail(noInputFileText());
        return nullptr;
    }
    // JSON is UTF-8, or says by a byte-order mark what it is.
    const QString encoding =
        options.fileType == FileType::Json ? QStringLiteral("Automatic") : options.encoding;
    QString error;
    std::unique_ptr<TextSource> source = TextSource::fromFile(path, encoding, &error);
    if (!source) {
        messages->fail(InputReader::tr("Can't open file '%1': %2.").arg(path, error));
    }
    return source;
}

Dataset readText(const InputOptions &options, const QString &path, const QString &name,
                 Messages *messages, const Progress &progress)
{
    const std::unique_ptr<TextSource> source = openSource(options, path, messages);
    if (!source) {
        return {};
    }
    switch (options.fileType) {
    case FileType::FixedWidth:
        return readFixedWidth(options, name, source.get(), messages, progress);
    case FileType::Json:
        return readJson(options, name, source.get(), messages, progress);
    case FileType::Xml:
        return readXml(options, name, source.get(), messages, progress);
    case FileType::VCard:
        return readVCards(options, name, source.get(), messages, progress);
    case FileType::PlainText:
        return readPlainText(options, name, source.get(), messages, progress);
    default:
        return readDelimitedText(options, name, source.get(), messages, progress);
    }
}

Dataset readTable(const InputOptions &options, const QString &path, const QString &name,
                  Messages *messages, const Progress &progress)
{
    Dataset table = isSpreadsheet(options.fileType) && options.medium == Medium::File
                        ? readSpreadsheet(options, path, messages, progress)
                        : readText(options, path, name, messages, progress);
    if (options.schemaInUse && !messages->failed && !applySchema(options, &table, messages)) {
        return {};
    }
    return table;
}

} // namespace

QString notBuiltText(FileType type)
{
    return InputReader::tr("Reading '%1' files is not built yet in this version.")
        .arg(fileTypeLabel(type));
}

QString noInputFileText()
{
    return InputReader::tr("No input file is set.");
}

QString tooBigText(const QString &path)
{
    return InputReader::tr("'%1' is too big for Tabweave to read.").arg(path);
}

Dataset readInput(const InputOptions &options, const QString &path, Messages *messages,
                  const Progress &progress)
{
    const QString name = options.medium == Medium::Clipboard ? InputReader::tr("Clipboard") : path;
    try {
        return readTable(options, path, name, messages, progress);
    } catch (const std::bad_alloc &) {
        messages->fail(tooBigText(name));
        return {};
    }
}
