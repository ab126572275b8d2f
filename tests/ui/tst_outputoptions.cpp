#include "inputnode.h"
#include "optionbench.h"
#include "outputnode.h"
#include "outputoptionseditor.h"
#include "testsupport.h"

#include <QComboBox>
#include <QTableView>
#include <QTemporaryDir>

namespace {

using OutputBench = OptionBench<OutputNode, OutputOptions, OutputOptionsEditor>;

OutputOptions optionsOf(FileType type, Medium medium = Medium::File)
{
    OutputOptions options;
    options.fileType = type;
    options.medium = medium;
    return options;
}

/// An input that has run: columns id, name and price.
Node *ranInput()
{
    InputOptions options;
    options.medium = Medium::Clipboard;
    options.text = "id,name,price\n1,a,2\n";
    auto *node = new InputNode(options);
    node->process(ProcessContext());
    return node;
}

/// An option's value as a text, by the key of its field.
QString stored(const OutputNode &node, const QByteArray &key)
{
    const OutputOptions &o = node.options();
    const std::map<QByteArray, QString> values{
        {"medium", QString::number(int(o.medium))},
        {"path", o.path},
        {"file_type", QString::number(int(o.fileType))},
        {"enable_output", QString::number(int(o.writeMode))},
        {"single_or_multi", QString::number(o.multiFile)},
        {"multi_file_column", o.multiFileColumn},
        {"multi_file_confirm", QString::number(o.multiFileConfirm)},
        {"delimiter", QString::number(int(o.delimiter))},
        {"custom_delimiter", o.customDelimiter},
        {"quote", QString::number(int(o.quoting))},
        {"line_endings", QString::number(int(o.lineEnding))},
        {"encoding", o.encoding},
        {"bom", QString::number(o.byteOrderMark)},
        {"write_header", QString::number(o.writeHeader)},
        {"write_header_first_append_only", QString::number(o.headerOnlyIfEmpty)},
        {"remove_empty", QString::number(o.removeEmpty)},
        {"json_types", QString::number(o.jsonTypes)},
        {"json_manual_col_types", o.jsonManualColumnTypes.join('|')},
        {"excel_output", QString::number(o.excelOutput)},
        {"excel_manual_col_formats", o.excelManualColumnFormats.join('|')},
        {"excel_use_style_template", QString::number(o.excelUseStyleTemplate)},
        {"excel_style_template_path", o.excelStyleTemplatePath},
        {"overwrite_sheet", QString::number(o.overwriteSheet)},
        {"worksheet", o.worksheet},
        {"xml_above_root", o.xmlAboveRoot},
        {"xml_root", o.xmlRoot},
        {"xml_below_root", o.xmlBelowRoot},
        {"xml_row", o.xmlRow},
        {"html_encode", QString::number(o.htmlEncode)},
        {"file_comment", o.fileComment},
        {"alias", node.alias()},
    };
    return values.at(key);
}

} // namespace

class TestOutputOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void shownOptions_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("medium");
        QTest::addColumn<QString>("shown");

        const auto addRow = [](const char *name, FileType type, Medium medium, const char *shown) {
            QTest::newRow(name) << int(type) << int(medium) << QString(shown);
        };
        const Medium file = Medium::File;
        const Medium clipboard = Medium::Clipboard;
        addRow("delimited", FileType::DelimitedText, file,
               "write_header delimiter quote line_endings encoding bom");
        addRow("delimited to the clipboard", FileType::DelimitedText, clipboard,
               "write_header delimiter quote line_endings");
        addRow("xlsx", FileType::ExcelXlsx, file,
               "worksheet overwrite_sheet write_header excel_output excel_use_style_template");
        addRow("xlsx to the clipboard", FileType::ExcelXlsx, clipboard,
               "write_header line_endings");
        addRow("xls", FileType::ExcelXls, file,
               "worksheet overwrite_sheet write_header excel_output");
        addRow("json", FileType::Json, file, "line_endings encoding bom remove_empty json_types");
        addRow("json to the clipboard", FileType::Json, clipboard,
               "line_endings remove_empty json_types");
        addRow("xml", FileType::Xml, file,
               "line_endings encoding bom remove_empty xml_above_root xml_root xml_below_root "
               "xml_row file_comment");
        addRow("vcard", FileType::VCard, file, "line_endings encoding bom");
        addRow("yaml", FileType::Yaml, file, "line_endings encoding bom remove_empty file_comment");
        addRow("html", FileType::Html, file,
               "write_header line_endings encoding bom html_encode file_comment");
        addRow("markdown", FileType::Markdown, file,
               "write_header line_endings encoding bom file_comment");
    }

    void shownOptions()
    {
        QFETCH(int, type);
        QFETCH(int, medium);
        QFETCH(QString, shown);
        OutputBench bench(optionsOf(FileType(type), Medium(medium)));
        QStringList expected = shown.split(' ');
        expected << "medium"
                 << "file_type"
                 << "alias";
        if (Medium(medium) == Medium::File) {
            expected << "single_or_multi"
                     << "path"
                     << "enable_output";
        }
        expected.sort();
        QCOMPARE(bench.shownFields(), expected);
        QCOMPARE(bench.unnamedControls(), QStringList());
    }

    void fitsNarrowPane_data() { shownOptions_data(); }

    void fitsNarrowPane()
    {
        QFETCH(int, type);
        QFETCH(int, medium);
        OutputOptions options = optionsOf(FileType(type), Medium(medium));
        options.jsonTypes = 1;
        options.excelOutput = 1;
        options.excelUseStyleTemplate = true;
        options.writeMode = WriteMode::Append;
        options.delimiter = Delimiter::Custom;
        OutputBench bench(options, ranInput());
        QCOMPARE(bench.cutFields(), QStringList());
        QCOMPARE(bench.unnamedControls(), QStringList());
    }

    void edits_data()
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
        addRow("medium", csv, "down", "1");
        addRow("path", csv, "orders.csv", "orders.csv");
        addRow("file_type", csv, "down", "1");
        addRow("single_or_multi", csv, "down", "1");
        addRow("multi_file_column", csv, "name", "name");
        addRow("multi_file_confirm", csv, "space", "0");
        addRow("worksheet", xlsx, "Sales", "Sales");
        addRow("enable_output", csv, "up", "1");
        addRow("overwrite_sheet", xlsx, "click", "1");
        addRow("write_header", csv, "click", "0");
        addRow("write_header_first_append_only", csv, "space", "1");
        addRow("delimiter", csv, "down", "1");
        addRow("custom_delimiter", csv, "#", "#");
        addRow("quote", csv, "down", "1");
        addRow("line_endings", csv, "down", "1");
        addRow("encoding", csv, "UTF-16", "UTF-16");
        addRow("bom", csv, "click", "1");
        addRow("remove_empty", FileType::Json, "click", "1");
        addRow("html_encode", FileType::Html, "click", "0");
        addRow("xml_above_root", FileType::Xml, "<?a?>", "<?a?>");
        addRow("xml_root", FileType::Xml, "orders", "orders");
        addRow("xml_below_root", FileType::Xml, "<a/>", "<a/>");
        addRow("xml_row", FileType::Xml, "order", "order");
        addRow("file_comment", FileType::Yaml, "by hand", "by hand");
        addRow("json_types", FileType::Json, "down", "1");
        addRow("excel_output", xlsx, "down", "1");
        addRow("excel_use_style_template", xlsx, "click", "0");
        addRow("excel_style_template_path", xlsx, "a.xlsx[B]", "a.xlsx[B]");
        addRow("alias", csv, "result", "result");
    }

    void edits()
    {
        QFETCH(QByteArray, key);
        QFETCH(int, type);
        QFETCH(QString, action);
        QFETCH(QString, expected);
        OutputOptions options = optionsOf(FileType(type));
        options.writeMode = key == "overwrite_sheet" ? WriteMode::Overwrite : WriteMode::Append;
        options.excelUseStyleTemplate = true;
        options.multiFile = key.startsWith("multi_");
        options.delimiter = key == "delimiter" ? Delimiter::Automatic : Delimiter::Custom;
        options.customDelimiter = ";";
        OutputBench bench(options, ranInput());
        checkEdit(&bench, key, action, expected, stored);
    }

    void choicesByColumn_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("expected");
        QTest::newRow("json") << QByteArray("json_manual_col_types") << int(FileType::Json)
                              << "Automatic|Number|Automatic";
        QTest::newRow("xlsx") << QByteArray("excel_manual_col_formats") << int(FileType::ExcelXlsx)
                              << "Automatic|Number|Automatic";
    }

    void choicesByColumn()
    {
        QFETCH(QByteArray, key);
        QFETCH(int, type);
        QFETCH(QString, expected);
        OutputOptions options = optionsOf(FileType(type));
        options.jsonTypes = 1;
        options.excelOutput = 1;
        OutputBench bench(options, ranInput());
        auto *view = bench.field(key)->findChild<QTableView *>();
        QCOMPARE(view->model()->rowCount(), 3);
        QCOMPARE(view->model()->index(1, 0).data().toString(), QString("name"));

        // With the keyboard: F2 opens the list, a letter finds, Enter takes.
        view->setFocus();
        view->setCurrentIndex(view->model()->index(1, 1));
        QTest::keyClick(view, Qt::Key_F2);
        auto *box = view->findChild<QComboBox *>();
        QVERIFY(box);
        QTRY_VERIFY(box->view()->isVisible());
        QTest::keyClick(box->view(), Qt::Key_N);
        QTest::keyClick(box->view(), Qt::Key_Return);
        QCOMPARE(stored(*bench.node, key), expected);
        QCOMPARE(view->model()->index(1, 1).data().toString(), QString("Number"));
        bench.scene.undo();
        QCOMPARE(stored(*bench.node, key), QString());
        QCOMPARE(view->model()->index(1, 1).data().toString(), QString("Automatic"));
    }

    /// Choices by column follow the table above.
    void columnsOfTheItemAbove()
    {
        OutputOptions options = optionsOf(FileType::Json);
        options.jsonTypes = 1;
        options.jsonManualColumnTypes = QStringList{"Number", "3"};
        OutputBench bench(options);
        auto *view = bench.field("json_manual_col_types")->findChild<QTableView *>();
        QCOMPARE(view->model()->rowCount(), 2);
        QCOMPARE(view->model()->index(1, 1).data().toString(), QString("String"));
        Node *input = bench.scene.insert(std::unique_ptr<Node>(ranInput()));
        QVERIFY(bench.scene.addConnection(input, bench.node));
        QCOMPARE(view->model()->rowCount(), 3);
        QCOMPARE(view->model()->index(0, 0).data().toString(), QString("id"));
        bench.scene.undo();
        QCOMPARE(view->model()->rowCount(), 2);
    }

    void typeChangesExtension_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("expected");
        QTest::newRow("of the type") << "a/Output.csv"
                                     << "a/Output.xlsx";
        QTest::newRow("capitals") << "Output.CSV"
                                  << "Output.xlsx";
        QTest::newRow("another") << "Output.dat"
                                 << "Output.dat";
        QTest::newRow("none") << "Output"
                              << "Output";
    }

    void typeChangesExtension()
    {
        QFETCH(QString, path);
        QFETCH(QString, expected);
        OutputOptions options;
        options.path = path;
        OutputBench bench(options);
        act(bench.field("file_type")->editor(), "down");
        QCOMPARE(bench.node->options().path, expected);
        QCOMPARE(bench.line("path")->text(), expected);
        bench.scene.undo();
        QCOMPARE(bench.node->options().path, path);
    }

    void notices_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("notice");
        const auto addRow = [](const char *name, const char *key, FileType type, const char *text,
                               const char *notice) {
            QTest::newRow(name) << QByteArray(key) << int(type) << QString(text) << QString(notice);
        };
        addRow("folder", "path", FileType::Json, "nowhere/a.json", "does not exist");
        addRow("extension", "path", FileType::Json, "a.csv", "but file type is JSON");
        addRow("fine", "path", FileType::Json, "a.json", "");
        addRow("sheet", "worksheet", FileType::ExcelXlsx, "a/b", "not allowed");
        addRow("root", "xml_root", FileType::Xml, "1a", "not a name that XML allows");
        addRow("column", "multi_file_column", FileType::Json, "x", "no column 'x'");
        addRow("encoding", "encoding", FileType::Json, "Automatic", "not known");
    }

    void notices()
    {
        QFETCH(QByteArray, key);
        QFETCH(int, type);
        QFETCH(QString, text);
        QFETCH(QString, notice);
        const QTemporaryDir folder;
        OutputOptions options = optionsOf(FileType(type));
        options.multiFile = key.startsWith("multi_");
        OutputBench bench(options, ranInput());
        bench.scene.document().path = folder.filePath("doc.transform");
        act(bench.line(key), text);
        const QString problem = bench.field(key)->problem();
        QVERIFY2(notice.isEmpty() ? problem.isEmpty() : problem.contains(notice),
                 qPrintable(problem));
    }
};

TW_TEST_CLASS(TestOutputOptions)

#include "tst_outputoptions.moc"
