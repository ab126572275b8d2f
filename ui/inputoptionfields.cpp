#include "encodingbox.h"
#include "fixedwidtheditor.h"
#include "fixedwidthguess.h"
#include "graphscene.h"
#include "inputnode.h"
#include "inputoptionseditor.h"
#include "optionpane.h"
#include "pathfield.h"

#include <QPushButton>
#include <limits>

namespace {

// A longer text is shown in part and cannot be edited, so that typing stays quick.
constexpr int longestEditedText = 200000;

bool isFile(const InputOptions &options)
{
    return options.medium == Medium::File;
}

bool isDelimited(const InputOptions &options)
{
    return isReadAsDelimitedText(options.fileType) ||
           (isSpreadsheet(options.fileType) && !isFile(options));
}

bool isWorkbook(const InputOptions &options)
{
    return isSpreadsheet(options.fileType) && isFile(options);
}

bool isFixedWidth(const InputOptions &options)
{
    return options.fileType == FileType::FixedWidth;
}

/// Text that somebody else's program has encoded; JSON says itself how.
bool hasEncoding(const InputOptions &options)
{
    return isFile(options) && !isSpreadsheet(options.fileType) &&
           options.fileType != FileType::Json;
}

bool usesSchema(const InputOptions &options)
{
    return options.schemaInUse;
}

QString filterOf(const QString &name, const QString &patterns)
{
    return QStringLiteral("%1 (%2)").arg(name, patterns);
}

QString openFilters()
{
    QStringList filters{filterOf(InputOptionsEditor::tr("All files"), QStringLiteral("*"))};
    for (const FileType type : fileTypes()) {
        filters.append(
            filterOf(fileTypeLabel(type), QStringLiteral("*.") + defaultExtension(type)));
    }
    return filters.join(QStringLiteral(";;"));
}

} // namespace

void InputOptionsEditor::addSource()
{
    m_form.addHeading(tr("Input"), tr("What is read."));
    m_form.addChoice<Medium>(
        "medium", tr("Source"), &InputOptions::medium, {Medium::File, Medium::Clipboard},
        [](Medium medium) { return medium == Medium::File ? tr("File") : tr("Clipboard"); });
    m_path = new PathField(PathField::Purpose::Open, tr("File"), m_pane->widget());
    m_path->setFilter(openFilters());
    m_path->setDocumentFolder([this] { return m_scene->document().folder(); });
    connect(m_path, &PathField::chosen, this, &InputOptionsEditor::takePath);
    m_form.addText("path", tr("File"), &InputOptions::path, m_path, m_path->edit())
        .shownIf(isFile)
        .noticing([this](const InputOptions &options) { return pathNotice(options); });
    m_form.addCheck("watching", tr("Watch the file for changes"), &InputOptions::watching)
        .shownIf(isFile);
    addText();
    m_form.addChoice<FileType>("file_type", tr("Type"), &InputOptions::fileType, fileTypes(),
                               fileTypeLabel);
    addSheet();
}

void InputOptionsEditor::addText()
{
    const auto isClipboard = [](const InputOptions &options) { return !isFile(options); };
    QPlainTextEdit *edit = makeTextBox(5, m_pane->widget());
    edit->setLineWrapMode(QPlainTextEdit::NoWrap);
    auto &text = m_form.add("text", tr("Text"), edit).shownIf(isClipboard);
    text.load = [&text, edit](const InputOptions &options, bool force) {
        if (force || options.text != text.loaded) {
            text.loaded = options.text;
            const bool isLong = options.text.size() > longestEditedText;
            showText(edit, options.text.left(longestEditedText));
            edit->setReadOnly(isLong);
            text.widget->setHint(isLong ? tr("The beginning of a long text.") : QString());
        }
    };
    connect(edit, &QPlainTextEdit::textChanged, this, [this, &text, edit] {
        text.loaded = edit->toPlainText();
        m_form.edit(tr("Text"), [value = text.loaded](InputOptions *options) {
            options->text = value;
            return true;
        });
    });
    auto *paste = new QPushButton(tr("Paste"), m_pane->widget());
    paste->setToolTip(tr("Replaces the text by that of the clipboard."));
    connect(paste, &QPushButton::clicked, this, &InputOptionsEditor::pasteText);
    m_form.add("paste", QString(), paste).shownIf(isClipboard);
}

