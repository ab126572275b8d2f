#include "cellformats.h"
#include "columnchoices.h"
#include "encodingbox.h"
#include "graphscene.h"
#include "jsontypes.h"
#include "optionpane.h"
#include "outputnode.h"
#include "outputoptionseditor.h"
#include "pathfield.h"
#include "spreadsheetoutput.h"
#include "textencoder.h"
#include "textoutput.h"
#include "xmlnames.h"

#include <QFileInfo>

namespace {

bool isFile(const OutputOptions &options)
{
    return options.medium == Medium::File;
}

bool isOneFile(const OutputOptions &options)
{
    return isFile(options) && !options.multiFile;
}

bool isManyFiles(const OutputOptions &options)
{
    return isFile(options) && options.multiFile;
}

bool isWorkbook(const OutputOptions &options)
{
    return isFile(options) && isSpreadsheet(options.fileType);
}

/// A spreadsheet goes to the clipboard as text with tabs.
bool isText(const OutputOptions &options)
{
    return !isWorkbook(options);
}

bool isTextFile(const OutputOptions &options)
{
    return isFile(options) && isText(options);
}

bool isOneOf(const OutputOptions &options, std::initializer_list<FileType> types)
{
    return std::find(types.begin(), types.end(), options.fileType) != types.end();
}

bool isDelimited(const OutputOptions &options)
{
    return options.fileType == FileType::DelimitedText;
}

bool mayWriteHeader(const OutputOptions &options)
{
    return isSpreadsheet(options.fileType) ||
           isOneOf(options, {FileType::DelimitedText, FileType::Html, FileType::Markdown});
}

QList<FileType> writableTypes()
{
    QList<FileType> types;
    for (const FileType type : fileTypes()) {
        if (isTextOutput(type) || isSpreadsheet(type)) {
            types.append(type);
        }
    }
    return types;
}

QString saveFilters()
{
    QStringList filters{OutputOptionsEditor::tr("All files (%1)").arg(QLatin1Char('*'))};
    for (const FileType type : writableTypes()) {
        filters.append(
            QStringLiteral("%1 (*.%2)").arg(fileTypeLabel(type), defaultExtension(type)));
    }
    return filters.join(QStringLiteral(";;"));
}

/// A path whose extension stands for the old type gets that of the new one.
void adaptExtension(OutputOptions *options, FileType type)
{
    const QString extension = QFileInfo(options->path).suffix();
    if (!extension.isEmpty() &&
        extension.compare(defaultExtension(options->fileType), Qt::CaseInsensitive) == 0) {
        options->path.chop(extension.size());
        options->path.append(defaultExtension(type));
    }
}

QString xmlNameNotice(const QString &name, const QString &encoding)
{
    const OutputCodec codec(encoding);
    if (!codec.isKnown()) {
        return QString();
    }
    const QStringList problems = xmlNameProblems(name, codec);
    return problems.isEmpty() ? QString()
                              : OutputOptionsEditor::tr("'%1' is not a name that XML allows: %2.")
                                    .arg(name, problems.join(QStringLiteral(", ")));
}

QString lineEndingNotice(const OutputOptions &options)
{
    const bool isFit = isOneOf(options, {FileType::DelimitedText, FileType::Html}) ||
                       isSpreadsheet(options.fileType);
    return options.lineEnding != LineEnding::RecordSeparator || isFit
               ? QString()
               : OutputOptionsEditor::tr("'%1' does not end a line of %2, '%3' is used.")
                     .arg(lineEndingLabel(LineEnding::RecordSeparator, true),
                          fileTypeLabel(options.fileType), lineEndingLabel(LineEnding::Unix, true));
}

QString automaticOrByColumn(int choice)
{
    return choice == 0 ? OutputOptionsEditor::tr("Automatic")
                       : OutputOptionsEditor::tr("By column");
}

} // namespace

