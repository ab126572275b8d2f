#include "transformcalculate.h"

#include "calculateoperations.h"
#include "testsupport.h"
#include "transformrun.h"
#include "transformsettings.h"

#include <QDate>

class TestTransformCalculate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void calculates_data();
    void calculates();
    void movesByWorkdays();
    void treatsEmptyAndUnreadable_data();
    void treatsEmptyAndUnreadable();
    void readsTheSecondValue_data();
    void readsTheSecondValue();
    void writesDatesLikeTheColumn();
    void countsYearsUpToToday();
    void namesTheNewColumn();
    void needsItsColumns();
    void showsWhatApplies();
    void listsItsOperations();
};

namespace {

OptionTexts typedOptions(const QString &operation, const QString &value2)
{
    return {{"Column_1", QStringLiteral("1")},
            {"Operation", operation},
            {"Value_2_Type", QStringLiteral("Value")},
            {"Value_2", value2}};
}

OptionTexts columnOptions(const char *operation)
{
    return {{"Column_1", QStringLiteral("1")},
            {"Operation", QString::fromUtf8(operation)},
            {"Column_2", QStringLiteral("2")}};
}

} // namespace

void TestTransformCalculate::initTestCase()
{
    TransformSettings::setCurrent(
        {{QStringLiteral("d/M/yyyy"), QStringLiteral("M/d/yyyy"), QStringLiteral("yyyy-M-d")}});
}

