#include "filetypes.h"
#include "spreadsheetoutputtools.h"
#include "testsupport.h"

#include <QFileInfo>
#include <csignal>
#include <sys/resource.h>

using namespace OutputTest;

Q_DECLARE_METATYPE(FileType)

namespace {

const QList<FileType> bothTypes{FileType::ExcelXlsx, FileType::ExcelXls};

QString tag(FileType type, const QString &name)
{
    return (type == FileType::ExcelXls ? "xls, " : "xlsx, ") + name;
}

QString withText(const QString &sheet, const QString &text)
{
    return QStringLiteral("%1: %2").arg(sheet, text);
}

/// No file can grow beyond so many bytes while this lives.
class SmallFiles
{
public:
    explicit SmallFiles(rlim_t size)
        : m_oldHandler(::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        const rlimit limit{size, m_old.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallFiles()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_old);
        ::signal(SIGXFSZ, m_oldHandler);
    }
    SmallFiles(const SmallFiles &) = delete;
    SmallFiles &operator=(const SmallFiles &) = delete;

private:
    rlimit m_old{};
    void (*m_oldHandler)(int);
};

QStringList awkwardTexts()
{
    QStringList texts{
        "", " ", "  leading", "trailing ", "\ttab", "two\nlines", "a\r\nb", "a\rb", "\n", "_x0041_",
        "_x0041", "_X0041_", "a_x000D_b", "__x0041_", "<b>&amp;</b>", "]]>", "\"", "'quoted", "'",
        // Formulas that are texts, numbers that would change, and those that would not.
        "=1+2", "+1", "-1", "@SUM(1)", "1", "0", "-0", "0.0", "-0.00", "007", "1e5", "1E5", ".5",
        "5.", "1.50", "-1.25", "0.1", "0.30000000000000004", "123456789012345", "1234567890123456",
        "0.123456789012345", "12345678901.5", "99999999999", "100000000000", "1,234", "1,234.50",
        "12,34", "1.005", "0.07", "0.29", "536870911", "536870912", "-536870912", "5368709.11",
        "1e400", "NaN", "inf", "0x1F", "1 ", "1/2", "50%", "$5",
        // Dates of every layout, and what is none.
        "2024-02-29", "2023-02-29", "1900-01-01", "1900-02-28", "1900-02-29", "1900-03-01",
        "1899-12-31", "0001-01-01", "9999-12-31", "2024-02-29 10:11:12", "2024-02-29 00:00:00",
        "2024-02-29T10:11:12", "2024-02-29 10:11", "2024-2-9", "29/02/2024", "9/2/2024",
        "09/02/2024", "9.2.2024", "29.2.2024", "09.02.2024", "2024-02-29 ", "10:30", "10:30:15",
        // Booleans.
        "true", "True", "TRUE", "false", "False", "FALSE", "tRUE", "yes", "#N/A", "#DIV/0!",
        // Characters.
        QString(QChar(0)), QString("a") + QChar(0) + "b", "\x01", "\x0b", "\x1f", "\x7f",
        QString(QChar(0x80)), QString(QChar(0xff)), QString(QChar(0x100)), QString(QChar(0xd800)),
        QString(QChar(0xdc00)) + QChar(0xd800), QString(QChar(0xfffe)), QString(QChar(0xffff)),
        QString(QChar(0xfeff)) + "x", QString::fromUtf8("\U0001F600"), QString::fromUtf8("日本語"),
        QString::fromUtf8("caf\u00e9")};
    texts.append(QString(32767, 'x'));
    texts.append(QString(32767, QChar(0x20ac)));
    return texts;
}

} // namespace

