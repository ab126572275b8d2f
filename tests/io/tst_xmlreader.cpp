#include "memoryceiling.h"
#include "nestedtools.h"
#include "testsupport.h"

Q_DECLARE_METATYPE(InputOptions)

namespace {

InputOptions xml()
{
    InputOptions options;
    options.fileType = FileType::Xml;
    options.ignoreEmptyRows = false;
    return options;
}

template <class Change>
InputOptions with(Change change)
{
    InputOptions options = xml();
    change(options);
    return options;
}

} // namespace

class TestXmlReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mapsElements_data();
    void mapsElements();
    void tellsWhatIsNotRead_data();
    void tellsWhatIsNotRead();
    void failsWithAClearText_data();
    void failsWithAClearText();
    void hintsAtTheDeclaredEncoding();
    void readsTheDeclaredEncodingWhenAsked();
    void stopsWhenAsked();
    void letsTheMemoryCeilingThrough();
};

void TestXmlReader::mapsElements_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<InputOptions>("options");
    QTest::addColumn<QString>("expected");
    const auto addRow = [](const char *name, const QByteArray &bytes, const char *expected,
                           const InputOptions &options = xml()) {
        QTest::newRow(name) << bytes << options << QString::fromUtf8(expected);
    };
    const auto both = [&](const QByteArray &name, const QByteArray &bytes, const char *asRows,
                          const char *columns) {
        addRow((name + ", rows").constData(), bytes, asRows);
        addRow((name + ", columns").constData(), bytes, columns,
               with([](InputOptions &o) { o.jsonArraysAsRows = false; }));
    };

    addRow("records", "<r><o><a>1</a><b>x</b></o><o><b>y</b><a>2</a><c/></o></r>",
           "a|b|c\n1|x|\n2|y|");
    addRow("attributes", "<r><o id='1' n=\"&lt;\"><a u='cm'>5</a></o><o id='2'/></r>",
           "@id|@n|a.@u|a\n1|<|cm|5\n2|||");
    addRow("nesting", "<r><o><a><b>1</b><c><d>2</d></c></a></o><o><a><c><d>3</d></c></a></o></r>",
           "a.b|a.c.d\n1|2\n|3");
    addRow("records below", "<r><h><t>x</t></h><l><o><a>1</a></o><o><a>2</a></o></l></r>",
           "a\n1\n2");
    addRow("the shallowest repeats", "<r><d><o>1</o><o>2</o></d><d><o>3</o></d></r>", "o\n1\n2\n3");
    addRow("the most frequent repeats", "<r><k>a</k><k>b</k><i><n>1</n></i><i/><i/></r>",
           "n\n1\n\n");
    addRow("plain records", "<r><tag>a</tag><tag>b</tag></r>", "tag\na\nb");
    addRow("plain records with attributes", "<r><tag n='1'>a</tag><tag>b</tag></r>",
           "@n|tag\n1|a\n|b");
    addRow("one record", "<orders><order><id>1</id><n>x</n></order></orders>", "id|n\n1|x");
    addRow("each child of the root", "<r><a><x>1</x></a><b><y>2</y></b></r>", "x|y\n1|\n|2");
    addRow("the root", "<r><host>a</host><port><tcp>1</tcp></port></r>", "host|port.tcp\na|1");
    addRow("only a root", "<r a='1'>x</r>", "@a|r\n1|x");
    addRow("an empty root", "<r/>", "\n");
    both("repeated children", "<r><o><i>1</i><t>x</t><t>y</t></o><o><i>2</i><t>z</t></o></r>",
         "i|t\n1|x\n1|y\n2|z", "i|t.1|t.2\n1|x|y\n2|z|");
    both("repeated children in turn", "<r><o><a>1</a><b>x</b><a>2</a><b>y</b><b>z</b></o><o/></r>",
         "a|b\n1|x\n2|y\n|z\n|", "a.1|b.1|a.2|b.2|b.3\n1|x|2|y|z\n||||");
    both("repeated in repeated",
         "<r><o k='1'><l><v>1</v><v>2</v></l><l><v>3</v></l></o><o k='2'/></r>",
         "@k|l.v\n1|1\n1|2\n1|3\n2|", "@k|l.1.v.1|l.1.v.2|l.2.v.1\n1|1|2|3\n2|||");
    addRow("the same name inside", "<n><n><n>1</n></n><n><n>2</n></n></n>", "n\n1\n2");
    addRow("mixed text", "<r><p>  one <b>two</b> three\n</p><p>four</p></r>",
           "b|p\ntwo|one  three\n|four");
    addRow("blanks of a leaf stay", "<r><p> a </p><p>\t</p></r>", "p\n a \n\t");
    addRow("CDATA, comments, instructions",
           "<?xml version='1.0'?><!-- x --><r><?pi y?><p>a<![CDATA[<&]]>b<!-- c -->d</p><p/></r>",
           "p\na<&bd\n");
    addRow("entities", "<!DOCTYPE r [<!ENTITY e 'x&#228;'>]><r><p a='&e;'>&e;&amp;</p><p/></r>",
           "@a|p\nx\xc3\xa4|x\xc3\xa4&\n|");
    addRow("prefixes",
           "<x:r xmlns:x='urn:x' xmlns='urn:y'><x:o x:a='1' xmlns:z='urn:z'><z:b>2</z:b>"
           "</x:o><x:o/></x:r>",
           "@x:a|z:b\n1|2\n|");
    addRow("a mark", "\xef\xbb\xbf<r><a>1</a><a>2</a></r>", "a\n1\n2");
    addRow("trim", "<r><a> 1  2 </a><a/></r>", "a\n1  2\n", with([](auto &o) { o.trim = true; }));
    addRow("simplify", "<r><a> 1 \n 2 </a><a/></r>", "a\n1 2\n",
           with([](auto &o) { o.simplify = true; }));
    addRow("empty rows", "<r><a>1</a><a/></r>", "a\n1",
           with([](auto &o) { o.ignoreEmptyRows = true; }));
    addRow("empty columns", "<r><o><a/><b>1</b></o><o/></r>", "b\n1\n",
           with([](auto &o) { o.ignoreEmptyColumns = true; }));
    addRow("no leading rows are ignored", "<r><a>1</a><a>2</a></r>", "a\n1\n2",
           with([](auto &o) { o.ignoredRows = 1; }));
}

