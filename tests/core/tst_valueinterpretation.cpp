#include "numbertext.h"
#include "testsupport.h"
#include "utf8.h"
#include "valueinterpretation.h"

#include <QLocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace {

const char *const localeNames[] = {"C",     "en_GB", "de_DE", "fr_FR",
                                   "hi_IN", "ar_EG", "sv_SE", "es_ES"};

/// Makes a locale the default until the end of the scope.
class DefaultLocale
{
public:
    explicit DefaultLocale(const QString &name) { QLocale::setDefault(QLocale(name)); }
    ~DefaultLocale() { QLocale::setDefault(m_before); }

private:
    Q_DISABLE_COPY(DefaultLocale)
    QLocale m_before;
};

/// How many random texts a test tries; the environment can ask for more.
int randomCount(int base)
{
#ifdef QT_NO_DEBUG
    base *= 4;
#endif
    return base * qMax(1, qEnvironmentVariableIntValue("TABWEAVE_FUZZ_FACTOR"));
}

// The rules, each step through the locale and the text classes.
double slowReal(QString text, bool emptyIsValid, bool stripCurrency, bool *ok)
{
    text = text.trimmed();
    const QString lower = text.toLower();
    *ok = false;
    if (lower == QLatin1String("nan") || lower == QLatin1String("inf") ||
        lower == QLatin1String("-inf")) {
        return 0;
    }
    if (stripCurrency) {
        text = removeCurrencySymbols(text);
    }
    if (emptyIsValid && text.isEmpty()) {
        *ok = true;
        return 0;
    }
    const double value = QLocale().toDouble(text, ok);
    return *ok ? value : 0;
}

QString slowIntegerText(const QString &text, bool stripCurrency)
{
    QString result = stripCurrency ? removeCurrencySymbols(text.trimmed()) : text.trimmed();
    const int point = result.lastIndexOf(QLocale().decimalPoint());
    if (point >= 0 && result.mid(point + 1).count(QLatin1Char('0')) == result.size() - point - 1) {
        result.truncate(point);
    }
    return result;
}

/// Texts like numbers, more or less damaged.
class NumberTexts
{
public:
    NumberTexts()
        : m_random(20240403)
    {
        const QLocale locale;
        m_alphabet = QStringLiteral("0123456789012345678900+-.,'eE $%/xnaif();\t\u00a0\u202f\u20ac"
                                    "\u2212\u0663\u066b\u066c\u2019\u00a3A");
        m_alphabet += QChar(0);
        for (int i = 0; i < 3; ++i) {
            m_alphabet += locale.decimalPoint();
            m_alphabet += locale.groupSeparator();
            m_alphabet += locale.negativeSign();
            m_alphabet += locale.zeroDigit();
        }
    }

    QString next()
    {
        QString text;
        if (below(5) == 0) {
            for (int length = below(9); length > 0; --length) {
                text += letter();
            }
            return text;
        }
        const QLocale locale;
        text += QLatin1String(pick({"", "", "", "-", "+", "$", "-$", " ", "$ "}));
        text += digits(1 + below(below(8) == 0 ? 40 : 7));
        if (below(3) == 0) {
            for (int groups = below(3); groups >= 0; --groups) {
                text += locale.groupSeparator() + digits(below(8) == 0 ? 2 : 3);
            }
        }
        if (below(2) == 0) {
            text += locale.decimalPoint();
            text += below(3) == 0 ? QString(below(4), QLatin1Char('0'))
                                  : digits(below(below(6) == 0 ? 30 : 5));
        }
        if (below(8) == 0) {
            text += QLatin1String(pick({"e", "E", "e-", "e+"})) + digits(1 + below(3));
        }
        text += QLatin1String(pick({"", "", "", "", " ", " $", "%", "-"}));
        if (below(4) == 0) {
            text.insert(below(text.size() + 1), letter());
        }
        if (below(8) == 0) {
            text.remove(below(text.size() + 1), 1);
        }
        return text;
    }

private:
    int below(int bound) { return int(m_random() % unsigned(bound)); }
    QChar letter() { return m_alphabet[below(m_alphabet.size())]; }
    QString digits(int count)
    {
        QString text;
        while (count-- > 0) {
            text += QChar('0' + below(10));
        }
        return text;
    }
    const char *pick(std::initializer_list<const char *> choices)
    {
        return choices.begin()[below(int(choices.size()))];
    }

    std::mt19937 m_random;
    QString m_alphabet;
};