class TestSpreadsheetOutput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyTextComesBack_data() { addTypes(); }
    void everyTextComesBack();
    void textsOfEveryLength_data() { addTypes(); }
    void textsOfEveryLength();
    void tooLongTexts_data() { addTypes(); }
    void tooLongTexts();
    void emptyTables_data();
    void emptyTables();
    void cellFormats_data();
    void cellFormats();
    void refusesSheetNames_data();
    void refusesSheetNames();
    void refusesTooLargeTables_data();
    void refusesTooLargeTables();
    void changesSheets_data();
    void changesSheets();
    void multiFile_data() { addTypes(); }
    void multiFile();
    void leavesTheOldFile_data();
    void leavesTheOldFile();
    void failsWhenTheDiskIsFull_data();
    void failsWhenTheDiskIsFull();
    void sameTableSameBytes_data() { addTypes(); }
    void sameTableSameBytes();
    void stops_data() { addTypes(); }
    void stops();

private:
    static void addTypes()
    {
        QTest::addColumn<FileType>("type");
        for (const FileType type : bothTypes) {
            QTest::newRow(qPrintable(tag(type, "all"))) << type;
        }
    }
};

void TestSpreadsheetOutput::everyTextComesBack()
{
    QFETCH(FileType, type);
    SpreadsheetOutputTest test(type);
    Rows rows;
    for (const QString &text : awkwardTexts()) {
        // Twice each, because equal texts are shared.
        rows.append({text, QString::number(rows.size()), "end", text});
    }
    const Dataset table = tableOf({"text", "_x0041_", " name ", "text"}, rows);
    test.write(table);
    QCOMPARE(test.warnings(), QString());
    const Dataset back = test.read();
    QCOMPARE(test.readMessages.warnings, QStringList());
    QCOMPARE(back.header(), table.header());
    QCOMPARE(back.rowCount(), table.rowCount());
    for (RowIndex row(0); row < RowIndex(table.rowCount()); ++row) {
        for (ColIndex column(0); column < table.columnCount(); ++column) {
            QCOMPARE(back.cell(row, column), table.cell(row, column));
        }
    }
}

/// Texts of all lengths, so that some end at, before and behind the end of a record or block.
void TestSpreadsheetOutput::textsOfEveryLength()
{
    QFETCH(FileType, type);
    SpreadsheetOutputTest test(type);
    Rows rows;
    for (int length = 1; length < 1500; ++length) {
        const QString number = QString::number(length);
        rows.append({number + QString(length, 'n'), number + QString(length, QChar(0x20ac)),
                     number + QString::fromUtf8("\U0001F600").repeated(length / 2 + 1)});
    }
    const Dataset table = tableOf({"a", "b", "c"}, rows);
    test.write(table);
    QVERIFY(test.read() == table);
}

void TestSpreadsheetOutput::tooLongTexts()
{
    QFETCH(FileType, type);
    SpreadsheetOutputTest test(type);
    Rows rows;
    for (int i = 0; i < 12; ++i) {
        rows.append({"x", QString(32768, QChar('a' + i))});
    }
    test.write(tableOf({"a", "b"}, rows));
    QCOMPARE(
        test.warnings(),
        QString("12 value(s) are longer than the 32,767 characters that a cell can hold. Their "
                "cells were left empty: B2, B3, B4, B5, B6, B7, B8, B9, B10, B11 and others."));
    QCOMPARE(test.text(), "a|b" + QString(";x|").repeated(12));
}

void TestSpreadsheetOutput::emptyTables_data()
{
    QTest::addColumn<FileType>("type");
    QTest::addColumn<QStringList>("header");
    QTest::addColumn<bool>("writeHeader");
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<QString>("expected");
    for (const FileType type : bothTypes) {
        const auto addRow = [type](const char *name, const QStringList &header, bool writeHeader,
                                   const Rows &rows, const char *expected) {
            QTest::newRow(qPrintable(tag(type, name)))
                << type << header << writeHeader << rows << QString(expected);
        };
        addRow("no rows", {"a", "b"}, true, {}, "a|b");
        addRow("no columns", {}, true, {}, "");
        addRow("no header", {}, true, {{"1", "2"}, {"", "3"}}, "1|2;|3");
        addRow("header not written", {"a", "b"}, false, {{"1", "2"}}, "1|2");
        addRow("empty names", {"", "b", ""}, true, {{"1", "2", ""}}, "|b;1|2");
        addRow("empty first rows", {}, true, {{"", ""}, {"", ""}, {"", "x"}}, "|;|;|x");
        addRow("empty cells only", {}, true, {{"", ""}}, "");
    }
}

