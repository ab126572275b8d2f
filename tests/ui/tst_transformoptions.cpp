#include "choicebox.h"
#include "icons.h"
#include "parametereditor.h"
#include "parametervalues.h"
#include "testgraph.h"
#include "testsupport.h"
#include "theme.h"
#include "transformcatalogue.h"
#include "transformoptions.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTableView>
#include <QToolButton>
#include <QUndoStack>

namespace {

/// A scene with an input and a transform below it, and the transform's options in a window.
struct Pane
{
    explicit Pane(const QString &type, const QString &text = "id,unit price,order date\n"
                                                             "1,12.5,31/01/2024\n2,7,01/02/2024\n")
    {
        input = graph.input(text);
        input->process({});
        const TransformCatalogue catalogue;
        node = graph.scene.insert(std::make_unique<TransformNode>(catalogue.create(type)));
        graph.scene.connectNodes(input, node);
        options.setNode(node);
        options.resize(300, 500);
        options.show();
        QApplication::setActiveWindow(&options);
    }

    void setText(const QString &text)
    {
        InputOptions changed = input->options();
        changed.text = text;
        input->setOptions(changed);
        input->process({});
        node->process({});
    }
    void set(const QString &key, const QVariant &value)
    {
        graph.scene.editParameter(node, key, value);
    }
    QString value(const QString &key) const
    {
        return node->transform().parameter(key)->valueText();
    }
    template <class Widget>
    Widget *field(const QString &key) const
    {
        return options.editor(key)->findChild<Widget *>();
    }
    int undoCount() const { return graph.scene.undoStack().count(); }

    TestGraph graph;
    InputNode *input = nullptr;
    TransformNode *node = nullptr;
    TransformOptions options{&graph.scene};
};

} // namespace

class TestTransformOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QIcon::setThemeSearchPaths(QStandardPaths::locateAll(
            QStandardPaths::GenericDataLocation, "icons", QStandardPaths::LocateDirectory));
        Icons::prepare();
    }

    void typingIsOneUndoStep()
    {
        Pane pane("If");
        auto *const name = pane.field<QLineEdit>("New_Name");
        name->setFocus();
        name->selectAll();
        QTest::keyClicks(name, "Grade");
        QCOMPARE(pane.value("New_Name"), QString("Grade"));
        QCOMPARE(pane.undoCount(), 1);
        QCOMPARE(pane.graph.scene.undoStack().undoText(), QString("edit 'New column name'"));
        pane.graph.scene.undo();
        QCOMPARE(pane.value("New_Name"), QString("If"));
        QCOMPARE(name->text(), QString("If"));
        pane.graph.scene.redo();
        QCOMPARE(name->text(), QString("Grade"));
    }

    /// What is being typed is left alone by changes of the item, its own and others'.
    void keepsFocusAndCaret()
    {
        Pane pane("If");
        auto *const name = pane.field<QLineEdit>("New_Name");
        name->setFocus();
        name->setText("Grade");
        name->setCursorPosition(2);
        QTest::keyClicks(name, "x");
        QCOMPARE(pane.value("New_Name"), QString("Grxade"));
        pane.set("Case_Sensitive", false);
        pane.setText("id,rank\n1,2\n");
        QVERIFY(name->hasFocus());
        QCOMPARE(name->cursorPosition(), 3);
        QVERIFY(!pane.field<QCheckBox>("Case_Sensitive")->isChecked());
    }

    void keepsTheCellThatIsEdited()
    {
        Pane pane("Filter");
        FilterSpec spec;
        spec.terms = {{"id", ComparisonOperator::Equal, ""}};
        pane.set("Columns", QVariant::fromValue(spec));
        auto *const table = pane.field<QTableView>("Columns");
        table->setFocus();
        table->setCurrentIndex(table->model()->index(0, 2));
        QTest::keyClick(table, Qt::Key_Return);
        auto *const line = table->viewport()->findChild<QLineEdit *>();
        QTest::keyClicks(line, "12");
        pane.set("Case_Sensitive", false);
        QVERIFY(line->hasFocus());
        QTest::keyClicks(line, "3");
        QCOMPARE(pane.value("Columns").section(QChar(0x1f), 4), QString("123"));
        QTest::keyClick(line, Qt::Key_Escape);
        QCOMPARE(pane.value("Columns").section(QChar(0x1f), 4), QString());
    }

    void invalidInputLeavesTheValue_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("mended");
        QTest::newRow("letters") << "Verify"
                                 << "Maximum"
                                 << "many"
                                 << "12";
        QTest::newRow("too small") << "Verify"
                                   << "Maximum"
                                   << "0"
                                   << "01";
        QTest::newRow("too large") << "Verify"
                                   << "Maximum"
                                   << "123456"
                                   << "9999";
        QTest::newRow("no number") << "Scale"
                                   << "Factor"
                                   << "1,x"
                                   << "1.5";
        QTest::newRow("two characters") << "Pad"
                                        << "Character"
                                        << "ab"
                                        << "c";
    }

    void invalidInputLeavesTheValue()
    {
        QFETCH(QString, type);
        QFETCH(QString, key);
        QFETCH(QString, typed);
        QFETCH(QString, mended);
        Pane pane(type);
        const QString before = pane.value(key);
        auto *const line = pane.field<QLineEdit>(key);
        line->selectAll();
        QTest::keyClicks(line, typed.left(1));
        QTest::keyClicks(line, typed.mid(1));
        ParameterEditor *const editor = pane.options.editor(key);
        QVERIFY(!editor->problem().isEmpty());
        QCOMPARE(line->text(), typed);
        const QString inForce = pane.value(key);
        QVERIFY(inForce != typed);
        line->selectAll();
        QTest::keyClicks(line, mended);
        QVERIFY2(editor->problem().isEmpty(), qPrintable(editor->problem()));
        QVERIFY(pane.value(key) != inForce || before != inForce);
    }

    void anotherValueTakesThePlaceOfInvalidInput()
    {
        Pane pane("Verify");
        auto *const line = pane.field<QLineEdit>("Maximum");
        line->setFocus();
        line->selectAll();
        QTest::keyClicks(line, "x");
        QVERIFY(!pane.options.editor("Maximum")->problem().isEmpty());
        pane.set("Maximum", 7);
        QCOMPARE(line->text(), QString("7"));
        QVERIFY(pane.options.editor("Maximum")->problem().isEmpty());
    }

    /// The reference stays, marked, while other columns are edited, and comes back with its column.
    void columnThatDisappears()
    {
        Pane pane("Dedupe");
        auto *const columns = pane.field<QListWidget>("Columns");
        QCOMPARE(columns->count(), 3);
        pane.setText("id,order date\n1,31/01/2024\n");
        QCOMPARE(columns->count(), 3);
        QCOMPARE(columns->item(2)->text(), QString("unit price (not found)"));
        columns->setCurrentRow(0);
        QTest::keyClick(columns, Qt::Key_Space);
        const auto choice =
            pane.node->transform().parameter("Columns")->value.value<ColumnChoice>();
        QCOMPARE(choice.checked.size(), 2);
        pane.setText("unit price,id,order date\n12.5,1,31/01/2024\n");
        QCOMPARE(columns->count(), 3);
        QCOMPARE(columns->item(0)->checkState(), Qt::Checked);
        QCOMPARE(columns->item(1)->checkState(), Qt::Unchecked);
        QCOMPARE(columns->item(2)->checkState(), Qt::Checked);
        QCOMPARE(pane.value("Columns"), QString("3") + QChar(0x1f) + "1");
    }

    void columnThatComesLater()
    {
        Pane pane("Remove");
        auto *const columns = pane.field<QListWidget>("Columns");
        pane.setText("new,id,unit price,order date\n0,1,12.5,31/01/2024\n");
        QCOMPARE(columns->item(0)->checkState(), Qt::PartiallyChecked);
        columns->setCurrentRow(1);
        QTest::keyClick(columns, Qt::Key_Space);
        const auto seen = [&pane] {
            return pane.node->transform().parameter("Columns")->value.value<ColumnChoice>().seen;
        };
        QCOMPARE(seen().value(0), QString());
        QTest::mouseClick(pane.options.editor("Columns")->findChildren<QToolButton *>().last(),
                          Qt::LeftButton);
        QCOMPARE(seen().value(0), QString("new"));
        QCOMPARE(pane.value("Columns"), QString());
    }

    void sortLevelWhoseColumnIsGone()
    {
        Pane pane("Sort");
        pane.set("Columns", QVariant::fromValue(QList<SortKey>{{ColumnRef(1, "unit price"), false},
                                                               {ColumnRef(0, "id"), true}}));
        pane.setText("order date,id\n31/01/2024,1\n");
        auto *const table = pane.field<QTableView>("Columns");
        QCOMPARE(table->model()->index(0, 0).data().toString(), QString("unit price (not found)"));
        table->setFocus();
        table->setCurrentIndex(table->model()->index(0, 0));
        QTest::keyClick(table, Qt::Key_Down, Qt::AltModifier);
        pane.setText("unit price,order date,id\n12.5,31/01/2024,1\n");
        QCOMPARE(pane.value("Columns"), QString("3") + QChar(0x1f) + "-1");
    }

    void showsOnlyWhatMeansSomething()
    {
        Pane pane("Verify");
        QVERIFY(!pane.options.editor("New_Name")->isVisible());
        QVERIFY(pane.options.editor("Maximum")->isVisible());
        pane.set("On_Fail", "Add column");
        QVERIFY(pane.options.editor("New_Name")->isVisible());
        QVERIFY(!pane.options.editor("Maximum")->isVisible());
    }

    void showsTheHelpOfTheOptionInHand()
    {
        Pane pane("If");
        QCOMPARE(pane.options.help(), pane.node->transform().description());
        pane.field<QLineEdit>("New_Name")->setFocus();
        QCOMPARE(pane.options.help(), QString("The name for the new column."));
        pane.field<QCheckBox>("Case_Sensitive")->setFocus();
        QCOMPARE(pane.options.help(), QString("Check for case sensitive text matching."));
    }

    void explainsWhatCanBePasted()
    {
        Pane pane("Filter");
        click(pane, "What can be pasted");
        QVERIFY(pane.options.help().startsWith("Terms are pasted from lines of text"));
    }

    /// Tab goes from field to field and gets out of every one; a script is left with Ctrl+Tab.
    void keyboardReachesEverything_data()
    {
        QTest::addColumn<QString>("type");
        for (const char *const type : {"Filter", "If", "Sort", "Javascript", "Substitute",
                                       "Rename_Cols", "Split_Rows", "Unique", "Reorder"}) {
            QTest::newRow(type) << type;
        }
    }

    void keyboardReachesEverything()
    {
        QFETCH(QString, type);
        Pane pane(type);
        QVERIFY(QTest::qWaitForWindowActive(&pane.options));
        QSet<QWidget *> missed;
        for (QWidget *const each : pane.options.findChildren<QWidget *>()) {
            const bool isInner = qobject_cast<QAbstractSpinBox *>(each->parentWidget());
            if (each->focusPolicy() & Qt::TabFocus && each->isVisible() && each->isEnabled() &&
                !each->focusProxy() && !isInner) {
                missed.insert(each);
            }
        }
        QVERIFY(missed.size() > 2);
        (*missed.begin())->setFocus();
        for (int presses = 2 * missed.size(); presses > 0; --presses) {
            QWidget *const now = QApplication::focusWidget();
            missed.remove(now);
            const bool isScript = now->inherits("ScriptEdit");
            QTest::keyClick(now, Qt::Key_Tab, isScript ? Qt::ControlModifier : Qt::NoModifier);
        }
        for (const QWidget *const each : qAsConst(missed)) {
            QFAIL(qPrintable(each->metaObject()->className() + each->accessibleName()));
        }
    }

    void survivesTheItem()
    {
        Pane pane("Filter");
        pane.graph.scene.deleteItems({pane.node});
        QVERIFY(!pane.options.node());
        QVERIFY(!pane.options.editor("Columns"));
        pane.graph.scene.undo();
        pane.options.setNode(pane.node);
        QVERIFY(pane.options.editor("Columns"));
    }

    void copiesAndPastesTerms()
    {
        Pane pane("Filter");
        FilterSpec spec;
        spec.terms = {{"unit price", ComparisonOperator::GreaterEqual, "1\t\"2\"\n3"},
                      {"", ComparisonOperator::IsEmpty, ""},
                      {"id", ComparisonOperator::Contains, "x"}};
        pane.set("Columns", QVariant::fromValue(spec));
        const QString before = pane.value("Columns");
        click(pane, "Copy filter terms");
        QCOMPARE(QGuiApplication::clipboard()->text(),
                 QString("unit price\t>=\t\"1\t\"\"2\"\"\n3\"\n<Any>\t\u2205\t\nid\tc\tx\n"));
        click(pane, "Remove all");
        click(pane, "Paste in filter terms");
        QCOMPARE(pane.value("Columns"), before);
        QGuiApplication::clipboard()->setText("id\t7\nonly a value\r\na\tb\tc\td\n");
        click(pane, "Paste in filter terms");
        spec.terms += {{"id", ComparisonOperator::Equal, "7"},
                       {"", ComparisonOperator::Equal, "only a value"}};
        TransformParameter expected = *pane.node->transform().parameter("Columns");
        expected.value = QVariant::fromValue(spec);
        QCOMPARE(pane.value("Columns"), expected.valueText());
    }

    /// Every option of every transform, as narrow as the pane can be.
    void fitsIntoANarrowPane_data()
    {
        QTest::addColumn<QString>("type");
        const TransformCatalogue catalogue;
        for (const Transform *const type : catalogue.types()) {
            QTest::newRow(qPrintable(type->typeName())) << type->typeName();
        }
    }

    void fitsIntoANarrowPane()
    {
        QFETCH(QString, type);
        Pane pane(type);
        const QString folder = qEnvironmentVariable("TABWEAVE_SHEET");
        for (const TransformParameter *const each : pane.node->transform().parameters()) {
            const QWidget *const editor = pane.options.editor(each->key);
            QVERIFY2(editor->minimumSizeHint().width() <= 280, qPrintable(each->key));
        }
        QVERIFY(pane.options.minimumSizeHint().width() <= 300);
        if (!folder.isEmpty()) {
            QApplication::processEvents();
            pane.options.grab().save(QString("%1/%2.png").arg(folder, type));
        }
    }

private:
    static void click(const Pane &pane, const QString &toolTip)
    {
        for (QToolButton *const button :
             pane.options.editor("Columns")->findChildren<QToolButton *>()) {
            if (button->toolTip().startsWith(toolTip)) {
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
        QFAIL(qPrintable("no button " + toolTip));
    }
};

TW_TEST_CLASS(TestTransformOptions)
#include "tst_transformoptions.moc"
