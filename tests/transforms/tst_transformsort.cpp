#include "transformsort.h"

#include "parametervalues.h"
#include "rowsorter.h"
#include "tables.h"
#include "testsupport.h"
#include "transformparameter.h"
#include "transformsettings.h"
#include "valueinterpretation.h"

#include <QCollator>
#include <algorithm>
#include <random>

Q_DECLARE_METATYPE(SortRules)

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QStringList list(const char *cells)
{
    return text(cells).split(QLatin1Char('|'));
}

/// "1,-2": by the first column, then by the second from its greatest.
std::unique_ptr<TransformSort> sortOf(const char *columns)
{
    QList<SortKey> keys;
    const QStringList numbers = text(columns).split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString &number : numbers) {
        keys.append({ColumnRef(std::abs(number.toInt()) - 1), number.toInt() > 0});
    }
    auto sort = std::make_unique<TransformSort>();
    sort->defineParameters({});
    sort->parameter(text("Columns"))->value = QVariant::fromValue(keys);
    return sort;
}

void set(TransformSort *sort, const char *key, const QVariant &value)
{
    sort->parameter(text(key))->value = value;
}

void setRules(TransformSort *sort, const SortRules &rules)
{
    set(sort, "Intelligent_Sort", rules.intelligent);
    set(sort, "Locale_Aware_Sort", rules.texts.localeAware);
    set(sort, "Case_Sensitive", rules.texts.caseSensitive);
}

template <class T>
int sign(const T &a, const T &b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}

/// The order of two cells, worked out anew for the pair.
class PairOrder
{
public:
    PairOrder(const SortRules &rules, const QString &pattern, bool isNumeric)
        : m_rules(rules)
        , m_pattern(pattern)
        , m_isNumeric(isNumeric)
    {
        m_collator.setCaseSensitivity(sensitivity());
    }

    int compare(const QString &a, const QString &b) const
    {
        const QDate x = toDate(QStringView(a), m_pattern);
        const QDate y = toDate(QStringView(b), m_pattern);
        if (m_rules.intelligent && !m_pattern.isEmpty() && x.isValid() && y.isValid()) {
            return sign(x, y);
        }
        bool aIsNumber = false;
        bool bIsNumber = false;
        const double i = toReal(QStringView(a), false, false, &aIsNumber);
        const double k = toReal(QStringView(b), false, false, &bIsNumber);
        if (m_rules.intelligent && m_isNumeric && aIsNumber && bIsNumber) {
            return sign(i, k);
        }
        return m_rules.texts.localeAware ? m_collator.compare(a, b) : a.compare(b, sensitivity());
    }

private:
    Qt::CaseSensitivity sensitivity() const
    {
        return m_rules.texts.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    }

    SortRules m_rules;
    QString m_pattern;
    bool m_isNumeric;
    QCollator m_collator;
};

const QStringList &patterns()
{
    static const QStringList list{text("d/M/yyyy"), text("yyyy-M-d")};
    return list;
}

/// Cells of which some kinds may meet in one column.
QStringList randomCells(const QString &kinds, int count, std::mt19937 *random)
{
    const QStringList words = list("|a|A|b|Ab|aB|é|É|e|ab |\t|ß|ss|Straße|\uE000|\U0001F600|"
                                   "\U00010428|\U00010400|ORD-2|ORD-10|ord-10|ORD-1|z|Z|ä|nan");
    QStringList cells;
    for (int i = 0; i < count; ++i) {
        const uint number = (*random)();
        const QChar kind = kinds[int(number % uint(kinds.size()))];
        if (kind == QLatin1Char('n')) {
            cells.append(number % 3 ? QString::number(int(number >> 8) % 300 - 150)
                                    : QString::number((number >> 8) % 99) + text(".50"));
        } else if (kind == QLatin1Char('d')) {
            const QDate date = QDate(2024, 1, 1).addDays(int(number >> 8) % 400);
            cells.append(date.toString(text(number % 2 ? "d/M/yyyy" : "dd/MM/yyyy")));
        } else if (kind == QLatin1Char('x')) {
            cells.append(QString::number((number >> 8) % 120) + text("x"));
        } else {
            cells.append(kind == QLatin1Char('t') ? words[int(number >> 8) % words.size()]
                                                  : QString());
        }
    }
    return cells;
}

} // namespace

