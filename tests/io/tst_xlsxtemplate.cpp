#include "spreadsheetoutputtools.h"
#include "testsupport.h"
#include "workbooktools.h"

#include <QRegularExpression>

using namespace OutputTest;

namespace {

QByteArray partOf(const QString &path, const char *name)
{
    zip_t *const archive = zip_open(path.toUtf8().constData(), ZIP_RDONLY, nullptr);
    zip_stat_t status;
    QByteArray content("none");
    if (archive && zip_stat(archive, name, 0, &status) == 0) {
        content.resize(int(status.size));
        zip_file_t *const file = zip_fopen(archive, name, 0);
        zip_fread(file, content.data(), status.size);
        zip_fclose(file);
    }
    zip_discard(archive);
    return content;
}

/// Styles: 1 and 2 have fills of their own, 3 a date format.
QByteArray styles()
{
    return "<styleSheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
           "<fonts><font><sz val=\"9\"/><name val=\"Mine\"/></font></fonts>"
           "<fills><fill/><fill/><fill/></fills><borders><border/></borders>"
           "<cellXfs><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\"/>"
           "<xf numFmtId=\"0\" fontId=\"0\" fillId=\"1\"/>"
           "<xf numFmtId=\"0\" fontId=\"0\" fillId=\"2\"/>"
           "<xf numFmtId=\"14\" fontId=\"0\" fillId=\"2\"/></cellXfs></styleSheet>";
}

XlsxFile templateBook()
{
    XlsxFile book =
        XlsxFile::ofRows("<row r=\"1\"><c r=\"A1\" s=\"1\"/></row>"
                         "<row r=\"2\"><c r=\"A2\" s=\"2\"/><c r=\"B2\" s=\"3\"/></row>",
                         "<cols><col min=\"3\" max=\"4\" style=\"1\"/></cols>");
    book.parts["xl/styles.xml"] = styles();
    book.parts["xl/theme/theme1.xml"] = "<theme/>";
    book.parts["[Content_Types].xml"] =
        "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\"/>";
    return book;
}

/// Fill and number format of a cell that was written.
QString lookOf(const QString &path, const QString &cell, const char *sheet)
{
    const QString rows = partOf(path, sheet);
    const QRegularExpressionMatch style =
        QRegularExpression("<c r=\"" + cell + "\"(?: s=\"(\\d+)\")?").match(rows);
    const QString list = QString(partOf(path, "xl/styles.xml")).section("<cellXfs", 1);
    const QString xf = list.section("<xf ", style.captured(1).toInt() + 1, -1).section('>', 0, 0);
    const auto number = [&xf](const char *name) {
        return QRegularExpression(QString(name) + "=\"(\\d+)\"").match(xf).captured(1);
    };
    return !style.hasMatch() ? QString("none")
                             : number("fillId") + "," +
                                   (number("numFmtId").toInt() > 163 ? "own" : number("numFmtId"));
}

} // namespace

class TestXlsxTemplate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesTheLook_data();
    void takesTheLook();
    void fails_data();
    void fails();
    void failsForTheOlderFormat();
};

void TestXlsxTemplate::takesTheLook_data()
{
    QTest::addColumn<bool>("sameWorkbook");
    QTest::newRow("of another workbook") << false;
    QTest::newRow("of another sheet") << true;
}

void TestXlsxTemplate::takesTheLook()
{
    QFETCH(bool, sameWorkbook);
    SpreadsheetOutputTest test(FileType::ExcelXlsx);
    const QString from = sameWorkbook ? test.path : test.inFolder("template.xlsx");
    QVERIFY(templateBook().write(from));
    test.options.excelUseStyleTemplate = true;
    test.options.excelStyleTemplatePath = from + "[One]";
    test.options.worksheet = "Mine";
    test.options.overwriteSheet = sameWorkbook;
    test.context.dateFormats = QStringList{"yyyy-MM-dd"};
    test.write(tableOf({"a", "b", "c", "d", "e"},
                       {{"x", "2024-02-29", "y", "1.50", "z"}, {"1.50", "", "", "", ""}}));
    QCOMPARE(test.warnings(), QString());
    QVERIFY2(test.messages.information.contains("Copied styling from '" + from + "[One]'."),
             qPrintable(test.messages.information.join(";")));
    const char *const sheet =
        sameWorkbook ? "xl/worksheets/sheet2.xml" : "xl/worksheets/sheet1.xml";
    const auto look = [&](const char *cell) { return lookOf(test.path, cell, sheet); };
    QCOMPARE(look("A1"), QString("1,0"));
    QCOMPARE(look("A2"), QString("2,0"));
    QCOMPARE(look("A3"), QString("2,own")); // the number's own layout
    QCOMPARE(look("B2"), QString("2,14"));  // a date looks like the template's
    QCOMPARE(look("B3"), QString("2,14"));  // empty cells have a look, too
    QCOMPARE(look("C1"), QString("1,0"));   // of the column
    QCOMPARE(look("D2"), QString("1,own"));
    QCOMPARE(look("E2"), QString("0,0"));
    QCOMPARE(partOf(test.path, "xl/theme/theme1.xml"), QByteArray("<theme/>"));
    QCOMPARE(test.text("Mine"), QString("a|b|c|d|e;x|2024-02-29|y|1.50|z;1.50||||"));
}

