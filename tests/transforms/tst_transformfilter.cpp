#include "transformfilter.h"

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

FilterTerm term(const char *column, Op op, const char *value)
{
    return {text(column), op, text(value)};
}

/// A filter with the given options, ready to run.
std::unique_ptr<TransformFilter> filterOf(const FilterSpec &spec, bool caseSensitive = true)
{
    auto filter = std::make_unique<TransformFilter>();
    filter->defineParameters({});
    filter->parameter(text("Columns"))->value = QVariant::fromValue(spec);
    filter->parameter(text("Case_Sensitive"))->value = caseSensitive;
    return filter;
}

} // namespace

class TestTransformFilter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void keepsTheRowsThatPass_data();
    void keepsTheRowsThatPass();
    void testsAnyColumn_data();
    void testsAnyColumn();
    void joinsTerms();
    void treatsEachColumnByItsDates();
    void readsManyRowsLikeFew();
    void doesNothingWhenDisabled();
    void needsOneInputAndItsOptions();
    void reportsProgressAndStops();
    void tellsOfInvalidRegex();
    void summarises();
};

void TestTransformFilter::initTestCase()
{
    TransformSettings::setCurrent({{text("d/M/yyyy"), text("M/d/yyyy"), text("yyyy-M-d")}});
}

void TestTransformFilter::keepsTheRowsThatPass_data()
{
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<FilterTerm>("tested");
    QTest::addColumn<bool>("keep");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("status");
    const auto addRow = [](const char *tag, const char *cells, const FilterTerm &tested,
                           const char *expected, const char *status, bool keep = true,
                           bool caseSensitive = true) {
        QTest::newRow(tag) << text(cells).split(QLatin1Char('|')) << tested << keep << caseSensitive
                           << text(expected).split(QLatin1Char('|')) << text(status);
    };
    const char *const prices = "9|10|11|abc|";
    addRow("numbers and words", prices, term("Col", Op::Greater, "10"), "11|abc", "3 rows removed");
    addRow("removing", prices, term("Col", Op::Greater, "10"), "9|10|", "2 rows removed", false);
    addRow("one row", prices, term("Col", Op::NotEqual, "abc"), "9|10|11|", "1 row removed");
    addRow("equal to empty", prices, term("Col", Op::Equal, ""), "", "4 rows removed");
    addRow("inactive", prices, term("", Op::Contains, ""), prices, "No changes");
    addRow("inactive, removing", prices, term("", Op::Contains, ""), prices, "No changes", false);
    addRow("inactive on a missing column", prices, term("None", Op::Greater, ""), prices,
           "No changes");
    addRow("case counts", "Smith|smith", term("Col", Op::Equal, "smith"), "smith", "1 row removed");
    addRow("case ignored", "Smith|Jones", term("Col", Op::Equal, "smith"), "Smith", "1 row removed",
           true, false);
    addRow("regex, case ignored", "Smith|Jones", term("Col", Op::MatchesRegex, "^sm"), "Smith",
           "1 row removed", true, false);
    addRow("white space counts", "a|a ", term("Col", Op::Equal, "a "), "a ", "1 row removed");
    addRow("dates", "31/01/2024|02/01/2025|n/a", term("Col", Op::Less, "01/02/2024"), "31/01/2024",
           "2 rows removed");
    addRow("dates with a stray word", "31/01/2024|soon|02/01/2025",
           term("Col", Op::Greater, "01/02/2024"), "soon|02/01/2025", "1 row removed");
    addRow("ISO dates", "2024-01-31|2024-2-1", term("Col", Op::Equal, "2024-02-01"), "2024-2-1",
           "1 row removed");
    addRow("variable by name", "1|2", term("Col", Op::Equal, "$(Col)"), "1|2", "No changes");
    addRow("unknown variable is plain text", "$(9)|2", term("Col", Op::Equal, "$(9)"), "$(9)",
           "1 row removed");
    addRow("regex from a variable", "a.c|a+", term("Col", Op::MatchesRegex, "^$(1)$"), "a.c",
           "1 row removed");
}

void TestTransformFilter::keepsTheRowsThatPass()
{
    QFETCH(QStringList, cells);
    QFETCH(FilterTerm, tested);
    QFETCH(bool, keep);
    QFETCH(bool, caseSensitive);
    QFETCH(QStringList, expected);
    QFETCH(QString, status);
    const Dataset input = columnTable(text("Col"), cells);
    const auto filter = filterOf({keep, true, {tested}}, caseSensitive);
    const Dataset output = filter->execute({input});
    QCOMPARE(columnOf(output, 0), expected);
    QCOMPARE(filter->status(), status);
    QCOMPARE(output.header(), input.header());
    QVERIFY(filter->messages().warnings.isEmpty());
}

