#pragma once

#include "filetypes.h"

#include <QList>
#include <QString>
#include <QStringList>

enum class SchemaMissing : qint32 { Add = 0, Error = 1 };
enum class SchemaOrder : qint32 { Reorder = 0, Error = 1 };
enum class SchemaExtra : qint32 { AddToEnd = 0, Ignore = 1, Error = 2 };

/// Everything that an input item is told about what it reads. The defaults are those of a document
/// that leaves the option out.
struct InputOptions
{
    Medium medium = Medium::File;
    QString path;
    /// The text of a clipboard input.
    QString text;
    FileType fileType = FileType::DelimitedText;
    Delimiter delimiter = Delimiter::Automatic;
    QString customDelimiter;
    InputQuoting quoting = InputQuoting::Automatic;
    bool ignoreRepeatedDelimiter = false;
    /// "Automatic" or a codec's name.
    QString encoding = QStringLiteral("Automatic");
    int ignoredRows = 0;
    bool header = true;
    bool trim = false;
    bool simplify = false;
    bool ignoreEmptyRows = true;
    bool ignoreEmptyColumns = false;
    bool ignoreExcelHiddenRows = false;
    bool ignoreExcelHiddenColumns = false;
    bool autoFixedWidths = true;
    QList<int> fixedWidths;
    QString worksheet;
    bool jsonArraysAsRows = true;
    bool watching = false;
    bool showMeta = false;
    QString metaText;
    bool schemaInUse = false;
    QStringList schemaColumnNames;
    QStringList schemaMissingValues;
    SchemaMissing schemaMissing = SchemaMissing::Add;
    SchemaOrder schemaOrder = SchemaOrder::Reorder;
    SchemaExtra schemaExtra = SchemaExtra::AddToEnd;
};
