#include "memoryceiling.h"
#include "sheettable.h"
#include "spreadsheetinput.h"
#include "spreadsheettests.h"
#include "testsupport.h"
#include "workbooktools.h"
#include "xlsxreader.h"

#include <QFile>
#include <QTemporaryDir>

Q_DECLARE_METATYPE(InputOptions)
Q_DECLARE_METATYPE(XlsxFile)

namespace {

const char *const styles =
    "<styleSheet><numFmts count=\"2\"><numFmt numFmtId=\"164\" formatCode=\"dd/mm/yyyy\"/>"
    "<numFmt numFmtId=\"165\" formatCode=\"[h]:mm:ss\"/></numFmts>"
    "<cellStyleXfs><xf numFmtId=\"14\"/></cellStyleXfs>"
    "<cellXfs><xf numFmtId=\"0\"/><xf numFmtId=\"164\"/><xf numFmtId=\"165\"/><xf numFmtId=\"20\"/>"
    "</cellXfs><dxfs><dxf><numFmt numFmtId=\"0\" formatCode=\"yyyy\"/></dxf></dxfs></styleSheet>";

/// "<c r=...><v>...": a cell with a number.
QByteArray number(const char *reference, const char *value)
{
    return QByteArray("<c r=\"") + reference + "\"><v>" + value + "</v></c>";
}

template <class Change>
InputOptions with(Change change)
{
    InputOptions options = spreadsheetOptions(FileType::ExcelXlsx);
    change(options);
    return options;
}

} // namespace

class TestXlsxReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }
    void readsCells_data();
    void readsCells();
    void findsTheSheet_data();
    void findsTheSheet();
    void readsOtherSpellingsOfAWorkbook();
    void leavesOutHiddenOnes_data();
    void leavesOutHiddenOnes();
    void listsSheets();
    void warnsOfFormulasWithoutResult();
    void failsWithAClearText_data();
    void failsWithAClearText();
    void tellsWhatAnotherFileIs_data();
    void tellsWhatAnotherFileIs();
    void givesUpBombs();
    void stopsWhenAsked();

private:
    QString path() const { return m_folder.filePath("book.xlsx"); }
    QTemporaryDir m_folder;
};

