#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QVector>

class GraphScene;
class Node;
struct ProcessContext;

enum class RunMode : qint32 { All = 0, Changed = 1, Selected = 2, Batch = 3 };

struct RunOptions
{
    RunMode mode = RunMode::All;
    /// Ids of items that take no part, whatever their status.
    QSet<int> leftOut;
    /// Nobody will look at the tables: each is let go when every item below it has been processed.
    bool nobodyWatches = false;
};

struct RunResult
{
    /// False when nothing was done because a run was already under way.
    bool started = false;
    int pending = 0;
    int processed = 0;
    int errors = 0;
    int withWarnings = 0;
    bool stopped = false;
    /// The user (or nobody) did not raise the memory limit: the program is to end. The two figures
    /// are in units of 2^30 bytes.
    bool memoryExceeded = false;
    double memoryLimitGb = 0.0;
    double memoryUsedGb = 0.0;
};

/// Brings the items of a scene up to date in dependency order. MaxMemoryException ends here: it
/// becomes part of the result.
class RunEngine : public QObject
{
    Q_OBJECT

public:
    explicit RunEngine(GraphScene *scene);
    ~RunEngine() override;

    RunResult run(const RunOptions &options);
    bool isRunning() const { return m_running; }
    /// The item in hand, else null.
    Node *currentNode() const { return m_current; }
    int pendingAtStart() const { return m_result.pending; }
    int processedSoFar() const { return m_result.processed; }

    /// The stop flag is one for the whole process. Commands that start a run clear it before and
    /// after.
    static void requestStop();
    static void clearStop();
    static bool stopRequested();

private:
    friend class GraphScene;

    void log(const QString &text) const;
    /// An item was marked: the pending list has to be made anew before the next item.
    void itemMarked() { m_stale = true; }
    void markItems(RunMode mode);
    void bringBackReleased();
    QVector<Node *> collectPending();
    void processAll();
    bool processItem(Node *node);
    void letGoAbove(const Node *node);
    bool reportItemProgress(Node *node, double fraction);
    void checkMemory() const;
    ProcessContext contextFor(Node *node);
    void logEnd();

    GraphScene *m_scene;
    RunOptions m_options;
    RunResult m_result;
    bool m_running = false;
    bool m_stale = false;
    Node *m_current = nullptr;
    /// Ids of the items that the run may process, and of those still to be processed.
    QSet<int> m_taken;
    QSet<int> m_pending;
    /// How many items below an item, by its id, are still to be processed.
    QHash<int, int> m_pendingBelow;
    /// In order of their end; an item that ran again is named again.
    QVector<int> m_processed;
    QStringList m_inputPaths;
    QElapsedTimer m_timer;
    QElapsedTimer m_lastEvents;
};