bool sameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

QString described(const QString &text)
{
    return QLocale().name() + QLatin1String(": '") + text + QLatin1String("' ") +
           QString::fromLatin1(text.toUtf8().toHex());
}

} // namespace

class TestValueInterpretation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsNumbers_data();
    void readsNumbers();
    void readsNumbersLikeTheLocale_data();
    void readsNumbersLikeTheLocale();
    void readsIntegersLikeTheLocale_data() { readsNumbersLikeTheLocale_data(); }
    void readsIntegersLikeTheLocale();
    void followsTheDefaultLocale();
    void readsBooleans_data();
    void readsBooleans();
    void removesCurrencySymbols();
    void readsTimes_data();
    void readsTimes();
    void readsTimesLikeQt_data() { readsNumbersLikeTheLocale_data(); }
    void readsTimesLikeQt();
    void writesPlainNumbers_data();
    void writesPlainNumbers();
    void writesPlainNumbersLikeTheLocale_data() { readsNumbersLikeTheLocale_data(); }
    void writesPlainNumbersLikeTheLocale();
    void writesGroupSeparatorsOnlyWhenAsked();
};

void TestValueInterpretation::readsNumbers_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("emptyIsValid");
    QTest::addColumn<bool>("stripCurrency");
    QTest::addColumn<QString>("real"); // in C form, "-" when it is no number
    QTest::addColumn<QString>("integer");

    const auto addRow = [](const char *tag, const char *locale, const char *text, const char *real,
                           const char *integer, bool emptyIsValid = false,
                           bool stripCurrency = false) {
        QTest::newRow(tag) << QString::fromLatin1(locale) << QString::fromUtf8(text) << emptyIsValid
                           << stripCurrency << QString::fromLatin1(real)
                           << QString::fromLatin1(integer);
    };
    addRow("spaces around", "en_GB", "  42 ", "42", "42");
    addRow("no-break spaces around", "en_GB", "\u00a042\u2003", "42", "42");
    addRow("empty", "en_GB", "", "-", "-");
    addRow("empty allowed", "en_GB", "", "0", "0", true);
    addRow("blank allowed", "en_GB", " \t", "0", "0", true);
    addRow("no-break space allowed", "en_GB", "\u00a0", "0", "0", true);
    addRow("nan", "en_GB", "NaN", "-", "-");
    addRow("inf", "en_GB", " INF", "-", "-");
    addRow("-inf", "en_GB", "-Inf", "-", "-");
    addRow("zero decimals", "en_GB", "1.000", "1", "1");
    addRow("point at the end", "en_GB", "12.", "12", "12");
    addRow("point alone", "en_GB", ".", "-", "-");
    addRow("zero fraction alone", "en_GB", ".0", "0", "-");
    addRow("fraction alone", "en_GB", ".5", "0.5", "-");
    addRow("decimals", "en_GB", "12.5", "12.5", "-");
    addRow("two points", "en_GB", "1.0.0", "-", "-");
    addRow("group", "en_GB", "1,000", "1000", "1000");
    addRow("groups", "en_GB", "-1,234,567.50", "-1234567.5", "-");
    addRow("groups, zero decimals", "en_GB", "1,234,567.00", "1234567", "1234567");
    addRow("misplaced group", "en_GB", "1,00", "-", "-");
    addRow("group at the end", "en_GB", "1,000,", "-", "-");
    addRow("group in front", "en_GB", ",100", "-", "-");
    addRow("long first group", "en_GB", "1000,000", "-", "-");
    addRow("German point groups", "de_DE", "1.000", "1000", "1000");
    addRow("German comma", "de_DE", "1,000", "1", "1");
    addRow("German money", "de_DE", "1.234,50 \u20ac", "1234.5", "-", false, true);
    addRow("French narrow space", "fr_FR", "1\u202f234,5", "1234.5", "-");
    addRow("Swedish minus", "sv_SE",
           "\u2212"
           "5",
           "-5", "-5");
    addRow("Arabic digits", "ar_EG", "\u0661\u0662\u066b\u0665", "12.5", "-");
    addRow("ASCII digits in Arabic", "ar_EG", "12", "12", "12");
    addRow("dollar refused", "en_GB", "$12", "-", "-");
    addRow("dollar", "en_GB", "$12", "12", "12", false, true);
    addRow("dollar and groups", "en_GB", "$1,234.50", "1234.5", "-", false, true);
    addRow("euro at the end", "en_GB", "12\u20ac", "12", "12", false, true);
    addRow("euro at the end refused", "en_GB", "12\u20ac", "-", "-");
    addRow("sign before dollar", "en_GB", "-$12", "-12", "-12", false, true);
    addRow("dollar alone", "en_GB", "$", "0", "0", true, true);
    addRow("dollar alone, not empty", "en_GB", "$", "-", "-", false, true);
    addRow("exponent", "en_GB", "1e3", "1000", "-");
    addRow("negative exponent", "en_GB", "1e-3", "0.001", "-");
    addRow("overflow", "en_GB", "1e400", "-", "-");
    addRow("plus", "en_GB", "+7", "7", "7");
    addRow("leading zeros", "en_GB", "007", "7", "7");
    addRow("minus zero", "en_GB", "-0", "-0", "0");
    addRow("largest int", "en_GB", "2147483647", "2147483647", "2147483647");
    addRow("17 digits", "en_GB", "0.1234567890123456789", "0.1234567890123456789", "-");
    addRow("hexadecimal", "en_GB", "0x10", "-", "-");
    addRow("ISO date", "en_GB", "2024-04-03", "-", "-");
    addRow("per cent", "en_GB", "5%", "-", "-");
    addRow("inner space", "en_GB", "1 000", "-", "-");
    addRow("word", "en_GB", "Einstein", "-", "-");
}