void TestXmlReader::mapsElements()
{
    QFETCH(QByteArray, bytes);
    QFETCH(InputOptions, options);
    QFETCH(QString, expected);
    Messages messages;
    const QString found = tableText(readBytes(bytes, options, &messages));
    QVERIFY2(!messages.failed, qPrintable(messages.warnings.join('\n')));
    QCOMPARE(found, expected);
}

void TestXmlReader::tellsWhatIsNotRead_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("note");
    QTest::addColumn<QString>("warning");
    QTest::newRow("nothing") << QByteArray("<r xmlns='urn:x'>\n<o/><o/></r>") << QString()
                             << QString();
    QTest::newRow("attributes and single elements")
        << QByteArray("<r v='1'><h><t>x</t></h><l><o/><o/></l></r>")
        << QStringLiteral("Each 'o' is a row. Outside of them and not read: r, r.h.") << QString();
    QTest::newRow("text of parents")
        << QByteArray("<r><l>text<o/><o/></l></r>")
        << QStringLiteral("Each 'o' is a row. Outside of them and not read: r.l.") << QString();
    QTest::newRow("other records")
        << QByteArray("<r><c/><o/><o/><c/><o/></r>") << QString()
        << QStringLiteral("Each 'o' is a row. Outside of them and not read: r.c.");
}

void TestXmlReader::tellsWhatIsNotRead()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, note);
    QFETCH(QString, warning);
    Messages messages;
    InputOptions options = xml();
    options.encoding = QStringLiteral("UTF-8");
    readBytes(bytes, options, &messages);
    QCOMPARE(messages.information.join('\n'), note);
    QCOMPARE(messages.warnings.join('\n'), warning);
}