void TestTransformCalculate::calculates_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("result");
    const auto addRow = [](const char *operation, const char *first, const char *second,
                           const char *result) {
        QTest::addRow("%s %s %s", operation, first, second)
            << QString::fromUtf8(operation) << QString::fromUtf8(first) << QString::fromUtf8(second)
            << QString::fromUtf8(result);
    };
    const char *const none = "";
    addRow("Add", "0.1", "0.2", "0.3");
    addRow("Add", "$1,000", "1", "1001");
    addRow("Add", "1e308", "1e308", none);
    addRow("Subtract", "3", "5", "-2");
    addRow("Multiply", "1e10", "1e10", "1e+20");
    addRow("Multiply", "-1", "0", "0");
    addRow("Divide", "7", "2", "3.5");
    addRow("Divide", "7", "0", none);
    addRow("IntegerDivide", "-7", "2", "-4");
    addRow("Modulus", "-7", "3", "2");
    addRow("Modulus", "7", "-3", "-2");
    addRow("Modulus", "7", "0", none);
    addRow("Power", "2", "10", "1024");
    addRow("Power", "-8", "0.5", none);
    addRow("Percent", "1", "4", "25");
    addRow("PercentChange", "4", "5", "25");
    addRow("Difference", "3", "5", "2");
    addRow("Minimum", "3", "-5", "-5");
    addRow("Maximum", "3", "-5", "3");
    addRow("Average", "1", "2", "1.5");
    addRow("RoundToMultiple", "7.5", "5", "10");
    addRow("RoundToMultiple", "0.3", "0.1", "0.3");
    addRow("GreatestCommonDivisor", "-12", "18", "6");
    addRow("LowestCommonMultiple", "4", "6.0", "12");
    addRow("LowestCommonMultiple", "9223372036854775807", "2", none);
    addRow("Absolute", "-2.5", none, "2.5");
    addRow("Negate", "0", none, "0");
    addRow("Sign", "-3", none, "-1");
    addRow("Reciprocal", "4", none, "0.25");
    addRow("Square", "-3", none, "9");
    addRow("SquareRoot", "-1", none, none);
    addRow("SquareRoot", "2", none, "1.4142135623731");
    addRow("Cube", "-2", none, "-8");
    addRow("CubeRoot", "-27", none, "-3");
    addRow("Factorial", "5", none, "120");
    addRow("Factorial", "2.5", none, none);
    addRow("Factorial", "171", none, none);
    addRow("Round", "2.5", none, "3");
    addRow("Round", "-2.5", none, "-3");
    addRow("RoundToDecimals", "1.005", "2", "1.01");
    addRow("RoundToDecimals", "-1250", "-2", "-1300");
    addRow("RoundToDecimals", "1.25", "400", "1.25");
    addRow("RoundToDecimals", "1.25", "0.5", none);
    addRow("Floor", "-1.5", none, "-2");
    addRow("Ceiling", "-1.5", none, "-1");
    addRow("Truncate", "-1.5", none, "-1");
    addRow("Fraction", "-3.7", none, "-0.7");
    addRow("Exp", "0", none, "1");
    addRow("Ln", "0", none, none);
    addRow("Log10", "1000", none, "3");
    addRow("Log2", "8", none, "3");
    addRow("Log", "125", "5", "3");
    addRow("Log", "5", "1", none);
    addRow("Sin", "0", none, "0");
    addRow("Cos", "0", none, "1");
    addRow("Tan", "0.5", none, "0.54630248984379");
    addRow("ArcSin", "2", none, none);
    addRow("ArcCos", "1", none, "0");
    addRow("ArcTan", "1", none, "0.785398163397448");
    addRow("ArcTan2", "1", "-1", "2.35619449019234");
    addRow("Sinh", "1", none, "1.1752011936438");
    addRow("Cosh", "0", none, "1");
    addRow("Tanh", "1", none, "0.761594155955765");
    addRow("DegreesToRadians", "180", none, "3.14159265358979");
    addRow("RadiansToDegrees", "3.14159265358979", none, "180");
    addRow("BitAnd", "12", "10", "8");
    addRow("BitOr", "12", "1e1", "14");
    addRow("BitXor", "12", "10", "6");
    addRow("BitNot", "0", none, "-1");
    addRow("ShiftLeft", "1", "62", "4611686018427387904");
    addRow("ShiftLeft", "1", "64", none);
    addRow("ShiftRight", "-8", "1", "-4");
    addRow("BitAnd", "1.5", "1", none);
    addRow("Equal", "10", "10.0", "true");
    addRow("NotEqual", "a", "A", "true");
    addRow("GreaterThan", "9", "10", "false");
    addRow("GreaterThan", "13/02/2024", "14/01/2024", "true");
    addRow("GreaterThanEqual", "b", "b", "true");
    addRow("LessThan", "9", "10", "true");
    addRow("LessThanEqual", "9x", "10", "false");
    addRow("And", "TRUE", "1", "true");
    addRow("Or", "false", "0", "false");
    addRow("Xor", "true", "true", "false");
    addRow("Not", "0", none, "true");
    addRow("Not", "maybe", none, none);
    addRow("TextLength", "a\U0001F600b", none, "3");
    addRow("WordCount", "  two\twords ", none, "2");
    addRow("LineCount", "a\r\nb\n\nc", none, "4");
    addRow("LineCount", "a\n", none, "1");
    addRow("CountOf", "aaaaa", "aa", "2");
    addRow("CountOf", "abc", none, "0");
    addRow("PositionOf", "\U0001F600b", "b", "2");
    addRow("PositionOf", "abc", "B", "0");
    addRow("EditDistance", "kitten", "sitting", "3");
    addRow("Similarity", "abcd", "abcx", "75");
    addRow("Similarity", "abcd", "xyz", "0");
    addRow("DateToJulianDay", "29/02/2024", none, "2460370");
    addRow("DateToJulianDay", "30/02/2024", none, none);
    addRow("DateToUnixTime", "02/01/1970", none, "86400");
    addRow("DateToExcelDay", "28/02/1900", none, "59");
    addRow("DateToExcelDay", "01/03/1900", none, "61");
    addRow("DateToExcelDay", "01/01/2024", none, "45292");
    addRow("DateToExcelDay", "31/12/1899", none, none);
    addRow("Year", "2024-05-06", none, "2024");
    addRow("Quarter", "01/10/2024", none, "4");
    addRow("Month", "31/05/2024", none, "5");
    addRow("Day", "31/05/2024", none, "31");
    addRow("DayOfYear", "31/12/2024", none, "366");
    addRow("DayOfWeek", "03/11/2024", none, "7");
    addRow("ISOWeek", "30/12/2024", none, "1");
    addRow("ISOWeekYear", "30/12/2024", none, "2025");
    addRow("DaysInMonth", "01/02/2023", none, "28");
    addRow("MonthName", "01/02/2023", none, "February");
    addRow("DayName", "03/11/2024", none, "Sunday");
    addRow("IsLeapYear", "01/01/1900", none, "false");
    addRow("IsWeekend", "02/11/2024", none, "true");
    addRow("JulianDayToDate", "2460370.9", none, "2024-02-29");
    addRow("JulianDayToDate", "1e300", none, none);
    addRow("UnixTimeToDate", "-1", none, "1969-12-31");
    addRow("ExcelDayToDate", "59", none, "1900-02-28");
    addRow("ExcelDayToDate", "60", none, none);
    addRow("ExcelDayToDate", "61", none, "1900-03-01");
    addRow("FirstOfMonth", "29/02/2024", none, "01/02/2024");
    addRow("LastOfMonth", "2024-02-03", none, "2024-02-29");
    addRow("StartOfWeek", "03/11/2024", none, "28/10/2024");
    addRow("AddDays", "31/12/2024", "1", "01/01/2025");
    addRow("AddDays", "31/12/9999", "1", none);
    addRow("AddDays", "31/12/2024", "9223372036854775807", none);
    addRow("AddWeeks", "31/12/2024", "-1", "24/12/2024");
    addRow("AddMonths", "31/01/2024", "1", "29/02/2024");
    addRow("AddMonths", "31/01/2024", "99999999999", none);
    addRow("AddMonths", "31/01/2024", "1.5", none);
    addRow("AddYears", "29/02/2024", "1", "28/02/2025");
    addRow("AddWorkdays", "01/11/2024", "1", "04/11/2024");
    addRow("AddWorkdays", "02/11/2024", "-1", "01/11/2024");
    addRow("DaysBetween", "01/03/2024", "29/02/2024", "-1");
    addRow("WeeksBetween", "01/03/2024", "14/03/2024", "1");
    addRow("MonthsBetween", "31/01/2024", "29/02/2024", "1");
    addRow("MonthsBetween", "31/01/2024", "28/02/2024", "0");
    addRow("MonthsBetween", "29/02/2024", "31/01/2024", "-1");
    addRow("YearsBetween", "29/02/2024", "28/02/2025", "1");
    addRow("WorkdaysBetween", "01/11/2024", "04/11/2024", "1");
    addRow("WorkdaysBetween", "04/11/2024", "01/11/2024", "-1");
    addRow("Hour", "7:05", none, "7");
    addRow("Minute", "7:05:09", none, "5");
    addRow("Second", "7:05:09", none, "9");
    addRow("Hour", "25:00", none, none);
    addRow("TimeToSeconds", "1:00:01", none, "3601");
    addRow("SecondsToTime", "3601.9", none, "01:00:01");
    addRow("SecondsToTime", "86400", none, none);
    addRow("SecondsBetween", "1:00", "0:59:30", "-30");
}

