#include "transformif.h"

#include "parametervalues.h"
#include "tables.h"
#include "testsupport.h"
#include "transformparameter.h"
#include "transformsettings.h"

#include <random>

using Op = ComparisonOperator;

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QStringList list(const char *cells)
{
    return text(cells).split(QLatin1Char('|'));
}

FilterTerm term(const char *column, Op op, const char *value)
{
    return {text(column), op, text(value)};
}

IfBranch branch(const FilterTerm &tested, const char *thenValue)
{
    return {{tested}, text(thenValue)};
}

/// An If with the given options, ready to run.
std::unique_ptr<TransformIf> ifOf(const IfSpec &spec, bool caseSensitive = true)
{
    auto transform = std::make_unique<TransformIf>();
    transform->defineParameters({});
    transform->parameter(text("If"))->value = QVariant::fromValue(spec);
    transform->parameter(text("Case_Sensitive"))->value = caseSensitive;
    return transform;
}

QString status(int matches, int others)
{
    return text("%1 match(es) IF/ELSE IF, %2 match(es) ELSE").arg(matches).arg(others);
}

} // namespace

class TestTransformIf : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void choosesValues_data();
    void choosesValues();
    void looksAtAnyColumn();
    void choosesForManyRowsAsForOne();
    void namesTheColumn_data();
    void namesTheColumn();
    void writesNothing_data();
    void writesNothing();
    void copiesNoCell();
    void needsOneInputAndItsOptions();
    void reportsProgressAndStops();
    void tellsOfInvalidRegex();
    void surviveSaving();
};

void TestTransformIf::initTestCase()
{
    TransformSettings::setCurrent({{text("d/M/yyyy"), text("M/d/yyyy")}});
}

void TestTransformIf::choosesValues_data()
{
    QTest::addColumn<QString>("cells");
    QTest::addColumn<IfSpec>("spec");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<int>("others");
    const auto addRow = [](const char *tag, const char *cells, const IfSpec &spec,
                           const char *expected, int others, bool caseSensitive = true) {
        QTest::newRow(tag) << text(cells) << spec << caseSensitive << text(expected) << others;
    };
    const IfSpec grades{{branch(term("Col", Op::GreaterEqual, "90"), "A"),
                         branch(term("Col", Op::GreaterEqual, "80"), "B")},
                        text("C")};
    addRow("grades", "95|85|70|n/a|", grades, "A|B|C|A|C", 2);
    addRow("empty value is tested", "x|", {{branch(term("Col", Op::Contains, ""), "T")}, {}}, "T|T",
           0);
    addRow("greater than nothing", "x|", {{branch(term("Col", Op::Greater, ""), "T")}, text("E")},
           "T|E", 1);
    addRow("a branch without terms", "x|y", {{{{}, text("T")}}, text("E")}, "E|E", 2);
    addRow("only ELSE", "x|y", {{}, text("E")}, "E|E", 2);
    addRow("all terms of a branch", "1|5|9",
           {{{{term("Col", Op::Greater, "2"), term("Col", Op::Less, "8")}, text("T")}}, text("E")},
           "E|T|E", 2);
    addRow("missing column", "x",
           {{branch(term("None", Op::NotContains, "y"), "T"),
             branch(term("Col", Op::Equal, "x"), "U")},
            {}},
           "U", 0);
    addRow("empty THEN ends the cascade", "1|2",
           {{branch(term("Col", Op::Equal, "1"), ""), branch(term("Col", Op::Less, "9"), "T")}, {}},
           "|T", 0);
    addRow("case counts", "Smith", {{branch(term("Col", Op::Equal, "smith"), "T")}, text("E")}, "E",
           1);
    addRow("case ignored", "Smith|Jones",
           {{branch(term("Col", Op::Equal, "smith"), "T")}, text("E")}, "T|E", 1, false);
    addRow("variables", "a|b",
           {{branch(term("Col", Op::Equal, "a"), "<$(1)>")}, text("$(Col)$(Col) $(If) $(2)")},
           "<a>|bb $(If) $(2)", 1);
    addRow("values are not expanded again", "$(1)", {{}, text("$(Col)")}, "$(1)", 1);
    addRow("variable in the test", "1|1",
           {{branch(term("Col", Op::Equal, "$(1)"), "same")}, text("E")}, "same|same", 0);
    addRow("dates", "31/01/2024|02/01/2025|soon",
           {{branch(term("Col", Op::Less, "01/02/2024"), "early")}, text("late")},
           "early|late|late", 2);
}

