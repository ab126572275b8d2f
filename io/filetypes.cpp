#include "filetypes.h"

#include <QCoreApplication>
#include <array>

namespace {

struct FileTypeFacts
{
    FileType type;
    const char *label;
    const char *extension;
};

constexpr std::array<FileTypeFacts, 11> fileTypeFacts{{
    {FileType::DelimitedText, QT_TRANSLATE_NOOP("FileTypes", "Delimited text"), "csv"},
    {FileType::ExcelXlsx, QT_TRANSLATE_NOOP("FileTypes", "Excel XLSX"), "xlsx"},
    {FileType::ExcelXls, QT_TRANSLATE_NOOP("FileTypes", "Excel XLS"), "xls"},
    {FileType::FixedWidth, QT_TRANSLATE_NOOP("FileTypes", "Fixed width"), "txt"},
    {FileType::Json, QT_TRANSLATE_NOOP("FileTypes", "JSON"), "json"},
    {FileType::Xml, QT_TRANSLATE_NOOP("FileTypes", "XML"), "xml"},
    {FileType::VCard, QT_TRANSLATE_NOOP("FileTypes", "vCard"), "vcf"},
    {FileType::Yaml, QT_TRANSLATE_NOOP("FileTypes", "YAML"), "yaml"},
    {FileType::Html, QT_TRANSLATE_NOOP("FileTypes", "HTML"), "html"},
    {FileType::Markdown, QT_TRANSLATE_NOOP("FileTypes", "Markdown"), "md"},
    {FileType::PlainText, QT_TRANSLATE_NOOP("FileTypes", "Plain text"), "log"},
}};

// A number that is not listed (from a damaged document) counts as the first choice.
const FileTypeFacts &factsOf(FileType type)
{
    const auto number = size_t(type);
    return number < fileTypeFacts.size() ? fileTypeFacts[number] : fileTypeFacts[0];
}

QString translated(const char *text)
{
    return QCoreApplication::translate("FileTypes", text);
}

} // namespace

QString fileTypeLabel(FileType type)
{
    return translated(factsOf(type).label);
}

QString defaultExtension(FileType type)
{
    return QLatin1String(factsOf(type).extension);
}

QList<FileType> fileTypes()
{
    QList<FileType> types;
    for (const FileTypeFacts &facts : fileTypeFacts) {
        types.append(facts.type);
    }
    return types;
}

bool isSpreadsheet(FileType type)
{
    return type == FileType::ExcelXlsx || type == FileType::ExcelXls;
}

bool isReadAsDelimitedText(FileType type)
{
    return type == FileType::DelimitedText || type == FileType::Yaml || type == FileType::Html ||
           type == FileType::Markdown;
}

bool ignoresLeadingRows(FileType type)
{
    switch (type) {
    case FileType::DelimitedText:
    case FileType::ExcelXlsx:
    case FileType::ExcelXls:
    case FileType::FixedWidth:
    case FileType::VCard:
    case FileType::PlainText:
        return true;
    default:
        return false;
    }
}

bool mayHaveHeader(FileType type)
{
    return type != FileType::Json && type != FileType::Xml && type != FileType::VCard;
}

QString delimiterLabel(Delimiter delimiter)
{
    switch (delimiter) {
    case Delimiter::Automatic:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Automatic"));
    case Delimiter::Comma:
        break;
    case Delimiter::SemiColon:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Semi-colon (;)"));
    case Delimiter::Colon:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Colon (:)"));
    case Delimiter::Tab:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Tab (\\t)"));
    case Delimiter::Pipe:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Pipe (|)"));
    case Delimiter::Caret:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Caret (^)"));
    case Delimiter::Space:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Space ( )"));
    case Delimiter::Custom:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Custom"));
    case Delimiter::UnitSeparator:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Unit separator (0x1F)"));
    }
    return translated(QT_TRANSLATE_NOOP("FileTypes", "Comma (,)"));
}

