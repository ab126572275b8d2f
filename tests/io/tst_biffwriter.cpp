#include "biffformula.h"
#include "biffrecords.h"
#include "bifftext.h"
#include "biffwriter.h"
#include "testsupport.h"
#include "utf8.h"

#include <QStringList>

class TestBiffWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void compilesFormulas_data();
    void compilesFormulas();
    void refusesFormulas_data();
    void refusesFormulas();
    void sharesTexts();
    void sharesNotTooManyTexts();
    void splitsTextsWhereOthersCanRead_data();
    void splitsTextsWhereOthersCanRead();
};

void TestBiffWriter::compilesFormulas_data()
{
    QTest::addColumn<QByteArray>("formula");
    QTest::addColumn<QByteArray>("tokens");
    const auto addRow = [](const char *formula, const char *tokens) {
        QTest::newRow(formula) << QByteArray(formula) << QByteArray(tokens).replace(" ", "");
    };
    addRow("A1", "44 0000 00c0");
    addRow("$B$2", "44 0100 0100");
    addRow("b$2", "44 0100 0140");
    addRow(" iv65536 ", "44 ffff ffc0");
    addRow("65535", "1e ffff");
    addRow("65536", "1f 000000000000f040");
    addRow("1.5e0", "1f 000000000000f83f");
    addRow("1-2-3", "1e0100 1e0200 04 1e0300 04");
    addRow("2^3^4", "1e0200 1e0300 07 1e0400 07");
    addRow("-A1^2", "44000000c0 13 1e0200 07");
    addRow("1+2*3", "1e0100 1e0200 1e0300 05 03");
    addRow("( 1 + 2 )*3", "1e0100 1e0200 03 15 1e0300 05");
    addRow("1&2+3=4", "1e0100 1e0200 1e0300 03 08 1e0400 0b");
    addRow("10%%", "1e0a00 14 14");
    addRow("A1>=1", "44000000c0 1e0100 0c");
    addRow("1<>2", "1e0100 1e0200 0e");
    addRow("\"a\"\"b\"&TRUE", "17 03 00 612262 1d01 08");
    addRow("\"\u20ac\"", "17 01 01 ac20");
    addRow("SUM(A1:B2,3)", "25 0000 0100 00c0 01c0 1e0300 42 02 0400");
    addRow("sum((A1))", "24 0000 00c0 15 42 01 0400");
    // Operators take values where functions take cells.
    addRow("SUM(A1+B1)", "44 0000 00c0 44 0000 01c0 03 42 01 0400");
    addRow("SUM(A1,-B1)", "24 0000 00c0 44 0000 01c0 13 42 02 0400");
    addRow("SUMPRODUCT(A1:A2*B1:B2)",
           "65 0000 0100 00c0 00c0 65 0000 0100 01c0 01c0 05 42 01 e400");
    addRow("IF(A1,,2)", "44 0000 00c0 16 1e0200 42 03 0100");
    addRow("ABS(ABS(1))", "1e0100 41 1800 41 1800");
    addRow("NOW()", "19010000 41 4a00");
}

void TestBiffWriter::compilesFormulas()
{
    QFETCH(QByteArray, formula);
    QFETCH(QByteArray, tokens);
    std::string actual;
    QVERIFY(compileBiffFormula(formula.toStdString(), &actual));
    QCOMPARE(QByteArray::fromStdString(actual).toHex(), tokens);
}

void TestBiffWriter::refusesFormulas_data()
{
    QTest::addColumn<QByteArray>("formula");
    const QByteArrayList formulas{
        "",         " ",      "1+",   "+",        "(1",     "1)",    "\"a",   "'a'",
        "A0",       "A65537", "IW1",  "ABCDEF1",  "A",      "A1:",   "A1:B",  "B2:A1",
        "A1 B1",    "A1,B1",  "{1}",  "#N/A",     "FOO(1)", "SUM(1", "SUM 1", "ABS()",
        "ABS(1,2)", "LEFT()", "1..2", "Sheet!A1", "A1!B2",  "A1.B",  "A_1",   "A1B",
        "TRUE1",    "1e400",  "$$A1", "A$$1",     "=1",     "\x01"};
    for (const QByteArray &formula : formulas) {
        QTest::newRow(formula.isEmpty() ? "empty" : formula.constData()) << formula;
    }
    QTest::newRow("long text") << "\"" + QByteArray(256, 'x') + "\"";
    QTest::newRow("long") << "1" + QByteArray("+1").repeated(1000);
    QTest::newRow("many arguments") << "SUM(1" + QByteArray(",1").repeated(30) + ")";
    QTest::newRow("deep calls") << QByteArray("ABS(").repeated(8) + "1" + QByteArray(8, ')');
    QTest::newRow("deep") << QByteArray(100000, '(');
    QTest::newRow("many signs") << QByteArray(100000, '-') + "1";
}

