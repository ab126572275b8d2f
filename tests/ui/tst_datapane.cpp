#include "celltext.h"
#include "columnstatistics.h"
#include "columnvalues.h"
#include "datapane.h"
#include "datatableheader.h"
#include "datatableview.h"
#include "tablecopy.h"
#include "tabletexts.h"
#include "testsupport.h"
#include "theme.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QToolButton>
#include <QTreeWidget>

namespace {

const QStringList formats{"d/M/yyyy"};

/// A pane of moderate size with a table.
struct ShownPane
{
    explicit ShownPane(const Dataset &table, const Dataset &input = {})
    {
        pane.setDateFormats(formats);
        pane.resize(900, 400);
        pane.showData(table, input, "Nothing is connected.");
        pane.show();
        view = pane.findChild<DataTableView *>();
        view->setFocus();
    }

    QToolButton *button(const QString &name) const
    {
        for (QToolButton *const each : pane.findChildren<QToolButton *>()) {
            if (each->accessibleName() == name) {
                return each;
            }
        }
        return nullptr;
    }

    DataPane pane;
    DataTableView *view;
};

QString rangeText(const CellRange &range)
{
    return QString("%1,%2-%3,%4")
        .arg(QString::number(range.top), QString::number(range.left), QString::number(range.bottom),
             QString::number(range.right));
}

bool hasLabel(const QWidget &parent, const QString &text)
{
    for (const QLabel *const label : parent.findChildren<QLabel *>()) {
        if (label->isVisible() && label->text() == text) {
            return true;
        }
    }
    return false;
}

/// QTest moves the pointer of the screen, which tells the widget nothing here.
void moveMouse(QWidget *widget, const QPoint &position)
{
    QMouseEvent event(QEvent::MouseMove, position, Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(widget, &event);
}

std::string_view bytesOf(const QByteArray &bytes)
{
    return {bytes.data(), size_t(bytes.size())};
}

ColumnStatistics finished(const Dataset &table)
{
    ColumnStatistics statistics(table, ColIndex(0), formats);
    while (statistics.step()) {
    }
    return statistics;
}

} // namespace

class TestDataPane : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reachesTheEndOfTenMillionRows()
    {
        const int rows = 10000000;
        ShownPane shown(repeated(parsed("A|B|C;1|2|3;4|5|6"), rows));
        QTest::keyClick(shown.view, Qt::Key_End, Qt::ControlModifier);
        QVERIFY(shown.view->current() == (CellPlace{rows - 1, 2}));
        const QRect place = shown.view->cellRect(shown.view->current());
        QVERIFY(shown.view->viewport()->rect().contains(place));
        QCOMPARE(shown.view->rowAt(place.center().y()), rows - 1);
        QCOMPARE(shown.view->verticalScrollBar()->value(),
                 shown.view->verticalScrollBar()->maximum());
        QVERIFY(!shown.view->grab().isNull());
    }

