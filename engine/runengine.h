#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QSet>
#include <QVector>

class GraphScene;
class Node;

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
    GraphScene *m_scene;
    bool m_running = false;
    Node *m_current = nullptr;
    RunResult m_result;
};
