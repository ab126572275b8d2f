#include "parametervalues.h"
#include "testsupport.h"
#include "transformremovecols.h"
#include "transformrenamecols.h"
#include "transformreorder.h"
#include "transformrun.h"

/// The transforms that rename, remove and reorder columns.
class TestTransformColumns : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void renames_data();
    void renames();
    void renamesFollowNames();
    void removes_data();
    void removes();
    void treatsNewColumns_data();
    void treatsNewColumns();
    void reorders_data();
    void reorders();
    void sharesCells();
};

void TestTransformColumns::renames_data()
{
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QStringList>("warnings");
    const auto addRow = [](const char *tag, const OptionTexts &options, const char *before,
                           const char *after, const char *status,
                           const QStringList &warnings = {}) {
        QTest::newRow(tag) << options << QString::fromUtf8(before) << QString::fromUtf8(after)
                           << QString::fromUtf8(status) << warnings;
    };
    const auto t = [](const char *utf8) { return QString::fromUtf8(utf8); };
    addRow("nothing chosen", {}, "A|B", "A|B", "No changes");
    addRow("snake case", {{"Case", t("snake_case")}}, "First Name|x", "first_name|x",
           "1 column renamed");
    addRow("explicit names come before rules",
           {{"Columns", t("*NORENAME*|X")}, {"Case", t("lower case")}, {"Suffix", t("_1")}}, "A|B",
           "a_1|X", "2 columns renamed");
    addRow("find, trim, case, prefix",
           {{"Find", t("(net)")}, {"Case", t("Title Case")}, {"Prefix", t("p ")}},
           "unit price (net)|B", "p Unit Price|p B", "2 columns renamed");
    addRow("find literally", {{"Find", t(".")}, {"Replace", t("\\0")}}, "a.b|ab", "a\\0b|ab",
           "1 column renamed");
    addRow("find by regex", {{"Find", t("(\\w)\\.")}, {"Regex", t("1")}, {"Replace", t("\\1-")}},
           "a.b.c|ab", "a-b-c|ab", "1 column renamed");
    addRow("invalid regex", {{"Find", t("(")}, {"Regex", t("1")}, {"Case", t("lower case")}}, "A|B",
           "A|B", "No changes",
           {t("Regular expression '(' is invalid: missing closing parenthesis at position 1.")});
    addRow("repeated name", {{"Columns", t("A|A")}}, "X|Y", "A|A", "2 columns renamed",
           {t("Column name 'A' is used more than once.")});
    addRow("made unique", {{"Columns", t("A|A|*NORENAME*|A")}, {"Make_Unique", t("1")}},
           "X|Y|A_2|Z", "A|A_3|A_2|A_4", "3 columns renamed");
    addRow("repeated before", {{"Case", t("UPPER CASE")}}, "A|A|b", "A|A|B", "1 column renamed");
    addRow("explicitly empty", {{"Columns", t("")}}, "A|B", "A|B", "No changes");
    addRow("more names than columns", {{"Columns", t("X|*NORENAME*|Z")}}, "A|B", "X|B",
           "1 column renamed");
    addRow("no header", {{"Columns", t("*NORENAME*|X")}}, "", "Column 1|X", "1 column renamed");
}

void TestTransformColumns::renames()
{
    QFETCH(OptionTexts, options);
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(QString, status);
    QFETCH(QStringList, warnings);
    const QStringList names = before.isEmpty() ? QStringList() : before.split(QLatin1Char('|'));
    const Dataset input = table(names, rowsOf("1|2;3|4"));
    const auto transform = transformWith<TransformRenameCols>(options);
    const Dataset output = transform->execute({input});
    const QStringList expected = after.split(QLatin1Char('|'));
    QCOMPARE(output.header().mid(0, expected.size()), expected);
    QCOMPARE(columnOf(output, 1), cells("2|4"));
    QCOMPARE(transform->status(), status);
    QCOMPARE(transform->messages().warnings, warnings);
}

