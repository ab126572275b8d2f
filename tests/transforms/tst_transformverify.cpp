#include "parametervalues.h"
#include "testsupport.h"
#include "transformrun.h"
#include "transformsettings.h"
#include "transformverify.h"
#include "verifyrules.h"

#include <algorithm>

namespace {

QString t(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

std::unique_ptr<TransformVerify> verifyWith(const QList<VerifyRule> &rules,
                                            const OptionTexts &options = {})
{
    auto transform = transformWith<TransformVerify>(options);
    transform->parameter(t("Rules"))->value = QVariant::fromValue(rules);
    return transform;
}

/// The rows, counted from 1, that fail a rule.
QStringList failingRows(const VerifyRule &rule, const Dataset &input, bool caseSensitive = true)
{
    const auto transform =
        verifyWith({rule}, {{"On_Fail", t("Add column")},
                            {"Case_Sensitive", caseSensitive ? t("1") : t("0")}});
    const Dataset output = transform->execute({input});
    const QStringList failures = columnOf(output, output.columnCount().value() - 1);
    QStringList rows;
    for (int row = 0; row < failures.size(); ++row) {
        if (!failures[row].isEmpty()) {
            rows.append(QString::number(row + 1));
        }
    }
    return rows;
}

} // namespace

class TestTransformVerify : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void checksCells_data();
    void checksCells();
    void checksColumns_data();
    void checksColumns();
    void checksTables_data();
    void checksTables();
    void actsOnFailure_data();
    void actsOnFailure();
    void refusesInvalidRules_data();
    void refusesInvalidRules();
    void limitsWhatIsListed();
    void tellsWhetherDatesMatter_data();
    void tellsWhetherDatesMatter();
    void stopsWhenAsked();
};

void TestTransformVerify::initTestCase()
{
    TransformSettings settings;
    settings.dateFormats = QStringList{t("d/M/yyyy"), t("yyyy-MM-dd")};
    TransformSettings::setCurrent(settings);
}

void TestTransformVerify::checksCells_data()
{
    QTest::addColumn<int>("rule");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QStringList>("column");
    QTest::addColumn<QStringList>("failing");
    const auto addRow = [](int rule, const char *value, const char *column, const char *failing) {
        const QString rows = QString::fromUtf8(failing);
        QTest::addRow("%d %s %s", rule, value, column)
            << rule << t(value) << cells(column)
            << (rows.isEmpty() ? QStringList() : rows.split(QLatin1Char(' ')));
    };
    addRow(0, "", "a|| ", "2");
    addRow(1, "", "a|| ", "1 3");
    addRow(2, "", "1|-1.5e3|£2|x|", "4");
    addRow(3, "", "1|1.0|1.5|1e3|", "3 4");
    addRow(4, "", "true|FALSE|1||yes", "3 5");
    addRow(5, "", "1/2/2024|31/12/2023|2024-01-01|x|", "3 4");
    addRow(6, "yyyyMMdd", "20240131|20240132|1/2/2024|", "2 3");
    addRow(7, "", "a|1|true|x1|", "2 3");
    addRow(8, "5", "5|5.0|6||five", "3 5");
    addRow(9, "5", "5|5.0|6|", "1 2");
    addRow(10, "5", "5|10|4|", "1 3");
    addRow(10, "1/2/2024", "31/1/2024|2/2/2024", "1");
    addRow(11, "5", "5|10|4", "3");
    addRow(12, "5", "5|10|4", "1 2");
    addRow(13, "5", "5|10|4", "2");
    addRow(14, "1 to 10", "5|n/a||10|11|1", "2 5");
    addRow(15, "a|b", "a|B|c|", "2 3");
    addRow(16, "a|b", "a|B|c|", "1");
    addRow(17, "an", "banana|BAN|x|", "2 3");
    addRow(18, "an", "banana|BAN|x|", "1");
    addRow(19, "an", "ant|pan|", "2");
    addRow(20, "an", "ant|pan|", "1");
    addRow(21, "a|b+", "a|bb|abb|xa|", "3 4");
    addRow(22, "a|b+", "a|bb|abb|xa|", "1 2");
    addRow(23, "2", "a|ab||\xF0\x9F\x98\x80", "1 4");
    addRow(24, "1", "a|ab||\xF0\x9F\x98\x80", "2");
    addRow(25, "2", "a|ab||abc", "1 4");
    addRow(26, "", "a|a |\ta|a b|", "2 3");
    addRow(27, "", "A1|Ab|", "2");
    addRow(28, "", "a1|Ab|", "2");
    addRow(29, "", "a.b@example.com|a@b|@x.org|a..b@x.org|a b@x.org|a@x.org|a@@x.org|",
           "2 3 4 5 7");
    addRow(30, "", "https://example.com/a?b=c|example.com|http://|ftp://host/x|http://a b|",
           "2 3 5");
    addRow(31, "", "4539578763621486|4539578763621487|4539 5787-6362 1486|x|0|", "2 4 5");
    addRow(32, "", "1/1/2000|1/1/2999|x|", "2 3");
}

