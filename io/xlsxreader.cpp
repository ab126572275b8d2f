#include "xlsxreader.h"

#include "cellnumberformat.h"

#include <QCoreApplication>
#include <QHash>
#include <array>

namespace {

struct XlsxText
{
    Q_DECLARE_TR_FUNCTIONS(XlsxReader)
};

/// Follows the path of elements from the root, for parts in which few of them matter.
class PathHandler : public PartHandler
{
public:
    void startElement(std::string_view name, const char *const *attributes) override
    {
        if (m_depth < int(m_path.size())) {
            m_path[size_t(m_depth)] = name;
        }
        ++m_depth;
        element(attributes);
    }
    void endElement(std::string_view) override { --m_depth; }
    void characters(std::string_view) override {}

protected:
    virtual void element(const char *const *attributes) = 0;
    /// True for an element of this name, at the depth below the root, with this parent.
    bool isAt(int depth, std::string_view parent, std::string_view name) const
    {
        return m_depth == depth + 1 && m_path[size_t(depth)] == name &&
               m_path[size_t(depth) - 1] == parent;
    }

private:
    int m_depth = 0;
    std::array<std::string, 4> m_path;
};

struct Relationship
{
    /// The last piece of its type: "worksheet", "styles".
    QString type;
    /// Empty for one that leads out of the workbook.
    QString part;
};

class RelationshipsHandler final : public PathHandler
{
public:
    explicit RelationshipsHandler(const QString &folder)
        : m_folder(folder)
    {
    }

    QHash<QString, Relationship> byId;

    QString partOfType(const QString &type) const
    {
        for (const Relationship &relationship : byId) {
            if (relationship.type == type) {
                return relationship.part;
            }
        }
        return {};
    }

private:
    void element(const char *const *attributes) override
    {
        if (!isAt(1, "Relationships", "Relationship")) {
            return;
        }
        const char *const id = attributeValue(attributes, "Id");
        const char *const type = attributeValue(attributes, "Type");
        const char *const target = attributeValue(attributes, "Target");
        const char *const mode = attributeValue(attributes, "TargetMode");
        if (!id || !type || !target) {
            return;
        }
        const bool isExternal = mode && std::string_view(mode) == "External";
        const QString typeName = QString::fromUtf8(type).section(QLatin1Char('/'), -1);
        byId.insert(
            QString::fromUtf8(id),
            {typeName, isExternal ? QString() : relatedPart(m_folder, QString::fromUtf8(target))});
    }

    QString m_folder;
};

class WorkbookHandler final : public PathHandler
{
public:
    struct Sheet
    {
        QString name;
        QString relationship;
    };
    std::vector<Sheet> sheets;
    DateSystem dateSystem = DateSystem::From1900;

private:
    void element(const char *const *attributes) override
    {
        if (isAt(1, "workbook", "workbookPr")) {
            dateSystem = isTrueAttribute(attributeValue(attributes, "date1904"))
                             ? DateSystem::From1904
                             : DateSystem::From1900;
        } else if (isAt(2, "sheets", "sheet")) {
            const char *const name = attributeValue(attributes, "name");
            const char *const id = attributeValue(attributes, "id");
            sheets.push_back({QString::fromUtf8(name), QString::fromUtf8(id)});
        }
    }
};

class StylesHandler final : public PathHandler
{
public:
    std::vector<CellNumberFormat> styles;

private:
    // The formats come before the styles that use them.
    void element(const char *const *attributes) override
    {
        if (isAt(2, "numFmts", "numFmt")) {
            const char *const id = attributeValue(attributes, "numFmtId");
            const char *const code = attributeValue(attributes, "formatCode");
            if (id && code) {
                m_formats.insert(atoi(id), parseNumberFormat(code));
            }
        } else if (isAt(2, "cellXfs", "xf")) {
            const char *const text = attributeValue(attributes, "numFmtId");
            const int id = text ? atoi(text) : 0;
            const auto found = m_formats.constFind(id);
            styles.push_back(found == m_formats.constEnd() ? builtInNumberFormat(id) : *found);
        }
    }

    QHash<int, CellNumberFormat> m_formats;
};

class SharedTextsHandler final : public PartHandler
{
public:
    explicit SharedTextsHandler(SharedTexts *texts)
        : m_texts(texts)
        , m_text(texts->text())
    {
    }

    void startElement(std::string_view name, const char *const *) override
    {
        if (m_depth == 1 && name == "si") {
            m_inItem = true;
            m_text.start();
        } else if (m_inItem) {
            m_text.startElement(name);
        }
        ++m_depth;
    }
    void endElement(std::string_view name) override
    {
        --m_depth;
        if (m_depth == 1 && m_inItem) {
            m_text.finish();
            m_texts->endText();
            m_inItem = false;
        } else if (m_inItem) {
            m_text.endElement(name);
        }
    }
    void characters(std::string_view text) override
    {
        if (m_inItem) {
            m_text.characters(text);
        }
    }

private:
    SharedTexts *m_texts;
    RichText m_text;
    bool m_inItem = false;
    int m_depth = 0;
};

/// Says what an archive without a workbook is, as far as its parts tell.
QString otherArchiveText(const XlsxPackage &package)
{
    if (package.has(QStringLiteral("xl/workbook.bin"))) {
        return XlsxText::tr("It is a binary workbook (XLSB), which cannot be read. Save it as XLSX "
                            "in a spreadsheet program.");
    }
    if (package.has(QStringLiteral("content.xml"))) {
        return XlsxText::tr("It is an OpenDocument file. Save it as XLSX in a spreadsheet "
                            "program.");
    }
    return XlsxText::tr("It is a Zip archive without an Excel workbook.");
}

} // namespace

