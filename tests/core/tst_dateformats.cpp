#include "dataset.h"
#include "dateformats.h"
#include "testsupport.h"
#include "utf8.h"
#include "valueinterpretation.h"

#include <QLocale>
#include <random>

namespace {

const QLocale::Country us = QLocale::UnitedStates;
const QLocale::Country other = QLocale::UnitedKingdom;

QStringList formats(QLocale::Country country)
{
    return dateFormatList(QString(), country);
}

Dataset column(const QStringList &cells)
{
    Dataset table;
    table.setColumnCount(ColIndex(2));
    table.resize(cells.size(), 2);
    for (int row = 0; row < cells.size(); ++row) {
        table.setCell(RowIndex(row), ColIndex(1), cells[row]);
    }
    return table;
}

/// Texts like the dates of a pattern, more or less damaged.
QString randomDateText(const QString &pattern, std::mt19937 &random)
{
    const auto below = [&random](int bound) { return int(random() % unsigned(bound)); };
    const auto number = [&below](int bound) {
        return QStringLiteral("%1").arg(below(bound), below(3), 10, QLatin1Char('0'));
    };
    QString text;
    for (int at = 0; at < pattern.size();) {
        const QChar letter = pattern[at];
        int run = 1;
        while (at + run < pattern.size() && pattern[at + run] == letter) {
            ++run;
        }
        at += run;
        if (letter == QLatin1Char('d')) {
            text +=
                run == 2 && below(8) ? number(34).rightJustified(2, QLatin1Char('0')) : number(34);
        } else if (letter == QLatin1Char('M')) {
            text +=
                run == 2 && below(8) ? number(14).rightJustified(2, QLatin1Char('0')) : number(14);
        } else if (letter == QLatin1Char('y')) {
            const QString year = QStringLiteral("%1").arg(
                below(5) ? 1890 + below(150) : below(10000), 4, 10, QLatin1Char('0'));
            text += below(10) ? year.right(run) : year;
        } else {
            text += QString(run, letter);
        }
    }
    static const QString alphabet =
        QStringLiteral("0123456789//--..,, :_+\u2212\u00a0\u0663\u202f\tA\u00e9");
    for (int changes = below(2) ? 0 : below(3); changes > 0; --changes) {
        text.replace(below(text.size() + 1), below(2), alphabet[below(alphabet.size())]);
    }
    return text;
}

} // namespace

class TestDateFormats : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsWithTheFirstMatchingPattern_data();
    void readsWithTheFirstMatchingPattern();
    void readsOnePattern_data();
    void readsOnePattern();
    void readsLikeQDate_data();
    void readsLikeQDate();
    void detectsTheFormat_data();
    void detectsTheFormat();
    void samplesTheFirstCellsThatAreNotEmpty();
    void listsTheFormats();
};

void TestDateFormats::readsWithTheFirstMatchingPattern_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDate>("dayFirst");
    QTest::addColumn<QDate>("monthFirst");

    QTest::newRow("ambiguous") << QStringLiteral("3/4/2024") << QDate(2024, 4, 3)
                               << QDate(2024, 3, 4);
    QTest::newRow("ISO") << QStringLiteral(" 2024-04-03 ") << QDate(2024, 4, 3)
                         << QDate(2024, 4, 3);
    QTest::newRow("only day first")
        << QStringLiteral("31/12/2024") << QDate(2024, 12, 31) << QDate(2024, 12, 31);
    QTest::newRow("two-digit year")
        << QStringLiteral("1/2/24") << QDate(1924, 2, 1) << QDate(1924, 1, 2);
    QTest::newRow("no such day") << QStringLiteral("30/2/2024") << QDate() << QDate();
    QTest::newRow("empty") << QString() << QDate() << QDate();
    QTest::newRow("date and time") << QStringLiteral("3/4/2024 10:00") << QDate() << QDate();
}

