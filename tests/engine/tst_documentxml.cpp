#include "documentxml.h"
#include "testsupport.h"

#include <QRegularExpression>
#include <QTextCodec>

class DocumentXmlTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everythingSurvives();
    void awkwardTextsSurvive_data();
    void awkwardTextsSurvive();
    void attributesAreAsListed();
    void missingAttributesTakeTheirDefaults();
    void damagedTextIsRefused_data();
    void damagedTextIsRefused();
    void otherEncodingsAreRead_data();
    void otherEncodingsAreRead();
    void whatIsUnknownIsCollected();
    void impossibleValuesAreReplaced_data();
    void impossibleValuesAreReplaced();
    void positionsAreRead_data();
    void positionsAreRead();
    void oldParameterValuesAreConverted_data();
    void oldParameterValuesAreConverted();
    void cutDocumentsNeverCrash();
    void randomChangesNeverCrash();
};

static QString awkward()
{
    return QString::fromUtf8("<a href=\"x\">&amp; 'q' \r\n\t%41 ^ \x1F \u00e9\u4e2d\U0001F600");
}

// A document in which nothing has its initial value.
static DocumentRecords fullDocument()
{
    DocumentRecords d;
    d.meta.lastSavedBy = QStringLiteral("Tabweave_v1");
    d.meta.locale = QStringLiteral("de_DE");
    d.meta.id = QStringLiteral("{1-2}");
    d.meta.snapToGrid = true;
    d.meta.notes = awkward();
    d.meta.path = QStringLiteral("/tmp/a b.transform");
    d.meta.autoRun = false;

    InputRecord input;
    input.id = 1;
    input.name = awkward();
    input.comment = QStringLiteral("c");
    input.position = QPointF(-12.5, 1e6);
    input.alias = QStringLiteral("in");
    InputOptions &i = input.options;
    i.medium = Medium::Clipboard;
    i.path = QStringLiteral("in.csv");
    i.text = QStringLiteral("a,b\n1,2\n");
    i.fileType = FileType::FixedWidth;
    i.delimiter = Delimiter::Custom;
    i.customDelimiter = QStringLiteral("%");
    i.quoting = InputQuoting::Unquoted;
    i.ignoreRepeatedDelimiter = true;
    i.encoding = QStringLiteral("UTF-16LE");
    i.ignoredRows = 7;
    i.header = false;
    i.trim = i.simplify = true;
    i.ignoreEmptyRows = false;
    i.ignoreEmptyColumns = i.ignoreExcelHiddenRows = i.ignoreExcelHiddenColumns = true;
    i.autoFixedWidths = false;
    i.fixedWidths = {3, 14, 1};
    i.worksheet = QStringLiteral("Sheet 1");
    i.jsonArraysAsRows = false;
    i.watching = i.showMeta = true;
    i.metaText = awkward();
    i.schemaInUse = true;
    i.schemaColumnNames = QStringList{QStringLiteral("a"), QString(), awkward()};
    i.schemaMissingValues = QStringList{QString(), QStringLiteral("0"), QString()};
    i.schemaMissing = SchemaMissing::Error;
    i.schemaOrder = SchemaOrder::Error;
    i.schemaExtra = SchemaExtra::Error;
    d.inputs = {input, InputRecord()};

    TransformRecord transform;
    transform.id = 2;
    transform.name = QStringLiteral("Filter");
    transform.comment = awkward();
    transform.position = QPointF(0.1, -0.2);
    StoredParameter parameter;
    parameter.key = QStringLiteral("Columns");
    parameter.type = 1;
    parameter.value = QStringLiteral("1\x1F") + QStringLiteral("4");
    parameter.columns = QStringList{QStringLiteral("order id"), awkward()};
    transform.parameters = {parameter, StoredParameter()};
    d.transforms = {transform};

    OutputRecord output;
    output.id = 3;
    output.name = QStringLiteral("o");
    output.comment = QStringLiteral("c");
    output.position = QPointF(3, 4);
    output.alias = QStringLiteral("out");
    OutputOptions &o = output.options;
    o.medium = Medium::Clipboard;
    o.path = QStringLiteral("out.csv");
    o.fileType = FileType::Html;
    o.writeMode = WriteMode::Append;
    o.multiFile = true;
    o.multiFileColumn = QStringLiteral("f");
    o.multiFileConfirm = false;
    o.delimiter = Delimiter::Pipe;
    o.customDelimiter = QStringLiteral("x");
    o.quoting = OutputQuoting::Never;
    o.lineEnding = LineEnding::OldMac;
    o.encoding = QStringLiteral("ISO-8859-1");
    o.byteOrderMark = true;
    o.writeHeader = false;
    o.headerOnlyIfEmpty = o.removeEmpty = true;
    o.jsonTypes = 1;
    o.jsonManualColumnTypes = QStringList{QStringLiteral("a"), QStringLiteral("String")};
    o.excelOutput = 1;
    o.excelManualColumnFormats = QStringList{QStringLiteral("b"), QStringLiteral("Text")};
    o.excelUseStyleTemplate = o.overwriteSheet = true;
    o.excelStyleTemplatePath = QStringLiteral("t.xlsx");
    o.worksheet = QStringLiteral("S");
    o.xmlAboveRoot = awkward();
    o.xmlRoot = QStringLiteral("r");
    o.xmlBelowRoot = QStringLiteral("<x/>");
    o.xmlRow = QStringLiteral("row");
    o.htmlEncode = false;
    o.fileComment = QStringLiteral(" File created by us ");
    d.outputs = {output, OutputRecord()};

    NoteRecord note;
    note.id = 4;
    note.comment = awkward();
    note.position = QPointF(5, 6);
    note.color = QStringLiteral("#ffee00");
    note.arrow = 4;
    d.notes = {note};
    ConnectionRecord connection;
    connection.start = 1;
    connection.end = 2;
    d.connections = {connection};
    BatchValue value;
    value.row = 2;
    value.alias = QStringLiteral("in");
    value.value = awkward();
    d.batchValues = {value};
    d.batchLogging.enabled = true;
    d.batchLogging.path = QStringLiteral("batch.log");
    d.batchLogging.mode = 1;
    return d;
}

