#include "connection.h"
#include "graphcommands.h"
#include "graphscene.h"
#include "inputnode.h"
#include "outputnode.h"
#include "runengine.h"
#include "texts.h"
#include "transform.h"
#include "transformparameter.h"
#include "userinterface.h"

#include <QFileInfo>
#include <QUndoStack>
#include <algorithm>
#include <limits>

namespace {

constexpr double itemSpacing = 100.0;

QString freeAlias(const QString &path, const QString &otherwise, const QSet<QString> &taken)
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

/// Another file beside `path` that none of the taken paths names.
QString freePath(const QString &path, const QSet<QString> &taken)
{
    const QString suffix = QFileInfo(path).suffix();
    const int end = suffix.isEmpty() ? path.size() : path.size() - suffix.size() - 1;
    QString result = path;
    for (int number = 2; taken.contains(result); ++number) {
        result = path.left(end) + QString::number(number) + path.mid(end);
    }
    return result;
}

QList<int> idsOf(const QList<Node *> &nodes)
{
    QList<int> ids;
    for (const Node *node : nodes) {
        ids.append(node->id());
    }
    return ids;
}

QList<Connection *> inOrder(const QSet<Connection *> &connections)
{
    QList<Connection *> result(connections.begin(), connections.end());
    std::sort(result.begin(), result.end(), [](const Connection *a, const Connection *b) {
        return a->sequence() < b->sequence();
    });
    return result;
}

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

template <class Item>
std::vector<std::unique_ptr<Item>> oneOf(std::unique_ptr<Item> item)
{
    std::vector<std::unique_ptr<Item>> items;
    if (item) {
        items.push_back(std::move(item));
    }
    return items;
}

} // namespace

// --- Doing, undoing and waiting

bool GraphScene::applyWaiting()
{
    if (m_waiting.empty()) {
        return false;
    }
    m_applying = true;
    // An operation may tell the user something, and so let further ones come in.
    for (size_t i = 0; i < m_waiting.size(); ++i) {
        const std::function<void()> operation = std::move(m_waiting[i]);
        operation();
    }
    m_waiting.clear();
    m_applying = false;
    m_historyWaiting = false;
    return true;
}

void GraphScene::push(std::unique_ptr<QUndoCommand> command)
{
    m_sawMark = false;
    m_undoStack->push(command.release());
    afterEdit();
}

void GraphScene::pushEdit(std::unique_ptr<QUndoCommand> command)
{
    // Options are stored at once even during a run, but not before an undo that was asked earlier.
    if (m_historyWaiting) {
        doOrKeep([this, kept = std::move(command)]() mutable { push(std::move(kept)); });
    } else {
        push(std::move(command));
    }
}

void GraphScene::nodeMarked()
{
    m_sawMark = true;
    m_runEngine->itemMarked();
}

void GraphScene::afterEdit()
{
    if (!m_sawMark || !m_document.autoRun) {
        return;
    }
    if (isRunning()) {
        m_autoRunAfterRun = true;
    } else {
        Q_EMIT autoRunWanted();
    }
}

void GraphScene::runEnded(bool stopped)
{
    const bool wanted = m_autoRunAfterRun && m_document.autoRun && !stopped;
    m_autoRunAfterRun = false;
    if (wanted) {
        Q_EMIT autoRunWanted();
    }
}

void GraphScene::undo()
{
    m_historyWaiting = mustWait();
    doOrKeep([this] {
        m_sawMark = false;
        m_undoStack->undo();
        afterEdit();
    });
}

void GraphScene::redo()
{
    m_historyWaiting = mustWait();
    doOrKeep([this] {
        m_sawMark = false;
        m_undoStack->redo();
        afterEdit();
    });
}

void GraphScene::setClean()
{
    m_undoStack->setClean();
}

QList<Node *> GraphScene::nodesOf(const QList<int> &ids) const
{
    QList<Node *> nodes;
    QSet<int> seen;
    for (const int id : ids) {
        Node *found = node(id);
        if (found && !seen.contains(id)) {
            seen.insert(id);
            nodes.append(found);
        }
    }
    return nodes;
}

// --- Adding

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

// --- Deleting

