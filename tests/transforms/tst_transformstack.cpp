#include "testsupport.h"
#include "transformrun.h"
#include "transformstack.h"

class TestTransformStack : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stacks_data();
    void stacks();
    void namesSources();
    void copiesOneInput();
    void showsWhatMatters();
    void sharesValues();
    void stops();
};

void TestTransformStack::stacks_data()
{
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QStringList>("inputs");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QStringList>("notes");
    const auto t = [](const char *utf8) { return QString::fromUtf8(utf8); };
    const auto addRow = [&](const char *tag, const OptionTexts &options, const char *inputs,
                            const char *expected, const char *status,
                            const QStringList &notes = {}) {
        QTest::newRow(tag) << options << t(inputs).split(QLatin1Char('/')) << t(expected)
                           << t(status) << notes;
    };
    const OptionTexts position = {{"Align_By", t("Column position")}};
    addRow("different columns", {}, "A|B:1|2/B|C:3|4", "A|B|C:1|2|;|3|4", "2 rows from 2 input(s)",
           {t("Column 'C' is missing from input 1."), t("Column 'A' is missing from input 2.")});
    addRow("reordered", {}, "A|B:1|2/B|A:3|4", "A|B:1|2;4|3", "2 rows from 2 input(s)");
    addRow("repeated names", {}, "A|A:1|2/X|A|A|A:3|4|5|6", "A|A|X|A:1|2||;4|5|3|6",
           "2 rows from 2 input(s)",
           {t("Column 'X' is missing from input 1."), t("Column 'A' is missing from input 1.")});
    addRow("case matters", {}, "A:1/a:2", "A|a:1|;|2", "2 rows from 2 input(s)",
           {t("Column 'a' is missing from input 1."), t("Column 'A' is missing from input 2.")});
    addRow("case ignored", {{"Case_Sensitive", t("0")}}, "A:1/a:2", "A:1;2",
           "2 rows from 2 input(s)");
    addRow("in every input", {{"Keep_Columns", t("Columns in every input")}},
           "A|B|C:1|2|3/C|B:4|5/B|D|C:6|7|8", "B|C:2|3;5|4;6|8", "3 rows from 3 input(s)");
    addRow("nothing common", {{"Keep_Columns", t("Columns in every input")}}, "A:1/B:2", "",
           "No changes");
    addRow("of the first", {{"Keep_Columns", t("Columns of the first input")}}, "A|B:1|2/C|B:4|5",
           "A|B:1|2;|5", "2 rows from 2 input(s)", {t("Column 'A' is missing from input 2.")});
    addRow("by position", position, "A:1/B|C:2|3", "A|C:1|;2|3", "2 rows from 2 input(s)",
           {t("Column 'C' is missing from input 1.")});
    addRow("by position, hidden options",
           position + OptionTexts{{"Keep_Columns", t("Columns in every input")}}, "A:1/B|C:2|3",
           "A|C:1|;2|3", "2 rows from 2 input(s)", {t("Column 'C' is missing from input 1.")});
    addRow("one without header", {}, "1|2|3/A|B:4|5", "A|B|Column 3:1|2|3;4|5|",
           "2 rows from 2 input(s)", {t("Column 'Column 3' is missing from input 2.")});
    addRow("none with header", {}, "1|2/3", "1|2;3|", "2 rows from 2 input(s)",
           {t("Column 'Column 2' is missing from input 2.")});
    addRow("no rows", {}, "A:/A:1/A:", "A:1", "1 row from 3 input(s)");
    addRow("source", {{"Add_Source", t("1")}}, "Source:1;2/Source:3",
           "Source|Source_2:1|Input 1;2|Input 1;3|Input 2", "3 rows from 2 input(s)");
    addRow("source without a header", {{"Add_Source", t("1")}, {"Source_Name", t("From")}}, "1/2",
           "1|Input 1;2|Input 2", "2 rows from 2 input(s)");
    addRow("source name", {{"Add_Source", t("1")}, {"Source_Name", t("From")}}, "A:1/A:2",
           "A|From:1|Input 1;2|Input 2", "2 rows from 2 input(s)");
}

void TestTransformStack::stacks()
{
    QFETCH(OptionTexts, options);
    QFETCH(QStringList, inputs);
    QFETCH(QString, expected);
    QFETCH(QString, status);
    QFETCH(QStringList, notes);
    QList<Dataset> tables;
    for (const QString &input : inputs) {
        tables.append(parsed(input));
    }
    const auto transform = transformWith<TransformStack>(options);
    QCOMPARE(written(transform->execute(tables)), expected);
    QCOMPARE(transform->status(), status);
    QCOMPARE(transform->messages().information, notes);
    QCOMPARE(transform->messages().warnings.size(), expected.isEmpty() ? 1 : 0);
    for (int i = 0; i < inputs.size(); ++i) {
        QCOMPARE(tables[i], parsed(inputs[i]));
    }
}

void TestTransformStack::namesSources()
{
    FakeItem item;
    const auto transform =
        transformWith<TransformStack>({{"Add_Source", QStringLiteral("1")}}, &item);
    const QList<Dataset> inputs = {parsed(QStringLiteral("A:1")), parsed(QStringLiteral("A:2"))};
    QCOMPARE(columnOf(transform->execute(inputs), 1), cells("fake|Input 2"));
    const auto copy = transform->clone();
    QCOMPARE(columnOf(copy->execute(inputs), 1), cells("fake|Input 2"));
}

void TestTransformStack::copiesOneInput()
{
    const Dataset input = parsed(QStringLiteral("A|A|:1|2|3;4|5|6"));
    const auto transform = transformWith<TransformStack>({});
    QCOMPARE(transform->execute({input}), input);
    QCOMPARE(transform->status(), QStringLiteral("2 rows from 1 input(s)"));
}

void TestTransformStack::showsWhatMatters()
{
    const auto transform = transformWith<TransformStack>({});
    const auto isShown = [&](const char *key) {
        return transform->isParameterShown(*transform->parameter(QString::fromLatin1(key)));
    };
    QVERIFY(isShown("Keep_Columns") && isShown("Case_Sensitive") && !isShown("Source_Name"));
    transform->parameter(QStringLiteral("Align_By"))->value = QStringLiteral("Column position");
    transform->parameter(QStringLiteral("Add_Source"))->value = true;
    QVERIFY(!isShown("Keep_Columns") && !isShown("Case_Sensitive") && isShown("Source_Name"));
}

void TestTransformStack::sharesValues()
{
    const Dataset input = columnTable(QStringLiteral("A"), cells("same|other"));
    const Dataset output = transformWith<TransformStack>({})->execute({input, input});
    QCOMPARE(columnOf(output, 0), cells("same|other|same|other"));
    QCOMPARE(static_cast<const void *>(output.utf8(RowIndex(2), ColIndex(0)).data()),
             static_cast<const void *>(input.utf8(RowIndex(0), ColIndex(0)).data()));
}

void TestTransformStack::stops()
{
    const auto transform = transformWith<TransformStack>({});
    transform->setProgress([](double) { return false; });
    const Dataset input = parsed(QStringLiteral("A:1"));
    QVERIFY(!transform->execute({input, input}).hasColumns());
    QVERIFY(transform->isStopped());
}

TW_TEST_CLASS(TestTransformStack)
#include "tst_transformstack.moc"
