#include "runqueue.h"

#include "connection.h"
#include "node.h"

RunQueue::RunQueue(const QVector<Node *> &pending)
{
    m_entries.reserve(pending.size());
    for (int i = 0; i < pending.size(); ++i) {
        m_entries.insert(pending[i], {i, 0});
    }
    for (int i = 0; i < pending.size(); ++i) {
        Node *node = pending[i];
        Entry &entry = m_entries[node];
        for (const Connection *connection : node->upstreamConnections()) {
            const Node *above = connection->from();
            if (above->status() == ItemStatus::NeedsUpdating || m_entries.contains(above)) {
                ++entry.waitsFor;
            }
        }
        if (entry.waitsFor == 0) {
            m_ready.push({0, i, node});
        }
    }
}

Node *RunQueue::next()
{
    if (m_ready.empty()) {
        return nullptr;
    }
    const Ready ready = m_ready.top();
    m_ready.pop();
    m_pass = ready.pass;
    return ready.node;
}

void RunQueue::ended(const Node *node)
{
    const int position = m_entries.value(node).position;
    for (const Connection *connection : node->downstreamConnections()) {
        const auto entry = m_entries.find(connection->to());
        if (entry != m_entries.end() && --entry->waitsFor == 0) {
            // This pass has gone by an item that stands before the one that ended.
            const int pass = entry->position > position ? m_pass : m_pass + 1;
            m_ready.push({pass, entry->position, connection->to()});
        }
    }
}
