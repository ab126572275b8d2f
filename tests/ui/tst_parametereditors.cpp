#include "choicebox.h"
#include "editordriver.h"
#include "icons.h"
#include "messages.h"
#include "parametercodec.h"
#include "parametereditor.h"
#include "parametereditors.h"
#include "parametervalues.h"
#include "testsupport.h"
#include "theme.h"
#include "upstreamitem.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

using Edit = std::function<void(ParameterEditor *)>;
Q_DECLARE_METATYPE(Edit)

namespace {

class Columns final : public UpstreamItem
{
public:
    explicit Columns(const QStringList &names = {})
        : m_names(names)
    {
    }
    QString upstreamName() const override { return "Table"; }
    QStringList upstreamColumns() const override { return m_names; }
    bool upstreamColumnsKnown() const override { return !m_names.isEmpty(); }
    bool upstreamHasHeader() const override { return true; }

private:
    QStringList m_names;
};

} // namespace

using namespace EditorDriver;

class TestParameterEditors : public QObject
{
    Q_OBJECT

    const Columns m_columns{{"id", "name", "price", "date"}};

    TransformParameter parameter(ParameterType type, const QString &stored,
                                 const Columns &columns) const
    {
        TransformParameter made(type, "Label", "Key", &columns);
        made.help = "Help of " + made.label;
        made.options = QStringList{"First", "Second", "Third"};
        if (made.value.isNull()) {
            made.value = QString();
        }
        if (!made.setValueText(stored)) {
            qFatal("%s does not fit", qPrintable(stored));
        }
        made.resolveColumns(&m_messages);
        return made;
    }

    mutable Messages m_messages;

    void addSample(const char *name, ParameterType type, const QString &value)
    {
        QTest::newRow(name) << int(type) << value;
    }

    void addRow(const char *name, ParameterType type, const QString &before, const Edit &edit,
                const QString &after)
    {
        QTest::newRow(name) << int(type) << before << edit << after;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QIcon::setThemeSearchPaths(QStandardPaths::locateAll(
            QStandardPaths::GenericDataLocation, "icons", QStandardPaths::LocateDirectory));
        Icons::prepare();
    }

