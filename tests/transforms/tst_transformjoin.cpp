#include "transformjoin.h"

#include "memoryceiling.h"
#include "parametervalues.h"
#include "tables.h"
#include "testsupport.h"
#include "transformparameter.h"

#include <random>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QStringList list(const char *cells)
{
    return text(cells).split(QLatin1Char('|'));
}

enum Flag : uint { Top = 1, Bottom = 2, AnyCase = 4, Report = 8, ByRow = 16 };

/// A join by the given columns, counted from 1; 0 for none.
std::unique_ptr<TransformJoin> joinOf(int topKey, int bottomKey, uint flags = 0)
{
    auto join = std::make_unique<TransformJoin>();
    join->defineParameters({});
    const auto set = [&join](const char *key, const QVariant &value) {
        join->parameter(text(key))->value = value;
    };
    set("By", text(flags & ByRow ? "Row number" : "Key"));
    set("Column_1", QVariant::fromValue(ColumnRef(topKey - 1)));
    set("Column_2", QVariant::fromValue(ColumnRef(bottomKey - 1)));
    set("Include_Non_Matching_1", (flags & Top) != 0);
    set("Include_Non_Matching_2", (flags & Bottom) != 0);
    set("Case_Sensitive", (flags & AnyCase) == 0);
    set("Detailed_Report", (flags & Report) != 0);
    return join;
}

QStringList rowOf(const Dataset &dataset, int row)
{
    QStringList cells;
    for (ColIndex column(0); column < dataset.columnCount(); ++column) {
        cells.append(dataset.cell(RowIndex(row), column));
    }
    return cells;
}

/// "A1-xB A2-yB": the cells of each row put together.
QString shown(const Dataset &dataset)
{
    QStringList rows;
    for (int row = 0; row < dataset.rowCount(); ++row) {
        rows.append(rowOf(dataset, row).join(QLatin1Char('-')));
    }
    return rows.join(QLatin1Char(' '));
}

/// Rows of a key and the number of the row.
Dataset keyTable(const char *name, const QStringList &keys)
{
    QList<QStringList> rows;
    for (int i = 0; i < keys.size(); ++i) {
        rows.append({keys[i], text(name) + QString::number(i + 1)});
    }
    return table({text("Key"), text(name)}, rows);
}

/// The join as nested loops, keys in the first columns of tables of two columns.
QList<QStringList> naiveJoin(const Dataset &top, const Dataset &bottom, uint flags)
{
    const auto key = [flags](const QStringList &row) {
        return flags & AnyCase ? row[0].toLower() : row[0];
    };
    QList<QStringList> result;
    QList<QStringList> topOnly;
    std::vector<bool> isMatched(size_t(bottom.rowCount()));
    for (int i = 0; i < top.rowCount(); ++i) {
        const QStringList row = rowOf(top, i);
        const int before = result.size();
        for (int k = 0; k < bottom.rowCount(); ++k) {
            if (key(row) == key(rowOf(bottom, k))) {
                result.append(row + rowOf(bottom, k));
                isMatched[size_t(k)] = true;
            }
        }
        if (result.size() == before) {
            topOnly.append(row + QStringList{row[0], QString()});
        }
    }
    if (flags & Top) {
        result += topOnly;
    }
    for (int k = 0; k < bottom.rowCount() && (flags & Bottom); ++k) {
        if (!isMatched[size_t(k)]) {
            const QStringList row = rowOf(bottom, k);
            result.append(QStringList{row[0], QString()} + row);
        }
    }
    return result;
}

} // namespace

class TestTransformJoin : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void joinsByKey_data();
    void joinsByKey();
    void agreesWithNestedLoops_data();
    void agreesWithNestedLoops();
    void joinsByRow_data();
    void joinsByRow();
    void reportsOnKeys();
    void keepsNames();
    void sharesAndKeepsTheInputs();
    void copiesTopWithoutKeys_data();
    void copiesTopWithoutKeys();
    void needsTwoInputsAndItsOptions();
    void refusesTooManyRows();
    void stops();
    void storesAndShowsItsOptions();
};

