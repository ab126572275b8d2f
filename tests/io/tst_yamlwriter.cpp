#include "messages.h"
#include "outputoptions.h"
#include "outputtesttools.h"
#include "testsupport.h"
#include "textoutput.h"

#include <QTemporaryDir>

using namespace OutputTest;

class TestYamlWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(QStringLiteral("a.yaml"));
        m_options = OutputOptions();
        m_options.fileType = FileType::Yaml;
        m_options.lineEnding = LineEnding::Unix;
        m_messages.clear();
    }

    void quotesOnlyWhatWouldReadDifferently_data()
    {
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<bool>("isPlain");
        const auto addRow = [](const char *tag, bool isPlain, const QString &values) {
            QTest::newRow(tag) << values.split('|') << isPlain;
        };
        addRow("texts", true, u8"x|two words|é€😀漢|a:b|a#b|x-|it's|a\"b|back\\slash|a, b|a]|=1");
        addRow("starts that need a blank", true, "-x|--- x|?x|...");
        addRow("usual numbers", true,
               "0|12|-7|1.5|-0.25|0.0001|123456789012345|99999999.9999999|100");
        addRow("words in unusual letters", true, "nULL|yEs|oN|nulls|.naN|none|truth|tRUE");
        addRow("nearly numbers", true, "10a|1.2.3|+x|1-2|1:x|0x|.|+.|1e|0xg|1 000|192.168.0.1");
        addRow("nearly dates", true, "2024-1|2024-001-01|20240101|2024-01-31x|24-01-31");
        addRow("indicators", false,
               ",x|[a]|{}|#x|&a|*a|!t|>|'x'|\"x\"|%|@x|`x|: x|:x|-|?|- x|? x|-\tx|{a: b}");
        addRow("colons and comments", false, "a: b|a:|a:\tb|a #b|a\t#b");
        addRow("blanks", false, " x|x |\tx|a\tb|  ");
        addRow("booleans, null and keys", false,
               "true|False|yes|No|ON|off|y|N|null|Null|NULL|~|=|<<");
        addRow("unusual numbers", false,
               "007|-0|+1|1.0|1.50|.5|5.|1e3|1E+3|-1.5e-3|0x1F|0o7|0b1|1_000|1,000|12:30|08:30|"
               "1:2:3.5|.inf|-.INF|+.Inf|.nan|1234567890123456|0.00001|0X1f|-0.0|1e400");
        addRow("dates", false,
               "2024-01-31|2024-02-30|2024-1-5|2024-01-31T14:05:09Z|2024-01-31 14:05");
    }

    void quotesOnlyWhatWouldReadDifferently()
    {
        QFETCH(QStringList, values);
        QFETCH(bool, isPlain);
        for (QString value : values) {
            write({"a"}, {{value}});
            if (!isPlain) {
                value.replace('\\', "\\\\").replace('"', "\\\"").replace('\t', "\\t");
                value = '"' + value + '"';
            }
            QCOMPARE(contentOf(m_path), "---\n-\n  a: " + value.toUtf8() + "\n");
        }
    }

    void escapes_data()
    {
        QTest::addColumn<QString>("encoding");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("expected");
        QTest::addColumn<int>("warnings");
        const auto addRow = [](const char *encoding, const QString &value,
                               const QByteArray &expected, int warnings = 0) {
            QTest::newRow(expected.constData())
                << QString(encoding) << value << expected << warnings;
        };
        addRow("UTF-8", QString("a\n\r\t\"\\\x01\x1f\x7f") + QChar(0),
               "\"a\\n\\r\\t\\\"\\\\\\x01\\x1f\\x7f\\x00\"");
        addRow("UTF-8", u8"é\u0085\u009f\u2028\u2029\ufeff\uffff\u00a0",
               u8"\"é\\x85\\x9f\\u2028\\u2029\\ufeff\\uffff\u00a0\"");
        addRow("UTF-8", QString(QChar(0xd83d)) + 'x', "\"\\ud83dx\"", 1);
        addRow("ISO-8859-1", u8"é€😀", "\"\xe9\\u20ac\\U0001f600\"");
        addRow("ISO-8859-1", u8"é", "\xe9");
    }

    /// Names are escaped like values.
    void escapes()
    {
        QFETCH(QString, encoding);
        QFETCH(QString, value);
        QFETCH(QByteArray, expected);
        QFETCH(int, warnings);
        m_options.encoding = encoding;
        write({value}, {{value}});
        QCOMPARE(contentOf(m_path), "---\n-\n  " + expected + ": " + expected + "\n");
        QCOMPARE(m_messages.warnings.size(), warnings);
    }

    void names_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("expected");
        const auto addRow = [](const QString &name, const QByteArray &expected) {
            QTest::newRow(expected.left(20).constData()) << name << expected;
        };
        addRow("two words", "two words: ");
        addRow("a:b", "\"a:b\": ");
        addRow("a:\"b\"", "\"a:\\\"b\\\"\": ");
        addRow("", "\"\": ");
        addRow("12", "\"12\": ");
        addRow("no", "\"no\": ");
        addRow("<<", "\"<<\": ");
        addRow(QString(1001, 'x'), "? " + QByteArray(1001, 'x') + "\n  : ");
        addRow(QString(300, '\x01'), "? \"" + QByteArray("\\x01").repeated(300) + "\"\n  : ");
    }

    void names()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, expected);
        write({name}, {{"x"}, {""}});
        QCOMPARE(contentOf(m_path), "---\n-\n  " + expected + "x\n-\n  " + expected + "\"\"\n");
    }

    void repeatedNamesAreToldApart()
    {
        write({"a", "a"}, {{"1", "2"}});
        QCOMPARE(contentOf(m_path), QByteArray("---\n-\n  a: 1\n  a_2: 2\n"));
        QCOMPARE(m_messages.warnings.size(), 1);
    }

    void rowsWithoutColumns()
    {
        Dataset table = tableOf({"a"}, {{"1"}, {"2"}});
        table.setColumnCount(ColIndex(0));
        writeTextFile(m_options, m_path, QString(), table, &m_messages, {});
        QCOMPARE(contentOf(m_path), QByteArray("---\n-\n  {}\n-\n  {}\n"));
    }

    void commentsStayComments()
    {
        m_options.fileComment = QString(u8" one\r\n---\u2028three\x01");
        write({"a"}, {});
        QCOMPARE(contentOf(m_path), QByteArray(u8"# one\n#---\n#three\ufffd\n---\n"));
        QCOMPARE(m_messages.warnings.size(), 1);
    }

    void appends_data()
    {
        QTest::addColumn<QByteArray>("old");
        QTest::addColumn<bool>("isPossible");
        QTest::newRow("ours") << QByteArray("# c\n---\n-\n  a: \"- x\"\n") << true;
        QTest::newRow("without rows") << QByteArray("---\r\n") << true;
        QTest::newRow("compact list") << QByteArray("- a: 1\n  b: 2\n- {a: 3}\n# end\n") << true;
        QTest::newRow("directive") << QByteArray("%YAML 1.2\n---\n- a: 1\n") << true;
        QTest::newRow("long value") << "---\n-\n  a: " + QByteArray(200000, 'x') + '\n' << true;
        QTest::newRow("mapping") << QByteArray("---\na:\n  b: 1\n") << false;
        QTest::newRow("list of texts") << QByteArray("- a\n- b\n") << false;
        QTest::newRow("list of lists") << QByteArray("- [a: 1]\n") << false;
        QTest::newRow("indented list") << QByteArray("  - a: 1\n") << false;
        QTest::newRow("indented text") << QByteArray("---\n  text\n") << false;
        QTest::newRow("second document") << QByteArray("- a: 1\n---\nb: 2\n") << false;
        QTest::newRow("end of document") << QByteArray("- a: 1\n...\n") << false;
        QTest::newRow("flow list") << QByteArray("[{a: 1}]\n") << false;
        QTest::newRow("comment only") << QByteArray("# c\n") << false;
    }

    void appends()
    {
        QFETCH(QByteArray, old);
        QFETCH(bool, isPossible);
        makeFile(m_path, old);
        m_options.writeMode = WriteMode::Append;
        write({"a"}, {{"1"}});
        QCOMPARE(contentOf(m_path), isPossible ? old + "-\n  a: 1\n" : old);
        QCOMPARE(m_messages.failed, !isPossible);
    }

private:
    void write(const QStringList &names, const Rows &rows)
    {
        writeTextFile(m_options, m_path, QString(), tableOf(names, rows), &m_messages, {});
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    OutputOptions m_options;
    Messages m_messages;
};

TW_TEST_CLASS(TestYamlWriter)
#include "tst_yamlwriter.moc"