void TestValueInterpretation::readsNumbers()
{
    QFETCH(QString, locale);
    QFETCH(QString, text);
    QFETCH(bool, emptyIsValid);
    QFETCH(bool, stripCurrency);
    QFETCH(QString, real);
    QFETCH(QString, integer);
    const DefaultLocale scope(locale);

    const auto expectedReal = real == QLatin1String("-") ? 0.0 : real.toDouble();
    bool ok = false;
    QVERIFY(sameBits(toReal(text, emptyIsValid, stripCurrency, &ok), expectedReal));
    QCOMPARE(ok, real != QLatin1String("-"));
    const std::string utf8 = Utf8::encoded(text);
    QVERIFY(sameBits(toReal(utf8, emptyIsValid, stripCurrency, &ok), expectedReal));
    QCOMPARE(ok, real != QLatin1String("-"));

    QCOMPARE(toInteger(text, emptyIsValid, stripCurrency, &ok), integer.toInt());
    QCOMPARE(ok, integer != QLatin1String("-"));
    QCOMPARE(toInteger64(utf8, emptyIsValid, stripCurrency, &ok), integer.toLongLong());
    QCOMPARE(ok, integer != QLatin1String("-"));
}

void TestValueInterpretation::readsNumbersLikeTheLocale_data()
{
    QTest::addColumn<QString>("locale");
    for (const char *name : localeNames) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

void TestValueInterpretation::readsNumbersLikeTheLocale()
{
    QFETCH(QString, locale);
    const DefaultLocale scope(locale);
    NumberTexts texts;
    int numbers = 0;
    for (int i = randomCount(15000); i > 0; --i) {
        const QString text = texts.next();
        const bool emptyIsValid = i % 2 == 0;
        const bool stripCurrency = i % 3 == 0;
        bool slowOk = false;
        const double slow = slowReal(text, emptyIsValid, stripCurrency, &slowOk);
        bool ok = false;
        const double fast = toReal(text, emptyIsValid, stripCurrency, &ok);
        QVERIFY2(ok == slowOk && sameBits(fast, slow), qPrintable(described(text)));
        const double fastUtf8 = toReal(Utf8::encoded(text), emptyIsValid, stripCurrency, &ok);
        QVERIFY2(ok == slowOk && sameBits(fastUtf8, slow), qPrintable(described(text)));
        numbers += ok ? 1 : 0;
    }
    QVERIFY2(numbers > randomCount(15000) / 4, "the texts are too seldom numbers");
}

void TestValueInterpretation::readsIntegersLikeTheLocale()
{
    QFETCH(QString, locale);
    const DefaultLocale scope(locale);
    NumberTexts texts;
    for (int i = randomCount(15000); i > 0; --i) {
        const QString text = texts.next();
        const bool stripCurrency = i % 3 == 0;
        const QString cut = slowIntegerText(text, stripCurrency);
        bool slowOk = false;
        const qint64 slow64 = QLocale().toLongLong(cut, &slowOk);
        bool ok = false;
        qint64 fast64 = toInteger64(text, false, stripCurrency, &ok);
        QVERIFY2(ok == slowOk && (!ok || fast64 == slow64), qPrintable(described(text)));
        fast64 = toInteger64(Utf8::encoded(text), false, stripCurrency, &ok);
        QVERIFY2(ok == slowOk && (!ok || fast64 == slow64), qPrintable(described(text)));
        const int slow = QLocale().toInt(cut, &slowOk);
        const int fast = toInteger(Utf8::encoded(text), false, stripCurrency, &ok);
        QVERIFY2(ok == slowOk && (!ok || fast == slow), qPrintable(described(text)));
    }
}

void TestValueInterpretation::followsTheDefaultLocale()
{
    QCOMPARE(toReal(QStringLiteral("1.5"), false, false), 1.5);
    {
        const DefaultLocale german(QStringLiteral("de_DE"));
        QCOMPARE(toReal(QStringLiteral("1,5"), false, false), 1.5);
        QCOMPARE(plainNumberText(0.1 + 0.2), QStringLiteral("0,3"));
    }
    QCOMPARE(toReal(QStringLiteral("1.5"), false, false), 1.5);
}

void TestValueInterpretation::readsBooleans_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("allowNumbers");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<bool>("value");

    QTest::newRow("TRUE") << QStringLiteral("TRUE") << false << true << true;
    QTest::newRow("False") << QStringLiteral(" False\u00a0") << false << true << false;
    QTest::newRow("yes") << QStringLiteral("yes") << true << false << false;
    QTest::newRow("empty") << QString() << true << false << false;
    QTest::newRow("0 as text") << QStringLiteral("0") << false << false << false;
    QTest::newRow("0") << QStringLiteral("0") << true << true << false;
    QTest::newRow("-0.0") << QStringLiteral("-0.0") << true << true << false;
    QTest::newRow("2.5") << QStringLiteral("2.5") << true << true << true;
    QTest::newRow("long number") << QStringLiteral("-1,000,000.0") << true << true << true;
    QTest::newRow("abc") << QStringLiteral("abc") << true << false << false;
    QTest::newRow("nan") << QStringLiteral("nan") << true << false << false;
    QTest::newRow("-INF") << QStringLiteral("-INF") << true << false << false;
    QTest::newRow("money") << QStringLiteral("$5") << true << false << false;
}