void TestTransformCalculate::calculates()
{
    QFETCH(QString, operation);
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(QString, result);
    const auto transform = transformWith<TransformCalculate>(typedOptions(operation, second));
    const Dataset output = transform->execute({table({}, {{first}})});
    QCOMPARE(output.cell(RowIndex(0), ColIndex(1)), result);
    QCOMPARE(transform->status(), result.isEmpty()
                                      ? QStringLiteral("0 calculated, 1 not calculated")
                                      : QStringLiteral("1 calculated, 0 not calculated"));
    QCOMPARE(transform->messages().warnings.size(), result.isEmpty() ? 1 : 0);
    QVERIFY(!output.hasHeader());

    // The same from a column: read and remembered in another way.
    if (!second.isEmpty()) {
        const auto again = transformWith<TransformCalculate>(columnOptions(qPrintable(operation)));
        const Dataset twice = again->execute({table({}, {{first, second}, {first, second}})});
        QCOMPARE(columnOf(twice, 2), (QStringList{result, result}));
    }
}

void TestTransformCalculate::movesByWorkdays()
{
    // What is added must be what lies between, from every day of the week.
    for (int day = 1; day <= 7; ++day) {
        for (int days = -12; days <= 12; ++days) {
            const QDate start(2024, 10, day);
            const Dataset input =
                table({}, {{start.toString(QStringLiteral("dd/MM/yyyy")), QString::number(days)}});
            const Dataset added =
                transformWith<TransformCalculate>(columnOptions("AddWorkdays"))->execute({input});
            const QDate end = QDate::fromString(added.cell(RowIndex(0), ColIndex(2)),
                                                QStringLiteral("dd/MM/yyyy"));
            int between = 0;
            for (QDate each = qMin(start, end).addDays(days > 0 ? 1 : 0);
                 each < qMax(start, end).addDays(days > 0 ? 1 : 0); each = each.addDays(1)) {
                between += each.dayOfWeek() <= 5 ? 1 : 0;
            }
            QCOMPARE(between, qAbs(days));
            QVERIFY(days == 0 || end.dayOfWeek() <= 5);
        }
    }
}

