#include "jsonwriter.h"

#include "messages.h"
#include "outputoptions.h"
#include "textencoder.h"
#include "texts.h"
#include "utf8.h"
#include "valueinterpretation.h"

#include <QCoreApplication>
#include <QLocale>
#include <QRegularExpression>
#include <cmath>

namespace {

constexpr int columnsInNote = 10;
constexpr int mostMisfits = 100;

QString translated(const char *text)
{
    return QCoreApplication::translate("JsonWriter", text);
}

void appendEscape(uint utf16Unit, std::string *out)
{
    static const char digits[] = "0123456789abcdef";
    out->append("\\u");
    for (int shift = 12; shift >= 0; shift -= 4) {
        out->push_back(digits[utf16Unit >> shift & 0xf]);
    }
}

} // namespace

JsonWriter::JsonWriter(const TextJob &job)
    : RecordFormat(job)
{
    useRealLineEnds();
    watchFor("\"\\");
    watchForControls();
}

QString JsonWriter::syntax() const
{
    return QStringLiteral("[]{}\",: \\0123456789-+.eabcdflnrstu\r\n");
}

bool JsonWriter::prepare(Messages *messages, const Progress &)
{
    chooseTypes(messages);
    const QStringList names = uniqueNames(messages);
    for (int i = 0; i < names.size(); ++i) {
        Field field;
        const std::string start = "    \"" + escaped(names.at(i)) + "\": ";
        field.empty = start + "null";
        field.before = start;
        switch (m_types[size_t(i)]) {
        case JsonType::Boolean:
        case JsonType::Number:
        case JsonType::RawData:
            field.plain = Plain::ByValue;
            break;
        case JsonType::Automatic:
        case JsonType::String:
            field.before += '"';
            field.after = "\"";
            break;
        }
        fields().push_back(std::move(field));
    }
    frame().firstRow = lineEnd() + "  {" + lineEnd();
    frame().nextRow = "," + frame().firstRow;
    frame().rowEnd = lineEnd() + "  }";
    frame().separator = "," + lineEnd();
    frame().omitsEmpty = options().removeEmpty;
    return true;
}

void JsonWriter::chooseTypes(Messages *messages)
{
    const bool isManual = options().jsonTypes != 0;
    QStringList chosen;
    for (ColIndex column(0); column < dataset().columnCount(); ++column) {
        JsonType type = isManual ? jsonTypeOf(options().jsonManualColumnTypes.value(column.value()))
                                 : JsonType::Automatic;
        if (type == JsonType::Automatic) {
            type = automaticJsonType(dataset().columnReader(column), dataset().rowCount());
            chosen.append(dataset().columnName(column) + QLatin1String(": ") + jsonTypeLabel(type));
        }
        m_types.push_back(type);
    }
    if (chosen.isEmpty()) {
        return;
    }
    QStringList lines{translated(
        QT_TRANSLATE_NOOP("JsonWriter", "Value types=Automatic sets JSON column types as:"))};
    lines += chosen.mid(0, columnsInNote);
    if (chosen.size() > columnsInNote) {
        const int others = chosen.size() - columnsInNote;
        lines.append(translated(QT_TRANSLATE_NOOP("JsonWriter", "+ %1 other JSON type %2"))
                         .arg(Texts::count(others), Texts::columns(others)));
    }
    lines.append(
        translated(QT_TRANSLATE_NOOP("JsonWriter", "Set 'Value types' option to change.\n")));
    const QString note = lines.join(QLatin1Char('\n'));
    // Many files of one item mostly have the same types.
    if (!messages->information.contains(note)) {
        messages->note(note);
    }
}

void JsonWriter::begin(bool)
{
    write("[");
}

bool JsonWriter::canContinue(const OldText &old, QString *lastPart)
{
    static const QRegularExpression startOfArray(QStringLiteral("\\A[ \\t\\r\\n]*\\["));
    static const QRegularExpression endOfArray(
        QStringLiteral("([}\\[])([ \\t\\r\\n]*\\][ \\t\\r\\n]*)\\z"));
    const QRegularExpressionMatch match = endOfArray.match(old.tail);
    if (!startOfArray.match(old.head).hasMatch() || !match.hasMatch()) {
        return false;
    }
    if (match.captured(1) == QLatin1String("}")) {
        setHasRows();
    }
    *lastPart = match.captured(2);
    return true;
}

