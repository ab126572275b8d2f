#include "memoryceiling.h"
#include "testsupport.h"
#include "transformrun.h"
#include "transformsplitrows.h"

class TestTransformSplitRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void splits_data();
    void splits();
    void sharesRepeatedCells();
    void refusesTooManyRows();
    void stops();
};

namespace {

OptionTexts automatic()
{
    return {{"Columns", QStringLiteral("automatic|0|0|1")}};
}

OptionTexts matching()
{
    return {{"Columns", QStringLiteral("matching|0|0|1")}};
}

OptionTexts fixed(const char *spec)
{
    return {{"Columns", QStringLiteral("fixed|%1").arg(QString::fromLatin1(spec))}};
}

OptionTexts values(const char *columns)
{
    return {{"Value_Columns", QString::fromLatin1(columns)}};
}

const OptionTexts numbered = {{"Add_Number", QStringLiteral("1")}};
const OptionTexts withEmpty = {{"Ignore_Empty", QStringLiteral("0")}};

} // namespace

void TestTransformSplitRows::splits_data()
{
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QStringList>("told");
    const auto add = [](const char *tag, const OptionTexts &options, const char *input,
                        const char *expected, const char *status, const char *told = nullptr) {
        QTest::newRow(tag) << options << QString::fromUtf8(input) << QString::fromUtf8(expected)
                           << QString::fromUtf8(status)
                           << (told ? QStringList(QString::fromUtf8(told)) : QStringList());
    };
    add("nothing set", {}, "A|B:1|2", "A|B:1|2", "No changes");
    add("automatic", automatic(), "ID|Item1|Qty1|Item2|Qty2:7|a|1|b|2;8|c|3|d|4",
        "ID|Item|Qty:7|a|1;7|b|2;8|c|3;8|d|4", "2 rows added");
    add("by value of the numbers", automatic(), "A10|A9|A 08:x|y|z", "A:z;y;x", "2 rows added");
    add("separators", automatic(), "Sum (1)|Sum (2)|x_1_y|x.2.y:1|2|3|4", "Sum|xy:1|3;2|4",
        "1 row added");
    add("a number missing", automatic(), "A1|B1|A3|B2:1|2|3|4", "A|B:1|2;|4;3|", "2 rows added");
    add("without a number first", automatic(), "A2|A|A1:1|2|3", "A:2;3;1", "2 rows added");
    add("the same number twice", automatic(), "A1|A-1|B1:1|2|3", "A|B1:1|3;2|3", "1 row added");
    add("names of digits", automatic(), "City|2019|2020:x|1|2", "City|2019:x|1;x|2", "1 row added");
    add("nothing repeats", automatic(), "A1|B2:1|2", "A1|B2:1|2", "No changes");
    add("no header, by name", automatic(), "1|2;3|4", "1;2;3;4", "2 rows added");
    add("matching", matching(), "K|a|b|A:1|2|3|4", "K|a|b:1|2|3;1|4|3", "1 row added");
    add("matching, shorter one", matching() + withEmpty, "a|b|a|b|a:1|2|3|4|5", "a|b:1|2;3|4;5|",
        "2 rows added");
    add("fixed", fixed("2|2|2"), "K|A|B|C|D|E:k|1|2|3|4|e", "K|A|B|E:k|1|2|e;k|3|4|e",
        "1 row added");
    add("fixed without a first column", fixed("0|1|2"), "A|B:1|2", "A:1;2", "1 row added");
    add("fixed beyond the table", fixed("1|2|3"), "A|B|C:1|2|3", "A|B:1|2;3|", "1 row added",
        "3 cell(s) of each row lie beyond the last column and are empty.");
    add("fixed beyond the table, with empty rows", fixed("1|2|3") + withEmpty, "A|B|C:1|2|3",
        "A|B:1|2;3|;|", "2 rows added",
        "3 cell(s) of each row lie beyond the last column and are empty.");
    add("nothing but empty parts", fixed("0|0|3"), "A|B:1|2", "A|B:1|2", "No changes",
        "4 cell(s) of each row lie beyond the last column and are empty.");
    add("parts that are empty", fixed("2|1|3") + numbered, "K|A|B|C:1||x|;2|||;3|y||z",
        "K|A|Number:1|x|2;2||1;3|y|1;3|z|3", "1 row added");
    add("values", values("1"), "A|B:a, b|1;c|2;|3", "A|B:a|1;b|1;c|2;|3", "1 row added");
    add("values in parallel", values("1|2"), "A|B:a,b|1", "A|B:a|1;b|", "1 row added");
    add("empty parts", values("1|2") + numbered, "A|B:,a,,b|,,1;,,|",
        "A|B|Number:a||2;|1|3;b||4;||1", "2 rows added");
    add("empty parts kept", values("1") + withEmpty, "A:a,,b", "A:a;;b", "2 rows added");
    add("delimiter of several characters",
        values("1") +
            OptionTexts{{"Delimiter", QStringLiteral("\\\\n")}, {"Trim", QStringLiteral("0")}},
        "A:a\\n b", "A:a; b", "1 row added");
    add("no delimiter", values("1") + OptionTexts{{"Delimiter", QString()}}, "A:a,b", "A:a,b",
        "No changes", "No delimiter is set, so no value is split.");
    add("columns and values", automatic() + values("2|3") + numbered, "K|A1|A2:1|a,b|c;2||d",
        "K|A|Number:1|a|1;1|b|2;1|c|3;2|d|1", "2 rows added");
    add("the name Number in use", values("1") + numbered, "Number:a,b", "Number|Number_2:a|1;b|2",
        "1 row added");
    add("no header", values("2") + numbered, "1|x,y", "1|x|1;1|y|2", "1 row added");
    add("no rows to split values of", values("1"), "A|B:", "A|B:", "No changes");
    add("no rows", automatic(), "A1|A2:", "A:", "0 rows added");
}

