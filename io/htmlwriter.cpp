#include "htmlwriter.h"

#include "outputoptions.h"
#include "textencoder.h"

#include <QRegularExpression>
#include <QStringList>

namespace {

std::string indent(int depth)
{
    return std::string(size_t(depth) * 2, ' ');
}

bool isLineBreak(QChar c)
{
    return c == QLatin1Char('\r') || c == QLatin1Char('\n') || c == QChar(0x1e);
}

/// The end of a page that this writer made, with any of its line endings.
QString pageEnd()
{
    const QStringList parts{QString(),
                            QStringLiteral("</tbody>"),
                            QStringLiteral("</table>"),
                            QStringLiteral("</body>"),
                            QStringLiteral("</html>"),
                            QStringLiteral("\\z")};
    return parts.join(QLatin1String("[\\s\\x1e]*"));
}

} // namespace

HtmlWriter::HtmlWriter(const TextJob &job)
    : RecordFormat(job)
    , m_escapes(job.options.htmlEncode)
{
    if (m_escapes) {
        watchFor("&<>\"");
    }
}

QString HtmlWriter::syntax() const
{
    return QStringLiteral("<>/!\"=&;#:,-. abcdefghijklmnopqrstuvwxyzADEFHOTV0123456789{}") +
           lineEndingText(options().lineEnding);
}

bool HtmlWriter::prepare(Messages *, const Progress &)
{
    Field field;
    field.before = indent(5) + "<td>";
    field.after = "</td>" + lineEnd();
    field.empty = field.before + field.after;
    fields().assign(size_t(dataset().columnCount().value()), field);
    frame().firstRow = indent(4) + "<tr>" + lineEnd();
    frame().nextRow = frame().firstRow;
    frame().rowEnd = indent(4) + "</tr>" + lineEnd();
    return true;
}

void HtmlWriter::begin(bool withHeader)
{
    const auto alwaysEscaped = [this](const QString &text) {
        return escaped(text.toHtmlEscaped());
    };
    // Escaped already: an ampersand must not be escaped again.
    const bool escapes = m_escapes;
    m_escapes = false;
    if (!options().fileComment.isEmpty()) {
        writeLine("<!--" + alwaysEscaped(options().fileComment) + "-->");
    }
    writeLine("<!DOCTYPE html>");
    writeLine("<html>");
    writeLine(indent(1) + "<head>");
    writeLine(indent(2) + "<meta charset=\"" + out()->codec().name().toStdString() + "\"/>");
    writeLine(indent(2) + "<title>" + alwaysEscaped(title()) + "</title>");
    m_escapes = escapes;
    writeLine(indent(2) +
              "<style>table,td,th{border:1px solid black;text-align:left;vertical-align:top;"
              "border-spacing:0px;border-color:gray;font-family:Verdana,sans-serif;}"
              "th{background-color:#E0E0E0;}td,th{padding:5px;}</style>");
    writeLine(indent(1) + "</head>");
    writeLine(indent(1) + "<body>");
    writeLine(indent(2) + "<table>");
    writeLine(indent(3) + "<tbody>");
    if (withHeader) {
        writeHeader();
    }
}

void HtmlWriter::writeHeader()
{
    writeLine(indent(4) + "<tr>");
    for (const QString &name : dataset().header()) {
        writeLine(indent(5) + "<th>" + escaped(name) + "</th>");
    }
    writeLine(indent(4) + "</tr>");
}

/// A page whose last row has another number of cells is left alone.
bool HtmlWriter::canContinue(const OldText &old, QString *lastPart)
{
    static const QRegularExpression start(
        QStringLiteral("\\A(<!--.*?-->)?[\\s\\x1e]*<!DOCTYPE html>"),
        QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression end(pageEnd());
    static const QRegularExpression cell(QStringLiteral("</t[dh]>"));
    const QRegularExpressionMatch match = end.match(old.tail);
    if (!start.match(old.head).hasMatch() || !match.hasMatch()) {
        return false;
    }
    const QString rows = old.tail.left(match.capturedStart());
    const int lastRow = rows.lastIndexOf(QLatin1String("<tr>"));
    if (lastRow >= 0 && rows.mid(lastRow).count(cell) != dataset().columnCount().value()) {
        return false;
    }
    // The line end behind the last row stays with it.
    int from = match.capturedStart();
    while (from < old.tail.size() && isLineBreak(old.tail.at(from))) {
        ++from;
    }
    *lastPart = old.tail.mid(from);
    return true;
}

void HtmlWriter::resume(bool withHeader)
{
    if (withHeader) {
        writeHeader();
    }
}

void HtmlWriter::end()
{
    writeLine(indent(3) + "</tbody>");
    writeLine(indent(2) + "</table>");
    writeLine(indent(1) + "</body>");
    writeLine("</html>");
}

bool HtmlWriter::escapeCharacter(uint codePoint, std::string *out)
{
    if (!m_escapes) {
        return false;
    }
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
    case '"':
        out->append("&quot;");
        return true;
    default:
        return false;
    }
}

void HtmlWriter::escapeUnencodable(uint codePoint, std::string *out)
{
    if (!options().htmlEncode || QChar::isSurrogate(codePoint)) {
        RecordFormat::escapeUnencodable(codePoint, out);
    } else {
        out->append("&#" + std::to_string(codePoint) + ';');
    }
}