class TestTransformSort : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void sortsCells_data();
    void sortsCells();
    void decidesOnNumbersByTheFirstRows();
    void sortsByLevels_data();
    void sortsByLevels();
    void agreesWithPairs_data();
    void agreesWithPairs();
    void survivesContradictions();
    void ranks_data();
    void ranks();
    void ranksByColumn();
    void ranksWithoutLevels();
    void sharesAndKeepsTheInput();
    void stops();
    void needsOneInputAndItsOptions();
    void showsRankOptions();
};

void TestTransformSort::initTestCase()
{
    TransformSettings::setCurrent({patterns()});
}

void TestTransformSort::sortsCells_data()
{
    QTest::addColumn<QString>("cells");
    QTest::addColumn<SortRules>("rules");
    QTest::addColumn<QString>("expected");
    const auto addRow = [](const char *tag, const char *cells, const char *expected,
                           const SortRules &rules = {}) {
        QTest::newRow(tag) << text(cells) << rules << text(expected);
    };
    const SortRules asText{false, {true, false}, {}};
    const SortRules anyCase{true, {false, false}, {}};
    const SortRules collated{true, {true, true}, {}};
    addRow("numbers and empty", "10|9|", "|9|10");
    addRow("the same as text", "10|9|", "|10|9", asText);
    addRow("a word makes text", "n/a|9|10", "10|9|n/a");
    addRow("NaN does not", "NaN|10|9", "9|10|NaN");
    addRow("forms of numbers", "1,000|1e2|+5|-3| 7 ", "-3|+5| 7 |1e2|1,000");
    addRow("dates", "02/01/2025|31/01/2024|1/2/2024", "31/01/2024|1/2/2024|02/01/2025");
    addRow("dates as text", "02/01/2025|31/01/2024|1/2/2024", "02/01/2025|1/2/2024|31/01/2024",
           asText);
    addRow("dates and empty", "2/1/2025||31/1/2024", "|31/1/2024|2/1/2025");
    addRow("code units", "b|a|B|\uFF21|\U0001F600|é", "B|a|b|é|\U0001F600|\uFF21");
    addRow("case ignored", "b|A|C", "A|b|C", anyCase);
    addRow("collated", "z|é|f|E|e", "e|E|é|f|z", collated);
    addRow("prefixes", "ab|a|abc|", "|a|ab|abc");
    addRow("long common start", "order-000012|order-000002|order-0000020|order-",
           "order-|order-000002|order-0000020|order-000012");
}

void TestTransformSort::sortsCells()
{
    QFETCH(QString, cells);
    QFETCH(SortRules, rules);
    QFETCH(QString, expected);
    const auto sort = sortOf("1");
    setRules(sort.get(), rules);
    const Dataset input = columnTable(text("A"), cells.split(QLatin1Char('|')));
    const Dataset output = sort->execute({input});
    QCOMPARE(columnOf(output, 0).join(QLatin1Char('|')), expected);
    QCOMPARE(output.header(), input.header());
    QCOMPARE(sort->status(), text("Sorted"));
    QCOMPARE(sort->execute({output}), output);
    QCOMPARE(sort->status(), text("No changes"));

    const auto backwards = sortOf("-1");
    setRules(backwards.get(), rules);
    QStringList reversed = columnOf(backwards->execute({input}), 0);
    std::reverse(reversed.begin(), reversed.end());
    QCOMPARE(reversed.join(QLatin1Char('|')), expected);
}

void TestTransformSort::decidesOnNumbersByTheFirstRows()
{
    QStringList cells;
    for (int i = 0; i < 99; ++i) {
        cells.append(QString::number(120 - i));
    }
    const QStringList word{text("n/a")};
    const QStringList last{text("9")};
    const auto sorted = [](const QStringList &values) {
        return columnOf(sortOf("1")->execute({columnTable(text("A"), values)}), 0);
    };
    // Row 100 still makes the column one of texts; row 101 does not.
    QCOMPARE(sorted(cells + word + last).mid(0, 2), list("100|101"));
    QCOMPARE(sorted(cells + last + word).mid(0, 2), list("9|22"));
    QCOMPARE(sorted(cells + last + word).last(), text("n/a"));
    QCOMPARE(sorted({text("NaN"), QString(), text("x")}),
             (QStringList{{}, text("NaN"), text("x")}));
}

