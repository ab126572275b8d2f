#include "cellnumberformat.h"
#include "testsupport.h"

namespace {

QString kindOf(CellNumberFormat format)
{
    QStringList parts;
    parts << (format.date ? "date" : "") << (format.time ? "time" : "")
          << (format.elapsed ? "elapsed" : "") << (format.seconds ? "seconds" : "");
    parts.removeAll(QString());
    return parts.isEmpty() ? "number" : parts.join(" ");
}

} // namespace

class TestCellNumberFormat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsDatesFromNumbers_data();
    void tellsDatesFromNumbers();
    void knowsBuiltInFormats_data();
    void knowsBuiltInFormats();
    void writesDatesAndTimes_data();
    void writesDatesAndTimes();
    void writesNumbersWithoutNoise_data();
    void writesNumbersWithoutNoise();
    void readsIsoDates_data();
    void readsIsoDates();
};

void TestCellNumberFormat::tellsDatesFromNumbers_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("kind");
    const auto addRow = [](const char *code, const char *kind) {
        QTest::newRow(code) << QString(code) << QString(kind);
    };
    addRow("General", "number");
    addRow("GENERAL", "number");
    addRow("Standard", "number");
    addRow("@", "number");
    addRow("#,##0.00;[Red]-#,##0.00", "number");
    addRow("0.00E+00", "number");
    addRow("##0.0e-0", "number");
    addRow("\"days\" 0", "number");
    addRow("0\\d", "number");
    addRow("0_d", "number");
    addRow("*s0", "number");
    addRow("[$USD] 0.00", "number");
    addRow("[Red][<=100]General;[Blue]General", "number");
    addRow("[DBNum1]General", "number");
    addRow("0;yyyy", "number");
    addRow("\"unclosed yyyy", "number");
    addRow("[unclosed yyyy", "number");
    addRow("0\\", "number");
    addRow("yyyy\\-mm\\-dd;@", "date");
    addRow("mmm", "date");
    addRow("mmmm\\ yy", "date");
    addRow("[$-409]d\\-mmm\\-yy;@", "date");
    addRow("[$-F800]dddd\\,\\ mmmm\\ dd\\,\\ yyyy", "date");
    addRow("ggge\"\u5e74\"m\"\u6708\"d\"\u65e5\"", "date");
    addRow("bbbb", "date");
    addRow("dd/mm/yyyy hh:mm", "date time");
    addRow("h:mm dd/mm", "date time");
    addRow("m/d/yy h:mm:ss AM/PM", "date time seconds");
    addRow("hh:mm", "time");
    addRow("H:MM A/P", "time");
    addRow("mm:ss.000", "time seconds");
    addRow("h:m:s", "time seconds");
    addRow("[h]:mm", "time elapsed");
    addRow("[HH]:MM:SS", "time elapsed seconds");
    addRow("[mm]:ss", "time elapsed seconds");
    addRow("[ss].00", "time elapsed seconds");
    addRow("[$-x-systime]h:mm:ss AM/PM", "time seconds");
}

void TestCellNumberFormat::tellsDatesFromNumbers()
{
    QFETCH(QString, code);
    QFETCH(QString, kind);
    QCOMPARE(kindOf(parseNumberFormat(code.toStdString())), kind);
}

void TestCellNumberFormat::knowsBuiltInFormats_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");
    QTest::addColumn<QString>("kind");
    const auto addRow = [](int first, int last, const char *kind) {
        QTest::newRow(qPrintable(QString::number(first))) << first << last << QString(kind);
    };
    addRow(-1, 13, "number");
    addRow(14, 17, "date");
    addRow(18, 18, "time");
    addRow(19, 19, "time seconds");
    addRow(20, 20, "time");
    addRow(21, 21, "time seconds");
    addRow(22, 22, "date time");
    addRow(23, 26, "number");
    addRow(27, 31, "date");
    addRow(37, 44, "number");
    addRow(45, 45, "time seconds");
    addRow(46, 46, "time elapsed seconds");
    addRow(47, 47, "time seconds");
    addRow(48, 49, "number");
    addRow(50, 58, "date");
    addRow(164, 164, "number");
}

void TestCellNumberFormat::knowsBuiltInFormats()
{
    QFETCH(int, first);
    QFETCH(int, last);
    QFETCH(QString, kind);
    for (int id = first; id <= last; ++id) {
        QCOMPARE(kindOf(builtInNumberFormat(id)), kind);
    }
}

