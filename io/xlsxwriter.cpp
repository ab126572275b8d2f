#include "xlsxwriter.h"

#include "messages.h"
#include "outputoptions.h"
#include "outputwriter.h"
#include "safefile.h"
#include "spreadsheetoutput.h"
#include "spreadsheetreader.h"
#include "utf8.h"
#include "xlsxrows.h"
#include "xlsxsheetoutline.h"
#include "xlsxstyles.h"
#include "xlsxtemplate.h"
#include "xlsxworkbook.h"
#include "zipwriter.h"

namespace {

constexpr char xmlStart[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
#define TW_MAIN_NAMESPACE "http://schemas.openxmlformats.org/spreadsheetml/2006/main"
#define TW_OFFICE_RELATIONSHIPS                                                                    \
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships"
#define TW_PACKAGE "http://schemas.openxmlformats.org/package/2006/"

const QByteArray newSheetPart = "xl/worksheets/sheet1.xml";
const QByteArray newStylesPart = "xl/styles.xml";

QByteArray contentTypes(bool hasTheme)
{
    QByteArray text = xmlStart;
    text += "<Types xmlns=\"" TW_PACKAGE "content-types\">"
            "<Default Extension=\"rels\" "
            "ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
            "<Default Extension=\"xml\" ContentType=\"application/xml\"/>";
    const auto add = [&text](const char *part, const char *type) {
        text += QByteArray("<Override PartName=\"/xl/") + part +
                "\" ContentType=\"application/vnd.openxmlformats-officedocument." + type +
                "+xml\"/>";
    };
    add("workbook.xml", "spreadsheetml.sheet.main");
    add("worksheets/sheet1.xml", "spreadsheetml.worksheet");
    add("styles.xml", "spreadsheetml.styles");
    if (hasTheme) {
        add("theme/theme1.xml", "theme");
    }
    return text + "</Types>";
}

QByteArray relationships(const std::vector<std::pair<QByteArray, QByteArray>> &typesAndTargets)
{
    QByteArray text = xmlStart;
    text += "<Relationships xmlns=\"" TW_PACKAGE "relationships\">";
    int number = 0;
    for (const auto &[type, target] : typesAndTargets) {
        text += "<Relationship Id=\"rId" + QByteArray::number(++number) +
                "\" Type=\"" TW_OFFICE_RELATIONSHIPS "/" + type + "\" Target=\"" + target + "\"/>";
    }
    return text + "</Relationships>";
}

QByteArray newWorkbook(const QString &sheet, bool hasFormulas)
{
    return QByteArray(xmlStart) +
           "<workbook xmlns=\"" TW_MAIN_NAMESPACE "\" xmlns:r=\"" TW_OFFICE_RELATIONSHIPS
           "\"><bookViews><workbookView/></bookViews><sheets><sheet name=\"" +
           sheet.toHtmlEscaped().toUtf8() + "\" sheetId=\"1\" r:id=\"rId1\"/></sheets>" +
           (hasFormulas ? "<calcPr fullCalcOnLoad=\"1\"/>" : "") + "</workbook>";
}

QByteArray columnsXml(const std::vector<double> &widths)
{
    QByteArray text;
    for (size_t i = 0; i < widths.size(); ++i) {
        const QByteArray number = QByteArray::number(qulonglong(i + 1));
        text += "<col min=\"" + number + "\" max=\"" + number + "\" width=\"" +
                QByteArray::number(widths[i]) + "\" customWidth=\"1\"/>";
    }
    return text.isEmpty() ? text : "<cols>" + text + "</cols>";
}

/// The root of a sheet's part and what stands before the cells.
QByteArray sheetStart(const SheetJob &job, const QByteArray &columns)
{
    QByteArray text = QByteArray(xmlStart) + "<worksheet xmlns=\"" TW_MAIN_NAMESPACE
                                             "\" xmlns:r=\"" TW_OFFICE_RELATIONSHIPS "\">";
    if (job.columnCount() > 0 && job.sheetRows() > 0) {
        text += "<dimension ref=\"A1:" +
                cellName(int(job.sheetRows()) - 1, job.columnCount() - 1).toLatin1() + "\"/>";
    }
    text += "<sheetViews><sheetView workbookViewId=\"0\"";
    if (job.hasNames()) {
        text += "><pane ySplit=\"1\" topLeftCell=\"A2\" activePane=\"bottomLeft\" "
                "state=\"frozen\"/></sheetView>";
    } else {
        text += "/>";
    }
    return text + "</sheetViews>" + columns + "<sheetData>";
}

QByteArray linksXml(const std::vector<XlsxLink> &links, const QStringList &ids)
{
    QByteArray text;
    for (size_t i = 0; i < links.size(); ++i) {
        // The namespace stands here because a sheet that is extended may not have declared it.
        text += "<hyperlink xmlns:r=\"" TW_OFFICE_RELATIONSHIPS "\" ref=\"" +
                QByteArray::fromStdString(links[i].cell) + "\" r:id=\"" + ids.at(int(i)).toUtf8() +
                "\"/>";
    }
    return text;
}

QByteArray linkRelationships(const std::vector<XlsxLink> &links, QStringList *ids)
{
    QByteArray text = xmlStart;
    text += "<Relationships xmlns=\"" TW_PACKAGE "relationships\">";
    for (const XlsxLink &link : links) {
        ids->append(QStringLiteral("rId%1").arg(ids->size() + 1));
        text += "<Relationship Id=\"" + ids->last().toUtf8() +
                "\" Type=\"" TW_OFFICE_RELATIONSHIPS "/hyperlink\" Target=\"" +
                Utf8::decoded(link.target).toHtmlEscaped().toUtf8() +
                "\" TargetMode=\"External\"/>";
    }
    return text + "</Relationships>";
}

/// Writes one workbook.
class XlsxWriter
{
public:
    XlsxWriter(SheetJob *job, const SheetTarget &target, Messages *messages,
               const Progress &progress)
        : m_job(job)
        , m_target(target)
        , m_messages(messages)
        , m_progress(progress)
        , m_zip([this](const char *bytes, qint64 size) { return m_file.write(bytes, size); })
    {
    }

    WriteResult writeNew();
    WriteResult change();

private:
    enum class SheetChange { Add, Replace, Extend };

    WriteResult fail(const QString &text)
    {
        m_messages->fail(text);
        return WriteResult::Failed;
    }
    bool openFile();
    bool writeRows(qint64 firstRow, std::vector<XlsxLink> *links);
    void writeNewSheet(const QByteArray &part);
    bool writeChangedSheet(XlsxWorkbook *workbook, const XlsxSheetOutline &outline,
                           const QString &part, bool replacesCells);
    WriteResult finish(const QString &error);

    SheetJob *m_job;
    const SheetTarget &m_target;
    Messages *m_messages;
    const Progress &m_progress;
    SafeFile m_file;
    ZipWriter m_zip;
    XlsxStyles m_styles;
    XlsxLook m_look;
    QString m_error;
    bool m_stopped = false;
};

bool XlsxWriter::openFile()
{
    if (m_file.open(m_target.path, SafeFile::Start::Empty)) {
        return true;
    }
    m_messages->fail(unableToOpenText(m_target.path, m_file.error()));
    return false;
}

bool XlsxWriter::writeRows(qint64 firstRow, std::vector<XlsxLink> *links)
{
    XlsxRows rows(m_job, &m_styles, m_look, firstRow, [this](std::string_view xml) {
        m_zip.append(xml);
        return !m_zip.hasFailed();
    });
    const bool complete = rows.write(m_progress);
    *links = rows.links();
    m_stopped = m_stopped || (!complete && !m_zip.hasFailed());
    return complete;
}

void XlsxWriter::writeNewSheet(const QByteArray &part)
{
    const auto append = [this](const QByteArray &text) {
        m_zip.append({text.constData(), size_t(text.size())});
    };
    m_zip.beginEntry(part);
    append(sheetStart(*m_job, columnsXml(m_job->columnWidths())));
    std::vector<XlsxLink> links;
    if (!writeRows(0, &links)) {
        return;
    }
    append("</sheetData>");
    QByteArray linkParts;
    if (!links.empty()) {
        QStringList ids;
        linkParts = linkRelationships(links, &ids);
        append("<hyperlinks>" + linksXml(links, ids) + "</hyperlinks>");
    }
    append("</worksheet>");
    m_zip.endEntry();
    if (!linkParts.isEmpty()) {
        m_zip.addEntry(relationshipsPart(QString::fromUtf8(part)).toUtf8(),
                       {linkParts.constData(), size_t(linkParts.size())});
    }
}

WriteResult XlsxWriter::finish(const QString &error)
{
    if (m_stopped) {
        return WriteResult::Stopped;
    }
    if (!error.isEmpty()) {
        return fail(unableToSaveChangesText(m_target.path, error));
    }
    if (!m_zip.finish() || !m_file.commit()) {
        return fail(unableToSaveText(m_target.path, m_file.error()));
    }
    return WriteResult::Written;
}

WriteResult XlsxWriter::writeNew()
{
    if (!m_job->fits(0, mostSheetRows, mostSheetColumns, m_messages)) {
        return WriteResult::Failed;
    }
    QByteArray theme;
    if (m_job->options().excelUseStyleTemplate &&
        !copyTemplateStyles(*m_job, m_target, &m_styles, &m_look, &theme, m_messages)) {
        return WriteResult::Failed;
    }
    if (!openFile()) {
        return WriteResult::Failed;
    }
    const auto add = [this](const QByteArray &part, const QByteArray &content) {
        m_zip.addEntry(part, {content.constData(), size_t(content.size())});
    };
    add("[Content_Types].xml", contentTypes(!theme.isEmpty()));
    add("_rels/.rels", relationships({{"officeDocument", "xl/workbook.xml"}}));
    add("xl/workbook.xml",
        newWorkbook(m_target.sheet.isEmpty() ? defaultSheetName() : m_target.sheet,
                    m_job->mayHaveFormulas()));
    std::vector<std::pair<QByteArray, QByteArray>> parts = {{"worksheet", "worksheets/sheet1.xml"},
                                                            {"styles", "styles.xml"}};
    if (!theme.isEmpty()) {
        parts.emplace_back("theme", "theme/theme1.xml");
        add("xl/theme/theme1.xml", theme);
    }
    add("xl/_rels/workbook.xml.rels", relationships(parts));
    writeNewSheet(newSheetPart);
    if (!m_stopped) {
        add(newStylesPart, m_styles.part());
    }
    return finish(QString());
}

bool XlsxWriter::writeChangedSheet(XlsxWorkbook *workbook, const XlsxSheetOutline &outline,
                                   const QString &part, bool replacesCells)
{
    using Kind = XlsxSheetOutline::Change::Kind;
    const std::vector<XlsxSheetOutline::Change> changes =
        outline.changes(replacesCells, columnsXml(m_job->columnWidths()));
    std::vector<XlsxLink> links;
    QStringList ids;
    const auto put = [&](const XlsxSheetOutline::Change &change) {
        QByteArray text = change.text;
        if (change.kind == Kind::Cells) {
            if (!writeRows(replacesCells ? 0 : outline.lastRow(), &links)) {
                return false;
            }
            std::vector<std::string> targets;
            for (const XlsxLink &link : links) {
                targets.push_back(link.target);
            }
            if (!links.empty() && !workbook->addLinks(part, targets, &ids, &m_error)) {
                return false;
            }
        } else if (change.kind != Kind::Text && !links.empty()) {
            text = linksXml(links, ids);
            if (change.kind == Kind::Links) {
                text = "<hyperlinks>" + text + "</hyperlinks>";
            }
        }
        m_zip.append({text.constData(), size_t(text.size())});
        return !m_zip.hasFailed();
    };
    m_zip.beginEntry(part.toUtf8());
    qint64 at = 0;
    size_t next = 0;
    bool complete = true;
    const PartEnd end = workbook->package()->unpack(
        part,
        [&](std::string_view block) {
            const qint64 blockEnd = at + qint64(block.size());
            const qint64 blockStart = at;
            // `at` may be beyond this block when bytes are left out.
            while (complete && next < changes.size() && changes[next].from < blockEnd) {
                const XlsxSheetOutline::Change &change = changes[next];
                if (change.from > at) {
                    m_zip.append(block.substr(size_t(at - blockStart), size_t(change.from - at)));
                }
                complete = put(change);
                at = std::max(at, change.to);
                ++next;
                if (at >= blockEnd) {
                    break;
                }
            }
            if (at < blockEnd) {
                m_zip.append(block.substr(size_t(at - blockStart)));
                at = blockEnd;
            }
            return complete;
        },
        &m_error);
    m_zip.endEntry();
    return complete && end == PartEnd::Complete;
}

WriteResult XlsxWriter::change()
{
    const OutputOptions &options = m_job->options();
    QString error;
    const std::unique_ptr<XlsxWorkbook> workbook = XlsxWorkbook::open(m_target.path, &error);
    if (!workbook) {
        return fail(unableToOpenText(m_target.path, error));
    }
    m_job->setDateSystem(workbook->dateSystem());
    QByteArray styles;
    if (!workbook->package()->read(workbook->stylesPart(), &styles, &error) ||
        !m_styles.load(styles)) {
        return fail(unableToOpenText(m_target.path, error));
    }
    if (options.excelUseStyleTemplate &&
        !copyTemplateLook(*m_job, m_target, workbook.get(), &m_look, m_messages)) {
        return WriteResult::Failed;
    }
    QString part = workbook->sheetPart(m_target.sheet);
    const bool isNew = part.isEmpty();
    if (isNew && !m_target.sheet.isEmpty() && workbook->hasSheet(m_target.sheet)) {
        return fail(unableToAddSheetText(m_target.path, sheetWithoutCellsText(m_target.sheet)));
    }
    const bool extends = options.writeMode == WriteMode::Append;
    XlsxSheetOutline outline;
    if (!isNew && !outline.read(workbook->package(), part, &error)) {
        return fail(unableToOpenText(m_target.path, error));
    }
    const qint64 firstRow = !isNew && extends ? outline.lastRow() : 0;
    if (firstRow > 0 && options.headerOnlyIfEmpty) {
        m_job->leaveOutNames();
    }
    if (!m_job->fits(firstRow, mostSheetRows, mostSheetColumns, m_messages)) {
        return WriteResult::Failed;
    }
    if (isNew) {
        part = workbook->addSheet(m_target.sheet.isEmpty() ? defaultSheetName() : m_target.sheet);
    }
    if (!openFile()) {
        return WriteResult::Failed;
    }
    if (isNew) {
        writeNewSheet(part.toUtf8());
    } else if (!writeChangedSheet(workbook.get(), outline, part, !extends) && m_error.isEmpty() &&
               !m_stopped && !m_zip.hasFailed()) {
        m_error = QCoreApplication::translate("XlsxWriter", "The file has changed meanwhile.");
    }
    if (m_error.isEmpty() && !m_stopped) {
        workbook->setPart(workbook->stylesPart(), m_styles.part());
        m_stopped =
            !workbook->write(
                &m_zip, {part}, [this] { return reportProgress(m_progress, 1); }, &m_error) &&
            m_error.isEmpty();
    }
    return finish(m_error);
}

} // namespace

WriteResult writeXlsx(SheetJob *job, const SheetTarget &target, Messages *messages,
                      const Progress &progress)
{
    XlsxWriter writer(job, target, messages, progress);
    return changesWorkbook(job->options(), target) ? writer.change() : writer.writeNew();
}