void TestTransformJoin::joinsByKey_data()
{
    QTest::addColumn<QString>("topKeys");
    QTest::addColumn<QString>("bottomKeys");
    QTest::addColumn<uint>("flags");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QStringList>("told");
    const auto addRow = [](const char *tag, const char *top, const char *bottom, uint flags,
                           const char *expected, const char *told) {
        QTest::newRow(tag) << text(top) << text(bottom) << flags << text(expected) << list(told);
    };
    const char *const pairs = "B-t2-B-b1 B-t3-B-b1 C-t4-C-b2 C-t4-C-b3";
    const char *const matched = "4 rows joined|3 rows used from 4 in top dataset|"
                                "3 rows used from 4 in bottom dataset";
    addRow("inner", "A|B|B|C", "B|C|C|D", 0, pairs, matched);
    addRow("left", "A|B|B|C", "B|C|C|D", Top, "B-t2-B-b1 B-t3-B-b1 C-t4-C-b2 C-t4-C-b3 A-t1-A-",
           "5 rows joined|4 rows used from 4 in top dataset|3 rows used from 4 in bottom dataset");
    addRow("right", "A|B|B|C", "B|C|C|D", Bottom, "B-t2-B-b1 B-t3-B-b1 C-t4-C-b2 C-t4-C-b3 D--D-b4",
           "5 rows joined|3 rows used from 4 in top dataset|4 rows used from 4 in bottom dataset");
    addRow("outer", "A|B|B|C", "D|B|C|C", Top | Bottom,
           "B-t2-B-b2 B-t3-B-b2 C-t4-C-b3 C-t4-C-b4 A-t1-A- D--D-b1",
           "6 rows joined|4 rows used from 4 in top dataset|4 rows used from 4 in bottom dataset");
    addRow("one row", "A", "A|B", 0, "A-t1-A-b1",
           "1 row joined|1 row used from 1 in top dataset|1 row used from 2 in bottom dataset");
    addRow("case ignored, spelling kept", "abc|x", "ABC|X|Y", AnyCase | Bottom,
           "abc-t1-ABC-b1 x-t2-X-b2 Y--Y-b3",
           "3 rows joined|2 rows used from 2 in top dataset|3 rows used from 3 in bottom dataset");
    addRow("case ignored, key of the other side as it stands", "Abc", "x", AnyCase | Top,
           "Abc-t1-Abc-",
           "1 row joined|1 row used from 1 in top dataset|0 rows used from 1 in bottom dataset");
    addRow("case ignored beyond ASCII", "ÉTÉ", "été", AnyCase, "ÉTÉ-t1-été-b1",
           "1 row joined|1 row used from 1 in top dataset|1 row used from 1 in bottom dataset");
    addRow("blanks and forms of numbers count", "B |1|01", "B|1.0|1", 0, "1-t2-1-b3",
           "1 row joined|1 row used from 3 in top dataset|1 row used from 3 in bottom dataset");
    addRow("empty keys are keys", "|a", "|b", 0, "-t1--b1",
           "1 row joined|1 row used from 2 in top dataset|1 row used from 2 in bottom dataset");
    addRow("nothing fits", "a", "b", 0, "",
           "0 rows joined|0 rows used from 1 in top dataset|0 rows used from 1 in bottom dataset");
}

void TestTransformJoin::joinsByKey()
{
    QFETCH(QString, topKeys);
    QFETCH(QString, bottomKeys);
    QFETCH(uint, flags);
    QFETCH(QString, expected);
    QFETCH(QStringList, told);
    const auto join = joinOf(1, 1, flags);
    const Dataset output = join->execute({keyTable("t", topKeys.split(QLatin1Char('|'))),
                                          keyTable("b", bottomKeys.split(QLatin1Char('|')))});
    QCOMPARE(shown(output), expected);
    QCOMPARE(output.header(), list("Key|t|Key|b"));
    QCOMPARE(join->status(), told[0]);
    QCOMPARE(join->messages().information, told.mid(1));
    QVERIFY(join->messages().warnings.isEmpty());
}

void TestTransformJoin::agreesWithNestedLoops_data()
{
    QTest::addColumn<uint>("flags");
    for (uint flags = 0; flags < 16; ++flags) {
        QTest::addRow("%u", flags) << flags;
    }
}

void TestTransformJoin::agreesWithNestedLoops()
{
    QFETCH(uint, flags);
    std::mt19937 random(flags);
    const auto randomKeys = [&random](int count, uint from, uint to) {
        const QStringList forms{text("k%1"), text("K%1"), text("É%1"), text("é%1"), text("%1 ")};
        QStringList keys;
        for (int i = 0; i < count; ++i) {
            const int form = int(random() % uint(forms.size()));
            keys.append(forms[form].arg(from + random() % (to - from)));
        }
        return keys;
    };
    for (int rows = 0; rows < 60; rows += 7) {
        Dataset top = keyTable("t", randomKeys(rows, 0, 12));
        const Dataset bottom = keyTable("b", randomKeys(60 - rows, 4, 16));
        const auto join = joinOf(1, 1, flags);
        const QList<QStringList> expected = naiveJoin(top, bottom, flags);
        const Dataset output = join->execute({top, bottom});
        QCOMPARE(output.rowCount(), expected.size());
        for (int row = 0; row < output.rowCount(); ++row) {
            QCOMPARE(rowOf(output, row), expected[row]);
        }
        // The result, whose rows are a selection already, can be joined again.
        const Dataset again = joinOf(1, 1, flags)->execute({output, bottom});
        QCOMPARE(again.rowCount(),
                 naiveJoin(output.selectColumns({ColIndex(0), ColIndex(1)}), bottom, flags).size());
    }
}