void TestTransformCalculate::treatsEmptyAndUnreadable_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QList<QStringList>>("rows");
    QTest::addColumn<QStringList>("results");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QStringList>("warnings");
    const auto t = [](const char *utf8) { return QString::fromUtf8(utf8); };
    const auto addRow = [&t](const char *operation, const char *rows, const char *results,
                             const char *status, const QStringList &warnings) {
        QTest::newRow(operation) << t(operation) << rowsOf(rows) << cells(results) << t(status)
                                 << warnings;
    };
    addRow("Add", "1|2;|2;1|;x|2;1|x;x|x", "3|||||", "1 calculated, 3 not calculated",
           {t("2 non-numeric value(s) ignored in column 'A'."),
            t("1 non-numeric value(s) ignored in column 'B'.")});
    addRow("Minimum", "3|2;|2;3|;x|2", "2|2|3|", "3 calculated, 1 not calculated",
           {t("1 non-numeric value(s) ignored in column 'A'.")});
    addRow("Average", "3|4;|2;|;|x", "3.5|2||", "2 calculated, 1 not calculated",
           {t("1 non-numeric value(s) ignored in column 'B'.")});
    addRow("Divide", "1|0;0|0;1|4", "||0.25", "1 calculated, 2 not calculated",
           {t("2 result(s) could not be calculated.")});
    addRow("DaysBetween", "01/01/2024|02/01/2024;soon|02/01/2024;|x", "1||",
           "1 calculated, 1 not calculated",
           {t("1 value(s) not recognised as dates in column 'A'.")});
    addRow("And", "true|yes;true|", "|", "0 calculated, 1 not calculated",
           {t("1 value(s) not recognised as true or false in column 'B'.")});
    addRow("SecondsBetween", "1:00|noon", "", "0 calculated, 1 not calculated",
           {t("1 value(s) not recognised as times in column 'B'.")});
    addRow("BitOr", "1.5|1", "", "0 calculated, 1 not calculated",
           {t("1 value(s) in column 'A' are not whole numbers.")});
    addRow("Equal", "|;a|", "true|false", "2 calculated, 0 not calculated", {});
    addRow("CountOf", "|a;a|", "0|0", "2 calculated, 0 not calculated", {});
    addRow("TextLength", "|;ab|", "0|2", "2 calculated, 0 not calculated", {});
    addRow("PositionOf", "|a;a|", "|", "0 calculated, 0 not calculated", {});
}

void TestTransformCalculate::treatsEmptyAndUnreadable()
{
    QFETCH(QString, operation);
    QFETCH(QList<QStringList>, rows);
    QFETCH(QStringList, results);
    QFETCH(QString, status);
    QFETCH(QStringList, warnings);
    const auto transform = transformWith<TransformCalculate>(columnOptions(qPrintable(operation)));
    QCOMPARE(columnOf(transform->execute({table(cells("A|B"), rows)}), 2), results);
    QCOMPARE(transform->status(), status);
    QCOMPARE(transform->messages().warnings, warnings);
}

void TestTransformCalculate::readsTheSecondValue_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QStringList>("results");
    const auto addRow = [](const char *operation, const char *value, const char *results) {
        QTest::newRow(value) << QString::fromUtf8(operation) << QString::fromUtf8(value)
                             << cells(results);
    };
    // Cells: 13/02/2024 and 3/4/2024, beside them 1 and 2.
    addRow("DaysBetween", "14/02/2024", "1|-49");
    addRow("DaysBetween", "2024-02-14", "1|-49");
    addRow("DaysBetween", "someday", "|");
    addRow("AddDays", "$(B)", "14/2/2024|5/4/2024");
    addRow("AddDays", "$(2)0", "23/2/2024|23/4/2024");
    addRow("AddDays", "$(9)", "|");
    addRow("AddDays", "", "|");
}

void TestTransformCalculate::readsTheSecondValue()
{
    QFETCH(QString, operation);
    QFETCH(QString, value);
    QFETCH(QStringList, results);
    const auto transform = transformWith<TransformCalculate>(typedOptions(operation, value));
    const Dataset input = table(cells("A|B"), rowsOf("13/02/2024|1;3/4/2024|2"));
    QCOMPARE(columnOf(transform->execute({input}), 2), results);
    const bool isUnreadable = results.first().isEmpty() && !value.isEmpty();
    QCOMPARE(
        transform->messages().warnings,
        isUnreadable
            ? QStringList{QStringLiteral("Value 2 '%1' cannot be read in 2 row(s).").arg(value)}
            : QStringList());
}