void TestTransformFilter::testsAnyColumn_data()
{
    QTest::addColumn<FilterTerm>("tested");
    QTest::addColumn<QString>("expected");
    const auto addRow = [](const char *tag, const FilterTerm &tested, const char *expected) {
        QTest::newRow(tag) << tested << text(expected);
    };
    // Rows: (x, xy), (a, x), (a, b), each with its number.
    addRow("contains", term("", Op::Contains, "x"), "12");
    addRow("lacks in one", term("", Op::NotContains, "x"), "123");
    addRow("variables of the row", term("", Op::Equal, "$(B)"), "123");
    addRow("second column by its name", term("B", Op::StartsWith, "$(A)"), "1");
    addRow("missing column", term("C", Op::NotContains, "x"), "");
}

void TestTransformFilter::testsAnyColumn()
{
    QFETCH(FilterTerm, tested);
    QFETCH(QString, expected);
    const Dataset input =
        table({text("A"), text("B"), text("Row")}, {{text("x"), text("xy"), text("1")},
                                                    {text("a"), text("x"), text("2")},
                                                    {text("a"), text("b"), text("3")}});
    const Dataset output = filterOf({true, true, {tested}})->execute({input});
    QCOMPARE(columnOf(output, 2).join(QString()), expected);
    // Removing is the exact opposite.
    QCOMPARE(filterOf({false, true, {tested}})->execute({input}).rowCount(),
             input.rowCount() - output.rowCount());
}

void TestTransformFilter::joinsTerms()
{
    const Dataset input =
        table({text("N"), text("T")},
              {{text("1"), text("a")}, {text("2"), text("a")}, {text("3"), text("b")}});
    const FilterTerm big = term("N", Op::GreaterEqual, "2");
    const FilterTerm isA = term("T", Op::Equal, "a");
    const FilterTerm inactive = term("T", Op::Contains, "");
    const FilterTerm missing = term("X", Op::Equal, "a");
    const auto kept = [&input](bool all, const QList<FilterTerm> &terms) {
        return columnOf(filterOf({true, all, terms})->execute({input}), 0).join(QString());
    };
    QCOMPARE(kept(true, {big, isA}), text("2"));
    QCOMPARE(kept(false, {big, isA}), text("123"));
    QCOMPARE(kept(true, {inactive, big}), text("23"));
    QCOMPARE(kept(false, {inactive, big}), text("23"));
    QCOMPARE(kept(false, {missing, isA}), text("12"));
    QCOMPARE(kept(true, {missing, isA}), QString());
}

void TestTransformFilter::treatsEachColumnByItsDates()
{
    // The same cells are dates in one column, but day and month differ by what the column holds.
    const Dataset input = table({text("UK"), text("US"), text("Text")},
                                {{text("13/02/2024"), text("02/13/2024"), text("x")},
                                 {text("3/4/2024"), text("3/4/2024"), text("3/4/2024")}});
    const auto rows = [&input](const char *column, Op op) {
        return filterOf({true, true, {term(column, op, "3/4/2024")}})->execute({input}).rowCount();
    };
    QCOMPARE(rows("UK", Op::Less), 1);      // 13 February before 3 April
    QCOMPARE(rows("US", Op::Less), 1);      // 13 February before 4 March
    QCOMPARE(rows("Text", Op::Greater), 1); // "x" as text
    const Dataset output =
        filterOf({true, true, {term("", Op::Equal, "03/04/2024")}})->execute({input});
    QCOMPARE(output.rowCount(), 1);
}

void TestTransformFilter::readsManyRowsLikeFew()
{
    // Verdicts on repeated values are remembered: the result must be that of each row alone.
    std::mt19937 random(7);
    QList<QStringList> rows;
    for (int i = 0; i < 3000; ++i) {
        rows.append({QString::number(random() % 50), QString::number(random())});
    }
    const Dataset input = table({text("Few"), text("Many")}, rows);
    const FilterSpec spec{true,
                          false,
                          {term("Few", Op::Less, "9.5"), term("Many", Op::EndsWith, "7"),
                           term("Many", Op::StartsWith, "$(Few)")}};
    QStringList expected;
    for (const QStringList &row : std::as_const(rows)) {
        if (row[0].toDouble() < 9.5 || row[1].endsWith(QLatin1Char('7')) ||
            row[1].startsWith(row[0])) {
            expected.append(row[1]);
        }
    }
    const auto filter = filterOf(spec);
    const Dataset output = filter->execute({input});
    QCOMPARE(columnOf(output, 1), expected);
    // And so must the filter of a filtered table, whose rows are a selection already.
    const Dataset again = filterOf({true, true, {term("Few", Op::Less, "5")}})->execute({output});
    QVERIFY(again.rowCount() > 0);
    QCOMPARE(filterOf(spec)->execute({again}), again);
}

