#include "xlsxtemplate.h"

#include "messages.h"
#include "outputoptions.h"
#include "outputwriter.h"
#include "spreadsheetoutput.h"
#include "xlsxstyles.h"
#include "xlsxworkbook.h"

#include <QFileInfo>

namespace {

struct TemplateText
{
    Q_DECLARE_TR_FUNCTIONS(XlsxTemplate)
};

/// Which sheet is to be imitated.
struct Template
{
    QString path;
    QString sheet;
};

bool fail(Messages *messages, const QString &text)
{
    messages->fail(text);
    return false;
}

bool failToCopy(const Template &from, const QString &reason, Messages *messages)
{
    return fail(messages, TemplateText::tr("Unable to copy styling from '%1[%2].\n%3")
                              .arg(from.path, from.sheet, reason));
}

bool findTemplate(const SheetJob &job, const SheetTarget &target, Template *from,
                  Messages *messages)
{
    QString path;
    splitSheetPath(job.options().excelStyleTemplatePath, &path, &from->sheet);
    from->path = resolvedPath(path, job.context().documentFolder);
    if (from->path.isEmpty() || !QFileInfo(from->path).isFile()) {
        return fail(
            messages,
            TemplateText::tr("Unable to read '%1'.").arg(from->path.isEmpty() ? path : from->path));
    }
    const bool isSameFile =
        QFileInfo(from->path).canonicalFilePath() == QFileInfo(target.path).canonicalFilePath();
    if (isSameFile && from->sheet.compare(target.sheet, Qt::CaseInsensitive) == 0) {
        return fail(messages, TemplateText::tr("Cannot use a sheet as it's own style template."));
    }
    return true;
}

/// Collects the styles of the first two rows and of the columns.
class LookHandler final : public PartHandler
{
public:
    explicit LookHandler(int columns)
        : m_columns(columns)
        , m_columnStyles(size_t(columns), -1)
        , m_header(size_t(columns), -1)
        , m_data(size_t(columns), -1)
    {
    }

    void startElement(std::string_view name, const char *const *attributes) override
    {
        if (name == "col") {
            takeColumn(attributes);
        } else if (name == "row") {
            if (++m_row == 2) {
                stop();
            }
            m_column = -1;
        } else if (name == "c") {
            takeCell(attributes);
        }
    }
    void endElement(std::string_view name) override
    {
        if (name == "sheetData") {
            stop();
        }
    }
    void characters(std::string_view) override {}

    XlsxLook look() const
    {
        XlsxLook look;
        for (size_t i = 0; i < size_t(m_columns); ++i) {
            const int column = std::max(m_columnStyles[i], 0);
            look.header.push_back(m_header[i] < 0 ? column : m_header[i]);
            look.data.push_back(m_data[i] < 0 ? column : m_data[i]);
        }
        return look;
    }

private:
    static int number(const char *text) { return text ? atoi(text) : 0; }

    void takeColumn(const char *const *attributes)
    {
        const int last = std::min(number(attributeValue(attributes, "max")), m_columns);
        for (int i = std::max(number(attributeValue(attributes, "min")), 1); i <= last; ++i) {
            m_columnStyles[size_t(i) - 1] = number(attributeValue(attributes, "style"));
        }
    }
    void takeCell(const char *const *attributes)
    {
        ++m_column;
        if (const char *at = attributeValue(attributes, "r")) {
            constexpr int letters = 26;
            constexpr int most = 20000;
            m_column = 0;
            for (; *at >= 'A' && *at <= 'Z' && m_column < most; ++at) {
                m_column = m_column * letters + (*at - 'A' + 1);
            }
            --m_column;
        }
        if (m_row <= 1 && m_column >= 0 && m_column < m_columns) {
            (m_row == 0 ? m_header : m_data)[size_t(m_column)] =
                number(attributeValue(attributes, "s"));
        }
    }

    int m_columns;
    int m_row = -1;
    int m_column = -1;
    std::vector<int> m_columnStyles;
    std::vector<int> m_header;
    std::vector<int> m_data;
};

bool readLook(const SheetJob &job, const Template &from, XlsxWorkbook *workbook, XlsxLook *look,
              Messages *messages)
{
    const QString part = workbook->sheetPart(from.sheet);
    LookHandler handler(job.columnCount());
    QString error;
    if (part.isEmpty() ||
        (workbook->package()->parse(part, &handler, {}, &error) == PartEnd::Failed)) {
        return fail(
            messages,
            TemplateText::tr("Unable to read sheet '%1' from '%2'.").arg(from.sheet, from.path));
    }
    *look = handler.look();
    messages->note(TemplateText::tr("Copied styling from '%1[%2]'.")
                       .arg(from.path, from.sheet.isEmpty() ? workbook->firstSheet() : from.sheet));
    return true;
}

} // namespace

bool copyTemplateStyles(const SheetJob &job, const SheetTarget &target, XlsxStyles *styles,
                        XlsxLook *look, QByteArray *theme, Messages *messages)
{
    Template from;
    if (!findTemplate(job, target, &from, messages)) {
        return false;
    }
    QString error;
    const std::unique_ptr<XlsxWorkbook> workbook = XlsxWorkbook::open(from.path, &error);
    if (!workbook) {
        return failToCopy(from, error, messages);
    }
    QByteArray part;
    if (!workbook->package()->read(workbook->stylesPart(), &part, &error) || !styles->load(part)) {
        return failToCopy(from, TemplateText::tr("Its cell styles cannot be read."), messages);
    }
    const QString themePart =
        partFolder(workbook->stylesPart()) + QLatin1String("/theme/theme1.xml");
    if (workbook->package()->has(themePart)) {
        workbook->package()->read(themePart, theme, &error);
    }
    return readLook(job, from, workbook.get(), look, messages);
}

bool copyTemplateLook(const SheetJob &job, const SheetTarget &target, XlsxWorkbook *workbook,
                      XlsxLook *look, Messages *messages)
{
    Template from;
    if (!findTemplate(job, target, &from, messages)) {
        return false;
    }
    if (QFileInfo(from.path).canonicalFilePath() != QFileInfo(target.path).canonicalFilePath()) {
        return failToCopy(from,
                          TemplateText::tr("A workbook that is changed takes the styling of one "
                                           "of its own sheets only."),
                          messages);
    }
    return readLook(job, from, workbook, look, messages);
}

bool refuseTemplate(const SheetJob &job, const SheetTarget &target, Messages *messages)
{
    Template from;
    return findTemplate(job, target, &from, messages) &&
           failToCopy(from, TemplateText::tr("Styling can be copied in XLSX workbooks only."),
                      messages);
}
