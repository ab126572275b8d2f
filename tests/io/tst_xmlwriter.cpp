#include "outputoptions.h"
#include "outputtesttools.h"
#include "readertools.h"
#include "testsupport.h"
#include "textoutput.h"

using namespace OutputTest;

class TestXmlWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(QStringLiteral("a.xml"));
        m_options = OutputOptions();
        m_options.fileType = FileType::Xml;
        m_options.lineEnding = LineEnding::Unix;
        m_messages.clear();
    }

    void values_data()
    {
        QTest::addColumn<QString>("encoding");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("expected");
        const auto addRow = [](const char *encoding, const QString &value, const char *expected) {
            QTest::addRow("%s %s", encoding, qPrintable(value))
                << QString::fromLatin1(encoding) << value << QByteArray(expected);
        };
        addRow("UTF-8", u8"]]> --> </script> \"'", u8"]]&gt; --&gt; &lt;/script&gt; \"'");
        addRow("UTF-8", " \t\n\r\r\n", " \t\n&#13;&#13;\n");
        addRow("UTF-8", u8"é€😀\u0085\u2028\uff21\ufeff", u8"é€😀\u0085\u2028\uff21\ufeff");
        addRow("UTF-8", QString(QChar(0)) + QChar(0x1f) + QChar(0xfffe) + QChar(0xd83d) + 'x',
               u8"\ufffd\ufffd\ufffd\ufffdx");
        addRow("ISO-8859-1", u8"é€😀", "\xe9&#8364;&#128512;");
        addRow("ISO-8859-1", QString(QChar(1)), "&#65533;");
    }

    void values()
    {
        QFETCH(QString, encoding);
        QFETCH(QString, value);
        QFETCH(QByteArray, expected);
        m_options.encoding = encoding;
        QCOMPARE(write(tableOf({"a"}, {{value}})), WriteResult::Written);
        QCOMPARE(contentOf(m_path), "<?xml version=\"1.0\" encoding=\"" + encoding.toLatin1() +
                                        "\"?>\n<root>\n  <record>\n    <a>" + expected +
                                        "</a>\n  </record>\n</root>\n");
        QCOMPARE(m_messages.warnings.size(),
                 expected.contains(u8"\ufffd") || expected.contains("65533") ? 1 : 0);
    }

    void rowsWithoutAnythingAreEmptyElements()
    {
        Dataset table = tableOf({"a"}, {{"1"}, {"2"}});
        table.setColumnCount(ColIndex(0));
        QCOMPARE(write(table), WriteResult::Written);
        QVERIFY(contentOf(m_path).endsWith(
            "<root>\n  <record></record>\n  <record></record>\n</root>\n"));
    }

    void comments_data()
    {
        QTest::addColumn<QString>("comment");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("end inside") << " a-->b " << QByteArray(" a- ->b ");
        QTest::newRow("hyphens") << "---" << QByteArray("- - - ");
        QTest::newRow("controls") << QString::fromLatin1("a\x01") << QByteArray(u8"a\ufffd");
    }

    void comments()
    {
        QFETCH(QString, comment);
        QFETCH(QByteArray, expected);
        m_options.fileComment = comment;
        QCOMPARE(write(tableOf({"a"}, {})), WriteResult::Written);
        QCOMPARE(contentOf(m_path), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!--" + expected +
                                        "-->\n<root>\n</root>\n");
    }

    void refuses_data()
    {
        QTest::addColumn<QStringList>("settings");
        QTest::addColumn<QStringList>("header");
        QTest::addColumn<QString>("warning");
        const auto addRow = [](const char *tag, const QStringList &settings,
                               const QStringList &header, const char *warning) {
            QTest::newRow(tag) << settings << header << QString::fromUtf8(warning);
        };
        // Encoding, root name, row name, above root, below root.
        addRow("root name", {"UTF-8", "a b"}, {"a"},
               "Root name 'a b' invalid as an XML tag: invalid character ' '.");
        addRow("row name", {"UTF-8", "", "1"}, {"a"},
               "Row name '1' invalid as an XML tag: doesn't start with a letter.");
        addRow("letters that XML does not take", {"UTF-8"}, {u8"xªy𠀀"},
               u8"Column name 'xªy𠀀' invalid as an XML tag: invalid character 'ª', invalid "
               u8"character '𠀀'.");
        addRow("first letter that XML does not take", {"UTF-8"}, {u8"ª"},
               u8"Column name 'ª' invalid as an XML tag: invalid character 'ª'.");
        addRow("letters outside the encoding", {"ISO-8859-1"}, {u8"éΩ"},
               u8"Column name 'éΩ' invalid as an XML tag: invalid character 'Ω'.");
        addRow("repeated bad names", {"UTF-8"}, {"", "", "@x", "a"},
               "Column name '' invalid as an XML tag: empty name.|Column name '@x' invalid as an "
               "XML tag: doesn't start with a letter.");
        addRow("encoding that XML cannot name", {"ISO_8859-1:1987"}, {"a"},
               "An XML document cannot name 'ISO_8859-1:1987' as its encoding, nothing written.");
        addRow(
            "above root", {"UTF-8", "", "", "<x>"}, {"a"},
            "'Above root' does not leave the XML document well-formed: no element found. Nothing "
            "written.");
        addRow("root inside a comment", {"UTF-8", "", "", "<!--", "--><root>"}, {"a"},
               "'Above root' does not leave the XML document well-formed: unclosed token. Nothing "
               "written.");
        addRow("end of the root", {"UTF-8", "", "", "", "</root>"}, {"a"},
               "'Below root' does not leave the XML document well-formed: junk after document "
               "element. Nothing written.");
        addRow("outside the encoding", {"US-ASCII", "", "", "", u8"<é/>"}, {"a"},
               "'Below root' does not leave the XML document well-formed: not well-formed (invalid "
               "token). Nothing written.");
    }

    /// Twice, as for two files of one item: each thing is told once.
    void refuses()
    {
        QFETCH(QStringList, settings);
        QFETCH(QStringList, header);
        QFETCH(QString, warning);
        m_options.encoding = settings.value(0);
        m_options.xmlRoot = settings.value(1);
        m_options.xmlRow = settings.value(2);
        m_options.xmlAboveRoot = settings.value(3);
        m_options.xmlBelowRoot = settings.value(4);
        QCOMPARE(write(tableOf(header, {{"1", "2", "3", "4"}})), WriteResult::Failed);
        QCOMPARE(write(tableOf(header, {{"1", "2", "3", "4"}})), WriteResult::Failed);
        QCOMPARE(m_messages.warnings.join('|'), warning);
        QVERIFY(m_messages.failed);
        QCOMPARE(namesIn(m_folder->path()), QStringList());
    }

    void badNamesAreListedUpToAHundred()
    {
        QStringList names;
        for (int i = 0; i < 20000; ++i) {
            names.append(QString::number(i));
        }
        QCOMPARE(write(tableOf(names, {names})), WriteResult::Failed);
        QCOMPARE(m_messages.warnings.size(), 101);
        QCOMPARE(m_messages.warnings.last(),
                 QString("19,900 more column name(s) invalid as an XML tag."));
    }

    void appends_data()
    {
        QTest::addColumn<QByteArray>("old");
        QTest::addColumn<QByteArray>("expected");
        const QByteArray row = "  <record>\n    <a>1</a>\n  </record>\n";
        const QByteArray meta = "<root><meta>x</meta>\n";
        const auto addRow = [](const char *tag, const QByteArray &old, const QByteArray &expected) {
            QTest::newRow(tag) << old << expected;
        };
        addRow("rows", "<root>\n" + row + "</root>\n", "<root>\n" + row + row + "</root>\n");
        addRow("one line", "<root><record/></root>", "<root><record/>\n" + row + "</root>");
        addRow("indented", "<root>\n  </root >", "<root>\n" + row + "  </root >");
        addRow("what stands below the root", meta + "</root>", meta + row + "</root>");
        addRow("attributes, comment and prolog", "<!-- <x> --><!DOCTYPE root><root a='<'></root>",
               QByteArray());
        addRow("prolog", "<!-- <x> --><!DOCTYPE root><root a='&lt;'></root>",
               "<!-- <x> --><!DOCTYPE root><root a='&lt;'>\n" + row + "</root>");
        addRow("other rows", "<root><r></r></root>", QByteArray());
        addRow("inner root", "<x><root></root></x>", QByteArray());
        addRow("text behind", "<root></root> x", QByteArray());
        addRow("other encoding", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><root></root>",
               QByteArray());
        addRow("same encoding", "<?xml version=\"1.0\" encoding=\"utf8\"?><root></root>",
               "<?xml version=\"1.0\" encoding=\"utf8\"?><root>\n" + row + "</root>");
        addRow("long rows", "<root>\n<record>" + QByteArray(200000, 'x') + "</record>\n</root>",
               "<root>\n<record>" + QByteArray(200000, 'x') + "</record>\n" + row + "</root>");
    }

    void appends()
    {
        QFETCH(QByteArray, old);
        QFETCH(QByteArray, expected);
        makeFile(m_path, old);
        m_options.writeMode = WriteMode::Append;
        m_options.xmlBelowRoot = "<meta>x</meta>\n";
        const WriteResult result = write(tableOf({"a"}, {{"1"}}));
        QCOMPARE(contentOf(m_path), expected.isEmpty() ? old : expected);
        QCOMPARE(result == WriteResult::Failed, expected.isEmpty());
    }

    void readsBackUnchanged_data()
    {
        QTest::addColumn<int>("ending");
        QTest::newRow("CR LF") << int(LineEnding::Windows);
        QTest::newRow("LF") << int(LineEnding::Unix);
        QTest::newRow("CR") << int(LineEnding::OldMac);
    }

    void readsBackUnchanged()
    {
        QFETCH(int, ending);
        m_options.lineEnding = LineEnding(ending);
        const Dataset table =
            tableOf({"a", "a.b", "record", u8"_é-1"}, {{" ", "\t", "\n", "\r"},
                                                       {" x ", "\r\n", "", u8"\u0085\u2028"},
                                                       {"", "", "", ""},
                                                       {"<a>&amp;", "]]>", "--", "&#13;"}});
        QCOMPARE(write(table), WriteResult::Written);
        InputOptions options;
        options.fileType = FileType::Xml;
        options.ignoreEmptyRows = false;
        QVERIFY(readBytes(contentOf(m_path), options).table == table);
        // An empty row stays empty without its elements, too.
        m_options.removeEmpty = true;
        QCOMPARE(write(table), WriteResult::Written);
        QVERIFY(readBytes(contentOf(m_path), options).table == table);
    }

private:
    WriteResult write(const Dataset &table)
    {
        return writeTextFile(m_options, m_path, QString(), table, &m_messages, {});
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    OutputOptions m_options;
    Messages m_messages;
};

TW_TEST_CLASS(TestXmlWriter)
#include "tst_xmlwriter.moc"
