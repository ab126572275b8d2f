#include "messages.h"
#include "outputoptions.h"
#include "outputtesttools.h"
#include "testsupport.h"
#include "textoutput.h"

#include <QTemporaryDir>

using namespace OutputTest;

Q_DECLARE_METATYPE(OutputOptions)

namespace {

QString utf8(const char *text)
{
    return QString::fromUtf8(text);
}

OutputOptions optionsFor(FileType type)
{
    OutputOptions options;
    options.fileType = type;
    options.lineEnding = LineEnding::Unix;
    return options;
}

const Rows twoRows{{utf8("1"), utf8("x")}, {QString(), utf8("y")}};

} // namespace

/// The layout of HTML, vCard, XML, YAML and Markdown, and what happens when rows are added.
class TestRecordWriters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(QStringLiteral("a.txt"));
        m_messages.clear();
    }

    void layout_data()
    {
        QTest::addColumn<OutputOptions>("options");
        QTest::addColumn<QStringList>("header");
        QTest::addColumn<Rows>("rows");
        QTest::addColumn<QByteArray>("expected");
        const QStringList names{utf8("a"), utf8("b")};
        const auto addRow = [&](const char *tag, const OutputOptions &options, const Rows &rows,
                                const QByteArray &expected) {
            QTest::newRow(tag) << options << names << rows << expected;
        };

        OutputOptions html = optionsFor(FileType::Html);
        const QByteArray head = "<!DOCTYPE html>\n<html>\n  <head>\n"
                                "    <meta charset=\"UTF-8\"/>\n    <title>T&lt;</title>\n"
                                "    <style>table,td,th{border:1px solid black;text-align:left;"
                                "vertical-align:top;border-spacing:0px;border-color:gray;"
                                "font-family:Verdana,sans-serif;}th{background-color:#E0E0E0;}"
                                "td,th{padding:5px;}</style>\n  </head>\n  <body>\n    <table>\n"
                                "      <tbody>\n";
        const QByteArray tail = "      </tbody>\n    </table>\n  </body>\n</html>\n";
        const QByteArray th = "        <tr>\n          <th>a</th>\n          <th>b</th>\n"
                              "        </tr>\n";
        addRow("HTML", html, {{utf8("<&>\"'"), QString()}},
               head + th +
                   "        <tr>\n          <td>&lt;&amp;&gt;&quot;'</td>\n"
                   "          <td></td>\n        </tr>\n" +
                   tail);
        addRow("HTML without rows", html, {}, head + th + tail);
        html.htmlEncode = false;
        html.writeHeader = false;
        html.fileComment = utf8("a-->b");
        addRow("HTML as it stands", html, {{utf8("<b>"), utf8("x")}},
               "<!--a--&gt;b-->\n" + head +
                   "        <tr>\n          <td><b></td>\n          <td>x</td>\n"
                   "        </tr>\n" +
                   tail);

        const OutputOptions card = optionsFor(FileType::VCard);
        addRow("vCard", card, {{utf8("x:y\nz"), QString()}, {QString(), utf8("\\")}},
               "BEGIN:VCARD\nVERSION:3.0\na:x\\:y z\nEND:VCARD\n"
               "BEGIN:VCARD\nVERSION:3.0\nb:\\\nEND:VCARD\n");

        OutputOptions xml = optionsFor(FileType::Xml);
        addRow("XML", xml, {{utf8("<&>\r"), QString()}},
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n  <record>\n"
               "    <a>&lt;&amp;&gt;&#13;</a>\n    <b/>\n  </record>\n</root>\n");
        xml.removeEmpty = true;
        xml.fileComment = utf8(" --- ");
        xml.xmlAboveRoot = utf8("<?pi?>");
        xml.xmlRoot = utf8("R");
        xml.xmlBelowRoot = utf8("<meta/>");
        xml.xmlRow = utf8("_r");
        addRow("XML with a frame", xml, {{utf8("1"), QString()}, {QString(), QString()}},
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- - - - -->\n<?pi?>\n<R>\n<meta/>\n"
               "  <_r>\n    <a>1</a>\n  </_r>\n  <_r></_r>\n</R>\n");

        OutputOptions yaml = optionsFor(FileType::Yaml);
        addRow("YAML", yaml, {{utf8("no"), QString()}, {utf8("1.5"), utf8("a\nb")}},
               "---\n-\n  a: \"no\"\n  b: \"\"\n-\n  a: 1.5\n  b: \"a\\nb\"\n");
        addRow("YAML without rows", yaml, {}, "---\n");
        yaml.removeEmpty = true;
        yaml.fileComment = utf8("one\ntwo");
        addRow("YAML without empty values", yaml, {{QString(), QString()}, {QString(), utf8("x")}},
               "#one\n#two\n---\n-\n  {}\n-\n  b: x\n");

        OutputOptions markdown = optionsFor(FileType::Markdown);
        addRow("Markdown", markdown,
               {{utf8("long value"), utf8("a|b\nc")}, {utf8("漢"), QString()}},
               "| a          | b         |\n| ---------- | --------- |\n"
               "| long value | a\\|b<br>c |\n| 漢         |           |\n");
        markdown.fileComment = utf8("c");
        markdown.writeHeader = false;
        addRow("Markdown without header", markdown, {{utf8("x"), utf8("y")}},
               "<!--c-->\n| x   | y   |\n");
        markdown.fileComment = utf8("->a--!>b-->");
        addRow("Markdown comment that would end early", markdown, {},
               "<!---&gt;a--!&gt;b--&gt;-->\n");

        const QStringList none;
        QTest::newRow("XML without header")
            << optionsFor(FileType::Xml) << none << Rows{{utf8("x")}}
            << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n  <record>\n"
                          "    <Column_1>x</Column_1>\n  </record>\n</root>\n");
        QTest::newRow("YAML, names with colons")
            << optionsFor(FileType::Yaml) << QStringList{utf8("a:b"), utf8("no"), utf8("a")}
            << Rows{{utf8("1"), utf8("2"), utf8("3")}}
            << QByteArray("---\n-\n  \"a:b\": 1\n  \"no\": 2\n  a: 3\n");
        for (const FileType type :
             {FileType::Html, FileType::VCard, FileType::Xml, FileType::Yaml, FileType::Markdown}) {
            QTest::addRow("no columns, %d", int(type))
                << optionsFor(type) << none << Rows()
                << QByteArray(type == FileType::Html  ? head + tail
                              : type == FileType::Xml ? "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                                                        "\n<root>\n</root>\n"
                              : type == FileType::Yaml ? QByteArray("---\n")
                                                       : QByteArray());
        }
    }

    void layout()
    {
        QFETCH(OutputOptions, options);
        QFETCH(QStringList, header);
        QFETCH(Rows, rows);
        QFETCH(QByteArray, expected);
        write(options, tableOf(header, rows));
        QCOMPARE(contentOf(m_path), expected);
        QCOMPARE(m_messages.warnings, QStringList());
    }

    void lineEndings_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("takesSeparator");
        QTest::newRow("HTML") << int(FileType::Html) << true;
        QTest::newRow("vCard") << int(FileType::VCard) << false;
        QTest::newRow("XML") << int(FileType::Xml) << false;
        QTest::newRow("YAML") << int(FileType::Yaml) << false;
        QTest::newRow("Markdown") << int(FileType::Markdown) << false;
    }

    /// Where the record separator would break the format, a line feed takes its place.
    void lineEndings()
    {
        QFETCH(int, type);
        QFETCH(bool, takesSeparator);
        OutputOptions options = optionsFor(FileType(type));
        const Dataset table = tableOf({utf8("a"), utf8("b")}, twoRows);
        write(options, table);
        const QByteArray lines = contentOf(m_path);
        for (const auto &[ending, text] : QList<QPair<LineEnding, QByteArray>>{
                 {LineEnding::Automatic, "\r\n"},
                 {LineEnding::OldMac, "\r"},
                 {LineEnding::RecordSeparator, takesSeparator ? "\x1e" : "\n"}}) {
            options.lineEnding = ending;
            m_messages.clear();
            write(options, table);
            QCOMPARE(contentOf(m_path), QByteArray(lines).replace("\n", text));
            QCOMPARE(m_messages.warnings.size(),
                     ending == LineEnding::RecordSeparator && !takesSeparator ? 1 : 0);
        }
    }

    void appends_data()
    {
        QTest::addColumn<int>("type");
        QTest::newRow("HTML") << int(FileType::Html);
        QTest::newRow("vCard") << int(FileType::VCard);
        QTest::newRow("XML") << int(FileType::Xml);
        QTest::newRow("YAML") << int(FileType::Yaml);
        QTest::newRow("Markdown") << int(FileType::Markdown);
    }

    /// Two halves give the same file as the whole table, in any encoding and with any line end; an
    /// empty old table and an empty new one too.
    void appends()
    {
        QFETCH(int, type);
        for (const char *encoding : {"UTF-8", "UTF-16LE", "ISO-8859-1"}) {
            for (const LineEnding ending :
                 {LineEnding::Unix, LineEnding::Windows, LineEnding::RecordSeparator}) {
                for (int split = 0; split <= 2; ++split) {
                    OutputOptions options = optionsFor(FileType(type));
                    options.encoding = utf8(encoding);
                    options.byteOrderMark = true;
                    options.headerOnlyIfEmpty = true;
                    options.lineEnding = ending;
                    const QStringList names{utf8("a"), utf8("b")};
                    write(options, tableOf(names, twoRows));
                    const QByteArray whole = contentOf(m_path);
                    QFile::remove(m_path);
                    options.writeMode = WriteMode::Append;
                    write(options, tableOf(names, twoRows.mid(0, split)));
                    write(options, tableOf(names, twoRows.mid(split)));
                    QVERIFY2(!m_messages.failed, qPrintable(m_messages.warnings.join('|')));
                    // Without rows there is no card that an old file could be known by.
                    QCOMPARE(contentOf(m_path), whole);
                }
            }
        }
    }

    void refusesToAppend_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("old");
        const auto addRow = [](const char *tag, FileType type, const QByteArray &old) {
            QTest::newRow(tag) << int(type) << old;
        };
        addRow("HTML of another shape", FileType::Html, "<!DOCTYPE html>\n<html></html>\n");
        addRow("HTML with three columns", FileType::Html,
               "<!DOCTYPE html>\n<html><body><table><tbody><tr><td>1</td><td>2</td><td>3</td></tr>"
               "</tbody></table></body></html>");
        addRow("no card", FileType::VCard, "a,b\n1,2\n");
        addRow("another root", FileType::Xml, "<data>\n</data>\n");
        addRow("other rows", FileType::Xml, "<root><row></row></root>\n");
        addRow("root without content", FileType::Xml, "<root/>\n");
        addRow("a mapping", FileType::Yaml, "a: 1\n");
        addRow("three columns", FileType::Markdown, "| a | b | c |\n");
        addRow("prose", FileType::Markdown, "A report.\n");
    }

    void refusesToAppend()
    {
        QFETCH(int, type);
        QFETCH(QByteArray, old);
        makeFile(m_path, old);
        OutputOptions options = optionsFor(FileType(type));
        options.writeMode = WriteMode::Append;
        write(options, tableOf({utf8("a"), utf8("b")}, twoRows));
        QVERIFY(m_messages.failed);
        QVERIFY(m_messages.warnings.join(' ').contains("to which rows can be added"));
        QCOMPARE(contentOf(m_path), old);
        QCOMPARE(namesIn(m_folder->path()), QStringList{"a.txt"});
    }

    void xmlNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("problems");
        QTest::newRow("empty") << QString() << "empty name";
        QTest::newRow("xml") << "xmlData"
                             << "starts with 'xml'";
        QTest::newRow("XML") << "XmL"
                             << "starts with 'xml'";
        QTest::newRow("digit") << "2col"
                               << "doesn't start with a letter";
        QTest::newRow("blank") << "a b"
                               << "invalid character ' '";
        QTest::newRow("several") << "1 <"
                                 << "doesn't start with a letter, invalid character ' ', "
                                    "invalid character '<'";
        QTest::newRow("fine") << utf8("_é-1.x") << QString();
    }

    void xmlNames()
    {
        QFETCH(QString, name);
        QFETCH(QString, problems);
        write(optionsFor(FileType::Xml), tableOf({name, "b"}, twoRows));
        QCOMPARE(m_messages.warnings,
                 problems.isEmpty()
                     ? QStringList()
                     : QStringList{QStringLiteral("Column name '%1' invalid as an XML tag: %2.")
                                       .arg(name, problems)});
        QCOMPARE(m_messages.failed, !problems.isEmpty());
        QCOMPARE(QFile::exists(m_path), problems.isEmpty());
    }

    void xmlFrameMustBeWellFormed_data()
    {
        QTest::addColumn<QString>("above");
        QTest::addColumn<QString>("below");
        QTest::addColumn<bool>("isFine");
        QTest::newRow("doctype") << "<!DOCTYPE root>" << QString() << true;
        QTest::newRow("text above") << "text" << QString() << false;
        QTest::newRow("open element") << QString() << "<x>" << false;
        QTest::newRow("bare ampersand") << QString() << "a & b" << false;
    }

    void xmlFrameMustBeWellFormed()
    {
        QFETCH(QString, above);
        QFETCH(QString, below);
        QFETCH(bool, isFine);
        OutputOptions options = optionsFor(FileType::Xml);
        options.xmlAboveRoot = above;
        options.xmlBelowRoot = below;
        write(options, tableOf({"a", "b"}, twoRows));
        QCOMPARE(m_messages.failed, !isFine);
        QCOMPARE(QFile::exists(m_path), isFine);
    }

    void whatIsLostIsTold()
    {
        const Dataset table = tableOf({"a"}, {{QString(QChar(1))}, {utf8("€")}, {utf8("é")}});
        OutputOptions options = optionsFor(FileType::Xml);
        options.encoding = "ISO-8859-1";
        write(options, table);
        QCOMPARE(m_messages.warnings,
                 QStringList{"1 value(s) contain characters that XML does not allow, the first of "
                             "them is U+0001. They are written as U+FFFD."});
        m_messages.clear();
        options.fileType = FileType::Markdown;
        write(options, table);
        QCOMPARE(m_messages.warnings,
                 QStringList{"1 value(s) contain characters that encoding 'ISO-8859-1' cannot "
                             "hold."});
    }

    void wideAndLargeTables()
    {
        QStringList names;
        QStringList row;
        for (int i = 0; i < 20000; ++i) {
            names.append(QStringLiteral("c%1").arg(i));
            row.append(i == 7 ? QString(10000000, 'x') : QString::number(i));
        }
        const Dataset table = tableOf(names, {row, row});
        for (const FileType type :
             {FileType::Html, FileType::VCard, FileType::Xml, FileType::Yaml, FileType::Markdown}) {
            write(optionsFor(type), table);
            QVERIFY(!m_messages.failed);
            const QByteArray content = contentOf(m_path);
            QVERIFY(content.size() > 20000000 && content.size() < 27000000);
            QCOMPARE(content.count("19999"),
                     type == FileType::VCard || type == FileType::Yaml || type == FileType::Xml
                         ? (type == FileType::Xml ? 6 : 4)
                         : 3);
        }
    }

private:
    void write(const OutputOptions &options, const Dataset &table)
    {
        writeTextFile(options, m_path, "T<", table, &m_messages, {});
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    Messages m_messages;
};

TW_TEST_CLASS(TestRecordWriters)
#include "tst_recordwriters.moc"
