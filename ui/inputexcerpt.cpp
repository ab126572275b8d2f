#include "inputexcerpt.h"

#include "fixedwidthreader.h"
#include "textdecoder.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QVector>
#include <QXmlStreamReader>

namespace {

constexpr qint64 mostBytes = 64 * 1024;
// Of a workbook all is read or nothing.
constexpr qint64 mostWorkbookBytes = 256 * 1024;

struct ExcerptText
{
    Q_DECLARE_TR_FUNCTIONS(ExcerptText)
};

std::unique_ptr<TextSource> openSource(const InputOptions &options, const QString &path,
                                       QString *error)
{
    if (options.medium == Medium::Clipboard) {
        return TextSource::fromText(options.text.left(int(mostBytes)));
    }
    const QString encoding =
        options.fileType == FileType::Json ? QStringLiteral("Automatic") : options.encoding;
    return TextSource::fromFile(path, encoding, error);
}

/// Answers whether there is more.
bool readBeginning(TextSource *source, QString *text)
{
    QByteArray bytes(int(mostBytes), Qt::Uninitialized);
    qint64 size = 0;
    while (size + 16 <= mostBytes) {
        const qint64 read = source->read(bytes.data() + size, mostBytes - size);
        if (read <= 0) {
            *text = QString::fromUtf8(bytes.constData(), int(size));
            return false;
        }
        size += read;
    }
    *text = QString::fromUtf8(bytes.constData(), int(size));
    return true;
}

/// Ends a JSON text behind its last value that is whole, and closes what is open there.
QString closedJson(const QString &text)
{
    QString open;
    QString openAtEnd;
    int end = 0;
    bool inString = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (inString) {
            i += c == QLatin1Char('\\') ? 1 : 0;
            inString = c != QLatin1Char('"');
        } else if (c == QLatin1Char('"')) {
            inString = true;
        } else if (c == QLatin1Char('{')) {
            open.append(QLatin1Char('}'));
        } else if (c == QLatin1Char('[')) {
            open.append(QLatin1Char(']'));
        } else if (c == QLatin1Char('}') || c == QLatin1Char(']')) {
            open.chop(1);
            end = i + 1;
            openAtEnd = open;
        } else if (c == QLatin1Char(',')) {
            end = i;
            openAtEnd = open;
        }
    }
    QString closed = text.left(end);
    for (int i = openAtEnd.size(); i-- > 0;) {
        closed.append(openAtEnd.at(i));
    }
    return closed;
}

QString closedXml(const QString &text)
{
    QXmlStreamReader reader(text);
    QStringList open;
    QStringList openAtEnd;
    int end = 0;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::StartElement) {
            open.append(reader.qualifiedName().toString());
        } else if (token == QXmlStreamReader::EndElement) {
            open.removeLast();
            end = int(reader.characterOffset());
            openAtEnd = open;
        }
    }
    QString closed = text.left(end);
    while (!openAtEnd.isEmpty()) {
        closed.append(QStringLiteral("</%1>").arg(openAtEnd.takeLast()));
    }
    return closed;
}

QString closedVCards(const QString &text)
{
    const QString endMark = QStringLiteral("END:VCARD");
    const int end = text.lastIndexOf(endMark, -1, Qt::CaseInsensitive);
    return end < 0 ? text + QLatin1String("\r\n") + endMark : text.left(end + endMark.size());
}

QString withoutLastLine(const QString &text)
{
    const int end = qMax(text.lastIndexOf(QLatin1Char('\n')), text.lastIndexOf(QLatin1Char('\r')));
    return end < 0 ? text : text.left(end + 1);
}

QString pathProblem(const InputOptions &options, const QString &path)
{
    if (options.medium == Medium::Clipboard) {
        return QString();
    }
    const QFileInfo file(path);
    if (path.isEmpty()) {
        return ExcerptText::tr("Choose a file to see its first rows.");
    }
    if (!file.isFile()) {
        return ExcerptText::tr("The file cannot be read.");
    }
    return isSpreadsheet(options.fileType) && file.size() > mostWorkbookBytes
               ? ExcerptText::tr("This workbook is too large for a preview. Its rows are shown in "
                                 "the table when the input has run.")
               : QString();
}

} // namespace

QString closedText(const QString &beginning, FileType type)
{
    switch (type) {
    case FileType::Json:
        return closedJson(beginning);
    case FileType::Xml:
        return closedXml(beginning);
    case FileType::VCard:
        return closedVCards(beginning);
    default:
        return withoutLastLine(beginning);
    }
}

InputExcerpt inputExcerpt(const InputOptions &options, const QString &path)
{
    InputExcerpt excerpt;
    excerpt.options = options;
    excerpt.options.schemaInUse = false;
    excerpt.problem = pathProblem(options, path);
    if (!excerpt.problem.isEmpty()) {
        return excerpt;
    }
    if (isSpreadsheet(options.fileType) && options.medium == Medium::File) {
        excerpt.path = path;
        return excerpt;
    }
    const std::unique_ptr<TextSource> source = openSource(options, path, &excerpt.problem);
    if (!source) {
        return excerpt;
    }
    QString text;
    excerpt.isCut = readBeginning(source.get(), &text) ||
                    (options.medium == Medium::Clipboard && options.text.size() > mostBytes);
    excerpt.options.medium = Medium::Clipboard;
    excerpt.options.text = excerpt.isCut ? closedText(text, options.fileType) : text;
    return excerpt;
}

QStringList firstInputLines(const InputOptions &options, const QString &path)
{
    QString error;
    if (!pathProblem(options, path).isEmpty()) {
        return {};
    }
    const std::unique_ptr<TextSource> source = openSource(options, path, &error);
    return source ? fixedWidthPreview(source.get()) : QStringList();
}