void TestTransformSort::sortsByLevels_data()
{
    QTest::addColumn<QString>("levels");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("status");
    const auto addRow = [](const char *tag, const char *levels, const char *expected,
                           bool caseSensitive = true, const char *status = "Sorted") {
        QTest::newRow(tag) << text(levels) << caseSensitive << text(expected) << text(status);
    };
    addRow("first descending", "-1,2", "c|b|a|d");
    addRow("second decides ties", "1,-2", "d|a|b|c");
    addRow("case ignored, second decides", "3,2", "c|d|b|a", false);
    addRow("case counts", "3,2", "d|c|b|a");
    addRow("missing column", "9,-1,2", "c|b|a|d");
    addRow("only missing columns", "9,0", "a|b|c|d", true, "No changes");
    addRow("no level", "", "a|b|c|d", true, "No changes");
    addRow("in order already", "4", "a|b|c|d", true, "No changes");
}

void TestTransformSort::sortsByLevels()
{
    QFETCH(QString, levels);
    QFETCH(bool, caseSensitive);
    QFETCH(QString, expected);
    QFETCH(QString, status);
    const Dataset input =
        table({text("N"), text("M"), text("T"), text("Row")},
              {list("2|9|pear|a"), list("2|8|apple|b"), list("10|3|apple|c"), list("1|4|Apple|d")});
    const auto sort = sortOf(qPrintable(levels));
    set(sort.get(), "Case_Sensitive", caseSensitive);
    QCOMPARE(columnOf(sort->execute({input}), 3).join(QLatin1Char('|')), expected);
    QCOMPARE(sort->status(), status);
}

void TestTransformSort::agreesWithPairs_data()
{
    QTest::addColumn<QString>("kinds");
    QTest::addColumn<SortRules>("rules");
    QTest::addColumn<int>("rows");
    // Letters: t text, n number, d date, e empty. Each mix has an order without contradictions.
    const QStringList mixes{text("t"), text("n"), text("d"), text("nnne"), text("dde"), text("tn")};
    for (const QString &kinds : mixes) {
        for (int flags = 0; flags < 8; ++flags) {
            const SortRules rules{(flags & 1) != 0, {(flags & 2) != 0, (flags & 4) != 0}, {}};
            QTest::addRow("%s %d", qPrintable(kinds), flags) << kinds << rules << 400;
        }
    }
    QTest::newRow("several runs") << text("nnne") << SortRules() << 140000;
}

void TestTransformSort::agreesWithPairs()
{
    QFETCH(QString, kinds);
    QFETCH(SortRules, rules);
    QFETCH(int, rows);
    std::mt19937 random(uint(kinds.size() + rows));
    // A mix of texts and numbers is a column of texts when a text is among the first cells.
    const QString first = kinds == text("tn") ? text("z") : QString();
    QStringList columns[2];
    for (QStringList &column : columns) {
        column = QStringList{first} + randomCells(kinds, rows, &random);
    }
    QList<QStringList> cells;
    for (int i = 0; i <= rows; ++i) {
        cells.append({columns[0][i], columns[1][i], QString::number(i)});
    }
    const auto sort = sortOf("1,-2");
    setRules(sort.get(), rules);
    const Dataset output = sort->execute({table({text("A"), text("B"), text("I")}, cells)});

    const bool hasDates = kinds.contains(QLatin1Char('d'));
    const bool isNumeric = kinds.startsWith(QLatin1Char('n'));
    const PairOrder order(rules, hasDates ? patterns().first() : QString(), isNumeric);
    std::vector<bool> seen(cells.size());
    QStringList before;
    for (RowIndex row(0); row.value() < output.rowCount(); ++row) {
        const QStringList now{output.cell(row, ColIndex(0)), output.cell(row, ColIndex(1))};
        const int number = output.cell(row, ColIndex(2)).toInt();
        QVERIFY(!seen[size_t(number)]);
        seen[size_t(number)] = true;
        QCOMPARE(now, cells[number].mid(0, 2));
        if (!before.isEmpty()) {
            const int byFirst = order.compare(before[0], now[0]);
            QVERIFY2(byFirst < 0 || (byFirst == 0 && order.compare(before[1], now[1]) >= 0),
                     qPrintable(before.join(text("; ")) + text(" before ") + now.join(text("; "))));
        }
        before = now;
    }
    QCOMPARE(output.rowCount(), cells.size());
}