void TestSpreadsheetOutput::emptyTables()
{
    QFETCH(FileType, type);
    QFETCH(QStringList, header);
    QFETCH(bool, writeHeader);
    QFETCH(Rows, rows);
    QFETCH(QString, expected);
    SpreadsheetOutputTest test(type);
    test.options.writeHeader = writeHeader;
    test.write(tableOf(header, rows));
    QCOMPARE(test.warnings(), QString());
    QCOMPARE(test.text(), expected);
}

void TestSpreadsheetOutput::cellFormats_data()
{
    QTest::addColumn<FileType>("type");
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("fits");
    for (const FileType type : bothTypes) {
        const auto addRow = [type](const char *format, const char *value, const char *expected,
                                   bool fits = true) {
            QTest::newRow(qPrintable(tag(type, withText(format, value))))
                << type << QString(format) << QString::fromUtf8(value)
                << QString::fromUtf8(expected) << fits;
        };
        addRow("Boolean", "tRuE", "TRUE");
        addRow("Boolean", "yes", "yes", false);
        addRow("Boolean", "0", "FALSE");
        addRow("Boolean", "true", "true");
        addRow("Boolean", "maybe", "maybe", false);
        addRow("Date", "31/01/2024", "31/01/2024");
        addRow("Date", "2024-01-31T10:11:12", "2024-01-31 10:11:12");
        addRow("Date", "1899-01-01", "1899-01-01", false);
        addRow("Date", "soon", "soon", false);
        addRow("General", "1.50", "1.5");
        addRow("General", "1e3", "1000");
        addRow("General", "2024-01-31", "2024-01-31");
        addRow("General", "text", "text");
        addRow("Number", "1.50", "1.50");
        addRow("Number", "007", "7");
        addRow("Number", "1e3", "1000");
        addRow("Number", "1234567890123456789", "1234567890123456789", false);
        addRow("Number", "abc", "abc", false);
        addRow("Text", "1.50", "1.50");
        addRow("Text", "true", "true");
        addRow("Time", "10:30", "10:30");
        addRow("Time", "10:30:15", "10:30:15");
        addRow("Time", "noon", "noon", false);
        addRow("Hyperlink", "https://example.org/?a=1&b=<2>\u00e9",
               "https://example.org/?a=1&b=<2>\u00e9");
        addRow("Hyperlink", "mailto:a@example.org", "mailto:a@example.org");
        addRow("Hyperlink", "a page\x01 with <odd> \"characters\" \xf0\x9f\x98\x80",
               "a page\x01 with <odd> \"characters\" \xf0\x9f\x98\x80");
        addRow("Hyperlink", "http://", "http://", false);
        addRow("Hyperlink", "https:///page", "https:///page", false);
        addRow("Formula", "=(1", "=(1", false);
        addRow("Formula", "=\"a", "=\"a", false);
        addRow("Formula", "=", "=", false);
        addRow("5", "1.50", "1.50"); // Text by its number
        addRow("unknown", "1.50", "1.50");
    }
    const QByteArray longLink = "https://example.org/" + QByteArray(2080, 'x');
    for (const FileType type : bothTypes) {
        QTest::newRow(qPrintable(tag(type, "long link")))
            << type << "Hyperlink" << QString(longLink) << QString(longLink) << false;
    }
}

