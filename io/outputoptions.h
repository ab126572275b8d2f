#pragma once

#include "filetypes.h"

#include <QString>
#include <QStringList>

/// Everything that an output item is told about what it writes. The defaults are those of a
/// document that leaves the option out.
struct OutputOptions
{
    Medium medium = Medium::File;
    QString path;
    FileType fileType = FileType::DelimitedText;
    WriteMode writeMode = WriteMode::Overwrite;
    bool multiFile = false;
    QString multiFileColumn;
    bool multiFileConfirm = true;
    Delimiter delimiter = Delimiter::Automatic;
    QString customDelimiter;
    OutputQuoting quoting = OutputQuoting::AsNeeded;
    LineEnding lineEnding = LineEnding::Automatic;
    QString encoding = QStringLiteral("UTF-8");
    bool byteOrderMark = false;
    bool writeHeader = true;
    /// When appending, write the header only into an empty file.
    bool headerOnlyIfEmpty = false;
    bool removeEmpty = false;
    /// 0 "Automatic", 1 by column.
    int jsonTypes = 0;
    QStringList jsonManualColumnTypes;
    /// 0 "Automatic", 1 by column.
    int excelOutput = 0;
    QStringList excelManualColumnFormats;
    bool excelUseStyleTemplate = false;
    QString excelStyleTemplatePath;
    bool overwriteSheet = false;
    QString worksheet;
    QString xmlAboveRoot;
    QString xmlRoot;
    QString xmlBelowRoot;
    QString xmlRow;
    bool htmlEncode = true;
    QString fileComment;
};
