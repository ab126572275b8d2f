#include "comparison.h"

#include "testsupport.h"
#include "utf8.h"

#include <random>

using Op = ComparisonOperator;

class TestComparison : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void comparesOneValue_data();
    void comparesOneValue();
    void derivesSymbolsFromLabels();
    void fallsBackToContains();
    void ordersByUtf16CodeUnits();
    void compiledTestAgreesWithThePlainOne_data();
    void compiledTestAgreesWithThePlainOne();
};

void TestComparison::comparesOneValue_data()
{
    QTest::addColumn<int>("op");
    QTest::addColumn<QString>("cell");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("dateFormat");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<bool>("expected");
    const auto addRow = [](const char *tag, Op op, const char *cell, const char *value,
                           bool expected, bool caseSensitive = true, const char *format = "") {
        QTest::newRow(tag) << int(op) << QString::fromUtf8(cell) << QString::fromUtf8(value)
                           << QString::fromUtf8(format) << caseSensitive << expected;
    };
    addRow("number against number", Op::Greater, "9", "10", false);
    addRow("equal numbers of different text", Op::Equal, "1,000.0", "1000", true);
    addRow("blanks around a number", Op::Equal, " 7 ", "7", true);
    addRow("text against number", Op::Greater, "abc", "5", true);
    addRow("empty against number", Op::Less, "", "5", true);
    addRow("n/a against number", Op::GreaterEqual, "n/a", "90", true);
    addRow("nan is text", Op::Equal, "NaN", "nan", false);
    addRow("nan equals itself as text", Op::Equal, "nan", "nan", true);
    addRow("not equal negates", Op::NotEqual, "NaN", "nan", true);
    addRow("currency is no number", Op::Less, "$9", "10", true);
    addRow("empty texts", Op::Equal, "", "", true);
    addRow("text without case", Op::Equal, "Smith", "smith", true, false);
    addRow("text with case", Op::Equal, "Smith", "smith", false);
    addRow("not ASCII without case", Op::Equal, "ÉCOLE", "école", true, false);
    addRow("Kelvin sign folds to k", Op::Equal, "K", "k", true, false);
    addRow("dates", Op::Less, "31/01/2024", "01/02/2024", true, true, "dd/MM/yyyy");
    addRow("later date", Op::Less, "02/01/2025", "01/02/2024", false, true, "dd/MM/yyyy");
    addRow("equal dates of different text", Op::Equal, "1/2/2024", "01/02/2024", true, true,
           "d/M/yyyy");
    addRow("cell no date falls back to numbers", Op::Greater, "10", "9", true, true, "d/M/yyyy");
    addRow("value no date falls back to text", Op::Less, "1/2/2024", "x", true, true, "d/M/yyyy");
    addRow("contains", Op::Contains, "banana", "nan", true);
    addRow("contains without case", Op::Contains, "Banana", "BAN", true, false);
    addRow("every cell contains nothing", Op::Contains, "", "", true);
    addRow("not contains nothing", Op::NotContains, "x", "", false);
    addRow("starts", Op::StartsWith, "banana", "ban", true);
    addRow("starts longer", Op::StartsWith, "ban", "banana", false);
    addRow("starts with nothing", Op::StartsWith, "", "", true);
    addRow("not starts", Op::NotStartsWith, "banana", "nan", true);
    addRow("ends", Op::EndsWith, "banana", "NA", true, false);
    addRow("not ends", Op::NotEndsWith, "banana", "na", false);
    addRow("regex anywhere", Op::MatchesRegex, "ab12", "\\d", true);
    addRow("regex without case", Op::MatchesRegex, "Smith", "^sm", true, false);
    addRow("invalid regex", Op::MatchesRegex, "(", "(", false);
    addRow("negated invalid regex", Op::NotMatchesRegex, "(", "(", true);
    addRow("80 % fuzzy", Op::Fuzzy80, "colour", "color", true);
    addRow("90 % fuzzy", Op::Fuzzy90, "colour", "color", false);
    addRow("fuzzy without case", Op::Fuzzy90, "COLOUR", "colour", true, false);
    addRow("fuzzy of nothing", Op::Fuzzy90, "", "", true);
    addRow("empty", Op::IsEmpty, "", "", true);
    addRow("blank is not empty", Op::IsEmpty, " ", "", false);
    addRow("not empty", Op::IsNotEmpty, " ", "", true);
}

void TestComparison::comparesOneValue()
{
    QFETCH(int, op);
    QFETCH(QString, cell);
    QFETCH(QString, value);
    QFETCH(QString, dateFormat);
    QFETCH(bool, caseSensitive);
    QFETCH(bool, expected);
    QCOMPARE(compareValue(Op(op), cell, value, dateFormat, caseSensitive), expected);
    CellTest test(Op(op), dateFormat, caseSensitive);
    test.setValue(value);
    QCOMPARE(test.holds(Utf8::encoded(cell)), expected);
}

