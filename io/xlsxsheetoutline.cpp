#include "xlsxsheetoutline.h"

#include <algorithm>
#include <cstring>
#include <expat.h>

/// Notes the children of the root, and the rows that hold cells.
class OutlineParser
{
public:
    explicit OutlineParser(XlsxSheetOutline *outline)
        : m_outline(*outline)
        , m_parser(XML_ParserCreate(nullptr))
    {
        if (!m_parser) {
            throw std::bad_alloc();
        }
        XML_SetUserData(m_parser, this);
        XML_SetElementHandler(
            m_parser,
            [](void *self, const char *name, const char **attributes) {
                static_cast<OutlineParser *>(self)->start(name, attributes);
            },
            [](void *self, const char *) { static_cast<OutlineParser *>(self)->end(); });
        XML_SetXmlDeclHandler(m_parser, [](void *self, const char *, const char *encoding, int) {
            auto *const parser = static_cast<OutlineParser *>(self);
            parser->m_isUtf8 = !encoding || qstricmp(encoding, "utf-8") == 0;
        });
        XML_SetStartDoctypeDeclHandler(
            m_parser, [](void *self, const char *, const char *, const char *, int) {
                static_cast<OutlineParser *>(self)->m_isOrdinary = false;
            });
    }
    ~OutlineParser() { XML_ParserFree(m_parser); }
    OutlineParser(const OutlineParser &) = delete;
    OutlineParser &operator=(const OutlineParser &) = delete;

    bool parse(std::string_view block, bool isLast)
    {
        return XML_Parse(m_parser, block.data(), int(block.size()), isLast ? 1 : 0) ==
                   XML_STATUS_OK &&
               m_isOrdinary && m_isUtf8;
    }

private:
    void start(const char *name, const char **attributes)
    {
        const qint64 at = XML_GetCurrentByteIndex(m_parser);
        switch (m_depth++) {
        case 0:
            m_isOrdinary = m_isOrdinary && strcmp(name, "worksheet") == 0;
            break;
        case 1:
            m_outline.m_parts.push_back({name, at, at + XML_GetCurrentByteCount(m_parser), 0, 0});
            break;
        case 2:
            m_hasValue = false;
            if (strcmp(name, "row") == 0) {
                const char *const number = attributeValue(attributes, "r");
                m_row = number ? atoll(number) : m_row + 1;
            }
            break;
        case 4:
            m_hasValue = m_hasValue || strcmp(name, "v") == 0 || strcmp(name, "is") == 0 ||
                         strcmp(name, "f") == 0;
            break;
        default:
            break;
        }
    }
    void end()
    {
        const qint64 at = XML_GetCurrentByteIndex(m_parser);
        switch (--m_depth) {
        case 0:
            m_outline.m_end = at;
            break;
        case 1:
            // An element without an end tag of its own ends where its start tag does.
            m_outline.m_parts.back().endTag = at;
            m_outline.m_parts.back().to = at + XML_GetCurrentByteCount(m_parser);
            break;
        case 2:
            if (m_hasValue && m_outline.m_parts.back().name == "sheetData") {
                m_outline.m_lastRow = std::max(m_outline.m_lastRow, m_row);
                m_outline.m_usedEnd = at + XML_GetCurrentByteCount(m_parser);
            }
            break;
        default:
            break;
        }
    }

    XlsxSheetOutline &m_outline;
    XML_Parser m_parser;
    int m_depth = 0;
    qint64 m_row = 0;
    bool m_hasValue = false;
    bool m_isOrdinary = true;
    bool m_isUtf8 = true;
};

bool XlsxSheetOutline::read(XlsxPackage *package, const QString &part, QString *error)
{
    OutlineParser parser(this);
    bool isOrdinary = true;
    const PartEnd end = package->unpack(
        part, [&](std::string_view block) { return isOrdinary = parser.parse(block, false); },
        error);
    if (end == PartEnd::Failed) {
        return false;
    }
    isOrdinary = isOrdinary && parser.parse({}, true);
    if (!isOrdinary || !find("sheetData")) {
        *error = tr("Its sheet is damaged or has a form that cannot be changed.");
        return false;
    }
    if (find("tableParts")) {
        *error = tr("The sheet holds a table with a fixed range. Turn it into plain cells first.");
        return false;
    }
    return true;
}

const XlsxSheetOutline::Part *XlsxSheetOutline::find(const char *name) const
{
    for (const Part &part : m_parts) {
        if (part.name == name) {
            return &part;
        }
    }
    return nullptr;
}

/// Before the first of the elements that have to stand behind links.
qint64 XlsxSheetOutline::linksPosition() const
{
    static const std::vector<QByteArray> before = {"sheetPr",
                                                   "dimension",
                                                   "sheetViews",
                                                   "sheetFormatPr",
                                                   "cols",
                                                   "sheetData",
                                                   "sheetCalcPr",
                                                   "sheetProtection",
                                                   "protectedRanges",
                                                   "scenarios",
                                                   "autoFilter",
                                                   "sortState",
                                                   "dataConsolidate",
                                                   "customSheetViews",
                                                   "mergeCells",
                                                   "phoneticPr",
                                                   "conditionalFormatting",
                                                   "dataValidations"};
    const qint64 cells = find("sheetData")->from;
    for (const Part &part : m_parts) {
        if (part.from > cells &&
            std::find(before.begin(), before.end(), part.name) == before.end()) {
            return part.from;
        }
    }
    return m_end;
}

std::vector<XlsxSheetOutline::Change> XlsxSheetOutline::changes(bool replacesCells,
                                                                const QByteArray &columns) const
{
    using Kind = Change::Kind;
    std::vector<Change> changes;
    if (const Part *const dimension = find("dimension")) {
        changes.push_back({dimension->from, dimension->to});
    }
    const Part &cells = *find("sheetData");
    if (replacesCells || m_lastRow == 0) {
        const QByteArray layout = find("cols") ? QByteArray() : columns;
        changes.push_back({cells.from, cells.from, Kind::Text, layout + "<sheetData>"});
        changes.push_back({cells.from, cells.to, Kind::Cells});
        changes.push_back({cells.to, cells.to, Kind::Text, "</sheetData>"});
    } else {
        // Rows without values that follow would stand in the way.
        changes.push_back({m_usedEnd, cells.endTag, Kind::Cells});
    }
    if (replacesCells) {
        for (const char *name : {"autoFilter", "sortState", "mergeCells"}) {
            if (const Part *const part = find(name)) {
                changes.push_back({part->from, part->to});
            }
        }
    }
    const Part *const links = find("hyperlinks");
    if (links && !replacesCells && links->endTag != links->startTagEnd) {
        changes.push_back({links->endTag, links->endTag, Kind::MoreLinks});
    } else {
        const qint64 at = links ? links->from : linksPosition();
        changes.push_back({at, links ? links->to : at, Kind::Links});
    }
    std::stable_sort(changes.begin(), changes.end(),
                     [](const Change &a, const Change &b) { return a.from < b.from; });
    return changes;
}
