#include "itemadder.h"

#include "canvasview.h"
#include "clipboardsniffer.h"
#include "graphscene.h"
#include "inputnode.h"
#include "outputnode.h"
#include "preferencesstore.h"
#include "transform.h"
#include "transformcatalogue.h"
#include "transformnode.h"
#include "userinterface.h"
#include "windowinterface.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>

namespace {

const QString inputFolderKey = QStringLiteral("input_folder");
const QString outputFolderKey = QStringLiteral("output_folder");

} // namespace

ItemAdder::ItemAdder(GraphScene *scene, CanvasView *canvas, const TransformCatalogue *catalogue,
                     PreferencesStore *store, QWidget *window)
    : QObject(window)
    , m_scene(scene)
    , m_canvas(canvas)
    , m_catalogue(catalogue)
    , m_store(store)
    , m_window(window)
{
}

void ItemAdder::select(Node *node)
{
    if (node) {
        m_scene->setSelectedNodes({node});
        m_canvas->centerOn(node);
        m_canvas->setFocus();
    }
}

void ItemAdder::askForInputs(const QPointF *place)
{
    const QPointF where = place ? *place : m_canvas->placeForInput();
    const QStringList paths = QFileDialog::getOpenFileNames(
        m_window, tr("Add input files"), m_store->windowValue(inputFolderKey).toString());
    if (!paths.isEmpty()) {
        m_store->setWindowValue(inputFolderKey, QFileInfo(paths.first()).absolutePath());
        addInputs(paths, where);
    }
}

void ItemAdder::addInputs(const QStringList &paths, const QPointF &place)
{
    const QList<InputNode *> added = m_scene->addInputs(paths, place);
    if (!added.isEmpty()) {
        select(added.last());
    }
}

void ItemAdder::addClipboardInput()
{
    const QString text = m_scene->userInterface()->clipboardText().value_or(QString());
    if (text.isEmpty()) {
        tellUser(m_window, tr("Input from clipboard"), tr("There is no text on the clipboard."),
                 false);
        return;
    }
    select(m_scene->addClipboardInput(text, sniffFileType(text), m_canvas->placeForInput()));
}

void ItemAdder::askForOutput(const QPointF *place)
{
    const QList<Node *> selected = m_scene->selectedNodes();
    Node *const upstream =
        selected.size() == 1 && selected.first()->canHaveDownstream() ? selected.first() : nullptr;
    OutputOptions options = OutputNode::defaultOptions();
    const QString folder = !m_scene->document().folder().isEmpty()
                               ? m_scene->document().folder()
                               : m_store->windowValue(outputFolderKey).toString();
    QFileDialog dialog(m_window, tr("Write to file"), folder);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    // To replace a file is what most outputs do with every run; the write mode is shown.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.selectFile(options.path);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return;
    }
    options.path = dialog.selectedFiles().first();
    m_store->setWindowValue(outputFolderKey, QFileInfo(options.path).absolutePath());
    options.fileType = fileTypeForExtension(QFileInfo(options.path).suffix());
    const QPointF where = place      ? *place
                          : upstream ? m_canvas->placeBeside({upstream})
                                     : placeForNew();
    select(m_scene->addOutput(options, upstream, where));
}

QPointF ItemAdder::placeForNew() const
{
    return m_canvas->placeBeside({});
}

void ItemAdder::addNote(const QPointF *place)
{
    select(m_scene->addNote(place ? *place : placeForNew(), tr("Note")));
}

void ItemAdder::addTransform(const QString &typeName, const QPointF *place)
{
    std::unique_ptr<Transform> transform = m_catalogue->create(typeName);
    if (!transform) {
        return;
    }
    QList<Node *> upstream;
    for (Node *const node : m_scene->selectedNodes()) {
        if (node->canHaveDownstream()) {
            upstream.append(node);
        }
    }
    select(m_scene->addTransform(std::move(transform),
                                 place ? *place : m_canvas->placeBeside(upstream)));
}

void ItemAdder::insertTransform(const QString &typeName, Connection *connection)
{
    if (std::unique_ptr<Transform> transform = m_catalogue->create(typeName)) {
        select(m_scene->insertTransform(std::move(transform), connection));
    }
}
