#include "xmlwriter.h"

#include "messages.h"
#include "outputoptions.h"
#include "textencoder.h"
#include "texts.h"
#include "utf8.h"
#include "xmlevents.h"
#include "xmlnames.h"

#include <QCoreApplication>
#include <QTextCodec>

namespace {

constexpr int mostNamesTold = 100;

QString translated(const char *text)
{
    return QCoreApplication::translate("XmlWriter", text);
}

QString orElse(const QString &text, const char *usual)
{
    return text.isEmpty() ? QLatin1String(usual) : text;
}

bool isXmlCharacter(uint c)
{
    return c >= 0x20 ? c < 0xd800 || (c > 0xdfff && c != 0xfffe && c != 0xffff)
                     : c == '\t' || c == '\n' || c == '\r';
}

/// One item fails once for each reason, whatever the number of its files.
void failOnce(Messages *messages, const QString &text)
{
    warnOnce(messages, text);
    messages->failed = true;
}

bool isLineBreak(QChar c)
{
    return c == QLatin1Char('\n') || c == QLatin1Char('\r');
}

/// Finds out what the root of a document is called, of which only the start need be there.
class RootFinder final : public XmlHandler
{
public:
    bool beginElement(std::string_view name, const char *const *) override
    {
        if (m_name.isEmpty()) {
            m_name = Utf8::decoded(name);
        }
        return true;
    }
    bool endElement() override { return true; }
    bool text(std::string_view) override { return true; }

    QString name() const { return m_name; }

private:
    QString m_name;
};

} // namespace

XmlWriter::XmlWriter(const TextJob &job)
    : RecordFormat(job)
    , m_root(orElse(job.options.xmlRoot, "root"))
    , m_row(orElse(job.options.xmlRow, "record"))
{
    useRealLineEnds();
    // The last one begins U+FFFE and U+FFFF, which are not allowed.
    watchFor("&<>\xef");
    watchForControls();
}

QString XmlWriter::syntax() const
{
    return QStringLiteral("<?xml version=\"1.0\" encoding=\"\"?><!---->&#0123456789;&lt;&gt;&amp;"
                          "/\r\n");
}

QStringList XmlWriter::elementNames(Messages *messages) const
{
    if (dataset().hasHeader()) {
        return uniqueNames(messages);
    }
    QStringList names;
    for (ColIndex column(0); column < dataset().columnCount(); ++column) {
        names.append(QStringLiteral("Column_%1").arg(column.value() + 1));
    }
    return names;
}

bool XmlWriter::check(Messages *messages) const
{
    const auto checkName = [&](const QString &name, const char *message) {
        const QStringList problems = xmlNameProblems(name, out()->codec());
        if (!problems.isEmpty()) {
            failOnce(messages, translated(message).arg(name, problems.join(QLatin1String(", "))));
        }
        return problems.isEmpty();
    };
    const bool encodingGood = checkEncoding(messages);
    const bool rootGood = checkName(
        m_root, QT_TRANSLATE_NOOP("XmlWriter", "Root name '%1' invalid as an XML tag: %2."));
    const bool rowGood = checkName(
        m_row, QT_TRANSLATE_NOOP("XmlWriter", "Row name '%1' invalid as an XML tag: %2."));
    const bool columnsGood = checkColumnNames(messages);
    return encodingGood && rootGood && rowGood && columnsGood && checkSurroundings(messages);
}

bool XmlWriter::checkEncoding(Messages *messages) const
{
    const QString name = out()->codec().name();
    const auto isLetter = [](QChar c) { return c.unicode() < 0x80 && c.isLetter(); };
    bool good = isLetter(name.at(0));
    for (const QChar c : name) {
        good = good && (isLetter(c) || (c >= QLatin1Char('0') && c <= QLatin1Char('9')) ||
                        c == QLatin1Char('.') || c == QLatin1Char('_') || c == QLatin1Char('-'));
    }
    if (!good) {
        failOnce(messages,
                 translated(QT_TRANSLATE_NOOP("XmlWriter",
                                              "An XML document cannot name '%1' as its encoding, "
                                              "nothing written."))
                     .arg(name));
    }
    return good;
}

bool XmlWriter::checkColumnNames(Messages *messages) const
{
    int bad = 0;
    // Names that are made unique later stay as good as they are.
    QStringList names = dataset().hasHeader() ? dataset().header() : QStringList();
    names.removeDuplicates();
    for (const QString &name : qAsConst(names)) {
        const QStringList problems = xmlNameProblems(name, out()->codec());
        if (problems.isEmpty()) {
            continue;
        }
        if (++bad <= mostNamesTold) {
            failOnce(messages,
                     translated(QT_TRANSLATE_NOOP("XmlWriter",
                                                  "Column name '%1' invalid as an XML tag: %2."))
                         .arg(name, problems.join(QLatin1String(", "))));
        }
    }
    if (bad > mostNamesTold) {
        failOnce(messages,
                 translated(QT_TRANSLATE_NOOP("XmlWriter",
                                              "%1 more column name(s) invalid as an XML tag."))
                     .arg(Texts::count(bad - mostNamesTold)));
    }
    return bad == 0;
}

bool XmlWriter::checkSurroundings(Messages *messages) const
{
    const auto refuse = [&](const QString &option, const QString &error) {
        failOnce(messages,
                 translated(QT_TRANSLATE_NOOP("XmlWriter",
                                              "'%1' does not leave the XML document well-formed: "
                                              "%2. Nothing written."))
                     .arg(option, error));
        return false;
    };
    QString error;
    if (!isWellFormed(options().xmlAboveRoot, QString(), &error)) {
        return refuse(translated(QT_TRANSLATE_NOOP("XmlWriter", "Above root")), error);
    }
    if (!isWellFormed(options().xmlAboveRoot, options().xmlBelowRoot, &error)) {
        return refuse(translated(QT_TRANSLATE_NOOP("XmlWriter", "Below root")), error);
    }
    return true;
}

