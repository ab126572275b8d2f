#pragma once

#include <QtGlobal>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

/// The names that nest in one another in a file, each path once, with what its reader notes of it.
/// Records tend to repeat their names in the same order, so the look-up first tries the name that
/// followed last time.
class NameTree
{
public:
    struct Node
    {
        std::string name;
        Node *parent = nullptr;
        Node *firstChild = nullptr;
        Node *lastChild = nullptr;
        Node *nextSibling = nullptr;
        /// The child that the next look-up tries first.
        Node *expected = nullptr;
        int childCount = 0;
        std::unique_ptr<std::unordered_map<std::string_view, Node *>> index;

        /// The number of the object in which the name was met last.
        quint64 seenIn = 0;
        /// Cells there were before its value.
        size_t cellsBefore = 0;
        /// Where the next of its repeated values goes.
        int next = 0;
        int column = -1;
        qint64 count = 0;
        bool repeats = false;
        bool hasAttributes = false;
        bool hasText = false;
    };

    NameTree();
    NameTree(const NameTree &) = delete;
    NameTree &operator=(const NameTree &) = delete;

    Node *root() { return &m_nodes.front(); }
    /// The child of that name, made now unless it is there.
    Node *child(Node *parent, std::string_view name)
    {
        Node *const guess = parent->expected;
        if (guess && guess->name == name) {
            parent->expected = guess->nextSibling;
            return guess;
        }
        return lookUp(parent, name);
    }
    /// The names from the root's child on, joined by dots.
    static std::string path(const Node *node);

private:
    Node *lookUp(Node *parent, std::string_view name);
    Node *find(const Node *parent, std::string_view name) const;
    Node *append(Node *parent, std::string_view name);

    /// A deque: nodes never move, and letting go of a deep tree needs no recursion.
    std::deque<Node> m_nodes;
};
