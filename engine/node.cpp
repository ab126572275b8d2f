#include "node.h"

#include "connection.h"
#include "texts.h"

#include <QCoreApplication>
#include <QtMath>
#include <new>
#include <stdexcept>

namespace {

constexpr int repaintMilliseconds = 250;
constexpr double repaintFraction = 0.02;

double finiteOrZero(double value)
{
    return qIsFinite(value) ? value : 0.0;
}

} // namespace

QString itemKindLabel(ItemKind kind)
{
    switch (kind) {
    case ItemKind::Input:
        return QCoreApplication::translate("Node", "Input");
    case ItemKind::Transform:
        return QCoreApplication::translate("Node", "Transform");
    case ItemKind::Output:
        return QCoreApplication::translate("Node", "Output");
    case ItemKind::Note:
        return QCoreApplication::translate("Node", "Note");
    }
    return {};
}

QString itemStatusText(ItemStatus status)
{
    switch (status) {
    case ItemStatus::NeedsUpdating:
        return QCoreApplication::translate("Node", "Needs updating");
    case ItemStatus::Updating:
        return QCoreApplication::translate("Node", "Updating");
    case ItemStatus::UpToDate:
        return QCoreApplication::translate("Node", "Up to date");
    case ItemStatus::Error:
        return QCoreApplication::translate("Node", "Error");
    }
    return {};
}

Node::Node()
    : m_sizeLabel(tr("No data"))
{
}

Node::~Node() = default;

void Node::setName(const QString &name)
{
    if (m_name != name) {
        m_name = name;
        Q_EMIT dataChanged(this);
    }
}

QString Node::displayName() const
{
    return m_name.isEmpty() ? itemKindLabel(kind()) : m_name;
}

void Node::setComment(const QString &comment)
{
    if (m_comment != comment) {
        m_comment = comment;
        Q_EMIT dataChanged(this);
    }
}

void Node::setPos(const QPointF &pos)
{
    const QPointF valid(finiteOrZero(pos.x()), finiteOrZero(pos.y()));
    if (m_pos != valid) {
        m_pos = valid;
        Q_EMIT nodePosChanged(this);
    }
}

bool Node::isMarked() const
{
    return m_processing ? m_changedWhileProcessing : m_status == ItemStatus::NeedsUpdating;
}

void Node::mark()
{
    if (m_processing) {
        m_changedWhileProcessing = true;
    } else if (m_status != ItemStatus::NeedsUpdating) {
        m_status = ItemStatus::NeedsUpdating;
        Q_EMIT dataChanged(this);
    }
    Q_EMIT marked(this);
}

void Node::setStatus(ItemStatus status, bool propagate)
{
    if (status != ItemStatus::NeedsUpdating) {
        if (m_status != status) {
            m_status = status;
            Q_EMIT dataChanged(this);
        }
        return;
    }
    mark();
    // Below an item that is marked already everything is marked, so each item is visited once.
    QVector<Node *> waiting;
    if (propagate) {
        waiting.append(this);
    }
    while (!waiting.isEmpty()) {
        const Node *above = waiting.takeLast();
        for (const Connection *connection : above->m_downstream) {
            Node *below = connection->to();
            if (!below->isMarked()) {
                below->mark();
                waiting.append(below);
            }
        }
    }
}

void Node::markChanged()
{
    setStatus(ItemStatus::NeedsUpdating, true);
    Q_EMIT dataChanged(this);
}

void Node::setDataset(const Dataset &dataset)
{
    m_dataset = dataset;
    m_released = false;
    m_sizeLabel = dataset.hasColumns()
                      ? Texts::size(dataset.columnCount().value(), dataset.rowCount())
                      : tr("No data");
    // A failure or an empty file leaves the columns as they were, so that the options below do not
    // lose their references.
    if (dataset.hasColumns()) {
        m_columns = dataset.columnNames();
        m_columnsFromHeader = dataset.hasHeader();
    }
}

void Node::releaseDataset()
{
    if (!m_released) {
        m_dataset = Dataset();
        m_released = true;
    }
}

QList<Node *> Node::upstreamNodes() const
{
    QList<Node *> nodes;
    nodes.reserve(m_upstream.size());
    for (const Connection *connection : m_upstream) {
        nodes.append(connection->from());
    }
    return nodes;
}

QList<Node *> Node::downstreamNodes() const
{
    QList<Node *> nodes;
    nodes.reserve(m_downstream.size());
    for (const Connection *connection : m_downstream) {
        nodes.append(connection->to());
    }
    return nodes;
}

void Node::copyTo(Node *other) const
{
    other->m_name = m_name;
    other->m_comment = m_comment;
    other->m_pos = m_pos;
    other->m_stackingOrder = m_stackingOrder;
}

ProcessResult Node::process(const ProcessContext &context)
{
    m_processing = true;
    m_changedWhileProcessing = false;
    m_stopped = false;
    m_lastShown.invalidate();
    m_status = ItemStatus::Updating;
    Q_EMIT dataChanged(this);
    Q_EMIT processingStart(this);

    QElapsedTimer timer;
    timer.start();
    ProcessContext watched = context;
    watched.progress = [this, &context](double fraction) {
        const bool goOn = reportProgress(context.progress, fraction);
        // Work that is reported as done is not dropped: a file may already have been replaced.
        if (!goOn && fraction < 1.0) {
            m_stopped = true;
        }
        return !m_stopped;
    };

    Messages messages;
    Dataset result;
    try {
        if (watched.progress(0.0)) {
            result = guardedRun(watched, &messages);
        }
        if (!m_stopped) {
            watched.progress(1.0);
        }
    } catch (...) {
        leave(ItemStatus::NeedsUpdating);
        throw;
    }
    if (m_stopped) {
        leave(ItemStatus::NeedsUpdating);
        return ProcessResult::Stopped;
    }
    end(result, messages, timer.elapsed());
    return ProcessResult::Done;
}

Dataset Node::guardedRun(const ProcessContext &context, Messages *messages)
{
    const QString outOfMemory = tr("There is not enough memory to process this item.");
    try {
        return run(context, messages);
    } catch (const std::bad_alloc &) {
        messages->fail(outOfMemory);
    } catch (const std::length_error &) {
        messages->fail(outOfMemory);
    }
    return {};
}

void Node::end(const Dataset &result, const Messages &messages, qint64 milliseconds)
{
    m_messages = messages;
    setDataset(messages.failed ? Dataset() : result);
    m_lastProcessed = QDateTime::currentDateTime();
    m_processingMilliseconds = milliseconds;
    leave(messages.failed ? ItemStatus::Error : ItemStatus::UpToDate);
}

void Node::leave(ItemStatus status)
{
    m_processing = false;
    m_status = status;
    Q_EMIT dataChanged(this);
}

void Node::showProgress(double fraction)
{
    const bool bound = fraction <= 0.0 || fraction >= 1.0;
    const bool soon = m_lastShown.isValid() && m_lastShown.elapsed() < repaintMilliseconds;
    if (!bound && (soon || qAbs(fraction - m_shownFraction) < repaintFraction)) {
        return;
    }
    m_lastShown.start();
    m_shownFraction = fraction;
    Q_EMIT processed(this, fraction);
}