void TestTransformJoin::joinsByRow_data()
{
    QTest::addColumn<QString>("topKeys");
    QTest::addColumn<QString>("bottomKeys");
    QTest::addColumn<uint>("flags");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QStringList>("told");
    const auto addRow = [](const char *tag, const char *top, const char *bottom, uint flags,
                           const char *expected, const char *told) {
        QTest::newRow(tag) << text(top) << text(bottom) << (flags | ByRow) << text(expected)
                           << list(told);
    };
    addRow("longer top", "A|B", "C", 0, "A-t1-C-b1",
           "1 row joined|1 row used from 2 in top dataset|1 row used from 1 in bottom dataset");
    addRow("longer top, its rows", "A|B", "C", Top, "A-t1-C-b1 B-t2--",
           "2 rows joined|2 rows used from 2 in top dataset|1 row used from 1 in bottom dataset");
    addRow("longer top, bottom rows", "A|B", "C", Bottom, "A-t1-C-b1",
           "1 row joined|1 row used from 2 in top dataset|1 row used from 1 in bottom dataset");
    addRow("longer bottom", "A", "C|D", Top | Bottom, "A-t1-C-b1 --D-b2",
           "2 rows joined|1 row used from 1 in top dataset|2 rows used from 2 in bottom dataset");
}

void TestTransformJoin::joinsByRow()
{
    joinsByKey();
}

void TestTransformJoin::reportsOnKeys()
{
    const auto join = joinOf(1, 1, Report);
    join->execute({keyTable("t", list("A|B|B|C |\tE|A")), keyTable("b", list("B|C|D|D|B| x"))});
    QCOMPARE(join->messages().information,
             list("2 rows used from 6 in top dataset|2 rows used from 6 in bottom dataset|"
                  "4 rows have keys in both datasets|1 unique keys appear in both datasets|"
                  "3 top only|3 bottom only|"
                  "2 key(s) in more than one row of top dataset|"
                  "2 key(s) in more than one row of bottom dataset|"
                  "2 row(s) with leading or trailing whitespace in the key in top dataset|"
                  "1 row(s) with leading or trailing whitespace in the key in bottom dataset"));
}

void TestTransformJoin::keepsNames()
{
    const Dataset named = table({text("A"), text("B")}, {list("1|2")});
    const Dataset unnamed = table({}, {list("3|1")});
    const auto header = [](const Dataset &top, int topKey, const Dataset &bottom, int bottomKey) {
        const Dataset output = joinOf(topKey, bottomKey)->execute({top, bottom});
        return output.rowCount() == 1 ? output.header().join(QLatin1Char('|')) : text("no row");
    };
    QCOMPARE(header(named, 1, named, 1), text("A|B|A|B"));
    QCOMPARE(header(named, 1, unnamed, 2), text("A|B|Column 1|Column 2"));
    QCOMPARE(header(unnamed, 2, named, 1), text("Column 1|Column 2|A|B"));
    QCOMPARE(header(unnamed, 1, unnamed, 1), QString());
}

void TestTransformJoin::sharesAndKeepsTheInputs()
{
    QStringList keys;
    for (int i = 0; i < 3000; ++i) {
        keys.append(QString::number(i % 500));
    }
    const Dataset top = keyTable("t", keys);
    const Dataset bottom = keyTable("b", keys.mid(0, 500));
    const Dataset output = joinOf(1, 1)->execute({top, bottom});
    QCOMPARE(output.rowCount(), 3000);
    QCOMPARE(top, keyTable("t", keys));
    QCOMPARE(bottom, keyTable("b", keys.mid(0, 500)));
    // No cell is copied: all that is new are the bottom row numbers.
    QVERIFY(output.memoryUsed() < top.memoryUsed() + bottom.memoryUsed() + 3000 * 4 + 1000);
}

void TestTransformJoin::copiesTopWithoutKeys_data()
{
    QTest::addColumn<int>("topKey");
    QTest::addColumn<int>("bottomKey");
    QTest::newRow("no top key") << 0 << 1;
    QTest::newRow("no bottom key") << 1 << 0;
    QTest::newRow("beyond the top table") << 3 << 1;
    QTest::newRow("beyond the bottom table") << 1 << 3;
}

