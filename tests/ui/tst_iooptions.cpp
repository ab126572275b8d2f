#include "fixedwidtheditor.h"
#include "fixedwidthview.h"
#include "icons.h"
#include "inputexcerpt.h"
#include "inputnode.h"
#include "inputoptionseditor.h"
#include "inputpreview.h"
#include "inputreader.h"
#include "optionbench.h"
#include "outputoptions.h"
#include "outputwriter.h"
#include "schemaeditor.h"
#include "testsupport.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QProgressDialog>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>

namespace {

using InputBench = OptionBench<InputNode, InputOptions, InputOptionsEditor>;

InputOptions optionsOf(FileType type, Medium medium = Medium::File)
{
    InputOptions options;
    options.fileType = type;
    options.medium = medium;
    return options;
}

/// An option's value as a text, by the key of its field.
QString stored(const InputNode &node, const QByteArray &key)
{
    const InputOptions &o = node.options();
    const std::map<QByteArray, QString> values{
        {"medium", QString::number(int(o.medium))},
        {"path", o.path},
        {"text", o.text},
        {"file_type", QString::number(int(o.fileType))},
        {"delimiter", QString::number(int(o.delimiter))},
        {"custom_delimiter", o.customDelimiter},
        {"quote", QString::number(int(o.quoting))},
        {"ignore_repeated_delim", QString::number(o.ignoreRepeatedDelimiter)},
        {"encoding", o.encoding},
        {"ignored_rows", QString::number(o.ignoredRows)},
        {"header", QString::number(o.header)},
        {"trim", QString::number(o.trim)},
        {"simplify", QString::number(o.simplify)},
        {"ignore_empty", QString::number(o.ignoreEmptyRows)},
        {"ignore_empty_cols", QString::number(o.ignoreEmptyColumns)},
        {"ignore_excel_hidden_rows", QString::number(o.ignoreExcelHiddenRows)},
        {"ignore_excel_hidden_cols", QString::number(o.ignoreExcelHiddenColumns)},
        {"auto_fixed_widths", QString::number(o.autoFixedWidths)},
        {"fixed_widths", widthsText(o.fixedWidths)},
        {"worksheet", o.worksheet},
        {"json_arrays_as_rows", QString::number(o.jsonArraysAsRows)},
        {"watching", QString::number(o.watching)},
        {"show_meta", QString::number(o.showMeta)},
        {"meta_text", o.metaText},
        {"schema_in_use", QString::number(o.schemaInUse)},
        {"schema_missing_cols", QString::number(int(o.schemaMissing))},
        {"schema_reorder_cols", QString::number(int(o.schemaOrder))},
        {"schema_extra_cols", QString::number(int(o.schemaExtra))},
        {"alias", node.alias()},
    };
    return values.at(key);
}

/// Presses the button with that text.
void press(QWidget *parent, const QString &text)
{
    for (QAbstractButton *button : parent->findChildren<QAbstractButton *>()) {
        if (button->text() == text) {
            button->click();
            return;
        }
    }
    QFAIL(qPrintable(text));
}

/// Does something with the dialog that is about to open, once it is there.
void whenDialogOpens(const std::function<void(QDialog *)> &action)
{
    auto *timer = new QTimer;
    QObject::connect(timer, &QTimer::timeout, [timer, action] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (dialog && !qobject_cast<QProgressDialog *>(dialog)) {
            timer->deleteLater();
            timer->stop();
            // A dialog that stays open fails the test; it must not stop it.
            QTimer::singleShot(5000, dialog, &QDialog::reject);
            action(dialog);
        }
    });
    timer->start(20);
}

/// Adds a sheet to a workbook, which need not exist.
void writeSheet(const QString &path, const QString &sheet, const QString &text)
{
    InputOptions input = optionsOf(FileType::DelimitedText, Medium::Clipboard);
    input.text = text;
    Messages messages;
    const Dataset table = readInput(input, QString(), &messages, Progress());
    OutputOptions options;
    options.fileType = FileType::ExcelXlsx;
    options.path = path;
    options.worksheet = sheet;
    options.overwriteSheet = true;
    writeOutput(options, table, OutputContext(), &messages, Progress());
    QVERIFY2(!messages.failed, qPrintable(messages.warnings.join(' ')));
}

} // namespace

class TestIoOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Icons::prepare(); }

    void shownInputOptions_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("medium");
        QTest::addColumn<QString>("shown");

        const auto addRow = [](const char *name, FileType type, Medium medium, const char *shown) {
            QTest::newRow(name) << int(type) << int(medium) << QString(shown);
        };
        const Medium file = Medium::File;
        addRow("delimited", FileType::DelimitedText, file,
               "path watching delimiter ignore_repeated_delim quote encoding ignored_rows header");
        addRow("delimited text", FileType::DelimitedText, Medium::Clipboard,
               "text paste delimiter ignore_repeated_delim quote ignored_rows header");
        addRow("xlsx", FileType::ExcelXlsx, file,
               "path watching worksheet ignored_rows header ignore_excel_hidden_rows "
               "ignore_excel_hidden_cols");
        addRow("xls", FileType::ExcelXls, file,
               "path watching worksheet ignored_rows header ignore_excel_hidden_rows "
               "ignore_excel_hidden_cols");
        addRow("fixed", FileType::FixedWidth, file,
               "path watching auto_fixed_widths edit_widths encoding ignored_rows header");
        addRow("json", FileType::Json, file, "path watching json_arrays_as_rows");
        addRow("xml", FileType::Xml, file, "path watching json_arrays_as_rows encoding");
        addRow("vcard", FileType::VCard, file, "path watching encoding ignored_rows");
        addRow("yaml", FileType::Yaml, file,
               "path watching delimiter ignore_repeated_delim quote encoding header");
        addRow("html", FileType::Html, file,
               "path watching delimiter ignore_repeated_delim quote encoding header");
        addRow("markdown", FileType::Markdown, file,
               "path watching delimiter ignore_repeated_delim quote encoding header");
        addRow("plain", FileType::PlainText, file, "path watching encoding ignored_rows header");
    }

    void shownInputOptions()
    {
        QFETCH(int, type);
        QFETCH(int, medium);
        QFETCH(QString, shown);
        InputBench bench(optionsOf(FileType(type), Medium(medium)));
        QStringList expected = shown.split(' ');
        expected << "medium"
                 << "file_type"
                 << "trim"
                 << "simplify"
                 << "ignore_empty"
                 << "ignore_empty_cols"
                 << "schema_in_use"
                 << "alias"
                 << "show_meta";
        expected.sort();
        QCOMPARE(bench.shownFields(), expected);
        QCOMPARE(bench.unnamedControls(), QStringList());
    }

    void fitsNarrowPane_data() { shownInputOptions_data(); }

    void fitsNarrowPane()
    {
        QFETCH(int, type);
        QFETCH(int, medium);
        InputOptions options = optionsOf(FileType(type), Medium(medium));
        options.schemaInUse = true;
        options.showMeta = true;
        options.delimiter = Delimiter::Custom;
        options.autoFixedWidths = false;
        InputBench bench(options);
        QCOMPARE(bench.cutFields(), QStringList());
    }

    void inputEdits_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("expected");

        const auto addRow = [](const char *key, FileType type, const char *action,
                               const char *expected) {
            QTest::addRow("%s %s", key, action)
                << QByteArray(key) << int(type) << QString(action) << QString(expected);
        };
        const FileType csv = FileType::DelimitedText;
        const FileType xlsx = FileType::ExcelXlsx;
        const FileType fixed = FileType::FixedWidth;
        addRow("medium", csv, "down", "1");
        addRow("path", csv, "orders.csv", "orders.csv");
        addRow("file_type", csv, "down", "1");
        addRow("delimiter", csv, "down", "1");
        addRow("custom_delimiter", csv, "#", "#");
        addRow("quote", csv, "down", "1");
        addRow("ignore_repeated_delim", csv, "click", "1");
        addRow("encoding", csv, "UTF-16", "UTF-16");
        addRow("ignored_rows", csv, "up", "1");
        addRow("header", csv, "space", "0");
        addRow("trim", csv, "click", "1");
        addRow("simplify", csv, "space", "1");
        addRow("ignore_empty", csv, "click", "0");
        addRow("ignore_empty_cols", csv, "click", "1");
        addRow("ignore_excel_hidden_rows", xlsx, "click", "1");
        addRow("ignore_excel_hidden_cols", xlsx, "space", "1");
        addRow("worksheet", xlsx, "Sales", "Sales");
        addRow("auto_fixed_widths", fixed, "up", "1");
        addRow("fixed_widths", fixed, "3, 4", "3, 4");
        addRow("json_arrays_as_rows", FileType::Json, "down", "0");
        addRow("watching", csv, "click", "1");
        addRow("show_meta", csv, "click", "0");
        addRow("meta_text", csv, "by hand", "by hand");
        addRow("schema_in_use", csv, "click", "0");
        addRow("schema_missing_cols", csv, "down", "1");
        addRow("schema_reorder_cols", csv, "down", "1");
        addRow("schema_extra_cols", csv, "down", "1");
        addRow("alias", csv, "orders", "orders");
    }

    /// An edit arrives in the item as one step and goes away by undo, in item and field.
    void inputEdits()
    {
        QFETCH(QByteArray, key);
        QFETCH(int, type);
        QFETCH(QString, action);
        QFETCH(QString, expected);
        InputOptions options = optionsOf(FileType(type));
        options.showMeta = true;
        options.schemaInUse = true;
        options.autoFixedWidths = false;
        options.fixedWidths = {9};
        options.delimiter = key == "delimiter" ? Delimiter::Automatic : Delimiter::Custom;
        options.customDelimiter = ";";
        InputBench bench(options);
        checkEdit(&bench, key, action, expected, stored);
    }

    void editsOfClipboardText()
    {
        InputBench bench(optionsOf(FileType::DelimitedText, Medium::Clipboard));
        act(bench.field("text")->editor(), "a,b");
        QCOMPARE(bench.node->options().text, QString("a,b"));
        bench.user.clipboard = "[{\"a\": 1}]";
        QTest::mouseClick(bench.field("paste")->editor(), Qt::LeftButton);
        QCOMPARE(bench.node->options().text, *bench.user.clipboard);
        QCOMPARE(bench.node->options().fileType, FileType::Json);
    }

    void undoKeepsFocusAndCaret()
    {
        InputBench bench;
        QLineEdit *path = bench.line("path");
        path->setFocus();
        QTest::keyClicks(path, "abcdef");
        QTest::keyClick(path, Qt::Key_Home);
        QTest::keyClick(path, Qt::Key_Right);
        QTest::mouseClick(bench.field("trim")->editor(), Qt::LeftButton, {}, QPoint(8, 8));
        path->setFocus();
        path->deselect();
        path->setCursorPosition(1);
        bench.scene.undo();
        QVERIFY(!bench.node->options().trim);
        QCOMPARE(path->text(), QString("abcdef"));
        QCOMPARE(path->cursorPosition(), 1);
        QVERIFY(path->hasFocus());
        bench.scene.undo();
        QCOMPARE(path->text(), QString());
        bench.scene.redo();
        QCOMPARE(path->text(), QString("abcdef"));
        QVERIFY(path->hasFocus());
    }

    /// A text that cannot be taken stays with its reason, and the item keeps the last valid one.
    void refusedTexts_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("kept");
        const auto addRow = [](const char *key, FileType type, const char *text, const char *kept) {
            QTest::newRow(key) << QByteArray(key) << int(type) << QString(text) << QString(kept);
        };
        addRow("encoding", FileType::DelimitedText, "gibberish", "Automatic");
        addRow("fixed_widths", FileType::FixedWidth, "3, 0", "9");
        addRow("alias", FileType::DelimitedText, "taken", "take");
    }

    void refusedTexts()
    {
        QFETCH(QByteArray, key);
        QFETCH(int, type);
        QFETCH(QString, text);
        QFETCH(QString, kept);
        InputOptions options = optionsOf(FileType(type));
        options.autoFixedWidths = false;
        options.fixedWidths = {9};
        InputBench bench(options);
        bench.scene.insert(std::make_unique<InputNode>())->setAlias("taken");
        QLineEdit *edit = bench.line(key);
        edit->selectAll();
        QTest::keyClicks(edit, text);
        QVERIFY(!bench.field(key)->problem().isEmpty());
        QCOMPARE(edit->text(), text);
        if (key == "fixed_widths") {
            kept = "3"; // "3" alone was valid
        }
        QCOMPARE(stored(*bench.node, key), kept);
        // Something else about the item changes: the text stays.
        bench.scene.editName(bench.node, "Named");
        QCOMPARE(edit->text(), text);
        // Another item: it does not.
        InputNode *other = bench.scene.insert(std::make_unique<InputNode>());
        bench.editor.setNode(other);
        QCOMPARE(edit->text(), stored(*other, key));
        QVERIFY(bench.field(key)->problem().isEmpty());
    }

    void pathRelation()
    {
        const QTemporaryDir folder;
        InputBench bench;
        bench.scene.document().path = folder.filePath("doc.transform");
        act(bench.line("path"), "sub/a.csv");
        auto *relative = bench.field("path")->findChild<QCheckBox *>();
        QVERIFY(relative->isVisible() && relative->isChecked());
        QVERIFY(bench.field("path")->problem().contains("not found"));
        act(relative, "space");
        QCOMPARE(bench.node->options().path, folder.filePath("sub/a.csv"));
        act(relative, "space");
        QCOMPARE(bench.node->options().path, QString("sub/a.csv"));
        act(bench.line("path"), "/elsewhere/a.csv");
        QVERIFY(!relative->isVisible());
        QCOMPARE(bench.node->options().path, QString("/elsewhere/a.csv"));
    }

    /// A file that is chosen in the dialog gives its type, too, and is relative to the document.
    void chosenFile()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath("chosen.json"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[]");
        file.close();
        InputBench bench;
        bench.scene.document().path = folder.filePath("doc.transform");
        whenDialogOpens([&file](QDialog *dialog) {
            QVERIFY(qobject_cast<QFileDialog *>(dialog));
            dialog->findChild<QLineEdit *>()->setText(file.fileName());
            dialog->accept();
        });
        press(bench.field("path"), "Browse...");
        QCOMPARE(bench.node->options().path, QString("chosen.json"));
        QCOMPARE(bench.node->options().fileType, FileType::Json);
        QCOMPARE(bench.scene.undoStack().count(), 1);
        bench.scene.undo();
        QCOMPARE(bench.line("path")->text(), QString());
    }

    void chosenSheet()
    {
        const QTemporaryDir folder;
        InputOptions options = optionsOf(FileType::ExcelXlsx);
        options.path = folder.filePath("book.xlsx");
        writeSheet(options.path, "First", "a,b\n1,2\n3,4\n");
        writeSheet(options.path, "Second", "a\n1\n");
        InputBench bench(options);
        QStringList offered;
        whenDialogOpens([&offered](QDialog *dialog) {
            auto *list = dialog->findChild<QListWidget *>();
            QVERIFY(list);
            for (int i = 0; i < list->count(); ++i) {
                offered.append(list->item(i)->text());
            }
            QTest::keyClick(list, Qt::Key_Down);
            dialog->accept();
        });
        press(bench.field("worksheet"), "Choose...");
        QCOMPARE(offered, QStringList({"First (2 cols x 3 rows)", "Second (1 cols x 2 rows)"}));
        QCOMPARE(bench.node->options().worksheet, QString("Second"));
        QCOMPARE(bench.line("worksheet")->text(), QString("Second"));
        auto *preview = bench.editor.findChild<InputPreview *>();
        QTRY_COMPARE(preview->dataset().columnCount().value(), 1);
    }

    /// The schema is made from the columns of the file, not from those that an older one made.
    void importedSchema()
    {
        InputOptions options = optionsOf(FileType::DelimitedText, Medium::Clipboard);
        options.text = "new,columns\n1,2\n";
        options.schemaInUse = true;
        options.schemaColumnNames = QStringList{"old"};
        InputBench bench(options);
        bench.node->process(ProcessContext());
        whenDialogOpens([](QDialog *dialog) {
            press(dialog, "&Import");
            dialog->accept();
        });
        QTest::mouseClick(bench.field("schema_col_name")->editor(), Qt::LeftButton);
        QCOMPARE(bench.node->options().schemaColumnNames, QStringList({"new", "columns"}));
        bench.scene.undo();
        QCOMPARE(bench.node->options().schemaColumnNames, QStringList({"old"}));
    }

    void chosenWidths()
    {
        InputOptions options = optionsOf(FileType::FixedWidth, Medium::Clipboard);
        options.text = "ab cde\n12 345\n";
        InputBench bench(options);
        whenDialogOpens([](QDialog *dialog) {
            act(dialog->findChild<QLineEdit *>(), "2, 4");
            dialog->accept();
        });
        QTest::mouseClick(bench.field("edit_widths")->editor(), Qt::LeftButton);
        QCOMPARE(bench.node->options().fixedWidths, QList<int>({2, 4}));
        QVERIFY(!bench.node->options().autoFixedWidths);
        QVERIFY(!bench.field("fixed_widths")->isHidden());
        bench.scene.undo();
        QVERIFY(bench.node->options().autoFixedWidths);
        // By hand, without widths: those that were guessed.
        act(bench.field("auto_fixed_widths")->editor(), "down");
        QCOMPARE(bench.node->options().fixedWidths, QList<int>({3, 3}));
    }

    void schemaEditor()
    {
        SchemaEditor editor([](QStringList *columns) {
            *columns = QStringList{"x", "y"};
            return true;
        });
        const QStringList names{"name", "price", "cur\trency"};
        const QStringList values{"", "0", "\"EUR\""};
        editor.setSchema(names, values);
        QCOMPARE(editor.names(), names);
        QCOMPARE(editor.missingValues(), values);
        QVERIFY(!editor.isWindowModified());

        press(&editor, "&Copy");
        press(&editor, "C&lear");
        QCOMPARE(editor.names(), QStringList());
        QVERIFY(editor.isWindowModified());
        press(&editor, "&Paste");
        QCOMPARE(editor.names(), names);
        QCOMPARE(editor.missingValues(), values);

        auto *table = editor.findChild<QTableWidget *>();
        table->selectRow(0);
        press(&editor, "Move d&own");
        QCOMPARE(editor.names(), QStringList({"price", "name", "cur\trency"}));
        QCOMPARE(editor.missingValues().first(), QString("0"));
        table->selectRow(0);
        press(&editor, "&Add");
        QCOMPARE(editor.names(), QStringList({"price", "", "name", "cur\trency"}));
        editor.accept();
        QCOMPARE(editor.result(), 0); // refused: a name is blank
        table->item(1, 0)->setText("new");
        table->selectRow(3);
        press(&editor, "&Delete");
        QCOMPARE(editor.names(), QStringList({"price", "new", "name"}));
        press(&editor, "&Import");
        QCOMPARE(editor.names(), QStringList({"x", "y"}));
        editor.accept();
        QCOMPARE(editor.result(), int(QDialog::Accepted));
    }

    void fixedWidthBoundaries()
    {
        FixedWidthEditor editor({"abcdefghij", "1234567890"}, 0);
        editor.setWidths({3, 4});
        editor.show();
        auto *view = editor.findChild<FixedWidthView *>();
        auto *edit = editor.findChild<QLineEdit *>();
        QCOMPARE(edit->text(), QString("3, 4"));
        const auto at = [view](int position) { return QPoint(view->xOf(position), 30); };

        QTest::mousePress(view->viewport(), Qt::LeftButton, {}, at(3));
        // QTest::mouseMove() moves the pointer of the screen, which there is none of.
        QMouseEvent move(QEvent::MouseMove, at(5), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(view->viewport(), &move);
        QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, at(5));
        QCOMPARE(editor.widths(), QList<int>({5, 2}));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, at(2));
        QCOMPARE(editor.widths(), QList<int>({2, 3, 2}));
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, at(5));
        QCOMPARE(editor.widths(), QList<int>({2, 5}));
        QCOMPARE(edit->text(), QString("2, 5"));

        view->setFocus();
        QTest::keyClick(view, Qt::Key_Home);
        QTest::keyClick(view, Qt::Key_Right, Qt::ControlModifier);
        QTest::keyClick(view, Qt::Key_Right, Qt::ShiftModifier);
        QCOMPARE(editor.widths(), QList<int>({3, 4}));
        QTest::keyClick(view, Qt::Key_Right);
        QTest::keyClick(view, Qt::Key_Space);
        QCOMPARE(editor.widths(), QList<int>({3, 1, 3}));
        QTest::keyClick(view, Qt::Key_Delete);
        QCOMPARE(editor.widths(), QList<int>({3, 4}));
        QTest::keyClick(view, Qt::Key_Home);
        QTest::keyClick(view, Qt::Key_Space);
        QCOMPARE(editor.widths(), QList<int>({3, 4}));

        act(edit, "1,2,3");
        QCOMPARE(view->boundaries(), QList<int>({1, 3, 6}));
        act(edit, "1,x");
        QCOMPARE(view->boundaries(), QList<int>({1}));
    }

    void excerpts_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("beginning");
        QTest::addColumn<QString>("closed");
        const auto addRow = [](const char *name, FileType type, const char *beginning,
                               const char *closed) {
            QTest::newRow(name) << int(type) << QString(beginning) << QString(closed);
        };
        addRow("json", FileType::Json, "[{\"a\":\"x,]\"},{\"a\":2},{\"a\"",
               "[{\"a\":\"x,]\"},{\"a\":2}]");
        addRow("json in a value", FileType::Json, "{\"r\":[{\"a\":1,\"b\":\"\\\"",
               "{\"r\":[{\"a\":1}]}");
        addRow("json lines", FileType::Json, "{\"a\":1}\n{\"a\":", "{\"a\":1}");
        addRow("xml", FileType::Xml, "<r><a><b>1</b></a><a><b>2</b><c",
               "<r><a><b>1</b></a><a><b>2</b></a></r>");
        addRow("vcard", FileType::VCard, "BEGIN:VCARD\nFN:A\nEND:VCARD\nBEGIN:V",
               "BEGIN:VCARD\nFN:A\nEND:VCARD");
        addRow("lines", FileType::DelimitedText, "a,b\n1,2\n3", "a,b\n1,2\n");
    }

    void excerpts()
    {
        QFETCH(int, type);
        QFETCH(QString, beginning);
        QFETCH(QString, closed);
        QCOMPARE(closedText(beginning, FileType(type)), closed);
        InputOptions options = optionsOf(FileType(type), Medium::Clipboard);
        options.text = closed;
        Messages messages;
        QVERIFY(readInput(options, QString(), &messages, Progress()).hasRows());
        QVERIFY2(!messages.failed, qPrintable(messages.warnings.join(' ')));
    }

    void previewFollowsOptions()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath("long.csv"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        for (int i = 0; i < 50000; ++i) {
            file.write("abc;1\n");
        }
        file.close();
        InputOptions options;
        options.path = file.fileName();
        InputBench bench(options);
        auto *preview = bench.editor.findChild<InputPreview *>();
        QTRY_COMPARE(preview->dataset().columnCount().value(), 2);
        QVERIFY(preview->dataset().rowCount() < 50000);
        QVERIFY(preview->dataset().hasHeader());
        act(bench.field("header")->editor(), "space");
        QTRY_VERIFY(!preview->dataset().hasHeader());
        QCOMPARE(bench.node->status(), ItemStatus::NeedsUpdating);
    }
};

TW_TEST_CLASS(TestIoOptions)

#include "tst_iooptions.moc"
