#include "testsupport.h"
#include "transformrun.h"
#include "transformunique.h"

class TestTransformUnique : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aggregates_data();
    void aggregates();
    void keepsColumnsInOrder();
    void groupsInOrderOfAppearance();
    void changesNothingWithoutAKey();
    void followsDateFormatsOnlyForOrder();
    void stops();
};

void TestTransformUnique::aggregates_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QStringList>("warnings");
    const auto t = [](const char *utf8) { return QString::fromUtf8(utf8); };
    const auto addRow = [&](const char *action, const char *before, const char *expected,
                            const OptionTexts &options = {}, const QStringList &warnings = {}) {
        QTest::addRow("%s of %s to %s", action, before, expected)
            << t(action) << options << cells(before) << t(expected) << warnings;
    };
    const OptionTexts caseOff = {{"Case_Sensitive", t("0")}};
    const QStringList oneIgnored = {t("1 non-numeric value(s) ignored in column 'V'.")};
    addRow("First", "x|y", "x");
    addRow("Last", "x|y", "y");
    addRow("Nonsense", "x|y", "x");
    addRow("Count", "x||x", "3");
    addRow("Count non-empty", "x|| ", "2");
    addRow("Count distinct", "x||X|x", "2");
    addRow("Count distinct", "x||X|x", "1", caseOff);
    addRow("Sum", "0.1|0.2|", "0.3");
    addRow("Sum", "1|x|2", "3", {}, oneIgnored);
    addRow("Sum", "|", "0");
    addRow("Average", "1|2|", "1.5");
    addRow("Average", "|", "");
    addRow("Median", "5|1|3", "3");
    addRow("Median", "5|1|3|4", "3.5");
    addRow("Minimum", "10|9|", "9");
    addRow("Maximum", "10|9|1,000", "1000");
    addRow("Maximum", "10|9|x", "10", {}, oneIgnored);
    addRow("Range", "10|9|2.5", "7.5");
    addRow("Minimum", "01/02/2024|31/01/2024", "31/01/2024");
    addRow("Maximum", "01/02/2024|31/01/2024", "01/02/2024");
    addRow("Range", "01/03/2024|28/02/2024", "2");
    addRow("Minimum", "pear|apple|", "apple");
    addRow("Maximum", "pear|apple", "pear");
    addRow("Range", "pear|apple", "");
    addRow("Minimum", "|", "");
    addRow("Standard deviation", "2|4|4|4|5|5|7|9", "2.1380899352994");
    addRow("Standard deviation", "2", "");
    addRow("Mode", "x|y|y||||x|y", "y");
    addRow("Mode", "y|x|x|y", "y");
    addRow("Mode", "a|A|b", "a", caseOff);
    addRow("Mode", "|", "");
    addRow("Concatenate", "b||a|b", "b,a,b");
    addRow("Concatenate", "b|a", "b; a", {{"Delimiter", t("; ")}});
    addRow("Concatenate", "b|a", "b\ta", {{"Delimiter", t("\\t")}});
    addRow("Concatenate", "b|a", "ba", {{"Delimiter", t("")}});
    addRow("Concatenate distinct", "b||a|b|B", "b,a,B");
    addRow("Concatenate distinct", "b||a|b|B", "b,a", caseOff);
    addRow("Shortest", "||abc|de|fg", "de");
    addRow("Longest", "a|\xF0\x9F\x98\x80|bc|de", "bc");
}

void TestTransformUnique::aggregates()
{
    QFETCH(QString, action);
    QFETCH(OptionTexts, options);
    QFETCH(QStringList, before);
    QFETCH(QString, expected);
    QFETCH(QStringList, warnings);
    QList<QStringList> rows;
    for (const QString &value : before) {
        rows.append({QStringLiteral("k"), value});
    }
    options.append({"Columns", QStringLiteral("1|Unique|2|") + action});
    const auto transform = transformWith<TransformUnique>(options);
    const Dataset output = transform->execute({table(cells("K|V"), rows)});
    QCOMPARE(output, table(cells("K|V"), {{QStringLiteral("k"), expected}}));
    QCOMPARE(transform->messages().warnings, warnings);
    QCOMPARE(transform->status(), QStringLiteral("1 unique from %1 rows").arg(before.size()));
}

void TestTransformUnique::keepsColumnsInOrder()
{
    const Dataset input = table(cells("A|B|Count|D"), rowsOf("1|a|x|p;2|b|y|q;3|a|z|r"));
    const auto transform = transformWith<TransformUnique>(
        {{"Columns", QStringLiteral("4|Last|1|Sum|2|Unique|9|Unique")},
         {"Add_Count", QStringLiteral("1")}});
    QCOMPARE(transform->execute({input}),
             table(cells("A|B|Count|D|Count_2"), rowsOf("4|a|x|r|2;2|b|y|q|1")));
    transform->parameter(QStringLiteral("Columns"))
        ->setValueText(stored(QStringLiteral("2|Unique|3|Remove|1|Remove")));
    QCOMPARE(transform->execute({input}), table(cells("B|D|Count"), rowsOf("a|p|2;b|q|1")));
}

void TestTransformUnique::groupsInOrderOfAppearance()
{
    const Dataset input = table({}, rowsOf("b|1|1;a|1|2;B|1|4;b|2|8;b|1|16"));
    const auto transform =
        transformWith<TransformUnique>({{"Columns", QStringLiteral("1|Unique|2|Unique|3|Sum")}});
    QCOMPARE(transform->execute({input}), table({}, rowsOf("b|1|17;a|1|2;B|1|4;b|2|8")));
    QCOMPARE(transform->status(), QStringLiteral("4 unique from 5 rows"));
    transform->parameter(QStringLiteral("Case_Sensitive"))->value = false;
    QCOMPARE(transform->execute({input}), table({}, rowsOf("b|1|21;a|1|2;b|2|8")));
}

void TestTransformUnique::changesNothingWithoutAKey()
{
    const Dataset input = table(cells("A"), rowsOf("1;1"));
    const auto transform = transformWith<TransformUnique>({{"Columns", QStringLiteral("1|Sum")}});
    QCOMPARE(transform->execute({input}), input);
    QCOMPARE(transform->status(), QStringLiteral("No changes"));
}

void TestTransformUnique::followsDateFormatsOnlyForOrder()
{
    QVERIFY(!transformWith<TransformUnique>({{"Columns", QStringLiteral("1|Unique|2|Sum")}})
                 ->dependsOnDateFormats());
    QVERIFY(transformWith<TransformUnique>({{"Columns", QStringLiteral("1|Unique|2|Range")}})
                ->dependsOnDateFormats());
}

void TestTransformUnique::stops()
{
    const auto transform =
        transformWith<TransformUnique>({{"Columns", QStringLiteral("1|Unique|2|Mode")}});
    const Dataset input = table(cells("A|B"), rowsOf("1|2;1|3"));
    int asked = 0;
    transform->setProgress([&asked](double) { return ++asked < 4; });
    QVERIFY(!transform->execute({input}).hasColumns());
    QVERIFY(transform->isStopped());
}

TW_TEST_CLASS(TestTransformUnique)
#include "tst_transformunique.moc"
