#include "bifftext.h"
#include "bifftools.h"
#include "safefile.h"
#include "spreadsheetoutputtools.h"
#include "testsupport.h"
#include "xlscontainer.h"

#include <QRandomGenerator>
#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-input-stdio.h>
#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-output-stdio.h>

using namespace BiffTools;
using namespace OutputTest;

namespace {

/// What a workbook cannot do without: a font and the styles.
QByteArray least()
{
    QByteArray bytes = record(Biff::Font, u16(200) + u16(0) + u16(8) + u16(400) + u32(0) + u16(0) +
                                              "\x01" + QByteArray(1, '\0') + "F");
    for (int i = 0; i < 16; ++i) {
        bytes +=
            record(Biff::Xf, u16(0) + u16(0) + u16(i < 15 ? 0xfff5 : 1) + QByteArray(14, '\0'));
    }
    return bytes;
}

QByteArray dimensions(int rows, int columns)
{
    return record(Biff::Dimensions, u32(0) + u32(quint32(rows)) + u16(0) + u16(columns) + u16(0));
}

QByteArray row(int number)
{
    return record(Biff::Row, u16(number) + QByteArray(14, '\0'));
}

QByteArray view()
{
    return record(Biff::Window2, QByteArray(18, '\0'));
}

struct Record
{
    int id;
    QByteArray data;
};

/// All records of the workbook that a file holds.
QList<Record> recordsIn(const QString &path)
{
    QString error;
    const auto container = XlsContainer::open(path, &error);
    QList<Record> records;
    const std::string bytes = container ? container->takeRecords() : std::string();
    BiffStream stream(bytes);
    while (stream.next() && stream.id() != 0) {
        records.append({stream.id(), QByteArray::fromStdString(std::string(stream.data()))});
    }
    return records;
}

/// The numbers of the records of a part of the workbook: 0 are the globals.
QString numbersIn(const QList<Record> &records, int part)
{
    QStringList numbers;
    int depth = 0;
    int current = -1;
    for (const Record &record : records) {
        current += record.id == Biff::Bof && depth == 0 ? 1 : 0;
        depth += record.id == Biff::Bof ? 1 : record.id == Biff::Eof ? -1 : 0;
        if (current == part) {
            numbers.append(QString::number(record.id, 16));
        }
    }
    return numbers.join(' ');
}

QByteArray dataOf(const QList<Record> &records, int id, int index = 0)
{
    for (const Record &record : records) {
        if (record.id == id && index-- == 0) {
            return record.data;
        }
    }
    return "none";
}

/// A workbook with much beside its cells.
QByteArray richBook()
{
    const QByteArray position(16, '\1');
    const QByteArray globals = record(Biff::RecalcId, u32(0x1c1) + u32(99)) +
                               record(Biff::TabId, u16(2) + u16(7)) + least() +
                               record(Biff::XfCrc, QByteArray(20, '\0')) + record(0x0892, "style");
    const QByteArray afterSheets = record(Biff::SupBook, u16(2) + u16(0x0401)) +
                                   record(Biff::SupBook, u16(1) + u16(0x3a01)) +
                                   sst(2, narrow("a") + narrow("b")) +
                                   record(Biff::ExtSst, position) + record(0x0863, "later");
    const QByteArray first =
        record(Biff::Index, position) + record(Biff::DefaultRowHeight, u16(0) + u16(300)) +
        record(0x0999, "unknown") + dimensions(7, 3) + row(0) + row(6) + shared(0, 0, 0) +
        number(1, 1, 2.5) + record(Biff::DbCell, position) + begin(0x20) + record(0x1001, "chart") +
        end + record(Biff::Blank, cell(0, 2)) + record(Biff::Blank, cell(6, 0)) +
        record(0x00ec, "drawing") + continued("more") + view() + record(Biff::MergeCells, u16(0)) +
        record(Biff::HLink, "link") + record(0x0867, "feature");
    const QByteArray second = record(Biff::Index, position) + dimensions(1, 1) + shared(0, 0, 1) +
                              record(Biff::DbCell, position) + view();
    // The names of sheets stand before what refers to them.
    const int nameSize = 8 + Biff::recordHeaderSize + 6;
    QByteArray bytes = begin(Biff::globalsStream) + globals;
    quint32 at = quint32(bytes.size() + 2 * nameSize + afterSheets.size() + end.size());
    const QByteArray firstSheet = begin(Biff::sheetStream) + first + end;
    bytes += record(Biff::BoundSheet, u32(at) + '\0' + '\0' + '\x06' + '\0' + "Sheet1");
    at += quint32(firstSheet.size());
    bytes += record(Biff::BoundSheet, u32(at) + '\0' + '\0' + '\x06' + '\0' + "Sheet2");
    return bytes + afterSheets + end + firstSheet + begin(Biff::sheetStream) + second + end;
}

} // namespace

class TestXlsWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsTheRest_data();
    void keepsTheRest();
    void patchesTheGlobals();
    void keepsOtherStreams();
    void refusesToChange_data();
    void refusesToChange();
    void survivesDamage();
    void addsTextsToAWorkbookWithout();
    void tellsOfFormulasWithoutResult();
};

void TestXlsWriter::keepsTheRest_data()
{
    QTest::addColumn<bool>("appends");
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<QString>("numbers");
    QTest::addColumn<QString>("cells");
    QTest::newRow("append")
        << true << "Sheet1"
        << "809 225 999 200 208 fd 203 809 1001 a 201 208 fd 27e ec 3c 23e e5 1b8 867 "
           "a"
        << "a|;|2.5;x|1";
    QTest::newRow("overwrite") << false << "Sheet1"
                               << "809 225 999 7d 7d 200 809 1001 a 208 fd 27e ec 3c 23e 867 a"
                               << "x|1";
    QTest::newRow("add")
        << false << "Sheet3"
        << "809 225 999 200 208 208 fd 203 809 1001 a 201 201 ec 3c 23e e5 1b8 867 a"
        << "x|1";
}

void TestXlsWriter::keepsTheRest()
{
    QFETCH(bool, appends);
    QFETCH(QString, sheet);
    QFETCH(QString, numbers);
    QFETCH(QString, cells);
    SpreadsheetOutputTest test(FileType::ExcelXls);
    makeFile(test.path, richBook());
    test.options.writeMode = appends ? WriteMode::Append : WriteMode::Overwrite;
    test.options.overwriteSheet = true;
    test.options.worksheet = sheet;
    test.write(tableOf({}, {{"x", "1"}}));
    QCOMPARE(test.warnings(), QString());
    const QList<Record> records = recordsIn(test.path);
    QCOMPARE(numbersIn(records, 1), numbers);
    QCOMPARE(numbersIn(records, 2), QString("809 200 fd 23e a"));
    QCOMPARE(test.text(sheet), cells);
    QCOMPARE(test.text("Sheet2"), QString("b"));
    for (const auto &[id, data] : QList<QPair<int, QByteArray>>{
             {0x0999, "unknown"}, {0x1001, "chart"}, {0x00ec, "drawing"}, {0x0867, "feature"}}) {
        QCOMPARE(dataOf(records, id), data);
    }
    if (sheet == "Sheet1") {
        // Rows are as high as others of the sheet.
        QCOMPARE(dataOf(records, Biff::Row, appends ? 1 : 0).mid(6, 2), u16(300));
    }
    // The extent holds what is there now.
    const QByteArray extent = dataOf(records, Biff::Dimensions);
    QCOMPARE(extent.left(12), u32(0) + u32(appends || sheet == "Sheet3" ? 7 : 1) + u16(0) +
                                  u16(appends || sheet == "Sheet3" ? 3 : 2));
}

void TestXlsWriter::patchesTheGlobals()
{
    SpreadsheetOutputTest test(FileType::ExcelXls);
    makeFile(test.path, richBook());
    test.options.overwriteSheet = true;
    test.options.worksheet = "New";
    test.write(tableOf({"h"}, {{"2024-02-29"}, {"x"}, {"x"}}));
    QCOMPARE(test.warnings(), QString());
    const QList<Record> records = recordsIn(test.path);
    QCOMPARE(numbersIn(records, 0), "809 1c1 13d 31 31 41e " + QString("e0 ").repeated(18) +
                                        "87c 892 85 85 85 1ae 1ae fc 3c 863 a");
    QCOMPARE(dataOf(records, Biff::RecalcId), u32(0x1c1) + u32(0));
    QCOMPARE(dataOf(records, Biff::TabId), u16(2) + u16(7) + u16(8));
    QCOMPARE(dataOf(records, Biff::SupBook), u16(3) + u16(0x0401));
    QCOMPARE(dataOf(records, Biff::SupBook, 1), u16(1) + u16(0x3a01));
    QCOMPARE(dataOf(records, Biff::Sst).left(8), u32(5) + u32(4));
    QCOMPARE(dataOf(records, Biff::Continue), narrow("h") + narrow("x"));
    QCOMPARE(dataOf(records, Biff::XfCrc).mid(14, 2), u16(18));
    // The new font is bold, and the new sheet is not selected beside the others.
    QCOMPARE(dataOf(records, Biff::Font, 1).mid(6, 2), u16(700));
    QCOMPARE(dataOf(records, Biff::Window2, 2).left(2), u16(0x01be));
}