void TestXlsxReader::readsCells_data()
{
    QTest::addColumn<QByteArray>("rows");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<InputOptions>("options");
    const auto addRow = [](const char *name, const QByteArray &rows, const QStringList &expected,
                           const InputOptions &options = spreadsheetOptions(FileType::ExcelXlsx)) {
        QTest::newRow(name) << rows << expected << options;
    };
    const auto all = with([](InputOptions &o) { o.ignoreEmptyRows = false; });

    addRow("nothing", "", {});
    addRow(
        "kinds",
        "<row r=\"1\"><c r=\"A1\" t=\"s\"><v>0</v></c><c r=\"B1\"><v>0.30000000000000004</v></c>"
        "<c r=\"C1\" t=\"b\"><v>1</v></c><c r=\"D1\" t=\"b\"><v>0</v></c>"
        "<c r=\"E1\" t=\"e\"><v>#DIV/0!</v></c><c r=\"F1\" t=\"str\"><f>A1</f><v>a_x0041_</v></c>"
        "<c r=\"G1\" t=\"inlineStr\"><is><t>in</t></is></c>"
        "<c r=\"H1\" t=\"d\"><v>2026-01-31T00:00:00</v></c><c "
        "r=\"I1\"><f>1+1</f><v>2</v></c></row>",
        {"plain|0.3|TRUE|FALSE|#DIV/0!|aA|in|2026-01-31|2"});
    addRow("shared texts",
           "<row><c t=\"s\"><v>1</v></c><c t=\"s\"><v>2</v></c><c t=\"s\"><v>3</v></c>"
           "<c t=\"s\"><v>4</v></c><c t=\"s\"><v>5</v></c></row>",
           {"rich text| kept |\u8a9e|a\r\U0001F600_x00"});
    addRow(
        "dates",
        "<row><c s=\"1\"><v>44227</v></c><c s=\"2\"><v>1.5</v></c><c s=\"3\"><v>0.5</v></c>"
        "<c s=\"0\"><v>44227</v></c><c s=\"99\"><v>1</v></c><c s=\"1\" t=\"str\"><v>44227</v></c>"
        "</row>",
        {"2021-01-31|36:00:00|12:00|44227|1|44227"});
    addRow("inline rich text",
           "<row><c t=\"inlineStr\"><is><r><rPr><b/></rPr><t>a</t></r><r><t>b_x000a_</t></r>"
           "<rPh sb=\"0\" eb=\"1\"><t>no</t></rPh></is></c></row>",
           {"ab\n"});
    addRow("no references",
           "<row><c><v>1</v></c><c/><c><v>3</v></c></row><row><c><v>4</v></c></row>",
           {"1||3", "4||"});
    addRow("some references",
           "<row>" + number("B2", "1") + "<c><v>2</v></c></row><row><c><v>3</v></c></row>",
           {"|1|2", "3||"});
    addRow("cells not in order", "<row r=\"1\">" + number("C1", "3") + number("A1", "1") + "</row>",
           {"1||3"});
    addRow("rows not in order",
           "<row r=\"3\">" + number("A3", "3") + "</row><row r=\"1\">" + number("A1", "1") +
               "</row><row r=\"2\">" + number("A2", "2") + "</row>",
           {"1", "2", "3"});
    addRow("cells and rows given twice",
           "<row r=\"1\">" + number("A1", "1") + number("B1", "2") + number("A1", "3") +
               "</row><row r=\"1\">" + number("B1", "4") + "</row>",
           {"3|4"});
    addRow("a shared text over an inline one",
           "<row r=\"1\"><c r=\"A1\" t=\"str\"><v>x</v></c><c r=\"A1\" t=\"s\"><v>0</v></c></row>",
           {"plain"});
    addRow("rows between", "<row r=\"3\">" + number("B3", "1") + "</row>", {"|", "|", "|1"}, all);
    addRow("last cell of the largest sheet",
           "<row r=\"1\">" + number("A1", "1") + "</row><row r=\"1048576\">" +
               number("C1048576", "2") + "</row>",
           {"1||", "||2"});
    addRow("styled, but empty, at the edges",
           "<row r=\"1\">" + number("A1", "1") +
               "<c r=\"XFD1\" s=\"1\"/><c r=\"D1\" t=\"s\"><v>5</v></c><c r=\"E1\"><v/></c></row>"
               "<row r=\"1048576\"><c r=\"A1048576\" s=\"1\"/></row>",
           {"1"}, all);
    addRow("leading rows",
           "<row>" + number("A1", "1") + "</row><row>" + number("A2", "2") + "</row>", {"2"},
           with([](InputOptions &o) { o.ignoredRows = 1; }));
    addRow("header and clean values",
           "<row><c t=\"s\"><v>2</v></c></row><row><c t=\"str\"><v>  a   b "
           "</v></c><c><v>1</v></c></row>",
           {"kept|", "a b|1"}, with([](InputOptions &o) {
               o.header = true;
               o.simplify = true;
           }));
    addRow("elements that do not matter",
           "<row><c r=\"A1\"><extLst><ext><c><v>9</v></c></ext></extLst><f>v</f><v>1</v></c>"
           "<ext><c><v>8</v></c></ext></row><ext><row><c><v>7</v></c></row></ext>",
           {"1"});
}

void TestXlsxReader::readsCells()
{
    QFETCH(QByteArray, rows);
    QFETCH(QStringList, expected);
    QFETCH(InputOptions, options);
    XlsxFile file = XlsxFile::ofRows(rows, "<dimension ref=\"A1:XFD1048576\"/>");
    file.parts["xl/styles.xml"] = styles;
    file.parts["xl/sharedStrings.xml"] = XlsxFile::sharedTexts(
        "<si><t>plain</t></si>"
        "<si><r><t>rich </t></r><r><rPr><b/></rPr><t>text</t></r></si>"
        "<si><t xml:space=\"preserve\"> kept </t></si>"
        "<si><t>\u8a9e</t><rPh sb=\"0\" eb=\"1\"><t>\u3054</t></rPh><phoneticPr fontId=\"1\"/></si>"
        "<si><t>a_x000D__xD83D__xDE00__x00</t></si><si><t></t></si>");
    QVERIFY(file.write(path()));
    Messages messages;
    QCOMPARE(readWorkbook(path(), options, &messages), expected);
    QCOMPARE(messages.warnings, QStringList());
}

