#include "transformscale.h"

#include "testsupport.h"
#include "transformrun.h"

class TestTransformScale : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void scales_data();
    void scales();
    void scalesColumnsTogether();
    void showsWhatApplies();
};

void TestTransformScale::scales_data()
{
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("after");
    QTest::addColumn<QStringList>("warnings");
    const auto t = [](const char *utf8) { return QString::fromUtf8(utf8); };
    const auto addRow = [&t](const char *tag, const char *type, const char *before,
                             const char *after, const QStringList &warnings = {},
                             const OptionTexts &more = {}) {
        QTest::newRow(tag) << (OptionTexts{{"Type", t(type)}} + more) << cells(before)
                           << cells(after) << warnings;
    };
    const auto ignored = [](const char *count) {
        return QStringLiteral("%1 non-numeric value(s) ignored in column 'A'.")
            .arg(QLatin1String(count));
    };
    const auto failed = [](const char *count) {
        return QStringLiteral("%1 result(s) could not be calculated.").arg(QLatin1String(count));
    };
    addRow("0 to 1", "0 to 1", "10|20|30", "0|0.5|1");
    addRow("0 to 100", "0 to 100", "$1,000|0|500", "100|0|50");
    addRow("range", "Range", "0|5|10", "20|15|10", {},
           {{"Minimum", t("20")}, {"Maximum", t("10")}});
    addRow("constant", "0 to 1", "5|5", "0|0");
    addRow("percent of total", "Percent of total", "1|3", "25|75");
    addRow("percent of maximum", "Percent of maximum", "-5|20", "-25|100");
    addRow("z-score", "Z-score", "1|2|3", "-1|0|1");
    addRow("z-score of a constant", "Z-score", "7", "0");
    addRow("mean of 1", "Mean of 1", "1|3", "0.5|1.5");
    addRow("multiply", "Multiply by", "0.1|-0", "0.3|0", {}, {{"Factor", t("3")}});
    addRow("words and blanks", "0 to 1", "1|n/a||3|n/a| ", "0|n/a||1|n/a| ", {ignored("3")});
    addRow("divided by 0", "Percent of total", "1|-1|x", "1|-1|x", {ignored("1"), failed("2")});
    addRow("mean 0", "Mean of 1", "0|0", "0|0", {failed("2")});
    addRow("overflow", "Multiply by", "1e300|1|1e300", "|1e+15|", {failed("2")},
           {{"Factor", t("1e15")}});
    addRow("no numbers", "Z-score", "x|", "x|", {ignored("1")});
}

void TestTransformScale::scales()
{
    QFETCH(OptionTexts, options);
    QFETCH(QStringList, before);
    QFETCH(QStringList, after);
    QFETCH(QStringList, warnings);
    options.append({"Columns", QStringLiteral("1")});
    const auto transform = transformWith<TransformScale>(options);
    const Dataset input = columnTable(QStringLiteral("A"), before);
    QCOMPARE(columnOf(transform->execute({input}), 0), after);
    QCOMPARE(transform->messages().warnings, warnings);
    int changed = 0;
    for (int i = 0; i < before.size(); ++i) {
        changed += before[i] != after[i] ? 1 : 0;
    }
    QCOMPARE(transform->status(),
             changed == 0
                 ? QStringLiteral("No changes")
                 : QStringLiteral("%1 changed, %2 unchanged")
                       .arg(QString::number(changed), QString::number(before.size() - changed)));
}

void TestTransformScale::scalesColumnsTogether()
{
    const Dataset input = table(cells("A|B"), rowsOf("0|5;2|10"));
    const OptionTexts columns{{"Columns", QStringLiteral("1|2")}};
    QCOMPARE(transformWith<TransformScale>(columns)->execute({input}),
             table(cells("A|B"), rowsOf("0|0;1|1")));
    QCOMPARE(transformWith<TransformScale>(columns + OptionTexts{{"Together", QStringLiteral("1")}})
                 ->execute({input}),
             table(cells("A|B"), rowsOf("0|0.5;0.2|1")));
}

void TestTransformScale::showsWhatApplies()
{
    const auto shown = [](const char *type) {
        const auto transform = transformWith<TransformScale>({{"Type", QString::fromUtf8(type)}});
        QStringList keys;
        const auto parameters = transform->parameters();
        for (const TransformParameter *parameter : parameters) {
            if (transform->isParameterShown(*parameter)) {
                keys.append(parameter->key);
            }
        }
        return keys;
    };
    QCOMPARE(shown("Z-score"), cells("Columns|Type|Together"));
    QCOMPARE(shown("Range"), cells("Columns|Type|Minimum|Maximum|Together"));
    QCOMPARE(shown("Multiply by"), cells("Columns|Type|Factor|Together"));
}

TW_TEST_CLASS(TestTransformScale)
#include "tst_transformscale.moc"
