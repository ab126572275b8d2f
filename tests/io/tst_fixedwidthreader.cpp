#include "fixedwidthguess.h"
#include "fixedwidthreader.h"
#include "readertools.h"
#include "testsupport.h"
#include "textdecoder.h"

#include <QRandomGenerator>

Q_DECLARE_METATYPE(InputOptions)

namespace {

InputOptions fixedWidth(const QList<int> &widths)
{
    InputOptions options;
    options.fileType = FileType::FixedWidth;
    options.encoding = QStringLiteral("UTF-8");
    options.header = false;
    options.autoFixedWidths = widths.isEmpty();
    options.fixedWidths = widths;
    return options;
}

QString word(QRandomGenerator *random, int least, int most)
{
    QString text;
    const int length = random->bounded(least, most + 1);
    for (int i = 0; i < length; ++i) {
        text.append(QChar('a' + random->bounded(26)));
    }
    return text;
}

} // namespace

class TestFixedWidthReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutsLines_data();
    void cutsLines();
    void guessesColumns_data();
    void guessesColumns();
    void guessesGeneratedReports_data();
    void guessesGeneratedReports();
    void readsOnWithGuessedWidths();
    void showsFirstLines();
};

void TestFixedWidthReader::cutsLines_data()
{
    QTest::addColumn<InputOptions>("options");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("told");
    const auto addRow = [](const char *name, const QList<int> &widths, const QByteArray &bytes,
                           const char *lines, const char *told,
                           void (*change)(InputOptions *) = nullptr) {
        InputOptions options = fixedWidth(widths);
        if (change) {
            change(&options);
        }
        QTest::newRow(name) << options << bytes << linesOf(lines) << QString::fromUtf8(told);
    };
    addRow("pieces", {2, 3, 1}, "abcdef\r\nghijkl\n", "ab|cde|f\ngh|ijk|l", "");
    addRow("short lines", {2, 3, 1}, "abc\na\n", "ab|c|\na||", "");
    addRow("wide characters count as one", {2, 2}, "äöüß\n日本語ab\n😀x😀y\n",
           "äö|üß\n日本|語a\n😀x|😀y",
           "1 line(s) longer than the column widths, the rest was ignored.");
    addRow("bytes that are not valid count as one", {2, 2},
           "a\xff\xfe"
           "b\n",
           "a\xef\xbf\xbd|\xef\xbf\xbd"
           "b",
           "2 value(s) contain bytes that are not valid UTF-8; they were replaced by "
           "'\xef\xbf\xbd'.");
    addRow("beyond the last width", {1, 1}, "abc\nab  \nabcd\n", "a|b\na|b\na|b",
           "2 line(s) longer than the column widths, the rest was ignored.");
    addRow("long lines that are ignored", {1, 1}, "a title\nab\n", "a|b", "",
           [](InputOptions *o) { o->ignoredRows = 1; });
    addRow("trimmed", {4, 4}, " a   b  \n", "a|b", "", [](InputOptions *o) { o->trim = true; });
    addRow("simplified", {6, 2}, "a   b \n", "a b|", "",
           [](InputOptions *o) { o->simplify = true; });
    addRow("empty lines", {2, 2}, "abcd\n\n    \nefgh\n", "ab|cd\nef|gh", "2 empty row(s) ignored",
           [](InputOptions *o) { o->trim = true; });
    addRow("kept empty lines", {2, 2}, "\nab\n", "|\nab|", "",
           [](InputOptions *o) { o->ignoreEmptyRows = false; });
    addRow("header", {3, 3}, "id name\n1  x\n", "id |nam\n1  |x",
           "1 line(s) longer than the column widths, the rest was ignored.",
           [](InputOptions *o) { o->header = true; });
    addRow("short header", {2, 2}, "a\nbbcc\n", "a|\nbb|cc", "",
           [](InputOptions *o) { o->header = true; });
    addRow("widths of 0 or less", {2, 0, -3, 1}, "abc\n", "ab|c",
           "2 column width(s) that are not above 0 ignored.");
    addRow("very large widths", {2147483647, 2147483647}, "ab\n", "ab|", "");
}

void TestFixedWidthReader::cutsLines()
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

void TestFixedWidthReader::guessesColumns_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("expected");
    const auto addRow = [](const char *name, const char *lines, const char *expected) {
        QTest::newRow(name) << linesOf(lines) << QString::fromUtf8(expected);
    };
    // The first line that is not blank, cut and trimmed, then the last one.
    addRow("header over right-aligned numbers",
           "Name      Qty  Price\nApple       3   1.20\nBanana     12  10.00\nFig       120 100.00",
           "Name|Qty|Price/Fig|120|100.00");
    addRow("header far left of its numbers",
           "Name    Qty          Sum\nApple          3    1.20\nBanana        12   10.00\n"
           "Fig          120  100.00\nKiwi           7    1.00",
           "Name|Qty|Sum/Kiwi|7|1.00");
    addRow("one blank between columns", "AB 12 x\nCD 34 y\nEF 56 z\nGH 78 w", "AB|12|x/GH|78|w");
    addRow("one blank between padded columns",
           "Smith    12 London\nLi      104 Rome\nJohnson   3 New York\nFox      88 Oslo",
           "Smith|12|London/Fox|88|Oslo");
    addRow("text with blanks inside",
           "New York         100\nLos Angeles       20\nSan Francisco      3\nRome           1000",
           "New York|100/Rome|1000");
    addRow("first words equally long",
           "New York         100\nLos Angeles       20\nSan Francisco      3\nSan Jose          7",
           "New York|100/San Jose|7");
    addRow("a word that all values begin with",
           "Product 1     5.00\nProduct 2    15.00\nProduct 12    1.00",
           "Product 1|5.00/Product "
           "12|1.00");
    addRow("title and total",
           "Sales of all branches in 2024\n\nCity      Units  Amount\nRome         12    10.0\n"
           "Oslo          3     7.5\nBergen      100    80.0\nParis         4     3.0\n"
           "Madrid       55    44.0\nTotal       174   144.5",
           "Sales of|all br|anches in 2024/Total|174|144.5");
    addRow("lines of dashes",
           "Code Long name   N\n---- ---------- --\nA001 Big  box    1\nA002 Small box  22\n"
           "---- ---------- --\nB1   Tin  can    3",
           "Code|Long name|N/B1|Tin  can|3");
    addRow("indented", "   a   1\n   b  22\n   c 333", "a|1/c|333");
    addRow("a column with few values",
           "a1 x100      \na2 x200 late \na3 x300      \na4 x400      \na5 x500 late \na6 x600",
           "a1|x100|/a6|x600|");
    addRow("wide characters", "日本語      10\nÄpfel     7\nå       120", "日本語|10/å|120");
    addRow("one column", "abc\nde\nf", "abc/f");
    addRow("blank lines only", "  \n\n ", "");
    addRow("no lines", "", "");
}

