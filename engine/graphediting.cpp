#include "connection.h"
#include "graphcommands.h"
#include "graphedithelpers.h"
#include "graphscene.h"
#include "inputnode.h"
#include "outputnode.h"
#include "runengine.h"
#include "transform.h"
#include "transformparameter.h"

#include <QPointer>
#include <QUndoStack>

using namespace GraphEdit;

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

void GraphScene::pushEdit(Node *node, std::unique_ptr<QUndoCommand> command)
{
    if (!contains(node)) {
        return;
    }
    if (!m_historyWaiting) {
        push(std::move(command));
        return;
    }
    // Options are stored at once even during a run, but not before an undo that was asked earlier,
    // which may take the item away.
    doOrKeep([this, kept = std::move(command), item = QPointer<Node>(node)]() mutable {
        if (item && contains(item)) {
            push(std::move(kept));
        }
    });
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

void GraphScene::markOutdated(const QList<InputNode *> &inputs)
{
    m_sawMark = false;
    for (InputNode *input : inputs) {
        if (contains(input)) {
            input->setStatus(ItemStatus::NeedsUpdating, true);
        }
    }
    afterEdit();
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

// --- Moving

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
    if (!parameter) {
        return;
    }
    const QVariant before = parameter->value;
    pushEdit(node, std::make_unique<EditCommand>(
                       this, parameter->label, node, key,
                       [node, key, value] { node->setParameterValue(key, value); },
                       [node, key, before] { node->setParameterValue(key, before); }));
}

void GraphScene::editOptions(InputNode *node, const InputOptions &options, const QString &label)
{
    const InputOptions before = node->options();
    pushEdit(node, std::make_unique<EditCommand>(
                       this, label, node, label, [node, options] { node->setOptions(options); },
                       [node, before] { node->setOptions(before); }));
}

void GraphScene::editOptions(OutputNode *node, const OutputOptions &options, const QString &label)
{
    const OutputOptions before = node->options();
    pushEdit(node, std::make_unique<EditCommand>(
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
    pushEdit(node, std::make_unique<EditCommand>(
                       this, tr("Name"), node, QStringLiteral("name"), [set, name] { set(name); },
                       [set, before] { set(before); }));
}

void GraphScene::editComment(Node *node, const QString &comment)
{
    if (node->comment() == comment) {
        return;
    }
    const QString before = node->comment();
    pushEdit(node, std::make_unique<EditCommand>(
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
    pushEdit(node, std::make_unique<EditCommand>(
                       this, tr("Alias"), node, QStringLiteral("alias"),
                       [node, alias] { node->setAlias(alias); },
                       [node, before] { node->setAlias(before); }));
}

void GraphScene::editAppearance(NoteNode *node, const QString &color, NoteArrow arrow)
{
    pushEdit(node, std::make_unique<EditCommand>(
                       this, tr("Note"), node, QStringLiteral("appearance"),
                       [node, color, arrow] { node->setAppearance(color, arrow); },
                       [node, oldColor = node->color(), oldArrow = node->arrow()] {
                           node->setAppearance(oldColor, oldArrow);
                       }));
}