void TestTransformColumns::renamesFollowNames()
{
    FakeItem item(cells("A|B"));
    const auto transform =
        transformWith<TransformRenameCols>({{"Columns", QStringLiteral("X|Y")}}, &item);
    transform->resolveColumns();
    item.setColumns(cells("New|B"));
    transform->resolveColumns();
    QCOMPARE(transform->messages().warnings, QStringList{QStringLiteral("Column 'A' not found.")});
    QCOMPARE(transform->execute({table(cells("New|B"), {})}).header(), cells("New|Y"));
}

void TestTransformColumns::removes_data()
{
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QStringList>("warnings");
    const auto t = [](const char *utf8) { return QString::fromUtf8(utf8); };
    QTest::newRow("all checked") << OptionTexts() << t("A|B|C|D|E") << t("No changes")
                                 << QStringList();
    QTest::newRow("some unchecked") << OptionTexts{{"Columns", t("4|1")}} << t("A|D")
                                    << t("3 columns removed") << QStringList();
    QTest::newRow("one unchecked") << OptionTexts{{"Columns", t("1|2|3|4")}} << t("A|B|C|D")
                                   << t("1 column removed") << QStringList();
    QTest::newRow("empty columns") << OptionTexts{{"Remove_Empty", t("1")}} << t("A|B|D|E")
                                   << t("1 column removed") << QStringList();
    QTest::newRow("pattern") << OptionTexts{{"Pattern", t("^[A-C]$")}} << t("D|E")
                             << t("3 columns removed") << QStringList();
    QTest::newRow("invalid pattern")
        << OptionTexts{{"Columns", t("1")}, {"Pattern", t("[")}} << t("A|B|C|D|E")
        << t("No changes")
        << QStringList{t("Regular expression '[' is invalid: missing terminating ] for character "
                         "class at position 1.")};
    QTest::newRow("all removed") << OptionTexts{{"Pattern", t("")}, {"Columns", t("")}} << t("")
                                 << t("5 columns removed")
                                 << QStringList{t("All columns removed.")};
}

void TestTransformColumns::removes()
{
    QFETCH(OptionTexts, options);
    QFETCH(QString, after);
    QFETCH(QString, status);
    QFETCH(QStringList, warnings);
    const Dataset input = table(cells("A|B|C|D|E"), rowsOf("1| ||4|;1| ||4|5"));
    const auto transform = transformWith<TransformRemoveCols>(options);
    const Dataset output = transform->execute({input});
    QCOMPARE(output.header().join(QLatin1Char('|')), after);
    QCOMPARE(output.rowCount(), after.isEmpty() ? 0 : 2);
    QCOMPARE(transform->status(), status);
    QCOMPARE(transform->messages().warnings, warnings);
    // Without rows no column is empty.
    const Dataset noRows = table(cells("A|B|C|D|E"), {});
    const bool removesEmpty = !options.isEmpty() && options[0].first == QByteArray("Remove_Empty");
    if (removesEmpty) {
        QCOMPARE(transform->execute({noRows}), noRows);
    }
}

void TestTransformColumns::treatsNewColumns_data()
{
    QTest::addColumn<bool>("keepNew");
    QTest::addColumn<bool>("hasHeader");
    QTest::addColumn<QStringList>("after");
    QTest::addColumn<QStringList>("notes");
    const QStringList note{QStringLiteral("New column 'D' not kept.")};
    const QStringList number{QStringLiteral("New column 'Column 4' not kept.")};
    QTest::newRow("kept") << true << true << cells("A|C|D") << QStringList();
    QTest::newRow("dropped") << false << true << cells("A|C") << note;
    QTest::newRow("kept by number") << true << false << cells("1|3|4") << QStringList();
    QTest::newRow("dropped by number") << false << false << cells("1|3") << number;
}

