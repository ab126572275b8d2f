#include "documentcodec.h"
#include "documentfields.h"
#include "documentxml.h"
#include "listcodec.h"
#include "texts.h"
#include "xmlguard.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <QTextCodec>
#include <algorithm>
#include <limits>
#include <optional>
#include <vector>

namespace {

using Value = std::optional<QString>;

/// Fills the members of a record from an element; see documentfields.h. Whatever is missing or not
/// possible leaves the member alone, so a record's initial values are the defaults.
class FieldReader
{
    Q_DECLARE_TR_FUNCTIONS(FieldReader)

public:
    FieldReader(const QDomElement &element, DocumentRecords *records)
        : m_element(element)
        , m_records(records)
    {
    }
    virtual ~FieldReader() = default;

    void integer(const char *name, int &member, int least,
                 int most = std::numeric_limits<int>::max())
    {
        if (const Value value = take(name)) {
            bool ok = false;
            const int number = value->toInt(&ok);
            if (ok && number >= least && number <= most) {
                member = number;
            } else {
                reportReplaced(name, *value);
            }
        }
    }
    void flag(const char *name, bool &member)
    {
        int number = member ? 1 : 0;
        integer(name, number, 0, 1);
        member = number == 1;
    }
    template <class Choice>
    void choice(const char *name, Choice &member, Choice last)
    {
        int number = int(member);
        integer(name, number, 0, int(last));
        member = Choice(number);
    }
    template <class Choice>
    void choice(const char *name, Choice &member, Choice last, Choice otherwise)
    {
        const Choice missing = member;
        member = otherwise;
        choice(name, member, last);
        if (!wasFound()) {
            member = missing;
        }
    }
    template <class Choice>
    void choiceUnlessFirst(const char *name, Choice &member, Choice last)
    {
        choice(name, member, last);
    }
    void text(const char *name, QString &member)
    {
        member = ListCodec::decodedText(take(name).value_or(QString()));
    }
    void textIfAny(const char *name, QString &member) { text(name, member); }
    void textOrDefault(const char *name, QString &member)
    {
        const Value value = take(name);
        if (value && !value->isEmpty()) {
            member = ListCodec::decodedText(*value);
        }
    }
    void list(const char *name, QStringList &member)
    {
        member = ListCodec::decoded(take(name).value_or(QString()));
    }
    void numbers(const char *name, QList<int> &member);
    void position(const char *name, QPointF &member)
    {
        const Value value = take(name);
        m_positionRead = value && DocumentCodec::decodePosition(*value, &member);
        if (value && !m_positionRead) {
            reportReplaced(name, *value);
        }
    }
    void oldPosition(const char *name, QPointF &member)
    {
        const Value value = take(name);
        if (value && !m_positionRead && !DocumentCodec::decodePosition(*value, &member)) {
            reportReplaced(name, *value);
        }
    }

    /// True for the names asked for so far.
    bool knows(const QString &name) const
    {
        return std::find(m_asked.begin(), m_asked.end(), name) != m_asked.end();
    }
    /// Called when all attributes were asked for: collects the others.
    void finish();

protected:
    virtual Value find(const QString &name) const
    {
        return m_element.hasAttribute(name) ? Value(m_element.attribute(name)) : Value();
    }

    QDomElement m_element;

private:
    Value take(const char *name)
    {
        m_asked.push_back(QString::fromLatin1(name));
        const Value value = find(m_asked.back());
        m_wasFound = value.has_value();
        m_found += m_wasFound ? 1 : 0;
        return value;
    }
    bool wasFound() const { return m_wasFound; }
    void reportReplaced(const char *name, const QString &value)
    {
        m_records->replacedValues.append(
            tr("'%1' is not possible for '%2' of '%3' with id %4 and was replaced by the default.")
                .arg(value.left(100), QLatin1String(name), m_element.tagName(),
                     m_element.attribute(QStringLiteral("id"), QStringLiteral("-"))));
    }

    DocumentRecords *m_records;
    std::vector<QString> m_asked;
    int m_found = 0;
    bool m_wasFound = false;
    bool m_positionRead = false;
};

void FieldReader::numbers(const char *name, QList<int> &member)
{
    const Value value = take(name);
    if (!value) {
        return;
    }
    QList<int> numbers;
    for (const QString &text : ListCodec::decoded(*value)) {
        bool ok = false;
        numbers.append(text.toInt(&ok));
        if (!ok || numbers.last() < 0) {
            reportReplaced(name, *value);
            return;
        }
    }
    member = numbers;
}

void FieldReader::finish()
{
    const QDomNamedNodeMap attributes = m_element.attributes();
    if (attributes.count() == m_found) {
        return;
    }
    for (int i = 0; i < attributes.count(); ++i) {
        const QString name = attributes.item(i).nodeName();
        if (!knows(name)) {
            ++m_records->notUnderstood[tr("attribute '%1' of '%2'").arg(name, m_element.tagName())];
        }
    }
}

/// The same for properties: a child element each.
class PropertyReader final : public FieldReader
{
public:
    using FieldReader::FieldReader;

protected:
    Value find(const QString &name) const override
    {
        const QDomElement property = m_element.firstChildElement(name);
        return property.hasAttribute(QStringLiteral("value"))
                   ? Value(property.attribute(QStringLiteral("value")))
                   : Value();
    }
};

class DocumentReader
{
    Q_DECLARE_TR_FUNCTIONS(DocumentReader)

public:
    explicit DocumentReader(DocumentRecords *records)
        : m_records(records)
    {
    }

