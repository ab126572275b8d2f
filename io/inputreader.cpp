#include "inputreader.h"

#include "delimitedreader.h"
#include "inputoptions.h"
#include "textdecoder.h"

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
        messages->fail(InputReader::tr("No input file is set."));
        return nullptr;
    }
    QString error;
    std::unique_ptr<TextSource> source = TextSource::fromFile(path, options.encoding, &error);
    if (!source) {
        messages->fail(InputReader::tr("Can't open file '%1': %2.").arg(path, error));
    }
    return source;
}

Dataset readTable(const InputOptions &options, const QString &path, const QString &name,
                  Messages *messages, const Progress &progress)
{
    if (!isReadAsDelimitedText(options.fileType)) {
        messages->fail(InputReader::tr("Reading '%1' files is not built yet in this version.")
                           .arg(fileTypeLabel(options.fileType)));
        return {};
    }
    if (options.schemaInUse) {
        messages->fail(InputReader::tr(
            "Checking an input against a schema is not built yet in this version."));
        return {};
    }
    const std::unique_ptr<TextSource> source = openSource(options, path, messages);
    if (!source) {
        return {};
    }
    return readDelimitedText(options, name, source.get(), messages, progress);
}

} // namespace

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
