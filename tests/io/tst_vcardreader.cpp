#include "readertools.h"
#include "testsupport.h"

Q_DECLARE_METATYPE(InputOptions)

namespace {

InputOptions vCard()
{
    InputOptions options;
    options.fileType = FileType::VCard;
    options.encoding = QStringLiteral("UTF-8");
    return options;
}

QByteArray card(const QByteArray &lines)
{
    return "BEGIN:VCARD\r\n" + lines + "END:VCARD\r\n";
}

} // namespace

class TestVCardReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsProperties_data();
    void readsProperties();
    void tellsWhatIsWrong_data();
    void tellsWhatIsWrong();
    void ignoresLeadingCards();
    void readsLongLines();
};

void TestVCardReader::readsProperties_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("lines");
    const auto addRow = [](const char *name, const QByteArray &bytes, const char *lines) {
        QTest::newRow(name) << bytes << linesOf(lines);
    };
    addRow("two cards", card("VERSION:3.0\r\nFN:Ann\r\n") + card("VERSION:4.0\r\nTEL:1\r\n"),
           "VERSION|FN|TEL\n3.0|Ann|\n4.0||1");
    addRow("repeated properties", card("TEL:1\nTEL:2\nTEL:3\n") + card("TEL:4\n"),
           "TEL|TEL 2|TEL 3\n1|2|3\n4||");
    addRow("a name that looks repeated", card("TEL 2:b\nTEL:a\nTEL:c\n"), "TEL 2|TEL|TEL 3\nb|a|c");
    addRow("parameters and groups",
           card("TEL;TYPE=HOME:1\nitem1.TEL;HOME;VOICE:2\n"
                "TEL;TYPE=\"voice,a:b;c\";VALUE=uri:tel:3\n"),
           "TEL;TYPE=HOME|item1.TEL;HOME;VOICE|TEL;TYPE=\"voice,a:b;c\";VALUE=uri\n1|2|tel:3");
    addRow("begin and end in any case", "begin:vcard\nFN:x\nEnd:vCard \n", "FN\nx");
    addRow("folded, with a blank", card("VERSION:3.0\r\nNOTE:ab\r\n cd\r\n\t ef\r\n"),
           "VERSION|NOTE\n3.0|abcd ef");
    addRow("folded in 2.1", card("VERSION:2.1\r\nNOTE:ab\r\n cd\r\n"), "VERSION|NOTE\n2.1|ab cd");
    addRow("escapes", card("VERSION:3.0\nN:a\\,b\\;c\\:d\\\\n\\x\n"),
           "VERSION|N\n3.0|a,b;c:d\\n\\x");
    addRow("escaped line break", card("ADR:a\\nb\\Nc\n") + card("FN:x\n"), "ADR|FN\na\nb\nc|\n|x");
    addRow("backslashes in 2.1", card("VERSION:2.1\nN:C\\:\\new\\;x\\,\n"),
           "VERSION|N\n2.1|C:\\new;x\\,");
    addRow("quoted-printable with a charset",
           card("VERSION:2.1\nFN;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:M=FCller=3Dx\n"
                "ORG;ENCODING=QUOTED-PRINTABLE;CHARSET=utf-8:=C3=A4\nN;QUOTED-PRINTABLE:=41\n"),
           "VERSION|FN|ORG|N\n2.1|Müller=x|ä|A");
    addRow(
        "quoted-printable with soft line breaks",
        card("VERSION:2.1\r\nNOTE;ENCODING=quoted-printable:one =\r\ntwo=\r\n:three\r\nFN:x\r\n"),
        "VERSION|NOTE|FN\n2.1|one two:three|x");
    addRow("line breaks in quoted-printable",
           card("VERSION:2.1\nNOTE;ENCODING=QUOTED-PRINTABLE:a=0D=0Ab\n"),
           "VERSION|NOTE\n2.1|a\nb");
    addRow(
        "base64 stays text",
        card("VERSION:2.1\r\nPHOTO;ENCODING=BASE64;TYPE=JPEG:\r\n AAAA\r\n BBB=\r\n\r\nFN:x\r\n"),
        "VERSION|PHOTO;ENCODING=BASE64;TYPE=JPEG|FN\n2.1|AAAABBB=|x");
    addRow("a card in a card", card("AGENT:\n" + card("FN:Bob\n") + "FN:Ann\n"),
           "AGENT|AGENT.FN|FN\n|Bob|Ann");
    addRow("names that a table may have", card("first name:a\nsay \"hi:b\n"),
           "first name|say \"hi\na|b");
    addRow("nothing", "", "");
}