void TestXlsxReader::findsTheSheet_data()
{
    QTest::addColumn<QString>("worksheet");
    QTest::addColumn<QString>("expected");
    QTest::newRow("the first") << ""
                               << "1";
    QTest::newRow("by name") << "Second & last"
                             << "2";
    QTest::newRow("by name, other case") << "second & LAST"
                                         << "2";
    QTest::newRow("a chart") << "Chart"
                             << "Sheet 'Chart' not found.";
    QTest::newRow("missing") << "50%1"
                             << "Sheet '50%1' not found.";
}

void TestXlsxReader::findsTheSheet()
{
    QFETCH(QString, worksheet);
    QFETCH(QString, expected);
    XlsxFile file = XlsxFile::ofRows("<row><c><v>1</v></c></row>");
    file.parts["xl/worksheets/b.xml"] = XlsxFile::worksheet("<row><c><v>2</v></c></row>");
    file.parts["xl/workbook.xml"] =
        XlsxFile::workbook("<sheet name=\"Chart\" r:id=\"c\"/><sheet name=\"One\" r:id=\"rId1\"/>"
                           "<sheet name=\"Second &amp; last\" state=\"hidden\" r:id=\"b\"/>");
    file.parts["xl/_rels/workbook.xml.rels"] =
        XlsxFile::relationships({{"b", "worksheet", "../xl/worksheets/b.xml"},
                                 {"c", "chartsheet", "chartsheets/sheet1.xml"},
                                 {"rId1", "worksheet", "/xl/worksheets/sheet1.xml"}});
    QVERIFY(file.write(path()));
    InputOptions options = spreadsheetOptions(FileType::ExcelXlsx);
    options.worksheet = worksheet;
    Messages messages;
    const QStringList rows = readWorkbook(path(), options, &messages);
    QCOMPARE((rows + messages.warnings).join(";"), expected);
    QCOMPARE(messages.failed, rows.isEmpty());
}

void TestXlsxReader::readsOtherSpellingsOfAWorkbook()
{
    XlsxFile file;
    file.parts.clear();
    const QByteArray strict = "http://purl.oclc.org/ooxml/";
    const auto relationships = [&](const QByteArray &id, const QByteArray &type,
                                   const QByteArray &target) {
        return "<Relationships><Relationship Id=\"" + id + "\" Type=\"" + strict +
               "officeDocument/relationships/" + type + "\" Target=\"" + target +
               "\"/></Relationships>";
    };
    file.parts["_rels/.rels"] = relationships("1", "officeDocument", "book\\main.xml");
    file.parts["Book/Main.xml"] = "<x:workbook xmlns:x=\"" + strict +
                                  "spreadsheetml/main\" xmlns:q=\"" + strict +
                                  "officeDocument/relationships\"><x:workbookPr "
                                  "date1904=\"true\"/><x:sheets><x:sheet name=\"S\" "
                                  "sheetId=\"7\" q:id=\"s\"/></x:sheets></x:workbook>";
    file.parts["book/_rels/main.xml.rels"] = relationships("s", "worksheet", "a%20sheet.xml");
    file.parts["book/a sheet.xml"] =
        "<x:worksheet xmlns:x=\"" + strict +
        "spreadsheetml/main\"><x:sheetData><x:row r=\"1\"><x:c r=\"a1\"><x:v>5</x:v></x:c></x:row>"
        "</x:sheetData></x:worksheet>";
    QVERIFY(file.write(path()));
    Messages messages;
    QCOMPARE(readWorkbook(path(), spreadsheetOptions(FileType::ExcelXls), &messages),
             QStringList({"5"}));
    QCOMPARE(messages.warnings, QStringList());
    QCOMPARE(messages.information,
             QStringList({"The file is of type 'Excel XLSX', not 'Excel XLS', "
                          "and was read as such."}));
}

