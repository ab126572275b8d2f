#pragma once

#include "transformnode.h"

#include <QPointF>
#include <QSet>
#include <QUndoCommand>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

class Connection;
class GraphScene;
class Node;

/// Base of the scene's undo commands: the only way for them to reach into the scene. Items are
/// named by pointer, because an item that is taken out of the scene stays alive in the command that
/// took it out for as long as undo or redo can bring it back.
class GraphCommand : public QUndoCommand
{
public:
    GraphCommand(GraphScene *scene, const QString &text);

protected:
    void attach(std::vector<std::unique_ptr<Node>> *nodes,
                std::vector<std::unique_ptr<Connection>> *connections);
    void detach(const QList<Node *> &nodes, const QList<Connection *> &connections,
                std::vector<std::unique_ptr<Node>> *keptNodes,
                std::vector<std::unique_ptr<Connection>> *keptConnections);
    /// Sorts the inputs of the items below these after a move; answers those that have another
    /// order now.
    QSet<Node *> sortBelow(const QList<Node *> &nodes);

    GraphScene *scene() const { return m_scene; }

private:
    GraphScene *m_scene;
};

/// Puts items and connections into the scene, or takes them out. Undoing either restores the
/// options of the transforms at the lower ends of the connections, whose column references may have
/// followed the change.
class StructureCommand final : public GraphCommand
{
public:
    /// Adds. Connections may also end or start at items that are in the scene already.
    StructureCommand(GraphScene *scene, const QString &text,
                     std::vector<std::unique_ptr<Node>> nodes,
                     std::vector<std::unique_ptr<Connection>> connections);
    /// Removes. The connections must include all those of the items.
    StructureCommand(GraphScene *scene, const QString &text, const QList<Node *> &nodes,
                     const QList<Connection *> &connections);
    ~StructureCommand() override;

    void redo() override;
    void undo() override;

private:
    void rememberOptions();
    void restoreOptions();

    bool m_adds;
    QList<Node *> m_nodes;
    QList<Connection *> m_connections;
    std::vector<std::unique_ptr<Node>> m_ownedNodes;
    std::vector<std::unique_ptr<Connection>> m_ownedConnections;
    std::vector<std::pair<TransformNode *, TransformNode::ParameterValues>> m_options;
};

/// Moves items; a move that changes the order of an item's inputs marks that item.
class MoveCommand final : public GraphCommand
{
public:
    MoveCommand(GraphScene *scene, const QList<Node *> &nodes, const QPointF &offset);

    void redo() override;
    void undo() override;

private:
    struct Move
    {
        Node *node;
        QPointF before;
        QPointF after;
    };
    std::vector<Move> m_moves;
    std::vector<std::pair<TransformNode *, TransformNode::ParameterValues>> m_options;
};

/// Several commands that are one step for the user: done in order, undone in reverse.
class CompositeCommand final : public QUndoCommand
{
public:
    using QUndoCommand::QUndoCommand;

    void add(std::unique_ptr<QUndoCommand> step) { m_steps.push_back(std::move(step)); }
    void redo() override;
    void undo() override;

private:
    std::vector<std::unique_ptr<QUndoCommand>> m_steps;
};

/// Sets an option. Successive edits of one option of one item become a single command.
class EditCommand final : public GraphCommand
{
public:
    using Step = std::function<void()>;
    /// `option` tells the options of an item apart.
    EditCommand(GraphScene *scene, const QString &label, const Node *node, const QString &option,
                Step redoStep, Step undoStep);

    int id() const override { return 1; }
    bool mergeWith(const QUndoCommand *other) override;
    void redo() override { m_redoStep(); }
    void undo() override { m_undoStep(); }

private:
    const Node *m_node;
    QString m_option;
    Step m_redoStep;
    Step m_undoStep;
};
