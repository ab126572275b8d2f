#include "xlsxworkbook.h"

#include "xlsxstyles.h"
#include "zipwriter.h"

namespace {

const QString typesPart = QStringLiteral("[Content_Types].xml");
const QString officeRelationships =
    QStringLiteral("http://schemas.openxmlformats.org/officeDocument/2006/relationships");
const QString packageRelationships =
    QStringLiteral("http://schemas.openxmlformats.org/package/2006/relationships");
const QString sheetType =
    QStringLiteral("application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml");

/// Calls a function with each child element.
template <class Take>
void forEachChild(const QDomElement &parent, Take take)
{
    for (QDomElement child = parent.firstChildElement(); !child.isNull();) {
        const QDomElement next = child.nextSiblingElement();
        take(child);
        child = next;
    }
}

QString relationshipType(const QDomElement &relationship)
{
    return relationship.attribute(QStringLiteral("Type")).section(QLatin1Char('/'), -1);
}

/// The attribute that refers to a relationship, whatever its prefix.
QString relationshipOf(const QDomElement &sheet)
{
    const QDomNamedNodeMap attributes = sheet.attributes();
    for (int i = 0; i < attributes.count(); ++i) {
        const QString name = attributes.item(i).nodeName();
        if (name.endsWith(QLatin1String(":id"))) {
            return attributes.item(i).nodeValue();
        }
    }
    return {};
}

QString newRelationshipId(const QDomElement &relationships)
{
    std::set<QString> used;
    forEachChild(relationships, [&used](const QDomElement &relationship) {
        used.insert(relationship.attribute(QStringLiteral("Id")));
    });
    for (int number = int(used.size()) + 1;; ++number) {
        const QString id = QStringLiteral("rId%1").arg(number);
        if (used.count(id) == 0) {
            return id;
        }
    }
}

QDomElement addRelationship(QDomDocument *document, const QString &id, const QString &type,
                            const QString &target)
{
    QDomElement relationship = document->createElement(QStringLiteral("Relationship"));
    relationship.setAttribute(QStringLiteral("Id"), id);
    relationship.setAttribute(QStringLiteral("Type"),
                              officeRelationships + QLatin1Char('/') + type);
    relationship.setAttribute(QStringLiteral("Target"), target);
    document->documentElement().appendChild(relationship);
    return relationship;
}

/// The prefix that a document gives to relationships, with its colon.
QString relationshipPrefix(QDomElement root)
{
    const QDomNamedNodeMap attributes = root.attributes();
    for (int i = 0; i < attributes.count(); ++i) {
        const QDomNode attribute = attributes.item(i);
        if (attribute.nodeValue() == officeRelationships &&
            attribute.nodeName().startsWith(QLatin1String("xmlns:"))) {
            return attribute.nodeName().section(QLatin1Char(':'), 1) + QLatin1Char(':');
        }
    }
    root.setAttribute(QStringLiteral("xmlns:r"), officeRelationships);
    return QStringLiteral("r:");
}

} // namespace

std::unique_ptr<XlsxWorkbook> XlsxWorkbook::open(const QString &path, QString *error)
{
    std::unique_ptr<XlsxWorkbook> workbook(new XlsxWorkbook);
    workbook->m_package = XlsxPackage::open(path, {}, error);
    if (!workbook->m_package || !workbook->load(error)) {
        return nullptr;
    }
    return workbook;
}

bool XlsxWorkbook::readDocument(const QString &part, const char *root, QDomDocument *document,
                                QString *error)
{
    QByteArray content;
    if (!m_package->read(part, &content, error)) {
        return false;
    }
    keepAttributeOrder();
    // Elements with a prefix are not made by spreadsheet programs; what we add would not suit them.
    if (!document->setContent(content) ||
        document->documentElement().tagName() != QLatin1String(root)) {
        *error = tr("Its part '%1' has a form that cannot be extended.").arg(part);
        return false;
    }
    return true;
}