static QByteArray document(const QByteArray &content)
{
    return "<!DOCTYPE Tabweave>\n<root>" + content + "</root>\n";
}

static DocumentRecords readOrFail(const QByteArray &bytes)
{
    DocumentRecords records;
    QString error;
    if (!DocumentXml::read(bytes, &records, &error)) {
        QTest::qFail(qPrintable(error), __FILE__, __LINE__);
    }
    return records;
}

// Written again, a document that was read must be the same to the byte. The test document differs
// from the initial values in every member, so a member that were lost would show.
void DocumentXmlTest::everythingSurvives()
{
    const DocumentRecords before = fullDocument();
    const QByteArray first = DocumentXml::written(before);
    QCOMPARE(DocumentXml::written(before), first);
    const DocumentRecords after = readOrFail(first);
    QCOMPARE(after.notUnderstood.size(), 0);
    QCOMPARE(after.replacedValues, QStringList());
    QCOMPARE(DocumentXml::written(after), first);

    QVERIFY(first != DocumentXml::written(DocumentRecords()));
    const InputOptions &i = after.inputs.at(0).options;
    QCOMPARE(i.schemaColumnNames, before.inputs.at(0).options.schemaColumnNames);
    QCOMPARE(i.fixedWidths, (QList<int>{3, 14, 1}));
    QCOMPARE(i.schemaExtra, SchemaExtra::Error);
    QCOMPARE(i.encoding, QStringLiteral("UTF-16LE"));
    QCOMPARE(after.outputs.at(0).options.writeMode, WriteMode::Append);
    QCOMPARE(after.outputs.at(0).options.medium, Medium::Clipboard);
    QCOMPARE(after.transforms.at(0).parameters.at(0).columns,
             before.transforms.at(0).parameters.at(0).columns);
    QCOMPARE(after.batchValues.at(0).value, awkward());
    QCOMPARE(after.batchLogging.mode, 1);
    QCOMPARE(after.meta.notes, awkward());
}

