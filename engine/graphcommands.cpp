#include "graphcommands.h"

#include "connection.h"
#include "graphscene.h"

#include <QCoreApplication>
#include <algorithm>

namespace {

using Options = std::vector<std::pair<TransformNode *, TransformNode::ParameterValues>>;

void remember(Node *node, QSet<Node *> *seen, Options *options)
{
    auto *transform = qobject_cast<TransformNode *>(node);
    if (transform && !seen->contains(node)) {
        seen->insert(node);
        options->emplace_back(transform, transform->parameterValues());
    }
}

void restore(const Options &options)
{
    for (const auto &[node, values] : options) {
        node->setParameterValues(values);
    }
}

} // namespace

GraphCommand::GraphCommand(GraphScene *scene, const QString &text)
    : QUndoCommand(text)
    , m_scene(scene)
{
}

void GraphCommand::attach(std::vector<std::unique_ptr<Node>> *nodes,
                          std::vector<std::unique_ptr<Connection>> *connections)
{
    for (std::unique_ptr<Node> &node : *nodes) {
        m_scene->attachNode(std::move(node));
    }
    for (std::unique_ptr<Connection> &connection : *connections) {
        m_scene->attachConnection(std::move(connection));
    }
    if (!nodes->empty()) {
        Q_EMIT m_scene->nodesAdded();
    }
    if (!connections->empty()) {
        Q_EMIT m_scene->connectionsChanged();
    }
    nodes->clear();
    connections->clear();
}

void GraphCommand::detach(const QList<Node *> &nodes, const QList<Connection *> &connections,
                          std::vector<std::unique_ptr<Node>> *keptNodes,
                          std::vector<std::unique_ptr<Connection>> *keptConnections)
{
    for (Connection *connection : connections) {
        keptConnections->push_back(m_scene->detachConnection(connection));
    }
    for (Node *node : nodes) {
        keptNodes->push_back(m_scene->detachNode(node));
    }
    if (!connections.isEmpty()) {
        Q_EMIT m_scene->connectionsChanged();
    }
    if (!nodes.isEmpty()) {
        Q_EMIT m_scene->nodesDeleted();
    }
}

QSet<Node *> GraphCommand::sortBelow(const QList<Node *> &nodes)
{
    QSet<Node *> seen;
    QSet<Node *> changed;
    for (const Node *node : nodes) {
        for (const Connection *connection : node->downstreamConnections()) {
            Node *below = connection->to();
            if (!seen.contains(below)) {
                seen.insert(below);
                if (m_scene->sortInputs(below)) {
                    changed.insert(below);
                    m_scene->inputsChanged(below);
                }
            }
        }
    }
    return changed;
}

StructureCommand::StructureCommand(GraphScene *scene, const QString &text,
                                   std::vector<std::unique_ptr<Node>> nodes,
                                   std::vector<std::unique_ptr<Connection>> connections)
    : GraphCommand(scene, text)
    , m_adds(true)
    , m_ownedNodes(std::move(nodes))
    , m_ownedConnections(std::move(connections))
{
    for (const std::unique_ptr<Node> &node : m_ownedNodes) {
        m_nodes.append(node.get());
    }
    for (const std::unique_ptr<Connection> &connection : m_ownedConnections) {
        m_connections.append(connection.get());
    }
}

StructureCommand::StructureCommand(GraphScene *scene, const QString &text,
                                   const QList<Node *> &nodes,
                                   const QList<Connection *> &connections)
    : GraphCommand(scene, text)
    , m_adds(false)
    , m_nodes(nodes)
    , m_connections(connections)
{
}

StructureCommand::~StructureCommand() = default;

void StructureCommand::rememberOptions()
{
    m_options.clear();
    QSet<Node *> seen;
    for (const Connection *connection : std::as_const(m_connections)) {
        remember(connection->to(), &seen, &m_options);
    }
}

void StructureCommand::restoreOptions()
{
    restore(m_options);
    m_options.clear();
}

void StructureCommand::redo()
{
    rememberOptions();
    if (m_adds) {
        attach(&m_ownedNodes, &m_ownedConnections);
    } else {
        detach(m_nodes, m_connections, &m_ownedNodes, &m_ownedConnections);
    }
}

void StructureCommand::undo()
{
    if (m_adds) {
        detach(m_nodes, m_connections, &m_ownedNodes, &m_ownedConnections);
    } else {
        attach(&m_ownedNodes, &m_ownedConnections);
    }
    restoreOptions();
}

MoveCommand::MoveCommand(GraphScene *scene, const QList<Node *> &nodes, const QPointF &offset)
    : GraphCommand(scene, QCoreApplication::translate("GraphScene", "move item(s)"))
{
    for (Node *node : nodes) {
        m_moves.push_back({node, node->pos(), node->pos() + offset});
    }
}

void MoveCommand::redo()
{
    m_options.clear();
    QSet<Node *> seen;
    QList<Node *> nodes;
    for (const Move &move : m_moves) {
        for (const Connection *connection : move.node->downstreamConnections()) {
            remember(connection->to(), &seen, &m_options);
        }
        move.node->setPos(move.after);
        nodes.append(move.node);
    }
    // Only options that followed a change of order are to be restored.
    const QSet<Node *> changed = sortBelow(nodes);
    m_options.erase(std::remove_if(m_options.begin(), m_options.end(),
                                   [&changed](const auto &options) {
                                       return !changed.contains(options.first);
                                   }),
                    m_options.end());
}

void MoveCommand::undo()
{
    QList<Node *> nodes;
    for (const Move &move : m_moves) {
        move.node->setPos(move.before);
        nodes.append(move.node);
    }
    sortBelow(nodes);
    restore(m_options);
    m_options.clear();
}

void CompositeCommand::redo()
{
    for (const std::unique_ptr<QUndoCommand> &step : m_steps) {
        step->redo();
    }
}

void CompositeCommand::undo()
{
    for (auto step = m_steps.rbegin(); step != m_steps.rend(); ++step) {
        (*step)->undo();
    }
}

EditCommand::EditCommand(GraphScene *scene, const QString &label, const Node *node,
                         const QString &option, Step redoStep, Step undoStep)
    : GraphCommand(scene, QCoreApplication::translate("GraphScene", "edit '%1'").arg(label))
    , m_node(node)
    , m_option(option)
    , m_redoStep(std::move(redoStep))
    , m_undoStep(std::move(undoStep))
{
}

bool EditCommand::mergeWith(const QUndoCommand *other)
{
    const auto *later = dynamic_cast<const EditCommand *>(other);
    if (!later || later->m_node != m_node || later->m_option != m_option) {
        return false;
    }
    m_redoStep = later->m_redoStep;
    return true;
}
