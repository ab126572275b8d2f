#include "outputoptionseditor.h"

#include "graphscene.h"
#include "optionpane.h"
#include "outputnode.h"
#include "outputwriter.h"
#include "pathfield.h"
#include "sheetpicker.h"
#include "spreadsheetoutput.h"
#include "textoutput.h"

#include <QDir>
#include <QFileInfo>
#include <QUndoStack>
#include <QVBoxLayout>

OutputOptionsEditor::OutputOptionsEditor(GraphScene *scene, QWidget *parent)
    : QWidget(parent)
    , m_scene(scene)
    , m_pane(new OptionPane(this))
    , m_form(m_pane->widget(), m_pane->column(),
             [this](const QString &label, const auto &change) { edit(label, change); })
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pane);
    addTarget();
    addWriting();
    addText();
    addXml();
    addJson();
    addSpreadsheet();
    addItem();
    m_pane->column()->addStretch();
    connect(scene, &GraphScene::connectionsChanged, this, &OutputOptionsEditor::followUpstream);
    // Paths may have a folder to be relative to when the document has been saved.
    connect(&scene->undoStack(), &QUndoStack::cleanChanged, this, [this] { reload(false); });
    setNode(nullptr);
}

void OutputOptionsEditor::setNode(OutputNode *node)
{
    if (m_node) {
        m_node->disconnect(this);
    }
    m_node = node;
    m_pane->setVisible(node);
    if (node) {
        connect(node, &Node::dataChanged, this, [this] { reload(false); });
        reload(true);
    }
    followUpstream();
}

/// The columns that are offered are those of the item above.
void OutputOptionsEditor::followUpstream()
{
    Node *upstream = m_node ? m_node->upstreamNodes().value(0) : nullptr;
    if (upstream == m_upstream) {
        return;
    }
    if (m_upstream) {
        m_upstream->disconnect(this);
    }
    m_upstream = upstream;
    if (upstream) {
        connect(upstream, &Node::dataChanged, this, [this] { reload(false); });
    }
    if (m_node) {
        reload(false);
    }
}

QStringList OutputOptionsEditor::columns() const
{
    const Node *upstream = m_node ? m_node->upstreamNodes().value(0) : nullptr;
    return upstream ? upstream->upstreamColumns() : QStringList();
}

void OutputOptionsEditor::edit(const QString &label, const Form::Change &change)
{
    if (!m_node) {
        return;
    }
    OutputOptions options = m_node->options();
    if (change(&options)) {
        m_scene->editOptions(m_node, options, label);
    }
}

void OutputOptionsEditor::reload(bool force)
{
    if (!m_node) {
        return;
    }
    m_form.show(m_node->options(), force);
    m_path->showRelation();
    m_template->showRelation();
}

QString OutputOptionsEditor::absolutePath(const QString &path) const
{
    return resolvedPath(path, m_scene->document().folder());
}

QString OutputOptionsEditor::pathNotice(const OutputOptions &options) const
{
    if (options.path.isEmpty()) {
        return tr("No file name is set.");
    }
    const QString path = absolutePath(options.path);
    if (path.isEmpty()) {
        return tr("The path is relative, but the document is not saved yet. Save it first.");
    }
    const QFileInfo file(path);
    if (file.isDir() || options.path.endsWith(QLatin1Char('/'))) {
        return tr("'%1' is a folder.").arg(path);
    }
    if (!file.absoluteDir().exists()) {
        return tr("Folder '%1' does not exist. Folders are never created.")
            .arg(file.absolutePath());
    }
    if (m_scene->preferences().blockedOutputExtensions.contains(file.suffix().toLower())) {
        return tr("The extension '%1' is blocked in 'Preferences>Output Extensions'.")
            .arg(file.suffix());
    }
    return fileTypeForExtension(file.suffix(), options.fileType) == options.fileType
               ? QString()
               : tr("'%1' extension is '%2' but file type is %3.")
                     .arg(options.path, file.suffix(), fileTypeLabel(options.fileType));
}

void OutputOptionsEditor::takePath(const QString &path, bool isAnotherFile)
{
    edit(tr("File"), [this, path, isAnotherFile](OutputOptions *options) {
        const bool changes = options->path != path;
        options->path = path;
        if (isAnotherFile && !QFileInfo(path).suffix().isEmpty()) {
            const FileType type = m_scene->fileTypeOf(path);
            options->fileType =
                isTextOutput(type) || isSpreadsheet(type) ? type : options->fileType;
        }
        return changes;
    });
}

QString OutputOptionsEditor::templateNotice(const OutputOptions &options) const
{
    QString path;
    QString sheet;
    if (!splitSheetPath(options.excelStyleTemplatePath, &path, &sheet)) {
        return tr("Choose a workbook, and name its sheet in brackets.");
    }
    const QString absolute = absolutePath(path);
    return QFileInfo(absolute).isFile() ? QString() : tr("File '%1' not found.").arg(path);
}

void OutputOptionsEditor::takeTemplate(const QString &path, bool isAnotherFile)
{
    QString chosen = path;
    if (isAnotherFile) {
        SheetPicker picker(absolutePath(path), QString(), this);
        if (picker.load() && picker.exec() == QDialog::Accepted) {
            chosen = sheetPath(path, picker.sheet());
        }
    }
    edit(tr("Style template"), [&chosen](OutputOptions *options) {
        const bool changes = options->excelStyleTemplatePath != chosen;
        options->excelStyleTemplatePath = chosen;
        return changes;
    });
    m_template->edit()->setText(m_node->options().excelStyleTemplatePath);
    m_template->showRelation();
}
