#pragma once

#include "dataset.h"
#include "messages.h"
#include "progress.h"
#include "upstreamitem.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointF>
#include <QString>
#include <QVector>
#include <memory>

class Connection;
class UserInterface;

enum class ItemKind { Input, Transform, Output, Note };
/// "Input", "Transform", "Output" or "Note".
QString itemKindLabel(ItemKind kind);

enum class ItemStatus : qint32 { NeedsUpdating = 0, Updating = 1, UpToDate = 2, Error = 3 };
QString itemStatusText(ItemStatus status);

/// What an item may use while it is processed.
struct ProcessContext
{
    /// Folder of the saved document; empty while it has never been saved.
    QString documentFolder;
    /// Canonical paths of the files that the inputs of the document read.
    QStringList inputPaths;
    QStringList blockedOutputExtensions;
    /// Null: nobody can be asked and there is no clipboard.
    UserInterface *userInterface = nullptr;
    bool unattended = false;
    /// Answers false when the run is to stop. May throw MaxMemoryException.
    Progress progress;
};

enum class ProcessResult {
    /// The item is "Up to date" or in "Error".
    Done,
    /// The user stopped it: it keeps its old table and "Needs updating".
    Stopped
};

/// An item of the graph. Owned by the GraphScene (or by an undo command while it is deleted);
/// connections are made and removed by the scene only.
class Node : public QObject, public UpstreamItem
{
    Q_OBJECT

public:
    ~Node() override;

    virtual ItemKind kind() const = 0;
    /// A copy of the item with all options; without id, connections, table and messages.
    virtual std::unique_ptr<Node> clone() const = 0;

    /// Unique in the document; -1 while the item has never been part of a scene.
    int id() const { return m_id; }
    void setId(int id) { m_id = id; }
    /// The name that is stored; may be empty.
    QString name() const { return m_name; }
    void setName(const QString &name);
    /// The name shown on the canvas and in the log; never empty.
    virtual QString displayName() const;
    /// Of a note: its text.
    QString comment() const { return m_comment; }
    void setComment(const QString &comment);
    QPointF pos() const { return m_pos; }
    /// Positions that are not finite are taken as 0. Input orders are the scene's business: use
    /// GraphScene::moveItems() or, while loading, set the position before connecting.
    void setPos(const QPointF &pos);
    /// Higher is nearer to the viewer. Not stored in documents.
    int stackingOrder() const { return m_stackingOrder; }
    void setStackingOrder(int order) { m_stackingOrder = order; }
    /// Grows with every item added to the scene; an item that undo brings back keeps its own.
    qint64 sequence() const { return m_sequence; }

    ItemStatus status() const { return m_status; }
    /// "Needs updating" with propagation marks every item downstream too. An item that is being
    /// processed is marked when it has ended.
    void setStatus(ItemStatus status, bool propagate);
    /// True when the item was marked while it was being processed.
    bool changedWhileProcessing() const { return m_changedWhileProcessing; }

    const Dataset &dataset() const { return m_dataset; }
    void setDataset(const Dataset &dataset);
    /// Drops the table but remembers its columns; see hasReleasedDataset().
    void releaseDataset();
    /// True for an item that is up to date but whose table was let go.
    bool hasReleasedDataset() const { return m_released; }
    /// "12 cols x 3,400 rows", or "No data". Survives releaseDataset().
    QString sizeLabel() const { return m_sizeLabel; }

    const QStringList &information() const { return m_messages.information; }
    const QStringList &warnings() const { return m_messages.warnings; }
    /// Invalid while the item has never been processed.
    QDateTime lastProcessed() const { return m_lastProcessed; }
    qint64 processingMilliseconds() const { return m_processingMilliseconds; }

    /// In input order: by height, then x, then id.
    QList<Node *> upstreamNodes() const;
    QList<Node *> downstreamNodes() const;
    const QVector<Connection *> &upstreamConnections() const { return m_upstream; }
    const QVector<Connection *> &downstreamConnections() const { return m_downstream; }
    /// 2147483647: no upper limit.
    virtual int maximumUpstream() const { return 0; }
    virtual bool canHaveDownstream() const { return false; }

    /// Brings the table up to date. Never throws but MaxMemoryException, which leaves the item as
    /// it was, marked "Needs updating".
    ProcessResult process(const ProcessContext &context);

    /// The last of the two descriptive texts of the log line: what the item did or is.
    virtual QString resultText() const = 0;

    /// Emits processed(): at most every 250 ms and not when little has changed, but always for 0
    /// and 1.
    void showProgress(double fraction);

    /// Called by the scene when the upstream connections or their order have changed.
    virtual void upstreamChanged() {}

    QString upstreamName() const override { return displayName(); }
    QStringList upstreamColumns() const override { return m_columns; }
    bool upstreamColumnsKnown() const override { return !m_columns.isEmpty(); }
    bool upstreamHasHeader() const override { return m_columnsFromHeader; }

Q_SIGNALS:
    void nodePosChanged(Node *node);
    void processingStart(Node *node);
    /// Fraction 0 to 1; at most every 250 ms but for the first and the last.
    void processed(Node *node, qreal fraction);
    /// Emitted by the run engine when the item's line has been logged.
    void processingEnd(Node *node);
    /// Anything shown of the item but its position: name, comment, options, status, table.
    void dataChanged(Node *node);
    /// The item was marked "Needs updating", also when it was so before. Slots must not edit.
    void marked(Node *node);

protected:
    Node();
    void copyTo(Node *other) const;
    /// For option setters: marks the item and everything downstream.
    void markChanged();

    /// Does the item's work. A failure is told with messages->fail(); the table is then dropped.
    virtual Dataset run(const ProcessContext &context, Messages *messages) = 0;

private:
    friend class GraphScene;

    Dataset guardedRun(const ProcessContext &context, Messages *messages);
    void end(const Dataset &result, const Messages &messages, qint64 milliseconds);
    void leave(ItemStatus status);
    bool isMarked() const;
    void mark();

    int m_id = -1;
    QString m_name;
    QString m_comment;
    QPointF m_pos;
    int m_stackingOrder = 0;
    qint64 m_sequence = -1;
    ItemStatus m_status = ItemStatus::NeedsUpdating;
    bool m_processing = false;
    bool m_changedWhileProcessing = false;
    bool m_stopped = false;
    bool m_released = false;
    Dataset m_dataset;
    QString m_sizeLabel;
    QStringList m_columns;
    bool m_columnsFromHeader = false;
    Messages m_messages;
    QDateTime m_lastProcessed;
    qint64 m_processingMilliseconds = 0;
    QElapsedTimer m_lastShown;
    double m_shownFraction = 0.0;
    QVector<Connection *> m_upstream;
    QVector<Connection *> m_downstream;
};