    void edits_data()
    {
        using Type = ParameterType;
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("before");
        QTest::addColumn<Edit>("edit");
        QTest::addColumn<QString>("after");

        addRow(
            "one column", Type::SingleColumn, "2",
            [](auto *e) { pick(child<ChoiceBox>(e), "ric"); }, "3");
        addRow(
            "one column: begins so", Type::SingleColumn, "1",
            [](auto *e) { pick(child<ChoiceBox>(e), "D"); }, "4");
        addRow(
            "no column", Type::SingleColumn, "2",
            [](auto *e) { pick(child<ChoiceBox>(e), "none"); }, "0");
        addRow(
            "columns: mouse", Type::MultipleColumns, list("2|4"),
            [](auto *e) {
                auto *const view = child<QListWidget>(e);
                const QRect first = view->visualItemRect(view->item(0));
                QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                                  first.topLeft() + QPoint(10, first.height() / 2));
            },
            list("1|2|4"));
        addRow(
            "columns: space", Type::MultipleColumns, list("2|4"),
            [](auto *e) {
                auto *const view = child<QListWidget>(e);
                view->setCurrentRow(1);
                QTest::keyClick(view, Qt::Key_Space);
            },
            "4");
        addRow(
            "columns: all found", Type::MultipleColumns, "1",
            [](auto *e) {
                typeInto(child<QLineEdit>(e), "e");
                press(e, "Check all");
            },
            list("1|2|3|4"));
        addRow(
            "columns: none found", Type::MultipleColumns, list("1|2|3"),
            [](auto *e) {
                typeInto(child<QLineEdit>(e), "am");
                press(e, "Uncheck all");
            },
            list("1|3"));
        addRow(
            "set", Type::ColumnSet, list("1|2|3|4"),
            [](auto *e) {
                auto *const view = child<QListWidget>(e);
                view->setCurrentRow(2);
                QTest::keyClick(view, Qt::Key_Space);
            },
            list("1|2|4"));
        addRow(
            "sort: order", Type::SortColumns, list("2|-4"),
            [](auto *e) { pickCell(e, 0, 1, "Desc"); }, list("-2|-4"));
        addRow(
            "sort: mouse", Type::SortColumns, list("2|-4"),
            [](auto *e) {
                auto *const table = child<QTableView>(e);
                const QRect cell = table->visualRect(table->model()->index(1, 1));
                QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell.center());
                QTRY_VERIFY(QApplication::activePopupWidget());
                auto *const choices =
                    QApplication::activePopupWidget()->findChild<QAbstractItemView *>();
                const QRect first = choices->visualRect(choices->model()->index(0, 0));
                QTest::mouseClick(choices->viewport(), Qt::LeftButton, {}, first.center());
            },
            list("2|4"));
        addRow(
            "sort: column", Type::SortColumns, list("2|-4"),
            [](auto *e) { pickCell(e, 1, 0, "id"); }, list("2|-1"));
        addRow(
            "sort: add", Type::SortColumns, "1", [](auto *e) { press(e, "Add a sort level."); },
            list("1|2"));
        addRow(
            "sort: add by key", Type::SortColumns, "1",
            [](auto *e) {
                child<QTableView>(e)->setFocus();
                QTest::keyClick(child<QTableView>(e), Qt::Key_Insert);
            },
            list("1|2"));
        addRow(
            "sort: remove", Type::SortColumns, list("1|-2|3"),
            [](auto *e) {
                goTo(child<QTableView>(e), 1, 0);
                QTest::keyClick(child<QTableView>(e), Qt::Key_Delete);
            },
            list("1|3"));
        addRow(
            "sort: remove all", Type::SortColumns, list("1|-2|3"),
            [](auto *e) { press(e, "Remove all sort levels."); }, "");
        addRow(
            "sort: down", Type::SortColumns, list("1|-2|3"),
            [](auto *e) {
                goTo(child<QTableView>(e), 0, 0);
                press(e, "Move selected sort levels down.");
                press(e, "Move selected sort levels down.");
            },
            list("-2|3|1"));
        addRow(
            "sort: up", Type::SortColumns, list("1|-2|3"),
            [](auto *e) {
                goTo(child<QTableView>(e), 2, 0);
                QTest::keyClick(child<QTableView>(e), Qt::Key_Up, Qt::AltModifier);
            },
            list("1|3|-2"));
        addRow(
            "filter: value", Type::FilterColumns, list("1|1|price|4|10"),
            [](auto *e) { typeCell(e, 0, 2, "20 %"); }, list("1|1|price|4|20%20%25"));
        addRow(
            "filter: operator", Type::FilterColumns, list("0|1||0|x|name|10|y"),
            [](auto *e) { pickCell(e, 1, 1, "not empty"); }, list("0|1||0|x|name|20|y"));
        addRow(
            "filter: column", Type::FilterColumns, list("1|0|price|4|10"),
            [](auto *e) { pickCell(e, 0, 0, "Any"); }, list("1|0||4|10"));
        addRow(
            "filter: remove rows", Type::FilterColumns, list("1|1|price|4|10"),
            [](auto *e) { pick(child<ChoiceBox>(e, 0), "Remove"); }, list("0|1|price|4|10"));
        addRow(
            "filter: any", Type::FilterColumns, list("1|1|price|4|10"),
            [](auto *e) { pick(child<ChoiceBox>(e, 1), "Matching any"); }, list("1|0|price|4|10"));
        addRow(
            "filter: add", Type::FilterColumns, list("1|1|price|4|10"),
            [](auto *e) {
                goTo(child<QTableView>(e), 0, 0);
                press(e, "Add a term.");
            },
            list("1|1|price|4|10|price|4|"));
        addRow(
            "order: down", Type::ReorderColumns, list("4|1|2|3"),
            [](auto *e) {
                child<QListWidget>(e)->setCurrentRow(0);
                press(e, "Move selected columns down.");
            },
            list("1|4|2|3"));
        addRow(
            "order: bottom", Type::ReorderColumns, "",
            [](auto *e) {
                child<QListWidget>(e)->setCurrentRow(1);
                press(e, "to the bottom");
            },
            list("1|3|4|2"));
        addRow(
            "order: reset", Type::ReorderColumns, list("4|1|2|3"),
            [](auto *e) { press(e, "Go back"); }, "");
        addRow(
            "check box", Type::Bool, "0",
            [](auto *e) { QTest::keyClick(child<QCheckBox>(e), Qt::Key_Space); }, "1");
        addRow(
            "check box: mouse", Type::Bool, "1",
            [](auto *e) {
                auto *const box = child<QCheckBox>(e);
                QTest::mouseClick(box, Qt::LeftButton, {}, {8, box->height() / 2});
            },
            "0");
        addRow(
            "selection", Type::Selection, "First",
            [](auto *e) { pick(child<ChoiceBox>(e), "Third"); }, "Third");
        addRow(
            "selection: arrow", Type::Selection, "First",
            [](auto *e) { QTest::keyClick(child<ChoiceBox>(e), Qt::Key_Down); }, "Second");
        addRow(
            "text", Type::Text, "old", [](auto *e) { typeInto(child<QLineEdit>(e), " a%b "); },
            " a%b ");
        addRow(
            "whole number", Type::Int, "7", [](auto *e) { typeInto(child<QLineEdit>(e), "1234"); },
            "1234");
        addRow(
            "whole number: arrow", Type::Int, "7",
            [](auto *e) { QTest::keyClick(child<QAbstractSpinBox>(e), Qt::Key_Up); }, "8");
        addRow(
            "number", Type::Real, "7", [](auto *e) { typeInto(child<QLineEdit>(e), "0.1"); },
            "0.1");
        addRow(
            "number: arrow", Type::Real, "7.25",
            [](auto *e) { QTest::keyClick(child<QAbstractSpinBox>(e), Qt::Key_Down); }, "6.25");
        addRow(
            "character", Type::Char, "a", [](auto *e) { typeInto(child<QLineEdit>(e), ";"); }, ";");
        addRow(
            "character: none", Type::Char, "a",
            [](auto *e) {
                child<QLineEdit>(e)->selectAll();
                QTest::keyClick(child<QLineEdit>(e), Qt::Key_Delete);
            },
            "");
        addRow(
            "if: then", Type::If, ifText({{{{"price", ComparisonOperator::Greater, "1"}}, "a"}}),
            [](auto *e) { typeCell(e, 0, 2, "b"); },
            ifText({{{{"price", ComparisonOperator::Greater, "1"}}, "b"}}));
        addRow(
            "if: test", Type::If, ifText({{{{"price", ComparisonOperator::Greater, "1"}}, "a"}}),
            [](auto *e) { typeCell(e, 0, 2, "2", 1); },
            ifText({{{{"price", ComparisonOperator::Greater, "2"}}, "a"}}));
        addRow(
            "if: second branch", Type::If,
            ifText({{{{"id", ComparisonOperator::Equal, "1"}}, "a"},
                    {{{"name", ComparisonOperator::Equal, "2"}}, "b"}}),
            [](auto *e) {
                goTo(child<QTableView>(e), 1, 1);
                typeCell(e, 0, 2, "3", 1);
            },
            ifText({{{{"id", ComparisonOperator::Equal, "1"}}, "a"},
                    {{{"name", ComparisonOperator::Equal, "3"}}, "b"}}));
        addRow(
            "if: add", Type::If, ifText({}), [](auto *e) { press(e, "Add an IF"); },
            ifText({{{}, ""}}));
        addRow(
            "if: move", Type::If, ifText({{{}, "a"}, {{{"", ComparisonOperator::Less, "2"}}, "b"}}),
            [](auto *e) {
                goTo(child<QTableView>(e), 1, 2);
                press(e, "Move selected branches up.");
            },
            ifText({{{{"", ComparisonOperator::Less, "2"}}, "b"}, {{}, "a"}}));
        addRow(
            "if: else", Type::If, ifText({{{}, "a"}}, "x"),
            [](auto *e) {
                for (QLineEdit *const line : e->template findChildren<QLineEdit *>()) {
                    if (line->accessibleName() == "ELSE") {
                        typeInto(line, "y");
                    }
                }
            },
            ifText({{{}, "a"}}, "y"));
        addRow(
            "script", Type::Script, "return 1;",
            [](auto *e) {
                auto *const text = child<QPlainTextEdit>(e);
                text->moveCursor(QTextCursor::End);
                QTest::keyClick(text, Qt::Key_Return);
                QTest::keyClick(text, Qt::Key_Tab);
                QTest::keyClicks(text, "//");
            },
            "return 1;\n\t//");
        addRow(
            "script: column", Type::Script, "return ",
            [](auto *e) {
                child<QPlainTextEdit>(e)->moveCursor(QTextCursor::End);
                pick(child<ChoiceBox>(e), "price");
            },
            "return $(3)");
        addRow(
            "long text", Type::LongText, QString("a") + QChar(0xa0),
            [](auto *e) {
                auto *const text = child<QPlainTextEdit>(e);
                text->moveCursor(QTextCursor::End);
                QTest::keyClick(text, Qt::Key_Return);
                QTest::keyClicks(text, "b");
            },
            QString("a") + QChar(0xa0) + "\nb");
        addRow(
            "rename", Type::RenameColumns, list("*NORENAME*|n|*NORENAME*|*NORENAME*"),
            [](auto *e) { typeCell(e, 2, 1, "cost"); }, list("*NORENAME*|n|cost|*NORENAME*"));
        addRow(
            "rename: keep old name", Type::RenameColumns,
            list("*NORENAME*|n|*NORENAME*|*NORENAME*"),
            [](auto *e) {
                goTo(child<QTableView>(e), 1, 1);
                QTest::keyClick(child<QTableView>(e), Qt::Key_Space);
            },
            list("*NORENAME*|*NORENAME*|*NORENAME*|*NORENAME*"));
        addRow(
            "rename: pin the old name", Type::RenameColumns,
            list("*NORENAME*|n|*NORENAME*|*NORENAME*"),
            [](auto *e) {
                goTo(child<QTableView>(e), 3, 1);
                QTest::keyClick(child<QTableView>(e), Qt::Key_Space);
            },
            list("*NORENAME*|n|*NORENAME*|date"));
        addRow(
            "parts: width", Type::SplitRows, list("fixed|2|1|3"),
            [](auto *e) {
                typeInto(child<QAbstractSpinBox>(e, 0)->template findChild<QLineEdit *>(), "4");
            },
            list("fixed|2|4|3"));
        addRow(
            "parts: mode", Type::SplitRows, list("fixed|2|1|3"),
            [](auto *e) { pick(child<ChoiceBox>(e), "By matching"); }, list("matching|2|1|3"));
        addRow(
            "parts: first", Type::SplitRows, list("fixed|2|1|3"),
            [](auto *e) { pick(child<ChoiceBox>(e, 1), "price"); }, list("fixed|3|1|3"));
        addRow(
            "unique", Type::Unique, list("1|Unique|3|Sum"),
            [](auto *e) { pickCell(e, 1, 1, "Concatenate distinct"); },
            list("1|Unique|2|Concatenate%20distinct|3|Sum"));
        addRow(
            "unique: several", Type::Unique, list("1|Unique"),
            [](auto *e) {
                child<QTableView>(e)->selectAll();
                pick(child<ChoiceBox>(e), "Median");
            },
            list("1|Median|2|Median|3|Median|4|Median"));
        addRow(
            "replace", Type::ReplaceTerms, list("a|b|text|c||regex"),
            [](auto *e) { typeCell(e, 1, 1, "d"); }, list("a|b|text|c|d|regex"));
        addRow(
            "replace: kind", Type::ReplaceTerms, list("a|b|text"),
            [](auto *e) { pickCell(e, 0, 2, "Whole cell"); }, list("a|b|cell"));
        addRow(
            "replace: add", Type::ReplaceTerms, list("a|b|word"),
            [](auto *e) {
                goTo(child<QTableView>(e), 0, 0);
                press(e, "Add a term.");
                auto *const line = editing<QLineEdit>(child<QTableView>(e));
                QVERIFY(line);
                QTest::keyClicks(line, "x");
            },
            list("a|b|word|x||word"));
        addRow(
            "rules: rule", Type::VerifyRules, list("price|0|"),
            [](auto *e) { pickCell(e, 0, 1, "whole"); }, list("price|3|"));
        addRow(
            "rules: value", Type::VerifyRules, list("|9|1|name|15|a"),
            [](auto *e) { typeCell(e, 1, 2, "b"); }, list("|9|1|name|15|b"));
    }

    static QString ifText(const QList<IfBranch> &branches, const QString &elseValue = {})
    {
        return ParameterCodec::write(IfSpec{branches, elseValue});
    }

    /// What is shown is what is stored, and an edit changes nothing but what is edited.
    void edits()
    {
        QFETCH(int, type);
        QFETCH(QString, before);
        QFETCH(Edit, edit);
        QFETCH(QString, after);
        TransformParameter record = parameter(ParameterType(type), before, m_columns);
        const std::unique_ptr<ParameterEditor> editor(makeParameterEditor(record.type, nullptr));
        QSignalSpy spy(editor.get(), &ParameterEditor::edited);
        editor->resize(300, 400);
        editor->show();
        editor->setParameter(record);
        QApplication::setActiveWindow(editor.get());
        QVERIFY(QTest::qWaitForWindowActive(editor.get()));
        QCOMPARE(spy.count(), 0);

        edit(editor.get());
        if (QTest::currentTestFailed()) {
            return;
        }
        QVERIFY(!spy.isEmpty());
        for (const QList<QVariant> &told : qAsConst(spy)) {
            QCOMPARE(told.first().toString(), QString("Key"));
            record.value = told.last();
        }
        QCOMPARE(record.valueText(), after);
        // The editor has to show what it told: the same again changes nothing.
        spy.clear();
        editor->setParameter(record);
        QCOMPARE(spy.count(), 0);
        QVERIFY2(editor->problem().isEmpty(), qPrintable(editor->problem()));
    }

    void everythingHasANameAndFits_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("value");
        addSample("SingleColumn", ParameterType::SingleColumn, "3");
        addSample("SingleColumn none", ParameterType::SingleColumn, "0");
        addSample("MultipleColumns", ParameterType::MultipleColumns, list("1|3"));
        addSample("SortColumns", ParameterType::SortColumns, list("3|-2"));
        addSample("SortColumns none", ParameterType::SortColumns, "");
        addSample("FilterColumns", ParameterType::FilterColumns,
                  list("1|1|unit price|4|10||9|cancelled|order date|19|"));
        addSample("FilterColumns wrong", ParameterType::FilterColumns, list("0|1|gone|8|[a"));
        addSample("ReorderColumns", ParameterType::ReorderColumns, list("4|1|2|3"));
        addSample("Bool", ParameterType::Bool, "1");
        addSample("Selection", ParameterType::Selection, "Second");
        addSample("Text", ParameterType::Text, "Some text");
        addSample("Text blank", ParameterType::Text, " ");
        addSample("Int", ParameterType::Int, "1234");
        addSample("Char", ParameterType::Char, ";");
        addSample("If", ParameterType::If,
                  ifText({{{{"unit price", ComparisonOperator::Greater, "100"},
                            {"", ComparisonOperator::Contains, "x"}},
                           "expensive"},
                          {{{"customer name", ComparisonOperator::IsEmpty, ""}}, "nobody"}},
                         "cheap"));
        addSample("ColumnSet", ParameterType::ColumnSet, list("1|2|4"));
        addSample("Script", ParameterType::Script,
                  "// the tenth\nif (row % 10 == 0) {\n\treturn number($(3)) * 1.2;\n}\n"
                  "return $(1);");
        addSample("RenameColumns", ParameterType::RenameColumns,
                  list("*NORENAME*|customer|*NORENAME*|*NORENAME*"));
        addSample("SplitRows", ParameterType::SplitRows, list("fixed|2|1|3"));
        addSample("Unique", ParameterType::Unique, list("2|Unique|3|Concatenate%20distinct"));
        addSample("ReplaceTerms", ParameterType::ReplaceTerms,
                  list("Ltd|Limited|word|%5Cs%2B| |regex"));
        addSample("Real", ParameterType::Real, "12.5");
        addSample("LongText", ParameterType::LongText, "Dear $(customer name),\n\nyour order");
        addSample("VerifyRules", ParameterType::VerifyRules,
                  list("customer name|26||unit price|10|0||38|1|order date|6|"));
    }

    /// At 300 pixels nothing is cut off, and everything that gets the focus has a name.
    void everythingHasANameAndFits()
    {
        QFETCH(int, type);
        QFETCH(QString, value);
        for (const ThemeChoice theme : {ThemeChoice::Light, ThemeChoice::Dark}) {
            applyTheme(qApp, theme);
            Icons::followTheme();
            TransformParameter record = parameter(ParameterType(type), value, m_sampleColumns);
            QWidget pane;
            auto *const layout = new QVBoxLayout(&pane);
            layout->setContentsMargins(8, 8, 8, 8);
            ParameterEditor *const editor = makeParameterEditor(record.type, &pane);
            auto *const label = new QLabel(QTest::currentDataTag());
            layout->addWidget(label);
            layout->addWidget(editor);
            editor->setParameter(record);
            QVERIFY2(editor->minimumSizeHint().width() <= 284,
                     qPrintable(QString::number(editor->minimumSizeHint().width())));
            pane.resize(300, 400);
            pane.show();
            for (QWidget *const field : editor->findChildren<QWidget *>()) {
                const bool isInner = qobject_cast<QLineEdit *>(field) &&
                                     qobject_cast<QAbstractSpinBox *>(field->parentWidget());
                if (field->focusPolicy() & Qt::TabFocus && field->isVisible() && !isInner) {
                    QVERIFY2(!QAccessible::queryAccessibleInterface(field)
                                  ->text(QAccessible::Name)
                                  .isEmpty(),
                             field->metaObject()->className());
                }
            }
            addToSheet(&pane, theme == ThemeChoice::Dark);
        }
    }

    void cleanupTestCase()
    {
        applyTheme(qApp, ThemeChoice::Light);
        Icons::followTheme();
        for (int i = 0; i < 2; ++i) {
            if (!m_sheets[i].isNull()) {
                m_sheets[i].save(QString("%1/editors%2.png").arg(sheetFolder()).arg(i));
            }
        }
    }