void TestTransformColumns::treatsNewColumns()
{
    QFETCH(bool, keepNew);
    QFETCH(bool, hasHeader);
    QFETCH(QStringList, after);
    QFETCH(QStringList, notes);
    FakeItem item(cells("A|B|C"), hasHeader);
    const auto transform = transformWith<TransformRemoveCols>(
        {{"Keep_New", keepNew ? QStringLiteral("1") : QStringLiteral("0")}}, &item);
    transform->setInitialValues();
    transform->resolveColumns();
    QVERIFY(transform->parameter(QStringLiteral("Columns"))
                ->setValueText(stored(QStringLiteral("1|3"))));
    transform->parameter(QStringLiteral("Columns"))->setColumnNames(cells("A|B|C"));
    item.setColumns(cells("A|B|C|D"), hasHeader);
    transform->resolveColumns();
    const QStringList names = hasHeader ? cells("A|B|C|D") : QStringList();
    const Dataset output = transform->execute({table(names, rowsOf("1|2|3|4"))});
    if (hasHeader) {
        QCOMPARE(output.header(), after);
    } else {
        QCOMPARE(output.columnCount().value(), after.size());
        QCOMPARE(columnOf(output, after.size() - 1), QStringList{after.last()});
    }
    QCOMPARE(transform->messages().information, notes);
}

void TestTransformColumns::reorders_data()
{
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("after");
    QTest::addColumn<QString>("status");
    const auto addRow = [](const char *tag, const char *order, const char *columns,
                           const char *before, const char *after, const char *status) {
        QTest::newRow(tag) << OptionTexts{{"Order", QString::fromUtf8(order)},
                                          {"Columns", QString::fromUtf8(columns)}}
                           << cells(before) << cells(after) << QString::fromUtf8(status);
    };
    addRow("arranged", "As arranged", "2|3|1", "C|A|B", "A|B|C", "3 columns moved");
    addRow("two change places", "As arranged", "2|1|3", "C|A|B", "A|C|B", "2 columns moved");
    addRow("empty list", "As arranged", "", "C|A|B", "C|A|B", "No changes");
    addRow("unlisted columns follow", "As arranged", "3", "A|B|C|D", "C|A|B|D", "3 columns moved");
    addRow("beyond the table", "As arranged", "9|2", "A|B", "B|A", "2 columns moved");
    addRow("listed twice", "As arranged", "2|2|1", "A|B", "B|A", "2 columns moved");
    addRow("numbers in names", "Name ascending", "", "Q10|Q2|Q1", "Q1|Q2|Q10", "2 columns moved");
    addRow("descending", "Name descending", "", "a|B|ä|c", "c|B|ä|a", "2 columns moved");
    addRow("reverse", "Reverse", "1|2|3", "A|B|C", "C|B|A", "2 columns moved");
}

void TestTransformColumns::reorders()
{
    QFETCH(OptionTexts, options);
    QFETCH(QStringList, before);
    QFETCH(QStringList, after);
    QFETCH(QString, status);
    const auto transform = transformWith<TransformReorder>(options);
    // The cells are the names, so that they must move with them.
    const Dataset output = transform->execute({table(before, {before})});
    QCOMPARE(output, table(after, {after}));
    QCOMPARE(transform->status(), status);
}

void TestTransformColumns::sharesCells()
{
    const Dataset input = table(cells("A|B"), rowsOf("1|2;3|4"));
    const auto reorder = transformWith<TransformReorder>({{"Order", QStringLiteral("Reverse")}});
    const auto rename = transformWith<TransformRenameCols>({{"Prefix", QStringLiteral("p")}});
    const auto remove = transformWith<TransformRemoveCols>({{"Columns", QStringLiteral("1")}});
    const auto address = [](const Dataset &dataset, int column) {
        return static_cast<const void *>(dataset.utf8(RowIndex(1), ColIndex(column)).data());
    };
    QCOMPARE(address(reorder->execute({input}), 1), address(input, 0));
    QCOMPARE(address(rename->execute({input}), 0), address(input, 0));
    QCOMPARE(address(remove->execute({input}), 0), address(input, 0));
}

TW_TEST_CLASS(TestTransformColumns)
#include "tst_transformcolumns.moc"
