#pragma once

#include <QHash>
#include <QVector>
#include <queue>
#include <vector>

class Node;

/// Gives out pending items in the order in which repeated passes over the list would meet them, an
/// item being passed over while one above it needs updating or is pending itself. Costs what there
/// are items and connections, however many passes that would be.
class RunQueue
{
public:
    /// `pending` in the order of the passes.
    explicit RunQueue(const QVector<Node *> &pending);

    /// The next item, which then counts as taken; null when no item can be processed.
    Node *next();
    /// The item does not need updating any more: those below it may follow.
    void ended(const Node *node);

private:
    struct Entry
    {
        int position;
        int waitsFor;
    };
    struct Ready
    {
        int pass;
        int position;
        Node *node;

        bool operator<(const Ready &other) const
        {
            return pass != other.pass ? pass > other.pass : position > other.position;
        }
    };

    QHash<const Node *, Entry> m_entries;
    std::priority_queue<Ready, std::vector<Ready>> m_ready;
    int m_pass = 0;
};