void TestTransformCalculate::writesDatesLikeTheColumn()
{
    const auto transform = transformWith<TransformCalculate>(
        typedOptions(QStringLiteral("AddDays"), QStringLiteral("1")));
    // The second cell makes it a column of months first, so the first is 4 March.
    const Dataset input = columnTable(QStringLiteral("A"), cells("3/4/2024|3/13/2024|n/a"));
    QCOMPARE(columnOf(transform->execute({input}), 1), cells("3/5/2024|3/14/2024|"));
    // Two digits where all cells have two.
    const Dataset padded = columnTable(QStringLiteral("A"), cells("12/04/2024|03/13/2024|n/a"));
    QCOMPARE(columnOf(transform->execute({padded}), 1), cells("12/05/2024|03/14/2024|"));
}

void TestTransformCalculate::countsYearsUpToToday()
{
    const QDate today = QDate::currentDate();
    const QString pattern = QStringLiteral("yyyy-MM-dd");
    const auto transform = transformWith<TransformCalculate>(
        {{"Column_1", QStringLiteral("1")}, {"Operation", QStringLiteral("AgeInYears")}});
    const Dataset output = transform->execute(
        {columnTable(QStringLiteral("A"), {today.addYears(-30).toString(pattern),
                                           today.addYears(-30).addDays(1).toString(pattern)})});
    QCOMPARE(columnOf(output, 1), cells("30|29"));
}

void TestTransformCalculate::namesTheNewColumn()
{
    const Dataset input = table(cells("A|Result"), rowsOf("1|2"));
    auto options = columnOptions("Add");
    QCOMPARE(transformWith<TransformCalculate>(options)->execute({input}).header(),
             cells("A|Result|Result_2"));
    options.append({"New_Name", QString()});
    QCOMPARE(transformWith<TransformCalculate>(options)->execute({input}).header(),
             cells("A|Result|Result_2"));
    options.append({"New_Name", QStringLiteral("A")});
    QCOMPARE(transformWith<TransformCalculate>(options)->execute({input}),
             table(cells("A|Result|A_2"), rowsOf("1|2|3")));
}

void TestTransformCalculate::needsItsColumns()
{
    const Dataset input = table(cells("A"), rowsOf("1"));
    const auto transform = transformWith<TransformCalculate>(columnOptions("Add"));
    QCOMPARE(transform->execute({input}), input); // there is no second column
    QCOMPARE(transform->status(), QStringLiteral("No changes"));
    const auto unset = transformWith<TransformCalculate>({});
    QCOMPARE(unset->execute({input}), input);
    const Dataset noRows = table(cells("A|B"), {});
    QCOMPARE(transform->execute({noRows}), table(cells("A|B|Result"), {}));
    transform->setProgress([](double) { return false; });
    QVERIFY(!transform->execute({table(cells("A|B"), rowsOf("1|2"))}).hasColumns());
}

void TestTransformCalculate::showsWhatApplies()
{
    const auto shown = [](const OptionTexts &options) {
        const auto transform = transformWith<TransformCalculate>(options);
        QStringList keys;
        const auto parameters = transform->parameters();
        for (const TransformParameter *parameter : parameters) {
            if (transform->isParameterShown(*parameter)) {
                keys.append(parameter->key);
            }
        }
        return keys;
    };
    const OptionTexts value{{"Value_2_Type", QStringLiteral("Value")}};
    const OptionTexts unary{{"Operation", QStringLiteral("Square")}};
    QCOMPARE(shown({}), cells("Column_1|Operation|Value_2_Type|Column_2|New_Name"));
    QCOMPARE(shown(value), cells("Column_1|Operation|Value_2_Type|Value_2|New_Name"));
    QCOMPARE(shown(value + unary), cells("Column_1|Operation|New_Name"));
}

void TestTransformCalculate::listsItsOperations()
{
    const auto transform = transformWith<TransformCalculate>({});
    const TransformParameter *const operation = transform->parameter(QStringLiteral("Operation"));
    QSet<QString> names;
    for (const CalculationOperation &each : CalculateOperations::all()) {
        const QString name = QString::fromLatin1(each.name);
        names.insert(name);
        QVERIFY2(operation->help.contains(QLatin1Char('\n') + name + QStringLiteral(": ")),
                 each.name);
    }
    QCOMPARE(names.size(), int(CalculateOperations::all().size()));
    QCOMPARE(operation->options.toStringList().first(), QStringLiteral("Add"));
    QCOMPARE(operation->value.toString(), QStringLiteral("Add"));
}

TW_TEST_CLASS(TestTransformCalculate)
#include "tst_transformcalculate.moc"
