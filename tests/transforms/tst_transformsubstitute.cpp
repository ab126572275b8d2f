#include "testsupport.h"
#include "transformrun.h"
#include "transformsubstitute.h"

class TestTransformSubstitute : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void substitutes_data();
    void substitutes();
    void namesTheColumn_data();
    void namesTheColumn();
    void stops();
};

void TestTransformSubstitute::substitutes_data()
{
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QStringList>("row");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QStringList>("warnings");
    const auto t = [](const char *utf8) { return QString::fromUtf8(utf8); };
    const auto addRow = [&](const char *tag, const OptionTexts &options, const char *row,
                            const char *expected, const QStringList &warnings = {}) {
        QTest::newRow(tag) << options << cells(row) << t(expected) << warnings;
    };
    const auto escaped = [&](const char *escape, const char *text) {
        return OptionTexts{{"Text", t(text)}, {"Escape", t(escape)}};
    };
    addRow("name", {{"Text", t("Dear $(Name),")}}, "Ann|5|x", "Dear Ann,");
    addRow("number", {{"Text", t("$(2)/$(1)")}}, "Ann|5|x", "5/Ann");
    addRow("no such number", {{"Text", t("$(9)")}}, "Ann|5|x", "$(9)",
           {t("Column variable '9' not found.")});
    addRow("no such name, warned about once", {{"Text", t("$(no) $(Name) $(no) $(name)")}},
           "Ann|5|x", "$(no) Ann $(no) $(name)",
           {t("Column variable 'no' not found."), t("Column variable 'name' not found.")});
    addRow("not closed", {{"Text", t("$(Name")}}, "Ann|5|x", "$(Name");
    addRow("dollar before a variable", {{"Text", t("$$(2)")}}, "Ann|5|x", "$5");
    addRow("not expanded again", {{"Text", t("$(1)")}}, "$(2)|5|x", "$(2)");
    addRow("without variables", {{"Text", t("a\nb")}}, "Ann|5|x", "a\nb");
    addRow("no text", {}, "Ann|5|x", "");
    addRow("gap", {{"Text", t("<$(1)>")}}, "|5|x", "<>");
    addRow("no gap", {{"Text", t("<$(1)>")}, {"Empty_If_Missing", t("1")}}, "|5|x", "");
    addRow("blank is a value", {{"Text", t("<$(1)>")}, {"Empty_If_Missing", t("1")}}, " |5|x",
           "< >");
    addRow("other cells may be empty", {{"Text", t("<$(2)>")}, {"Empty_If_Missing", t("1")}},
           "|5|x", "<5>");
    addRow("HTML", escaped("HTML", "<i>$(1)</i>"), "<b>'\"&|5|x",
           "<i>&lt;b&gt;&#39;&quot;&amp;</i>");
    addRow("XML", escaped("XML", "<i>$(1)</i>"), "<b>'\"&|5|x",
           "<i>&lt;b&gt;&apos;&quot;&amp;</i>");
    addRow("URL", escaped("URL", "a b?q=$(1)"), "a b&é/~|5|x", "a b?q=a%20b%26%C3%A9%2F~");
    addRow("JSON", escaped("JSON", "{\"a\":\"$(1)\"}"), "\"\\\n\t\x01é|5|x",
           "{\"a\":\"\\\"\\\\\\n\\t\\u0001é\"}");
    addRow("CSV", escaped("CSV", "$(1),$(2),$(3)"), "a,\"b|5|x\ny", "\"a,\"\"b\",5,\"x\ny\"");
    addRow("SQL", escaped("SQL", "'$(1)'"), "O'Hara|5|x", "'O''Hara'");
}

void TestTransformSubstitute::substitutes()
{
    QFETCH(OptionTexts, options);
    QFETCH(QStringList, row);
    QFETCH(QString, expected);
    QFETCH(QStringList, warnings);
    const Dataset input = table(cells("Name|N|C"), {row, row});
    const auto transform = transformWith<TransformSubstitute>(options);
    const Dataset output = transform->execute({input});
    QCOMPARE(columnOf(output, 3), (QStringList{expected, expected}));
    QCOMPARE(output.selectColumns({ColIndex(0), ColIndex(1), ColIndex(2)}), input);
    QCOMPARE(transform->status(), QStringLiteral("1 column added"));
    QCOMPARE(transform->messages().warnings, warnings);
}

void TestTransformSubstitute::namesTheColumn_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("after");
    const auto t = [](const char *utf8) { return QString::fromUtf8(utf8); };
    QTest::newRow("typed") << t("A") << t("New") << t("A|New");
    QTest::newRow("empty") << t("A") << QString() << t("A|Substitute");
    QTest::newRow("in use") << t("A") << t("A") << t("A|A_2");
    QTest::newRow("no header") << QString() << t("New") << QString();
}

void TestTransformSubstitute::namesTheColumn()
{
    QFETCH(QString, before);
    QFETCH(QString, name);
    QFETCH(QString, after);
    const Dataset input =
        table(before.isEmpty() ? QStringList() : QStringList{before}, rowsOf("1;2"));
    const Dataset output = transformWith<TransformSubstitute>(
                               {{"Text", QStringLiteral("-$(Column 1)$(1)-")}, {"New_Name", name}})
                               ->execute({input});
    QCOMPARE(output.header().join(QLatin1Char('|')), after);
    QCOMPARE(columnOf(output, 1),
             before.isEmpty() ? cells("-11-|-22-") : cells("-$(Column 1)1-|-$(Column 1)2-"));
}

void TestTransformSubstitute::stops()
{
    const auto transform = transformWith<TransformSubstitute>({{"Text", QStringLiteral("$(1)")}});
    transform->setProgress([](double) { return false; });
    QVERIFY(!transform->execute({columnTable(QStringLiteral("A"), cells("1"))}).hasColumns());
    QVERIFY(transform->isStopped());
}

TW_TEST_CLASS(TestTransformSubstitute)
#include "tst_transformsubstitute.moc"