void OutputOptionsEditor::addTarget()
{
    m_form.addHeading(tr("Output"), tr("Where the table goes."));
    m_form.addChoice<Medium>(
        "medium", tr("Target"), &OutputOptions::medium, {Medium::File, Medium::Clipboard},
        [](Medium medium) { return medium == Medium::File ? tr("File") : tr("Clipboard"); });
    m_form
        .addChoice<FileType>("file_type", tr("Type"), &OutputOptions::fileType, writableTypes(),
                             fileTypeLabel, adaptExtension)
        .noticing([](const OutputOptions &options) {
            return writableTypes().contains(options.fileType)
                       ? QString()
                       : tr("Files of this type cannot be written. Choose another one.");
        });
    m_form
        .addChoice<bool>(
            "single_or_multi", tr("Files"), &OutputOptions::multiFile, {false, true},
            [](bool multi) { return multi ? tr("From dataset column") : tr("One file"); })
        .shownIf(isFile);
    m_path = new PathField(PathField::Purpose::Save, tr("File"), m_pane->widget());
    m_path->setFilter(saveFilters());
    m_path->setDocumentFolder([this] { return m_scene->document().folder(); });
    connect(m_path, &PathField::chosen, this, &OutputOptionsEditor::takePath);
    m_form.addText("path", tr("File"), &OutputOptions::path, m_path, m_path->edit())
        .shownIf(isOneFile)
        .noticing([this](const OutputOptions &options) { return pathNotice(options); });
    addFilesColumn();
    m_form.addText("worksheet", tr("Sheet"), &OutputOptions::worksheet)
        .shownIf(isWorkbook)
        .refusing([](const QString &text) { return sheetNameProblem(text).trimmed(); })
        .hint(tr("Empty: the first sheet."));
}

void OutputOptionsEditor::addFilesColumn()
{
    QComboBox *column = makeBox(m_pane->widget());
    column->setEditable(true);
    column->setInsertPolicy(QComboBox::NoInsert);
    auto &field = m_form.addText("multi_file_column", tr("Files column"),
                                 &OutputOptions::multiFileColumn, column, column->lineEdit());
    field.shownIf(isManyFiles);
    field.noticing([this](const OutputOptions &options) {
        if (options.multiFileColumn.isEmpty()) {
            return tr("Choose the column that holds the path of each row's file.");
        }
        const QStringList names = columns();
        return names.isEmpty() || names.contains(options.multiFileColumn)
                   ? QString()
                   : tr("The table has no column '%1'.").arg(options.multiFileColumn);
    });
    const auto showText = field.load;
    field.load = [this, column, showText](const OutputOptions &options, bool force) {
        const QStringList names = columns();
        QStringList offered;
        for (int i = 0; i < column->count(); ++i) {
            offered.append(column->itemText(i));
        }
        if (offered != names) {
            const QString typed = column->currentText();
            column->clear();
            column->addItems(names);
            column->setCurrentIndex(-1);
            column->setEditText(typed);
        }
        showText(options, force);
    };
    m_form
        .addCheck("multi_file_confirm", tr("Ask before writing"), &OutputOptions::multiFileConfirm)
        .shownIf(isManyFiles);
}

void OutputOptionsEditor::addWriting()
{
    m_form.addHeading(tr("Writing"));
    m_form
        .addChoice<WriteMode>(
            "enable_output", tr("Write mode"), &OutputOptions::writeMode,
            {WriteMode::Disabled, WriteMode::Overwrite, WriteMode::Append, WriteMode::New},
            writeModeLabel)
        .shownIf(isFile);
    m_form
        .addCheck("overwrite_sheet", tr("Overwrite the sheet only"), &OutputOptions::overwriteSheet)
        .shownIf([](const OutputOptions &options) {
            return isWorkbook(options) && options.writeMode == WriteMode::Overwrite;
        });
    m_form.addCheck("write_header", tr("Write header"), &OutputOptions::writeHeader)
        .shownIf(mayWriteHeader);
    m_form
        .addCheck("write_header_first_append_only", tr("Write header (if empty)"),
                  &OutputOptions::headerOnlyIfEmpty)
        .shownIf([](const OutputOptions &options) {
            return isFile(options) && options.writeMode == WriteMode::Append &&
                   options.writeHeader && mayWriteHeader(options) &&
                   options.fileType != FileType::Markdown;
        });
}

