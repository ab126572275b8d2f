#pragma once

#include "documentsettings.h"
#include "inputoptions.h"
#include "notenode.h"
#include "outputoptions.h"
#include "preferences.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QVariant>
#include <functional>
#include <map>
#include <memory>
#include <vector>

class Connection;
class InputNode;
class IONode;
class OutputNode;
class QUndoCommand;
class QUndoStack;
class RunEngine;
class Transform;
class TransformNode;
class UserInterface;

/// The document's graph: owns items and connections, keeps it acyclic, offers undoable editing
/// operations and holds the run engine. A model: it paints nothing.
///
/// Editing operations may be called at any time. While an item is being processed, an operation
/// that changes the structure is kept and done as soon as that item has ended (it then answers
/// null or nothing); options are stored at once. Items named by a kept operation may be gone by
/// then, which is not an error.
class GraphScene : public QObject
{
    Q_OBJECT

public:
    explicit GraphScene(UserInterface *userInterface, QObject *parent = nullptr);
    ~GraphScene() override;

    UserInterface *userInterface() const { return m_userInterface; }
    const Preferences &preferences() const { return m_preferences; }
    /// Marks the items whose result depends on a preference that is another one now.
    void setPreferences(const Preferences &preferences);
    DocumentSettings &document() { return m_document; }
    const DocumentSettings &document() const { return m_document; }
    RunEngine &runEngine() { return *m_runEngine; }
    /// True from the start of a run to its end.
    bool isRunning() const;

    // --- Reading the graph

    /// In descending stacking order; the most recently added first among items stacked alike.
    QList<Node *> nodes() const;
    /// The first added first: the order of documents.
    QList<Node *> nodesByAddition() const;
    QList<InputNode *> inputs() const;
    QList<TransformNode *> transforms() const;
    QList<OutputNode *> outputs() const;
    QList<NoteNode *> notes() const;
    int nodeCount() const { return int(m_nodes.size()); }
    /// Null when there is none.
    Node *node(int id) const { return m_nodesById.value(id); }
    bool contains(const Node *node) const;
    /// In the order in which they were made.
    QList<Connection *> connections() const;
    Connection *connection(const Node *from, const Node *to) const;
    /// The items reached from these over connections, without these themselves.
    QList<Node *> downstreamOf(const QList<Node *> &nodes) const;

    // --- Building without undo (loading documents, tests)

    /// Takes an item into the scene. An id below 0 is replaced by a new one; an item whose id is in
    /// use is refused: null.
    template <class T>
    T *insert(std::unique_ptr<T> node)
    {
        T *raw = node.get();
        return insertNode(std::move(node)) ? raw : nullptr;
    }
    /// Connects two items; when the rules forbid it, answers false with the reason.
    bool connectNodes(Node *from, Node *to, QString *error = nullptr);
    /// Whether connectNodes() would succeed.
    bool canConnect(const Node *from, const Node *to, QString *error = nullptr) const;
    /// Removes all items, connections, settings and the undo history. Refused during a run.
    bool clear();
    /// Not used by any item of the document, nor by one that undo may bring back.
    int newId();
    /// An alias that no other item has, made from the file's name: "orders", "orders2".
    QString uniqueAlias(const QString &path) const;
    /// What the extension stands for, by the user's own table when there is one.
    FileType fileTypeOf(const QString &path) const;

    // --- Selection

    QList<Node *> selectedNodes() const;
    void setSelectedNodes(const QList<Node *> &nodes);

    // --- Undoable editing

    /// For texts, enabled states and signals; undo and redo go through the scene.
    const QUndoStack &undoStack() const { return *m_undoStack; }
    void undo();
    void redo();
    /// The document as it is now has been saved.
    void setClean();

    NoteNode *addNote(const QPointF &pos, const QString &text);
    /// One input for each file, from `pos` downwards. Files with blocked extensions are told and
    /// refused; a document among the files is announced with fileOpen() instead.
    QList<InputNode *> addInputs(const QStringList &paths, const QPointF &pos);
    InputNode *addClipboardInput(const QString &text, FileType type, const QPointF &pos);
    /// Connects to the selected items; tells the user when they do not suit.
    TransformNode *addTransform(std::unique_ptr<Transform> transform, const QPointF &pos);
    /// Puts the transform between the two items of a connection, and makes room for it there; tells
    /// the user when it does not take one input.
    TransformNode *insertTransform(std::unique_ptr<Transform> transform, Connection *connection);
    /// Connects to `upstream` when it is given.
    OutputNode *addOutput(const OutputOptions &options, Node *upstream, const QPointF &pos);
    /// Tells the user why when the rules forbid it.
    bool addConnection(Node *from, Node *to);
    /// Deletes items (with their connections) and single connections. Asks first when options that
    /// refer to columns may be lost.
    void deleteItems(const QList<Node *> &nodes, const QList<Connection *> &connections = {});
    /// Deletes items and connects each item above to each item below, where the rules allow.
    void deleteHealed(const QList<Node *> &nodes);
    /// Copies all items and connections of another scene into this one. From a document in another
    /// folder, relative paths become absolute.
    QList<Node *> paste(const GraphScene &copied, const QPointF &offset);
    /// Copies the items and everything downstream of them.
    void duplicateBranch(const QList<Node *> &nodes);
    void moveItems(const QList<Node *> &nodes, const QPointF &offset);

