#include "textoutput.h"

#include "dataset.h"
#include "delimitedwriter.h"
#include "htmlwriter.h"
#include "jsonwriter.h"
#include "markdownwriter.h"
#include "messages.h"
#include "outputoptions.h"
#include "safefile.h"
#include "textencoder.h"
#include "textformat.h"
#include "utf8.h"
#include "vcardwriter.h"
#include "xmlwriter.h"
#include "yamlwriter.h"

#include <QCoreApplication>
#include <memory>
#include <string>

namespace {

// What a text object can surely hold.
constexpr size_t largestText = 1000000000;
// How much of an old document is looked at, at either end. Divisible by the size of the units of
// every encoding.
constexpr int lookedAt = 1 << 16;

QString translated(const char *text)
{
    return QCoreApplication::translate("TextOutput", text);
}

template <class Format>
std::unique_ptr<TextFormat> make(const TextJob &job)
{
    return std::make_unique<Format>(job);
}

std::unique_ptr<TextFormat> makeFormat(const TextJob &job)
{
    switch (job.options.fileType) {
    case FileType::Html:
        return make<HtmlWriter>(job);
    case FileType::Json:
        return make<JsonWriter>(job);
    case FileType::Markdown:
        return make<MarkdownWriter>(job);
    case FileType::VCard:
        return make<VCardWriter>(job);
    case FileType::Xml:
        return make<XmlWriter>(job);
    case FileType::Yaml:
        return make<YamlWriter>(job);
    default:
        return make<DelimitedWriter>(job);
    }
}

bool check(const OutputOptions &options, const OutputCodec &codec, const TextFormat &format,
           Messages *messages)
{
    if (!codec.holds(format.syntax())) {
        messages->fail(translated(QT_TRANSLATE_NOOP("TextOutput",
                                                    "Encoding '%1' cannot hold the characters that "
                                                    "%2 is made of, nothing written."))
                           .arg(codec.name(), fileTypeLabel(options.fileType)));
        return false;
    }
    return format.check(messages);
}

bool checkCodec(const OutputCodec &codec, Messages *messages)
{
    if (!codec.isKnown()) {
        messages->fail(translated(QT_TRANSLATE_NOOP("TextOutput",
                                                    "Encoding '%1' is not known, nothing written."))
                           .arg(codec.name()));
    }
    return codec.isKnown();
}

/// Writes one table to one file.
class FileJob
{
public:
    FileJob(const OutputOptions &options, const OutputCodec &codec, const Dataset &dataset)
        : m_options(options)
        , m_codec(codec)
        , m_dataset(dataset)
    {
    }

    WriteResult write(const QString &path, const QString &title, Messages *messages,
                      const Progress &progress);

private:
    bool begin(TextFormat *format, Messages *messages);
    bool resume(TextFormat *format, bool withHeader, Messages *messages);
    bool endsWithLineEnd() const;