void OutputOptionsEditor::addText()
{
    m_form.addHeading(tr("Layout"), tr("What the table looks like there."));
    m_form
        .addChoice<Delimiter>("delimiter", tr("Delimiter"), &OutputOptions::delimiter,
                              delimiters(true, true, true), delimiterLabel)
        .shownIf(isDelimited);
    m_form.addText("custom_delimiter", tr("Custom delimiter"), &OutputOptions::customDelimiter)
        .shownIf([](const OutputOptions &options) {
            return isDelimited(options) && options.delimiter == Delimiter::Custom;
        })
        .refusing(customDelimiterProblem)
        .noticing([](const OutputOptions &options) {
            return customDelimiterProblem(options.customDelimiter);
        });
    m_form
        .addChoice<OutputQuoting>(
            "quote", tr("Quoting"), &OutputOptions::quoting,
            {OutputQuoting::AsNeeded, OutputQuoting::Always, OutputQuoting::Never},
            outputQuotingLabel)
        .shownIf(isDelimited);
    m_form
        .addChoice<LineEnding>("line_endings", tr("Line endings"), &OutputOptions::lineEnding,
                               {LineEnding::Automatic, LineEnding::Windows, LineEnding::Unix,
                                LineEnding::OldMac, LineEnding::RecordSeparator},
                               [](LineEnding ending) { return lineEndingLabel(ending, false); })
        .shownIf(isText)
        .noticing(lineEndingNotice);
    QComboBox *encoding = makeEncodingBox(false, m_pane->widget());
    m_form
        .addText("encoding", tr("Encoding"), &OutputOptions::encoding, encoding,
                 encoding->lineEdit())
        .shownIf(isTextFile)
        .refusing([](const QString &text) { return encodingProblem(text, false); });
    m_form.addCheck("bom", tr("Byte Order Mark"), &OutputOptions::byteOrderMark)
        .shownIf(isTextFile);
    m_form.addCheck("remove_empty", tr("Remove empty"), &OutputOptions::removeEmpty)
        .shownIf([](const OutputOptions &options) {
            return isOneOf(options, {FileType::Json, FileType::Xml, FileType::Yaml});
        });
    m_form.addCheck("html_encode", tr("Escape special"), &OutputOptions::htmlEncode)
        .shownIf([](const OutputOptions &options) { return options.fileType == FileType::Html; });
}

void OutputOptionsEditor::addXml()
{
    const auto isXml = [](const OutputOptions &options) {
        return options.fileType == FileType::Xml;
    };
    m_form.addLongText("xml_above_root", tr("Above root"), &OutputOptions::xmlAboveRoot)
        .shownIf(isXml);
    m_form.addText("xml_root", tr("Root name"), &OutputOptions::xmlRoot)
        .shownIf(isXml)
        .noticing([](const OutputOptions &options) {
            return options.xmlRoot.isEmpty() ? QString()
                                             : xmlNameNotice(options.xmlRoot, options.encoding);
        });
    m_form.addLongText("xml_below_root", tr("Below root"), &OutputOptions::xmlBelowRoot)
        .shownIf(isXml);
    m_form.addText("xml_row", tr("Row name"), &OutputOptions::xmlRow)
        .shownIf(isXml)
        .noticing([](const OutputOptions &options) {
            return options.xmlRow.isEmpty() ? QString()
                                            : xmlNameNotice(options.xmlRow, options.encoding);
        });
    m_form.addLongText("file_comment", tr("File comment"), &OutputOptions::fileComment)
        .shownIf([](const OutputOptions &options) {
            return isOneOf(options,
                           {FileType::Xml, FileType::Html, FileType::Yaml, FileType::Markdown});
        });
}

