#include "documentcodec.h"
#include "documentfields.h"
#include "documentxml.h"
#include "listcodec.h"

#include <QDomDocument>
#include <QHashFunctions>

namespace {

/// Puts the members of a record into an element; see documentfields.h.
class FieldWriter
{
public:
    explicit FieldWriter(const QDomElement &element)
        : m_element(element)
    {
    }
    virtual ~FieldWriter() = default;

    void integer(const char *name, int value, int = 0, int = 0)
    {
        put(name, QString::number(value));
    }
    void flag(const char *name, bool value) { integer(name, value ? 1 : 0); }
    template <class Choice>
    void choice(const char *name, Choice value, Choice, Choice = Choice())
    {
        integer(name, int(value));
    }
    template <class Choice>
    void choiceUnlessFirst(const char *name, Choice value, Choice last)
    {
        if (value != Choice()) {
            choice(name, value, last);
        }
    }
    void text(const char *name, const QString &value)
    {
        putUnlessEmpty(name, ListCodec::encodedText(value));
    }
    void textOrDefault(const char *name, const QString &value) { text(name, value); }
    void textIfAny(const char *name, const QString &value)
    {
        if (!value.isEmpty()) {
            text(name, value);
        }
    }
    void list(const char *name, const QStringList &value)
    {
        putUnlessEmpty(name, ListCodec::encoded(value));
    }
    void numbers(const char *name, const QList<int> &value)
    {
        QStringList texts;
        for (const int number : value) {
            texts.append(QString::number(number));
        }
        list(name, texts);
    }
    void position(const char *name, QPointF value)
    {
        put(name, DocumentCodec::encodedPosition(value));
    }
    void oldPosition(const char *name, QPointF value)
    {
        put(name, DocumentCodec::encodedOldPosition(value));
    }

protected:
    virtual void put(const char *name, const QString &value)
    {
        m_element.setAttribute(QLatin1String(name), value);
    }
    virtual void putUnlessEmpty(const char *name, const QString &value)
    {
        if (!value.isEmpty()) {
            put(name, value);
        }
    }

    QDomElement m_element;
};

/// The same for properties: a child element each.
class PropertyWriter final : public FieldWriter
{
public:
    using FieldWriter::FieldWriter;

protected:
    void put(const char *name, const QString &value) override
    {
        QDomElement property = m_element.ownerDocument().createElement(QLatin1String(name));
        if (!value.isEmpty()) {
            property.setAttribute(QStringLiteral("value"), value);
        }
        m_element.appendChild(property);
    }
    void putUnlessEmpty(const char *name, const QString &value) override { put(name, value); }
};

QDomElement appended(QDomNode parent, const char *tag)
{
    QDomElement element = parent.ownerDocument().createElement(QLatin1String(tag));
    parent.appendChild(element);
    return element;
}

// Records are copied because one description serves reading and writing; their members are shared.
template <class Record>
QDomElement append(const QDomNode &parent, const char *tag, Record record)
{
    QDomElement element = appended(parent, tag);
    FieldWriter writer(element);
    DocumentFields::describe(writer, record);
    return element;
}

template <class Record>
void appendAll(const QDomNode &root, const char *section, const char *tag,
               const QList<Record> &records)
{
    const QDomElement parent = appended(root, section);
    for (const Record &record : records) {
        append(parent, tag, record);
    }
}

void appendTransforms(const QDomNode &root, const QList<TransformRecord> &transforms)
{
    const QDomElement parent = appended(root, "transforms");
    for (const TransformRecord &transform : transforms) {
        appendAll(append(parent, "transform", transform), "parameters", "parameter",
                  transform.parameters);
    }
}

} // namespace

QByteArray DocumentXml::written(const DocumentRecords &records)
{
    // Attributes are kept in hash tables: with a random seed their order would change from one run
    // to the next.
    qSetGlobalQHashSeed(0);
    QDomDocument document(QStringLiteral("Tabweave"));
    QDomElement root = document.createElement(QStringLiteral("root"));
    document.appendChild(root);

    DocumentMeta meta = records.meta;
    PropertyWriter properties(appended(root, "meta"));
    DocumentFields::describe(properties, meta);
    appendAll(root, "inputs", "input", records.inputs);
    appendTransforms(root, records.transforms);
    appendAll(root, "outputs", "output", records.outputs);
    appendAll(root, "notes", "note", records.notes);
    appendAll(root, "connections", "connection", records.connections);
    appendAll(root, "batch_values", "batch_value", records.batchValues);
    append(root, "batch_logging", records.batchLogging);
    return document.toByteArray(4);
}
