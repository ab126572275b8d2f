#include "memoryceiling.h"
#include "nestedtools.h"
#include "testsupport.h"

Q_DECLARE_METATYPE(InputOptions)

namespace {

InputOptions json()
{
    InputOptions options;
    options.fileType = FileType::Json;
    options.ignoreEmptyRows = false;
    return options;
}

template <class Change>
InputOptions with(Change change)
{
    InputOptions options = json();
    change(options);
    return options;
}

InputOptions asColumns()
{
    return with([](InputOptions &o) { o.jsonArraysAsRows = false; });
}

} // namespace

class TestJsonReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mapsValues_data();
    void mapsValues();
    void failsWithAClearText_data();
    void failsWithAClearText();
    void tellsRepeatedKeys();
    void keepsUnpairedSurrogates();
    void readsUtf16();
    void repairsBytesThatAreNotUtf8();
    void readsManyRowsOfOneRecord();
    void readsLargeArrays_data();
    void readsLargeArrays();
    void stopsWhenAsked();
    void letsTheMemoryCeilingThrough();
};

void TestJsonReader::mapsValues_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<InputOptions>("options");
    QTest::addColumn<QString>("expected");
    const auto addRow = [](const char *name, const QByteArray &bytes, const char *expected,
                           const InputOptions &options = json()) {
        QTest::newRow(name) << bytes << options << QString::fromUtf8(expected);
    };
    const auto both = [&](const QByteArray &name, const QByteArray &bytes, const char *asRows,
                          const char *columns) {
        addRow((name + ", rows").constData(), bytes, asRows);
        addRow((name + ", columns").constData(), bytes, columns, asColumns());
    };

    addRow("nothing", "", "");
    addRow("blank", " \r\n\t", "");
    addRow("only a mark", "\xef\xbb\xbf", "");
    addRow("no records", "[]", "");
    addRow("flat", R"([{"a":1,"b":"x"},{"a":2,"b":"y"}])", "a|b\n1|x\n2|y");
    addRow("text of numbers, words",
           R"([{"n":1.10,"d":12345678901234567890,"e":-1E+400,"t":true,)"
           R"("f":false,"z":null}])",
           "n|d|e|t|f|z\n1.10|12345678901234567890|-1E+400|true|false|");
    addRow("order of first appearance", R"([{"b":1},{"a":2,"b":3},{"c":4}])",
           "b|a|c\n1||\n3|2|\n||4");
    addRow("many names in any order",
           R"([{"a":1,"b":2,"c":3,"d":4,"e":5,"f":6,"g":7,"h":8,"i":9,"j":10},)"
           R"({"j":1,"i":2,"a":3},{"c":5,"k":6}])",
           "a|b|c|d|e|f|g|h|i|j|k\n1|2|3|4|5|6|7|8|9|10|\n3||||||||2|1|\n||5||||||||6");
    addRow("objects in objects", R"([{"a":{"b":1,"c":{"d":2}}},{"a":{"c":{"d":3}}}])",
           "a.b|a.c.d\n1|2\n|3");
    addRow("value, then object", R"([{"a":1},{"a":{"b":2}}])", "a|a.b\n1|\n|2");
    addRow("null keeps the place", R"([{"a":null,"b":1},{"a":2,"b":3}])", "a|b\n|1\n2|3");
    addRow("null, then object", R"([{"a":null,"b":1},{"a":{"c":2}}])", "b|a.c\n1|\n|2");
    addRow("empty ones read as empty", R"([{"a":[],"b":{},"c":""}])", "a|b|c\n||");
    addRow("empty array, then one", R"([{"t":[],"n":1},{"t":["x"],"n":2}])", "t|n\n|1\nx|2");
    addRow("names with dots", R"([{"a.b":1,"a":{"b":2},"":3}])", "a.b|a.b|\n1|2|3");
    addRow("escapes", R"([{"\u0061\n":"\"\\\/\t\ud83d\ude00 \u0000."}])",
           "a\n\n\"\\/\t\xf0\x9f\x98\x80 "); // up to the NUL; compared whole below
    addRow("plain values", R"([1,"x",null,{"a":2}])", "Value|a\n1|\nx|\n|\n|2");
    addRow("only nulls", "[null]", "Value\n");
    addRow("last of repeated keys", R"([{"a":1,"b":2,"a":3},{"a":{"c":1},"a":{"c":2}}])",
           "a|b|a.c\n3|2|\n||2");

    both("array of values", R"([{"id":1,"t":["x","y"]},{"id":2,"t":["z"]}])", "id|t\n1|x\n1|y\n2|z",
         "id|t.1|t.2\n1|x|y\n2|z|");
    both("array of objects", R"([{"o":7,"l":[{"s":"a","q":1},{"s":"b","q":2}],"e":"end"}])",
         "o|l.s|l.q|e\n7|a|1|end\n7|b|2|end", "o|l.1.s|l.1.q|l.2.s|l.2.q|e\n7|a|1|b|2|end");
    both("two arrays", R"([{"a":[1,2,3],"k":"v","b":["x","y"]}])", "a|k|b\n1|v|x\n2|v|y\n3|v|",
         "a.1|a.2|a.3|k|b.1|b.2\n1|2|3|v|x|y");
    both("arrays at two levels", R"([{"g":[{"n":"p","m":[1,2]},{"n":"q","m":[]},{"n":"r"}]}])",
         "g.n|g.m\np|1\np|2\nq|\nr|", "g.1.n|g.1.m.1|g.1.m.2|g.2.n|g.2.m|g.3.n\np|1|2|q||r");
    both("array in an object", R"([{"a":{"x":1,"y":[1,2]},"z":0}])", "a.x|a.y|z\n1|1|0\n1|2|0",
         "a.x|a.y.1|a.y.2|z\n1|1|2|0");
    both("arrays in arrays", R"([{"m":[[1,2],[3]]}])", "m\n1\n2\n3", "m.1.1|m.1.2|m.2.1\n1|2|3");
    both("arrays at the top", "[[1,2],[3,4]]", "Value\n1\n2\n3\n4", "1|2\n1|2\n3|4");
    both("array of mixed kinds", R"([{"a":[1,{"b":2},null]}])", "a|a.b\n1|\n|2\n|",
         "a.1|a.2.b|a.3\n1|2|");
    both("repeated key with arrays", R"([{"a":[1,2],"b":5,"a":[3]}])", "a|b\n3|5\n|5",
         "a.1|a.2|b\n3||5");

    addRow("one array of objects", R"({"orders":[{"a":1},{"a":2}]})", "a\n1\n2");
    addRow("array and more", R"({"n":2,"orders":[{"a":1},{"a":2}]})", "n|orders.a\n2|1\n2|2");
    addRow("more after the array", R"({"orders":[{"a":1},{"a":2}],"n":2})", "orders.a|n\n1|2\n2|2");
    addRow("array not of objects", R"({"a":[{"b":1},2]})", "a.b|a\n1|\n|2");
    addRow("array of values only", R"({"a":[1,2]})", "a\n1\n2");
    addRow("one object", R"({"a":1,"b":{"c":2}})", "a|b.c\n1|2");
    addRow("object with an empty array", R"({"a":[]})", "a\n");
    addRow("empty object", "{}", "\n");

    addRow("lines", "{\"a\":1}\n{\"a\":2,\"b\":[3,4]}\n", "a|b\n1|\n2|3\n2|4");
    addRow("lines with CRLF, blank lines, marks",
           "\xef\xbb\xbf\r\n{\"a\":1}\r\n \t\r\n\xef\xbb\xbf{\"a\":2}  \r\n", "a\n1\n2");
    addRow("lines of arrays", "[1,\"x\"]\n[2,\"y\"]", "1|2\n1|x\n2|y", asColumns());
    addRow("lines are not taken apart", "{\"a\":[{\"b\":1}]}\n{\"a\":[]}", "a.b\n1\n");
    addRow("one line is no lines", "[{\"a\":1}]\n", "a\n1");

    addRow("trim", R"([{"a":" x  y "}])", "a\nx  y", with([](auto &o) { o.trim = true; }));
    addRow("simplify", R"([{"a":" x \n y "}])", "a\nx y", with([](auto &o) { o.simplify = true; }));
    addRow("empty rows", R"([{},{"a":1},{"a":""}])", "a\n1",
           with([](auto &o) { o.ignoreEmptyRows = true; }));
    addRow("empty columns", R"([{"a":"","b":1,"c":null}])", "b\n1",
           with([](auto &o) { o.ignoreEmptyColumns = true; }));
    addRow("no leading rows are ignored", R"([{"a":1},{"a":2}])", "a\n1\n2",
           with([](auto &o) { o.ignoredRows = 1; }));
    addRow("the header is not in the rows", R"([{"a":1}])", "a\n1",
           with([](auto &o) { o.header = false; }));
    addRow("the encoding does not matter", "[{\"a\":\"\xc3\xa4\"}]", "a\n\xc3\xa4",
           with([](auto &o) { o.encoding = QStringLiteral("windows-1252"); }));
}