void JsonWriter::end()
{
    write(lineEnd());
    writeLine("]");
}

bool JsonWriter::isPlain(int column, std::string_view value)
{
    switch (m_types[size_t(column)]) {
    case JsonType::Boolean:
        return value == "true" || value == "false";
    case JsonType::Number:
        return isJsonNumber(value);
    default:
        return false;
    }
}

void JsonWriter::format(int column, std::string_view value, std::string *out)
{
    bool fits = false;
    switch (m_types[size_t(column)]) {
    case JsonType::RawData:
        m_isRaw = true;
        escape(value, out);
        m_isRaw = false;
        if (!isJsonValue(value)) {
            reportMisfit(column, value);
        }
        return;
    case JsonType::Boolean: {
        const bool isTrue = toBoolean(value, true, false, &fits);
        if (fits) {
            out->append(isTrue ? "true" : "false");
        }
        break;
    }
    case JsonType::Number:
        fits = formatNumber(value, out);
        break;
    default:
        escape(value, out); // its quotes stand around it already
        return;
    }
    if (!fits) {
        // As a text it is at least not lost.
        reportMisfit(column, value);
        out->push_back('"');
        escape(value, out);
        out->push_back('"');
    }
}

bool JsonWriter::formatNumber(std::string_view value, std::string *out) const
{
    bool ok = false;
    const qint64 whole = m_numbers.toInteger64(value, false, false, &ok);
    if (ok) {
        out->append(std::to_string(whole));
        return true;
    }
    const double number = m_numbers.toReal(value, false, false, &ok);
    if (!ok || !std::isfinite(number)) {
        return false;
    }
    out->append(QByteArray::number(number, 'g', QLocale::FloatingPointShortest).toStdString());
    return true;
}

bool JsonWriter::escapeCharacter(uint codePoint, std::string *out)
{
    if (m_isRaw) {
        return false;
    }
    switch (codePoint) {
    case '"':
    case '\\':
        out->push_back('\\');
        out->push_back(char(codePoint));
        return true;
    case '\b':
        out->append("\\b");
        return true;
    case '\f':
        out->append("\\f");
        return true;
    case '\n':
        out->append("\\n");
        return true;
    case '\r':
        out->append("\\r");
        return true;
    case '\t':
        out->append("\\t");
        return true;
    default:
        break;
    }
    if (codePoint < 0x20) {
        appendEscape(codePoint, out);
    }
    return codePoint < 0x20;
}

void JsonWriter::escapeUnencodable(uint codePoint, std::string *out)
{
    if (QChar::requiresSurrogates(codePoint)) {
        appendEscape(QChar::highSurrogate(codePoint), out);
        appendEscape(QChar::lowSurrogate(codePoint), out);
    } else {
        appendEscape(codePoint, out);
    }
}

void JsonWriter::reportMisfit(int column, std::string_view value)
{
    if (m_misfits.size() >= mostMisfits) {
        ++m_misfitCount;
        return;
    }
    const QString text =
        translated(QT_TRANSLATE_NOOP("JsonWriter", "'%1' not of type %2 in column %3."))
            .arg(Utf8::decoded(value), jsonTypeLabel(m_types[size_t(column)]),
                 dataset().columnName(ColIndex(column)));
    if (!m_misfits.contains(text)) {
        m_misfits.append(text);
    }
}

void JsonWriter::tell(Messages *messages) const
{
    RecordFormat::tell(messages);
    messages->warnings += m_misfits;
    if (m_misfitCount > 0) {
        messages->warn(translated(QT_TRANSLATE_NOOP("JsonWriter",
                                                    "%1 more value(s) not of their column's type."))
                           .arg(Texts::count(m_misfitCount)));
    }
}