void TestTransformSort::survivesContradictions()
{
    std::mt19937 random(11);
    for (const int rows : {3, 40, 500, 70000}) {
        // Numbers, dates, 10x and words in one column, numeric by its first hundred rows.
        const QStringList cells =
            randomCells(text("n"), 100, &random) + randomCells(text("ndxxtne"), rows, &random);
        const auto sort = sortOf("1");
        QStringList sorted = columnOf(sort->execute({columnTable(text("A"), cells)}), 0);
        QStringList expected = cells;
        std::sort(sorted.begin(), sorted.end());
        std::sort(expected.begin(), expected.end());
        QCOMPARE(sorted, expected);
    }
}

void TestTransformSort::ranks_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("cells");
    QTest::addColumn<QString>("expected");
    const auto addRow = [](const char *type, const char *expected, const char *cells = "7|9|5|7") {
        QTest::addRow("%s of %s", type, cells) << text(type) << text(cells) << text(expected);
    };
    addRow("Minimum", "1|2|2|4");
    addRow("Average", "1|2.5|2.5|4");
    addRow("Maximum", "1|3|3|4");
    addRow("Dense", "1|2|2|3");
    addRow("Cumulative", "0.25|0.75|0.75|1");
    addRow("Cumulative", "0.333333333333333|0.666666666666667|1", "a|b|c");
    addRow("Minimum", "1|1|3", "7.0|7|9");
    addRow("Average", "1", "7");
    addRow("No such type", "1|2|2|4");
}

void TestTransformSort::ranks()
{
    QFETCH(QString, type);
    QFETCH(QString, cells);
    QFETCH(QString, expected);
    const auto sort = sortOf("1");
    set(sort.get(), "Rank_Add", true);
    set(sort.get(), "Rank_Types", type);
    // A second column of the name is no obstacle.
    const Dataset output =
        sort->execute({columnTable(text("Rank"), cells.split(QLatin1Char('|')))});
    QCOMPARE(output.header(), list("Rank|Rank"));
    QCOMPARE(columnOf(output, 1).join(QLatin1Char('|')), expected);
    QCOMPARE(sort->status(), text("Sorted"));
}

void TestTransformSort::ranksByColumn()
{
    const Dataset input =
        table({text("Team"), text("Points")}, {list("b|3"), list("a|5"), list("a|7"), list("b|3"),
                                               list("a|5"), list("b|1"), list("B|3")});
    const auto ranked = [&input](const char *levels, const char *type) {
        const auto sort = sortOf(levels);
        set(sort.get(), "Rank_Add", true);
        set(sort.get(), "Rank_Types", text(type));
        set(sort.get(), "Rank_By", QVariant::fromValue(ColumnRef(0)));
        const Dataset output = sort->execute({input});
        QStringList rows;
        for (RowIndex row(0); row.value() < output.rowCount(); ++row) {
            rows.append(output.cell(row, ColIndex(0)) + output.cell(row, ColIndex(1)) +
                        QLatin1Char('=') + output.cell(row, ColIndex(2)));
        }
        std::sort(rows.begin(), rows.end()); // rows that tie come in any order
        return rows.join(QLatin1Char(' '));
    };
    QCOMPARE(ranked("-2", "Minimum"), text("B3=1 a5=2 a5=2 a7=1 b1=3 b3=1 b3=1"));
    QCOMPARE(ranked("2", "Average"), text("B3=1 a5=1.5 a5=1.5 a7=3 b1=1 b3=2.5 b3=2.5"));
    QCOMPARE(ranked("2", "Dense"), text("B3=1 a5=1 a5=1 a7=2 b1=1 b3=2 b3=2"));
    QCOMPARE(ranked("1,2", "Cumulative"),
             text("B3=1 a5=0.666666666666667 a5=0.666666666666667 a7=1 b1=0.333333333333333 "
                  "b3=1 b3=1"));
}

