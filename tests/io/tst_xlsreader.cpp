#include "bifftools.h"
#include "spreadsheetinput.h"
#include "spreadsheettests.h"
#include "testsupport.h"
#include "workbooktools.h"

#include <QFile>
#include <QTemporaryDir>

Q_DECLARE_METATYPE(InputOptions)

using namespace BiffTools;

namespace {

InputOptions plain()
{
    return spreadsheetOptions(FileType::ExcelXls);
}

} // namespace

class TestXlsReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }
    void readsCells_data();
    void readsCells();
    void readsTexts_data();
    void readsTexts();
    void readsTheOlderVersion();
    void readsTheDateSystemOf1904();
    void findsTheSheet();
    void leavesOutHiddenOnes();
    void readsFromAContainer();
    void failsWithAClearText_data();
    void failsWithAClearText();

private:
    QString path() const { return m_folder.filePath("book.xls"); }
    bool write(const QByteArray &bytes) const
    {
        QFile file(path());
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    }
    QTemporaryDir m_folder;
};

void TestXlsReader::readsCells_data()
{
    QTest::addColumn<QByteArray>("cells");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("warning");
    const auto addRow = [](const char *name, const QByteArray &cells, const QStringList &expected,
                           const char *warning = "") {
        QTest::newRow(name) << cells << expected << QString(warning);
    };
    const auto formula = [](int column, const QByteArray &result) {
        return record(Biff::Formula, cell(0, column) + result + QByteArray(8, '\0'));
    };
    const auto special = [](char kind, char value) {
        return QByteArray(1, kind) + '\0' + value + QByteArray(3, '\0') + "\xff\xff";
    };
    addRow("nothing", "", {});
    addRow("numbers",
           number(0, 0, 0.1 + 0.2) + number(0, 1, 44227, 1) + number(0, 2, 0.5, 2) +
               number(0, 3, -7, 99),
           {"0.3|2021-01-31|12:00|-7"});
    addRow("packed numbers",
           record(Biff::Rk, cell(0, 0) + u32(quint32(-5) << 2 | 2)) +
               record(Biff::Rk, cell(0, 1) + u32(12345 << 2 | 3)) +
               record(Biff::Rk, cell(0, 2) + u32(0x3ff80000)) +
               record(Biff::Rk, cell(0, 3) + u32(0x3ff80000 | 1)),
           {"-5|123.45|1.5|0.015"});
    addRow("several packed numbers",
           record(Biff::MulRk, u16(1) + u16(1) + u16(0) + u32(1 << 2 | 2) + u16(1) +
                                   u32(44227U << 2 | 2) + u16(2)),
           {"|1|2021-01-31"});
    addRow("booleans and errors",
           record(Biff::BoolErr, cell(0, 0) + '\x01' + '\0') +
               record(Biff::BoolErr, cell(0, 1) + '\0' + '\0') +
               record(Biff::BoolErr, cell(0, 2) + '\x2a' + '\x01') +
               record(Biff::BoolErr, cell(0, 3) + '\x63' + '\x01'),
           {"TRUE|FALSE|#N/A|#ERROR!"});
    addRow("formulas",
           formula(0, real(2.5)) + formula(1, special(0, 0)) +
               record(Biff::String, narrow("text")) + formula(2, special(1, 1)) +
               formula(3, special(2, 0x07)) + formula(4, special(3, 0)) +
               formula(5, special(0, 0)) + record(0x04bc, "shared formula") +
               record(Biff::String, u16(4) + '\0' + "lo") + continued(QByteArray("\1n\0g\0", 5)),
           {"2.5|text|TRUE|#DIV/0!||long"});
    addRow("a formula without its text", formula(0, special(0, 0)) + number(0, 1, 1), {"|1"},
           "1 formula(s) have no stored result and are read as empty. Calculate and save the "
           "workbook in a spreadsheet program.");
    addRow("a text that belongs to no formula", record(Biff::String, narrow("x")) + number(0, 0, 1),
           {"1"});
    addRow("blanks do not count",
           number(0, 0, 1) + record(Biff::Blank, cell(0, 5)) +
               record(Biff::MulBlank, u16(9) + u16(0) + u16(0) + u16(0) + u16(1)),
           {"1"});
    addRow("an empty shared text does not count", number(0, 0, 1) + shared(3, 3, 1), {"1"});
    addRow("rows not in order", number(2, 0, 3) + number(0, 1, 1) + number(1, 0, 2),
           {"|1", "2|", "3|"});
    addRow("a chart among the cells",
           number(0, 0, 1) + begin(0x20) + number(0, 1, 9) + end + number(0, 2, 2), {"1||2"});
    addRow("the last cell", number(0, 0, 1) + number(65535, 255, 2),
           {"1" + QString(255, '|'), QString(255, '|') + "2"});
}

