#include "documentloader.h"

#include "graphscene.h"
#include "inputnode.h"
#include "notenode.h"
#include "outputnode.h"
#include "transform.h"
#include "transformcatalogue.h"
#include "transformnode.h"
#include "transformparameter.h"

void DocumentLoader::load(const DocumentRecords &records)
{
    for (const InputRecord &record : records.inputs) {
        addInput(record);
    }
    for (const TransformRecord &record : records.transforms) {
        addTransform(record);
    }
    for (const OutputRecord &record : records.outputs) {
        addOutput(record);
    }
    for (const NoteRecord &record : records.notes) {
        addNote(record);
    }
    for (const ConnectionRecord &record : records.connections) {
        addConnection(record);
    }
    DocumentSettings &settings = m_scene->document();
    settings.id = records.meta.id;
    settings.localeName = records.meta.locale;
    settings.notes = records.meta.notes;
    settings.snapToGrid = records.meta.snapToGrid;
    settings.autoRun = records.meta.autoRun;
    settings.batchValues = records.batchValues;
    settings.batchLogging = records.batchLogging;

    tellMissingTypes(records.meta.version > DocumentRecords::formatVersion);
    tellNotUnderstood(records);
}

bool DocumentLoader::isUsableId(int id, const QString &kind)
{
    if (id < 0) {
        m_warnings.append(tr("%1 item without an id was left out.").arg(kind));
        return false;
    }
    if (m_scene->node(id) || m_leftOut.contains(id)) {
        m_warnings.append(tr("%1 item with id %2 was left out: another item has the same id.")
                              .arg(kind, QString::number(id)));
        return false;
    }
    return true;
}

template <class Item>
Item *DocumentLoader::added(std::unique_ptr<Item> item, const ItemRecord &record)
{
    if (!isUsableId(record.id, itemKindLabel(item->kind()))) {
        return nullptr;
    }
    item->setId(record.id);
    item->setName(record.name);
    item->setComment(record.comment);
    item->setPos(record.position);
    return m_scene->insert(std::move(item));
}

void DocumentLoader::addInput(const InputRecord &record)
{
    if (InputNode *node = added(std::make_unique<InputNode>(record.options), record)) {
        node->setAlias(record.alias);
    }
}

void DocumentLoader::addOutput(const OutputRecord &record)
{
    if (OutputNode *node = added(std::make_unique<OutputNode>(record.options), record)) {
        node->setAlias(record.alias);
    }
}

void DocumentLoader::addNote(const NoteRecord &record)
{
    if (NoteNode *node = added(std::make_unique<NoteNode>(), record)) {
        node->setAppearance(record.color.isEmpty() ? node->color() : record.color,
                            NoteArrow(record.arrow));
    }
}

void DocumentLoader::addTransform(const TransformRecord &record)
{
    std::unique_ptr<Transform> transform = m_catalogue.create(record.name);
    if (!transform) {
        ++m_missingTypes[record.name];
        m_leftOut.insert(record.id);
        return;
    }
    // The record's name is that of the type: the item has none of its own.
    ItemRecord item = record;
    item.name.clear();
    if (TransformNode *node = added(std::make_unique<TransformNode>(std::move(transform)), item)) {
        setParameters(node, record);
    }
}

void DocumentLoader::setParameters(TransformNode *node, const TransformRecord &record)
{
    Transform &transform = node->transform();
    for (const StoredParameter &stored : record.parameters) {
        if (transform.isBuilt() && !transform.parameter(stored.key)) {
            ++m_unknownParameters[tr("option '%1' of '%2'").arg(stored.key, record.name)];
        }
        if (!transform.setStoredParameter(stored)) {
            m_warnings.append(tr("The stored value of option '%1' of '%2' with id %3 is not "
                                 "possible and was replaced by the default.")
                                  .arg(stored.key, record.name, QString::number(record.id)));
        }
    }
}

void DocumentLoader::addConnection(const ConnectionRecord &record)
{
    if (m_leftOut.contains(record.start) || m_leftOut.contains(record.end)) {
        return;
    }
    Node *from = m_scene->node(record.start);
    Node *to = m_scene->node(record.end);
    QString error;
    if (!from || !to) {
        error = tr("There is no item with id %1.").arg(from ? record.end : record.start);
    } else if (m_scene->connectNodes(from, to, &error)) {
        return;
    }
    m_warnings.append(tr("The connection from id %1 to id %2 was left out: %3")
                          .arg(QString::number(record.start), QString::number(record.end), error));
}

// A type is missing because it was given up, or because a later version of the program has it.
void DocumentLoader::tellMissingTypes(bool laterVersion)
{
    static const QMap<QString, QString> advice = {
        {QStringLiteral("Replace"), tr("- use the newer 'Replace' transform.")},
        {QStringLiteral("Trim"), tr("- use the newer 'Whitespace' transform.")},
        {QStringLiteral("Rename"), tr("- use the newer 'Rename' transform.")}};
    QStringList deprecated;
    QStringList unknown;
    for (auto type = m_missingTypes.cbegin(); type != m_missingTypes.cend(); ++type) {
        QString line = tr("'%1' (%2 %3)")
                           .arg(type.key(), QString::number(type.value()),
                                type.value() == 1 ? tr("occurrence") : tr("occurrences"));
        if (advice.contains(type.key())) {
            line += QLatin1Char(' ') + advice.value(type.key());
        }
        (laterVersion && !advice.contains(type.key()) ? unknown : deprecated).append(line);
    }
    if (!deprecated.isEmpty()) {
        m_warnings.append(tr("The following deprecated transforms were not added:") +
                          QLatin1Char('\n') + deprecated.join(QLatin1Char('\n')));
    }
    if (!unknown.isEmpty()) {
        m_warnings.append(tr("The following transforms of a later version were not added:") +
                          QLatin1Char('\n') + unknown.join(QLatin1Char('\n')));
    }
}

void DocumentLoader::tellNotUnderstood(const DocumentRecords &records)
{
    m_warnings.append(records.replacedValues);
    QMap<QString, int> all = records.notUnderstood;
    for (auto it = m_unknownParameters.cbegin(); it != m_unknownParameters.cend(); ++it) {
        all.insert(it.key(), it.value());
    }
    if (all.isEmpty()) {
        return;
    }
    QStringList lines{tr("The following was not understood and has no effect:")};
    for (auto it = all.cbegin(); it != all.cend(); ++it) {
        lines.append(it.value() == 1
                         ? it.key()
                         : tr("%1 (%2 occurrences)").arg(it.key(), QString::number(it.value())));
    }
    m_warnings.append(lines.join(QLatin1Char('\n')));
}