void TestValueInterpretation::readsBooleans()
{
    QFETCH(QString, text);
    QFETCH(bool, allowNumbers);
    QFETCH(bool, ok);
    QFETCH(bool, value);

    for (const bool emptyIsInvalid : {false, true}) {
        bool valid = !ok;
        QCOMPARE(toBoolean(text, emptyIsInvalid, allowNumbers, &valid), value);
        QCOMPARE(valid, ok);
        valid = !ok;
        QCOMPARE(toBoolean(Utf8::encoded(text), emptyIsInvalid, allowNumbers, &valid), value);
        QCOMPARE(valid, ok);
    }
}

void TestValueInterpretation::removesCurrencySymbols()
{
    QCOMPARE(removeCurrencySymbols(QStringLiteral("$1,234\u20ac.50\u00a3")),
             QStringLiteral("1,234.50"));
    // A symbol beyond the first 65,536 characters, between an unpaired half and a letter.
    const QString beyond = QString(QChar(0xd800)) + QString::fromUtf8("\U0001E2FFx");
    QCOMPARE(removeCurrencySymbols(beyond), QString(QChar(0xd800)) + QLatin1Char('x'));
    QCOMPARE(removeCurrencySymbols(QStringLiteral("12 kr")), QStringLiteral("12 kr"));
}

void TestValueInterpretation::readsTimes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QTime>("time");

    QTest::newRow("seconds") << QStringLiteral(" 1:2:3 ") << QTime(1, 2, 3);
    QTest::newRow("minutes") << QStringLiteral("23:59") << QTime(23, 59);
    QTest::newRow("zeros") << QStringLiteral("00:00:00") << QTime(0, 0);
    QTest::newRow("24 hours") << QStringLiteral("24:00") << QTime();
    QTest::newRow("60 minutes") << QStringLiteral("10:60") << QTime();
    QTest::newRow("hour alone") << QStringLiteral("10") << QTime();
    QTest::newRow("date and time") << QStringLiteral("1/2/2024 10:00") << QTime();
}

void TestValueInterpretation::readsTimes()
{
    QFETCH(QString, text);
    QFETCH(QTime, time);
    QCOMPARE(toTime(text), time);
    QCOMPARE(toTime(Utf8::encoded(text)), time);
}