void TestJsonReader::mapsValues()
{
    QFETCH(QByteArray, bytes);
    QFETCH(InputOptions, options);
    QFETCH(QString, expected);
    Messages messages;
    QString found = tableText(readBytes(bytes, options, &messages));
    if (bytes.contains("\\u0000")) {
        QVERIFY(found.endsWith(QChar(QChar::Null) + QStringLiteral(".")));
        found.chop(2);
    }
    QCOMPARE(found, expected);
    QVERIFY(!messages.failed);
}

void TestJsonReader::failsWithAClearText_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");
    const auto addRow = [](const char *name, const QByteArray &bytes, const char *expected) {
        QTest::newRow(name) << bytes << QString::fromUtf8(expected);
    };
    addRow("cut", R"([{"a":1},{"a")", "Error parsing JSON: unterminated string at offset 13.");
    addRow("no comma", R"([{"a":1}{"a":2}])",
           "Error parsing JSON: missing value separator at offset 9.");
    addRow("comma too many", R"([{"a":1,}])",
           "Error parsing JSON: object is missing after a comma at offset 9.");
    addRow("more than bytes", "[\"\xc3\xa4\" \"\"]",
           "Error parsing JSON: missing value separator at offset 7.");
    addRow("deep", QByteArray(20000, '[') + QByteArray(20000, ']'),
           "Error parsing JSON: too deeply nested document at offset 1025.");
    addRow("deep objects", QByteArray("{\"a\":").repeated(20000),
           "Error parsing JSON: too deeply nested document at offset 5121.");
    for (const char *text : {"5", " \"text\" ", "true", "null\n", "-1.5e3", "\"a\nb\""}) {
        addRow(text, text, "Array or object expected at top-level in JSON");
    }
    addRow("words", "hello world", "Error parsing JSON lines: at line 1 offset 1: illegal value.");
    addRow("bad word", "[nul]", "Error parsing JSON lines: at line 1 offset 2: illegal value.");
    addRow("second line", "{\"a\":1}\n\n{\"a\":2\n{\"a\":3}\n",
           "Error parsing JSON lines: at line 3 offset 6: invalid termination by number.");
    addRow("plain value in a line", "{\"a\":1}\n  7\n",
           "Error parsing JSON lines: at line 2 offset 1: illegal value.");
}

