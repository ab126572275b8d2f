#include "dataset.h"
#include "tablebuilder.h"
#include "testsupport.h"

#include <QRandomGenerator>
#include <vector>

namespace {

using Rows = QList<QStringList>;

Dataset tableOf(const Rows &rows)
{
    TableBuilder builder;
    for (const QStringList &row : rows) {
        std::vector<std::string> bytes;
        for (const QString &value : row) {
            bytes.push_back(value.toStdString());
        }
        const std::vector<std::string_view> views(bytes.begin(), bytes.end());
        builder.appendRow(views.data(), int(views.size()));
    }
    return builder.take();
}

Rows rowsOf(const Dataset &dataset)
{
    Rows rows;
    for (RowIndex row(0); row.value() < dataset.rowCount(); ++row) {
        QStringList values;
        for (ColIndex column(0); column < dataset.columnCount(); ++column) {
            values.append(dataset.cell(row, column));
        }
        rows.append(values);
    }
    return rows;
}

bool sharesStorage(const QString &a, const QString &b)
{
    return a.constData() == b.constData();
}

} // namespace

class TestDataset : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { ValuePool::setPoolingEnabled(true); }

    void headerOnWithoutRowsChangesOnlyTheFlag()
    {
        Dataset dataset;
        dataset.setColumnCount(ColIndex(2));
        dataset.setHasHeader(true);
        QVERIFY(dataset.hasHeader());
        QVERIFY(dataset.header().isEmpty());
        dataset.setHasHeader(false);
        QCOMPARE(dataset.rowCount(), 0);
    }

    void headerOffAndOnGivesTheTableBack()
    {
        Dataset dataset = tableOf({{"1", "x"}, {"2", ""}});
        dataset.setHeader({"id", ""});
        const Dataset before = dataset;
        dataset.setHasHeader(false);
        QCOMPARE(rowsOf(dataset), (Rows{{"id", ""}, {"1", "x"}, {"2", ""}}));
        QVERIFY(dataset.header().isEmpty());
        dataset.setHasHeader(true);
        QVERIFY(dataset == before);
        QCOMPARE(dataset.header(), (QStringList{"id", ""}));
        dataset.setHeader({});
        QVERIFY(!dataset.hasHeader());
        QCOMPARE(dataset.columnName(ColIndex(1)), QStringLiteral("Column 2"));
    }

    void stacksRowsOfSeveralTables_data()
    {
        QTest::addColumn<bool>("pooled");
        QTest::newRow("pooled") << true;
        QTest::newRow("unpooled") << false;
    }
    void stacksRowsOfSeveralTables()
    {
        QFETCH(bool, pooled);
        ValuePool::setPoolingEnabled(pooled);
        const Dataset first = tableOf({{"a", "1"}, {"b", "2"}, {"a", ""}});
        const Dataset second = tableOf({{"b", "x"}, {"c", "y"}});
        const Dataset firstBefore = first;
        // Taken rows and a table that has the first one's pools.
        const Dataset third = first.selectRows({1, -1, 0});
        const ColIndex none;
        const std::vector<StackedTable> tables = {{first, {ColIndex(0), none, ColIndex(1)}},
                                                  {second, {ColIndex(0), ColIndex(1), none}},
                                                  {Dataset(), {none, none, none}},
                                                  {third, {ColIndex(1), ColIndex(0), none}}};
        const Dataset result = Dataset::stacked(tables, 3);
        QCOMPARE(rowsOf(result), (Rows{{"a", "", "1"},
                                       {"b", "", "2"},
                                       {"a", "", ""},
                                       {"b", "x", ""},
                                       {"c", "y", ""},
                                       {"2", "b", ""},
                                       {"", "", ""},
                                       {"1", "a", ""}}));
        QVERIFY(!result.hasHeader());
        QCOMPARE(rowsOf(first), rowsOf(firstBefore));
        QCOMPARE(rowsOf(first), (Rows{{"a", "1"}, {"b", "2"}, {"a", ""}}));
        Dataset changed = result;
        changed.setCell(RowIndex(0), ColIndex(0), "changed");
        QCOMPARE(rowsOf(first)[0], (QStringList{"a", "1"}));
        QVERIFY(!Dataset::stacked(tables, 3, [](double) { return false; }).hasColumns());
    }

    void resizeFollowsRowsAndIgnoresZeroColumns()
    {
        Dataset dataset = tableOf({{"a", "b"}, {"c", "d"}, {"e", "f"}});
        dataset.resize(1, 0);
        QCOMPARE(dataset.rowCount(), 3);
        dataset.resize(2, 2);
        dataset.resize(4, 2);
        QCOMPARE(rowsOf(dataset), (Rows{{"a", "b"}, {"c", "d"}, {"", ""}, {"", ""}}));
        dataset.resize(0, 2);
        QVERIFY(dataset.isEmpty());
        dataset.resize(1, 2);
        QCOMPARE(rowsOf(dataset), (Rows{{"", ""}}));
    }

    void rowsOutsideAreNotRemoved()
    {
        Dataset dataset = tableOf({{"a"}, {"b"}});
        dataset.removeRow(RowIndex(2));
        dataset.removeRow(RowIndex(-1));
        QCOMPARE(dataset.rowCount(), 2);
        dataset.removeRow(RowIndex(0));
        QCOMPARE(rowsOf(dataset), (Rows{{"b"}}));
    }

    void valuesAreSharedUnlessSpeedIsChosen_data()
    {
        QTest::addColumn<bool>("pooling");
        QTest::newRow("minimum memory use") << true;
        QTest::newRow("maximum speed") << false;
    }

    void valuesAreSharedUnlessSpeedIsChosen()
    {
        QFETCH(bool, pooling);
        ValuePool::setPoolingEnabled(pooling);
        Dataset dataset;
        dataset.setColumnCount(ColIndex(1));
        dataset.resize(4, 1);
        dataset.setCell(RowIndex(0), ColIndex(0), QStringLiteral("UK"));
        dataset.setCell(RowIndex(1), ColIndex(0), QStringLiteral("UK"));
        dataset.setCell(RowIndex(3), ColIndex(0), QString());
        const QString first = dataset.cell(RowIndex(0), ColIndex(0));
        const QString second = dataset.cell(RowIndex(1), ColIndex(0));
        QCOMPARE(first, second);
        QCOMPARE(sharesStorage(first, second), pooling);
        QVERIFY(sharesStorage(dataset.cell(RowIndex(2), ColIndex(0)),
                              dataset.cell(RowIndex(3), ColIndex(0))));
    }

    void valuesComeBackUnchanged_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("latin") << QStringLiteral("plain");
        QTest::newRow("accents") << QStringLiteral("Zoë São Łódź");
        QTest::newRow("emoji") << QString::fromUtf8("a\xf0\x9f\x98\x80z");
        QTest::newRow("nul") << QString(QChar(0)) + QLatin1Char('x');
        QTest::newRow("lone surrogates")
            << QString(QChar(0xd800)) + QLatin1Char('x') + QString(QChar(0xdc00));
        QTest::newRow("65534 bytes") << QString(65534, QLatin1Char('x'));
        QTest::newRow("65535 bytes") << QString(65535, QLatin1Char('x'));
        QTest::newRow("3 MB") << QString(3000000, QLatin1Char('y'));
    }

    void valuesComeBackUnchanged()
    {
        QFETCH(QString, value);
        Dataset dataset;
        dataset.setColumnCount(ColIndex(1));
        dataset.resize(3, 1);
        dataset.setCell(RowIndex(0), ColIndex(0), QStringLiteral("before"));
        dataset.setCell(RowIndex(1), ColIndex(0), value);
        dataset.setCell(RowIndex(2), ColIndex(0), QStringLiteral("after"));
        QCOMPARE(rowsOf(dataset), (Rows{{"before"}, {value}, {"after"}}));
    }

    // Random operations on a table and copies of it, against a plain list of rows.
    void behavesLikeAListOfRows()
    {
        QRandomGenerator random(7);
        const auto below = [&random](int bound) { return int(random.bounded(bound)); };
        for (int trial = 0; trial < 60; ++trial) {
            Rows model;
            const int rows = below(40);
            const int columns = 1 + below(4);
            for (int i = 0; i < rows; ++i) {
                QStringList row;
                for (int c = 0; c < columns; ++c) {
                    row.append(below(3) ? QString::number(below(9)) : QString());
                }
                model.append(row);
            }
            Dataset dataset = tableOf(model);
            dataset.setColumnCount(ColIndex(columns));
            QList<QPair<Dataset, Rows>> copies;
            for (int step = 0; step < 30; ++step) {
                copies.append({dataset, model});
                const int count = model.size();
                switch (below(4)) {
                case 0:
                    if (count > 0) {
                        const int row = below(count);
                        const int column = below(columns);
                        const QString value = QString::number(below(20));
                        dataset.setCell(RowIndex(row), ColIndex(column), value);
                        model[row][column] = value;
                    }
                    break;
                case 1: {
                    RowSelection selection;
                    Rows selected;
                    for (int i = 0; count > 0 && i < below(count * 2); ++i) {
                        selection.push_back(below(count));
                        selected.append(model.at(selection.back()));
                    }
                    dataset = dataset.selectRows(selection);
                    model = selected;
                    break;
                }
                case 2: {
                    const int size = below(50);
                    dataset.resize(size, columns);
                    while (model.size() > size) {
                        model.removeLast();
                    }
                    while (model.size() < size) {
                        QStringList row;
                        for (int c = 0; c < columns; ++c) {
                            row.append(QString());
                        }
                        model.append(row);
                    }
                    break;
                }
                default: {
                    const int row = below(count + 1);
                    dataset.removeRow(RowIndex(row));
                    if (row < count) {
                        model.removeAt(row);
                    }
                }
                }
                QCOMPARE(rowsOf(dataset), model);
            }
            for (const auto &copy : copies) {
                QCOMPARE(rowsOf(copy.first), copy.second);
            }
        }
    }

    void writingToACopyKeepsLargeTablesApart()
    {
        TableBuilder builder;
        for (int row = 0; row < 200000; ++row) {
            const std::string id = std::to_string(row);
            const std::string_view values[] = {id, row % 2 ? "odd" : "even"};
            builder.appendRow(values, 2);
        }
        const Dataset original = builder.take();
        QVERIFY(!original.columnReader(ColIndex(0)).isPooled());
        QVERIFY(original.columnReader(ColIndex(1)).isPooled());
        Dataset copy = original;
        QVERIFY(copy == original);
        copy.setCell(RowIndex(150000), ColIndex(0), QStringLiteral("x"));
        copy.setCell(RowIndex(70000), ColIndex(1), QStringLiteral("y"));
        QVERIFY(copy != original);
        QCOMPARE(original.cell(RowIndex(150000), ColIndex(0)), QStringLiteral("150000"));
        QCOMPARE(copy.cell(RowIndex(150000), ColIndex(0)), QStringLiteral("x"));
        QCOMPARE(copy.cell(RowIndex(150001), ColIndex(0)), QStringLiteral("150001"));
        QCOMPARE(original.cell(RowIndex(70000), ColIndex(1)), QStringLiteral("even"));
    }

    void takenRowsCostFourBytesEach()
    {
        TableBuilder builder;
        RowSelection even;
        for (int row = 0; row < 100000; ++row) {
            const std::string_view values[] = {"a", "b", "c"};
            builder.appendRow(values, 3);
            if (row % 2 == 0) {
                even.push_back(row);
            }
        }
        const Dataset original = builder.take();
        const Dataset taken = original.selectRows(even);
        QVERIFY(taken.memoryUsed() - original.memoryUsed() <= 4 * 50000 + 1000);
    }

    void mappingAColumnAsksOncePerValue()
    {
        const Dataset original = tableOf({{"a", "1"}, {"b", "1"}, {"a", ""}, {"A", "2"}});
        Dataset mapped = original.selectRows({0, 1, 2, 3, 0, -1});
        int asked = 0;
        const auto upper = [&asked](const QString &value) {
            ++asked;
            return value.toUpper();
        };
        const CellChanges changes = mapped.mapColumn(ColIndex(0), upper);
        QCOMPARE(changes.changed, 4);
        QCOMPARE(changes.unchanged, 2);
        QCOMPARE(asked, 4);
        QCOMPARE(rowsOf(mapped),
                 (Rows{{"A", "1"}, {"B", "1"}, {"A", ""}, {"A", "2"}, {"A", "1"}, {"", ""}}));
        QCOMPARE(original.cell(RowIndex(0), ColIndex(0)), QStringLiteral("a"));
        const Dataset before = mapped;
        mapped.mapColumn(
            ColIndex(0), [](const QString &value) { return value + "x"; },
            [](int row) { return row < 3; });
        QVERIFY(mapped == before);
    }

    void sideBySideKeepsBothHeaders()
    {
        Dataset left = tableOf({{"1"}, {"2"}});
        left.setHeader({"id"});
        const Dataset right = tableOf({{"x", "y"}}).selectRows({0, -1});
        const Dataset joined = Dataset::sideBySide(left, right);
        QCOMPARE(joined.header(), (QStringList{"id", "Column 1", "Column 2"}));
        QCOMPARE(rowsOf(joined), (Rows{{"1", "x", "y"}, {"2", "", ""}}));
        QCOMPARE(rowsOf(joined.selectColumns({ColIndex(2), ColIndex(0)})),
                 (Rows{{"y", "1"}, {"", "2"}}));
    }
};

TW_TEST_CLASS(TestDataset)
#include "tst_dataset.moc"