void TestDateFormats::readsWithTheFirstMatchingPattern()
{
    QFETCH(QString, text);
    QFETCH(QDate, dayFirst);
    QFETCH(QDate, monthFirst);
    QCOMPARE(toDate(text, formats(other)), dayFirst);
    QCOMPARE(toDate(text, formats(us)), monthFirst);
    QCOMPARE(toDate(Utf8::encoded(text), formats(other)), dayFirst);
}

void TestDateFormats::readsOnePattern_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDate>("date");

    const auto addRow = [](const char *tag, const char *pattern, const char *text,
                           const QDate &date) {
        QTest::newRow(tag) << QString::fromUtf8(pattern) << QString::fromUtf8(text) << date;
    };
    addRow("padded", "dd/MM/yyyy", "03/04/2024", QDate(2024, 4, 3));
    addRow("padding missing", "dd/MM/yyyy", "3/4/2024", QDate());
    addRow("padding not asked for", "d/M/yyyy", "03/04/2024", QDate(2024, 4, 3));
    addRow("no separators", "yyyyMMdd", "20240403", QDate(2024, 4, 3));
    addRow("no separators, unpadded", "dMyyyy", "3042024", QDate(2024, 4, 30));
    addRow("leap day", "d.M.yyyy", "29.2.2024", QDate(2024, 2, 29));
    addRow("no leap day", "d.M.yy", "29.2.00", QDate());
    addRow("first year", "d/M/yyyy", "1/1/0001", QDate(1, 1, 1));
    addRow("year 0", "d/M/yyyy", "1/1/0000", QDate());
    addRow("five-digit year", "d/M/yyyy", "1/1/20245", QDate());
    addRow("plus sign", "d/M/yyyy", "+3/4/2024", QDate(2024, 4, 3));
    addRow("month name", "d MMM yyyy", "3 Apr 2024", QDate(2024, 4, 3));
    addRow("quoted", "yyyy'y'M", "2024y4", QDate(2024, 4, 1));
    addRow("trimmed by no-break space", "d/M/yyyy", "\u00a03/4/2024\u00a0", QDate(2024, 4, 3));
    addRow("pattern without fields", "", "3/4/2024", QDate());
}

void TestDateFormats::readsOnePattern()
{
    QFETCH(QString, pattern);
    QFETCH(QString, text);
    QFETCH(QDate, date);
    QCOMPARE(toDate(text, pattern), date);
    QCOMPARE(DatePattern(pattern).read(Utf8::encoded(text)), date);
}