void TestTransformVerify::checksCells()
{
    QFETCH(int, rule);
    QFETCH(QString, value);
    QFETCH(QStringList, column);
    QFETCH(QStringList, failing);
    QCOMPARE(failingRows({t("A"), rule, value}, columnTable(t("A"), column)), failing);
}

void TestTransformVerify::checksColumns_data()
{
    QTest::addColumn<VerifyRule>("rule");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QString>("rows");
    QTest::addColumn<QStringList>("failing");
    const auto addRow = [](const char *tag, const VerifyRule &rule, bool caseSensitive,
                           const char *rows, const QStringList &failing) {
        QTest::newRow(tag) << rule << caseSensitive << t(rows) << failing;
    };
    addRow("unique", {t("A"), 33, {}}, true, "a;b;a", cells("1|3"));
    addRow("unique with case", {t("A"), 33, {}}, true, "a;A", {});
    addRow("unique without case", {t("A"), 33, {}}, false, "a;A", cells("1|2"));
    addRow("ascending", {t("A"), 34, {}}, true, "2;10;10;9;11", {t("4")});
    addRow("ascending dates", {t("A"), 34, {}}, true, "31/1/2024;1/2/2024;2/1/2024", {t("3")});
    addRow("descending", {t("A"), 35, {}}, true, "b;a;c;c", {t("3")});
    addRow("constant", {t("A"), 36, {}}, true, "a;a;b", {t("3")});
    addRow("same", {t("A"), 37, t("B")}, true, "a|a;a|A;b|c", cells("2|3"));
    addRow("same without case", {t("A"), 37, t("B")}, false, "a|a;a|A;b|c", {t("3")});
    addRow("any column", {{}, 2, {}}, true, "1|2;x|1;1|y", cells("2|3"));
    addRow("equal without case", {t("A"), 8, t("X")}, false, "x;y", {t("2")});
    addRow("rows", {{}, 42, {}}, true, "a|b;ab|;a|b;a|c", cells("1|3"));
    addRow("no rows", {t("A"), 34, {}}, true, "", {});
}

void TestTransformVerify::checksColumns()
{
    QFETCH(VerifyRule, rule);
    QFETCH(bool, caseSensitive);
    QFETCH(QString, rows);
    QFETCH(QStringList, failing);
    const Dataset input = table(cells("A|B"), rowsOf(qPrintable(rows)));
    QCOMPARE(failingRows(rule, input, caseSensitive), failing);
}

