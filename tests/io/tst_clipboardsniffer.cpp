#include "clipboardsniffer.h"
#include "testsupport.h"

namespace {

QString spaced(int gaps, const QString &gap, int length)
{
    QString text;
    for (int i = 0; i < gaps; ++i) {
        text += QStringLiteral("ab") + gap;
    }
    return text + QString(length - text.size(), QLatin1Char('x'));
}

QString withCommas(int commas, int length)
{
    return QStringLiteral("x,").repeated(commas) + QString(length - 2 * commas, QLatin1Char('x'));
}

} // namespace

class TestClipboardSniffer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void guessesTheType_data();
    void guessesTheType();
};

void TestClipboardSniffer::guessesTheType_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("type");
    const auto addRow = [](const char *name, const QString &text, FileType type) {
        QTest::newRow(name) << text << int(type);
    };
    const QString nl = QStringLiteral("\n");
    addRow("empty", QString(), FileType::DelimitedText);
    addRow("white space", QStringLiteral(" \n\t "), FileType::DelimitedText);
    addRow("array", QStringLiteral("  [1]\n"), FileType::Json);
    addRow("object", QStringLiteral("{}"), FileType::Json);
    addRow("JSON lines", QStringLiteral("{\"a\":1}\n{\"a\":2}"), FileType::Json);
    addRow("mixed brackets", QStringLiteral("[1}"), FileType::DelimitedText);
    addRow("lone bracket", QStringLiteral("["), FileType::DelimitedText);
    addRow("XML", QStringLiteral("\n<a/>\n"), FileType::Xml);
    addRow("vCard", QStringLiteral("BEGIN:VCARD\nN:a\nEND:VCARD\n"), FileType::VCard);
    addRow("vCard in lower case", QStringLiteral("begin:vcard\nN:a\nend:vcard"),
           FileType::DelimitedText);
    addRow("100 letters", QString(100, QLatin1Char('x')), FileType::DelimitedText);
    addRow("101 letters", QString(101, QLatin1Char('x')), FileType::PlainText);
    addRow("101 after trimming", nl + QString(101, QLatin1Char('x')) + nl, FileType::PlainText);
    addRow("200 with 5 commas", withCommas(5, 200), FileType::DelimitedText);
    addRow("201 with 5 commas", withCommas(5, 201), FileType::PlainText);
    addRow("two gaps", spaced(2, QStringLiteral("   "), 120), FileType::FixedWidth);
    addRow("one gap", spaced(1, QStringLiteral("      "), 120), FileType::PlainText);
    addRow("gaps of two", spaced(5, QStringLiteral("  "), 120), FileType::PlainText);
    addRow("6 spaces, 2 commas", spaced(2, QStringLiteral("   "), 120) + QStringLiteral("x,x,x"),
           FileType::FixedWidth);
    addRow("6 spaces, 3 commas", spaced(2, QStringLiteral("   "), 110) + QStringLiteral("x,x,x,x"),
           FileType::DelimitedText);
    // Only the 1000 characters in the middle count.
    addRow("commas at both ends",
           QString(500, QLatin1Char(',')) + QString(1000, QLatin1Char('x')) +
               QString(501, QLatin1Char(',')),
           FileType::PlainText);
    addRow("tabs in the middle",
           QString(500, QLatin1Char('x')) + QString(25, QLatin1Char('\t')) +
               QString(1000, QLatin1Char('x')),
           FileType::DelimitedText);
}

void TestClipboardSniffer::guessesTheType()
{
    QFETCH(QString, text);
    QFETCH(int, type);
    QCOMPARE(int(sniffFileType(text)), type);
}

TW_TEST_CLASS(TestClipboardSniffer)
#include "tst_clipboardsniffer.moc"
