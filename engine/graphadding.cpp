#include "connection.h"
#include "graphcommands.h"
#include "graphedithelpers.h"
#include "graphscene.h"
#include "inputnode.h"
#include "outputnode.h"
#include "texts.h"
#include "transform.h"

#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <limits>

using namespace GraphEdit;

namespace {

QString inputsNeeded(const Transform &transform)
{
    const int minimum = transform.minimumInputs();
    const int maximum = transform.maximumInputs();
    if (maximum == 1) {
        return GraphScene::tr("1 input/transform item");
    }
    if (minimum == maximum) {
        return GraphScene::tr("%1 input/transform items").arg(maximum);
    }
    return maximum == std::numeric_limits<qint32>::max()
               ? GraphScene::tr("%1 or more input/transform items").arg(minimum)
               : GraphScene::tr("%1 to %2 input/transform items")
                     .arg(QString::number(minimum), QString::number(maximum));
}

} // namespace

QString GraphEdit::freeAlias(const QString &path, const QString &otherwise,
                             const QSet<QString> &taken)
{
    // "alias=path" is how the command line names an item.
    QString base = QFileInfo(path).completeBaseName().replace(QLatin1Char('='), QLatin1Char('_'));
    if (base.trimmed().isEmpty()) {
        base = otherwise;
    }
    QString alias = base;
    for (int number = 2; taken.contains(alias); ++number) {
        alias = base + QString::number(number);
    }
    return alias;
}

QSet<QString> GraphScene::aliases() const
{
    QSet<QString> result;
    for (const auto &entry : m_nodes) {
        if (const auto *item = qobject_cast<const IONode *>(entry.second.get())) {
            result.insert(item->alias());
        }
    }
    return result;
}

QString GraphScene::uniqueAlias(const QString &path) const
{
    return freeAlias(path, QStringLiteral("clipboard"), aliases());
}

FileType GraphScene::fileTypeOf(const QString &path) const
{
    const QString extension = QFileInfo(path).suffix().toLower();
    const auto own = m_preferences.fileTypesByExtension.constFind(extension);
    return own != m_preferences.fileTypesByExtension.constEnd() ? *own
                                                                : fileTypeForExtension(extension);
}

NoteNode *GraphScene::addNote(const QPointF &pos, const QString &text)
{
    return doOrKeep([this, pos, text] {
        auto note = std::make_unique<NoteNode>();
        NoteNode *raw = note.get();
        note->setId(newId());
        note->setPos(pos);
        note->setComment(text);
        push(std::make_unique<StructureCommand>(this, tr("add note"), oneOf<Node>(std::move(note)),
                                                oneOf<Connection>(nullptr)));
        return raw;
    });
}

QStringList GraphScene::withoutBlocked(const QStringList &paths)
{
    QStringList allowed;
    QStringList blocked;
    for (const QString &path : paths) {
        const QString extension = QFileInfo(path).suffix().toLower();
        if (extension == QLatin1String("transform")) {
            Q_EMIT fileOpen(path);
        } else if (m_preferences.blockedInputExtensions.contains(extension)) {
            blocked.append(path);
        } else {
            allowed.append(path);
        }
    }
    if (!blocked.isEmpty()) {
        Q_EMIT showWarningMessage(tr("The files extensions of the following are blocked in "
                                     "'Preferences>Input Extensions':\n%1")
                                      .arg(blocked.join(QLatin1Char('\n'))));
    }
    return allowed;
}

QList<InputNode *> GraphScene::addInputs(const QStringList &paths, const QPointF &pos)
{
    const QStringList allowed = withoutBlocked(paths);
    return doOrKeep([this, allowed, pos] {
        QList<InputNode *> added;
        std::vector<std::unique_ptr<Node>> nodes;
        QSet<QString> taken = aliases();
        for (const QString &path : allowed) {
            InputOptions options;
            options.path = path;
            options.fileType = fileTypeOf(path);
            auto input = std::make_unique<InputNode>(options);
            input->setId(newId());
            input->setPos(pos + QPointF(0.0, itemSpacing * added.size()));
            input->setAlias(freeAlias(path, QStringLiteral("input"), taken));
            taken.insert(input->alias());
            added.append(input.get());
            nodes.push_back(std::move(input));
        }
        if (!added.isEmpty()) {
            const QString text = added.size() == 1
                                     ? tr("add '%1'").arg(added.first()->displayName())
                                     : tr("multifile");
            push(std::make_unique<StructureCommand>(this, text, std::move(nodes),
                                                    oneOf<Connection>(nullptr)));
        }
        return added;
    });
}

InputNode *GraphScene::addClipboardInput(const QString &text, FileType type, const QPointF &pos)
{
    return doOrKeep([this, text, type, pos] {
        InputOptions options;
        options.medium = Medium::Clipboard;
        options.text = text;
        options.fileType = type;
        auto input = std::make_unique<InputNode>(options);
        InputNode *raw = input.get();
        input->setId(newId());
        input->setPos(pos);
        input->setAlias(uniqueAlias(QString()));
        push(std::make_unique<StructureCommand>(this, tr("add '%1'").arg(raw->displayName()),
                                                oneOf<Node>(std::move(input)),
                                                oneOf<Connection>(nullptr)));
        return raw;
    });
}