void TestBiffWriter::refusesFormulas()
{
    QFETCH(QByteArray, formula);
    std::string tokens;
    QVERIFY(!compileBiffFormula(formula.toStdString(), &tokens));
}

void TestBiffWriter::sharesTexts()
{
    BiffTexts texts;
    QCOMPARE(texts.add("a"), 0U);
    QCOMPARE(texts.add("b"), 1U);
    QCOMPARE(texts.add(std::string("a")), 0U);
    texts.finish();
    QCOMPARE(QByteArray::fromStdString(texts.firstRecord()).toHex(),
             QByteArray("fc001000" // all cells, all texts
                        "0300000002000000"
                        "01000061"
                        "01000062"));

    BiffTexts more;
    more.continueAfter(7);
    QCOMPARE(more.add("a"), 7U);
    more.finish();
    QVERIFY(more.firstRecord().empty());
    QByteArray records;
    QVERIFY(more.moreRecords().forEachPiece([&records](std::string_view piece) {
        records.append(piece.data(), int(piece.size()));
        return true;
    }));
    QCOMPARE(records.toHex(), QByteArray("3c00040001000061"));
}

void TestBiffWriter::sharesNotTooManyTexts()
{
    constexpr quint32 count = 300000;
    std::vector<std::string> all;
    for (quint32 i = 0; i < count; ++i) {
        all.push_back(std::to_string(i));
    }
    BiffTexts texts;
    for (quint32 i = 0; i < count; ++i) {
        QCOMPARE(texts.add(all[i]), i);
    }
    QCOMPARE(texts.add("0"), 0U);
    QCOMPARE(texts.add(all.back()), count);
    QCOMPARE(texts.count(), count + 1);
}

void TestBiffWriter::splitsTextsWhereOthersCanRead_data()
{
    QTest::addColumn<QString>("character");
    QTest::newRow("narrow") << "n";
    QTest::newRow("wide") << QString(QChar(0x20ac));
    QTest::newRow("pairs") << QString::fromUtf8("\U0001F600");
}

/// Every text's head and first character stand in one record, and so do the halves of pairs.
void TestBiffWriter::splitsTextsWhereOthersCanRead()
{
    QFETCH(QString, character);
    std::vector<std::string> all;
    for (int length = 1; length < 400; ++length) {
        all.push_back(Utf8::encoded((character.size() > 1 ? "x" : "") + QString::number(length) +
                                    character.repeated(length)));
    }
    all.push_back(Utf8::encoded(character.repeated(30000 / character.size())));
    BiffTexts texts;
    for (const std::string &text : all) {
        texts.add(text);
    }
    texts.finish();
    std::string records = texts.firstRecord();
    QVERIFY(texts.moreRecords().forEachPiece([&records](std::string_view piece) {
        records += piece;
        return true;
    }));

    BiffStream stream(records);
    QVERIFY(stream.next());
    const std::vector<std::string_view> parts = stream.continuedData();
    QVERIFY(parts.size() > 5);
    size_t left = 0;
    size_t width = 1;
    for (size_t i = 0; i < parts.size(); ++i) {
        const std::string_view part = parts[i];
        QVERIFY(part.size() <= size_t(Biff::mostRecordData));
        size_t at = i == 0 ? 8 : 0;
        if (left > 0) {
            QCOMPARE(size_t(part[at++]) + 1, width);
        }
        while (at < part.size()) {
            if (left == 0) {
                QVERIFY(part.size() - at > 3);
                left = biffNumber<quint16>(part, at);
                width = size_t(part[at + 2]) + 1;
                at += 3;
            }
            const size_t step = std::min(left, (part.size() - at) / width);
            QVERIFY(step > 0);
            at += step * width;
            left -= step;
            QVERIFY(left == 0 || width == 1 ||
                    !QChar::isHighSurrogate(biffNumber<quint16>(part, at - 2)));
        }
    }
    QCOMPARE(left, size_t(0));

    BiffTextReader reader(parts, 8, nullptr);
    for (const std::string &text : all) {
        std::string actual;
        QVERIFY(reader.read(2, &actual));
        QVERIFY(actual == text);
    }
    QVERIFY(reader.atEnd());
}

TW_TEST_CLASS(TestBiffWriter)
#include "tst_biffwriter.moc"