void TestXlsxReader::leavesOutHiddenOnes_data()
{
    QTest::addColumn<InputOptions>("options");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QStringList>("notes");
    const QString noRows = "2 hidden row(s) ignored";
    const QString noColumns = "2 hidden column(s) ignored";
    QTest::newRow("all read") << with([](InputOptions &) {})
                              << QStringList{"1|2|3|", "4|5|6|7", "8|||"}
                              << QStringList{"1 empty row(s) ignored"};
    QTest::newRow("rows") << with([](InputOptions &o) { o.ignoreExcelHiddenRows = true; })
                          << QStringList{"1|2|3", "8||"} << QStringList{noRows};
    QTest::newRow("columns") << with([](InputOptions &o) { o.ignoreExcelHiddenColumns = true; })
                             << QStringList{"1|3", "4|6", "8|"}
                             << QStringList{noColumns, "1 empty row(s) ignored"};
    QTest::newRow("leading rows are those of the sheet") << with([](InputOptions &o) {
        o.ignoreExcelHiddenRows = true;
        o.ignoredRows = 2;
    }) << QStringList{"8"} << QStringList{"1 hidden row(s) ignored"};
}

void TestXlsxReader::leavesOutHiddenOnes()
{
    QFETCH(InputOptions, options);
    QFETCH(QStringList, expected);
    QFETCH(QStringList, notes);
    const XlsxFile file = XlsxFile::ofRows(
        "<row r=\"1\">" + number("A1", "1") + number("B1", "2") + number("C1", "3") +
            "</row><row r=\"2\" hidden=\"1\">" + number("A2", "4") + number("B2", "5") +
            number("C2", "6") + number("D2", "7") +
            "</row><row r=\"3\" hidden=\"1\"/><row r=\"4\">" + number("A4", "8") +
            "</row><row r=\"5\" hidden=\"1\"/>",
        "<cols><col min=\"2\" max=\"2\" hidden=\"1\"/><col min=\"4\" max=\"99999\" "
        "hidden=\"true\"/><col min=\"1\" max=\"1\" hidden=\"0\"/></cols>");
    QVERIFY(file.write(path()));
    Messages messages;
    QCOMPARE(readWorkbook(path(), options, &messages), expected);
    QCOMPARE(messages.information, notes);
}

void TestXlsxReader::listsSheets()
{
    XlsxFile file = XlsxFile::ofRows("<row r=\"1234\">" + number("C1234", "1") + "</row>");
    Messages messages;
    QVERIFY(file.write(path()));
    const QList<SheetChoice> choices = sheetChoices(path(), &messages, {});
    QCOMPARE(choices.size(), 1);
    QCOMPARE(choices.first().label(), QString("One (3 cols x 1,234 rows)"));
    QVERIFY(!messages.failed);

    QVERIFY(XlsxFile::ofRows("<row><c r=\"B2\"/></row>").write(path()));
    QVERIFY(sheetChoices(path(), &messages, {}).isEmpty());
    QVERIFY(messages.failed);
    QVERIFY2(messages.warnings.last().startsWith("Can't import any sheets."),
             qPrintable(messages.warnings.last()));

    QVERIFY(XlsxFile::ofRows("<row><c></row>").write(path()));
    QVERIFY(sheetChoices(path(), &messages, {}).isEmpty());
    QVERIFY(messages.warnings.last().startsWith("Unable to get sheets from '" + path() +
                                                "'.\nError: Part 'xl/worksheets/sheet1.xml'"));
    QVERIFY(QFile(path()).resize(100));
    QVERIFY(sheetChoices(path(), &messages, {}).isEmpty());
    QCOMPARE(messages.warnings.last(),
             "Unable to load Excel workbook '" + path() +
                 "' information.\nError: The file is truncated or damaged.");
}

void TestXlsxReader::warnsOfFormulasWithoutResult()
{
    QVERIFY(XlsxFile::ofRows("<row><c><f>1+1</f></c><c t=\"str\"><f>\"\"</f></c><c><f>2</f><v/></c>"
                             "<c><v>1</v></c></row>")
                .write(path()));
    Messages messages;
    QCOMPARE(readWorkbook(path(), spreadsheetOptions(FileType::ExcelXlsx), &messages),
             QStringList({"|||1"}));
    QCOMPARE(messages.warnings.size(), 1);
    QVERIFY(messages.warnings.first().startsWith("1 formula(s) have no stored result"));
}