    void editParameter(TransformNode *node, const QString &key, const QVariant &value);
    /// `label` is the option's label, for the undo text.
    void editOptions(InputNode *node, const InputOptions &options, const QString &label);
    void editOptions(OutputNode *node, const OutputOptions &options, const QString &label);
    void editName(Node *node, const QString &name);
    void editComment(Node *node, const QString &comment);
    void editAlias(IONode *node, const QString &alias);
    void editAppearance(NoteNode *node, const QString &color, NoteArrow arrow);

    // --- Not an edit

    /// What these inputs read has changed: marks them and everything downstream, as an edit would,
    /// but leaves no trace in the undo history.
    void markOutdated(const QList<InputNode *> &inputs);

Q_SIGNALS:
    void selectionChanged();
    void nodesAdded();
    void nodesDeleted();
    void connectionsChanged();
    void nodeDataChanged(Node *node);
    void nodeParametersChanged(TransformNode *node);
    void nodePosChanged(Node *node);
    /// An item of a run starts, is on its way (0 to 1) or has ended.
    void processingStart(Node *node);
    void processed(Node *node, qreal fraction);
    void processingEnd(Node *node);
    void startedTransforms();
    void completedTransforms();
    /// Auto run is on and an edit marked an item.
    void autoRunWanted();
    void fileOpen(const QString &path);
    void showStatusBarMessage(const QString &text);
    void showWarningMessage(const QString &text);
    void showCriticalMessage(const QString &text);
    void showTempMessage(const QString &text);

private:
    friend class RunEngine;
    friend class GraphCommand;

    // --- Building blocks of commands
    bool insertNode(std::unique_ptr<Node> node);
    void attachNode(std::unique_ptr<Node> node);
    std::unique_ptr<Node> detachNode(Node *node);
    void attachConnection(std::unique_ptr<Connection> connection);
    std::unique_ptr<Connection> detachConnection(Connection *connection);
    /// True when the order of the item's inputs has become another one.
    bool sortInputs(Node *node);
    void inputsChanged(Node *node);

    // --- Editing, during a run too
    bool mustWait() const { return isRunning() && !m_applying; }
    /// Does an operation now, or keeps it until the item in hand has ended.
    template <class Operation>
    auto doOrKeep(Operation operation) -> decltype(operation())
    {
        if (!mustWait()) {
            return operation();
        }
        auto kept = std::make_shared<Operation>(std::move(operation));
        m_waiting.push_back([kept] { (*kept)(); });
        return decltype(operation())();
    }
    /// True when something was done.
    bool applyWaiting();
    void push(std::unique_ptr<QUndoCommand> command);
    void pushEdit(Node *node, std::unique_ptr<QUndoCommand> command);
    void afterEdit();
    void runEnded(bool stopped);
    void nodeMarked();

    QSet<QString> aliases() const;
    QList<Node *> nodesOf(const QList<int> &ids) const;
    QStringList withoutBlocked(const QStringList &paths);
    bool suits(const Transform &transform, int inputCount);
    bool mayDisconnect(const QSet<const Node *> &deleted,
                       const QList<Connection *> &connections) const;
    void deleteNow(const QList<Node *> &nodes, const QList<Connection *> &connections);
    void deleteHealedNow(const QList<Node *> &nodes);
    /// Gives copied items ids, and aliases and output paths that no other item has.
    void makeUnique(const std::vector<std::unique_ptr<Node>> &copies);
    void duplicateNow(const QList<Node *> &nodes);

    UserInterface *m_userInterface;
    Preferences m_preferences;
    DocumentSettings m_document;
    std::map<qint64, std::unique_ptr<Node>> m_nodes;
    QHash<int, Node *> m_nodesById;
    std::map<qint64, std::unique_ptr<Connection>> m_connections;
    QSet<int> m_usedIds;
    int m_highestId = 0;
    qint64 m_nextNodeSequence = 0;
    qint64 m_nextConnectionSequence = 0;
    QSet<int> m_selectedIds;
    std::unique_ptr<QUndoStack> m_undoStack;
    std::unique_ptr<RunEngine> m_runEngine;
    std::vector<std::function<void()>> m_waiting;
    bool m_applying = false;
    bool m_historyWaiting = false;
    bool m_sawMark = false;
    bool m_autoRunAfterRun = false;
    bool m_deleteHintShown = false;
};
