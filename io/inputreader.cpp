#include "inputreader.h"

#include "delimitedreader.h"
#include "inputoptions.h"
#include "textdecoder.h"

#include <QCoreApplication>
#include <new>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("InputReader", text);
}

std::unique_ptr<TextSource> openSource(const InputOptions &options, const QString &path,
                                       Messages *messages)
{
    if (options.medium == Medium::Clipboard) {
        return TextSource::fromText(options.text);
    }
    if (path.isEmpty()) {
        messages->fail(translated("No input file is set."));
        return nullptr;
    }
    QString error;
    std::unique_ptr<TextSource> source = TextSource::fromFile(path, options.encoding, &error);
    if (!source) {
        messages->fail(translated("Can't open file '%1': %2.").arg(path, error));
    }
    return source;
}

Dataset readTable(const InputOptions &options, const QString &path, const QString &name,
                  Messages *messages, const Progress &progress)
{
    if (!isReadAsDelimitedText(options.fileType)) {
        messages->fail(translated("Reading '%1' files is not built yet in this version.")
                           .arg(fileTypeLabel(options.fileType)));
        return {};
    }
    if (options.schemaInUse) {
        messages->fail(
            translated("Checking an input against a schema is not built yet in this version."));
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
    return translated("'%1' is too big for Tabweave to read.").arg(path);
}

Dataset readInput(const InputOptions &options, const QString &path, Messages *messages,
                  const Progress &progress)
{
    const QString name = options.medium == Medium::Clipboard ? translated("Clipboard") : path;
    try {
        return readTable(options, path, name, messages, progress);
    } catch (const std::bad_alloc &) {
        messages->fail(tooBigText(name));
        return {};
    }
}