void TestCellNumberFormat::writesDatesAndTimes_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("in1900");
    QTest::addColumn<QString>("in1904");
    const auto addRow = [](double number, const char *code, const char *in1900,
                           const char *in1904) {
        QTest::newRow(qPrintable(QString("%1 %2").arg(QString::number(number, 'g', 17), code)))
            << number << QString(code) << QString(in1900) << QString(in1904);
    };
    addRow(0, "yyyy", "00:00:00", "1904-01-01");
    addRow(0.5, "yyyy", "12:00:00", "1904-01-01 12:00:00");
    addRow(1, "yyyy", "1900-01-01", "1904-01-02");
    addRow(59, "yyyy", "1900-02-28", "1904-02-29");
    addRow(60, "yyyy", "1900-02-29", "1904-03-01");
    addRow(61, "yyyy", "1900-03-01", "1904-03-02");
    addRow(44227, "d", "2021-01-31", "2025-02-01");
    addRow(44227.25, "d", "2021-01-31 06:00:00", "2025-02-01 06:00:00");
    addRow(44227.5, "d h:mm", "2021-01-31 12:00:00", "2025-02-01 12:00:00");
    addRow(44227, "d h:mm", "2021-01-31", "2025-02-01");
    addRow(44227.000011586, "d", "2021-01-31 00:00:01.001", "2025-02-01 00:00:01.001");
    addRow(44226.9999999999, "d", "2021-01-31", "2025-02-01");
    addRow(2958465, "d", "9999-12-31", "2958465");
    addRow(2957003, "d", "9995-12-30", "9999-12-31");
    addRow(2958465.9999999999, "d", "2958466", "2958466");
    addRow(-1, "d", "-1", "-1");
    addRow(0.58680555555555558, "hh:mm", "14:05", "14:05");
    addRow(0.58680555555555558, "hh:mm:ss", "14:05:00", "14:05:00");
    addRow(0.58690972222222226, "hh:mm", "14:05:09", "14:05:09");
    addRow(0.99999999999, "hh:mm", "00:00", "00:00");
    addRow(44227.75, "hh:mm", "18:00", "18:00");
    addRow(1.5, "[h]:mm", "36:00", "36:00");
    addRow(0.0000115856481, "ss.000", "00:00:01.001", "00:00:01.001");
    addRow(1.5, "0.0", "1.5", "1.5");
}

void TestCellNumberFormat::writesDatesAndTimes()
{
    QFETCH(double, number);
    QFETCH(QString, code);
    QFETCH(QString, in1900);
    QFETCH(QString, in1904);
    const CellNumberFormat format = parseNumberFormat(code.toStdString());
    std::string text;
    appendFormatted(number, format, DateSystem::From1900, &text);
    QCOMPARE(QString::fromStdString(text), in1900);
    text.clear();
    appendFormatted(number, format, DateSystem::From1904, &text);
    QCOMPARE(QString::fromStdString(text), in1904);
}

void TestCellNumberFormat::writesNumbersWithoutNoise_data()
{
    QTest::addColumn<QString>("expected");
    const auto addRow = [](const char *text, const char *expected) {
        QTest::newRow(text) << QString(expected);
    };
    addRow("0", "0");
    addRow("-0", "0");
    addRow("-0.0", "0");
    addRow("007", "7");
    addRow("42", "42");
    addRow("-42", "-42");
    addRow("+42", "42");
    addRow(" 42\n", "42");
    addRow("1.50", "1.5");
    addRow("0.1", "0.1");
    addRow("-0.5", "-0.5");
    addRow("0.30000000000000004", "0.3");
    addRow("2.2999999999999998", "2.3");
    addRow("1E-3", "0.001");
    addRow("0.0001", "0.0001");
    addRow("0.00001", "1e-05");
    addRow("1E3", "1000");
    addRow("1.0E+2", "100");
    addRow("999999999999999", "999999999999999");
    addRow("1234567890123456", "1234567890123456");
    addRow("9007199254740991", "9007199254740991");
    addRow("12345678901234567890", "1.23456789012346e+19");
    addRow("123456789.123456789", "123456789.123457");
    addRow("0.1234567890123456", "0.123456789012346");
    addRow("1e400", "1e400");
    addRow("nan", "nan");
    addRow("1,5", "1,5");
    addRow("12abc", "12abc");
    addRow("-", "-");
    addRow(".", ".");
}

void TestCellNumberFormat::writesNumbersWithoutNoise()
{
    QFETCH(QString, expected);
    std::string text;
    appendNumberText(QTest::currentDataTag(), {}, DateSystem::From1900, &text);
    QCOMPARE(QString::fromStdString(text), expected);
}

void TestCellNumberFormat::readsIsoDates_data()
{
    QTest::addColumn<QString>("expected");
    const auto addRow = [](const char *text, const char *expected) {
        QTest::newRow(text) << QString(expected);
    };
    addRow("2026-01-31", "2026-01-31");
    addRow("2026-01-31T00:00:00Z", "2026-01-31");
    addRow("2026-01-31T14:05:09.25", "2026-01-31 14:05:09.250");
    addRow("T14:05", "14:05:00");
    addRow("2026-02-30", "2026-02-30");
    addRow("2026-01-31T25:00:00", "2026-01-31T25:00:00");
    addRow("soon", "soon");
    addRow("T", "T");
}

void TestCellNumberFormat::readsIsoDates()
{
    QFETCH(QString, expected);
    std::string text;
    appendIsoDate(QTest::currentDataTag(), &text);
    QCOMPARE(QString::fromStdString(text), expected);
}

TW_TEST_CLASS(TestCellNumberFormat)
#include "tst_cellnumberformat.moc"
