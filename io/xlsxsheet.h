#pragma once

#include "cellnumberformat.h"
#include "sharedtexts.h"
#include "spreadsheetreader.h"
#include "xlsxpackage.h"

#include <QCoreApplication>
#include <string>
#include <vector>

/// Collects the texts of a cell's rich text, without the phonetic ones, and decodes _x000D_ and
/// the like.
class RichText
{
public:
    /// Texts are appended here.
    explicit RichText(std::string *out)
        : m_out(out)
    {
    }

    void start() { m_from = m_out->size(); }
    void startElement(std::string_view name);
    void endElement(std::string_view name);
    void characters(std::string_view text)
    {
        if (m_inText && m_phonetic == 0) {
            m_out->append(text);
        }
    }
    void finish();

private:
    std::string *m_out;
    size_t m_from = 0;
    bool m_inText = false;
    int m_phonetic = 0;
};

/// What the cells of all sheets of a workbook refer to.
struct XlsxBook
{
    SharedTexts texts;
    bool hasTexts = false;
    /// By the number of the cell's style.
    std::vector<CellNumberFormat> styles;
    DateSystem dateSystem = DateSystem::From1900;
};

/// Hands the cells of a sheet's part to a sink.
class XlsxSheetHandler final : public PartHandler
{
    Q_DECLARE_TR_FUNCTIONS(XlsxSheetHandler)

public:
    XlsxSheetHandler(const XlsxBook *book, SheetSink *sink);

    void startElement(std::string_view name, const char *const *attributes) override;
    void endElement(std::string_view name) override;
    void characters(std::string_view text) override;

private:
    // The elements that matter, from the outside in. Others stand at their parent's level.
    enum class Level { Outside, Sheet, Columns, Data, Row, Cell, Value, Inline };
    enum class Kind { Number, Shared, Text, Boolean, Date };

    void startColumns(const char *const *attributes);
    void startRow(const char *const *attributes);
    void startCell(const char *const *attributes);
    void startInCell(std::string_view name);
    bool moveToRow(int row);
    bool readReference(const char *reference);
    void endCell();
    void addValue();
    void addShared();
    void addBoolean();

    const XlsxBook &m_book;
    SheetSink *m_sink;
    Level m_level = Level::Outside;
    // Depth of elements that are skipped, within the level.
    int m_skipped = 0;

    int m_row = -1;
    bool m_rowHidden = false;
    bool m_rowStarted = false;
    int m_column = -1;
    Kind m_kind = Kind::Number;
    bool m_hasFormula = false;
    bool m_hasValue = false;
    CellNumberFormat m_format;
    std::string m_value;
    std::string m_text;
    RichText m_inlineText;
};