void TestTransformIf::choosesValues()
{
    QFETCH(QString, cells);
    QFETCH(IfSpec, spec);
    QFETCH(bool, caseSensitive);
    QFETCH(QString, expected);
    QFETCH(int, others);
    const QStringList values = cells.split(QLatin1Char('|'));
    const Dataset input = columnTable(text("Col"), values);
    const auto transform = ifOf(spec, caseSensitive);
    const Dataset output = transform->execute({input});
    QCOMPARE(columnOf(output, 1).join(QLatin1Char('|')), expected);
    QCOMPARE(columnOf(output, 0), values);
    QCOMPARE(output.header(), list("Col|If"));
    QCOMPARE(transform->status(), status(values.size() - others, others));
    QCOMPARE(input.columnCount(), ColIndex(1));
}

void TestTransformIf::looksAtAnyColumn()
{
    const Dataset input = table(list("A|B"), {list("x|y"), list("y|x"), list("y|y")});
    const auto chosen = [&input](Op op) {
        const IfSpec spec{{branch(term("", op, "x"), "$(B)$(A)")}, text("-")};
        return columnOf(ifOf(spec)->execute({input}), 2).join(QLatin1Char('|'));
    };
    QCOMPARE(chosen(Op::Contains), text("yx|xy|-"));
    QCOMPARE(chosen(Op::NotContains), text("yx|xy|yy"));
    // The new column is none of them.
    QCOMPARE(chosen(Op::IsEmpty), text("-|-|-"));
}

void TestTransformIf::choosesForManyRowsAsForOne()
{
    // Verdicts on repeated values are remembered: the result must be that of each row alone.
    std::mt19937 random(3);
    const IfSpec spec{
        {branch(term("Few", Op::Less, "5"), "few $(Many)"),
         branch(term("Many", Op::EndsWith, "$(Few)"), "end"),
         {{term("Few", Op::Greater, "20"), term("Many", Op::Contains, "7")}, text("seven")}},
        text("else $(Few)")};
    QList<QStringList> rows;
    for (int i = 0; i < 500; ++i) {
        rows.append({QString::number(random() % 40), QString::number(random() % 100000)});
    }
    const QStringList names = list("Few|Many");
    const Dataset output = ifOf(spec)->execute({table(names, rows)});
    QSet<QString> kinds;
    for (int i = 0; i < rows.size(); ++i) {
        const Dataset alone = ifOf(spec)->execute({table(names, {rows[i]})});
        const QString value = output.cell(RowIndex(i), ColIndex(2));
        QCOMPARE(value, alone.cell(RowIndex(0), ColIndex(2)));
        kinds.insert(value.section(QLatin1Char(' '), 0, 0));
    }
    QCOMPARE(kinds.size(), 4);
}

void TestTransformIf::namesTheColumn_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("after");
    QTest::newRow("a name") << text("Grade") << list("A") << list("A|Grade");
    QTest::newRow("a name in use") << text("A") << list("A") << list("A|A");
    QTest::newRow("no name") << QString() << list("A") << list("A|Column 2");
    QTest::newRow("no header") << text("Grade") << QStringList() << QStringList();
}

void TestTransformIf::namesTheColumn()
{
    QFETCH(QString, name);
    QFETCH(QStringList, before);
    QFETCH(QStringList, after);
    const auto transform = ifOf({{}, text("E")});
    transform->parameter(text("New_Name"))->value = name;
    const Dataset output = transform->execute({table(before, {list("1")})});
    QCOMPARE(output.header(), after);
    QCOMPARE(output.cell(RowIndex(0), ColIndex(1)), text("E"));
    transform->checkOptions();
    QCOMPARE(transform->messages().information, list("1 option not set"));
}