void TestSpreadsheetOutput::cellFormats()
{
    QFETCH(FileType, type);
    QFETCH(QString, format);
    QFETCH(QString, value);
    QFETCH(QString, expected);
    QFETCH(bool, fits);
    SpreadsheetOutputTest test(type);
    test.options.excelOutput = 1;
    test.options.excelManualColumnFormats = QStringList{"Text", format};
    test.write(tableOf({"a", "b"}, {{"x", value}}));
    QCOMPARE(test.warnings(), fits
                                  ? QString()
                                  : QString("1 value(s) do not fit the cell format of their column "
                                            "and were written as text: B2."));
    QCOMPARE(test.text(), "a|b;x|" + expected);
    QCOMPARE(test.readMessages.warnings, QStringList());
}

void TestSpreadsheetOutput::refusesSheetNames_data()
{
    QTest::addColumn<FileType>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("problem");
    for (const FileType type : bothTypes) {
        for (const char c : QByteArray("[]:*?/\\\n")) {
            QTest::newRow(qPrintable(tag(type, QString("character %1").arg(int(c)))))
                << type << "a" + QString(c) + "b"
                << QString("'%1' is not allowed in Excel sheet names.").arg(c);
        }
        QTest::newRow(qPrintable(tag(type, "quote first")))
            << type << "'a"
            << "''' is not allowed in Excel sheet names. (at their beginning and end)";
        QTest::newRow(qPrintable(tag(type, "quote last")))
            << type << "a'"
            << "''' is not allowed in Excel sheet names. (at their beginning and end)";
        QTest::newRow(qPrintable(tag(type, "long")))
            << type << QString(32, 'x')
            << "The sheet name '" + QString(32, 'x') + "' is longer than 31 characters.";
        QTest::newRow(qPrintable(tag(type, "half a character")))
            << type << QString("a") + QChar(0xd800)
            << QString("'%1' is not allowed in Excel sheet names.").arg(QChar(0xd800));
        QTest::newRow(qPrintable(tag(type, "reserved")))
            << type << "history"
            << "The sheet name 'history' is used by Excel itself.";
    }
}

void TestSpreadsheetOutput::refusesSheetNames()
{
    QFETCH(FileType, type);
    QFETCH(QString, name);
    QFETCH(QString, problem);
    SpreadsheetOutputTest test(type);
    test.writeText("x", name);
    QVERIFY(test.messages.failed);
    QCOMPARE(test.warnings(), "Unable to add sheet to '%1'.\n" + problem);
    QVERIFY(!QFileInfo::exists(test.path));
    const QString good = QString::fromUtf8("It's \u20ac <&> \"") + QString(18, 'x');
    test.writeText("x", good);
    QCOMPARE(test.text(good), QString("x"));
}

void TestSpreadsheetOutput::refusesTooLargeTables_data()
{
    QTest::addColumn<FileType>("type");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("columns");
    QTest::addColumn<QString>("expected");
    QTest::newRow("xls, rows") << FileType::ExcelXls << 65536 << 1
                               << "65,537 row(s) are too many for a sheet of type Excel XLS, which "
                                  "has at most 65,536. Nothing was written.";
    QTest::newRow("xls, all rows") << FileType::ExcelXls << 65535 << 1 << "";
    QTest::newRow("xls, columns") << FileType::ExcelXls << 1 << 257
                                  << "257 column(s) are too many for a sheet of type Excel XLS, "
                                     "which has at most 256. Nothing was written.";
    QTest::newRow("xls, all columns") << FileType::ExcelXls << 1 << 256 << "";
    QTest::newRow("xlsx, rows") << FileType::ExcelXlsx << 1048576 << 1
                                << "1,048,577 row(s) are too many for a sheet of type Excel XLSX, "
                                   "which has at most 1,048,576. Nothing was written.";
    QTest::newRow("xlsx, columns") << FileType::ExcelXlsx << 1 << 16385
                                   << "16,385 column(s) are too many for a sheet of type Excel "
                                      "XLSX, which has at most 16,384. Nothing was written.";
    QTest::newRow("xlsx, all columns") << FileType::ExcelXlsx << 1 << 16384 << "";
}

