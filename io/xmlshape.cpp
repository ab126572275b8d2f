#include "xmlshape.h"

#include "utf8.h"

namespace {

constexpr int mostPathsTold = 10;

bool isBlank(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

QString pathOf(const NameTree::Node *node)
{
    return Utf8::decoded(NameTree::path(node));
}

} // namespace

bool declaresNameSpace(std::string_view attribute)
{
    return attribute.substr(0, 5) == "xmlns" && (attribute.size() == 5 || attribute[5] == ':');
}

bool XmlShape::beginElement(std::string_view name, const char *const *attributes)
{
    Node *const node = m_names.child(m_open.back(), name);
    node->repeats = node->repeats || node->seenIn == m_instances.back() + 1;
    node->seenIn = m_instances.back() + 1; // 0 means never
    ++node->count;
    for (; *attributes && !node->hasAttributes; attributes += 2) {
        node->hasAttributes = !declaresNameSpace(*attributes);
    }
    node->expected = node->firstChild;
    m_open.push_back(node);
    m_instances.push_back(++m_instance);
    return true;
}

bool XmlShape::endElement()
{
    m_open.pop_back();
    m_instances.pop_back();
    return true;
}

bool XmlShape::text(std::string_view part)
{
    Node *const node = m_open.back();
    node->hasText = node->hasText || !isBlank(part);
    return true;
}

void XmlShape::chooseRecords()
{
    std::vector<const Node *> level{m_names.root()->firstChild};
    while (!level.empty() && !m_record) {
        std::vector<const Node *> below;
        for (const Node *node : level) {
            if (node->repeats && (!m_record || node->count > m_record->count)) {
                m_record = node;
            }
            for (const Node *each = node->firstChild; each; each = each->nextSibling) {
                below.push_back(each);
            }
        }
        level.swap(below);
    }
    if (m_record) {
        return;
    }
    const Node *const rootElement = m_names.root()->firstChild;
    bool anyPlain = !rootElement->firstChild;
    for (const Node *each = rootElement->firstChild; each; each = each->nextSibling) {
        anyPlain = anyPlain || isPlain(each);
    }
    if (anyPlain) {
        m_record = rootElement;
    } else {
        m_parentOfRecords = rootElement;
    }
}

QString XmlShape::recordName() const
{
    return Utf8::decoded((m_record ? m_record : m_parentOfRecords->firstChild)->name);
}

XmlShape::Outside XmlShape::outside() const
{
    Outside outside;
    const Node *const parent = m_record ? m_record->parent : m_parentOfRecords;
    // From the root's element down to the parent of the records.
    std::vector<const Node *> around;
    for (const Node *node = parent; node->parent; node = node->parent) {
        around.insert(around.begin(), node);
    }
    for (size_t i = 0; i < around.size(); ++i) {
        const Node *const inner = i + 1 < around.size() ? around[i + 1] : m_record;
        if (around[i]->hasAttributes || around[i]->hasText) {
            outside.paths.append(pathOf(around[i]));
        }
        const Node *each = i + 1 == around.size() && !m_record ? nullptr : around[i]->firstChild;
        for (; each; each = each->nextSibling) {
            if (each != inner) {
                outside.paths.append(pathOf(each));
                outside.repeats = outside.repeats || each->repeats;
            }
        }
    }
    const int more = outside.paths.size() - mostPathsTold;
    if (more > 0) {
        outside.paths = outside.paths.mid(0, mostPathsTold);
        outside.paths.append(QStringLiteral("..."));
    }
    return outside;
}