void TestXmlReader::failsWithAClearText_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");
    const auto addRow = [](const char *name, const QByteArray &bytes, const char *expected) {
        QTest::newRow(name) << bytes << QString::fromUtf8(expected);
    };
    addRow("nothing", "", "Error parsing XML: no element found at line 1 column 1");
    addRow("no XML", "a,b\n1,2\n", "Error parsing XML: syntax error at line 1 column 1");
    addRow("wrong end", "<r>\n <\xc3\xa4>\xe2\x82\xac</b></r>",
           "Error parsing XML: mismatched tag at line 2 column 6");
    addRow("cut", "<r><a>1</a>", "Error parsing XML: no element found at line 1 column 12");
    addRow("two roots", "<r/><r/>",
           "Error parsing XML: junk after document element at line 1 column 5");
    addRow("attribute twice", "<r a='1' a='2'/>",
           "Error parsing XML: duplicate attribute at line 1 column 10");
    addRow("undefined entity", "<r>&nbsp;</r>",
           "Error parsing XML: undefined entity at line 1 column 4");
    addRow("entity of a file that is not read", "<!DOCTYPE r SYSTEM 'r.dtd'><r>\n&e;</r>",
           "Error parsing XML: the entity 'e' is not defined in the file at line 2 column 1");
    addRow("external entity", "<!DOCTYPE r [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><r>&e;</r>",
           "Error parsing XML: external entities are not read at line 1 column 58");
    addRow("deep", QByteArray("<a>").repeated(20000),
           "Error parsing XML: elements are nested too deeply at line 1 column 3073");
    QByteArray bomb = "<!DOCTYPE r [<!ENTITY a0 '0123456789'>";
    for (int i = 1; i < 10; ++i) {
        const QByteArray inner = "&a" + QByteArray::number(i - 1) + ";";
        bomb += "<!ENTITY a" + QByteArray::number(i) + " '" + inner.repeated(10) + "'>";
    }
    addRow("entities that multiply", bomb + "]><r>&a9;</r>",
           "Error parsing XML: limit on input amplification factor (from DTD and entities) "
           "breached at line 1 column 539");
}

void TestXmlReader::failsWithAClearText()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, expected);
    Messages messages;
    const Dataset dataset = readBytes(bytes, xml(), &messages);
    QCOMPARE(messages.warnings, QStringList{expected});
    QVERIFY(messages.failed);
    QCOMPARE(dataset.columnCount(), ColIndex(0));
}

void TestXmlReader::hintsAtTheDeclaredEncoding()
{
    Messages messages;
    const Dataset dataset = readBytes(
        "<?xml version='1.0' encoding='windows-1252'?><r><a>\xe4</a><a/></r>", xml(), &messages);
    QCOMPARE(dataset.rowCount(), 2);
    QCOMPARE(messages.warnings.size(), 2);
    QCOMPARE(messages.warnings.last(),
             QStringLiteral("The file says that its encoding is 'windows-1252', but it was read as "
                            "'UTF-8'. Set 'Encoding' option to change."));
}

void TestXmlReader::readsTheDeclaredEncodingWhenAsked()
{
    Messages messages;
    InputOptions options = xml();
    options.encoding = QStringLiteral("windows-1252");
    const Dataset dataset = readBytes(
        "<?xml version='1.0' encoding='windows-1252'?><r><a>\xe4</a><a/></r>", options, &messages);
    QCOMPARE(tableText(dataset), QString::fromUtf8("a\n\xc3\xa4\n"));
    QVERIFY(messages.warnings.isEmpty());
}

void TestXmlReader::stopsWhenAsked()
{
    const QByteArray bytes = "<r>" + QByteArray("<a>1</a>").repeated(50000) + "</r>";
    for (const double limit : {0.3, 0.7}) {
        Messages messages;
        double last = 0;
        const Dataset dataset = readBytes(bytes, xml(), &messages, [&](double done) {
            last = done;
            return done < limit;
        });
        QVERIFY(last >= limit && last < limit + 0.1);
        QCOMPARE(dataset.rowCount(), 0);
        QVERIFY(!messages.failed);
    }
}

void TestXmlReader::letsTheMemoryCeilingThrough()
{
    const QByteArray bytes = "<r>" + QByteArray("<a>1</a>").repeated(50000) + "</r>";
    Messages messages;
    QVERIFY_EXCEPTION_THROWN(readBytes(bytes, xml(), &messages,
                                       [](double done) -> bool {
                                           if (done > 0.5) {
                                               throw MaxMemoryException(1, 2);
                                           }
                                           return true;
                                       }),
                             MaxMemoryException);
}

TW_TEST_CLASS(TestXmlReader)
#include "tst_xmlreader.moc"
