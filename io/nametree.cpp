#include "nametree.h"

#include <vector>

namespace {

// With fewer children a walk over them is faster than an index.
constexpr int mostWithoutIndex = 8;

} // namespace

NameTree::NameTree()
{
    m_nodes.emplace_back();
}

NameTree::Node *NameTree::lookUp(Node *parent, std::string_view name)
{
    Node *node = find(parent, name);
    if (!node) {
        node = append(parent, name);
    }
    parent->expected = node->nextSibling;
    return node;
}

NameTree::Node *NameTree::find(const Node *parent, std::string_view name) const
{
    if (parent->index) {
        const auto found = parent->index->find(name);
        return found == parent->index->end() ? nullptr : found->second;
    }
    for (Node *node = parent->firstChild; node; node = node->nextSibling) {
        if (node->name == name) {
            return node;
        }
    }
    return nullptr;
}

NameTree::Node *NameTree::append(Node *parent, std::string_view name)
{
    Node *const node = &m_nodes.emplace_back();
    node->name = name;
    node->parent = parent;
    (parent->lastChild ? parent->lastChild->nextSibling : parent->firstChild) = node;
    parent->lastChild = node;
    ++parent->childCount;
    if (parent->index) {
        parent->index->emplace(node->name, node);
    } else if (parent->childCount > mostWithoutIndex) {
        parent->index = std::make_unique<std::unordered_map<std::string_view, Node *>>();
        for (Node *each = parent->firstChild; each; each = each->nextSibling) {
            parent->index->emplace(each->name, each);
        }
    }
    return node;
}

std::string NameTree::path(const Node *node)
{
    std::vector<const Node *> steps;
    for (; node->parent; node = node->parent) {
        steps.push_back(node);
    }
    std::string path;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        if (step != steps.rbegin()) {
            path += '.';
        }
        path += (*step)->name;
    }
    return path;
}