void TestVCardReader::readsProperties()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QStringList, lines);
    const ReadResult result = readBytes(bytes, vCard());
    QVERIFY2(result.messages.warnings.isEmpty(),
             qPrintable(result.messages.warnings.join(QLatin1Char('\n'))));
    QCOMPARE(result.lines().join(QLatin1Char('\n')), lines.join(QLatin1Char('\n')));
}

void TestVCardReader::tellsWhatIsWrong_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<bool>("failed");
    QTest::addColumn<QString>("told");
    const auto addRow = [](const char *name, const QByteArray &bytes, const char *lines,
                           bool failed, const char *told) {
        QTest::newRow(name) << bytes << linesOf(lines) << failed << QString::fromUtf8(told);
    };
    addRow("no end", card("FN:x\n") + "BEGIN:VCARD\nFN:y\n", "", true,
           "vCard parsing error: 2 'BEGIN:VCARD' and 1 'END:VCARD'");
    addRow("no begin", "FN:y\nEND:VCARD\n", "", true,
           "vCard parsing error: 0 'BEGIN:VCARD' and 1 'END:VCARD'");
    addRow("other lines", "hello\n" + card("FN:x\nno colon\n:no name\n") + "a:b\n", "FN\nx", false,
           "4 line(s) that are no property of a vCard ignored.");
    addRow("unknown charset", card("FN;CHARSET=nope;ENCODING=QUOTED-PRINTABLE:=C3=A4\n"), "FN\nä",
           false, "Encoding 'nope' is not known, 'UTF-8' is used.");
    addRow("bytes that are not valid", card("FN;ENCODING=QUOTED-PRINTABLE:=FF=\n"),
           "FN\n\xef\xbf\xbd"
           "END:VCARD",
           true, "vCard parsing error: 1 'BEGIN:VCARD' and 0 'END:VCARD'");
    addRow("damaged quoted-printable", card("FN;ENCODING=QUOTED-PRINTABLE:=FF=4\n"),
           "FN\n\xef\xbf\xbd=4", false,
           "1 quoted-printable value(s) contain bytes that are not valid in their encoding.");
}

void TestVCardReader::tellsWhatIsWrong()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QStringList, lines);
    QFETCH(const bool, failed);
    QFETCH(const QString, told);
    const ReadResult result = readBytes(bytes, vCard());
    QCOMPARE(result.messages.failed, failed);
    QCOMPARE(result.messages.warnings.join(QLatin1Char('\n')), told);
    QCOMPARE(result.lines(), failed ? QStringList() : lines);
}

void TestVCardReader::ignoresLeadingCards()
{
    InputOptions options = vCard();
    options.ignoredRows = 1;
    const ReadResult result = readBytes(card("A:1\n") + card("B:2\n") + card("B:3\n"), options);
    QCOMPARE(result.lines(), linesOf("B\n2\n3"));
}

/// Folded into very many lines, and as one line: work and memory grow with the text alone.
void TestVCardReader::readsLongLines()
{
    const int size = 20 * 1000 * 1000;
    const ReadResult one = readBytes(card("NOTE:" + QByteArray(size, 'x') + "\n"), vCard());
    QCOMPARE(one.table.cell(RowIndex(0), ColIndex(0)).size(), size);

    const ReadResult folded =
        readBytes(card("NOTE:" + QByteArray("\n x").repeated(size / 4) + "\n"), vCard());
    QCOMPARE(folded.table.cell(RowIndex(0), ColIndex(0)).size(), size / 4);

    const ReadResult soft = readBytes(
        card("NOTE;QUOTED-PRINTABLE:" + QByteArray("x=\n").repeated(size / 4) + "\n"), vCard());
    QCOMPARE(soft.table.cell(RowIndex(0), ColIndex(0)).size(), size / 4);
}

TW_TEST_CLASS(TestVCardReader)
#include "tst_vcardreader.moc"
