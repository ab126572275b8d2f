#pragma once

#include <QtGlobal>

class Node;

/// An edge from an upstream item to a downstream item. Owned by the GraphScene, or by an undo
/// command while it is removed.
class Connection
{
public:
    Connection(Node *from, Node *to)
        : m_from(from)
        , m_to(to)
    {
    }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    Node *from() const { return m_from; }
    Node *to() const { return m_to; }
    /// Grows with every connection made; documents store connections in this order.
    qint64 sequence() const { return m_sequence; }

private:
    friend class GraphScene;
    Node *m_from;
    Node *m_to;
    qint64 m_sequence = -1;
};
