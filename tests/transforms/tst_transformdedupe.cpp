#include "testsupport.h"
#include "transformdedupe.h"
#include "transformrun.h"

#include <QRandomGenerator>

class TestTransformDedupe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void removesDuplicates_data();
    void removesDuplicates();
    void matchesEachRowWithTheFirstSimilarOne();
    void showsWhatMatters();
    void sharesCells();
    void stops();
};

void TestTransformDedupe::removesDuplicates_data()
{
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("status");
    const auto t = [](const char *utf8) { return QString::fromUtf8(utf8); };
    const auto addRow = [&](const char *tag, const OptionTexts &options, const char *before,
                            const char *after, const char *status) {
        QTest::newRow(tag) << options << t(before) << t(after) << t(status);
    };
    const auto on = [&](const char *key) { return OptionTexts{{key, t("1")}}; };
    const auto keep = [&](const char *which) {
        return OptionTexts{{"Columns", t("1")}, {"Keep", t(which)}, {"Keep_Column", t("2")}};
    };
    const auto match = [&](const char *which) { return OptionTexts{{"Match", t(which)}}; };
    const OptionTexts caseOff = {{"Case_Sensitive", t("0")}};
    const OptionTexts only = {{"Columns", t("1")}, {"Output", t("Only the duplicates")}};

    addRow("case matters", {}, "a;A;b", "a;A;b", "No changes");
    addRow("case ignored", caseOff, "a;A;b", "a;b", "1 row removed");
    addRow("umlauts, case ignored", caseOff, "Ä;ä;a", "Ä;a", "1 row removed");
    addRow("no columns", {{"Columns", t("")}}, "a;a", "a;a", "No changes");
    addRow("all columns", {}, "a|1;a|2;a|1;b|1", "a|1;a|2;b|1", "1 row removed");
    addRow("column borders count", {}, "ab|c;a|bc;ab|c", "ab|c;a|bc", "1 row removed");
    addRow("one column", {{"Columns", t("1")}}, "a|1;a|2;b|3", "a|1;b|3", "1 row removed");
    addRow("empty cells are alike", {{"Columns", t("1")}}, "|1;|2;x|3", "|1;x|3", "1 row removed");
    addRow("whitespace matters", {}, "a b;ab", "a b;ab", "No changes");
    addRow("whitespace", on("Ignore_Whitespace"), " a b;ab\t;a-b", " a b;a-b", "1 row removed");
    addRow("punctuation", on("Ignore_Punctuation"), "a.b;(ab);a b", "a.b;a b", "1 row removed");
    addRow("accents", on("Ignore_Accents"), "résumé;resume;rèsume\xCC\x81;Resume", "résumé;Resume",
           "2 rows removed");
    addRow("keep first", keep("First"), "a|1;b|2;a|3", "a|1;b|2", "1 row removed");
    addRow("keep last", keep("Last"), "a|1;b|2;a|3", "b|2;a|3", "1 row removed");
    addRow("most complete", keep("Most complete row"), "a||;a|x|;a|y|z;a|u|v", "a|y|z",
           "3 rows removed");
    addRow("most complete, tie", keep("Most complete row"), "a|x|;a||y;b||", "a|x|;b||",
           "1 row removed");
    addRow("largest number", keep("Largest value"), "a|9;a|10;a|;a|x;b|1;b|0;c|", "a|10;b|1;c|",
           "4 rows removed");
    addRow("smallest number", keep("Smallest value"), "a|10;a|9;a|;b|1;b|0", "a|9;b|0",
           "3 rows removed");
    addRow("largest, tie", keep("Largest value"), "a|2|x;a|2.0|y", "a|2|x", "1 row removed");
    addRow("largest date", keep("Largest value"), "a|01/12/2023;a|02/01/2024;a|03/05/2023",
           "a|02/01/2024", "2 rows removed");
    addRow("largest text", keep("Largest value"), "a|pear;a|zoo;a|apple", "a|zoo",
           "2 rows removed");
    addRow("largest of no column", {{"Columns", t("1")}, {"Keep", t("Largest value")}}, "a|1;a|2",
           "a|1;a|2", "No changes");
    addRow("none", keep("None of the duplicates"), "a|1;b|2;a|3;c|4", "b|2;c|4", "2 rows removed");
    addRow("only the duplicates", only, "a|1;b|2;c|3;b|4;a|5", "a|1;a|5;b|2;b|4", "1 row removed");
    addRow("only the duplicates, none", only, "a|1;b|2", "", "2 rows removed");
    addRow("90%", match("90% fuzzy"), "abcdefghij;abcdefghiX;abcdefghXX", "abcdefghij;abcdefghXX",
           "1 row removed");
    addRow("80%", match("80% fuzzy"), "abcdefghij;abcdefghiX;abcdefghXX;abcdefgXXX",
           "abcdefghij;abcdefgXXX", "2 rows removed");
    addRow("50%", match("50% fuzzy"), "ab;ax;abcd;xy", "ab;xy", "2 rows removed");
    addRow("fuzzy, case", match("50% fuzzy") + caseOff, "ABCD;abcx;x", "ABCD;x", "1 row removed");
    addRow("fuzzy in every column", match("70% fuzzy"), "smith|london;smyth|london;smith|paris",
           "smith|london;smith|paris", "1 row removed");
    addRow("fuzzy, empty texts", match("50% fuzzy"), "|x;|x;a|x", "|x;a|x", "1 row removed");
}

