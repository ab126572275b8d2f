#pragma once

#include "documentrecords.h"

#include <QCoreApplication>
#include <QSet>
#include <memory>

class GraphScene;
class Node;
class TransformCatalogue;
class TransformNode;

/// Makes the items and connections of a scene from the records of a document. What cannot be made
/// is left out and told; the rest is made.
class DocumentLoader
{
    Q_DECLARE_TR_FUNCTIONS(DocumentLoader)

public:
    /// The scene is empty.
    DocumentLoader(const TransformCatalogue &catalogue, GraphScene *scene)
        : m_catalogue(catalogue)
        , m_scene(scene)
    {
    }

    void load(const DocumentRecords &records);
    const QStringList &warnings() const { return m_warnings; }

private:
    void addInput(const InputRecord &record);
    void addTransform(const TransformRecord &record);
    void addOutput(const OutputRecord &record);
    void addNote(const NoteRecord &record);
    void addConnection(const ConnectionRecord &record);
    void setParameters(TransformNode *node, const TransformRecord &record);
    template <class Item>
    Item *added(std::unique_ptr<Item> item, const ItemRecord &record);
    bool isUsableId(int id, const QString &kind);
    void tellMissingTypes(bool laterVersion);
    void tellNotUnderstood(const DocumentRecords &records);

    const TransformCatalogue &m_catalogue;
    GraphScene *m_scene;
    QStringList m_warnings;
    QMap<QString, int> m_missingTypes;
    QMap<QString, int> m_unknownParameters;
    /// Ids of items that were told to be left out, so that their connections need no mention.
    QSet<int> m_leftOut;
};
