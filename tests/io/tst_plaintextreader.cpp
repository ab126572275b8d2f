#include "readertools.h"
#include "testsupport.h"

Q_DECLARE_METATYPE(InputOptions)

class TestPlainTextReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsLines_data();
    void readsLines();
};

void TestPlainTextReader::readsLines_data()
{
    QTest::addColumn<InputOptions>("options");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("told");
    InputOptions plain;
    plain.fileType = FileType::PlainText;
    plain.encoding = QStringLiteral("UTF-8");
    plain.header = false;
    const auto addRow = [&](const char *name, const QByteArray &bytes, const char *lines,
                            const char *told, void (*change)(InputOptions *) = nullptr) {
        InputOptions options = plain;
        if (change) {
            change(&options);
        }
        QTest::newRow(name) << options << bytes << linesOf(lines) << QString::fromUtf8(told);
    };
    addRow("line ends of all kinds", "a\nb\r\nc\rd", "a\nb\nc\nd", "");
    addRow("delimiters and quotes mean nothing", "\"a,b\n;c\td\"\n", "\"a,b\n;c\td\"", "");
    addRow("empty lines", "a\n\n \n\nb\n", "a\n \nb", "2 empty row(s) ignored");
    addRow("trimmed lines are empty", "a\n\n \n\n b \n", "a\nb", "3 empty row(s) ignored",
           [](InputOptions *o) { o->trim = true; });
    addRow("simplified", "  a \t b \n", "a b", "", [](InputOptions *o) { o->simplify = true; });
    addRow("kept empty lines", "a\n\nb\n", "a\n\nb", "",
           [](InputOptions *o) { o->ignoreEmptyRows = false; });
    addRow("header behind ignored rows", "x\nName\na\n", "Name\na", "", [](InputOptions *o) {
        o->header = true;
        o->ignoredRows = 1;
    });
    addRow("bytes that are not valid", "a\xff\nb\n", "a\xef\xbf\xbd\nb",
           "1 value(s) contain bytes that are not valid UTF-8; they were replaced by "
           "'\xef\xbf\xbd'.");
    addRow("nothing", "", "", "");
}

void TestPlainTextReader::readsLines()
{
    QFETCH(const InputOptions, options);
    QFETCH(const QByteArray, bytes);
    QFETCH(const QStringList, lines);
    QFETCH(const QString, told);
    const ReadResult result = readBytes(bytes, options);
    QVERIFY(!result.messages.failed);
    QCOMPARE(result.lines(), lines);
    QCOMPARE((result.messages.information + result.messages.warnings).join(QLatin1Char('\n')),
             told);
}

TW_TEST_CLASS(TestPlainTextReader)
#include "tst_plaintextreader.moc"