void TestDateFormats::readsLikeQDate_data()
{
    QTest::addColumn<QString>("locale");
    for (const char *name : {"C", "en_GB", "de_DE", "fr_FR", "hi_IN", "ar_EG", "sv_SE"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

void TestDateFormats::readsLikeQDate()
{
    QFETCH(QString, locale);
    const QLocale before;
    QLocale::setDefault(QLocale(locale));
    const QStringList patterns =
        formats(other) + QStringList{QStringLiteral("dd/MM/yyyy"), QStringLiteral("yyyy-MM-dd"),
                                     QStringLiteral("yyyyMMdd"),   QStringLiteral("ddMMyy"),
                                     QStringLiteral("d.M.yyyy"),   QStringLiteral("d. M. yyyy"),
                                     QStringLiteral("d M yyyy"),   QStringLiteral("M, d_yyyy"),
                                     QStringLiteral("yyyy:MMd")};
    std::mt19937 random(20240403);
    int count = 10000;
#ifdef QT_NO_DEBUG
    count *= 4;
#endif
    count *= qMax(1, qEnvironmentVariableIntValue("TABWEAVE_FUZZ_FACTOR"));
    int dates = 0;
    QString failed;
    for (int i = 0; i < count && failed.isEmpty(); ++i) {
        const QString &pattern = patterns[int(random() % unsigned(patterns.size()))];
        const QString &source = i % 4 ? pattern : patterns[int(random() % 12U)];
        const QString text = randomDateText(source, random);
        const QDate slow = QDate::fromString(text.trimmed(), pattern);
        if (toDate(text, pattern) != slow || toDate(Utf8::encoded(text), pattern) != slow) {
            failed = pattern + QLatin1String(" '") + text + QLatin1String("' ") + slow.toString();
        }
        dates += slow.isValid() ? 1 : 0;
    }
    QLocale::setDefault(before);
    QCOMPARE(failed, QString());
    QVERIFY2(dates > count / 5, "the texts are too seldom dates");
}

void TestDateFormats::detectsTheFormat_data()
{
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<QString>("dayFirst");
    QTest::addColumn<QString>("monthFirst");
    QTest::addColumn<bool>("readsAll");

    const auto addRow = [](const char *tag, const char *cells, const char *dayFirst,
                           const char *monthFirst, bool readsAll) {
        QTest::newRow(tag) << QString::fromLatin1(cells).split(QLatin1Char('|'))
                           << QString::fromLatin1(dayFirst) << QString::fromLatin1(monthFirst)
                           << readsAll;
    };
    addRow("one decides", "01/02/2024||13/01/2024", "d/M/yyyy", "d/M/yyyy", true);
    addRow("none decides", "01/02/2024", "d/M/yyyy", "M/d/yyyy", true);
    addRow("a stray word", "n/a|13/01/2024|01/02/2024", "d/M/yyyy", "d/M/yyyy", false);
    addRow("equal counts", "13/01/2024|01/13/2024", "d/M/yyyy", "M/d/yyyy", false);
    addRow("most win", "2024-01-05|1/2/2024|2024-01-06", "yyyy-M-d", "yyyy-M-d", false);
    addRow("no date", "a|b", "", "", false);
    addRow("blank is a sample", " |1/2/2024", "d/M/yyyy", "M/d/yyyy", false);
    addRow("only empty cells", "||", "", "", false);
}

void TestDateFormats::detectsTheFormat()
{
    QFETCH(QStringList, cells);
    QFETCH(QString, dayFirst);
    QFETCH(QString, monthFirst);
    QFETCH(bool, readsAll);
    const Dataset table = column(cells);

    DetectedDateFormat found = detectDateFormat(table, ColIndex(1), formats(other));
    QCOMPARE(found.pattern, dayFirst);
    QCOMPARE(found.readsAll, readsAll);
    found = detectDateFormat(table, ColIndex(1), formats(us));
    QCOMPARE(found.pattern, monthFirst);
    QCOMPARE(found.readsAll, readsAll);
}

void TestDateFormats::samplesTheFirstCellsThatAreNotEmpty()
{
    QStringList cells{QString(), QString()};
    for (int i = 0; i < 25; ++i) {
        cells << QStringLiteral("1/2/2024");
    }
    const Dataset table = column(cells + QStringList(QStringLiteral("13/13/2024")));
    QVERIFY(detectDateFormat(table, ColIndex(1), formats(us)).readsAll);
    cells[5] = QStringLiteral("13/1/2024");
    const DetectedDateFormat found = detectDateFormat(column(cells), ColIndex(1), formats(us));
    QCOMPARE(found.pattern, QStringLiteral("d/M/yyyy"));
}

void TestDateFormats::listsTheFormats()
{
    QCOMPARE(formats(us).size(), 12);
    QStringList sorted = formats(us);
    sorted.sort();
    QStringList otherSorted = formats(other);
    otherSorted.sort();
    QCOMPARE(sorted, otherSorted);
    QCOMPARE(formats(us)[6], QStringLiteral("M-d-yyyy"));
    QCOMPARE(formats(other)[6], QStringLiteral("d-M-yyyy"));
    QCOMPARE(dateFormatList(QStringLiteral("yyyy\n\nd MMM yyyy\n"), us),
             QStringList({QStringLiteral("yyyy"), QStringLiteral("d MMM yyyy")}));
}

TW_TEST_CLASS(TestDateFormats)
#include "tst_dateformats.moc"