void TestXlsReader::readsCells()
{
    QFETCH(QByteArray, cells);
    QFETCH(QStringList, expected);
    QFETCH(QString, warning);
    QVERIFY(write(book(styles() + sst(2, narrow("a") + narrow("")), {cells})));
    Messages messages;
    QCOMPARE(readWorkbook(path(), plain(), &messages), expected);
    QCOMPARE(messages.warnings.join(";"), warning);
}

void TestXlsReader::readsTexts_data()
{
    QTest::addColumn<QByteArray>("texts");
    QTest::addColumn<QString>("first");
    const auto addRow = [](const char *name, const QByteArray &texts, const char *first) {
        QTest::newRow(name) << texts << QString::fromUtf8(first);
    };
    const QByteArray last = narrow("last");
    addRow("narrow", sst(2, narrow("caf\xe9") + last), "caf\u00e9");
    addRow("wide", sst(2, u16(3) + '\1' + QByteArray("\x9e\x8a\x3d\xd8\x00\xde", 6) + last),
           "\u8a9e\U0001F600");
    addRow("formatted", sst(2, u16(2) + '\x08' + u16(2) + "ab" + QByteArray(8, 'x') + last), "ab");
    addRow(
        "far-east",
        sst(2, u16(2) + '\x0d' + u16(1) + u32(3) + QByteArray("a\0b\0", 4) + "runs" + "ext" + last),
        "ab");
    addRow("split between texts", sst(2, narrow("a")) + continued(last), "a");
    addRow("split in the characters",
           sst(2, u16(4) + '\0' + "ab") + continued('\0' + QByteArray("cd") + last), "abcd");
    addRow("wide, then narrow",
           sst(2, u16(4) + '\1' + QByteArray("a\0b\0", 4)) +
               continued('\0' + QByteArray("cd") + last),
           "abcd");
    addRow("narrow, then wide, then narrow",
           sst(2, u16(4) + '\0' + "a") + continued(QByteArray("\1\x9e\x8a", 3)) +
               continued('\0' + QByteArray("cd") + last),
           "a\u8a9e\x63\x64");
    addRow("split between halves of a pair",
           sst(2, u16(2) + '\1' + QByteArray("\x3d\xd8", 2)) +
               continued(QByteArray("\1\x00\xde", 3) + last),
           "\U0001F600");
    addRow("split in the header",
           sst(2, u16(2).left(1)) + continued(u16(2).mid(1) + '\0' + "ab" + last), "ab");
    addRow("split in the formatting",
           sst(2, u16(2) + '\x08' + u16(2) + "abxxx") + continued("xxxxx" + last), "ab");
    addRow("split after the last character",
           sst(2, u16(2) + '\x08' + u16(1) + "ab") + continued("xxxx" + last), "ab");
    addRow("an empty record in between", sst(2, narrow("a")) + continued("") + continued(last),
           "a");
}

void TestXlsReader::readsTexts()
{
    QFETCH(QByteArray, texts);
    QFETCH(QString, first);
    QVERIFY(write(book(texts, {shared(0, 0, 0) + shared(0, 1, 1)})));
    Messages messages;
    QCOMPARE(readWorkbook(path(), plain(), &messages), QStringList(first + "|last"));
    QCOMPARE(messages.warnings, QStringList());
}