void DocumentXmlTest::awkwardTextsSurvive_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("markup") << QStringLiteral("<&>\"'");
    QTest::newRow("line breaks") << QStringLiteral("a\r\nb\nc\td");
    QTest::newRow("per cent") << QStringLiteral("100%, %41, %zz, %");
    QTest::newRow("other scripts") << QString::fromUtf8("\u00df\u4e2d\u0416\U0001F600");
    QTest::newRow("control characters") << QStringLiteral("\x01\x1F\x7F") + QChar(0);
    QTest::newRow("blanks at the ends") << QStringLiteral("  x  ");
    QTest::newRow("empty") << QString();
}

void DocumentXmlTest::awkwardTextsSurvive()
{
    QFETCH(QString, text);
    DocumentRecords records;
    NoteRecord note;
    note.id = 1;
    note.comment = text;
    records.notes = {note};
    const QByteArray bytes = DocumentXml::written(records);
    QCOMPARE(readOrFail(bytes).notes.at(0).comment, text);
    QVERIFY(bytes.contains(" comment=") != text.isEmpty());
    for (const char c : bytes) {
        QVERIFY((c >= ' ' && c < 0x7F) || c == '\n' || c == 0x1F);
    }
}

// The names of an element's attributes, or of meta's properties, sorted.
static QString attributesOf(const QByteArray &bytes, const char *element)
{
    const QString text = QString::fromUtf8(bytes);
    const int start = text.indexOf(QStringLiteral("<%1 ").arg(QLatin1String(element)));
    static const QRegularExpression name(QStringLiteral(" ([a-z0-9_]+)=\""));
    QStringList names;
    auto matches = name.globalMatch(text.mid(start, text.indexOf(QLatin1Char('>'), start) - start));
    while (matches.hasNext()) {
        names.append(matches.next().captured(1));
    }
    names.sort();
    return names.join(QLatin1Char(' '));
}

void DocumentXmlTest::attributesAreAsListed()
{
    const QByteArray full = DocumentXml::written(fullDocument());
    QVERIFY(
        full.startsWith("<!DOCTYPE Tabweave>\n<root>\n    <meta>\n        <version value=\"72\"/>"
                        "\n        <last_saved_by value=\"Tabweave_v1\"/>\n"));
    QCOMPARE(attributesOf(full, "parameter"), QStringLiteral("columns name type value"));
    QCOMPARE(attributesOf(full, "note"), QStringLiteral("arrow color comment id pos_v12"));
    QCOMPARE(attributesOf(full, "transform"), QStringLiteral("comment id name pos pos_v12"));
    QVERIFY(full.contains("pos=\"-12.5^1e+06\""));
    QVERIFY(full.contains("pos_v12=\"-12.5\x1F"
                          "1e%2B06\""));
    QVERIFY(full.contains("fixed_widths=\"3\x1F"
                          "14\x1F"
                          "1\""));
    QVERIFY(full.contains("value=\"1%1F4\""));

    // Of a document with nothing set: all numbers, no empty texts.
    DocumentRecords records;
    records.inputs = {InputRecord()};
    records.outputs = {OutputRecord()};
    const QByteArray bare = DocumentXml::written(records);
    QCOMPARE(attributesOf(bare, "input"),
             QStringLiteral("auto_fixed_widths delimiter encoding file_type header id "
                            "ignore_empty ignore_empty_cols ignore_excel_hidden_cols "
                            "ignore_excel_hidden_rows ignore_repeated_delim ignored_rows "
                            "json_arrays_as_rows medium pos pos_v12 quote schema_extra_cols "
                            "schema_in_use schema_missing_cols schema_reorder_cols show_meta "
                            "simplify trim watching"));
    QCOMPARE(attributesOf(bare, "output"),
             QStringLiteral("bom delimiter enable_output encoding excel_output "
                            "excel_use_style_template file_type html_encode id json_types "
                            "line_endings multi_file_confirm overwrite_sheet pos pos_v12 quote "
                            "remove_empty single_or_multi write_header "
                            "write_header_first_append_only"));
    QVERIFY(!bare.contains("<id "));
    QVERIFY(!bare.contains("<id/>"));
    QVERIFY(bare.contains("<notes/>"));
}