void TestTransformDedupe::removesDuplicates()
{
    QFETCH(OptionTexts, options);
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(QString, status);
    const auto tableOf = [](const QString &text) {
        return table({}, rowsOf(text.toUtf8().constData()));
    };
    const Dataset input = tableOf(before);
    const auto transform = transformWith<TransformDedupe>(options);
    const Dataset output = transform->execute({input});
    QCOMPARE(transform->status(), status);
    QCOMPARE(output.columnCount().value(), input.columnCount().value());
    if (after.isEmpty()) {
        QCOMPARE(output.rowCount(), 0);
    } else {
        QCOMPARE(output, tableOf(after));
    }
}

void TestTransformDedupe::matchesEachRowWithTheFirstSimilarOne()
{
    // Without the short cuts: each text against the first texts of all groups.
    QRandomGenerator random(7);
    QStringList texts;
    for (int i = 0; i < 400; ++i) {
        QString text;
        const int length = random.bounded(1, 7);
        for (int k = 0; k < length; ++k) {
            text += QLatin1Char(char('a' + random.bounded(3)));
        }
        texts.append(text);
    }
    const auto distance = [](const QString &a, const QString &b) {
        std::vector<int> line(size_t(b.size()) + 1);
        for (int j = 0; j <= b.size(); ++j) {
            line[size_t(j)] = j;
        }
        for (int i = 1; i <= a.size(); ++i) {
            int diagonal = line[0];
            line[0] = i;
            for (int j = 1; j <= b.size(); ++j) {
                const int substituted = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
                diagonal = line[size_t(j)];
                line[size_t(j)] = qMin(substituted, qMin(line[size_t(j)], line[size_t(j) - 1]) + 1);
            }
        }
        return line.back();
    };
    QStringList expected;
    for (const QString &text : texts) {
        bool isNew = true;
        for (const QString &first : expected) {
            isNew = isNew && distance(text, first) * 10 > 4 * qMax(text.size(), first.size());
        }
        if (isNew) {
            expected.append(text);
        }
    }
    const auto transform = transformWith<TransformDedupe>({{"Match", QStringLiteral("60% fuzzy")}});
    const Dataset output = transform->execute({columnTable(QStringLiteral("A"), texts)});
    QCOMPARE(columnOf(output, 0), expected);
}

void TestTransformDedupe::showsWhatMatters()
{
    const auto transform = transformWith<TransformDedupe>({});
    const TransformParameter &column = *transform->parameter(QStringLiteral("Keep_Column"));
    QVERIFY(!transform->isParameterShown(column));
    transform->parameter(QStringLiteral("Keep"))->value = QStringLiteral("Smallest value");
    QVERIFY(transform->isParameterShown(column));
}

void TestTransformDedupe::sharesCells()
{
    const Dataset input = columnTable(QStringLiteral("A"), cells("x|y|x"));
    const Dataset output = transformWith<TransformDedupe>({})->execute({input});
    QCOMPARE(output.header(), input.header());
    QCOMPARE(static_cast<const void *>(output.utf8(RowIndex(1), ColIndex(0)).data()),
             static_cast<const void *>(input.utf8(RowIndex(1), ColIndex(0)).data()));
}

void TestTransformDedupe::stops()
{
    const auto transform = transformWith<TransformDedupe>({{"Match", QStringLiteral("50% fuzzy")}});
    int asked = 0;
    transform->setProgress([&asked](double) { return ++asked < 3; });
    const Dataset input = columnTable(QStringLiteral("A"), cells("x|y|x"));
    QVERIFY(!transform->execute({input}).hasColumns());
    QVERIFY(transform->isStopped());
}

TW_TEST_CLASS(TestTransformDedupe)
#include "tst_transformdedupe.moc"
