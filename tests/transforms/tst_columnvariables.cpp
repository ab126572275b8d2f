#include "columnvariables.h"
#include "tables.h"
#include "testsupport.h"

class TestColumnVariables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void expandsAgainstTheRow_data();
    void expandsAgainstTheRow();
    void namesColumnsByNumberWithoutAHeader();
};

void TestColumnVariables::expandsAgainstTheRow_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto addRow = [](const char *tag, const QString &text, const QString &expected) {
        QTest::newRow(tag) << text << expected;
    };
    // Columns: Name, Price (EUR), 2024, Name, Code.
    addRow("empty", QString(), QString());
    addRow("no variable", QStringLiteral("5 $ (net)"), QStringLiteral("5 $ (net)"));
    addRow("by number", QStringLiteral("<$(1)>"), QStringLiteral("<Ann>"));
    addRow("by name", QStringLiteral("$(Code)"), QStringLiteral("$(1)"));
    addRow("several", QStringLiteral("$(1)$(1)-$(3)"), QStringLiteral("AnnAnn-x"));
    addRow("first of a repeated name", QStringLiteral("$(Name)"), QStringLiteral("Ann"));
    addRow("name with brackets", QStringLiteral("$(Price (EUR))!"), QStringLiteral("9.50!"));
    addRow("number beyond the columns that is a name", QStringLiteral("$(2024)"),
           QStringLiteral("x"));
    addRow("expanded values are not expanded again", QStringLiteral("$(5)"),
           QStringLiteral("$(1)"));
    addRow("dollar before a variable", QStringLiteral("$$(2)"), QStringLiteral("$9.50"));
    addRow("nothing such", QStringLiteral("$(9) $(name)"), QStringLiteral("$(9) $(name)"));
    addRow("zero", QStringLiteral("$(0)"), QStringLiteral("$(0)"));
    addRow("sign", QStringLiteral("$(+1) $(-1)"), QStringLiteral("$(+1) $(-1)"));
    addRow("empty variable", QStringLiteral("$()"), QStringLiteral("$()"));
    addRow("unclosed", QStringLiteral("$(1"), QStringLiteral("$(1"));
    addRow("unclosed before a variable", QStringLiteral("$(x$(1)"), QStringLiteral("$(xAnn"));
    addRow("inside another", QStringLiteral("$($(1))"), QStringLiteral("$(Ann)"));
    addRow("too large a number", QStringLiteral("$(99999999999999)"),
           QStringLiteral("$(99999999999999)"));
}

void TestColumnVariables::expandsAgainstTheRow()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    const Dataset data =
        table({QStringLiteral("Name"), QStringLiteral("Price (EUR)"), QStringLiteral("2024"),
               QStringLiteral("Name"), QStringLiteral("Code")},
              {{QStringLiteral("other"), {}, {}, {}, {}},
               {QStringLiteral("Ann"), QStringLiteral("9.50"), QStringLiteral("x"),
                QStringLiteral("second"), QStringLiteral("$(1)")}});
    const ColumnTemplate compiled(text, data);
    QCOMPARE(compiled.expanded(1), expected);
    if (!compiled.hasVariables()) {
        QCOMPARE(expected, text);
    }
}

void TestColumnVariables::namesColumnsByNumberWithoutAHeader()
{
    const Dataset data = table({}, {{QStringLiteral("a"), QStringLiteral("b")}});
    QCOMPARE(ColumnTemplate(QStringLiteral("$(Column 2)$(1)"), data).expanded(0),
             QStringLiteral("ba"));
    QCOMPARE(ColumnTemplate(ColumnTemplate::variable(ColIndex(1)), data).expanded(0),
             QStringLiteral("b"));
}

TW_TEST_CLASS(TestColumnVariables)
#include "tst_columnvariables.moc"