    const OutputOptions &m_options;
    const OutputCodec &m_codec;
    const Dataset &m_dataset;
    QString m_path;
    SafeFile m_file;
    /// What stands behind the new rows.
    QByteArray m_lastPart;
    bool m_isNew = true;
};

WriteResult FileJob::write(const QString &path, const QString &title, Messages *messages,
                           const Progress &progress)
{
    m_path = path;
    TextEncoder out(m_codec,
                    [this](const char *bytes, qint64 size) { return m_file.write(bytes, size); });
    const std::unique_ptr<TextFormat> format = makeFormat({m_options, m_dataset, title, &out});
    if (!check(m_options, m_codec, *format, messages)) {
        return WriteResult::Failed;
    }
    if (!format->prepare(messages, progress)) {
        return WriteResult::Stopped;
    }
    const auto failed = [&] {
        messages->fail(m_file.error());
        return WriteResult::Failed;
    };
    const bool appends = m_options.writeMode == WriteMode::Append;
    if (!m_file.open(path, appends ? SafeFile::Start::OldContent : SafeFile::Start::Empty)) {
        return failed();
    }
    if (!begin(format.get(), messages)) {
        return m_file.error().isEmpty() ? WriteResult::Failed : failed();
    }
    const bool complete = format->addRows(progress);
    if (!complete && !out.hasFailed()) {
        return WriteResult::Stopped;
    }
    if (m_isNew) {
        format->end();
    }
    if (!out.flush() || !m_file.write(m_lastPart.constData(), m_lastPart.size()) ||
        !m_file.commit()) {
        return failed();
    }
    format->tell(messages);
    return WriteResult::Written;
}

/// Writes what has to stand before the new rows.
bool FileJob::begin(TextFormat *format, Messages *messages)
{
    const QByteArray mark = m_codec.byteOrderMark();
    const qint64 oldSize = m_file.oldSize();
    m_isNew = oldSize == 0 || (oldSize == mark.size() && m_file.oldHead(mark.size()) == mark);
    const bool appends = m_options.writeMode == WriteMode::Append;
    const bool withHeader = m_options.writeHeader && m_dataset.hasHeader() &&
                            (!appends || !m_options.headerOnlyIfEmpty || m_isNew);
    if (!m_isNew) {
        return resume(format, withHeader, messages);
    }
    if (oldSize == 0 && m_options.byteOrderMark && !m_file.write(mark.constData(), mark.size())) {
        return false;
    }
    format->begin(withHeader);
    return true;
}

bool FileJob::resume(TextFormat *format, bool withHeader, Messages *messages)
{
    OldText old{m_codec.decoded(m_file.oldHead(lookedAt)),
                m_codec.decoded(m_file.oldTail(lookedAt))};
    for (QString *part : {&old.head, &old.tail}) {
        if (part->startsWith(QChar(QChar::ByteOrderMark))) {
            part->remove(0, 1);
        }
    }
    QString lastPart;
    bool possible = format->canContinue(old, &lastPart);
    if (possible) {
        m_lastPart = m_codec.encoded(lastPart);
        possible = m_file.oldTail(m_lastPart.size()) == m_lastPart;
    }
    if (!possible) {
        messages->fail(
            translated(QT_TRANSLATE_NOOP("TextOutput",
                                         "'%1' is not a document of type %2 in encoding '%3' to "
                                         "which rows can be added, nothing written."))
                .arg(m_path, fileTypeLabel(m_options.fileType), m_codec.name()));
        return false;
    }
    const bool hasLines = withHeader || m_dataset.hasRows();
    if (!lastPart.isEmpty()) {
        if (!m_file.cutOld(m_lastPart.size())) {
            return false;
        }
    } else if (hasLines && !endsWithLineEnd()) {
        const QByteArray lineEnd = m_codec.encoded(lineEndingText(m_options.lineEnding));
        if (!m_file.write(lineEnd.constData(), lineEnd.size())) {
            return false;
        }
    }
    if (hasLines) {
        format->resume(withHeader);
    }
    return true;
}

bool FileJob::endsWithLineEnd() const
{
    for (const char c : {'\n', '\r', '\x1e'}) {
        const QByteArray lineEnd = m_codec.encoded(QString(QLatin1Char(c)));
        if (!lineEnd.isEmpty() && m_file.oldTail(lineEnd.size()) == lineEnd) {
            return true;
        }
    }
    return false;
}

} // namespace

bool isTextOutput(FileType type)
{
    switch (type) {
    case FileType::DelimitedText:
    case FileType::Html:
    case FileType::Json:
    case FileType::Markdown:
    case FileType::VCard:
    case FileType::Xml:
    case FileType::Yaml:
        return true;
    default:
        return false;
    }
}

bool checkTextOutput(const OutputOptions &options, const Dataset &dataset, Messages *messages)
{
    const OutputCodec codec(options.encoding);
    if (!checkCodec(codec, messages)) {
        return false;
    }
    TextEncoder out(codec, [](const char *, qint64) { return false; });
    return check(options, codec, *makeFormat({options, dataset, QString(), &out}), messages);
}

WriteResult writeTextFile(const OutputOptions &options, const QString &path, const QString &title,
                          const Dataset &dataset, Messages *messages, const Progress &progress)
{
    const OutputCodec codec(options.encoding);
    if (!checkCodec(codec, messages)) {
        return WriteResult::Failed;
    }
    return FileJob(options, codec, dataset).write(path, title, messages, progress);
}

WriteResult makeText(const OutputOptions &options, const QString &title, const Dataset &dataset,
                     QString *text, Messages *messages, const Progress &progress)
{
    const OutputCodec codec(QStringLiteral("UTF-8"));
    std::string bytes;
    TextEncoder out(codec, [&bytes](const char *block, qint64 size) {
        bytes.append(block, size_t(size));
        return bytes.size() <= largestText;
    });
    const std::unique_ptr<TextFormat> format = makeFormat({options, dataset, title, &out});
    if (!check(options, codec, *format, messages)) {
        return WriteResult::Failed;
    }
    if (!format->prepare(messages, progress)) {
        return WriteResult::Stopped;
    }
    format->begin(options.writeHeader && dataset.hasHeader());
    const bool complete = format->addRows(progress);
    if (!complete && !out.hasFailed()) {
        return WriteResult::Stopped;
    }
    format->end();
    if (!out.flush()) {
        messages->fail(translated(QT_TRANSLATE_NOOP(
            "TextOutput", "The table is too large for the clipboard, nothing written.")));
        return WriteResult::Failed;
    }
    *text = Utf8::decoded(bytes);
    format->tell(messages);
    return WriteResult::Written;
}
