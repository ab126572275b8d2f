#include "testgraph.h"
#include "testsupport.h"

#include "iteminformation.h"
#include "runengine.h"

#include <QFile>
#include <QTemporaryDir>

Q_DECLARE_METATYPE(FileType)

namespace {

QString labels(const QList<InformationLine> &lines)
{
    QStringList result;
    for (const InformationLine &line : lines) {
        result.append(line.label);
    }
    return result.join(QLatin1Char(';'));
}

QString valueOf(const QList<InformationLine> &lines, const char *label)
{
    for (const InformationLine &line : lines) {
        if (line.label == QLatin1String(label)) {
            return line.value;
        }
    }
    return QStringLiteral("(no such line)");
}

const char *const common = "Name;Status;Size;Type;Dataset columns;Dataset rows;Dataset values;";
const char *const lastRun = "Comment;Warnings;Info;Last processed;Processing time";

} // namespace

class TestItemInformation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void inputPane_data();
    void inputPane();
    void outputPane_data();
    void outputPane();
    void outputTargets();
    void filePanel();
    void transformPanel();
};

void TestItemInformation::inputPane_data()
{
    QTest::addColumn<FileType>("type");
    QTest::addColumn<QString>("labels");
    const auto addRow = [](FileType type, const char *labels) {
        QTest::newRow(qPrintable(fileTypeLabel(type))) << type << QString::fromLatin1(labels);
    };
    addRow(FileType::DelimitedText,
           "Delimiter;Ignore repeated delim;Quoting;Ignore;Encoding;Has header;");
    addRow(FileType::Html, "Delimiter;Ignore repeated delim;Quoting;Encoding;Has header;");
    addRow(FileType::FixedWidth, "Columns;Ignore;Encoding;Has header;");
    addRow(FileType::Json, "Format;Encoding;");
    addRow(FileType::VCard, "Ignore;Encoding;");
    addRow(FileType::PlainText, "Ignore;Encoding;Has header;");
}

void TestItemInformation::inputPane()
{
    QFETCH(FileType, type);
    QFETCH(QString, labels);
    InputOptions options;
    options.fileType = type;
    options.ignoredRows = 1200;
    const InputNode node(options);
    const QList<InformationLine> lines = itemOptions(node);
    QCOMPARE(
        ::labels(lines),
        QStringLiteral("Type;File;Source;Size;Connections out;") + labels +
            QStringLiteral("Trim whitespace;Simplify whitespace;Ignore empty rows;Ignore empty "
                           "columns;Meta information;Uses schema;Alias"));
    QCOMPARE(valueOf(lines, "Ignore empty rows"), QStringLiteral("Yes"));
    QCOMPARE(valueOf(lines, "Uses schema"), QStringLiteral("No"));
    if (labels.contains(QLatin1String("Ignore;"))) {
        QCOMPARE(valueOf(lines, "Ignore"), QStringLiteral("First 1,200 row(s)"));
    }
}

void TestItemInformation::outputPane_data()
{
    QTest::addColumn<FileType>("type");
    QTest::addColumn<QString>("labels");
    const auto addRow = [](FileType type, const char *labels) {
        QTest::newRow(qPrintable(fileTypeLabel(type))) << type << QString::fromLatin1(labels);
    };
    addRow(FileType::DelimitedText, "Delimiter;Quoting;Line endings;Encoding;Byte Order Mark;");
    addRow(FileType::Xml, "Line endings;Encoding;Byte Order Mark;Remove empty;Above root;Root "
                          "name;Below root;Row name;");
    addRow(FileType::Html, "Line endings;Encoding;Byte Order Mark;Escape special;");
    addRow(FileType::Json, "Line endings;Encoding;Byte Order Mark;Remove empty;Types;");
    addRow(FileType::ExcelXlsx, "Formatting;");
}

void TestItemInformation::outputPane()
{
    QFETCH(FileType, type);
    QFETCH(QString, labels);
    OutputOptions options;
    options.fileType = type;
    const OutputNode node(options);
    QCOMPARE(::labels(itemOptions(node)), QStringLiteral("Type;File;Connections in;") + labels +
                                              QStringLiteral("Write mode;Write header;Alias"));
}

void TestItemInformation::outputTargets()
{
    OutputOptions options;
    QCOMPARE(valueOf(itemOptions(OutputNode(options)), "File"), QStringLiteral("<no file name>"));
    options.path = QStringLiteral("100%1.xlsx");
    options.fileType = FileType::ExcelXlsx;
    options.worksheet = QStringLiteral("May");
    options.writeMode = WriteMode::Append;
    options.headerOnlyIfEmpty = true;
    const QList<InformationLine> lines = itemOptions(OutputNode(options));
    QCOMPARE(valueOf(lines, "File"), QStringLiteral("100%1.xlsx[May]"));
    QCOMPARE(valueOf(lines, "Write mode"), QStringLiteral("Append"));
    QCOMPARE(valueOf(lines, "Write header"), QStringLiteral("Yes (if empty)"));
    options.multiFile = true;
    options.multiFileColumn = QStringLiteral("Region");
    QCOMPARE(valueOf(itemOptions(OutputNode(options)), "Files"),
             QStringLiteral("From dataset column 'Region'"));
}

void TestItemInformation::filePanel()
{
    QTemporaryDir folder;
    TestGraph graph;
    Node *input = graph.missingInput(QStringLiteral("in.csv"));
    QCOMPARE(labels(itemInformation(*input, folder.path())),
             QLatin1String(common) + QStringLiteral("File location;File not found;") +
                 QLatin1String(lastRun));
    QCOMPARE(valueOf(itemInformation(*input, folder.path()), "Size"), QStringLiteral("No data"));

    QFile file(folder.filePath(QStringLiteral("in.csv")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray("a,b\n") + QByteArray("1,2\n").repeated(1000));
    file.close();
    graph.scene.document().path = folder.filePath(QStringLiteral("x.transform"));
    graph.scene.runEngine().run({});
    const QList<InformationLine> lines = itemInformation(*input, graph.scene.document().folder());
    QCOMPARE(labels(lines),
             QLatin1String(common) +
                 QStringLiteral("File location;File readable;File writable;File size;File created;"
                                "File modified;") +
                 QLatin1String(lastRun));
    QCOMPARE(valueOf(lines, "Size"), QStringLiteral("2 cols x 1,000 rows"));
    QCOMPARE(valueOf(lines, "Dataset values"), QStringLiteral("2,000"));
    QCOMPARE(valueOf(lines, "File size"), QStringLiteral("4,004 bytes"));
    QCOMPARE(valueOf(lines, "Status"), QStringLiteral("Up to date"));
}

void TestItemInformation::transformPanel()
{
    TestGraph graph;
    Node *input = graph.input();
    Node *node = graph.transform({input});
    graph.transform({node});
    graph.scene.runEngine().run({});
    const QList<InformationLine> lines = itemInformation(*node, QString());
    QCOMPARE(
        labels(lines),
        QLatin1String(common) + QLatin1String(lastRun) +
            QStringLiteral(";Connections in;Connections out;Transform type;Description;Result"));
    QCOMPARE(valueOf(lines, "Result"), QStringLiteral("handed on"));
    QVERIFY(itemOptions(*node).isEmpty());
}

TW_TEST_CLASS(TestItemInformation)
#include "tst_iteminformation.moc"