void TestValueInterpretation::readsTimesLikeQt()
{
    QFETCH(QString, locale);
    const DefaultLocale scope(locale);
    std::mt19937 random(7);
    const QString alphabet = QStringLiteral("0123456789012345:::: +-.A\u0663\u00a0");
    for (int i = randomCount(2000); i > 0; --i) {
        QString text = QStringLiteral("%1:%2").arg(random() % 30).arg(random() % 70);
        text += random() % 2 ? QStringLiteral(":%1").arg(random() % 70) : QString();
        for (unsigned changes = random() % 3; changes > 0; --changes) {
            const int at = int(random() % unsigned(text.size() + 1));
            text.replace(at, int(random() % 2),
                         alphabet[int(random() % unsigned(alphabet.size()))]);
        }
        QTime slow = QTime::fromString(text.trimmed(), QStringLiteral("h:m:s"));
        if (!slow.isValid()) {
            slow = QTime::fromString(text.trimmed(), QStringLiteral("h:m"));
        }
        QVERIFY2(toTime(text) == slow, qPrintable(described(text)));
        QVERIFY2(toTime(Utf8::encoded(text)) == slow, qPrintable(described(text)));
    }
}

void TestValueInterpretation::writesPlainNumbers_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QString>("english");
    QTest::addColumn<QString>("german");

    const auto addRow = [](double number, const char *english, const char *german) {
        QTest::newRow(english) << number << QString::fromLatin1(english)
                               << QString::fromLatin1(german);
    };
    addRow(0.1 + 0.2, "0.3", "0,3");
    addRow(1234567.0, "1234567", "1234567");
    addRow(-1234567.25, "-1234567.25", "-1234567,25");
    addRow(999999999999999.0, "999999999999999", "999999999999999");
    addRow(1e15, "1e+15", "1e+15");
    addRow(-2.5e-9, "-2.5e-09", "-2,5e-09");
    addRow(-0.0, "0", "0");
    QTest::newRow("nan") << std::numeric_limits<double>::quiet_NaN() << QString() << QString();
    QTest::newRow("-inf") << -std::numeric_limits<double>::infinity() << QString() << QString();
}

void TestValueInterpretation::writesPlainNumbers()
{
    QFETCH(double, number);
    QFETCH(QString, english);
    QFETCH(QString, german);
    QCOMPARE(plainNumberText(number), english);
    const DefaultLocale scope(QStringLiteral("de_DE"));
    QCOMPARE(plainNumberText(number), german);
}

void TestValueInterpretation::writesPlainNumbersLikeTheLocale()
{
    QFETCH(QString, locale);
    const DefaultLocale scope(locale);
    QLocale plain;
    plain.setNumberOptions(QLocale::OmitGroupSeparator);
    std::mt19937_64 random(11);
    for (int i = randomCount(3000); i > 0; --i) {
        const quint64 bits = random();
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        if (i % 4 != 0) {
            number = double(qint64(bits) >> (bits % 50)) / std::pow(10.0, double(i % 12));
        }
        if (!std::isfinite(number)) {
            continue;
        }
        const bool isWhole = std::fabs(number) < 1e15 && std::floor(number) == number;
        const QString expected =
            isWhole ? plain.toString(qint64(number)) : plain.toString(number, 'g', 15);
        QCOMPARE(plainNumberText(number), expected);
        bool ok = false;
        const double back = toReal(expected, false, false, &ok);
        QVERIFY2(ok || std::fabs(number) < 1e-300 || std::fabs(number) > 1e300,
                 qPrintable(described(expected)));
        QVERIFY(!ok || std::fabs(back - number) <= std::fabs(number) * 1e-14);
    }
}

void TestValueInterpretation::writesGroupSeparatorsOnlyWhenAsked()
{
    QCOMPARE(numberToText(1234567.891, 'f', 2, true), QStringLiteral("1,234,567.89"));
    QCOMPARE(numberToText(1234567.891, 'f', 2, false), QStringLiteral("1234567.89"));
    const DefaultLocale scope(QStringLiteral("fr_FR"));
    QCOMPARE(numberToText(1234567.891, 'f', 1, true), QStringLiteral("1\u202f234\u202f567,9"));
    QCOMPARE(numberToText(1234567.891, 'f', 1, false), QStringLiteral("1234567,9"));
}

TW_TEST_CLASS(TestValueInterpretation)
#include "tst_valueinterpretation.moc"