QChar delimiterCharacter(Delimiter delimiter, const QString &custom)
{
    switch (delimiter) {
    case Delimiter::SemiColon:
        return QLatin1Char(';');
    case Delimiter::Colon:
        return QLatin1Char(':');
    case Delimiter::Tab:
        return QLatin1Char('\t');
    case Delimiter::Pipe:
        return QLatin1Char('|');
    case Delimiter::Caret:
        return QLatin1Char('^');
    case Delimiter::Space:
        return QLatin1Char(' ');
    case Delimiter::UnitSeparator:
        return QChar(0x1f);
    case Delimiter::Custom:
        return custom.isEmpty() ? QLatin1Char(',') : custom.front();
    case Delimiter::Automatic:
    case Delimiter::Comma:
        break;
    }
    return QLatin1Char(',');
}

QString delimiterText(Delimiter delimiter, const QString &custom)
{
    if (delimiter == Delimiter::Custom && custom.size() > 1 && custom.at(0).isHighSurrogate() &&
        custom.at(1).isLowSurrogate()) {
        return custom.left(2);
    }
    return delimiterCharacter(delimiter, custom);
}

QList<Delimiter> delimiters(bool withAutomatic, bool withColonAndSpace, bool withCustom)
{
    QList<Delimiter> choices;
    if (withAutomatic) {
        choices << Delimiter::Automatic;
    }
    choices << Delimiter::Comma << Delimiter::SemiColon;
    if (withColonAndSpace) {
        choices << Delimiter::Colon;
    }
    choices << Delimiter::Pipe << Delimiter::Caret << Delimiter::Tab << Delimiter::UnitSeparator;
    if (withColonAndSpace) {
        choices << Delimiter::Space;
    }
    if (withCustom) {
        choices << Delimiter::Custom;
    }
    return choices;
}

QString inputQuotingLabel(InputQuoting quoting)
{
    switch (quoting) {
    case InputQuoting::Automatic:
        break;
    case InputQuoting::Quoted:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Quoted"));
    case InputQuoting::Unquoted:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Unquoted"));
    }
    return translated(QT_TRANSLATE_NOOP("FileTypes", "Automatic"));
}

QString outputQuotingLabel(OutputQuoting quoting)
{
    switch (quoting) {
    case OutputQuoting::AsNeeded:
        break;
    case OutputQuoting::Always:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Always"));
    case OutputQuoting::Never:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Never"));
    }
    return translated(QT_TRANSLATE_NOOP("FileTypes", "As needed"));
}

QString lineEndingLabel(LineEnding ending, bool concrete)
{
    switch (ending) {
    case LineEnding::Automatic:
        return concrete ? lineEndingLabel(LineEnding::Windows, true)
                        : translated(QT_TRANSLATE_NOOP("FileTypes", "Automatic"));
    case LineEnding::Windows:
        break;
    case LineEnding::Unix:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Mac\\Unix (LF)"));
    case LineEnding::OldMac:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Old Mac (CR)"));
    case LineEnding::RecordSeparator:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Record separator (0x1E)"));
    }
    return translated(QT_TRANSLATE_NOOP("FileTypes", "Windows (CRLF)"));
}

QString lineEndingText(LineEnding ending)
{
    switch (ending) {
    case LineEnding::Automatic:
    case LineEnding::Windows:
        break;
    case LineEnding::Unix:
        return QStringLiteral("\n");
    case LineEnding::OldMac:
        return QStringLiteral("\r");
    case LineEnding::RecordSeparator:
        return QString(QChar(0x1e));
    }
    return QStringLiteral("\r\n");
}

QString writeModeLabel(WriteMode mode)
{
    switch (mode) {
    case WriteMode::Disabled:
        break;
    case WriteMode::Overwrite:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Overwrite"));
    case WriteMode::Append:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "Append"));
    case WriteMode::New:
        return translated(QT_TRANSLATE_NOOP("FileTypes", "New"));
    }
    return translated(QT_TRANSLATE_NOOP("FileTypes", "Disabled"));
}

FileType fileTypeForExtension(const QString &extension, FileType otherwise)
{
    const QString wanted = extension.toLower();
    for (const FileTypeFacts &facts : fileTypeFacts) {
        if (wanted == QLatin1String(facts.extension)) {
            return facts.type;
        }
    }
    if (wanted == QLatin1String("geojson")) {
        return FileType::Json;
    }
    if (wanted == QLatin1String("opml")) {
        return FileType::Xml;
    }
    return otherwise;
}