bool XlsxWorkbook::load(QString *error)
{
    QDomDocument packageDocument;
    if (!readDocument(typesPart, "Types", &m_types, error) ||
        !readDocument(QStringLiteral("_rels/.rels"), "Relationships", &packageDocument, error)) {
        return false;
    }
    forEachChild(packageDocument.documentElement(), [this](const QDomElement &relationship) {
        if (relationshipType(relationship) == QLatin1String("officeDocument")) {
            m_workbookPart =
                relatedPart(QString(), relationship.attribute(QStringLiteral("Target")));
        }
    });
    if (m_workbookPart.isEmpty()) {
        *error = tr("It is a Zip archive without an Excel workbook.");
        return false;
    }
    if (!readDocument(m_workbookPart, "workbook", &m_workbook, error) ||
        !readDocument(relationshipsPart(m_workbookPart), "Relationships", &m_relationships,
                      error)) {
        return false;
    }
    std::map<QString, QDomElement> byId;
    const QString folder = partFolder(m_workbookPart);
    forEachChild(m_relationships.documentElement(), [&](const QDomElement &relationship) {
        byId[relationship.attribute(QStringLiteral("Id"))] = relationship;
        if (relationshipType(relationship) == QLatin1String("styles")) {
            m_stylesPart = relatedPart(folder, relationship.attribute(QStringLiteral("Target")));
        }
    });
    const QDomElement root = m_workbook.documentElement();
    const QString date1904 =
        root.firstChildElement(QStringLiteral("workbookPr")).attribute(QStringLiteral("date1904"));
    m_dateSystem = date1904 == QLatin1String("1") || date1904 == QLatin1String("true")
                       ? DateSystem::From1904
                       : DateSystem::From1900;
    forEachChild(root.firstChildElement(QStringLiteral("sheets")), [&](const QDomElement &sheet) {
        const QDomElement relationship = byId[relationshipOf(sheet)];
        const bool hasCells = relationshipType(relationship) == QLatin1String("worksheet");
        m_sheets.push_back(
            {sheet.attribute(QStringLiteral("name")),
             hasCells ? relatedPart(folder, relationship.attribute(QStringLiteral("Target")))
                      : QString()});
    });
    if (m_stylesPart.isEmpty() || !m_package->has(m_stylesPart)) {
        *error = tr("It has no cell styles.");
        return false;
    }
    return true;
}

QString XlsxWorkbook::sheetPart(const QString &name) const
{
    for (const Sheet &sheet : m_sheets) {
        if (name.isEmpty() ? !sheet.part.isEmpty()
                           : sheet.name.compare(name, Qt::CaseInsensitive) == 0) {
            return sheet.part;
        }
    }
    return {};
}

bool XlsxWorkbook::hasSheet(const QString &name) const
{
    for (const Sheet &sheet : m_sheets) {
        if (sheet.name.compare(name, Qt::CaseInsensitive) == 0) {
            return true;
        }
    }
    return false;
}

QString XlsxWorkbook::addSheet(const QString &name)
{
    const QString folder = partFolder(m_workbookPart);
    QString target;
    QString part;
    for (int number = int(m_sheets.size()) + 1; part.isEmpty() || m_package->has(part); ++number) {
        target = QStringLiteral("worksheets/sheet%1.xml").arg(number);
        part = relatedPart(folder, target);
    }
    const QString id = newRelationshipId(m_relationships.documentElement());
    addRelationship(&m_relationships, id, QStringLiteral("worksheet"), target);

    QDomElement root = m_workbook.documentElement();
    QDomElement sheets = root.firstChildElement(QStringLiteral("sheets"));
    uint highest = 0;
    forEachChild(sheets, [&highest](const QDomElement &sheet) {
        highest = std::max(highest, sheet.attribute(QStringLiteral("sheetId")).toUInt());
    });
    QDomElement sheet = m_workbook.createElement(QStringLiteral("sheet"));
    sheet.setAttribute(QStringLiteral("name"), name);
    sheet.setAttribute(QStringLiteral("sheetId"), highest + 1);
    sheet.setAttribute(relationshipPrefix(root) + QLatin1String("id"), id);
    sheets.appendChild(sheet);

    QDomElement type = m_types.createElement(QStringLiteral("Override"));
    type.setAttribute(QStringLiteral("PartName"), QLatin1Char('/') + part);
    type.setAttribute(QStringLiteral("ContentType"), sheetType);
    m_types.documentElement().appendChild(type);
    m_sheets.push_back({name, part});
    return part;
}

