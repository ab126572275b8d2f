#pragma once

#include "nametree.h"
#include "xmlevents.h"

#include <QStringList>
#include <vector>

/// The elements of a document by their paths: which of them repeat under one parent, and so which
/// are its records.
class XmlShape final : public XmlHandler
{
public:
    using Node = NameTree::Node;

    bool beginElement(std::string_view name, const char *const *attributes) override;
    bool endElement() override;
    bool text(std::string_view part) override;

    /// Chooses the records, when the document has been read: the shallowest element that repeats
    /// under one parent, the most frequent of them; else each child of the root, or the root
    /// itself when one of its children is a plain text.
    void chooseRecords();
    bool isRecord(const Node *node) const
    {
        return m_record ? node == m_record : node->parent == m_parentOfRecords;
    }
    QString recordName() const;

    /// Paths, from the root on, of what stands outside of the records and is therefore not read.
    struct Outside
    {
        QStringList paths;
        bool repeats = false;
    };
    Outside outside() const;

    Node *root() { return m_names.root(); }
    /// Goes on to an element's child; every element of the document is known.
    Node *child(Node *parent, std::string_view name) { return m_names.child(parent, name); }

private:
    static bool isPlain(const Node *node) { return !node->firstChild && !node->hasAttributes; }

    NameTree m_names;
    std::vector<Node *> m_open{m_names.root()};
    /// The number of each open element.
    std::vector<quint64> m_instances{0};
    quint64 m_instance = 0;
    const Node *m_record = nullptr;
    const Node *m_parentOfRecords = nullptr;
};

/// True for the attributes that declare name spaces, which are no data.
bool declaresNameSpace(std::string_view attribute);
