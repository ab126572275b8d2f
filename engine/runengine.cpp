#include "runengine.h"

#include "connection.h"
#include "graphscene.h"
#include "inputnode.h"
#include "memoryceiling.h"
#include "outputnode.h"
#include "outputwriter.h"
#include "runqueue.h"
#include "texts.h"
#include "userinterface.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <algorithm>
#include <optional>

namespace {

constexpr int eventsMilliseconds = 50;

bool stopFlag = false;

/// Items below a left-out item cannot run, and items above left-out ones alone need not.
QSet<int> withNeighbours(const GraphScene &scene, const QSet<int> &leftOut)
{
    QSet<int> result(leftOut);
    QList<Node *> waiting;
    for (const int id : leftOut) {
        Node *node = scene.node(id);
        if (node && node->kind() != ItemKind::Output) {
            waiting.append(node);
        }
    }
    const QList<Node *> below = scene.downstreamOf(waiting);
    for (const Node *node : below) {
        result.insert(node->id());
    }

    waiting.clear();
    for (const int id : std::as_const(result)) {
        if (Node *node = scene.node(id)) {
            waiting.append(node);
        }
    }
    while (!waiting.isEmpty()) {
        const Node *node = waiting.takeLast();
        for (const Connection *connection : node->upstreamConnections()) {
            Node *above = connection->from();
            const QVector<Connection *> &fed = above->downstreamConnections();
            const bool useless =
                std::all_of(fed.begin(), fed.end(), [&result](const Connection *each) {
                    return result.contains(each->to()->id());
                });
            if (useless && !result.contains(above->id())) {
                result.insert(above->id());
                waiting.append(above);
            }
        }
    }
    return result;
}

QString itemLine(const Node &node)
{
    const QString line =
        RunEngine::tr("  Processed %1 '%2' Id=%3 (%4) in %5 [%6], %7")
            .arg(itemKindLabel(node.kind()), node.displayName(), QString::number(node.id()),
                 node.sizeLabel(), Texts::elapsed(node.processingMilliseconds()), node.resultText(),
                 itemStatusText(node.status()));
    return node.warnings().isEmpty() ? line : line + RunEngine::tr(" - has warnings");
}

} // namespace

RunEngine::RunEngine(GraphScene *scene)
    : m_scene(scene)
{
}

RunEngine::~RunEngine() = default;

void RunEngine::requestStop()
{
    stopFlag = true;
}

void RunEngine::clearStop()
{
    stopFlag = false;
}

bool RunEngine::stopRequested()
{
    return stopFlag;
}

void RunEngine::log(const QString &text) const
{
    m_scene->userInterface()->log(LogLevel::Information, text);
}

RunResult RunEngine::run(const RunOptions &options)
{
    if (m_running) {
        return {};
    }
    m_running = true;
    m_result = RunResult();
    m_result.started = true;
    m_options = options;
    m_options.leftOut = withNeighbours(*m_scene, options.leftOut);
    m_processed.clear();
    m_lastEvents.start();

    Q_EMIT m_scene->startedTransforms();
    log(tr("Started run at: %1").arg(QDateTime::currentDateTime().toString()));
    m_timer.start();
    markItems(options.mode);
    try {
        processAll();
    } catch (const MaxMemoryException &exception) {
        m_result.memoryExceeded = true;
        m_result.memoryLimitGb = exception.limitGb();
        m_result.memoryUsedGb = exception.usedGb();
        m_current = nullptr;
    }
    logEnd();

    m_scene->applyWaiting();
    m_running = false;
    const RunResult result = m_result;
    Q_EMIT m_scene->completedTransforms();
    m_scene->runEnded(result.stopped || result.memoryExceeded);
    return result;
}

void RunEngine::markItems(RunMode mode)
{
    m_taken.clear();
    m_pending.clear();
    const QSet<int> &selected = m_scene->m_selectedIds;
    const QList<Node *> nodes = m_scene->nodes();
    for (Node *node : nodes) {
        if (node->kind() == ItemKind::Note || m_options.leftOut.contains(node->id())) {
            continue;
        }
        m_taken.insert(node->id());
        const bool wanted = mode == RunMode::Changed    ? node->status() == ItemStatus::Error
                            : mode == RunMode::Selected ? selected.contains(node->id())
                                                        : true;
        if (wanted) {
            node->setStatus(ItemStatus::NeedsUpdating, true);
        }
    }
    for (const Node *node : nodes) {
        if (m_taken.contains(node->id()) && node->status() != ItemStatus::UpToDate) {
            m_pending.insert(node->id());
        }
    }
    bringBackReleased();
    m_result.pending = m_pending.size();
}

/// Items whose tables were let go run again when an item below them is going to need them.
void RunEngine::bringBackReleased()
{
    QList<int> waiting(m_pending.begin(), m_pending.end());
    while (!waiting.isEmpty()) {
        const Node *node = m_scene->node(waiting.takeLast());
        for (const Connection *connection : node->upstreamConnections()) {
            Node *above = connection->from();
            if (above->hasReleasedDataset() && !m_pending.contains(above->id())) {
                above->setStatus(ItemStatus::NeedsUpdating, true);
                m_pending.insert(above->id());
                waiting.append(above->id());
            }
        }
    }
}

