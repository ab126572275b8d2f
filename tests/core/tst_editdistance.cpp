#include "editdistance.h"
#include "testsupport.h"

#include <random>
#include <vector>

namespace {

int plainDistance(const QString &a, const QString &b)
{
    std::vector<int> row(size_t(b.size()) + 1);
    for (size_t j = 0; j < row.size(); ++j) {
        row[j] = int(j);
    }
    for (int i = 0; i < a.size(); ++i) {
        int diagonal = row[0];
        row[0] = i + 1;
        for (int j = 0; j < b.size(); ++j) {
            const int above = row[size_t(j) + 1];
            row[size_t(j) + 1] =
                std::min({diagonal + (a[i] == b[j] ? 0 : 1), above + 1, row[size_t(j)] + 1});
            diagonal = above;
        }
    }
    return row.back();
}

QString randomText(int length, const QString &alphabet, std::mt19937 &random)
{
    QString text;
    while (length-- > 0) {
        text += alphabet[int(random() % unsigned(alphabet.size()))];
    }
    return text;
}

} // namespace

class TestEditDistance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithThePlainDistance_data();
    void agreesWithThePlainDistance();
    void stopsAtTheLimit();
    void comparesFuzzily_data();
    void comparesFuzzily();
};

void TestEditDistance::agreesWithThePlainDistance_data()
{
    QTest::addColumn<int>("maxLength");
    QTest::addColumn<int>("count");
    QTest::newRow("short") << 12 << 20000;
    QTest::newRow("one word") << 70 << 3000;
    QTest::newRow("blocks") << 300 << 300;
}

void TestEditDistance::agreesWithThePlainDistance()
{
    QFETCH(int, maxLength);
    QFETCH(int, count);
    const QStringList alphabets{QStringLiteral("ab"), QStringLiteral("abcdefghijklmnop"),
                                QStringLiteral("a\u00e9\u0141\u0142\u0241\u6771\u4eac\u3042z")};
    std::mt19937 random(42);
    const auto below = [&random](int bound) { return int(random() % unsigned(bound)); };
    count *= qMax(1, qEnvironmentVariableIntValue("TABWEAVE_FUZZ_FACTOR"));
    for (int i = 0; i < count; ++i) {
        const QString &alphabet = alphabets[i % alphabets.size()];
        const QString a = randomText(below(maxLength + 1), alphabet, random);
        QString b = randomText(below(maxLength + 1), alphabet, random);
        if (i % 3 != 0) {
            b = a;
            for (int changes = below(2 + maxLength / 8); changes > 0; --changes) {
                b.replace(below(b.size() + 1), below(2), randomText(below(3), alphabet, random));
            }
        }
        const int distance = plainDistance(a, b);
        const int limit = i % 2 ? below(maxLength + 1) : std::max(0, distance - 1 + below(3));
        const int expected = std::min(distance, limit + 1);
        QVERIFY2(editDistance(a, b, limit) == expected,
                 qPrintable(QStringLiteral("'%1' '%2' %3").arg(a, b, QString::number(limit))));
    }
}

void TestEditDistance::stopsAtTheLimit()
{
    const QString a(2000000, QLatin1Char('a'));
    const QString b(2000000, QLatin1Char('b'));
    QCOMPARE(editDistance(a, b, 100), 101);
    QCOMPARE(editDistance(a, a + QLatin1Char('b'), 0), 1);
    QCOMPARE(editDistance(a, a.mid(3) + QStringLiteral("bb"), 100), 5 - 2);
}

void TestEditDistance::comparesFuzzily_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<int>("threshold");
    QTest::addColumn<int>("similarity");

    const auto addRow = [](const char *a, const char *b, int threshold, int similarity) {
        QTest::addRow("%s/%s %d", a, b, threshold)
            << QString::fromLatin1(a) << QString::fromLatin1(b) << threshold << similarity;
    };
    addRow("colour", "color", 80, 83);
    addRow("colour", "color", 90, -1);
    addRow("", "", 90, 100);
    addRow("", "a", 50, -1);
    addRow("ab", "a", 50, 50);
    addRow("abc", "abd", 60, 66);
    addRow("abc", "xyz", 50, -1);
    addRow("0123456789", "0123456780", 90, 90);
    addRow("012345678", "012345670", 90, -1);
    addRow("Smith", "smith", 80, 80);
}

void TestEditDistance::comparesFuzzily()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(int, threshold);
    QFETCH(int, similarity);
    QCOMPARE(fuzzySimilarity(a, b, threshold), similarity);
    QCOMPARE(fuzzySimilarity(b, a, threshold), similarity);
}

TW_TEST_CLASS(TestEditDistance)
#include "tst_editdistance.moc"