void TestXlsReader::readsTheOlderVersion()
{
    const QByteArray before = begin(Biff::globalsStream, Biff::version5) +
                              record(Biff::CodePage, u16(1251)) +
                              record(Biff::Format, u16(164) + "\x04yyyy") +
                              record(Biff::Xf, u16(0) + u16(164) + QByteArray(12, '\0'));
    const int nameSize = Biff::recordHeaderSize + 6 + 3;
    const QByteArray sheets =
        record(Biff::BoundSheet,
               u32(quint32(before.size() + nameSize + end.size())) + '\0' + '\0' + "\x02\xcf\xe8");
    const QByteArray cells = record(Biff::Label, cell(0, 0) + u16(2) + "\xc4\xe0") +
                             record(Biff::RString, cell(0, 1) + u16(4) + "bo") +
                             continued(QByteArray("ld\x01\0\0\0", 6)) + number(0, 2, 44227, 0);
    QVERIFY(write(before + sheets + end + begin(Biff::sheetStream, Biff::version5) + cells + end));
    InputOptions options = plain();
    options.worksheet = "\u041f\u0438";
    Messages messages;
    QCOMPARE(readWorkbook(path(), options, &messages), QStringList("\u0414\u0430|bold|2021-01-31"));
    QCOMPARE(messages.warnings, QStringList());
}

void TestXlsReader::readsTheDateSystemOf1904()
{
    QVERIFY(write(book(styles() + record(Biff::Date1904, u16(1)), {number(0, 0, 0, 1)})));
    Messages messages;
    QCOMPARE(readWorkbook(path(), plain(), &messages), QStringList("1904-01-01"));
}

void TestXlsReader::findsTheSheet()
{
    QVERIFY(
        write(book("", {number(0, 0, 1), number(0, 0, 2), number(1, 2, 3)}, {'\2', '\0', '\0'})));
    const auto readSheet = [this](const char *worksheet) {
        InputOptions options = plain();
        options.worksheet = worksheet;
        Messages messages;
        return (readWorkbook(path(), options, &messages) + messages.warnings).join(";");
    };
    QCOMPARE(readSheet(""), QString("2"));
    QCOMPARE(readSheet("Sheet3"), QString("||3"));
    QCOMPARE(readSheet("Sheet1"), QString("Sheet 'Sheet1' not found."));
    Messages messages;
    QStringList labels;
    for (const SheetChoice &choice : sheetChoices(path(), &messages, {})) {
        labels.append(choice.label());
    }
    QCOMPARE(labels, QStringList({"Sheet2 (1 cols x 1 rows)", "Sheet3 (3 cols x 2 rows)"}));
}

void TestXlsReader::leavesOutHiddenOnes()
{
    const auto hiddenRow = [](int row) {
        return record(Biff::Row, u16(row) + QByteArray(10, '\0') + u16(Biff::rowHidden) + u16(0));
    };
    const QByteArray column =
        record(Biff::ColInfo, u16(1) + u16(300) + u16(0) + u16(0) + u16(1) + u16(0));
    // The row's record may come after its cells.
    QVERIFY(write(book("", {column + hiddenRow(1) + hiddenRow(9) + number(0, 0, 1) +
                            number(0, 1, 2) + number(2, 0, 3) + number(3, 0, 4) + hiddenRow(2)})));
    InputOptions options = plain();
    options.ignoreExcelHiddenRows = true;
    options.ignoreExcelHiddenColumns = true;
    Messages messages;
    QCOMPARE(readWorkbook(path(), options, &messages), QStringList({"1", "4"}));
    QCOMPARE(messages.information,
             QStringList({"2 hidden row(s) ignored", "1 hidden column(s) ignored"}));
}

void TestXlsReader::readsFromAContainer()
{
    const QByteArray bytes = book("", {number(0, 0, 1)}) + QByteArray(5000, '\0');
    QVERIFY(writeContainer(path(), "WORKBOOK", bytes));
    InputOptions options = plain();
    options.fileType = FileType::ExcelXlsx;
    Messages messages;
    QCOMPARE(readWorkbook(path(), options, &messages), QStringList("1"));
    QCOMPARE(messages.information, QStringList("The file is of type 'Excel XLS', not 'Excel XLSX', "
                                               "and was read as such."));
    QFile file(path());
    bool failed = false;
    for (qint64 size = file.size() - 1; size > 8; size = size * 7 / 8) {
        QVERIFY(file.resize(size));
        messages.clear();
        const QStringList rows = readWorkbook(path(), plain(), &messages);
        // What is cut off may be unused space behind the workbook.
        QVERIFY(messages.failed ? rows.isEmpty() : rows == QStringList("1"));
        failed = messages.failed;
    }
    QVERIFY(failed);
}