/// The items still to be processed, in the order of the passes. Items that were marked since the
/// run began run again; those that have gone drop out.
QVector<Node *> RunEngine::collectPending()
{
    QVector<Node *> pending;
    QSet<int> ids;
    m_inputPaths.clear();
    m_pendingBelow.clear();
    const QString folder = m_scene->document().folder();
    const QList<Node *> nodes = m_scene->nodes();
    for (Node *node : nodes) {
        const bool marked =
            node->status() == ItemStatus::NeedsUpdating && m_taken.contains(node->id());
        if (marked || m_pending.contains(node->id())) {
            pending.append(node);
            ids.insert(node->id());
            for (const Connection *connection : node->upstreamConnections()) {
                ++m_pendingBelow[connection->from()->id()];
            }
        }
        const auto *input = qobject_cast<const InputNode *>(node);
        if (input && input->medium() == Medium::File) {
            const QString path = resolvedPath(input->path(), folder);
            const QString canonical = path.isEmpty() ? path : QFileInfo(path).canonicalFilePath();
            if (!canonical.isEmpty()) {
                m_inputPaths.append(canonical);
            }
        }
    }
    m_pending = ids;
    m_stale = false;
    return pending;
}

void RunEngine::processAll()
{
    RunQueue queue(collectPending());
    for (;;) {
        if (m_stale) {
            queue = RunQueue(collectPending());
        }
        if (m_pending.isEmpty()) {
            return;
        }
        // Null: what is left waits for items that take no part.
        Node *node = stopFlag ? nullptr : queue.next();
        if (node && processItem(node)) {
            queue.ended(node);
            m_scene->applyWaiting();
        } else {
            m_result.stopped = stopFlag;
            break;
        }
    }
    if (m_result.stopped) {
        log(tr("  Stopped by user"));
    }
}

/// False when the user stopped the item.
bool RunEngine::processItem(Node *node)
{
    m_current = node;
    m_pending.remove(node->id());
    Q_EMIT m_scene->showStatusBarMessage(tr("Processing '%1'").arg(node->displayName()));
    const bool done = node->process(contextFor(node)) == ProcessResult::Done;
    if (done) {
        ++m_result.processed;
        m_processed.append(node->id());
        log(itemLine(*node));
        if (m_options.nobodyWatches) {
            letGoAbove(node);
        }
    }
    m_current = nullptr;
    Q_EMIT node->processingEnd(node);
    if (done && node->changedWhileProcessing()) {
        node->setStatus(ItemStatus::NeedsUpdating, true);
    }
    return done;
}

void RunEngine::letGoAbove(const Node *node)
{
    for (const Connection *connection : node->upstreamConnections()) {
        Node *above = connection->from();
        if (--m_pendingBelow[above->id()] <= 0 && above->status() == ItemStatus::UpToDate) {
            above->releaseDataset();
        }
    }
}

ProcessContext RunEngine::contextFor(Node *node)
{
    ProcessContext context;
    context.documentFolder = m_scene->document().folder();
    context.inputPaths = m_inputPaths;
    context.blockedOutputExtensions = m_scene->preferences().blockedOutputExtensions;
    context.userInterface = m_scene->userInterface();
    context.unattended = m_options.mode == RunMode::Batch;
    context.progress = [this, node](double fraction) { return reportItemProgress(node, fraction); };
    return context;
}

bool RunEngine::reportItemProgress(Node *node, double fraction)
{
    checkMemory();
    node->showProgress(fraction);
    if (m_lastEvents.elapsed() >= eventsMilliseconds) {
        QCoreApplication::processEvents();
        m_lastEvents.start();
    }
    return !stopFlag;
}

void RunEngine::checkMemory() const
{
    if (!MemoryCeiling::isExceeded()) {
        return;
    }
    const double limit = MemoryCeiling::limitGb();
    const double used = MemoryCeiling::memoryInUseGb();
    const std::optional<double> answer = m_scene->userInterface()->askForMemory(limit, used);
    if (!answer) {
        throw MaxMemoryException(limit, used);
    }
    MemoryCeiling::setLimitGb(*answer);
}

void RunEngine::logEnd()
{
    const QString elapsed = Texts::elapsed(m_timer.elapsed());
    log(tr("Ended run at: %1").arg(QDateTime::currentDateTime().toString()));
    if (m_result.processed > 0) {
        log(tr("%1 item(s) processed in %2").arg(Texts::count(m_result.processed), elapsed));
    }
    QSet<int> told;
    for (const int id : std::as_const(m_processed)) {
        const Node *node = m_scene->node(id);
        if (!node || told.contains(id)) {
            continue;
        }
        told.insert(id);
        m_result.errors += node->status() == ItemStatus::Error ? 1 : 0;
        m_result.withWarnings += node->warnings().isEmpty() ? 0 : 1;
        for (const QString &warning : node->warnings()) {
            log(tr("%1: %2").arg(node->displayName(), warning));
        }
    }
    if (m_result.withWarnings > 0) {
        log(tr("%1 item(s) with warnings\n").arg(Texts::count(m_result.withWarnings)));
    }
    Q_EMIT m_scene->showStatusBarMessage(QString());
    if (!m_result.stopped && !m_result.memoryExceeded &&
        m_scene->preferences().soundWhenCompleted) {
        m_scene->userInterface()->beep();
    }
}
