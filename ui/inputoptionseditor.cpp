#include "inputoptionseditor.h"

#include "backgroundtask.h"
#include "clipboardsniffer.h"
#include "fixedwidtheditor.h"
#include "fixedwidthguess.h"
#include "graphscene.h"
#include "inputexcerpt.h"
#include "inputnode.h"
#include "inputpreview.h"
#include "inputreader.h"
#include "optionpane.h"
#include "outputwriter.h"
#include "pathfield.h"
#include "schemaeditor.h"
#include "sheetpicker.h"
#include "texts.h"
#include "userinterface.h"

#include <QFileInfo>
#include <QFrame>
#include <QPushButton>
#include <QUndoStack>

InputOptionsEditor::InputOptionsEditor(GraphScene *scene, QWidget *parent)
    : QWidget(parent)
    , m_scene(scene)
    , m_pane(new OptionPane(this))
    , m_line(new QFrame(this))
    , m_preview(new InputPreview(this))
    , m_form(m_pane->widget(), m_pane->column(),
             [this](const QString &label, const auto &change) { edit(label, change); })
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_pane, 1);
    m_line->setFrameShape(QFrame::HLine);
    m_line->setForegroundRole(QPalette::Mid);
    m_line->setFrameShadow(QFrame::Plain);
    layout->addWidget(m_line);
    layout->addWidget(m_preview);
    addSource();
    addLayout();
    addValues();
    addSchema();
    addItem();
    m_pane->column()->addStretch();
    // Paths may have a folder to be relative to when the document has been saved.
    connect(&scene->undoStack(), &QUndoStack::cleanChanged, this, [this] { reload(false); });
    setNode(nullptr);
}

void InputOptionsEditor::setNode(InputNode *node)
{
    if (m_node) {
        m_node->disconnect(this);
    }
    m_node = node;
    m_pane->setVisible(node);
    m_line->setVisible(node);
    m_preview->setVisible(node);
    if (node) {
        connect(node, &Node::dataChanged, this, [this] { reload(false); });
        reload(true);
    }
}

void InputOptionsEditor::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    // In a low window the options need the room.
    m_preview->limitTable(height() / 4);
}

void InputOptionsEditor::edit(const QString &label, const OptionForm<InputOptions>::Change &change)
{
    if (!m_node) {
        return;
    }
    InputOptions options = m_node->options();
    if (change(&options)) {
        m_scene->editOptions(m_node, options, label);
    }
}

void InputOptionsEditor::reload(bool force)
{
    if (!m_node) {
        return;
    }
    const InputOptions &options = m_node->options();
    m_form.show(options, force);
    m_path->showRelation();
    m_schemaButton->setText(tr("Edit schema (%1 %2)...")
                                .arg(Texts::count(options.schemaColumnNames.size()),
                                     Texts::columns(options.schemaColumnNames.size())));
    m_preview->setInput(options, absolutePath());
}

QString InputOptionsEditor::absolutePath() const
{
    return resolvedPath(m_node->options().path, m_scene->document().folder());
}

QString InputOptionsEditor::pathNotice(const InputOptions &options) const
{
    if (options.path.isEmpty()) {
        return tr("No file is set.");
    }
    const QString path = absolutePath();
    if (path.isEmpty()) {
        return tr("The path is relative, but the document is not saved yet. Save it first.");
    }
    const QFileInfo file(path);
    if (m_scene->preferences().blockedInputExtensions.contains(file.suffix().toLower())) {
        return tr("The extension '%1' is blocked in 'Preferences>Input Extensions'.")
            .arg(file.suffix());
    }
    if (file.isDir()) {
        return tr("'%1' is a folder.").arg(path);
    }
    return file.exists() ? QString() : tr("File '%1' not found.").arg(path);
}

void InputOptionsEditor::takePath(const QString &path, bool isAnotherFile)
{
    edit(tr("File"), [this, path, isAnotherFile](InputOptions *options) {
        if (options->path == path) {
            return false;
        }
        options->path = path;
        if (isAnotherFile) {
            options->fileType = m_scene->fileTypeOf(path);
            options->worksheet.clear();
        }
        return true;
    });
}

void InputOptionsEditor::pasteText()
{
    const std::optional<QString> text = m_scene->userInterface()->clipboardText();
    if (!text || text->isEmpty()) {
        Q_EMIT m_scene->showStatusBarMessage(tr("There is no text on the clipboard."));
        return;
    }
    edit(tr("Text"), [&text](InputOptions *options) {
        options->text = *text;
        options->fileType = sniffFileType(*text);
        return true;
    });
}

void InputOptionsEditor::chooseSheet()
{
    SheetPicker picker(absolutePath(), m_node->options().worksheet, this);
    if (picker.load() && picker.exec() == QDialog::Accepted) {
        edit(tr("Sheet"), [&picker](InputOptions *options) {
            const bool changes = options->worksheet != picker.sheet();
            options->worksheet = picker.sheet();
            return changes;
        });
    }
}

QStringList InputOptionsEditor::linesBelowIgnored() const
{
    return firstInputLines(m_node->options(), absolutePath()).mid(m_node->options().ignoredRows);
}

void InputOptionsEditor::editWidths()
{
    const InputOptions &options = m_node->options();
    FixedWidthEditor editor(firstInputLines(options, absolutePath()), options.ignoredRows, this);
    editor.setWidths(options.autoFixedWidths || options.fixedWidths.isEmpty()
                         ? guessColumnWidths(linesBelowIgnored())
                         : options.fixedWidths);
    if (editor.exec() != QDialog::Accepted) {
        return;
    }
    edit(tr("Columns"), [&editor](InputOptions *edited) {
        edited->fixedWidths = editor.widths();
        edited->autoFixedWidths = edited->fixedWidths.isEmpty();
        return true;
    });
}

bool InputOptionsEditor::columnsOfInput(QStringList *columns)
{
    InputOptions options = m_node->options();
    if (!options.schemaInUse && m_node->status() == ItemStatus::UpToDate) {
        *columns = m_node->upstreamColumns();
        return true;
    }
    // The table of the item has the columns of the schema, not those of the file.
    options.schemaInUse = false;
    Messages messages;
    Dataset dataset;
    const bool finished =
        runInBackground(this, tr("Reading the columns..."), [&](const Progress &progress) {
            dataset = readInput(options, absolutePath(), &messages, progress);
        });
    if (finished && messages.failed) {
        Q_EMIT m_scene->showWarningMessage(messages.warnings.join(QLatin1Char('\n')));
    }
    *columns = dataset.columnNames();
    return finished && !messages.failed;
}

void InputOptionsEditor::editSchema()
{
    const InputOptions &options = m_node->options();
    SchemaEditor editor([this](QStringList *columns) { return columnsOfInput(columns); }, this);
    editor.setSchema(options.schemaColumnNames, options.schemaMissingValues);
    if (editor.exec() == QDialog::Accepted) {
        edit(tr("Schema"), [&editor](InputOptions *edited) {
            const bool changes = edited->schemaColumnNames != editor.names() ||
                                 edited->schemaMissingValues != editor.missingValues();
            edited->schemaColumnNames = editor.names();
            edited->schemaMissingValues = editor.missingValues();
            return changes;
        });
    }
}
