#include "inputwatch.h"

#include "graphscene.h"
#include "inputnode.h"
#include "outputwriter.h"

namespace {

/// The file that is to be watched; empty when there is none.
QString watchedPath(const InputNode *node, const QString &documentFolder)
{
    const InputOptions &options = node->options();
    return options.watching && options.medium == Medium::File
               ? resolvedPath(options.path, documentFolder)
               : QString();
}

} // namespace

InputWatch::InputWatch(GraphScene *scene)
    : m_scene(scene)
{
    connect(&m_files, &FileWatch::changed, this, &InputWatch::filesChanged);
    connect(scene, &GraphScene::nodesAdded, this, &InputWatch::update);
    connect(scene, &GraphScene::nodesDeleted, this, &InputWatch::update);
    connect(scene, &GraphScene::nodeDataChanged, this, [this](const Node *node) {
        if (node->kind() == ItemKind::Input) {
            update();
        }
    });
    update();
}

void InputWatch::update()
{
    QStringList paths;
    const QString folder = m_scene->document().folder();
    const QList<InputNode *> inputs = m_scene->inputs();
    for (const InputNode *input : inputs) {
        const QString path = watchedPath(input, folder);
        if (!path.isEmpty()) {
            paths.append(path);
        }
    }
    m_files.setFiles(paths);
}

void InputWatch::filesChanged(const QStringList &paths)
{
    QList<InputNode *> changed;
    const QString folder = m_scene->document().folder();
    const QList<InputNode *> inputs = m_scene->inputs();
    for (InputNode *input : inputs) {
        const QString path = watchedPath(input, folder);
        if (!path.isEmpty() && paths.contains(path)) {
            changed.append(input);
            Q_EMIT reloaded(
                tr("'%1' has changed on disk and is read again by the next run.").arg(path));
        }
    }
    m_scene->markOutdated(changed);
}