    void keysSelect_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("range");
        const auto addRow = [](const char *keys, const char *range) {
            QTest::newRow(keys) << QString(keys) << QString(range);
        };
        // In a table of 100 rows and 4 columns, from row 50 and column 1.
        addRow("Down", "51,1-51,1");
        addRow("Left Left Up", "49,0-49,0");
        addRow("Home", "50,0-50,0");
        addRow("End Right", "50,3-50,3");
        addRow("Ctrl+Home", "0,0-0,0");
        addRow("Ctrl+End Down", "99,3-99,3");
        addRow("Ctrl+Up", "0,1-0,1");
        addRow("Shift+Down Shift+Right", "50,1-51,2");
        addRow("Shift+Up Shift+Up Shift+Down", "49,1-50,1");
        addRow("Shift+Up Right", "49,2-49,2");
        addRow("Shift+End", "50,1-50,3");
        addRow("Ctrl+Shift+Home", "0,0-50,1");
        addRow("Ctrl+Space", "0,1-99,1");
        addRow("Shift+Space Shift+Down", "50,0-51,3");
        addRow("Ctrl+A", "0,0-99,3");
        addRow("Ctrl+A Down", "51,3-51,3");
    }

    void keysSelect()
    {
        QFETCH(QString, keys);
        QFETCH(QString, range);
        ShownPane shown(repeated(parsed("A|B|C|D;1|2|3|4"), 100));
        shown.view->setCurrent({50, 1});
        for (const QString &key : keys.split(' ')) {
            const int code = QKeySequence(key)[0];
            const auto modifiers = Qt::KeyboardModifiers(code & int(Qt::KeyboardModifierMask));
            QTest::keyClick(shown.view, Qt::Key(code & ~int(Qt::KeyboardModifierMask)), modifiers);
        }
        QCOMPARE(rangeText(shown.view->selection()), range);
    }

    void pagesMoveByWhatIsInSight()
    {
        ShownPane shown(repeated(parsed("A;1"), 1000));
        QTest::keyClick(shown.view, Qt::Key_PageDown);
        const int page = shown.view->current().row;
        QVERIFY(page > 3);
        QTest::keyClick(shown.view, Qt::Key_PageDown);
        QCOMPARE(shown.view->current().row, 2 * page);
        QTest::keyClick(shown.view, Qt::Key_PageUp);
        QCOMPARE(shown.view->current().row, page);
    }

    void mouseSelects()
    {
        ShownPane shown(repeated(parsed("A|B|C;1|2|3"), 100));
        DataTableView *const view = shown.view;
        const auto center = [view](int row, int column) {
            return view->cellRect({row, column}).center();
        };
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, center(2, 1));
        QCOMPARE(rangeText(view->selection()), QString("2,1-2,1"));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ShiftModifier, center(4, 2));
        QCOMPARE(rangeText(view->selection()), QString("2,1-4,2"));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, {4, center(3, 0).y()});
        QCOMPARE(rangeText(view->selection()), QString("3,0-3,2"));
        QTest::mousePress(view->viewport(), Qt::LeftButton, {}, center(5, 2));
        moveMouse(view->viewport(), center(1, 0));
        QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, center(1, 0));
        moveMouse(view->viewport(), center(6, 1));
        QCOMPARE(rangeText(view->selection()), QString("1,0-5,2"));
    }

    void headerSelectsAndResizes()
    {
        ShownPane shown(repeated(parsed("A|B|C;1|2|a long value"), 100));
        auto *const header = shown.pane.findChild<DataTableHeader *>();
        auto *const values = shown.pane.findChild<ColumnValues *>();
        QVERIFY(!values->isVisible());
        const int y = 6;
        const int middle = shown.view->columnX(1) + shown.view->columns().width(1) / 2;
        QTest::mouseClick(header, Qt::LeftButton, {}, {middle, y});
        QCOMPARE(rangeText(shown.view->selection()), QString("0,1-99,1"));
        QVERIFY(values->isVisible());

        const int before = shown.view->columns().width(2);
        const QPoint border(shown.view->columnX(2) + before - 1, y);
        QTest::mousePress(header, Qt::LeftButton, {}, border);
        moveMouse(header, border + QPoint(-40, 0));
        QTest::mouseRelease(header, Qt::LeftButton, {}, border + QPoint(-40, 0));
        QCOMPARE(shown.view->columns().width(2), before - 40);
        QTest::mouseDClick(header, Qt::LeftButton, {}, border + QPoint(-40, 0));
        QCOMPARE(shown.view->columns().width(2), before);
        // A new table with such a column keeps what the user chose.
        shown.view->resizeColumn(2, 77);
        shown.pane.showData(parsed("X|C;1|2"), {}, {});
        QCOMPARE(shown.view->columns().width(1), 77);
    }

    void keepsItsPlace()
    {
        ShownPane shown(repeated(parsed("A|B;1|2"), 1000));
        shown.view->setCurrent({500, 1});
        const int top = shown.view->verticalScrollBar()->value();
        shown.pane.showData(repeated(parsed("A|B;3|4"), 900), {}, {});
        QVERIFY(shown.view->current() == (CellPlace{500, 1}));
        QCOMPARE(shown.view->verticalScrollBar()->value(), top);
        shown.pane.showData(parsed("A|B;3|4"), {}, {});
        QVERIFY(shown.view->current() == (CellPlace{0, 1}));
        shown.pane.showData(repeated(parsed("X|B;3|4"), 900), {}, {});
        QVERIFY(shown.view->current() == (CellPlace{0, 0}));
    }

    void copiesByKey()
    {
        ShownPane shown(parsed("A|B;1|say \"x\";3|4"));
        QTest::keyClick(shown.view, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(shown.view, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(), QString("1\t\"say \"\"x\"\"\"\n3\t4\n"));
        QTest::keyClick(shown.view, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(QApplication::clipboard()->text(), QString("A\tB\n1\t\"say \"\"x\"\"\"\n3\t4\n"));
    }

    void tellsWhenItCopiesLess()
    {
        ShownPane shown(repeated(parsed("A;1"), int(TableCopy::largestCount) + 1));
        shown.view->selectAll();
        shown.view->copy(false);
        QCOMPARE(QApplication::clipboard()->text().size(), int(TableCopy::largestCount) * 2);
        QVERIFY(hasLabel(shown.pane, "Only the first 1,000,000 of 1,000,001 rows were copied. For "
                                     "more, add an output that writes a file."));
    }

    void marksChangedCells()
    {
        ShownPane shown(parsed("A|B;1|x;2|y"), parsed("A|B;1|x;2|z"));
        shown.view->setCurrent({0, 0});
        const QImage image = shown.view->viewport()->grab().toImage();
        const auto cornerOf = [&](CellPlace place) {
            return image.pixelColor(shown.view->cellRect(place).topRight() + QPoint(-1, 1));
        };
        QCOMPARE(cornerOf({1, 1}), Theme::current().warning);
        QVERIFY(cornerOf({0, 1}) != Theme::current().warning);
        QVERIFY(cornerOf({1, 0}) != Theme::current().warning);
    }

    void findsFromTheBox()
    {
        ShownPane shown(parsed("A|B;oak|x;y|Oak;z|elm"));
        auto *const edit = shown.pane.findChild<QLineEdit *>();
        shown.view->setCurrent({0, 1});
        QTest::keyClick(shown.view, Qt::Key_F, Qt::ControlModifier);
        QTest::keyClicks(edit, "oak");
        QTRY_VERIFY(shown.view->current() == (CellPlace{1, 1}));
        QTRY_VERIFY(hasLabel(shown.pane, "2 cells"));
        QTest::keyClick(edit, Qt::Key_Return);
        QTRY_VERIFY(shown.view->current() == (CellPlace{0, 0}));
        QVERIFY(hasLabel(shown.pane, "2 cells, went round the end"));
        QTest::keyClick(edit, Qt::Key_Return, Qt::ShiftModifier);
        QTRY_VERIFY(shown.view->current() == (CellPlace{1, 1}));
        QTest::keyClicks(edit, "s");
        QTRY_VERIFY(hasLabel(shown.pane, "Not found"));
        QTest::keyClick(edit, Qt::Key_Escape);
        QVERIFY(edit->text().isEmpty());
    }

    void sortNoteEndsTheSort()
    {
        ShownPane shown(parsed("A;1;3;2"));
        shown.view->model()->sort(0, Qt::DescendingOrder);
        QTRY_VERIFY(!shown.view->model()->isSorting());
        QVERIFY(shown.view->model()->value(0, 0) == "3");
        QToolButton *const button = shown.button("Show as in the data");
        QVERIFY(button && button->isVisible());
        button->click();
        QVERIFY(!button->isVisible());
        QVERIFY(shown.view->model()->value(0, 0) == "1");
    }

    void speaks()
    {
        ShownPane shown(parsed("A|B;1|x;2|"));
        QAccessibleInterface *const table = QAccessible::queryAccessibleInterface(shown.view);
        QVERIFY(table);
        QCOMPARE(table->role(), QAccessible::Table);
        QCOMPARE(table->text(QAccessible::Value), QString("A, row 1: 1"));
        QTest::keyClick(shown.view, Qt::Key_Right);
        QCOMPARE(table->text(QAccessible::Value), QString("B, row 1: x"));
        QTest::keyClick(shown.view, Qt::Key_Down);
        QCOMPARE(table->text(QAccessible::Description), QString("B, row 2: empty"));
        shown.pane.showData({}, {}, "Nothing is connected.");
        QCOMPARE(table->text(QAccessible::Description), QString("Nothing is connected."));
        for (const QToolButton *const button : shown.pane.findChildren<QToolButton *>()) {
            // The two of the search field and of the splitter are Qt's.
            if (button->parent() != shown.pane.findChild<QLineEdit *>() && !button->isHidden()) {
                QVERIFY(!button->accessibleName().isEmpty());
            }
        }
    }

    void cellTexts_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("showBlanks");
        QTest::addColumn<QString>("shown");
        QTest::newRow("plain") << "a b" << false << "a b";
        QTest::newRow("blanks") << " a\tb " << true << QString::fromUtf8("·a→b·");
        QTest::newRow("line breaks") << "a\r\nb\nc" << false << QString::fromUtf8("a↵b↵c");
        QTest::newRow("control characters") << QString("a\x01z") << false << "a z";
        QTest::newRow("long") << QString(5000, 'x') << false << QString(1000, 'x') + QChar(0x2026);
        QTest::newRow("a pair is not torn") << QString(999, 'x') + QString::fromUtf8("😀y") << false
                                            << QString(999, 'x') + QChar(0x2026);
        QTest::newRow("long and not ASCII")
            << QString(5000, QChar(0xe9)) << false << QString(1000, QChar(0xe9)) + QChar(0x2026);
    }

    void cellTexts()
    {
        QFETCH(QString, value);
        QFETCH(bool, showBlanks);
        QFETCH(QString, shown);
        const QByteArray bytes = value.toUtf8();
        QCOMPARE(CellText(bytesOf(bytes), 100000, showBlanks).text(), shown);
    }

    void statistics_data()
    {
        QTest::addColumn<bool>("pooled");
        QTest::newRow("a code for each value") << true;
        QTest::newRow("a code for each cell") << false;
    }

    void statistics()
    {
        QFETCH(bool, pooled);
        ValuePool::setPoolingEnabled(pooled);
        const Dataset table = parsed("A;5;10;5;;x;-2.5;true;1/2/2024;31/12/2023;\u00e9t\u00e9;5;");
        const ColumnStatistics known = finished(table);
        ValuePool::setPoolingEnabled(true);
        QCOMPARE(known.kinds().of(ValueKind::Integer), qint64(4));
        QCOMPARE(known.kinds().of(ValueKind::Real), qint64(1));
        QCOMPARE(known.kinds().of(ValueKind::Boolean), qint64(1));
        QCOMPARE(known.kinds().of(ValueKind::Date), qint64(2));
        QCOMPARE(known.kinds().of(ValueKind::Text), qint64(2));
        QCOMPARE(known.kinds().of(ValueKind::Empty), qint64(2));
        QCOMPARE(known.distinctCount(), qint64(8));
        QVERIFY(known.shortest() == "5");
        QVERIFY(known.longest() == "31/12/2023");
        QCOMPARE(known.longestLength(), 10);
        QVERIFY(known.numbers().smallestValue == "-2.5");
        QVERIFY(known.numbers().largestValue == "10");
        QVERIFY(known.dates().smallestValue == "31/12/2023");
        QVERIFY(known.dates().largestValue == "1/2/2024");
        QVERIFY(known.frequent().at(0).value == "5");
        QCOMPARE(known.frequent().at(0).count, qint64(3));
        QVERIFY(known.frequent().at(1).value.empty());
        QCOMPARE(known.frequent().size(), size_t(9));
        qint64 inBins = 0;
        for (const qint64 bin : known.numbers().bins) {
            inBins += bin;
        }
        QCOMPARE(inBins, qint64(5));
        QCOMPARE(known.numbers().bins.front(), qint64(1));
        QCOMPARE(known.numbers().bins.back(), qint64(1));
    }

    void keepsTheMostFrequentValues()
    {
        QString cells = "A";
        for (int value = 0; value < 300; ++value) {
            cells += (";v" + QString::number(value)).repeated(value % 250 + 1);
        }
        const ColumnStatistics known = finished(parsed(cells));
        QCOMPARE(known.frequent().size(), size_t(ColumnStatistics::mostFrequent));
        QVERIFY(known.frequent().front().value == "v249");
        QCOMPARE(known.frequent().front().count, qint64(250));
        QCOMPARE(known.frequent().back().count, qint64(51));
    }

    void valuesFollowTheTable()
    {
        ShownPane shown(parsed("A|B;1|x;2|y;3|x"));
        auto *const values = shown.pane.findChild<ColumnValues *>();
        Q_EMIT shown.view->columnValuesWanted(1);
        QTRY_VERIFY(!values->isWorking());
        auto *const list = values->findChild<QTreeWidget *>();
        QCOMPARE(list->topLevelItemCount(), 2);
        QCOMPARE(list->topLevelItem(0)->text(0), QString("x"));
        QCOMPARE(list->topLevelItem(0)->text(1), QString("2"));
        QCOMPARE(list->topLevelItem(0)->text(2), QString("66.7 %"));

        QSignalSpy filter(&shown.pane, &DataPane::filterWanted);
        list->setCurrentItem(list->topLevelItem(1));
        values->findChild<QPushButton *>()->click();
        QCOMPARE(filter.count(), 1);
        QCOMPARE(filter.first(), (QList<QVariant>{"B", "y"}));

        shown.pane.showData(parsed("A;1"), {}, {});
        QVERIFY(!values->isVisible());
        shown.pane.showData(parsed("B;q"), {}, {});
        QVERIFY(values->isVisible());
        QTRY_VERIFY(!values->isWorking());
        QCOMPARE(list->topLevelItem(0)->text(0), QString("q"));
        shown.button("Close column values")->click();
        QVERIFY(!values->isVisible());
    }
};

TW_TEST_CLASS(TestDataPane)
#include "tst_datapane.moc"