void TestSpreadsheetOutput::refusesTooLargeTables()
{
    QFETCH(FileType, type);
    QFETCH(int, rows);
    QFETCH(int, columns);
    QFETCH(QString, expected);
    SpreadsheetOutputTest test(type);
    Dataset table;
    table.setColumnCount(ColIndex(columns));
    table.resize(rows, columns);
    table.setHeader(QStringList{"first"});
    table.setCell(RowIndex(rows - 1), ColIndex(columns - 1), "last");
    test.write(table);
    QCOMPARE(test.warnings(), expected);
    QCOMPARE(QFileInfo::exists(test.path), expected.isEmpty());
    if (expected.isEmpty()) {
        const Dataset back = test.read();
        QCOMPARE(back.rowCount(), rows);
        QCOMPARE(back.cell(RowIndex(rows - 1), ColIndex(columns - 1)), QString("last"));
    }
}

void TestSpreadsheetOutput::changesSheets_data()
{
    QTest::addColumn<FileType>("type");
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("overwriteSheet");
    QTest::addColumn<bool>("headerOnlyIfEmpty");
    QTest::addColumn<QString>("one");
    QTest::addColumn<QString>("two");
    const QString oldOne = "h|d;1|2024-01-31;2|";
    const QString oldTwo = "other";
    for (const FileType type : bothTypes) {
        const auto addRow = [type](const char *name, const char *sheet, WriteMode mode,
                                   bool overwriteSheet, bool headerOnlyIfEmpty, const QString &one,
                                   const QString &two) {
            QTest::newRow(qPrintable(tag(type, name)))
                << type << QString(sheet) << int(mode) << overwriteSheet << headerOnlyIfEmpty << one
                << two;
        };
        const QString added = ";h|d;x|31/01/2024;;|=1";
        const QString rows = QString(added).replace(";;", ";|;");
        addRow("overwrite the first", "ONE", WriteMode::Overwrite, true, false, rows.mid(1),
               oldTwo);
        addRow("overwrite the second", "Two", WriteMode::Overwrite, true, false, oldOne,
               rows.mid(1));
        addRow("append", "One", WriteMode::Append, false, false, oldOne + rows, oldTwo);
        addRow("append to the first", "", WriteMode::Append, false, false, oldOne + rows, oldTwo);
        addRow("append without header", "One", WriteMode::Append, false, true,
               oldOne + QString(rows).remove(";h|d"), oldTwo);
        addRow("append to what is wider", "Two", WriteMode::Append, false, false, oldOne,
               "other|" + rows);
        addRow("add a sheet", "Three", WriteMode::Overwrite, true, false, oldOne, oldTwo);
        addRow("add a sheet by appending", "Three", WriteMode::Append, false, true, oldOne, oldTwo);
        addRow("a new workbook", "One", WriteMode::Overwrite, false, false, rows.mid(1),
               "Sheet 'Two' not found.");
    }
}

void TestSpreadsheetOutput::changesSheets()
{
    QFETCH(FileType, type);
    QFETCH(QString, sheet);
    QFETCH(int, mode);
    QFETCH(bool, overwriteSheet);
    QFETCH(bool, headerOnlyIfEmpty);
    QFETCH(QString, one);
    QFETCH(QString, two);
    SpreadsheetOutputTest test(type);
    test.options.worksheet = "One";
    test.write(tableOf({"h", "d"}, {{"1", "2024-01-31"}, {"2", ""}}));
    test.options.overwriteSheet = true;
    test.writeText("other", "Two");
    QCOMPARE(test.text("One"), QString("h|d;1|2024-01-31;2|"));

    test.options.worksheet = sheet;
    test.options.writeMode = WriteMode(mode);
    test.options.overwriteSheet = overwriteSheet;
    test.options.headerOnlyIfEmpty = headerOnlyIfEmpty;
    const Dataset added = tableOf({"h", "d"}, {{"x", "31/01/2024"}, {"", ""}, {"", "=1"}});
    test.write(added);
    QCOMPARE(test.warnings(), QString());
    QCOMPARE(test.text("One"), one);
    QCOMPARE(test.text("Two"), two);
    if (sheet == "Three") {
        QCOMPARE(test.text("Three"), QString("h|d;x|31/01/2024;|;|=1"));
    }
    // Once more: what was changed can be changed again.
    if (test.options.writeMode == WriteMode::Append) {
        const QString before = test.text(sheet);
        test.options.headerOnlyIfEmpty = true;
        test.write(added);
        QCOMPARE(test.text(sheet), before + ";x|31/01/2024;|;|=1");
        QCOMPARE(test.messages.information.size(), 1);
    }
}