void TestXlsxTemplate::fails_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<bool>("changes");
    QTest::addColumn<QString>("expected");
    const auto addRow = [](const char *name, const char *from, bool changes, const char *expected) {
        QTest::newRow(name) << QString(from) << changes << QString(expected);
    };
    addRow("no file", "none.xlsx", false, "Unable to read '%2none.xlsx'.");
    addRow("folder", "sub", false, "Unable to read '%2sub'.");
    addRow("itself", "book.xlsx[Mine]", true, "Cannot use a sheet as it's own style template.");
    addRow("no sheet", "template.xlsx[None]", false,
           "Unable to read sheet 'None' from '%2template.xlsx'.");
    addRow("no sheet of its own", "book.xlsx[None]", true,
           "Unable to read sheet 'None' from '%2book.xlsx'.");
    addRow("no workbook", "text.xlsx[One]", false,
           "Unable to copy styling from '%2text.xlsx[One].\n*");
    addRow("no styles", "plain.xlsx[One]", false,
           "Unable to copy styling from '%2plain.xlsx[One].\nIt has no cell styles.");
    addRow("bad styles", "bad.xlsx[One]", false,
           "Unable to copy styling from '%2bad.xlsx[One].\nIts cell styles cannot be read.");
    addRow("another workbook for one that changes", "template.xlsx[One]", true,
           "Unable to copy styling from '%2template.xlsx[One].\nA workbook that is changed takes "
           "the styling of one of its own sheets only.");
}

void TestXlsxTemplate::fails()
{
    QFETCH(QString, from);
    QFETCH(bool, changes);
    QFETCH(QString, expected);
    SpreadsheetOutputTest test(FileType::ExcelXlsx);
    XlsxFile book = templateBook();
    QVERIFY(book.write(test.path));
    QVERIFY(book.write(test.inFolder("template.xlsx")));
    book.parts["xl/styles.xml"] = "<none/>";
    QVERIFY(book.write(test.inFolder("bad.xlsx")));
    book.parts.remove("xl/styles.xml");
    QVERIFY(book.write(test.inFolder("plain.xlsx")));
    makeFile(test.inFolder("text.xlsx"), "a,b\n");
    QVERIFY(QDir(test.folder.path()).mkdir("sub"));
    const QByteArray old = contentOf(test.path);

    test.options.excelUseStyleTemplate = true;
    test.options.excelStyleTemplatePath = test.inFolder(from);
    test.options.worksheet = "Mine";
    test.options.overwriteSheet = changes;
    test.write(tableOf({"a"}, {{"x"}}));
    const QString warning =
        test.messages.warnings.join('\n').replace(test.folder.path() + "/", "%2");
    if (expected.endsWith('*')) {
        expected.chop(1);
        QVERIFY2(warning.startsWith(expected) && warning.size() > expected.size(),
                 qPrintable(warning));
    } else {
        QCOMPARE(warning, expected);
    }
    QVERIFY(test.messages.failed);
    QCOMPARE(contentOf(test.path), old);
}

void TestXlsxTemplate::failsForTheOlderFormat()
{
    SpreadsheetOutputTest test(FileType::ExcelXls);
    QVERIFY(templateBook().write(test.inFolder("template.xlsx")));
    test.writeText("old");
    const QByteArray old = contentOf(test.path);
    test.options.excelUseStyleTemplate = true;
    for (const bool changes : {false, true}) {
        test.options.overwriteSheet = changes;
        test.options.excelStyleTemplatePath = test.inFolder("template.xlsx[One]");
        test.writeText("x");
        QCOMPARE(test.messages.warnings.join('\n').replace(test.folder.path() + "/", "%2"),
                 QString("Unable to copy styling from '%2template.xlsx[One].\nStyling can be "
                         "copied in XLSX workbooks only."));
        test.options.excelStyleTemplatePath = test.inFolder("none.xls");
        test.writeText("x");
        QCOMPARE(test.messages.warnings.join('\n').replace(test.folder.path() + "/", "%2"),
                 QString("Unable to read '%2none.xls'."));
        QCOMPARE(contentOf(test.path), old);
    }
}

TW_TEST_CLASS(TestXlsxTemplate)
#include "tst_xlsxtemplate.moc"