void DocumentXmlTest::missingAttributesTakeTheirDefaults()
{
    const DocumentRecords read = readOrFail(
        document("<inputs><input id=\"3\"/></inputs><outputs><output id=\"4\"/></outputs>"
                 "<transforms><transform id=\"5\" name=\"Case\"><parameters>"
                 "<parameter name=\"Case\" type=\"6\"/></parameters></transform>"
                 "</transforms>"));
    QCOMPARE(read.meta.version, 72);
    QVERIFY(read.meta.autoRun);
    QVERIFY(!read.meta.snapToGrid);
    QVERIFY(read.meta.locale.isEmpty());

    const InputOptions &i = read.inputs.at(0).options;
    QVERIFY(i.header && i.ignoreEmptyRows && i.jsonArraysAsRows && i.autoFixedWidths);
    QVERIFY(!i.trim && !i.watching && !i.schemaInUse);
    QCOMPARE(i.encoding, QStringLiteral("Automatic"));
    const OutputOptions &o = read.outputs.at(0).options;
    QVERIFY(o.writeHeader && o.htmlEncode && o.multiFileConfirm);
    QCOMPARE(o.writeMode, WriteMode::Overwrite);
    QCOMPARE(o.encoding, QStringLiteral("UTF-8"));
    QVERIFY(o.xmlRoot.isEmpty());
    QVERIFY(read.transforms.at(0).parameters.at(0).value.isEmpty());
}

void DocumentXmlTest::damagedTextIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("error");
    const auto addRow = [](const char *tag, const QByteArray &bytes, const QString &error) {
        QTest::newRow(tag) << bytes << error;
    };
    const auto format = [](const char *message, int line, int column) {
        return QStringLiteral("Format error '%1' detected at line %2 column %3.\nContact support "
                              "if you are sure this a Tabweave file.")
            .arg(QLatin1String(message), QString::number(line), QString::number(column));
    };
    const char *element = "error occurred while parsing element";
    addRow("no XML", "hello", format(element, 1, 1));
    addRow("NUL bytes", QByteArray(100, '\0'), format(element, 1, 1));
    addRow("cut short", "<!DOCTYPE Tabweave>\n<root>\n <meta>\n",
           format("unexpected end of file", 4, 1));
    addRow("other type", "<!DOCTYPE Other><root/>", "Incorrect document type.");
    addRow("type in other case", "<!DOCTYPE tabweave><root/>", "Incorrect document type.");
    addRow("no type", "<root/>", "Incorrect document type.");
    addRow("other root", "<!DOCTYPE Tabweave><toor/>", "Document root not found.");
    addRow("attribute twice",
           document("\n<inputs>\n<input id=\"1\" name=\"a\" id=\"2\"/></inputs>"),
           format("attribute 'id' occurs twice", 4, 32));

    QByteArray laughs = "<!DOCTYPE Tabweave [<!ENTITY a \"ha\">\n";
    for (char name = 'b'; name < 'k'; ++name) {
        laughs += QByteArray("<!ENTITY ") + name + " \"";
        for (int i = 0; i < 10; ++i) {
            laughs += QByteArray("&") + char(name - 1) + ';';
        }
        laughs += "\">\n";
    }
    laughs += "]><root><meta><notes value=\"&j;\"/></meta></root>";
    addRow("expanding entities", laughs, format("entity declarations are not accepted", 1, 20));
    addRow("outside entity",
           "<!DOCTYPE Tabweave [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><root>&x;</root>",
           format("entity declarations are not accepted", 1, 20));
    addRow("quotes before the declarations",
           "<!DOCTYPE Tabweave SYSTEM \">\" [<!ENTITY x \"y\">]><root>&x;</root>",
           format("entity declarations are not accepted", 1, 31));
    // Deep nesting would use up the stack of the parser.
    const int depth = 500000;
    addRow("nested deeply", document(QByteArray("<a>").repeated(depth)),
           format("elements are nested too deeply", 2, 604));
    addRow("many attributes", document([] {
               QByteArray input = "<inputs><input";
               for (int i = 0; i < 100000; ++i) {
                   input += " a" + QByteArray::number(i) + "=\"\"";
               }
               return input + "/></inputs>";
           }()),
           format("an element has too many attributes", 2, 7917));
}

void DocumentXmlTest::damagedTextIsRefused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, error);
    DocumentRecords records;
    QString given;
    QVERIFY(!DocumentXml::read(bytes, &records, &given));
    QCOMPARE(given, error);
}