void TestXlsWriter::keepsOtherStreams()
{
    SpreadsheetOutputTest test(FileType::ExcelXls);
    const QByteArray classId("0123456789abcdef");
    const auto setClass = [&classId](GsfOutfile *storage) {
        gsf_outfile_msole_set_class_id(GSF_OUTFILE_MSOLE(storage),
                                       reinterpret_cast<const guint8 *>(classId.constData()));
    };
    const auto addStream = [](GsfOutfile *storage, const char *name, const QByteArray &content) {
        GsfOutput *const stream = gsf_outfile_new_child(storage, name, FALSE);
        gsf_output_write(stream, size_t(content.size()),
                         reinterpret_cast<const guint8 *>(content.constData()));
        gsf_output_close(stream);
        g_object_unref(stream);
    };
    GsfOutput *const file = gsf_output_stdio_new(test.path.toUtf8().constData(), nullptr);
    GsfOutfile *const root = gsf_outfile_msole_new(file);
    GsfOutfile *const macros = GSF_OUTFILE(gsf_outfile_new_child(root, "Macros", TRUE));
    setClass(macros);
    addStream(macros, "dir", QByteArray(10000, 'd'));
    gsf_output_close(GSF_OUTPUT(macros));
    addStream(root, "Workbook", richBook());
    addStream(root, "\005SummaryInformation", "summary");
    addStream(root, "empty", "");
    setClass(root);
    gsf_output_close(GSF_OUTPUT(root));
    for (gpointer object : {gpointer(macros), gpointer(root), gpointer(file)}) {
        g_object_unref(object);
    }

    test.options.writeMode = WriteMode::Append;
    test.writeText("x", "Sheet2");
    QCOMPARE(test.text("Sheet2"), QString("b;x"));
    QCOMPARE(test.text("Sheet1"), QString("a|;|2.5"));
    GsfInput *const input = gsf_input_stdio_new(test.path.toUtf8().constData(), nullptr);
    GsfInfile *const back = gsf_infile_msole_new(input, nullptr);
    const auto content = [](GsfInfile *storage, const char *name) {
        GsfInput *const stream = gsf_infile_child_by_name(storage, name);
        const auto size = stream ? size_t(gsf_input_size(stream)) : 0;
        QByteArray bytes(int(size), '\0');
        if (size > 0) {
            gsf_input_read(stream, size, reinterpret_cast<guint8 *>(bytes.data()));
        }
        if (!stream) {
            return QByteArray("none");
        }
        g_object_unref(stream);
        return bytes;
    };
    const auto classOf = [](GsfInfile *storage) {
        QByteArray bytes(16, '\0');
        gsf_infile_msole_get_class_id(GSF_INFILE_MSOLE(storage),
                                      reinterpret_cast<guint8 *>(bytes.data()));
        return bytes;
    };
    QCOMPARE(gsf_infile_num_children(back), 4);
    QCOMPARE(classOf(back), classId);
    QCOMPARE(content(back, "\005SummaryInformation"), QByteArray("summary"));
    QCOMPARE(content(back, "empty"), QByteArray());
    GsfInfile *const storage = GSF_INFILE(gsf_infile_child_by_name(back, "Macros"));
    QVERIFY(storage);
    QCOMPARE(classOf(storage), classId);
    QCOMPARE(content(storage, "dir"), QByteArray(10000, 'd'));
    for (gpointer object : {gpointer(storage), gpointer(back), gpointer(input)}) {
        g_object_unref(object);
    }
}