void TestTransformVerify::checksTables_data()
{
    QTest::addColumn<VerifyRule>("rule");
    QTest::addColumn<QString>("rows");
    QTest::addColumn<QStringList>("warnings");
    const auto addRow = [](const char *tag, const VerifyRule &rule, const char *rows,
                           const QStringList &warnings) {
        QTest::newRow(tag) << rule << t(rows) << warnings;
    };
    addRow("too few rows", {{}, 38, t("1")}, "",
           {t("Row -, column '-': '0' fails 'Rows at least 1'.")});
    addRow("enough rows", {{}, 38, t("1")}, "a", {});
    addRow("too many rows", {{}, 39, t("1")}, "a;b",
           {t("Row -, column '-': '2' fails 'Rows at most 1'.")});
    addRow("columns", {t("gone"), 40, t("3")}, "a", {});
    addRow("other columns", {{}, 40, t("2")}, "a",
           {t("Row -, column '-': '3' fails 'Columns equal to 2'.")});
    addRow("column exists", {{}, 41, t("A")}, "a", {});
    addRow("column is absent", {{}, 41, t("a")}, "a",
           {t("Row -, column '-': 'a' fails 'Column exists a'.")});
    addRow("repeated names", {{}, 43, {}}, "a",
           {t("Row -, column 'A': 'A' fails 'No duplicate column names'.")});
    addRow("absent column fails once", {t("gone"), 2, {}}, "a;b",
           {t("Row -, column 'gone': '' fails 'Is a number'.")});
    addRow("value is no number", {t("B"), 23, t("x")}, "a;b",
           {t("Row -, column 'B': 'x' fails 'Length at least x'.")});
    addRow("no range", {t("B"), 14, t("1-2")}, "a;b",
           {t("Row -, column 'B': '1-2' fails 'Between 1-2'.")});
    addRow("other column is absent", {t("B"), 37, t("Z")}, "a;b",
           {t("Row -, column 'B': 'Z' fails 'Same as column Z'.")});
    addRow("unknown rule", {t("B"), 99, {}}, "a",
           {t("Row -, column 'B': '' fails 'Unknown rule 99'.")});
    addRow("long cell", {t("B"), 2, {}}, qPrintable(t("a|") + QString(5000, QLatin1Char('x'))),
           {t("Row 1, column 'B': '%1' fails 'Is a number'.")
                .arg(QString(100, QLatin1Char('x')) + QChar(0x2026))});
    addRow("row failure", {t("B"), 2, {}}, "a|1;b|x",
           {t("Row 2, column 'B': 'x' fails 'Is a number'.")});
}

void TestTransformVerify::checksTables()
{
    QFETCH(VerifyRule, rule);
    QFETCH(QString, rows);
    QFETCH(QStringList, warnings);
    const Dataset input = table(cells("A|B|A"), rowsOf(qPrintable(rows)));
    const auto transform = verifyWith({rule});
    QCOMPARE(transform->execute({input}), input);
    QCOMPARE(transform->messages().warnings, warnings);
    QCOMPARE(transform->status(),
             warnings.isEmpty() ? t("All rules passed") : t("1 failure(s) of 1 rule(s)"));
    QVERIFY(!transform->messages().failed);
}

void TestTransformVerify::actsOnFailure_data()
{
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QStringList>("first");
    QTest::addColumn<QString>("header");
    QTest::addColumn<bool>("failed");
    const auto mode = [](const char *name) { return OptionTexts{{"On_Fail", t(name)}}; };
    QTest::newRow("warn") << mode("Warn") << cells("1|x||y") << t("A|B") << false;
    QTest::newRow("error") << mode("Error") << QStringList() << t("A|B") << true;
    QTest::newRow("remove") << mode("Remove failing rows") << cells("1|") << t("A|B") << false;
    QTest::newRow("keep") << mode("Keep only failing rows") << cells("x|y") << t("A|B") << false;
    QTest::newRow("column") << mode("Add column") << cells("1|x||y") << t("A|B|Failures") << false;
    QTest::newRow("named column") << OptionTexts{{"On_Fail", t("Add column")}, {"New_Name", t("A")}}
                                  << cells("1|x||y") << t("A|B|A_2") << false;
}

void TestTransformVerify::actsOnFailure()
{
    QFETCH(OptionTexts, options);
    QFETCH(QStringList, first);
    QFETCH(QString, header);
    QFETCH(bool, failed);
    const Dataset input = table(cells("A|B"), rowsOf("1|1;x|2;|3;y|z"));
    const QList<VerifyRule> rules{{{}, 2, {}}, {t("B"), 25, t("1")}, {t("A"), 12, t("9")}};
    const auto transform = verifyWith(rules, options);
    const Dataset output = transform->execute({input});
    QCOMPARE(output.header().join(QLatin1Char('|')), header);
    QCOMPARE(columnOf(output, 0), first);
    QCOMPARE(transform->messages().failed, failed);
    QCOMPARE(transform->status(), t("5 failure(s) of 3 rule(s)"));
    if (output.columnCount().value() == 3) {
        const QString both = t("Is a number; Less than 9");
        QCOMPARE(columnOf(output, 2), (QStringList{{}, both, {}, both}));
        QVERIFY(transform->messages().warnings.isEmpty());
    } else {
        QCOMPARE(transform->messages().warnings.size(), 5);
    }
}

