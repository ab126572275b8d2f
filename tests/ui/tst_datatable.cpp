#include "datatablemodel.h"
#include "tablecopy.h"
#include "tablefind.h"
#include "tabletexts.h"
#include "testsupport.h"

#include <QSignalSpy>

Q_DECLARE_METATYPE(CellPlace)
Q_DECLARE_METATYPE(ValueKind)

namespace {

const QStringList formats{"d/M/yyyy", "yyyy-M-d"};

QStringList shownColumn(const DataTableModel &model, int column)
{
    QStringList values;
    for (int row = 0; row < model.rowCount(); ++row) {
        const std::string_view value = model.value(row, column);
        values.append(QString::fromUtf8(value.data(), int(value.size())));
    }
    return values;
}

} // namespace

class TestDataTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qRegisterMetaType<CellPlace>(); }

    void kindsOfValues_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<ValueKind>("kind");
        const auto addRow = [](const char *value, ValueKind kind) {
            QTest::newRow(value) << QString(value) << kind;
        };
        addRow("", ValueKind::Empty);
        addRow(" ", ValueKind::Text);
        addRow("12", ValueKind::Integer);
        addRow("12.0", ValueKind::Integer);
        addRow("1,234", ValueKind::Integer);
        addRow("-0.5", ValueKind::Real);
        addRow("1e3", ValueKind::Real);
        addRow("\u00a312", ValueKind::Integer);
        addRow("True", ValueKind::Boolean);
        addRow("31/1/2024", ValueKind::Date);
        addRow("31/2/2024", ValueKind::Text);
        addRow("12 apples", ValueKind::Text);
    }

    void kindsOfValues()
    {
        QFETCH(QString, value);
        QFETCH(ValueKind, kind);
        const QByteArray bytes = value.toUtf8();
        QCOMPARE(ValueKinds(formats).kind(std::string_view(bytes.data(), size_t(bytes.size()))),
                 kind);
    }

    void kindsBecomeExact()
    {
        DataTableModel model;
        model.setDateFormats(formats);
        model.setData(repeated(parsed("A|B;1|x;2.5|1/1/2024;|y"), 30000), {});
        QVERIFY(!model.kinds(0).isExact);
        QVERIFY(model.isNumeric(0));
        QVERIFY(!model.isNumeric(1));
        QTRY_VERIFY(model.kinds(1).isExact);
        QCOMPARE(model.kinds(0).of(ValueKind::Integer), qint64(10000));
        QCOMPARE(model.kinds(0).of(ValueKind::Real), qint64(10000));
        QCOMPARE(model.kinds(0).of(ValueKind::Empty), qint64(10000));
        QCOMPARE(model.kinds(1).of(ValueKind::Date), qint64(10000));
        QCOMPARE(model.kinds(1).of(ValueKind::Text), qint64(20000));
    }

    void sortsForViewing_data()
    {
        QTest::addColumn<QString>("cells");
        QTest::addColumn<QString>("ascending");
        QTest::addColumn<QString>("descending");
        QTest::newRow("numbers by value") << "10;9;-1;2.5"
                                          << "-1;2.5;9;10"
                                          << "10;9;2.5;-1";
        QTest::newRow("dates by day") << "2/1/2024;1/2/2024;31/12/2023"
                                      << "31/12/2023;2/1/2024;1/2/2024"
                                      << "1/2/2024;2/1/2024;31/12/2023";
        QTest::newRow("texts without case") << "b;A;a;C"
                                            << "A;a;b;C"
                                            << "C;b;a;A";
        QTest::newRow("long texts") << "abcdefghz;abcdefgha;abcdefgh"
                                    << "abcdefgh;abcdefgha;abcdefghz"
                                    << "abcdefghz;abcdefgha;abcdefgh";
        QTest::newRow("empty cells last") << ";b;;a"
                                          << "a;b;;"
                                          << "b;a;;";
        QTest::newRow("numbers before dates before texts") << "x;1/1/2024;7;y"
                                                           << "7;1/1/2024;x;y"
                                                           << "y;x;1/1/2024;7";
        QTest::newRow("equal values as in the data") << "1.0;2;1;01"
                                                     << "1.0;1;01;2"
                                                     << "2;1.0;1;01";
    }

    void sortsForViewing()
    {
        QFETCH(QString, cells);
        QFETCH(QString, ascending);
        QFETCH(QString, descending);
        DataTableModel model;
        model.setDateFormats(formats);
        model.setData(parsed("A;" + cells), {});
        model.sort(0, Qt::AscendingOrder);
        QTRY_VERIFY(!model.isSorting());
        QCOMPARE(shownColumn(model, 0).join(';'), ascending);
        model.sort(0, Qt::DescendingOrder);
        QTRY_VERIFY(!model.isSorting());
        QCOMPARE(shownColumn(model, 0).join(';'), descending);
        model.endSort();
        QCOMPARE(shownColumn(model, 0).join(';'), cells);
    }

    /// More rows than fit into one run of the sort, with all values different.
    void sortsManyDifferentValues()
    {
        QString cells = "A";
        for (int i = 0; i < 5000; ++i) {
            cells += ";" + QString::number((i * 2999) % 5000);
        }
        DataTableModel model;
        model.setData(parsed(cells), {});
        model.sort(0, Qt::AscendingOrder);
        QTRY_VERIFY(!model.isSorting());
        for (int row = 0; row < 5000; ++row) {
            QVERIFY(model.value(row, 0) == std::to_string(row));
        }
    }

    /// A new table with the same columns is sorted again; with others it is not.
    void keepsSorting()
    {
        DataTableModel model;
        model.setData(parsed("A;2;1"), {});
        model.sort(0, Qt::AscendingOrder);
        model.setData(parsed("A;3;1;2"), {});
        QTRY_VERIFY(!model.isSorting());
        QCOMPARE(shownColumn(model, 0).join(';'), QString("1;2;3"));
        model.setData(parsed("B;3;1"), {});
        QCOMPARE(model.sortColumn(), -1);
        QCOMPARE(shownColumn(model, 0).join(';'), QString("3;1"));
    }

    void marksChangedCells()
    {
        DataTableModel model;
        model.setData(parsed("A|B;1|x;2|y"), parsed("A|B;1|X;2|y"));
        QVERIFY(!model.isChanged(0, 0));
        QVERIFY(model.isChanged(0, 1));
        QVERIFY(!model.isChanged(1, 1));
        QCOMPARE(model.valueBefore(0, 1), QString("X"));
        model.sort(0, Qt::DescendingOrder);
        QTRY_VERIFY(!model.isSorting());
        QVERIFY(model.isChanged(1, 1));
        model.setData(parsed("A|B;1|x;2|y"), parsed("A|B;1|X"));
        QVERIFY(!model.isChanged(0, 1));
    }

    void findWraps_data()
    {
        QTest::addColumn<CellPlace>("from");
        QTest::addColumn<bool>("forward");
        QTest::addColumn<CellPlace>("place");
        QTest::addColumn<bool>("wrapped");
        // Matches stand at (0, 1), (1, 0) and (2, 1).
        const auto addRow = [](const char *name, CellPlace from, bool forward, CellPlace place,
                               bool wrapped) {
            QTest::newRow(name) << from << forward << place << wrapped;
        };
        addRow("first", {}, true, {0, 1}, true);
        addRow("next", {0, 1}, true, {1, 0}, false);
        addRow("round the end", {2, 1}, true, {0, 1}, true);
        addRow("previous", {2, 1}, false, {1, 0}, false);
        addRow("round the start", {0, 0}, false, {2, 1}, true);
    }

    void findWraps()
    {
        QFETCH(CellPlace, from);
        QFETCH(bool, forward);
        QFETCH(CellPlace, place);
        QFETCH(bool, wrapped);
        DataTableModel model;
        TableFind find(&model);
        model.setData(parsed("A|B;x|Oak;oaks|y;z|SOAK"), {});
        find.setText("oak");
        CellPlace found;
        bool hasWrapped = false;
        connect(&find, &TableFind::found, this, [&](CellPlace at, bool round) {
            found = at;
            hasWrapped = round;
        });
        find.search(from, forward);
        QTRY_VERIFY(found.isValid());
        QVERIFY(found == place);
        QCOMPARE(hasWrapped, wrapped);
        QTRY_VERIFY(!find.isCounting());
        QCOMPARE(find.count(), qint64(3));
    }

    void findStaysOnTheOnlyMatch()
    {
        DataTableModel model;
        TableFind find(&model);
        model.setData(parsed("A;x;only;y"), {});
        find.setText("only");
        QSignalSpy found(&find, &TableFind::found);
        find.search({1, 0}, true);
        QTRY_COMPARE(found.count(), 1);
        QVERIFY(found.first().at(0).value<CellPlace>() == (CellPlace{1, 0}));
        find.setText("missing");
        QSignalSpy notFound(&find, &TableFind::notFound);
        find.search({1, 0}, true);
        QTRY_COMPARE(notFound.count(), 1);
        QCOMPARE(find.count(), qint64(0));
    }

    void copies()
    {
        DataTableModel model;
        model.setData(parsed("A|B;1|a\tb;2|say \"x\";3|two\nlines;4|<b>&"), {});
        const CellRange all{0, 0, 3, 1};
        QCOMPARE(TableCopy::tabSeparated(model, all, false),
                 QString("1\t\"a\tb\"\n2\t\"say \"\"x\"\"\"\n3\t\"two\nlines\"\n4\t<b>&\n"));
        QCOMPARE(TableCopy::tabSeparated(model, {0, 1, 0, 1}, false), QString("a\tb"));
        QCOMPARE(TableCopy::tabSeparated(model, {3, 0, 3, 1}, true), QString("A\tB\n4\t<b>&\n"));
        QCOMPARE(TableCopy::html(model, {2, 1, 3, 1}, true),
                 QString("<table><tr><th>B</th></tr>\n<tr><td>two<br>lines</td></tr>\n"
                         "<tr><td>&lt;b&gt;&amp;</td></tr>\n</table>"));
    }
};

TW_TEST_CLASS(TestDataTable)
#include "tst_datatable.moc"