void TestJsonReader::failsWithAClearText()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, expected);
    Messages messages;
    const Dataset dataset = readBytes(bytes, json(), &messages);
    QCOMPARE(messages.warnings, QStringList{expected});
    QVERIFY(messages.failed);
    QCOMPARE(dataset.rowCount(), 0);
    QCOMPARE(dataset.columnCount(), ColIndex(0));
}

void TestJsonReader::tellsRepeatedKeys()
{
    Messages messages;
    readBytes(R"([{"a":1,"a":2,"a":3},{"a":1}])", json(), &messages);
    QCOMPARE(messages.warnings,
             QStringList{QStringLiteral("2 value(s) dropped because their key occurs again in the "
                                        "same object; the last value counts.")});
}

void TestJsonReader::keepsUnpairedSurrogates()
{
    Messages messages;
    const Dataset dataset = readBytes(R"([{"b":1.0,"a":"\ud800x"}])", json(), &messages);
    QCOMPARE(dataset.cell(RowIndex(0), ColIndex(0)), QStringLiteral("1.0"));
    QCOMPARE(dataset.cell(RowIndex(0), ColIndex(1)), QString(QChar(0xd800)) + QLatin1Char('x'));
}

void TestJsonReader::readsUtf16()
{
    const QString text = QStringLiteral(R"([{"a":"%1"}])").arg(QChar(0x20ac));
    QByteArray bytes("\xff\xfe");
    for (const QChar character : text) {
        bytes.append(char(character.cell())).append(char(character.row()));
    }
    Messages messages;
    QCOMPARE(tableText(readBytes(bytes, json(), &messages)),
             QStringLiteral("a\n%1").arg(QChar(0x20ac)));
}

void TestJsonReader::repairsBytesThatAreNotUtf8()
{
    Messages messages;
    const Dataset dataset = readBytes("[{\"a\":\"x\xff\"}]", json(), &messages);
    QCOMPARE(tableText(dataset), QStringLiteral("a\nx%1").arg(QChar(QChar::ReplacementCharacter)));
    QCOMPARE(messages.warnings.size(), 1);
}