bool GraphScene::suits(const Transform &transform, int inputCount)
{
    if (inputCount >= transform.minimumInputs() && inputCount <= transform.maximumInputs()) {
        return true;
    }
    const QString selected = inputCount == 0 ? tr("No items selected.")
                             : inputCount == 1
                                 ? tr("1 item selected.")
                                 : tr("%1 items selected.").arg(Texts::count(inputCount));
    Q_EMIT showWarningMessage(
        tr("%1\nTo add a '%2' transform you need to first select %3 in the Center pane.")
            .arg(selected, transform.name(), inputsNeeded(transform)));
    return false;
}

TransformNode *GraphScene::addTransform(std::unique_ptr<Transform> transform, const QPointF &pos)
{
    QList<int> ids;
    const QList<Node *> selected = selectedNodes();
    for (const Node *node : selected) {
        if (node->canHaveDownstream()) {
            ids.append(node->id());
        }
    }
    return doOrKeep([this, ids, pos, kept = std::move(transform)]() mutable -> TransformNode * {
        const QList<Node *> upstream = nodesOf(ids);
        if (!suits(*kept, upstream.size())) {
            return nullptr;
        }
        QList<const UpstreamItem *> items;
        for (const Node *input : upstream) {
            items.append(input);
        }
        kept->redefineParameters(items);
        kept->setInitialValues();
        auto node = std::make_unique<TransformNode>(std::move(kept));
        TransformNode *raw = node.get();
        node->setId(newId());
        node->setPos(pos);
        std::vector<std::unique_ptr<Connection>> connections;
        for (Node *input : upstream) {
            connections.push_back(std::make_unique<Connection>(input, raw));
        }
        push(std::make_unique<StructureCommand>(this, tr("add '%1'").arg(raw->displayName()),
                                                oneOf<Node>(std::move(node)),
                                                std::move(connections)));
        return raw;
    });
}

TransformNode *GraphScene::insertTransform(std::unique_ptr<Transform> transform,
                                           Connection *inserted)
{
    if (!suits(*transform, 1)) {
        return nullptr;
    }
    return doOrKeep([this, fromId = inserted->from()->id(), toId = inserted->to()->id(),
                     kept = std::move(transform)]() mutable -> TransformNode * {
        Node *from = node(fromId);
        Node *to = node(toId);
        Connection *cut = connection(from, to);
        if (!cut) {
            return nullptr;
        }
        kept->redefineParameters({from});
        kept->setInitialValues();
        auto item = std::make_unique<TransformNode>(std::move(kept));
        TransformNode *raw = item.get();
        item->setId(newId());
        // At the height of the item above, so that the inputs of the one below keep their order.
        const double room = to->pos().x() - from->pos().x();
        item->setPos(from->pos() + QPointF(std::max(std::floor(room / 2), columnSpacing), 0.0));
        std::vector<std::unique_ptr<Connection>> connections;
        connections.push_back(std::make_unique<Connection>(from, raw));
        connections.push_back(std::make_unique<Connection>(raw, to));

        auto command = std::make_unique<CompositeCommand>(tr("add '%1'").arg(raw->displayName()));
        command->add(std::make_unique<StructureCommand>(this, QString(), QList<Node *>(),
                                                        QList<Connection *>{cut}));
        if (room > 0 && room < 2 * columnSpacing) {
            const QList<Node *> below = QList<Node *>{to} + downstreamOf({to});
            command->add(
                std::make_unique<MoveCommand>(this, below, QPointF(2 * columnSpacing - room, 0.0)));
        }
        command->add(std::make_unique<StructureCommand>(
            this, QString(), oneOf<Node>(std::move(item)), std::move(connections)));
        push(std::move(command));
        return raw;
    });
}

OutputNode *GraphScene::addOutput(const OutputOptions &options, Node *upstream, const QPointF &pos)
{
    const int upstreamId = upstream && upstream->canHaveDownstream() ? upstream->id() : -1;
    return doOrKeep([this, options, upstreamId, pos] {
        auto output = std::make_unique<OutputNode>(options);
        OutputNode *raw = output.get();
        output->setId(newId());
        output->setPos(pos);
        output->setAlias(uniqueAlias(options.medium == Medium::File ? options.path : QString()));
        std::unique_ptr<Connection> connection;
        if (Node *input = node(upstreamId)) {
            connection = std::make_unique<Connection>(input, raw);
        }
        push(std::make_unique<StructureCommand>(
            this, tr("add output"), oneOf<Node>(std::move(output)), oneOf(std::move(connection))));
        return raw;
    });
}

bool GraphScene::addConnection(Node *from, Node *to)
{
    QString error;
    if (!canConnect(from, to, &error)) {
        Q_EMIT showWarningMessage(error);
        return false;
    }
    return doOrKeep([this, fromId = from->id(), toId = to->id()] {
        Node *above = node(fromId);
        Node *below = node(toId);
        if (!canConnect(above, below)) {
            return false;
        }
        push(std::make_unique<StructureCommand>(this, tr("add connection"), oneOf<Node>(nullptr),
                                                oneOf(std::make_unique<Connection>(above, below))));
        return true;
    });
}