void TestXlsReader::failsWithAClearText_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("container");
    QTest::addColumn<QString>("error");
    const auto addRow = [](const char *name, const QByteArray &bytes, const QString &error,
                           const char *container = "") {
        QTest::newRow(name) << bytes << QString(container) << error;
    };
    const QString document = "Unable to open Excel document '%1'.\nError: ";
    const QString workbook = "Unable to open Excel workbook '%1'.\nError: ";
    const QString damaged = document + "The file is truncated or damaged.";
    const QString encrypted = document +
                              "The workbook is encrypted. Open it in a spreadsheet program "
                              "and save it without a password.";
    const QString old = document + "It is a workbook of Excel 4 or older. Save it as XLSX in a "
                                   "spreadsheet program.";
    const QByteArray good = book("", {number(0, 0, 1)});
    addRow("encrypted", book(record(Biff::FilePass, QByteArray(54, 'x')), {""}), encrypted);
    addRow("encrypted XLSX", "x", encrypted, "EncryptedPackage");
    addRow("Word document", "x", document + "It is a Word document, not an Excel workbook.",
           "WordDocument");
    addRow("another compound file", "x",
           document + "It is a compound file without an Excel workbook.", "Contents");
    addRow("empty stream", "", damaged, "Workbook");
    addRow("Excel 4", record(0x0409, QByteArray(6, '\0')), old);
    addRow("Excel 2", record(0x0009, QByteArray(4, '\0')), old);
    addRow("only the start", QByteArray("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1", 8), damaged);
    addRow("globals cut off", good.left(40), damaged);
    addRow("sheet cut off", good.left(good.size() - 4),
           workbook + "The workbook ends in the middle of the sheet.");
    addRow("a record cut off", good.left(good.size() - 6),
           workbook + "The workbook ends in the middle of the sheet.");
    addRow("no sheet where it should be",
           QByteArray(good).replace(begin(Biff::sheetStream), begin(0x20)),
           workbook + "The sheet is not where the workbook says.");
    addRow("a sheet beyond the end", good.left(good.size() - 40),
           workbook + "The sheet is not where the workbook says.");
    addRow("short cell", book("", {record(Biff::Number, cell(0, 0) + "1234567")}),
           workbook + "A record of the sheet is cut off.");
    addRow("empty cell record", book("", {record(Biff::MulRk, "")}),
           workbook + "A record of the sheet is cut off.");
    addRow("text cut off", book("", {record(Biff::Label, cell(1, 1) + u16(9) + '\0' + "abc")}),
           workbook + "The text of cell B2 is cut off.");
    addRow("text without flags after the split",
           book("", {record(Biff::Label, cell(1, 1) + u16(9) + '\0' + "abc") + continued("")}),
           workbook + "The text of cell B2 is cut off.");
    addRow("half a wide character",
           book("", {record(Biff::Label, cell(0, 0) + u16(2) + '\1' + QByteArray("a\0b", 3))}),
           workbook + "The text of cell A1 is cut off.");
    addRow("no shared texts", book("", {shared(0, 0, 0)}),
           workbook + "Cell A1 refers to a shared text, but the workbook has none.");
    addRow("beyond the shared texts", book(sst(1, narrow("a")), {shared(0, 0, 1)}),
           workbook + "Cell A1 refers to the shared text of number '1', which does not exist.");
    addRow("fewer shared texts than stated", book(sst(9, narrow("a")), {""}), damaged);
    addRow("absurd count of shared texts", book(sst(-1, narrow("a")), {""}), damaged);
    addRow("absurd column", book("", {number(0, 65535, 1)}),
           workbook + "A sheet cannot have more than 16384 columns.");
    addRow("no sheet", book("", {}),
           "Can't import any sheets. The spreadsheet may be empty or the sheets might be too large "
           "to import - check you don't have thousands of empty rows or columns.");
}

void TestXlsReader::failsWithAClearText()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, container);
    QFETCH(QString, error);
    QVERIFY(container.isEmpty() ? write(bytes) : writeContainer(path(), container.toUtf8(), bytes));
    Messages messages;
    QCOMPARE(readWorkbook(path(), plain(), &messages), QStringList());
    QCOMPARE(messages.warnings, QStringList(error.contains("%1") ? error.arg(path()) : error));
    QVERIFY(messages.failed);
}

TW_TEST_CLASS(TestXlsReader)
#include "tst_xlsreader.moc"