bool GraphScene::mayDisconnect(const QSet<const Node *> &deleted,
                               const QList<Connection *> &connections) const
{
    QSet<Node *> affected;
    for (const Connection *connection : connections) {
        affected.insert(connection->to());
    }
    QList<Node *> items(affected.begin(), affected.end());
    items += downstreamOf(items);
    int count = 0;
    for (const Node *node : std::as_const(items)) {
        const auto *transform = qobject_cast<const TransformNode *>(node);
        if (!transform || deleted.contains(node)) {
            continue;
        }
        const QList<TransformParameter *> parameters = transform->transform().parameters();
        count += int(std::count_if(parameters.begin(), parameters.end(),
                                   [](const TransformParameter *parameter) {
                                       return parameter->refersToColumns() && parameter->isSet();
                                   }));
    }
    return count == 0 ||
           m_userInterface->confirm(
               tr("This disconnection may reset %1 column related option(s) downstream. Are you "
                  "sure you want to do that?\n\nTo put a transform between two items there is no "
                  "need to disconnect them: insert it into their connection instead.")
                   .arg(Texts::count(count)));
}

void GraphScene::deleteItems(const QList<Node *> &nodes, const QList<Connection *> &connections)
{
    QSet<const Node *> deleted;
    QList<int> ids;
    for (const Node *node : nodes) {
        if (contains(node) && !deleted.contains(node)) {
            deleted.insert(node);
            ids.append(node->id());
        }
    }
    QList<Connection *> cut;
    QList<QPair<int, int>> pairs;
    for (Connection *connection : connections) {
        cut.append(connection);
        pairs.append({connection->from()->id(), connection->to()->id()});
    }
    for (const Node *node : std::as_const(deleted)) {
        cut += node->downstreamConnections().toList();
    }
    if ((ids.isEmpty() && pairs.isEmpty()) || !mayDisconnect(deleted, cut)) {
        return;
    }
    doOrKeep([this, ids, pairs] {
        QList<Connection *> found;
        for (const auto &[from, to] : pairs) {
            if (Connection *cutNow = connection(node(from), node(to))) {
                found.append(cutNow);
            }
        }
        deleteNow(nodesOf(ids), found);
    });
}

void GraphScene::deleteNow(const QList<Node *> &nodes, const QList<Connection *> &connections)
{
    QSet<Connection *> cut(connections.begin(), connections.end());
    for (const Node *node : nodes) {
        for (Connection *connection : node->upstreamConnections()) {
            cut.insert(connection);
        }
        for (Connection *connection : node->downstreamConnections()) {
            cut.insert(connection);
        }
    }
    if (nodes.isEmpty() && cut.isEmpty()) {
        return;
    }
    const bool remind = !nodes.isEmpty() && !cut.isEmpty() && !m_deleteHintShown;
    push(std::make_unique<StructureCommand>(this, tr("delete"), nodes, inOrder(cut)));
    if (remind) {
        m_deleteHintShown = true;
        Q_EMIT showTempMessage(tr("You can delete/insert transforms without deleting connections. "
                                  "See 'Reference>Connections' in the help."));
    }
}

// --- Duplicating and moving

void GraphScene::duplicateBranch(const QList<Node *> &nodes)
{
    doOrKeep([this, ids = idsOf(nodes)] {
        QList<Node *> branch = nodesOf(ids);
        branch += downstreamOf(branch);
        if (!branch.isEmpty()) {
            duplicateNow(branch);
        }
    });
}

void GraphScene::duplicateNow(const QList<Node *> &nodes)
{
    QList<Node *> branch(nodes);
    std::sort(branch.begin(), branch.end(),
              [](const Node *a, const Node *b) { return a->sequence() < b->sequence(); });
    double top = branch.first()->pos().y();
    double bottom = top;
    QSet<QString> takenPaths;
    QSet<QString> takenAliases = aliases();
    for (const Node *node : std::as_const(branch)) {
        top = std::min(top, node->pos().y());
        bottom = std::max(bottom, node->pos().y());
    }
    const QList<OutputNode *> existing = outputs();
    for (const OutputNode *output : existing) {
        takenPaths.insert(output->path());
    }

    QHash<const Node *, Node *> copies;
    std::vector<std::unique_ptr<Node>> owned;
    for (const Node *node : std::as_const(branch)) {
        std::unique_ptr<Node> copy = node->clone();
        copy->setId(newId());
        copy->setPos(node->pos() + QPointF(0.0, bottom - top + itemSpacing));
        if (auto *item = qobject_cast<IONode *>(copy.get())) {
            // The copy of an output must not overwrite what the first one writes.
            if (item->kind() == ItemKind::Output) {
                item->setPath(freePath(item->path(), takenPaths));
                takenPaths.insert(item->path());
            }
            item->setAlias(freeAlias(item->path(), QStringLiteral("clipboard"), takenAliases));
            takenAliases.insert(item->alias());
        }
        copies.insert(node, copy.get());
        owned.push_back(std::move(copy));
    }

    QSet<Connection *> above;
    for (const Node *node : std::as_const(branch)) {
        for (Connection *connection : node->upstreamConnections()) {
            above.insert(connection);
        }
    }
    std::vector<std::unique_ptr<Connection>> connections;
    const QList<Connection *> ordered = inOrder(above);
    for (const Connection *connection : ordered) {
        Node *from = copies.value(connection->from(), connection->from());
        connections.push_back(std::make_unique<Connection>(from, copies.value(connection->to())));
    }
    push(std::make_unique<StructureCommand>(this, tr("duplicate branch"), std::move(owned),
                                            std::move(connections)));
}

