#include "xmlreader.h"

#include "inputoptions.h"
#include "nestedrecords.h"
#include "textdecoder.h"
#include "textinput.h"
#include "utf8.h"
#include "xmlshape.h"

#include <QCoreApplication>
#include <QTextCodec>
#include <optional>

namespace {

// Parts of the time: reading the text, then parsing it twice.
constexpr double shareOfText = 0.2;
constexpr double shareOfShape = 0.25;

struct XmlReader
{
    Q_DECLARE_TR_FUNCTIONS(XmlReader)
};

/// Gives the records of a document whose shape is known to the table.
class RecordReader final : public XmlHandler
{
public:
    RecordReader(XmlShape *shape, NestedRecords *records)
        : m_shape(shape)
        , m_records(records)
        , m_outer(shape->root())
    {
    }

    bool beginElement(std::string_view name, const char *const *attributes) override
    {
        XmlShape::Node *const node = m_shape->child(m_outer, name);
        node->expected = node->firstChild;
        m_outer = node;
        if (m_elements.empty()) {
            if (!m_shape->isRecord(node)) {
                return true;
            }
            m_records->beginRecord();
            m_text.clear();
            m_records->beginObject();
        } else {
            m_elements.back().hasChildren = true;
            m_records->beginMember(name, node->repeats);
        }
        m_elements.push_back({m_text.size(), node->repeats, false});
        for (; *attributes; attributes += 2) {
            addAttribute(attributes[0], attributes[1]);
        }
        return true;
    }

    bool endElement() override
    {
        m_outer = m_outer->parent;
        if (m_elements.empty()) {
            return true;
        }
        const Element element = m_elements.back();
        m_elements.pop_back();
        addText(element);
        if (m_elements.empty()) {
            m_records->endObject();
            m_records->endRecord();
        } else {
            m_records->endMember(element.repeats);
        }
        return true;
    }

    bool text(std::string_view part) override
    {
        if (!m_elements.empty()) {
            m_text += part;
        }
        return true;
    }

private:
    struct Element
    {
        /// Where its text starts; that of a finished child is cut off again.
        size_t textStart;
        bool repeats;
        bool hasChildren;
    };

    void addAttribute(const char *name, const char *value)
    {
        if (declaresNameSpace(name)) {
            return;
        }
        m_name.assign(1, '@');
        m_name += name;
        m_records->key(m_name);
        m_records->value(m_records->texts()->store(value));
    }

    /// The text around the children of an element is mostly indentation.
    void addText(const Element &element)
    {
        std::string_view text = std::string_view(m_text).substr(element.textStart);
        if (element.hasChildren) {
            text = Utf8::trimmed(text);
        }
        if (!text.empty()) {
            m_records->ownText(m_records->texts()->store(text));
        }
        m_text.resize(element.textStart);
    }

    XmlShape *m_shape;
    NestedRecords *m_records;
    XmlShape::Node *m_outer;
    std::vector<Element> m_elements;
    std::string m_text;
    std::string m_name;
};

Progress partOf(const Progress &progress, double from, double to)
{
    return [&progress, from, to](double done) {
        return reportProgress(progress, from + (to - from) * done);
    };
}

void noteOutside(const XmlShape &shape, Messages *messages)
{
    const XmlShape::Outside outside = shape.outside();
    if (outside.paths.isEmpty()) {
        return;
    }
    const QString text = XmlReader::tr("Each '%1' is a row. Outside of them and not read: %2.")
                             .arg(shape.recordName(), outside.paths.join(QLatin1String(", ")));
    if (outside.repeats) {
        messages->warn(text);
    } else {
        messages->note(text);
    }
}

/// Bytes that could not be decoded are explained when the document says how it is encoded.
void hintAtEncoding(const QString &declared, const TextSource &source, Messages *messages)
{
    const QTextCodec *const codec = QTextCodec::codecForName(declared.toLatin1());
    const QString used = source.encodingName();
    if (declared.isEmpty() || declared.compare(used, Qt::CaseInsensitive) == 0 ||
        (codec && codec == QTextCodec::codecForName(used.toLatin1()))) {
        return;
    }
    messages->warn(XmlReader::tr("The file says that its encoding is '%1', but it was read as "
                                 "'%2'. Set 'Encoding' option to change.")
                       .arg(declared, used));
}

} // namespace

Dataset readXml(const InputOptions &options, const QString &path, TextSource *source,
                Messages *messages, const Progress &progress)
{
    noteEncoding(options, *source, messages);
    const int warnings = messages->warnings.size();
    const std::optional<std::string> text =
        readWholeText(path, source, messages, progress, shareOfText);
    if (!text) {
        return {};
    }
    const bool isDamaged = messages->warnings.size() > warnings;

    XmlShape shape;
    XmlError error;
    const XmlOutcome outcome =
        parseXml(*text, &shape, partOf(progress, shareOfText, shareOfText + shareOfShape), &error);
    if (isDamaged) {
        hintAtEncoding(error.declaredEncoding, *source, messages);
    }
    if (outcome == XmlOutcome::Failed) {
        messages->fail(
            XmlReader::tr("Error parsing XML: %1 at line %2 column %3")
                .arg(error.text, QString::number(error.line), QString::number(error.column)));
    }
    if (outcome != XmlOutcome::Done) {
        return {};
    }
    shape.chooseRecords();

    NestedRecords records(options, shape.recordName());
    RecordReader reader(&shape, &records);
    if (parseXml(*text, &reader, partOf(progress, shareOfText + shareOfShape, 1), &error) !=
        XmlOutcome::Done) {
        return {};
    }
    noteOutside(shape, messages);
    return records.finish(messages);
}