XlsxReader::XlsxReader(std::unique_ptr<XlsxPackage> package)
    : m_package(std::move(package))
{
}

std::unique_ptr<XlsxReader> XlsxReader::open(const QString &path, QString *error,
                                             UnpackLimits limits)
{
    std::unique_ptr<XlsxPackage> package = XlsxPackage::open(path, limits, error);
    if (!package) {
        return nullptr;
    }
    std::unique_ptr<XlsxReader> reader(new XlsxReader(std::move(package)));
    return reader->findParts(error) ? std::move(reader) : nullptr;
}

bool XlsxReader::findParts(QString *error)
{
    QString workbookPart = QStringLiteral("xl/workbook.xml");
    const QString packageRelationships = QStringLiteral("_rels/.rels");
    if (m_package->has(packageRelationships)) {
        RelationshipsHandler relationships{QString()};
        if (m_package->parse(packageRelationships, &relationships, {}, error) !=
            PartEnd::Complete) {
            return false;
        }
        const QString part = relationships.partOfType(QStringLiteral("officeDocument"));
        workbookPart = m_package->has(part) ? part : workbookPart;
    }
    if (!m_package->has(workbookPart) || workbookPart.endsWith(QLatin1String(".bin"))) {
        *error = otherArchiveText(*m_package);
        return false;
    }
    WorkbookHandler workbook;
    RelationshipsHandler relationships(partFolder(workbookPart));
    if (m_package->parse(workbookPart, &workbook, {}, error) != PartEnd::Complete ||
        m_package->parse(relationshipsPart(workbookPart), &relationships, {}, error) !=
            PartEnd::Complete) {
        return false;
    }
    m_book.dateSystem = workbook.dateSystem;
    m_textsPart = relationships.partOfType(QStringLiteral("sharedStrings"));
    m_stylesPart = relationships.partOfType(QStringLiteral("styles"));
    for (const WorkbookHandler::Sheet &sheet : workbook.sheets) {
        const auto found = relationships.byId.constFind(sheet.relationship);
        if (found == relationships.byId.constEnd()) {
            m_sheets.push_back({sheet.name, QString()});
        } else if (found->type == QLatin1String("worksheet")) {
            m_sheets.push_back({sheet.name, found->part});
        }
    }
    if (workbook.sheets.empty() && !workbookPart.endsWith(QLatin1String("workbook.xml"))) {
        *error = otherArchiveText(*m_package);
        return false;
    }
    return true;
}

QStringList XlsxReader::sheetNames() const
{
    QStringList names;
    for (const Sheet &sheet : m_sheets) {
        names.append(sheet.name);
    }
    return names;
}

PartEnd XlsxReader::loadShared(const std::function<bool(qint64)> &progress, QString *error)
{
    StylesHandler styles;
    if (m_package->has(m_stylesPart)) {
        const PartEnd end = m_package->parse(m_stylesPart, &styles, {}, error);
        if (end != PartEnd::Complete) {
            return end;
        }
    }
    SharedTexts texts;
    const bool hasTexts = m_package->has(m_textsPart);
    if (hasTexts) {
        SharedTextsHandler handler(&texts);
        const PartEnd end = m_package->parse(m_textsPart, &handler, progress, error);
        if (end != PartEnd::Complete) {
            return end;
        }
    }
    m_book.styles = std::move(styles.styles);
    m_book.texts = std::move(texts);
    m_book.hasTexts = hasTexts;
    m_sharedLoaded = true;
    return PartEnd::Complete;
}

SheetEnd XlsxReader::readSheet(int sheet, SheetSink *sink, const Progress &progress, QString *error)
{
    const Sheet &chosen = m_sheets[size_t(sheet)];
    if (chosen.part.isEmpty() || !m_package->has(chosen.part)) {
        *error =
            XlsxText::tr("The workbook does not contain the cells of sheet '%1'.").arg(chosen.name);
        return SheetEnd::Failed;
    }
    const qint64 before = m_sharedLoaded ? 0 : m_package->statedSize(m_textsPart);
    const auto total = double(std::max(before + m_package->statedSize(chosen.part), qint64(1)));
    const auto report = [&progress, total](qint64 done) {
        return reportProgress(progress, std::min(double(done) / total, 1.0));
    };
    PartEnd end = m_sharedLoaded ? PartEnd::Complete : loadShared(report, error);
    if (end == PartEnd::Complete) {
        XlsxSheetHandler handler(&m_book, sink);
        end = m_package->parse(
            chosen.part, &handler, [&](qint64 done) { return report(before + done); }, error);
    }
    switch (end) {
    case PartEnd::Complete:
        return SheetEnd::Complete;
    case PartEnd::Stopped:
        return SheetEnd::Stopped;
    case PartEnd::Failed:
        break;
    }
    return SheetEnd::Failed;
}