private:
    /// Where the pictures of all editors are wanted, to be looked at.
    static QString sheetFolder() { return qEnvironmentVariable("TABWEAVE_SHEET"); }

    void addToSheet(QWidget *pane, bool isDark)
    {
        if (sheetFolder().isEmpty()) {
            return;
        }
        constexpr int width = 310;
        constexpr int height = 500;
        constexpr int perRow = 6;
        QImage &sheet = m_sheets[isDark ? 1 : 0];
        int &count = m_counts[isDark ? 1 : 0];
        if (sheet.isNull()) {
            sheet = QImage(perRow * width, 4 * height, QImage::Format_RGB32);
            sheet.fill(Qt::gray);
        }
        // The height of tables follows their width.
        for (int i = 0; i < 4; ++i) {
            pane->resize(300, pane->layout()->totalHeightForWidth(300));
            QApplication::processEvents();
        }
        QPainter painter(&sheet);
        painter.drawPixmap(count % perRow * width, count / perRow * height, pane->grab());
        ++count;
    }

    QImage m_sheets[2];
    int m_counts[2] = {0, 0};
    Columns m_sampleColumns{{"id", "customer name", "unit price", "order date"}};
};

TW_TEST_CLASS(TestParameterEditors)
#include "tst_parametereditors.moc"