bool XmlWriter::isWellFormed(const QString &above, const QString &below, QString *error) const
{
    const auto written = [&](const QString &text) {
        std::string clean;
        out()->replaceUnencodable(Utf8::encoded(text), &clean);
        return clean;
    };
    const std::string root = Utf8::encoded(m_root);
    const std::string text = declaration() + '\n' + written(above) + "\n<" + root + ">\n" +
                             written(below) + "\n<" + Utf8::encoded(m_row) + "/></" + root + '>';
    RootFinder handler;
    XmlError xmlError;
    if (parseXml(text, &handler, {}, &xmlError) != XmlOutcome::Done) {
        *error = xmlError.text;
        return false;
    }
    return true;
}

bool XmlWriter::prepare(Messages *messages, const Progress &)
{
    for (const QString &name : elementNames(messages)) {
        const std::string tag = Utf8::encoded(name);
        Field field;
        field.before = lineEnd() + "    <" + tag + '>';
        field.after = "</" + tag + '>';
        field.empty = lineEnd() + "    <" + tag + "/>";
        fields().push_back(std::move(field));
    }
    const std::string row = Utf8::encoded(m_row);
    frame().firstRow = "  <" + row + '>';
    frame().nextRow = frame().firstRow;
    frame().fieldsEnd = lineEnd() + "  ";
    frame().rowEnd = "</" + row + '>' + lineEnd();
    frame().omitsEmpty = options().removeEmpty;
    return true;
}

std::string XmlWriter::declaration() const
{
    return "<?xml version=\"1.0\" encoding=\"" + Utf8::encoded(out()->codec().name()) + "\"?>";
}

void XmlWriter::begin(bool)
{
    writeLine(declaration());
    writeComment();
    writeAsIs(options().xmlAboveRoot);
    writeLine('<' + Utf8::encoded(m_root) + '>');
    writeAsIs(options().xmlBelowRoot);
}

void XmlWriter::writeComment()
{
    if (options().fileComment.isEmpty()) {
        return;
    }
    std::string comment;
    for (const char c : cleanComment(options().fileComment, isXmlCharacter)) {
        // Two hyphens must not stand side by side.
        if (c == '-' && !comment.empty() && comment.back() == '-') {
            comment.push_back(' ');
        }
        comment.push_back(c);
    }
    if (comment.back() == '-') {
        comment.push_back(' ');
    }
    writeLine("<!--" + comment + "-->");
}

void XmlWriter::writeAsIs(const QString &text)
{
    if (!text.isEmpty()) {
        write(encodable(text));
        write(isLineBreak(text.back()) ? std::string() : lineEnd());
    }
}

bool XmlWriter::canContinue(const OldText &old, QString *lastPart)
{
    RootFinder finder;
    XmlError error;
    parseXml(Utf8::encoded(old.head), &finder, {}, &error);
    if (finder.name() != m_root || !isEncodedAlike(error.declaredEncoding)) {
        return false;
    }
    const QString tag = QLatin1String("</") + m_root;
    int at = old.tail.lastIndexOf(tag);
    if (at < 0 || old.tail.mid(at + tag.size()).trimmed() != QLatin1String(">")) {
        return false;
    }
    if (endsWithOtherElement(old.tail.left(at))) {
        return false;
    }
    while (at > 0 &&
           (old.tail.at(at - 1) == QLatin1Char(' ') || old.tail.at(at - 1) == QLatin1Char('\t'))) {
        --at;
    }
    m_startsInLine = at == 0 || !isLineBreak(old.tail.at(at - 1));
    *lastPart = old.tail.mid(at);
    return true;
}

/// An element that is neither a row nor part of what stands below the root.
bool XmlWriter::endsWithOtherElement(const QString &text) const
{
    const QString trimmed = text.trimmed();
    const QString below = options().xmlBelowRoot.trimmed();
    if (!below.isEmpty() && trimmed.endsWith(below)) {
        return false;
    }
    const int tag = trimmed.lastIndexOf(QLatin1Char('<'));
    return trimmed.endsWith(QLatin1Char('>')) &&
           trimmed.midRef(tag).startsWith(QLatin1String("</")) &&
           trimmed.mid(tag + 2, trimmed.size() - tag - 3).trimmed() != m_row;
}

/// What was read in another of the wide encodings would not have been a document.
bool XmlWriter::isEncodedAlike(const QString &declared) const
{
    const OutputCodec &codec = out()->codec();
    if (codec.isUnicode() && !codec.isUtf8()) {
        return true;
    }
    return QTextCodec::codecForName(codec.name().toLatin1()) ==
           QTextCodec::codecForName(orElse(declared, "UTF-8").toLatin1());
}

void XmlWriter::resume(bool)
{
    if (m_startsInLine) {
        write(lineEnd());
    }
}

void XmlWriter::end()
{
    writeLine("</" + Utf8::encoded(m_root) + '>');
}

bool XmlWriter::escapeCharacter(uint codePoint, std::string *out)
{
    switch (codePoint) {
    case '&':
        out->append("&amp;");
        return true;
    case '<':
        out->append("&lt;");
        return true;
    case '>':
        out->append("&gt;");
        return true;
    case '\r':
        // As it is, readers would make a line feed of it.
        out->append("&#13;");
        return true;
    default:
        break;
    }
    if (isXmlCharacter(codePoint)) {
        return false;
    }
    replaceCharacter(codePoint, out);
    return true;
}

void XmlWriter::escapeUnencodable(uint codePoint, std::string *out)
{
    out->append("&#" + std::to_string(codePoint) + ';');
}