void TestFixedWidthReader::guessesColumns()
{
    QFETCH(const QStringList, lines);
    QFETCH(const QString, expected);
    const QList<int> widths = guessColumnWidths(lines);
    const auto cut = [&](const QString &line) {
        QStringList pieces;
        QVector<uint> rest = line.toUcs4();
        for (const int width : widths) {
            const QVector<uint> piece = rest.mid(0, width);
            pieces.append(QString::fromUcs4(piece.constData(), piece.size()).trimmed());
            rest = rest.mid(std::min(width, rest.size()));
        }
        return pieces.join(QLatin1Char('|'));
    };
    QString cutLines;
    if (!widths.isEmpty()) {
        cutLines = cut(lines.first()) + QLatin1Char('/') + cut(lines.last());
    }
    QCOMPARE(cutLines, expected);
}

void TestFixedWidthReader::guessesGeneratedReports_data()
{
    QTest::addColumn<int>("gap");
    QTest::addColumn<int>("rows");
    for (const int gap : {1, 2, 4}) {
        for (const int rows : {12, 60, 400, 3000}) {
            QTest::addRow("%d blank(s), %d rows", gap, rows) << gap << rows;
        }
    }
}

/// Reports with left-aligned texts of one to three words and right-aligned numbers: no value may be
/// cut, and each must be in a column of its own.
void TestFixedWidthReader::guessesGeneratedReports()
{
    QFETCH(const int, gap);
    QFETCH(const int, rows);
    const QString blanks(gap, QLatin1Char(' '));
    QRandomGenerator random(quint32(gap * 10000 + rows));
    QStringList expected;
    QByteArray bytes = "Code  " + blanks.toLatin1() + "Customer name           " +
                       blanks.toLatin1() + "    Qty" + blanks.toLatin1() + "     Price\n";
    for (int row = 0; row < rows; ++row) {
        QStringList words;
        for (int i = random.bounded(1, 4); i > 0; --i) {
            words.append(word(&random, 2, 7));
        }
        const QStringList values{word(&random, 3, 6), words.join(QLatin1Char(' ')),
                                 QString::number(random.bounded(1, 2000000)),
                                 QString::number(random.bounded(1, 9999999) / 100.0, 'f', 2)};
        expected.append(values.join(QLatin1Char('|')));
        bytes += (values[0].leftJustified(6) + blanks + values[1].leftJustified(24) + blanks +
                  values[2].rightJustified(7) + blanks + values[3].rightJustified(10))
                     .toUtf8() +
                 '\n';
    }
    InputOptions options = fixedWidth({});
    options.header = true;
    options.trim = true;
    const ReadResult result = readBytes(bytes, options);
    QCOMPARE(result.messages.information,
             QStringList(QStringLiteral("Columns=Automatic guesses 4 columns. Set 'Columns' option "
                                        "to 'Manual' to change.\n")));
    QCOMPARE(result.table.header().join(QLatin1Char('|')),
             QStringLiteral("Code|Customer name|Qty|Price"));
    QCOMPARE(result.lines().mid(1), expected);
}

void TestFixedWidthReader::readsOnWithGuessedWidths()
{
    // The last line is longer than all lines that the guess looks at.
    QByteArray bytes;
    for (int i = 0; i < 1500; ++i) {
        bytes += "ab  cd\n";
    }
    const ReadResult result = readBytes(bytes + "ab  cdefghijkl\n", fixedWidth({}));
    QVERIFY(result.messages.warnings.isEmpty());
    QCOMPARE(result.lines().last(), QStringLiteral("ab  |cdefghijkl"));
}

void TestFixedWidthReader::showsFirstLines()
{
    QString text = QStringLiteral(" a\r\n\rb\n");
    const auto few = TextSource::fromText(text);
    QCOMPARE(fixedWidthPreview(few.get()),
             QStringList({QStringLiteral(" a"), QString(), QStringLiteral("b")}));
    const auto many = TextSource::fromText(QStringLiteral("x\n").repeated(70));
    QCOMPARE(fixedWidthPreview(many.get()).size(), 50);
}

TW_TEST_CLASS(TestFixedWidthReader)
#include "tst_fixedwidthreader.moc"