void DocumentXmlTest::otherEncodingsAreRead_data()
{
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QByteArray>("start");
    QTest::newRow("UTF-8 with a byte-order mark") << QByteArray("UTF-8") << QByteArray();
    QTest::newRow("UTF-8 as declared")
        << QByteArray("UTF-8") << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    QTest::newRow("UTF-16") << QByteArray("UTF-16") << QByteArray();
    QTest::newRow("UTF-16 as declared")
        << QByteArray("UTF-16BE") << QByteArray("<?xml version='1.0' encoding='UTF-16'?>");
}

// Other programs may have rewritten a document.
void DocumentXmlTest::otherEncodingsAreRead()
{
    QFETCH(QByteArray, codec);
    QFETCH(QByteArray, start);
    const QByteArray bytes = document("<meta><notes value=\"\xc3\xa9%C3%A9\"/></meta>");
    QString text = QString::fromUtf8(start + bytes);
    text.prepend(QChar(QChar::ByteOrderMark));
    QTextEncoder *encoder = QTextCodec::codecForName(codec)->makeEncoder(QTextCodec::IgnoreHeader);
    const QByteArray encoded = encoder->fromUnicode(text);
    delete encoder;
    QCOMPARE(readOrFail(encoded).meta.notes, QString::fromUtf8("\u00e9\u00e9"));
}

void DocumentXmlTest::whatIsUnknownIsCollected()
{
    const DocumentRecords read = readOrFail(document(
        "<meta><version value=\"99\"/><mood value=\"1\"/></meta><charts><chart/></charts>"
        "<inputs><input id=\"1\" tilt=\"3\"/><input id=\"2\" tilt=\"4\"/><stream/></inputs>"
        "<transforms><transform id=\"3\" name=\"x\"><parameters><option/></parameters>"
        "<extra/></transform></transforms>"));
    QCOMPARE(read.meta.version, 99);
    QCOMPARE(read.inputs.size(), 2);
    QCOMPARE(read.notUnderstood,
             (QMap<QString, int>{{QStringLiteral("attribute 'tilt' of 'input'"), 2},
                                 {QStringLiteral("element 'charts' in 'root'"), 1},
                                 {QStringLiteral("element 'extra' in 'transform'"), 1},
                                 {QStringLiteral("element 'mood' in 'meta'"), 1},
                                 {QStringLiteral("element 'option' in 'parameters'"), 1},
                                 {QStringLiteral("element 'stream' in 'inputs'"), 1}}));
}

void DocumentXmlTest::impossibleValuesAreReplaced_data()
{
    QTest::addColumn<QByteArray>("attribute");
    QTest::newRow("no number") << QByteArray("ignored_rows=\"many\"");
    QTest::newRow("negative") << QByteArray("ignored_rows=\"-3\"");
    QTest::newRow("too large for a number") << QByteArray("ignored_rows=\"99999999999999\"");
    QTest::newRow("empty number") << QByteArray("ignored_rows=\"\"");
    QTest::newRow("choice of a later version") << QByteArray("file_type=\"11\"");
    QTest::newRow("negative choice") << QByteArray("quote=\"-1\"");
    QTest::newRow("no flag") << QByteArray("trim=\"2\"");
    QTest::newRow("no list of numbers") << QByteArray("fixed_widths=\"3\x1Fx\"");
    QTest::newRow("negative width") << QByteArray("fixed_widths=\"3\x1F-1\"");
    QTest::newRow("position") << QByteArray("pos_v12=\"nan\x1F"
                                            "1\"");
}

void DocumentXmlTest::impossibleValuesAreReplaced()
{
    QFETCH(QByteArray, attribute);
    const DocumentRecords read =
        readOrFail(document("<inputs><input id=\"1\" " + attribute + "/></inputs>"));
    QCOMPARE(read.replacedValues.size(), 1);
    DocumentRecords plain;
    plain.inputs = {InputRecord()};
    plain.inputs[0].id = 1;
    QCOMPARE(DocumentXml::written(read), DocumentXml::written(plain));
}