void InputOptionsEditor::addSheet()
{
    auto *sheet = new QWidget(m_pane->widget());
    auto *line = new QHBoxLayout(sheet);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(4);
    auto *name = new QLineEdit(sheet);
    name->setPlaceholderText(tr("The first sheet"));
    auto *button = new QPushButton(tr("Choose..."), sheet);
    button->setAccessibleName(tr("Choose the sheet"));
    line->addWidget(name);
    line->addWidget(button);
    sheet->setFocusProxy(name);
    connect(button, &QPushButton::clicked, this, &InputOptionsEditor::chooseSheet);
    m_form.addText("worksheet", tr("Sheet"), &InputOptions::worksheet, sheet, name)
        .shownIf(isWorkbook);
}

void InputOptionsEditor::addLayout()
{
    m_form.addHeading(tr("Layout"), tr("How rows and columns are found."));
    m_form
        .addChoice<Delimiter>("delimiter", tr("Delimiter"), &InputOptions::delimiter,
                              delimiters(true, true, true), delimiterLabel)
        .shownIf(isDelimited);
    m_form.addText("custom_delimiter", tr("Custom delimiter"), &InputOptions::customDelimiter)
        .shownIf([](const InputOptions &options) {
            return isDelimited(options) && options.delimiter == Delimiter::Custom;
        })
        .refusing(customDelimiterProblem)
        .noticing([](const InputOptions &options) {
            return customDelimiterProblem(options.customDelimiter);
        });
    m_form
        .addCheck("ignore_repeated_delim", tr("Ignore repeated delim"),
                  &InputOptions::ignoreRepeatedDelimiter)
        .shownIf(isDelimited);
    m_form
        .addChoice<InputQuoting>(
            "quote", tr("Quoting"), &InputOptions::quoting,
            {InputQuoting::Automatic, InputQuoting::Quoted, InputQuoting::Unquoted},
            inputQuotingLabel)
        .shownIf(isDelimited);
    addFixedWidth();
    m_form
        .addChoice<bool>(
            "json_arrays_as_rows", tr("Format"), &InputOptions::jsonArraysAsRows, {true, false},
            [](bool rows) { return rows ? tr("Arrays as rows") : tr("Arrays as columns"); })
        .shownIf([](const InputOptions &options) {
            return options.fileType == FileType::Json || options.fileType == FileType::Xml;
        });
    QComboBox *encoding = makeEncodingBox(true, m_pane->widget());
    m_form
        .addText("encoding", tr("Encoding"), &InputOptions::encoding, encoding,
                 encoding->lineEdit())
        .shownIf(hasEncoding)
        .refusing([](const QString &text) { return encodingProblem(text, true); });
    auto *ignored = new QSpinBox(m_pane->widget());
    ignored->setRange(0, std::numeric_limits<int>::max());
    ignored->setPrefix(tr("First "));
    ignored->setSuffix(tr(" row(s)"));
    m_form.addNumber("ignored_rows", tr("Ignore"), &InputOptions::ignoredRows, ignored)
        .shownIf([](const InputOptions &options) { return ignoresLeadingRows(options.fileType); });
    m_form.addCheck("header", tr("Has header"), &InputOptions::header)
        .shownIf([](const InputOptions &options) { return mayHaveHeader(options.fileType); });
}

void InputOptionsEditor::addFixedWidth()
{
    // With no widths a manual choice would mean the automatic one.
    const auto proposeWidths = [this](InputOptions *options, bool automatic) {
        if (!automatic && options->fixedWidths.isEmpty()) {
            options->fixedWidths = guessColumnWidths(linesBelowIgnored());
        }
    };
    m_form
        .addChoice<bool>(
            "auto_fixed_widths", tr("Columns"), &InputOptions::autoFixedWidths, {true, false},
            [](bool automatic) { return automatic ? tr("Automatic") : tr("Manual"); },
            proposeWidths)
        .shownIf(isFixedWidth);
    auto *widths = new QLineEdit(m_pane->widget());
    m_form
        .addText(
            "fixed_widths", tr("Column widths"),
            [](const InputOptions &options) { return widthsText(options.fixedWidths); },
            [](InputOptions *options, const QString &text) {
                readWidths(text, &options->fixedWidths);
            },
            widths, widths)
        .shownIf([](const InputOptions &options) {
            return isFixedWidth(options) && !options.autoFixedWidths;
        })
        .refusing(widthsProblem);
    auto *button = new QPushButton(tr("Set columns..."), m_pane->widget());
    connect(button, &QPushButton::clicked, this, &InputOptionsEditor::editWidths);
    m_form.add("edit_widths", QString(), button).shownIf(isFixedWidth);
}