void TestTransformSort::ranksWithoutLevels()
{
    const Dataset input = columnTable(text("A"), list("2|1"));
    const auto sort = sortOf("");
    set(sort.get(), "Rank_Add", true);
    const Dataset output = sort->execute({input});
    QCOMPARE(output.header(), list("A|Rank"));
    QCOMPARE(columnOf(output, 0), list("2|1"));
    QCOMPARE(columnOf(output, 1), (QStringList{QString(), QString()}));
    QCOMPARE(sort->status(), text("No changes"));
    const Dataset noRows = sortOf("1")->execute({table({text("A")}, {})});
    QCOMPARE(noRows.header(), list("A"));
}

void TestTransformSort::sharesAndKeepsTheInput()
{
    QStringList cells;
    for (int i = 0; i < 5000; ++i) {
        cells.append(QString::number((i * 7919) % 5000));
    }
    const Dataset input = columnTable(text("A"), cells);
    const Dataset output = sortOf("1")->execute({input});
    QCOMPARE(columnOf(input, 0), cells);
    QCOMPARE(output.cell(RowIndex(4999), ColIndex(0)), text("4999"));
    // Only the 4 bytes a row of the new order.
    QCOMPARE(output.memoryUsed() - input.memoryUsed(), size_t(5000 * 4));
    // A table whose rows are a selection already sorts like any other.
    const Dataset again = sortOf("-1")->execute({output});
    QCOMPARE(again.cell(RowIndex(0), ColIndex(0)), text("4999"));
    QCOMPARE(sortOf("1")->execute({again}), output);
}

void TestTransformSort::stops()
{
    QStringList cells;
    for (int i = 0; i < 3000; ++i) {
        cells.append(QString::number(3000 - i));
    }
    const Dataset input = columnTable(text("A"), cells);
    const auto sort = sortOf("1");
    set(sort.get(), "Rank_Add", true);
    int calls = 0;
    double last = 0;
    sort->setProgress([&](double fraction) {
        ++calls;
        const bool grows = fraction >= last && fraction <= 1;
        last = fraction;
        return grows;
    });
    QCOMPARE(sort->execute({input}).rowCount(), 3000);
    const int all = calls;
    QVERIFY(all > 5);
    for (int stopAt = 1; stopAt <= all; ++stopAt) {
        calls = 0;
        sort->resetRun();
        sort->setProgress([&calls, stopAt](double) { return ++calls < stopAt; });
        QVERIFY(!sort->execute({input}).hasColumns());
        QVERIFY(sort->isStopped());
        QCOMPARE(calls, stopAt);
    }
}

void TestTransformSort::needsOneInputAndItsOptions()
{
    const Dataset input = columnTable(text("A"), list("2|1"));
    const auto sort = sortOf("1");
    QVERIFY(!sort->execute({}).hasColumns());
    QVERIFY(!sort->execute({input, input}).hasColumns());
    sort->setParameters(sort->parameters().mid(0, 6));
    QVERIFY(!sort->execute({input}).hasColumns());
    QCOMPARE(sort->status(), text("No changes"));
}

void TestTransformSort::showsRankOptions()
{
    const auto sort = sortOf("");
    const auto unset = [&sort] {
        sort->resetRun();
        sort->checkOptions();
        return sort->messages().information.join(QLatin1Char('|'));
    };
    QCOMPARE(unset(), text("1 option not set"));
    QVERIFY(!sort->isParameterShown(*sort->parameter(text("Rank_Types"))));
    set(sort.get(), "Rank_Add", true);
    QVERIFY(sort->isParameterShown(*sort->parameter(text("Rank_By"))));
    QCOMPARE(unset(), text("1 option not set"));
    set(sort.get(), "Columns", QVariant::fromValue(QList<SortKey>{{ColumnRef(0), true}}));
    QCOMPARE(unset(), QString());
    QVERIFY(sort->parameter(text("Rank_Types"))
                ->help.endsWith(text("Maximum: Maximum rank of each group\nDense: No gaps between "
                                     "groups.\nCumulative: Proportion of rows with the same or "
                                     "lower numbered rank.\n")));
    QVERIFY(sort->parameter(text("Rank_By"))->help.contains(text("Leave as <None selected> if")));
}

TW_TEST_CLASS(TestTransformSort)
#include "tst_transformsort.moc"