    void readRoot(const QDomElement &root);

private:
    template <class Record>
    Record read(const QDomElement &element)
    {
        Record record;
        FieldReader reader(element, m_records);
        DocumentFields::describe(reader, record);
        reader.finish();
        return record;
    }
    template <class Use>
    void forEachChild(const QDomElement &parent, const char *tag, Use use)
    {
        for (QDomElement child = parent.firstChildElement(); !child.isNull();
             child = child.nextSiblingElement()) {
            if (child.tagName() == QLatin1String(tag)) {
                use(child);
            } else {
                reportUnknown(child);
            }
        }
    }
    template <class Record>
    void readAll(const QDomElement &section, const char *tag, QList<Record> *records)
    {
        forEachChild(section, tag,
                     [&](const QDomElement &child) { records->append(read<Record>(child)); });
    }
    void readMeta(const QDomElement &meta);
    void readSection(const QDomElement &section);
    TransformRecord readTransform(const QDomElement &element);
    void reportUnknown(const QDomElement &element);

    DocumentRecords *m_records;
};

void DocumentReader::readRoot(const QDomElement &root)
{
    for (QDomElement section = root.firstChildElement(); !section.isNull();
         section = section.nextSiblingElement()) {
        readSection(section);
    }
}

void DocumentReader::readSection(const QDomElement &section)
{
    const QString tag = section.tagName();
    if (tag == QLatin1String("meta")) {
        readMeta(section);
    } else if (tag == QLatin1String("inputs")) {
        readAll(section, "input", &m_records->inputs);
    } else if (tag == QLatin1String("transforms")) {
        forEachChild(section, "transform", [this](const QDomElement &element) {
            m_records->transforms.append(readTransform(element));
        });
    } else if (tag == QLatin1String("outputs")) {
        readAll(section, "output", &m_records->outputs);
    } else if (tag == QLatin1String("notes")) {
        readAll(section, "note", &m_records->notes);
    } else if (tag == QLatin1String("connections")) {
        readAll(section, "connection", &m_records->connections);
    } else if (tag == QLatin1String("batch_values")) {
        readAll(section, "batch_value", &m_records->batchValues);
    } else if (tag == QLatin1String("batch_logging")) {
        m_records->batchLogging = read<BatchLogging>(section);
    } else {
        reportUnknown(section);
    }
}

void DocumentReader::readMeta(const QDomElement &meta)
{
    PropertyReader reader(meta, m_records);
    DocumentFields::describe(reader, m_records->meta);
    for (QDomElement property = meta.firstChildElement(); !property.isNull();
         property = property.nextSiblingElement()) {
        if (!reader.knows(property.tagName())) {
            reportUnknown(property);
        }
    }
}

// Option texts of earlier versions that have been renamed since.
void convertOldValue(const QString &typeName, StoredParameter *parameter)
{
    struct Renamed
    {
        const char *type;
        const char *parameter;
        const char *oldValue;
        const char *newValue;
    };
    static constexpr Renamed renamed[] = {
        {"Split", "Delimiter_Type", "Text", "Text delimiter"},
        {"Split", "Delimiter_Type", "Regex", "Regex delimiter"},
        {"Calculate", "Operation", "JulianDay", "DateToJulianDay"},
    };
    for (const Renamed &rename : renamed) {
        if (typeName == QLatin1String(rename.type) &&
            parameter->key == QLatin1String(rename.parameter) &&
            parameter->value == QLatin1String(rename.oldValue)) {
            parameter->value = QString::fromLatin1(rename.newValue);
            return;
        }
    }
}

TransformRecord DocumentReader::readTransform(const QDomElement &element)
{
    auto transform = read<TransformRecord>(element);
    forEachChild(element, "parameters", [&](const QDomElement &parameters) {
        readAll(parameters, "parameter", &transform.parameters);
    });
    for (StoredParameter &parameter : transform.parameters) {
        convertOldValue(transform.name, &parameter);
    }
    return transform;
}

void DocumentReader::reportUnknown(const QDomElement &element)
{
    ++m_records->notUnderstood[tr("element '%1' in '%2'")
                                   .arg(element.tagName().left(100),
                                        element.parentNode().toElement().tagName())];
}

QString formatError(const QString &message, int line, int column)
{
    return QCoreApplication::translate(
               "DocumentXml", "Format error '%1' detected at line %2 column %3.\nContact support "
                              "if you are sure this a %4 file.")
        .arg(message, QString::number(line), QString::number(column), Texts::productName());
}

} // namespace

bool DocumentXml::read(const QByteArray &bytes, DocumentRecords *records, QString *error)
{
    const QString text =
        QTextCodec::codecForUtfText(bytes, QTextCodec::codecForName("UTF-8"))->toUnicode(bytes);
    XmlFault fault;
    if (!checkXml(text, &fault)) {
        *error = formatError(fault.message, fault.line, fault.column);
        return false;
    }
    QDomDocument document;
    if (!document.setContent(text, &fault.message, &fault.line, &fault.column)) {
        *error = formatError(fault.message, fault.line, fault.column);
        return false;
    }
    if (document.doctype().name() != QLatin1String("Tabweave")) {
        *error = QCoreApplication::translate("DocumentXml", "Incorrect document type.");
        return false;
    }
    const QDomElement root = document.documentElement();
    if (root.tagName() != QLatin1String("root")) {
        *error = QCoreApplication::translate("DocumentXml", "Document root not found.");
        return false;
    }
    *records = DocumentRecords();
    DocumentReader(records).readRoot(root);
    return true;
}