void GraphScene::moveItems(const QList<Node *> &nodes, const QPointF &offset)
{
    if (offset.isNull()) {
        return;
    }
    doOrKeep([this, ids = idsOf(nodes), offset] {
        const QList<Node *> moved = nodesOf(ids);
        if (!moved.isEmpty()) {
            push(std::make_unique<MoveCommand>(this, moved, offset));
        }
    });
}

// --- Options

void GraphScene::editParameter(TransformNode *node, const QString &key, const QVariant &value)
{
    const TransformParameter *parameter = node->transform().parameter(key);
    if (!parameter || !contains(node)) {
        return;
    }
    const QVariant before = parameter->value;
    pushEdit(std::make_unique<EditCommand>(
        this, parameter->label, node, key,
        [node, key, value] { node->setParameterValue(key, value); },
        [node, key, before] { node->setParameterValue(key, before); }));
}

void GraphScene::editOptions(InputNode *node, const InputOptions &options, const QString &label)
{
    const InputOptions before = node->options();
    pushEdit(std::make_unique<EditCommand>(
        this, label, node, label, [node, options] { node->setOptions(options); },
        [node, before] { node->setOptions(before); }));
}

void GraphScene::editOptions(OutputNode *node, const OutputOptions &options, const QString &label)
{
    const OutputOptions before = node->options();
    pushEdit(std::make_unique<EditCommand>(
        this, label, node, label, [node, options] { node->setOptions(options); },
        [node, before] { node->setOptions(before); }));
}

void GraphScene::editName(Node *node, const QString &name)
{
    if (node->kind() == ItemKind::Transform || node->name() == name) {
        return;
    }
    const auto set = [node](const QString &text) {
        node->setName(text);
        // Some formats show the name of the output as the title.
        if (node->kind() == ItemKind::Output) {
            node->setStatus(ItemStatus::NeedsUpdating, true);
        }
    };
    const QString before = node->name();
    pushEdit(std::make_unique<EditCommand>(
        this, tr("Name"), node, QStringLiteral("name"), [set, name] { set(name); },
        [set, before] { set(before); }));
}

void GraphScene::editComment(Node *node, const QString &comment)
{
    if (node->comment() == comment) {
        return;
    }
    const QString before = node->comment();
    pushEdit(std::make_unique<EditCommand>(
        this, tr("Comment"), node, QStringLiteral("comment"),
        [node, comment] { node->setComment(comment); },
        [node, before] { node->setComment(before); }));
}

void GraphScene::editAlias(IONode *node, const QString &alias)
{
    if (node->alias() == alias) {
        return;
    }
    const QString before = node->alias();
    pushEdit(std::make_unique<EditCommand>(
        this, tr("Alias"), node, QStringLiteral("alias"), [node, alias] { node->setAlias(alias); },
        [node, before] { node->setAlias(before); }));
}

void GraphScene::editAppearance(NoteNode *node, const QString &color, NoteArrow arrow)
{
    pushEdit(std::make_unique<EditCommand>(
        this, tr("Note"), node, QStringLiteral("appearance"),
        [node, color, arrow] { node->setAppearance(color, arrow); },
        [node, oldColor = node->color(), oldArrow = node->arrow()] {
            node->setAppearance(oldColor, oldArrow);
        }));
}