void TestJsonReader::readsManyRowsOfOneRecord()
{
    QByteArray bytes = "{\"title\":\"t\",\"rows\":[";
    for (int i = 0; i < 30000; ++i) {
        bytes += "{\"n\":" + QByteArray::number(i) + ",\"m\":[1,2]},";
    }
    bytes.chop(1);
    bytes += "],\"end\":\"e\"}";
    Messages messages;
    const Dataset dataset = readBytes(bytes, json(), &messages);
    QCOMPARE(dataset.rowCount(), 60000);
    for (const int row : {0, 1, 59998, 59999}) {
        const QString line = QStringLiteral("t|%1|%2|e").arg(row / 2).arg(row % 2 + 1);
        QStringList cells;
        for (ColIndex column(0); column < dataset.columnCount(); ++column) {
            cells.append(dataset.cell(RowIndex(row), column));
        }
        QCOMPARE(cells.join(QLatin1Char('|')), line);
    }
}

void TestJsonReader::readsLargeArrays_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("last");
    QTest::addColumn<QByteArray>("end");
    // Longer than the window that the text is read through.
    const QByteArray longText(5000000, 'x');
    QTest::newRow("plain") << QByteArray("{\"a\":1}") << QByteArray("{\"b\":\"\\u00e9\"}")
                           << QByteArray("]");
    QTest::newRow("a long value") << "{\"long\":\"" + longText + "\"}"
                                  << "{\"c\":\"" + longText + "\\n\",\"c\":2}" << QByteArray("]\n");
    QTest::newRow("numbers") << QByteArray("12345") << QByteArray("-1.50") << QByteArray(" ] ");
    QTest::newRow("cut off") << QByteArray("{\"a\":1}") << QByteArray("{\"a\":\"x") << QByteArray();
    QTest::newRow("no comma") << QByteArray("{\"a\":1}") << QByteArray("1 2") << QByteArray("]");
    QTest::newRow("more behind it")
        << QByteArray("{\"a\":1}") << QByteArray("1") << QByteArray("] x");
    QTest::newRow("bad bytes") << QByteArray("{\"a\":1}") << QByteArray("\"\xff\"")
                               << QByteArray("]");
}

/// Read in pieces, they give the same table and the same messages as when they are read whole, as
/// the clipboard is.
void TestJsonReader::readsLargeArrays()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, last);
    QFETCH(QByteArray, end);
    QByteArray bytes = "[" + first;
    for (int i = 0; bytes.size() < 17 << 20; ++i) {
        bytes +=
            ",\n{\"number\": " + QByteArray::number(i) + ", \"text\": \"a \\\"quoted\\\" text\"}";
    }
    bytes += "," + last + end;
    Messages messages;
    const Dataset dataset = readBytes(bytes, json(), &messages);
    Messages wholeMessages;
    const bool isUtf8 = !bytes.contains('\xff');
    InputOptions whole = json();
    whole.medium = Medium::Clipboard;
    whole.text = QString::fromUtf8(bytes);
    const Dataset expected = readInput(whole, QString(), &wholeMessages, Progress());
    QCOMPARE(dataset.hasRows(),
             end.startsWith(" ]") || (end.startsWith("]") && end != "] x" && last != "1 2"));
    QVERIFY(dataset == expected);
    if (isUtf8) {
        QCOMPARE(messages.warnings, wholeMessages.warnings);
    } else {
        QCOMPARE(messages.warnings.size(), 1);
    }
}

void TestJsonReader::stopsWhenAsked()
{
    const QByteArray bytes = '[' + QByteArray("{\"a\":1},").repeated(50000) + "{}]";
    Messages messages;
    double last = 0;
    const Dataset dataset = readBytes(bytes, json(), &messages, [&last](double done) {
        last = done;
        return done < 0.5;
    });
    QVERIFY(last >= 0.5 && last < 0.6);
    QCOMPARE(dataset.rowCount(), 0);
    QVERIFY(messages.warnings.isEmpty());
}

void TestJsonReader::letsTheMemoryCeilingThrough()
{
    const QByteArray bytes = '[' + QByteArray("1,").repeated(50000) + "2]";
    Messages messages;
    QVERIFY_EXCEPTION_THROWN(readBytes(bytes, json(), &messages,
                                       [](double done) -> bool {
                                           if (done > 0.5) {
                                               throw MaxMemoryException(1, 2);
                                           }
                                           return true;
                                       }),
                             MaxMemoryException);
}

TW_TEST_CLASS(TestJsonReader)
#include "tst_jsonreader.moc"
