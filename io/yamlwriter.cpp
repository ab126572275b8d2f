#include "yamlwriter.h"

#include "messages.h"
#include "outputoptions.h"
#include "textencoder.h"
#include "texts.h"
#include "utf8.h"
#include "yamltext.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace {

// Readers look no further than 1024 characters for the colon behind a name.
constexpr size_t longestSimpleKey = 1000;

/// The lines that are neither empty nor comments nor indented.
QStringList outermostLines(const QString &text)
{
    static const QRegularExpression lineEnd(QStringLiteral("\\r\\n|\\r|\\n"));
    QStringList lines;
    for (const QString &line : text.split(lineEnd, Qt::SkipEmptyParts)) {
        const QChar first = line.front();
        if (first != QLatin1Char('#') && first != QLatin1Char(' ') && first != QLatin1Char('\t')) {
            lines.append(line);
        }
    }
    return lines;
}

/// The start of an element that is a mapping, as far as its first line shows.
bool startsRow(const QString &line)
{
    static const QRegularExpression start(
        QStringLiteral("\\A-(?:[ \\t]*|[ \\t]+(?:\\{.*|[^\\[].*:(?:[ \\t].*)?))\\z"));
    return start.match(line).hasMatch();
}

} // namespace

YamlWriter::YamlWriter(const TextJob &job)
    : RecordFormat(job)
{
    useRealLineEnds();
    watchForControls();
    // The last three begin characters that readers refuse or end lines at.
    watchInEscapes("\"\\\x7f\xc2\xe2\xef");
}

QString YamlWriter::syntax() const
{
    return QStringLiteral("#-: \"\\?{}0123456789abcdefnrtuxU\r\n");
}

/// Whether the encoding has all characters.
bool YamlWriter::isHeld(std::string_view value) const
{
    const OutputCodec &codec = out()->codec();
    return codec.isUnicode() || (codec.holdsAscii() && Utf8::isAscii(value)) ||
           codec.holds(Utf8::decoded(value));
}

void YamlWriter::appendQuoted(std::string_view value, std::string *out)
{
    out->push_back('"');
    escape(value, out);
    out->push_back('"');
    m_surrogateValues += m_hasSurrogate ? 1 : 0;
    m_hasSurrogate = false;
}

/// The name with the colon behind it.
std::string YamlWriter::key(const QString &name)
{
    const std::string bytes = Utf8::encoded(name);
    std::string text;
    if (YamlText::isPlainText(bytes) && isHeld(bytes) && !name.contains(QLatin1Char(':'))) {
        text = bytes;
    } else {
        appendQuoted(bytes, &text);
    }
    return text.size() > longestSimpleKey ? "? " + text + lineEnd() + "  : " : text + ": ";
}

bool YamlWriter::prepare(Messages *messages, const Progress &)
{
    for (const QString &name : uniqueNames(messages)) {
        Field field;
        field.before = "  " + key(name);
        field.after = lineEnd();
        field.empty = field.before + "\"\"" + lineEnd();
        field.plain = Plain::ByValue;
        fields().push_back(std::move(field));
    }
    frame().firstRow = "-" + lineEnd();
    frame().nextRow = frame().firstRow;
    frame().noFields = "  {}" + lineEnd();
    frame().omitsEmpty = options().removeEmpty;
    return true;
}

void YamlWriter::begin(bool)
{
    if (!options().fileComment.isEmpty()) {
        static const QRegularExpression lineBreak(
            QStringLiteral("\\r\\n|[\\r\\n\\x{85}\\x{2028}\\x{2029}]"));
        const QStringList lines = options().fileComment.split(lineBreak);
        for (const QString &line : lines) {
            writeLine('#' + cleanComment(line, YamlText::isPrintable));
        }
    }
    writeLine("---");
}

/// Rows go to the end of a list of mappings that stands in the first column.
bool YamlWriter::canContinue(const OldText &old, QString *)
{
    QStringList first = outermostLines(old.head);
    while (!first.isEmpty() && first.front().startsWith(QLatin1Char('%'))) {
        first.removeFirst();
    }
    const bool hasStart = !first.isEmpty() && first.front().trimmed() == QLatin1String("---");
    if (hasStart && first.size() == 1) {
        return old.head == old.tail && old.head.trimmed().endsWith(first.front().trimmed());
    }
    QStringList last = outermostLines(old.tail);
    if (old.tail != old.head && !last.isEmpty()) {
        last.removeFirst(); // it need not be whole
    }
    return first.size() > (hasStart ? 1 : 0) && startsRow(first.at(hasStart ? 1 : 0)) &&
           (last.isEmpty() || startsRow(last.back()));
}

bool YamlWriter::isPlain(int, std::string_view value)
{
    return YamlText::isPlain(value) && isHeld(value);
}

void YamlWriter::format(int, std::string_view value, std::string *out)
{
    appendQuoted(value, out);
}

bool YamlWriter::escapeCharacter(uint codePoint, std::string *out)
{
    m_hasSurrogate = m_hasSurrogate || QChar::isSurrogate(codePoint);
    return YamlText::escapeCharacter(codePoint, out);
}

void YamlWriter::escapeUnencodable(uint codePoint, std::string *out)
{
    YamlText::appendEscape(codePoint, out);
}

void YamlWriter::tell(Messages *messages) const
{
    RecordFormat::tell(messages);
    if (m_surrogateValues > 0) {
        messages->warn(QCoreApplication::translate(
                           "YamlWriter", "%1 value(s) contain half a character (an unpaired "
                                         "surrogate). It is written as an escape, which not every "
                                         "YAML reader accepts.")
                           .arg(Texts::count(m_surrogateValues)));
    }
}