void TestTransformJoin::copiesTopWithoutKeys()
{
    QFETCH(int, topKey);
    QFETCH(int, bottomKey);
    const Dataset top = keyTable("t", list("A|B"));
    const auto join = joinOf(topKey, bottomKey, Top | Bottom);
    QCOMPARE(join->execute({top, keyTable("b", list("A"))}), top);
    QCOMPARE(join->status(), text("No changes"));
    QVERIFY(join->messages().information.isEmpty());
}

void TestTransformJoin::needsTwoInputsAndItsOptions()
{
    const Dataset top = keyTable("t", list("A|B"));
    const auto join = joinOf(1, 1);
    QVERIFY(!join->execute({}).hasColumns());
    QVERIFY(!join->execute({top, top, top}).hasColumns());
    QVERIFY(join->messages().warnings.isEmpty());
    QCOMPARE(join->execute({top}), top);
    QCOMPARE(join->messages().warnings, list("Connect a second dataset"));
    join->setParameters(join->parameters().mid(0, 6));
    QVERIFY(!join->execute({top, top}).hasColumns());
    QCOMPARE(join->status(), text("No changes"));
}

void TestTransformJoin::refusesTooManyRows()
{
    // Every row has the same key.
    const auto same = [](int rows) {
        Dataset dataset;
        dataset.setColumnCount(ColIndex(1));
        dataset.resize(rows, 1);
        return dataset;
    };
    const auto join = joinOf(1, 1);
    QVERIFY(!join->execute({same(100000), same(50000)}).hasColumns());
    QVERIFY(join->messages().failed);
    QVERIFY(join->messages().warnings.first().contains(text("5,000,000,000 rows")));

    const double limit = MemoryCeiling::limitGb();
    MemoryCeiling::setLimitGb(2.0);
    MemoryCeiling::pretendInUseGb(1.5);
    join->resetRun();
    QVERIFY(!join->execute({same(10000), same(10000)}).hasColumns());
    QVERIFY(join->messages().failed);
    const QString told = join->messages().warnings.first();
    QVERIFY2(told.contains(text("100,000,000 rows")) && told.contains(text("1.49 GB")) &&
                 told.contains(text("1.50 GB of at most 2.00 GB")),
             qPrintable(told));
    join->resetRun();
    QCOMPARE(join->execute({same(2000), same(1000)}).rowCount(), 2000000);
    QVERIFY(!join->messages().failed);
    MemoryCeiling::pretendInUseGb(-1);
    MemoryCeiling::setLimitGb(limit);
}

void TestTransformJoin::stops()
{
    QStringList keys;
    for (int i = 0; i < 2500; ++i) {
        keys.append(QString::number(i));
    }
    const Dataset top = keyTable("t", keys);
    const Dataset bottom = keyTable("b", keys.mid(1000) + list("x|y"));
    for (const uint flags : {uint(Top | Bottom), uint(ByRow)}) {
        const auto join = joinOf(1, 1, flags);
        int calls = 0;
        double last = 0;
        join->setProgress([&](double fraction) {
            ++calls;
            const bool grows = fraction >= last && fraction <= 1;
            last = fraction;
            return grows;
        });
        QVERIFY(join->execute({top, bottom}).hasRows());
        const int all = calls;
        for (int stopAt = 1; stopAt <= all; ++stopAt) {
            calls = 0;
            join->resetRun();
            join->setProgress([&calls, stopAt](double) { return ++calls < stopAt; });
            QVERIFY(!join->execute({top, bottom}).hasColumns());
            QVERIFY(join->isStopped());
            QCOMPARE(calls, stopAt);
        }
    }
}

void TestTransformJoin::storesAndShowsItsOptions()
{
    const auto join = joinOf(0, 0, ByRow);
    QCOMPARE(join->storedParameters().first().value, text("1"));
    join->checkOptions();
    QVERIFY(join->messages().information.isEmpty());
    QVERIFY(!join->isParameterShown(*join->parameter(text("Column_1"))));
    QVERIFY(join->isParameterShown(*join->parameter(text("Include_Non_Matching_1"))));
    QVERIFY(join->setStoredParameter({text("By"), 6, text("0"), {}}));
    QVERIFY(join->isParameterShown(*join->parameter(text("Column_1"))));
    join->checkOptions();
    QCOMPARE(join->messages().information, list("2 options not set"));

    // Each key column follows its own input.
    FakeItem top(list("A|B"));
    FakeItem bottom(list("B|C"));
    TransformJoin bound;
    bound.defineParameters({&top, &bottom});
    QCOMPARE(bound.parameterForInput(&top), bound.parameter(text("Column_1")));
    QCOMPARE(bound.parameterForInput(&bottom), bound.parameter(text("Column_2")));
}

TW_TEST_CLASS(TestTransformJoin)
#include "tst_transformjoin.moc"