void TestComparison::derivesSymbolsFromLabels()
{
    QStringList symbols;
    for (int i = 0; i < Comparison::operatorCount; ++i) {
        const QString symbol = Comparison::symbol(Op(i));
        QVERIFY(!symbol.contains(QLatin1Char(' ')) && !symbol.contains(QLatin1Char('%')));
        symbols.append(symbol);
    }
    QCOMPARE(symbols.removeDuplicates(), 0);
    QCOMPARE(Comparison::symbol(Op::IsNotEmpty), QStringLiteral("!\u2205"));
    QCOMPARE(Comparison::symbol(Op::Fuzzy70), QStringLiteral("\u22487"));
}

void TestComparison::fallsBackToContains()
{
    QCOMPARE(Comparison::fromNumber(-1), Op::Contains);
    QCOMPARE(Comparison::fromNumber(21), Op::Contains);
    QCOMPARE(Comparison::label(Op(99)), QStringLiteral("c   Contains"));
    QCOMPARE(Comparison::threshold(Op::Contains), 90);
}

void TestComparison::ordersByUtf16CodeUnits()
{
    // In UTF-16 the pair of U+1F600 begins with U+D83D and so comes before U+FF01; in UTF-8 after.
    const QString emoji = QString::fromUcs4(U"\U0001F600", 1);
    const QString wide(QChar(0xFF01));
    QVERIFY(compareValue(Op::Less, emoji, wide, {}, true));
    CellTest test(Op::Less, {}, true);
    test.setValue(wide);
    QVERIFY(test.holds(Utf8::encoded(emoji)));
    test.setValue(emoji);
    QVERIFY(!test.holds(Utf8::encoded(wide)));
}

void TestComparison::compiledTestAgreesWithThePlainOne_data()
{
    QTest::addColumn<int>("op");
    for (int op = 0; op < Comparison::operatorCount; ++op) {
        QTest::addRow("operator %d", op) << op;
    }
}

/// Short texts from few characters, so that equal, contained and nearly equal ones are frequent.
static QString randomText(std::mt19937 *random)
{
    static const QStringList whole = {
        QStringLiteral("10"),         QStringLiteral("9.5"),       QStringLiteral("-3"),
        QStringLiteral("1,000"),      QStringLiteral("1e3"),       QStringLiteral("1/2/2024"),
        QStringLiteral("01/02/2024"), QStringLiteral("31/1/2024"), QStringLiteral("inf"),
        QStringLiteral(" 10"),        QStringLiteral("$5"),        QStringLiteral("(a|b)+"),
        QStringLiteral("[a-"),        QStringLiteral("^A.?b"),     QString(QChar(0xD83D)),
        QString(QChar(0xDE00)),       QStringLiteral("\U0001F600")};
    if ((*random)() % 3 == 0) {
        return whole[int((*random)() % size_t(whole.size()))];
    }
    static const ushort units[] = {'a',    'b',    'A',    'B',    'k',  '1',   '.',
                                   ' ',    0xE9,   0xC9,   0x212A, 0xDF, 0x130, 0xE000,
                                   0xFF01, 0xD83D, 0xDE00, 0xD7FF, 0};
    QString text;
    for (auto length = (*random)() % 6; length > 0; --length) {
        // Mostly ASCII: both the byte paths and the general ones are to be taken.
        const size_t choices = (*random)() % 2 ? 8 : std::size(units);
        text.append(QChar(units[(*random)() % choices]));
    }
    return text;
}

void TestComparison::compiledTestAgreesWithThePlainOne()
{
    QFETCH(int, op);
    std::mt19937 random(20240131U + unsigned(op));
    const QStringList formats = {QString(), QStringLiteral("d/M/yyyy"),
                                 QStringLiteral("dd/MM/yyyy")};
    for (int i = 0; i < 400; ++i) {
        const QString format = formats[int(random() % 3)];
        const bool caseSensitive = random() % 2 == 0;
        CellTest test(Op(op), format, caseSensitive);
        const QString value = randomText(&random);
        test.setValue(value);
        for (int j = 0; j < 25; ++j) {
            const QString cell = randomText(&random);
            const bool expected = compareValue(Op(op), cell, value, format, caseSensitive);
            if (test.holds(Utf8::encoded(cell)) != expected) {
                QFAIL(qPrintable(QStringLiteral("'%1' against '%2', format '%3', case %4")
                                     .arg(cell, value, format, QString::number(caseSensitive))));
            }
        }
    }
}

TW_TEST_CLASS(TestComparison)
#include "tst_comparison.moc"