void TestTransformFilter::doesNothingWhenDisabled()
{
    const Dataset input = columnTable(text("A"), {text("1"), text("2")});
    const auto filter = filterOf({true, true, {term("A", Op::Equal, "1")}});
    filter->parameter(text("Disable"))->value = true;
    QCOMPARE(filter->execute({input}), input);
    QCOMPARE(filter->messages().warnings, QStringList{text("Filtering is disabled")});
    QCOMPARE(filter->status(), text("No changes"));
    QVERIFY(!filter->messages().failed);
}

void TestTransformFilter::needsOneInputAndItsOptions()
{
    const Dataset input = columnTable(text("A"), {text("1")});
    const auto filter = filterOf({});
    QVERIFY(!filter->execute({}).hasColumns());
    QVERIFY(!filter->execute({input, input}).hasColumns());
    QVERIFY(filter->status().isEmpty());
    const QList<TransformParameter *> all = filter->parameters();
    filter->setParameters({all[0], all[1]});
    QVERIFY(!filter->execute({input}).hasColumns());
    QCOMPARE(filter->status(), text("No changes"));
}

void TestTransformFilter::reportsProgressAndStops()
{
    QStringList cells;
    for (int i = 0; i < 2500; ++i) {
        cells.append(QString::number(i));
    }
    const Dataset input = columnTable(text("A"), cells);
    const auto filter = filterOf({true, true, {term("A", Op::Less, "5")}});
    QList<double> fractions;
    connect(filter.get(), &Transform::processed, this,
            [&fractions](double fraction) { fractions.append(fraction); });
    QCOMPARE(filter->execute({input}).rowCount(), 5);
    QCOMPARE(fractions, (QList<double>{0.0, 0.4, 0.8}));

    filter->setProgress([](double fraction) { return fraction < 0.4; });
    fractions.clear();
    QCOMPARE(filter->execute({input}).rowCount(), 0);
    QVERIFY(filter->isStopped());
    QCOMPARE(fractions.size(), 2);
    filter->resetRun();
    QVERIFY(!filter->isStopped());
}

void TestTransformFilter::tellsOfInvalidRegex()
{
    const Dataset input = columnTable(text("A"), {text("("), text("b")});
    const auto filter = filterOf({true, true, {term("A", Op::MatchesRegex, "(")}});
    QCOMPARE(filter->execute({input}).rowCount(), 0);
    QVERIFY(filter->messages().warnings.isEmpty());
    QCOMPARE(filter->messages().information.size(), 1);
    QVERIFY(filter->messages().information.first().contains(text("'('")));
}

void TestTransformFilter::summarises()
{
    QCOMPARE(filterOf({})->summary(), text("No filter terms"));
    const FilterTerm price = term("Price", Op::Greater, "10");
    const FilterTerm empty = term("", Op::IsEmpty, "ignored");
    const FilterTerm gone = term("Gone", Op::Equal, "1");
    FakeItem item({text("Price")});
    TransformFilter filter;
    filter.defineParameters({&item});
    filter.parameter(text("Columns"))->value =
        QVariant::fromValue(FilterSpec{false, false, {price, gone, empty}});
    QCOMPARE(filter.summary(), text("Remove (Price > '10') OR (<Any> ∅)"));

    QList<FilterTerm> many;
    for (int i = 0; i < 10; ++i) {
        many.append(term("A", Op::Equal, "x"));
    }
    const QString summary = filterOf({true, true, many})->summary();
    QCOMPARE(summary.count(text("(A = 'x')")), 9);
    QVERIFY(summary.startsWith(text("Keep (A = 'x') AND (A = 'x')")));
    QVERIFY(summary.endsWith(QChar(0x2026)));
    many.removeLast();
    QVERIFY(!filterOf({true, true, many})->summary().contains(QChar(0x2026)));
}

TW_TEST_CLASS(TestTransformFilter)
#include "tst_transformfilter.moc"
