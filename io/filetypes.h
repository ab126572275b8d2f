#pragma once

#include <QChar>
#include <QList>
#include <QString>
#include <QStringList>

/// Choices that inputs and outputs share. The numbers are stored in documents; each has one label
/// function.

enum class Medium : qint32 { File = 0, Clipboard = 1 };

enum class FileType : qint32 {
    DelimitedText = 0,
    ExcelXlsx = 1,
    ExcelXls = 2,
    FixedWidth = 3,
    Json = 4,
    Xml = 5,
    VCard = 6,
    Yaml = 7,
    Html = 8,
    Markdown = 9,
    PlainText = 10
};

enum class Delimiter : qint32 {
    Automatic = 0,
    Comma = 1,
    SemiColon = 2,
    Colon = 3,
    Tab = 4,
    Pipe = 5,
    Caret = 6,
    Space = 7,
    Custom = 8,
    UnitSeparator = 9
};

enum class InputQuoting : qint32 { Automatic = 0, Quoted = 1, Unquoted = 2 };
enum class OutputQuoting : qint32 { AsNeeded = 0, Always = 1, Never = 2 };

enum class LineEnding : qint32 {
    Automatic = 0,
    Windows = 1,
    Unix = 2,
    OldMac = 3,
    RecordSeparator = 4
};

enum class WriteMode : qint32 { Disabled = 0, Overwrite = 1, Append = 2, New = 3 };

QString fileTypeLabel(FileType type);
/// "csv", "xlsx", ...: the extension that a new file of the type gets.
QString defaultExtension(FileType type);
/// All types in stored order.
QList<FileType> fileTypes();
bool isSpreadsheet(FileType type);
/// True for the types that the reader of delimited text reads.
bool isReadAsDelimitedText(FileType type);
/// True for the inputs whose first rows can be left out.
bool ignoresLeadingRows(FileType type);
/// True for the inputs whose first row may hold the column names; JSON, XML and vCard name their
/// values themselves.
bool mayHaveHeader(FileType type);

QString delimiterLabel(Delimiter delimiter);
/// The character; `custom` is used for Custom (its first character). Automatic gives a comma.
QChar delimiterCharacter(Delimiter delimiter, const QString &custom);
/// The same as a text, which also holds a custom character beyond the first 65,536 whole.
QString delimiterText(Delimiter delimiter, const QString &custom);
/// The choices in the order in which they are offered.
QList<Delimiter> delimiters(bool withAutomatic, bool withColonAndSpace, bool withCustom);

QString inputQuotingLabel(InputQuoting quoting);
QString outputQuotingLabel(OutputQuoting quoting);
/// With `concrete`, Automatic reads as what it stands for, "Windows (CRLF)".
QString lineEndingLabel(LineEnding ending, bool concrete);
QString lineEndingText(LineEnding ending);
QString writeModeLabel(WriteMode mode);

/// The type that a file's extension (without the dot, any case) stands for in the built-in table.
FileType fileTypeForExtension(const QString &extension,
                              FileType otherwise = FileType::DelimitedText);