void TestXlsxReader::failsWithAClearText_data()
{
    QTest::addColumn<XlsxFile>("file");
    QTest::addColumn<QString>("error");
    const auto addRow = [](const char *name, const XlsxFile &file, const char *error) {
        QTest::newRow(name) << file
                            << QString("Unable to open Excel workbook '%1'.\nError: ") + error;
    };
    const auto sheet = [](const char *rows) { return XlsxFile::ofRows(rows); };
    addRow("no shared texts", sheet("<row><c t=\"s\"><v>0</v></c></row>"),
           "Cell A1 refers to a shared text, but the workbook has none.");
    XlsxFile texts = sheet("<row r=\"28\"><c r=\"AB28\" t=\"s\"><v>1</v></c></row>");
    texts.parts["xl/sharedStrings.xml"] = XlsxFile::sharedTexts("<si><t>a</t></si>");
    addRow("beyond the shared texts", texts,
           "Cell AB28 refers to the shared text of number '1', which does not exist.");
    texts.parts["xl/worksheets/sheet1.xml"] =
        XlsxFile::worksheet("<row><c t=\"s\"><v>-1</v></c></row>");
    addRow("negative shared text", texts,
           "Cell A1 refers to the shared text of number '-1', which does not exist.");
    addRow("row 0", sheet("<row r=\"0\"/>"), "A sheet cannot have a row of number 0.");
    addRow("row beyond the last", sheet("<row><c r=\"A1048577\"/></row>"),
           "A sheet cannot have a row of number 1048577.");
    addRow("column beyond the last", sheet("<row><c r=\"XFE1\"/></row>"),
           "A sheet cannot have more than 16384 columns.");
    addRow("absurd column", sheet("<row><c r=\"AAAAAAAAAAAA1\"/></row>"),
           "A sheet cannot have more than 16384 columns.");
    addRow("no reference", sheet("<row><c r=\"?\"/></row>"),
           "The cell reference '?' cannot be read.");
    addRow("not well-formed", sheet("<row><c></row>"),
           "Part 'xl/worksheets/sheet1.xml' of the workbook is damaged: mismatched tag at line 1 "
           "column 177.");
    addRow(
        "entities",
        [] {
            XlsxFile file;
            file.parts["xl/worksheets/sheet1.xml"] =
                "<!DOCTYPE x [<!ENTITY a \"b\">]><worksheet>&a;</worksheet>";
            return file;
        }(),
        "The workbook contains a document type declaration, which is not allowed in workbooks.");
    addRow(
        "another root",
        [] {
            XlsxFile file;
            file.parts["xl/worksheets/sheet1.xml"] = "<chartsheet/>";
            return file;
        }(),
        "The sheet's part holds no sheet of cells.");
    addRow("the sheet's part is missing", XlsxFile(),
           "The workbook does not contain the cells of sheet 'One'.");
    XlsxFile broken = sheet("");
    broken.parts["xl/_rels/workbook.xml.rels"] = XlsxFile::relationships({});
    addRow("no relationship", broken, "The workbook does not contain the cells of sheet 'One'.");
}

void TestXlsxReader::failsWithAClearText()
{
    QFETCH(XlsxFile, file);
    QFETCH(QString, error);
    QVERIFY(file.write(path()));
    Messages messages;
    QCOMPARE(readWorkbook(path(), spreadsheetOptions(FileType::ExcelXlsx), &messages),
             QStringList());
    QCOMPARE(messages.warnings, QStringList{error.arg(path())});
    QVERIFY(messages.failed);
}