void DocumentXmlTest::positionsAreRead_data()
{
    QTest::addColumn<QByteArray>("attributes");
    QTest::addColumn<QPointF>("position");
    const auto addRow = [](const char *tag, const char *attributes, double x, double y) {
        QTest::newRow(tag) << QByteArray(attributes) << QPointF(x, y);
    };
    addRow("present form", "pos_v12=\"1.5\x1F-2\"", 1.5, -2);
    addRow("as a reference", "pos_v12=\"1.5&#x1F;-2\"", 1.5, -2);
    addRow("old form", "pos=\"10^20\"", 10, 20);
    addRow("present form first",
           "pos=\"10^20\" pos_v12=\"1\x1F"
           "2\"",
           1, 2);
    addRow("old form when the present one is damaged", "pos=\"10^20\" pos_v12=\"1\"", 10, 20);
    addRow("exponent",
           "pos_v12=\"1e%2B06\x1F"
           "2e-05\"",
           1e6, 2e-5);
    addRow("infinite",
           "pos_v12=\"inf\x1F"
           "2\"",
           0, 0);
    addRow("huge", "pos_v12=\"1e300\x1F-1e300\"", 1e9, -1e9);
    addRow("none", "", 0, 0);
}

void DocumentXmlTest::positionsAreRead()
{
    QFETCH(QByteArray, attributes);
    QFETCH(QPointF, position);
    const DocumentRecords read =
        readOrFail(document("<inputs><input id=\"1\" " + attributes + "/></inputs>"));
    QCOMPARE(read.inputs.at(0).position, position);
}

void DocumentXmlTest::oldParameterValuesAreConverted_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("converted");
    const auto addRow = [](const char *type, const char *name, const char *value,
                           const char *converted) {
        QTest::addRow("%s %s", type, value) << QByteArray(type) << QByteArray(name)
                                            << QByteArray(value) << QString::fromUtf8(converted);
    };
    addRow("Split", "Delimiter_Type", "Text", "Text delimiter");
    addRow("Split", "Delimiter_Type", "Regex", "Regex delimiter");
    addRow("Split", "Delimiter", "Text", "Text");
    addRow("Split_Rows", "Delimiter_Type", "Text", "Text");
    addRow("Calculate", "Operation", "JulianDay", "DateToJulianDay");
    addRow("Calculate", "Operation", "Add", "Add");
}

void DocumentXmlTest::oldParameterValuesAreConverted()
{
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, value);
    QFETCH(QString, converted);
    const DocumentRecords read =
        readOrFail(document("<transforms><transform id=\"1\" name=\"" + type +
                            "\"><parameters><parameter "
                            "name=\"" +
                            name + "\" type=\"6\" value=\"" + value +
                            "\"/></parameters>"
                            "</transform></transforms>"));
    QCOMPARE(read.transforms.at(0).parameters.at(0).value, converted);
}

void DocumentXmlTest::cutDocumentsNeverCrash()
{
    const QByteArray whole = DocumentXml::written(fullDocument());
    const int needed = whole.indexOf("</root>") + 7;
    for (int length = 0; length < whole.size(); ++length) {
        DocumentRecords records;
        QString error;
        QCOMPARE(DocumentXml::read(whole.left(length), &records, &error), length >= needed);
        QCOMPARE(error.isEmpty(), length >= needed);
    }
}

void DocumentXmlTest::randomChangesNeverCrash()
{
    const QByteArray whole = DocumentXml::written(fullDocument());
    quint32 state = 12345;
    const auto random = [&state](int below) {
        state = state * 1664525u + 1013904223u;
        return int((state >> 8) % quint32(below));
    };
    static const QByteArray pieces = QByteArray("<>&;\"'=/% \x1F[]!-?0aZ\xff\xc3\n", 23);
    int readable = 0;
    for (int round = 0; round < 500; ++round) {
        QByteArray changed = whole;
        for (int i = random(3); i >= 0; --i) {
            changed[random(changed.size())] = pieces[random(pieces.size())];
        }
        DocumentRecords records;
        QString error;
        if (DocumentXml::read(changed, &records, &error)) {
            ++readable;
            // What could be read can be written and read again without a further change.
            const QByteArray again = DocumentXml::written(records);
            QCOMPARE(DocumentXml::written(readOrFail(again)), again);
        } else {
            QVERIFY(!error.isEmpty());
        }
    }
    QVERIFY(readable > 50);
}

TW_TEST_CLASS(DocumentXmlTest)
#include "tst_documentxml.moc"