void TestTransformVerify::refusesInvalidRules_data()
{
    QTest::addColumn<QList<VerifyRule>>("rules");
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QStringList>("warnings");
    QTest::addColumn<bool>("failed");
    const QList<VerifyRule> number{{{}, 2, {}}};
    const QList<VerifyRule> regex{{{}, 21, t("(")}};
    const QStringList invalid{
        t("Regular expression '(' is invalid: missing closing parenthesis at position 1.")};
    QTest::newRow("none") << QList<VerifyRule>() << OptionTexts() << t("No rules") << QStringList()
                          << false;
    QTest::newRow("disabled") << number << OptionTexts{{"Disable", t("1")}} << t("No changes")
                              << QStringList{t("Verification is disabled")} << false;
    QTest::newRow("regex") << regex << OptionTexts() << t("No changes") << invalid << false;
    QTest::newRow("regex that must hold")
        << regex << OptionTexts{{"On_Fail", t("Error")}} << t("No changes") << invalid << true;
}

void TestTransformVerify::refusesInvalidRules()
{
    QFETCH(QList<VerifyRule>, rules);
    QFETCH(OptionTexts, options);
    QFETCH(QString, status);
    QFETCH(QStringList, warnings);
    QFETCH(bool, failed);
    const Dataset input = columnTable(t("A"), cells("x"));
    const auto transform = verifyWith(rules, options);
    QCOMPARE(transform->execute({input}), input);
    QCOMPARE(transform->status(), status);
    QCOMPARE(transform->messages().warnings, warnings);
    QCOMPARE(transform->messages().failed, failed);
}

void TestTransformVerify::limitsWhatIsListed()
{
    // Without a header, columns go by their number.
    const Dataset input = table({}, rowsOf("a;b;c;d"));
    const auto transform = verifyWith({{t("Column 1"), 2, {}}}, {{"Maximum", t("2")}});
    transform->execute({input});
    QCOMPARE(transform->messages().warnings,
             (QStringList{t("Row 1, column 'Column 1': 'a' fails 'Is a number'."),
                          t("Row 2, column 'Column 1': 'b' fails 'Is a number'."), t("+ 2 more")}));
    const auto isShown = [&](const char *key) {
        return transform->isParameterShown(*transform->parameter(t(key)));
    };
    QVERIFY(isShown("Maximum") && !isShown("New_Name"));
    transform->parameter(t("On_Fail"))->value = t("Add column");
    QVERIFY(!isShown("Maximum") && isShown("New_Name"));
}

void TestTransformVerify::tellsWhetherDatesMatter_data()
{
    QTest::addColumn<int>("rule");
    QTest::addColumn<bool>("matter");
    const QList<int> dated{5, 6, 8, 9, 10, 11, 12, 13, 14, 32, 34, 35};
    for (int rule = 0; rule < VerifyRules::count; ++rule) {
        QTest::addRow("%d", rule) << rule << dated.contains(rule);
    }
}

void TestTransformVerify::tellsWhetherDatesMatter()
{
    QFETCH(int, rule);
    QFETCH(bool, matter);
    QCOMPARE(verifyWith({{{}, 0, {}}, {{}, rule, {}}})->dependsOnDateFormats(), matter);
}

void TestTransformVerify::stopsWhenAsked()
{
    const Dataset input = columnTable(t("A"), cells("x|y"));
    const auto transform = verifyWith({{{}, 33, {}}});
    transform->setProgress([](double) { return false; });
    transform->execute({input});
    QVERIFY(transform->isStopped());
}

TW_TEST_CLASS(TestTransformVerify)
#include "tst_transformverify.moc"
