#include "xmlwriter.h"

#include "messages.h"
#include "outputoptions.h"
#include "textencoder.h"
#include "texts.h"
#include "utf8.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <expat.h>
#include <memory>

namespace {

constexpr int mostNamesTold = 20;

QString translated(const char *text)
{
    return QCoreApplication::translate("XmlWriter", text);
}

bool isXmlCharacter(uint c)
{
    return c >= 0x20 ? !QChar::isSurrogate(c) && c != 0xfffe && c != 0xffff
                     : c == '\t' || c == '\n' || c == '\r';
}

struct ParserDeleter
{
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

/// Empty when a parser takes the document, else what is wrong with it.
QString wellFormednessProblem(const std::string &document)
{
    const std::unique_ptr<XML_ParserStruct, ParserDeleter> parser(XML_ParserCreate("UTF-8"));
    if (!parser ||
        XML_Parse(parser.get(), document.data(), int(document.size()), 1) == XML_STATUS_OK) {
        return {};
    }
    return QString::fromLatin1(XML_ErrorString(XML_GetErrorCode(parser.get())));
}

} // namespace

QString xmlNameProblems(const QString &name)
{
    const QVector<uint> characters = name.toUcs4();
    if (characters.isEmpty()) {
        return translated(QT_TRANSLATE_NOOP("XmlWriter", "empty name"));
    }
    QStringList problems;
    if (name.startsWith(QLatin1String("xml"), Qt::CaseInsensitive)) {
        problems.append(translated(QT_TRANSLATE_NOOP("XmlWriter", "starts with 'xml'")));
    }
    if (!QChar::isLetter(characters.first()) && characters.first() != '_') {
        problems.append(translated(QT_TRANSLATE_NOOP("XmlWriter", "doesn't start with a letter")));
    }
    QVector<uint> told;
    for (int i = 1; i < characters.size(); ++i) {
        const uint c = characters.at(i);
        const bool isPossible =
            QChar::isLetter(c) || (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.';
        if (!isPossible && !told.contains(c)) {
            told.append(c);
            problems.append(translated(QT_TRANSLATE_NOOP("XmlWriter", "invalid character '%1'"))
                                .arg(QString::fromUcs4(&c, 1)));
        }
    }
    return problems.join(QStringLiteral(", "));
}

XmlWriter::XmlWriter(const TextJob &job)
    : RecordFormat(job)
{
    useRealLineEnds();
    watchFor("&<>\xef"); // the last begins U+FFFE and U+FFFF
    watchForControls();
}

QString XmlWriter::syntax() const
{
    return QStringLiteral("<>/?!\"'=&;#-. :,[]()abcdefghijklmnopqrstuvwxyz"
                          "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_\r\n");
}

QString XmlWriter::rootName() const
{
    return options().xmlRoot.isEmpty() ? QStringLiteral("root") : options().xmlRoot;
}

QString XmlWriter::rowName() const
{
    return options().xmlRow.isEmpty() ? QStringLiteral("record") : options().xmlRow;
}

/// Two hyphens would end a comment, and so would one before its end.
QString XmlWriter::comment() const
{
    QString text = options().fileComment;
    text.replace(QRegularExpression(QStringLiteral("-(?=-)")), QStringLiteral("- "));
    return text.endsWith(QLatin1Char('-')) ? text + QLatin1Char(' ') : text;
}

QStringList XmlWriter::elementNames(Messages *messages) const
{
    if (dataset().hasHeader()) {
        return uniqueNames(messages);
    }
    QStringList names;
    for (int column = 1; column <= dataset().columnCount().value(); ++column) {
        names.append(QStringLiteral("Column_%1").arg(column));
    }
    return names;
}

bool XmlWriter::check(Messages *messages) const
{
    const auto fail = [messages](const QString &text) {
        if (!messages->warnings.contains(text)) {
            messages->fail(text);
        }
        messages->failed = true;
    };
    const OutputCodec &codec = out()->codec();
    int bad = 0;
    for (const QString &name : elementNames(nullptr)) {
        QString problems = xmlNameProblems(name);
        if (problems.isEmpty() && !codec.holds(name)) {
            problems = translated(QT_TRANSLATE_NOOP("XmlWriter", "not possible in encoding '%1'"))
                           .arg(codec.name());
        }
        if (problems.isEmpty()) {
            continue;
        }
        if (++bad <= mostNamesTold) {
            fail(translated(
                     QT_TRANSLATE_NOOP("XmlWriter", "Column name '%1' invalid as an XML tag: %2."))
                     .arg(name, problems));
        }
    }
    if (bad > mostNamesTold) {
        fail(translated(
                 QT_TRANSLATE_NOOP("XmlWriter", "%1 more column name(s) invalid as an XML tag."))
                 .arg(Texts::count(bad - mostNamesTold)));
    }
    const QString rootProblems = xmlNameProblems(rootName());
    if (!rootProblems.isEmpty()) {
        fail(translated(QT_TRANSLATE_NOOP("XmlWriter", "Root name '%1' invalid as an XML tag: %2."))
                 .arg(rootName(), rootProblems));
    }
    const QString rowProblems = xmlNameProblems(rowName());
    if (!rowProblems.isEmpty()) {
        fail(translated(QT_TRANSLATE_NOOP("XmlWriter", "Row name '%1' invalid as an XML tag: %2."))
                 .arg(rowName(), rowProblems));
    }
    return bad == 0 && rootProblems.isEmpty() && rowProblems.isEmpty() && checkFrame(messages);
}

/// What the user puts around the rows must leave a document that others can read.
bool XmlWriter::checkFrame(Messages *messages) const
{
    QString document = QStringLiteral("<!--") + comment() + QStringLiteral("-->") +
                       options().xmlAboveRoot + QLatin1Char('<') + rootName() + QLatin1Char('>') +
                       options().xmlBelowRoot + QLatin1Char('<') + rowName() + QLatin1Char('>');
    for (const QString &name : elementNames(nullptr)) {
        document += QLatin1Char('<') + name + QStringLiteral("/>");
    }
    document +=
        QStringLiteral("</") + rowName() + QStringLiteral("></") + rootName() + QLatin1Char('>');
    const QString problem = wellFormednessProblem(Utf8::encoded(document));
    if (!problem.isEmpty()) {
        messages->fail(
            translated(QT_TRANSLATE_NOOP(
                           "XmlWriter",
                           "The names, the comment and the texts above and below the root do not "
                           "make a well-formed XML document (%1), nothing written."))
                .arg(problem));
    }
    return problem.isEmpty();
}

bool XmlWriter::prepare(Messages *messages, const Progress &)
{
    for (const QString &name : elementNames(messages)) {
        const std::string element = Utf8::encoded(name);
        Field field;
        field.before = "    <" + element + '>';
        field.after = "</" + element + '>' + lineEnd();
        field.empty = "    <" + element + "/>" + lineEnd();
        fields().push_back(std::move(field));
    }
    const std::string row = Utf8::encoded(rowName());
    frame().firstRow = "  <" + row + '>' + lineEnd();
    frame().nextRow = frame().firstRow;
    frame().rowEnd = "  </" + row + '>' + lineEnd();
    frame().omitsEmpty = options().removeEmpty;
    return true;
}

void XmlWriter::begin(bool)
{
    writeLine("<?xml version=\"1.0\" encoding=\"" + out()->codec().name().toStdString() + "\"?>");
    if (!options().fileComment.isEmpty()) {
        writeLine("<!--" + encodable(comment()) + "-->");
    }
    if (!options().xmlAboveRoot.isEmpty()) {
        writeLine(encodable(options().xmlAboveRoot));
    }
    writeLine('<' + Utf8::encoded(rootName()) + '>');
    if (!options().xmlBelowRoot.isEmpty()) {
        writeLine(encodable(options().xmlBelowRoot));
    }
}

bool XmlWriter::canContinue(const OldText &old, QString *lastPart)
{
    const QString root = QRegularExpression::escape(rootName());
    const QRegularExpression start(QStringLiteral("<%1(\\s[^<]*)?>").arg(root));
    const QRegularExpression end(QStringLiteral("</%1\\s*>\\s*\\z").arg(root));
    // The element before the end is a row like ours, or there is none yet.
    const QRegularExpression otherRow(
        QStringLiteral("</(?!%1\\s*>)[^<>]*>\\s*\\z").arg(QRegularExpression::escape(rowName())));
    const QRegularExpressionMatch match = end.match(old.tail);
    if (!start.match(old.head).hasMatch() || !match.hasMatch() ||
        otherRow.match(old.tail.left(match.capturedStart())).hasMatch()) {
        return false;
    }
    *lastPart = old.tail.mid(match.capturedStart());
    const QString before = old.tail.left(match.capturedStart());
    m_needsLineEnd = !before.endsWith(QLatin1Char('\n')) && !before.endsWith(QLatin1Char('\r'));
    return true;
}

void XmlWriter::resume(bool)
{
    if (m_needsLineEnd) {
        write(lineEnd());
    }
}

void XmlWriter::end()
{
    writeLine("</" + Utf8::encoded(rootName()) + '>');
}

void XmlWriter::format(int column, std::string_view value, std::string *out)
{
    RecordFormat::format(column, value, out);
    m_impossibleValues += m_hasImpossible ? 1 : 0;
    m_hasImpossible = false;
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
        out->append("&#13;"); // as it stands, readers would make a line feed of it
        return true;
    case '\t':
    case '\n':
        return false;
    default:
        break;
    }
    if (isXmlCharacter(codePoint)) {
        return false;
    }
    m_hasImpossible = true;
    out->append("&#65533;");
    return true;
}

void XmlWriter::escapeUnencodable(uint codePoint, std::string *out)
{
    out->append("&#" + std::to_string(codePoint) + ';');
}

void XmlWriter::tell(Messages *messages) const
{
    RecordFormat::tell(messages);
    if (m_impossibleValues > 0) {
        messages->warn(
            translated(QT_TRANSLATE_NOOP("XmlWriter",
                                         "%1 value(s) contain characters that XML cannot hold. "
                                         "They are replaced by U+FFFD."))
                .arg(Texts::count(m_impossibleValues)));
    }
}