void TestXlsWriter::refusesToChange_data()
{
    QTest::addColumn<QByteArray>("old");
    QTest::addColumn<QString>("reason");
    const auto addRow = [](const char *name, const QByteArray &old, const char *reason) {
        QTest::newRow(name) << old << QString(reason);
    };
    const char *const damaged = "The file is truncated or damaged.";
    const char *const form = "The workbook has a form that cannot be extended.";
    const char *const sheetForm = "The sheet has a form that cannot be extended.";
    const char *const tooOld =
        "It is a workbook of Excel 95 or older. Save it as XLSX in a spreadsheet program.";
    const QByteArray sheet = dimensions(0, 0) + view();
    QByteArray older = book(least(), {sheet});
    older.replace(4, 2, u16(Biff::version5));
    addRow("of Excel 95", older, tooOld);
    addRow("of Excel 4", QByteArray("\x09\x04\x06\0\0\0\x10\0\0\0", 10), tooOld);
    addRow("encrypted", book(record(Biff::FilePass, u16(1)) + least(), {sheet}),
           "The workbook is encrypted. Open it in a spreadsheet program and save it without a "
           "password.");
    addRow("ends early", book(least(), {sheet}).chopped(6), damaged);
    addRow("no sheets", book(least(), {}), form);
    QByteArray moved = book(least(), {sheet});
    moved.replace(moved.indexOf("Sheet1") - 8, 4, u32(20));
    addRow("sheet is elsewhere", moved, damaged);
    QByteArray twice = book(least(), {sheet, sheet});
    twice.replace(twice.indexOf("Sheet2") - 8, 4, twice.mid(twice.indexOf("Sheet1") - 8, 4));
    addRow("two sheets in one place", twice, damaged);
    addRow("texts cut off", book(least() + sst(2, narrow("a")), {sheet}), damaged);
    addRow("more behind the texts", book(least() + sst(1, narrow("a") + "x"), {sheet}), form);
    addRow("two lists of texts", book(least() + sst(1, narrow("a")) + sst(1, narrow("a")), {sheet}),
           damaged);
    addRow("no styles", book("", {sheet}), form);
    addRow("short style", book(least() + record(Biff::Xf, "x"), {sheet}), damaged);
    addRow("no extent", book(least(), {view()}), sheetForm);
    addRow("cells before the extent", book(least(), {number(0, 0, 1) + sheet}), sheetForm);
    addRow("short extent", book(least(), {record(Biff::Dimensions, "x") + view()}), sheetForm);
    addRow("cells behind the view", book(least(), {sheet + number(0, 0, 1)}), sheetForm);
    addRow("globals in globals", book(least() + begin(0x20), {sheet}), damaged);
}

void TestXlsWriter::refusesToChange()
{
    QFETCH(QByteArray, old);
    QFETCH(QString, reason);
    SpreadsheetOutputTest test(FileType::ExcelXls);
    makeFile(test.path, old);
    test.options.overwriteSheet = true;
    test.writeText("x");
    QCOMPARE(test.warnings(), "Unable to open/create Excel workbook '%1'.\n" + reason);
    QCOMPARE(contentOf(test.path), old);
}

/// Whatever stands in the old file, it is refused or extended to what can be read.
void TestXlsWriter::survivesDamage()
{
    const QByteArray sound = richBook();
    SpreadsheetOutputTest test(FileType::ExcelXls);
    QRandomGenerator random(1);
    int written = 0;
    for (int i = 0; i < 600; ++i) {
        QByteArray old = sound;
        for (int changes = random.bounded(1, 4); changes > 0; --changes) {
            old[random.bounded(4, old.size())] = char(random.bounded(256));
        }
        makeFile(test.path, old);
        test.options.writeMode = i % 2 == 0 ? WriteMode::Append : WriteMode::Overwrite;
        test.options.overwriteSheet = true;
        test.writeText("added", i % 3 == 0 ? "New" : "");
        if (test.messages.failed) {
            QCOMPARE(contentOf(test.path), old);
            continue;
        }
        ++written;
        const QString text = test.text(test.options.worksheet);
        QVERIFY2(test.readMessages.failed || text.contains("added"), qPrintable(text));
    }
    QVERIFY(written > 50 && written < 550);
}

void TestXlsWriter::addsTextsToAWorkbookWithout()
{
    SpreadsheetOutputTest test(FileType::ExcelXls);
    makeFile(test.path, book(least(), {dimensions(1, 1) + number(0, 0, 1) + view()}));
    test.options.writeMode = WriteMode::Append;
    test.writeText("x");
    QCOMPARE(test.text(), QString("1;x"));
    QCOMPARE(numbersIn(recordsIn(test.path), 0),
             "809 31" + QString(" e0").repeated(16) + " 85 fc a");
}

void TestXlsWriter::tellsOfFormulasWithoutResult()
{
    SpreadsheetOutputTest test(FileType::ExcelXls);
    test.options.excelOutput = 1;
    test.options.excelManualColumnFormats = QStringList{"Formula"};
    test.write(tableOf({"f"}, {{"=1+1"}, {"=FOO(1)"}}));
    QCOMPARE(test.warnings(), QString("1 value(s) do not fit the cell format of their column and "
                                      "were written as text: A3."));
    QCOMPARE(test.text(), QString("f;;=FOO(1)"));
    QCOMPARE(test.readMessages.warnings.size(), 1);
}

TW_TEST_CLASS(TestXlsWriter)
#include "tst_xlswriter.moc"