void TestTransformIf::writesNothing_data()
{
    QTest::addColumn<IfSpec>("spec");
    QTest::newRow("nothing set") << IfSpec();
    QTest::newRow("branches without values") << IfSpec{
        {branch(term("A", Op::Equal, "1"), ""), branch(term("A", Op::Equal, "2"), "")}, {}};
}

void TestTransformIf::writesNothing()
{
    QFETCH(IfSpec, spec);
    const auto transform = ifOf(spec);
    const Dataset output = transform->execute({columnTable(text("A"), list("1|2"))});
    QCOMPARE(output, table(list("A|If"), {{text("1"), QString()}, {text("2"), QString()}}));
    QCOMPARE(transform->status(), text("THEN and ELSE empty"));
}

void TestTransformIf::copiesNoCell()
{
    QStringList cells;
    for (int i = 0; i < 5000; ++i) {
        cells.append(QString::number(i));
    }
    const Dataset input = columnTable(text("A"), cells);
    const Dataset output =
        ifOf({{branch(term("A", Op::Less, "100"), "T")}, text("E")})->execute({input});
    QCOMPARE(columnOf(input, 0), cells);
    const size_t added = output.memoryUsed() - input.memoryUsed();
    QVERIFY2(added < 8192 * 4 + 2000, qPrintable(QString::number(added)));
}

void TestTransformIf::needsOneInputAndItsOptions()
{
    const Dataset input = columnTable(text("A"), list("1"));
    const auto transform = ifOf({{}, text("E")});
    QVERIFY(!transform->execute({}).hasColumns());
    QVERIFY(!transform->execute({input, input}).hasColumns());
    QVERIFY(transform->status().isEmpty());
    transform->setParameters(transform->parameters().mid(0, 2));
    QVERIFY(!transform->execute({input}).hasColumns());
    QCOMPARE(transform->status(), text("No changes"));
    const Dataset noRows = ifOf({{}, text("E")})->execute({table(list("A"), {})});
    QCOMPARE(noRows, table(list("A|If"), {}));
}

void TestTransformIf::reportsProgressAndStops()
{
    QStringList cells;
    for (int i = 0; i < 2500; ++i) {
        cells.append(QString::number(i));
    }
    const Dataset input = columnTable(text("A"), cells);
    const auto transform = ifOf({{}, text("E")});
    QList<double> fractions;
    connect(transform.get(), &Transform::processed, this,
            [&fractions](double fraction) { fractions.append(fraction); });
    QCOMPARE(transform->execute({input}).rowCount(), 2500);
    QCOMPARE(fractions, (QList<double>{0.0, 0.4, 0.8}));
    transform->setProgress([](double fraction) { return fraction < 0.4; });
    QVERIFY(!transform->execute({input}).hasColumns());
    QVERIFY(transform->isStopped());
}

void TestTransformIf::tellsOfInvalidRegex()
{
    const auto transform = ifOf({{branch(term("A", Op::MatchesRegex, "("), "T"),
                                  branch(term("A", Op::NotMatchesRegex, "("), "U")},
                                 text("E")});
    const Dataset output = transform->execute({columnTable(text("A"), list("(|b"))});
    QCOMPARE(columnOf(output, 1), list("U|U"));
    QVERIFY(transform->messages().warnings.isEmpty());
    QVERIFY(transform->messages().information.value(0).contains(text("'('")));
}

void TestTransformIf::surviveSaving()
{
    const IfSpec spec{{branch(term("A*B", Op::IsEmpty, ""), "*EndIf*"),
                       {{term("", Op::Equal, "a\x1F"), term("%1", Op::Less, "%1F")}, QString()}},
                      text("else")};
    const auto original = ifOf(spec, false);
    const auto loaded = ifOf({});
    const auto stored = original->storedParameters();
    for (const StoredParameter &each : stored) {
        QVERIFY(loaded->setStoredParameter(each));
    }
    QVERIFY(loaded->parameter(text("If"))->value.value<IfSpec>() == spec);
    QCOMPARE(loaded->storedParameters(), stored);
    QCOMPARE(loaded->summary(), text("If, 2 if/elseif + else"));
}

TW_TEST_CLASS(TestTransformIf)
#include "tst_transformif.moc"