/// The choices are stored as labels, one for each column in order.
OutputOptionsEditor::Form::Field &
OutputOptionsEditor::addColumnChoices(const char *key, const QString &label, const QString &title,
                                      const QStringList &choices,
                                      QStringList OutputOptions::*member)
{
    auto *table = new ColumnChoices(title, choices, m_pane->widget());
    Form::Field &field = m_form.add(key, label, table);
    field.load = [this, table, choices, member](const OutputOptions &options, bool) {
        QVector<int> chosen;
        for (const QString &text : options.*member) {
            // A stored number means the same as its label.
            const int choice = choices.contains(text) ? choices.indexOf(text) : text.toInt();
            chosen.append(choice > 0 && choice < choices.size() ? choice : 0);
        }
        table->setColumns(columns(), chosen);
    };
    field.notice = [this, member](const OutputOptions &options) {
        return columns().isEmpty() && (options.*member).isEmpty()
                   ? tr("The columns are known when the item above has run.")
                   : QString();
    };
    connect(table, &ColumnChoices::edited, this, [this, table, choices, member, label] {
        QStringList texts;
        for (const int choice : table->chosen()) {
            texts.append(choices.at(choice));
        }
        edit(label, [member, texts](OutputOptions *options) {
            options->*member = texts;
            return true;
        });
    });
    return field;
}

void OutputOptionsEditor::addJson()
{
    m_form
        .addChoice<int>("json_types", tr("Value types"), &OutputOptions::jsonTypes, {0, 1},
                        automaticOrByColumn)
        .shownIf([](const OutputOptions &options) { return options.fileType == FileType::Json; });
    QStringList labels;
    for (int type = int(JsonType::Automatic); type <= int(JsonType::RawData); ++type) {
        labels.append(jsonTypeLabel(JsonType(type)));
    }
    addColumnChoices("json_manual_col_types", tr("Types by column"), tr("Type"), labels,
                     &OutputOptions::jsonManualColumnTypes)
        .shownIf([](const OutputOptions &options) {
            return options.fileType == FileType::Json && options.jsonTypes != 0;
        });
}

void OutputOptionsEditor::addSpreadsheet()
{
    m_form
        .addChoice<int>("excel_output", tr("Formatting"), &OutputOptions::excelOutput, {0, 1},
                        automaticOrByColumn)
        .shownIf(isWorkbook);
    QStringList labels;
    for (int format = int(CellFormat::Automatic); format <= int(CellFormat::Hyperlink); ++format) {
        labels.append(cellFormatLabel(CellFormat(format)));
    }
    addColumnChoices("excel_manual_col_formats", tr("Formats by column"), tr("Format"), labels,
                     &OutputOptions::excelManualColumnFormats)
        .shownIf([](const OutputOptions &options) {
            return isWorkbook(options) && options.excelOutput != 0;
        });
    addTemplate();
}

void OutputOptionsEditor::addTemplate()
{
    const auto mayUse = [](const OutputOptions &options) {
        return isWorkbook(options) && options.fileType == FileType::ExcelXlsx;
    };
    m_form
        .addCheck("excel_use_style_template", tr("Use style template"),
                  &OutputOptions::excelUseStyleTemplate)
        .shownIf(mayUse);
    m_template = new PathField(PathField::Purpose::Open, tr("Style template"), m_pane->widget());
    m_template->setFilter(QStringLiteral("%1 (*.xlsx)").arg(fileTypeLabel(FileType::ExcelXlsx)));
    m_template->setDocumentFolder([this] { return m_scene->document().folder(); });
    m_template->edit()->setPlaceholderText(tr("file.xlsx[Sheet]"));
    connect(m_template, &PathField::chosen, this, &OutputOptionsEditor::takeTemplate);
    m_form
        .addText("excel_style_template_path", tr("Style template"),
                 &OutputOptions::excelStyleTemplatePath, m_template, m_template->edit())
        .shownIf([mayUse](const OutputOptions &options) {
            return mayUse(options) && options.excelUseStyleTemplate;
        })
        .noticing([this](const OutputOptions &options) { return templateNotice(options); });
}

void OutputOptionsEditor::addItem()
{
    m_form.addHeading(tr("Item"));
    auto *alias = new QLineEdit(m_pane->widget());
    m_form
        .addLine(
            "alias", tr("Alias"),
            [this](const OutputOptions &) { return m_node ? m_node->alias() : QString(); },
            [this](const QString &text) {
                if (m_node) {
                    m_scene->editAlias(m_node, text);
                }
            },
            alias, alias)
        .refusing([this](const QString &text) { return aliasProblem(*m_scene, m_node, text); })
        .hint(tr("The name of this item on the command line and in batches."));
}