void TestSpreadsheetOutput::multiFile()
{
    QFETCH(FileType, type);
    SpreadsheetOutputTest test(type);
    const QString other = test.inFolder("other." + QFileInfo(test.path).suffix());
    const QString oldSheet = test.path + "[Old]";
    test.writeText("old", "Old");
    test.options.worksheet = "Default";
    test.options.multiFile = true;
    test.options.multiFileColumn = "to";
    test.write(tableOf({"to", "v"}, {{test.path + "[A]", "1"},
                                     {test.path + "[B]", "2"},
                                     {test.path + "[a]", "3"},
                                     {other, "4"},
                                     {test.path + "[x/y]", "5"}}));
    QCOMPARE(test.warnings(),
             QString("Unable to add sheet to '%1'.\n'/' is not allowed in Excel sheet names."));
    const auto row = [&](const QString &path, const char *value) { return path + "|" + value; };
    QCOMPARE(test.text("A"),
             "to|v;" + row(test.path + "[A]", "1") + ";" + row(test.path + "[a]", "3"));
    QCOMPARE(test.text("B"), "to|v;" + row(test.path + "[B]", "2"));
    QCOMPARE(test.text("Default", other), "to|v;" + row(other, "4"));
    // The workbook was a new one.
    QCOMPARE(test.text("Old"), QString("Sheet 'Old' not found."));
    QVERIFY(test.messages.information.contains("3 file(s) written"));

    test.options.writeMode = WriteMode::New;
    const QByteArray before = contentOf(test.path);
    test.write(tableOf({"to", "v"}, {{test.path + "[A]", "9"}}));
    QCOMPARE(test.warnings(), QString("Write mode='New' and '%1' already exists"));
    QCOMPARE(contentOf(test.path), before);
}

void TestSpreadsheetOutput::leavesTheOldFile_data()
{
    QTest::addColumn<FileType>("type");
    QTest::addColumn<QByteArray>("old");
    QTest::addColumn<QString>("reason");
    const QByteArray container("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1", 8);
    QTest::newRow("xlsx, text") << FileType::ExcelXlsx << QByteArray("a,b\n1,2\n") << "";
    QTest::newRow("xlsx, other container") << FileType::ExcelXlsx << container << "";
    QTest::newRow("xlsx, cut off") << FileType::ExcelXlsx << QByteArray("cut") << "";
    QTest::newRow("xls, text") << FileType::ExcelXls << QByteArray("a,b\n1,2\n")
                               << "The file is truncated or damaged.";
    QTest::newRow("xls, start only")
        << FileType::ExcelXls << container << "The file is truncated or damaged.";
    QTest::newRow("xls, cut off") << FileType::ExcelXls << QByteArray("cut")
                                  << "The file is truncated or damaged.";
}