void InputOptionsEditor::addValues()
{
    m_form.addHeading(tr("Values"), tr("What happens with what was read."));
    m_form.addCheck("trim", tr("Trim whitespace"), &InputOptions::trim);
    m_form.addCheck("simplify", tr("Simplify whitespace"), &InputOptions::simplify);
    m_form.addCheck("ignore_empty", tr("Ignore empty rows"), &InputOptions::ignoreEmptyRows);
    m_form.addCheck("ignore_empty_cols", tr("Ignore empty columns"),
                    &InputOptions::ignoreEmptyColumns);
    m_form
        .addCheck("ignore_excel_hidden_rows", tr("Ignore hidden Excel rows"),
                  &InputOptions::ignoreExcelHiddenRows)
        .shownIf(isWorkbook);
    m_form
        .addCheck("ignore_excel_hidden_cols", tr("Ignore hidden Excel columns"),
                  &InputOptions::ignoreExcelHiddenColumns)
        .shownIf(isWorkbook);
}

void InputOptionsEditor::addSchema()
{
    m_form.addHeading(tr("Schema"), tr("The columns that are expected."));
    m_form.addCheck("schema_in_use", tr("Use schema"), &InputOptions::schemaInUse)
        .noticing([](const InputOptions &options) {
            return options.schemaInUse && options.schemaColumnNames.isEmpty()
                       ? tr("The schema has no columns yet.")
                       : QString();
        });
    m_schemaButton = new QPushButton(m_pane->widget());
    connect(m_schemaButton, &QPushButton::clicked, this, &InputOptionsEditor::editSchema);
    m_form.add("schema_col_name", QString(), m_schemaButton).shownIf(usesSchema);
    m_form
        .addChoice<SchemaMissing>("schema_missing_cols", tr("Missing columns in input:"),
                                  &InputOptions::schemaMissing,
                                  {SchemaMissing::Add, SchemaMissing::Error},
                                  [](SchemaMissing choice) {
                                      return choice == SchemaMissing::Add ? tr("Add as in schema")
                                                                          : tr("Treat as an error");
                                  })
        .shownIf(usesSchema);
    m_form
        .addChoice<SchemaOrder>("schema_reorder_cols", tr("Out of order columns in input:"),
                                &InputOptions::schemaOrder,
                                {SchemaOrder::Reorder, SchemaOrder::Error},
                                [](SchemaOrder choice) {
                                    return choice == SchemaOrder::Reorder
                                               ? tr("Re-order as in schema")
                                               : tr("Treat as an error");
                                })
        .shownIf(usesSchema);
    m_form
        .addChoice<SchemaExtra>("schema_extra_cols", tr("Extra columns in input:"),
                                &InputOptions::schemaExtra,
                                {SchemaExtra::AddToEnd, SchemaExtra::Ignore, SchemaExtra::Error},
                                [](SchemaExtra choice) {
                                    return choice == SchemaExtra::AddToEnd ? tr("Add to end")
                                           : choice == SchemaExtra::Ignore
                                               ? tr("Ignore")
                                               : tr("Treat as an error");
                                })
        .shownIf(usesSchema);
}

void InputOptionsEditor::addItem()
{
    m_form.addHeading(tr("Item"));
    auto *alias = new QLineEdit(m_pane->widget());
    m_form
        .addLine(
            "alias", tr("Alias"),
            [this](const InputOptions &) { return m_node ? m_node->alias() : QString(); },
            [this](const QString &text) {
                if (m_node) {
                    m_scene->editAlias(m_node, text);
                }
            },
            alias, alias)
        .refusing([this](const QString &text) { return aliasProblem(*m_scene, m_node, text); })
        .hint(tr("The name of this item on the command line and in batches."));
    m_form.addCheck("show_meta", tr("Meta information"), &InputOptions::showMeta);
    m_form.addLongText("meta_text", tr("Meta information text"), &InputOptions::metaText)
        .shownIf([](const InputOptions &options) { return options.showMeta; });
}