void TestTransformSplitRows::splits()
{
    QFETCH(OptionTexts, options);
    QFETCH(QString, input);
    QFETCH(QString, expected);
    QFETCH(QString, status);
    QFETCH(QStringList, told);
    const Dataset table = parsed(input);
    const auto transform = transformWith<TransformSplitRows>(options);
    QCOMPARE(written(transform->execute({table})), expected);
    QCOMPARE(transform->status(), status);
    QCOMPARE(transform->messages().information + transform->messages().warnings, told);
    QCOMPARE(table, parsed(input));
}

void TestTransformSplitRows::sharesRepeatedCells()
{
    const QString longText(1 << 20, QLatin1Char('x'));
    const Dataset input =
        table({QStringLiteral("K"), QStringLiteral("A")}, {{longText, QStringLiteral("a,b,c,d")}});
    const auto transform = transformWith<TransformSplitRows>(values("2"));
    const Dataset output = transform->execute({input});
    QCOMPARE(output.rowCount(), 4);
    QVERIFY(output.columnReader(ColIndex(0)).utf8(3).data() ==
            input.columnReader(ColIndex(0)).utf8(0).data());
}

void TestTransformSplitRows::refusesTooManyRows()
{
    const Dataset input = columnTable(QStringLiteral("A"), {QStringLiteral("1"), QString()});
    const auto tooMany = transformWith<TransformSplitRows>(fixed("1|1|2000000000") + withEmpty);
    QVERIFY(!tooMany->execute({input}).hasRows());
    QVERIFY(tooMany->messages().failed);
    QVERIFY2(tooMany->messages().warnings.join(QString()).contains(
                 QLatin1String("The result would have 4,000,000,000 rows")),
             qPrintable(tooMany->messages().warnings.join(QString())));

    MemoryCeiling::pretendInUseGb(MemoryCeiling::limitGb() - 0.001);
    const auto tooLarge = transformWith<TransformSplitRows>(fixed("1|1|1000000") + withEmpty);
    const bool hasRows = tooLarge->execute({input}).hasRows();
    MemoryCeiling::pretendInUseGb(-1);
    QVERIFY(!hasRows && tooLarge->messages().failed);
}

void TestTransformSplitRows::stops()
{
    const Dataset input = columnTable(QStringLiteral("A"), {QStringLiteral("a,b")});
    const auto transform = transformWith<TransformSplitRows>(values("1"));
    transform->setProgress([](double) { return false; });
    transform->execute({input});
    QVERIFY(transform->isStopped());
}

TW_TEST_CLASS(TestTransformSplitRows)
#include "tst_transformsplitrows.moc"