void TestSpreadsheetOutput::leavesTheOldFile()
{
    QFETCH(FileType, type);
    QFETCH(QByteArray, old);
    QFETCH(QString, reason);
    SpreadsheetOutputTest test(type);
    if (old == "cut") {
        test.writeText("x");
        old = contentOf(test.path);
        old.truncate(old.size() * 2 / 3);
    }
    for (const bool appends : {false, true}) {
        makeFile(test.path, old);
        test.options.writeMode = appends ? WriteMode::Append : WriteMode::Overwrite;
        test.options.overwriteSheet = true;
        test.writeText("new");
        QVERIFY(test.messages.failed);
        const QString start = "Unable to open/create Excel workbook '%1'.\n";
        QVERIFY2(test.warnings().startsWith(start) && test.warnings().size() > start.size(),
                 qPrintable(test.warnings()));
        QVERIFY(reason.isEmpty() || test.warnings() == start + reason);
        QCOMPARE(contentOf(test.path), old);
        QCOMPARE(namesIn(test.folder.path()).size(), 1);
    }
    // A whole new workbook needs nothing of the old one.
    test.options.writeMode = WriteMode::Overwrite;
    test.options.overwriteSheet = false;
    test.writeText("new");
    QCOMPARE(test.text(), QString("new"));
}

void TestSpreadsheetOutput::failsWhenTheDiskIsFull_data()
{
    QTest::addColumn<FileType>("type");
    QTest::addColumn<int>("rows");
    for (const FileType type : bothTypes) {
        QTest::newRow(qPrintable(tag(type, "few rows"))) << type << 1;
        // So many that they do not stay in memory.
        QTest::newRow(qPrintable(tag(type, "many rows"))) << type << 4000;
    }
}

void TestSpreadsheetOutput::failsWhenTheDiskIsFull()
{
    QFETCH(FileType, type);
    QFETCH(int, rows);
    SpreadsheetOutputTest test(type);
    test.writeText("old");
    const QByteArray old = contentOf(test.path);
    Rows cells;
    for (int row = 0; row < rows; ++row) {
        cells.append({QString::number(row) + QString(rows > 1 ? 3000 : 10, 'x')});
    }
    {
        const SmallFiles limit(500);
        test.write(tableOf({}, cells));
    }
    QVERIFY(test.messages.failed);
    QVERIFY2(test.warnings().startsWith("Unable to save "), qPrintable(test.warnings()));
    QVERIFY2(test.warnings().contains(qt_error_string(EFBIG)), qPrintable(test.warnings()));
    QCOMPARE(contentOf(test.path), old);
    QCOMPARE(namesIn(test.folder.path()).size(), 1);
}

void TestSpreadsheetOutput::sameTableSameBytes()
{
    QFETCH(FileType, type);
    QList<QByteArray> written;
    for (const int seed : {1, 2, 3}) {
        qSetGlobalQHashSeed(seed);
        SpreadsheetOutputTest t(type);
        t.write(OutputTest::tableOf({"Day", "Number"}, {{"2024-05-06", "1.50"}}));
        t.options.writeMode = WriteMode::Append;
        t.write(OutputTest::tableOf({"Day", "Number"}, {{"2024-05-07", "2.50"}}));
        QVERIFY(!t.messages.failed);
        written.append(contentOf(t.path));
    }
    qSetGlobalQHashSeed(-1);
    QCOMPARE(written[1], written[0]);
    QCOMPARE(written[2], written[0]);
}

void TestSpreadsheetOutput::stops()
{
    QFETCH(FileType, type);
    SpreadsheetOutputTest test(type);
    test.writeText("old");
    const QByteArray old = contentOf(test.path);
    const Dataset table = tableOf({"a"}, {{"1"}});
    int reports = 0;
    writeOutput(test.options, table, test.context, &test.messages, [&reports](double) {
        ++reports;
        return true;
    });
    const QByteArray written = contentOf(test.path);
    QVERIFY(written != old && reports > 0);
    for (int stop = 1; stop <= reports; ++stop) {
        int count = 0;
        writeOutput(test.options, tableOf({"a"}, {{"2"}}), test.context, &test.messages,
                    [&count, stop](double) { return ++count < stop; });
        QCOMPARE(contentOf(test.path), written);
        QVERIFY(!test.messages.failed);
    }
}

TW_TEST_CLASS(TestSpreadsheetOutput)
#include "tst_spreadsheetoutput.moc"