bool XlsxWorkbook::addLinks(const QString &sheetPart, const std::vector<std::string> &targets,
                            QStringList *ids, QString *error)
{
    const QString part = relationshipsPart(sheetPart);
    QDomDocument document;
    if (m_package->has(part)) {
        if (!readDocument(part, "Relationships", &document, error)) {
            return false;
        }
    } else {
        QDomElement root =
            document.createElementNS(packageRelationships, QStringLiteral("Relationships"));
        document.appendChild(root);
    }
    QString prefix = QStringLiteral("link");
    forEachChild(document.documentElement(), [&prefix](const QDomElement &relationship) {
        if (relationship.attribute(QStringLiteral("Id")).startsWith(prefix)) {
            prefix += QLatin1Char('_');
        }
    });
    for (const std::string &target : targets) {
        ids->append(prefix + QString::number(ids->size() + 1));
        addRelationship(&document, ids->last(), QStringLiteral("hyperlink"),
                        QString::fromStdString(target))
            .setAttribute(QStringLiteral("TargetMode"), QStringLiteral("External"));
    }
    setPart(part, document.toByteArray(-1));
    return true;
}

void XlsxWorkbook::setPart(const QString &part, const QByteArray &content)
{
    m_changed[part] = content;
}

/// The order in which formulas were calculated: no longer right, and made anew by every program.
void XlsxWorkbook::dropCalculationOrder()
{
    QDomElement root = m_relationships.documentElement();
    const QString folder = partFolder(m_workbookPart);
    forEachChild(root, [&](const QDomElement &relationship) {
        if (relationshipType(relationship) != QLatin1String("calcChain")) {
            return;
        }
        const QString part = relatedPart(folder, relationship.attribute(QStringLiteral("Target")));
        m_dropped.insert(part);
        root.removeChild(relationship);
        QDomElement types = m_types.documentElement();
        forEachChild(types, [&](const QDomElement &type) {
            const QString name = type.attribute(QStringLiteral("PartName"));
            if (name.mid(1).compare(part, Qt::CaseInsensitive) == 0) {
                types.removeChild(type);
            }
        });
    });
}

/// Formulas of other sheets may refer to what has changed.
void XlsxWorkbook::recalculateOnLoad()
{
    QDomElement root = m_workbook.documentElement();
    QDomElement calculation = root.firstChildElement(QStringLiteral("calcPr"));
    if (calculation.isNull()) {
        calculation = m_workbook.createElement(QStringLiteral("calcPr"));
        // Behind the sheets and what may stand between.
        QDomElement before;
        for (const char *name :
             {"definedNames", "externalReferences", "functionGroups", "sheets"}) {
            before = root.firstChildElement(QLatin1String(name));
            if (!before.isNull()) {
                break;
            }
        }
        root.insertAfter(calculation, before);
    }
    calculation.setAttribute(QStringLiteral("fullCalcOnLoad"), 1);
}

bool XlsxWorkbook::write(ZipWriter *zip, const std::set<QString> &except,
                         const std::function<bool()> &goOn, QString *error)
{
    dropCalculationOrder();
    recalculateOnLoad();
    setPart(typesPart, m_types.toByteArray(-1));
    setPart(m_workbookPart, m_workbook.toByteArray(-1));
    setPart(relationshipsPart(m_workbookPart), m_relationships.toByteArray(-1));
    for (const QString &part : m_package->parts()) {
        if (!goOn()) {
            return false;
        }
        const auto changed = m_changed.find(part);
        if (except.count(part) > 0 || m_dropped.count(part) > 0) {
            continue;
        }
        if (changed == m_changed.end()) {
            if (!m_package->copyPacked(part, zip, error)) {
                return false;
            }
            continue;
        }
        zip->addEntry(part.toUtf8(), {changed->second.constData(), size_t(changed->second.size())});
        m_changed.erase(changed);
    }
    for (const auto &[part, content] : m_changed) {
        zip->addEntry(part.toUtf8(), {content.constData(), size_t(content.size())});
    }
    return true;
}