void TestXlsxReader::tellsWhatAnotherFileIs_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("error");
    const auto archive = [this](const QMap<QByteArray, QByteArray> &parts, bool withTwins = false) {
        XlsxFile file;
        file.parts = parts;
        file.write(path(), withTwins);
        QFile written(path());
        return written.open(QIODevice::ReadOnly) ? written.readAll() : QByteArray();
    };
    const auto addRow = [](const char *name, const QByteArray &bytes, const char *error) {
        QTest::newRow(name) << bytes << QString(error);
    };
    const QByteArray workbook = archive(XlsxFile::ofRows("<row/>").parts);
    addRow("nothing", "", "The file is empty (0 bytes).");
    addRow("truncated", workbook.left(workbook.size() / 2), "The file is truncated or damaged.");
    addRow("only the start", "PK\x03\x04", "The file is truncated or damaged.");
    addRow(
        "HTML", "\n<html><table>",
        "It is an HTML page, not an Excel workbook. Open it in a spreadsheet program and save it "
        "as XLSX.");
    addRow("XML", "<?xml version=\"1.0\"?><Workbook/>",
           "It is an XML file, not an Excel workbook. Set its type to 'XML'.");
    addRow("CSV", "a,b\n1,2\n",
           "It is a text file (such as CSV), not an Excel workbook. Set its type to 'Delimited "
           "text'.");
    addRow("blanks", " \n", "The file holds nothing but blanks.");
    addRow("bytes", QByteArray("\x01\x00\x02", 3), "It is not an Excel workbook.");
    addRow("OpenDocument", archive({{"content.xml", "<x/>"}}),
           "It is an OpenDocument file. Save it as XLSX in a spreadsheet program.");
    addRow("binary workbook", archive({{"xl/workbook.bin", "x"}}),
           "It is a binary workbook (XLSB), which cannot be read. Save it as XLSX in a spreadsheet "
           "program.");
    addRow("any archive", archive({{"a.txt", "x"}}),
           "It is a Zip archive without an Excel workbook.");
    addRow("parts twice", archive(XlsxFile::ofRows("").parts, true),
           "The workbook contains its part '_rels/.rels' twice.");
    addRow("no relationships", archive({{"xl/workbook.xml", "<workbook/>"}}),
           "The workbook's part 'xl/_rels/workbook.xml.rels' is missing.");
}

void TestXlsxReader::tellsWhatAnotherFileIs()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, error);
    QFile file(path());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
    file.close();
    Messages messages;
    QCOMPARE(readWorkbook(path(), spreadsheetOptions(FileType::ExcelXlsx), &messages),
             QStringList());
    QCOMPARE(
        messages.warnings,
        QStringList{QString("Unable to open Excel document '%1'.\nError: ").arg(path()) + error});
    QVERIFY(messages.failed);
    QVERIFY(file.remove());
    messages.clear();
    readWorkbook(path(), spreadsheetOptions(FileType::ExcelXlsx), &messages);
    QCOMPARE(messages.warnings, QStringList{QString("File '%1' not found.").arg(path())});
}

void TestXlsxReader::givesUpBombs()
{
    const QByteArray cell =
        "<row><c t=\"inlineStr\"><is><t>" + QByteArray(4 << 20, 'x') + "</t></is></c></row>";
    const XlsxFile file = XlsxFile::ofRows(cell + cell + cell + cell);
    QVERIFY(file.write(path()));
    const auto errorWith = [this](UnpackLimits limits) {
        QString error;
        const auto reader = XlsxReader::open(path(), &error, limits);
        SheetMeasure measure;
        return reader && reader->readSheet(0, &measure, {}, &error) == SheetEnd::Complete
                   ? QString()
                   : error;
    };
    UnpackLimits limits;
    QCOMPARE(errorWith(limits), QString());
    limits.suspicious = 8 << 20;
    QCOMPARE(errorWith(limits),
             QString("The workbook unpacks to more than 500 times its size. It was "
                     "given up, because nothing sensible does."));
    limits.ratio = 100000;
    QCOMPARE(errorWith(limits), QString());
    limits.most = 15 << 20;
    QCOMPARE(errorWith(limits),
             QString("The workbook unpacks to more than the memory ceiling of 0.0146 GB."));
    limits.most = -1;
    const double before = MemoryCeiling::limitGb();
    MemoryCeiling::setLimitGb(0.01);
    QCOMPARE(errorWith(limits),
             QString("The workbook unpacks to more than the memory ceiling of 0.01 GB."));
    MemoryCeiling::setLimitGb(before);
}

void TestXlsxReader::stopsWhenAsked()
{
    QVERIFY(XlsxFile::ofRows("<row><c><v>1</v></c></row>").write(path()));
    Messages messages;
    const auto stop = [](double) { return false; };
    QCOMPARE(readWorkbook(path(), spreadsheetOptions(FileType::ExcelXlsx), &messages, stop),
             QStringList());
    QVERIFY(!messages.failed);
    const auto refuse = [](double) -> bool { throw MaxMemoryException(1, 2); };
    QVERIFY_EXCEPTION_THROWN(
        readWorkbook(path(), spreadsheetOptions(FileType::ExcelXlsx), &messages, refuse),
        MaxMemoryException);
}

TW_TEST_CLASS(TestXlsxReader)
#include "tst_xlsxreader.moc"
