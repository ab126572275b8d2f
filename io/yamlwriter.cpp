#include "yamlwriter.h"

#include "outputoptions.h"
#include "textencoder.h"
#include "utf8.h"
#include "yamltext.h"

#include <QRegularExpression>

namespace {

// Readers take longer texts in front of a colon for values.
constexpr int longestSimpleKey = 1000;

} // namespace

YamlWriter::YamlWriter(const TextJob &job)
    : RecordFormat(job)
{
    useRealLineEnds();
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

void YamlWriter::appendQuoted(std::string_view value, std::string *text) const
{
    text->push_back('"');
    size_t done = 0;
    for (size_t at = 0; at < value.size();) {
        const size_t start = at;
        const uint c = Utf8::nextCodePoint(value, &at);
        const auto flush = [&] {
            text->append(value.substr(done, start - done));
            done = at;
        };
        if (c >= 0x20 && c < 0x7f && c != '"' && c != '\\' && out()->codec().holdsAscii()) {
            continue;
        }
        std::string escape;
        if (YamlText::escapeCharacter(c, &escape)) {
            flush();
            text->append(escape);
        } else if (!out()->codec().holds(c)) {
            flush();
            YamlText::appendEscape(c, text);
        }
    }
    text->append(value.substr(done));
    text->push_back('"');
}

/// The name with the colon behind it.
std::string YamlWriter::key(const QString &name) const
{
    const std::string bytes = Utf8::encoded(name);
    std::string text;
    if (YamlText::isPlainText(bytes) && isHeld(bytes) && !name.contains(QLatin1Char(':'))) {
        text = bytes;
    } else {
        appendQuoted(bytes, &text);
    }
    return name.size() > longestSimpleKey ? "? " + text + lineEnd() + "  : " : text + ": ";
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
            writeLine('#' + encodable(line));
        }
    }
    writeLine("---");
}

/// Rows go to the end of a list that this writer made.
bool YamlWriter::canContinue(const OldText &old, QString *)
{
    static const QRegularExpression start(
        QStringLiteral("\\A(#[^\\r\\n]*(\\r\\n|\\r|\\n))*---\\s"));
    static const QRegularExpression lastLine(
        QStringLiteral("(\\A|[\\r\\n])(---|  [^\\r\\n]*)\\s*\\z"));
    return start.match(old.head).hasMatch() && lastLine.match(old.tail).hasMatch();
}

bool YamlWriter::isPlain(int, std::string_view value)
{
    return YamlText::isPlain(value) && isHeld(value);
}

void YamlWriter::format(int, std::string_view value, std::string *out)
{
    appendQuoted(value, out);
}

bool YamlWriter::escapeCharacter(uint, std::string *)
{
    return false; // comments only
}
