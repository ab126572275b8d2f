#include "textinput.h"

#include "inputoptions.h"
#include "inputreader.h"
#include "textdecoder.h"

#include <QCoreApplication>
#include <algorithm>
#include <memory>

namespace {

constexpr size_t blockSize = size_t(1) << 18;

struct TextInput
{
    Q_DECLARE_TR_FUNCTIONS(TextInput)
};

} // namespace

void noteEncoding(const InputOptions &options, const TextSource &source, Messages *messages)
{
    if (options.medium == Medium::Clipboard) {
        return;
    }
    if (TextSource::isAutomatic(options.encoding)) {
        messages->note(
            TextInput::tr("Encoding=Automatic guesses '%1'. Set 'Encoding' option to change.\n")
                .arg(QLatin1String("UTF-8")));
    } else if (!source.isEncodingKnown()) {
        messages->warn(TextInput::tr("Encoding '%1' is not known, '%2' is used.")
                           .arg(options.encoding, source.encodingName()));
    }
}

std::optional<std::string> readWholeText(const QString &path, TextSource *source,
                                         Messages *messages, const Progress &progress, double share)
{
    // Taken over from a block, because a text that is made larger first would be filled with zeros.
    const std::unique_ptr<char[]> block(new char[blockSize]);
    std::string text;
    text.reserve(size_t(std::max(source->size(), qint64(0))));
    bool clean = true;
    for (;;) {
        const qint64 bytes = source->read(block.get(), qint64(blockSize));
        if (bytes < 0) {
            messages->fail(unreadableText(path, source->errorText()));
            return std::nullopt;
        }
        if (bytes == 0) {
            break;
        }
        clean = clean && source->isClean();
        text.append(block.get(), size_t(bytes));
        if (!reportProgress(progress, source->fraction() * share)) {
            return std::nullopt;
        }
    }
    if (!clean) {
        if (std::optional<std::string> mended = source->mended(text)) {
            messages->warn(
                TextInput::tr("The text contains bytes that are not valid %1; they were "
                              "replaced by '%2'.")
                    .arg(source->encodingName(), QString(QChar(QChar::ReplacementCharacter))));
            return mended;
        }
    }
    return text;
}

bool tellEnding(DelimitedParser::Ending ending, const QString &path, const TextSource &source,
                Messages *messages)
{
    switch (ending) {
    case DelimitedParser::Ending::None:
    case DelimitedParser::Ending::TextEnd:
        return true;
    case DelimitedParser::Ending::Stopped:
        break;
    case DelimitedParser::Ending::Failed:
        messages->fail(unreadableText(path, source.errorText()));
        break;
    case DelimitedParser::Ending::TooBig:
        messages->fail(tooBigText(path));
        break;
    }
    return false;
}

QString unreadableText(const QString &path, const QString &reason)
{
    return TextInput::tr("Can't read file '%1': %2.").arg(path, reason);
}
