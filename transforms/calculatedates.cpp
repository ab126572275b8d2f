#include "calculateoperations.h"

#include <QLocale>
#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using Operand = CalculationOperand;
using Operation = CalculationOperation;
using Result = CalculationResult;
using Takes = CalculationOperation::Takes;

constexpr qint64 secondsPerDay = 86400;
constexpr qint64 unixEpoch = 2440588; // Julian day of 1 January 1970

Operation ofDate(const char *name, const char *help, Result (*kernel)(QDate))
{
    return {name, help, Takes::Date, Takes::Nothing,
            [kernel](const Operand &a, const Operand &) { return kernel(a.date); }};
}

Operation moved(const char *name, const char *help, QDate (*kernel)(QDate, qint64))
{
    return {name, help, Takes::Date, Takes::Integer, [kernel](const Operand &a, const Operand &b) {
                return Result(kernel(a.date, b.integer));
            }};
}

Operation between(const char *name, const char *help, qint64 (*kernel)(QDate, QDate))
{
    return {name, help, Takes::Date, Takes::Date, [kernel](const Operand &a, const Operand &b) {
                return Result(kernel(a.date, b.date));
            }};
}

Operation fromNumber(const char *name, const char *help, QDate (*kernel)(double))
{
    return {name, help, Takes::Number, Takes::Nothing,
            [kernel](const Operand &a, const Operand &) { return Result(kernel(a.number)); }};
}

Operation ofTime(const char *name, const char *help, qint64 (*kernel)(QTime))
{
    return {name, help, Takes::Time, Takes::Nothing,
            [kernel](const Operand &a, const Operand &) { return Result(kernel(a.time)); }};
}

Result whole(qint64 number)
{
    return Result(number);
}

/// The date of a whole day number; invalid outside the years 1 to 9999.
QDate dateOf(double julianDay)
{
    constexpr double first = 1721426;
    constexpr double last = 5373484;
    const double day = std::floor(julianDay);
    return day >= first && day <= last ? QDate::fromJulianDay(qint64(day)) : QDate();
}

// Spreadsheets count days from 1 for 1 January 1900 and have a 29 February 1900, day 60, that
// never was.
constexpr qint64 spreadsheetEpoch = 2415019; // 30 December 1899
constexpr int phantomDay = 60;

Result spreadsheetDay(QDate date)
{
    const qint64 day = date.toJulianDay() - spreadsheetEpoch;
    const qint64 shifted = day > phantomDay ? day : day - 1;
    return shifted >= 1 ? whole(shifted) : Result();
}

QDate ofSpreadsheetDay(double number)
{
    const double day = std::floor(number);
    if (day < 1 || day == phantomDay) {
        return {};
    }
    return dateOf(double(spreadsheetEpoch) + day + (day > phantomDay ? 0 : 1));
}

int weekYear(QDate date)
{
    int year = 0;
    date.weekNumber(&year);
    return year;
}

bool isWeekend(QDate date)
{
    return date.dayOfWeek() > Qt::Friday;
}

QDate plusDays(QDate date, qint64 days)
{
    return dateOf(double(date.toJulianDay()) + double(days));
}

QDate plusMonths(QDate date, qint64 months)
{
    constexpr qint64 most = 120000;
    return qAbs(double(months)) <= most ? dateOf(double(date.addMonths(int(months)).toJulianDay()))
                                        : QDate();
}

QDate plusYears(QDate date, qint64 years)
{
    constexpr qint64 most = 10000;
    return qAbs(double(years)) <= most ? plusMonths(date, years * 12) : QDate();
}

/// Working days (Monday to Friday) up to and with a day, from one that is the same for all. Julian
/// day 0 was a Monday.
qint64 workdaysUpTo(qint64 julianDay)
{
    return julianDay / 7 * 5 + std::min<qint64>(julianDay % 7 + 1, 5);
}

qint64 workdayOfRank(qint64 rank)
{
    return (rank - 1) / 5 * 7 + (rank - 1) % 5;
}

QDate plusWorkdays(QDate date, qint64 days)
{
    constexpr qint64 most = 4000000;
    const qint64 start = date.toJulianDay();
    const qint64 rank = days > 0 ? workdaysUpTo(start) + days : workdaysUpTo(start - 1) + 1 + days;
    if (days == 0 || qAbs(double(days)) > most || rank < 1) {
        return days == 0 ? date : QDate();
    }
    return dateOf(double(workdayOfRank(rank)));
}

qint64 workdaysBetween(QDate from, QDate to)
{
    return workdaysUpTo(to.toJulianDay()) - workdaysUpTo(from.toJulianDay());
}

/// Whole months; negative when the second date is the earlier one.
qint64 monthsBetween(QDate from, QDate to)
{
    if (to < from) {
        return -monthsBetween(to, from);
    }
    const int months = (to.year() - from.year()) * 12 + to.month() - from.month();
    return from.addMonths(months) <= to ? months : months - 1;
}

qint64 yearsBetween(QDate from, QDate to)
{
    return monthsBetween(from, to) / 12;
}

qint64 secondsOf(QTime time)
{
    return time.msecsSinceStartOfDay() / 1000;
}

} // namespace

CalculationOperations CalculateOperations::dateToNumber()
{
    return {
        ofDate("DateToJulianDay", QT_TRANSLATE_NOOP("Calculate", "the Julian day number"),
               [](QDate a) { return whole(a.toJulianDay()); }),
        ofDate("DateToUnixTime", QT_TRANSLATE_NOOP("Calculate", "the seconds since 1 January 1970"),
               [](QDate a) { return whole((a.toJulianDay() - unixEpoch) * secondsPerDay); }),
        ofDate(
            "DateToExcelDay",
            QT_TRANSLATE_NOOP("Calculate", "the day number of spreadsheets, 1 for 1 January 1900"),
            spreadsheetDay),
        ofDate("Year", QT_TRANSLATE_NOOP("Calculate", "the year"),
               [](QDate a) { return whole(a.year()); }),
        ofDate("Quarter", QT_TRANSLATE_NOOP("Calculate", "1 to 4"),
               [](QDate a) { return whole((a.month() + 2) / 3); }),
        ofDate("Month", QT_TRANSLATE_NOOP("Calculate", "1 to 12"),
               [](QDate a) { return whole(a.month()); }),
        ofDate("Day", QT_TRANSLATE_NOOP("Calculate", "the day of the month"),
               [](QDate a) { return whole(a.day()); }),
        ofDate("DayOfYear", QT_TRANSLATE_NOOP("Calculate", "1 to 366"),
               [](QDate a) { return whole(a.dayOfYear()); }),
        ofDate("DayOfWeek", QT_TRANSLATE_NOOP("Calculate", "1 (Monday) to 7"),
               [](QDate a) { return whole(a.dayOfWeek()); }),
        ofDate("ISOWeek", QT_TRANSLATE_NOOP("Calculate", "the ISO week, 1 to 53"),
               [](QDate a) { return whole(a.weekNumber()); }),
        ofDate("ISOWeekYear",
               QT_TRANSLATE_NOOP("Calculate", "the year that the ISO week belongs to"),
               [](QDate a) { return whole(weekYear(a)); }),
        ofDate("DaysInMonth", QT_TRANSLATE_NOOP("Calculate", "28 to 31"),
               [](QDate a) { return whole(a.daysInMonth()); }),
        {"AgeInYears", QT_TRANSLATE_NOOP("Calculate", "the whole years from v1 to today"),
         Takes::Date, Takes::Nothing,
         [](const Operand &a, const Operand &today) {
             return whole(yearsBetween(a.date, today.date));
         }},
    };
}

CalculationOperations CalculateOperations::dateToText()
{
    return {
        ofDate("MonthName", QT_TRANSLATE_NOOP("Calculate", "the name of the month"),
               [](QDate a) { return Result(QLocale().standaloneMonthName(a.month())); }),
        ofDate("DayName", QT_TRANSLATE_NOOP("Calculate", "the name of the day of the week"),
               [](QDate a) { return Result(QLocale().standaloneDayName(a.dayOfWeek())); }),
        ofDate("IsLeapYear", QT_TRANSLATE_NOOP("Calculate", "true in a leap year"),
               [](QDate a) { return Result(QDate::isLeapYear(a.year())); }),
        ofDate("IsWeekend", QT_TRANSLATE_NOOP("Calculate", "true on Saturday and Sunday"),
               [](QDate a) { return Result(isWeekend(a)); }),
    };
}

CalculationOperations CalculateOperations::toDate()
{
    return {
        fromNumber("JulianDayToDate",
                   QT_TRANSLATE_NOOP("Calculate", "the date of a Julian day number"), dateOf),
        fromNumber(
            "UnixTimeToDate",
            QT_TRANSLATE_NOOP("Calculate", "the date of the seconds since 1 January 1970 (UTC)"),
            [](double a) { return dateOf(double(unixEpoch) + std::floor(a / secondsPerDay)); }),
        fromNumber("ExcelDayToDate",
                   QT_TRANSLATE_NOOP("Calculate", "the date of a day number of spreadsheets"),
                   ofSpreadsheetDay),
        ofDate("FirstOfMonth", QT_TRANSLATE_NOOP("Calculate", "the first day of the month"),
               [](QDate a) { return Result(QDate(a.year(), a.month(), 1)); }),
        ofDate("LastOfMonth", QT_TRANSLATE_NOOP("Calculate", "the last day of the month"),
               [](QDate a) { return Result(QDate(a.year(), a.month(), a.daysInMonth())); }),
        ofDate("StartOfWeek", QT_TRANSLATE_NOOP("Calculate", "the Monday of the week"),
               [](QDate a) { return Result(plusDays(a, 1 - a.dayOfWeek())); }),
        moved("AddDays", QT_TRANSLATE_NOOP("Calculate", "v1 and v2 days"), plusDays),
        moved("AddWeeks", QT_TRANSLATE_NOOP("Calculate", "v1 and v2 weeks"),
              [](QDate a, qint64 b) { return dateOf(double(a.toJulianDay()) + 7 * double(b)); }),
        moved("AddMonths",
              QT_TRANSLATE_NOOP("Calculate",
                                "v1 and v2 months; the day is lowered where the month is shorter"),
              plusMonths),
        moved("AddYears", QT_TRANSLATE_NOOP("Calculate", "v1 and v2 years"), plusYears),
        moved("AddWorkdays", QT_TRANSLATE_NOOP("Calculate", "v1 and v2 days from Monday to Friday"),
              plusWorkdays),
    };
}

CalculationOperations CalculateOperations::betweenDates()
{
    return {
        between("DaysBetween",
                QT_TRANSLATE_NOOP(
                    "Calculate",
                    "the days from v1 to v2; negative when v2 is earlier, as in all of these"),
                [](QDate a, QDate b) { return a.daysTo(b); }),
        between("WeeksBetween", QT_TRANSLATE_NOOP("Calculate", "the whole weeks from v1 to v2"),
                [](QDate a, QDate b) { return a.daysTo(b) / 7; }),
        between("MonthsBetween", QT_TRANSLATE_NOOP("Calculate", "the whole months from v1 to v2"),
                monthsBetween),
        between("YearsBetween", QT_TRANSLATE_NOOP("Calculate", "the whole years from v1 to v2"),
                yearsBetween),
        between("WorkdaysBetween",
                QT_TRANSLATE_NOOP("Calculate", "the days from Monday to Friday after v1 up to v2"),
                workdaysBetween),
    };
}

CalculationOperations CalculateOperations::times()
{
    return {
        ofTime("Hour", QT_TRANSLATE_NOOP("Calculate", "the hour of a time of day"),
               [](QTime a) { return qint64(a.hour()); }),
        ofTime("Minute", QT_TRANSLATE_NOOP("Calculate", "the minute"),
               [](QTime a) { return qint64(a.minute()); }),
        ofTime("Second", QT_TRANSLATE_NOOP("Calculate", "the second"),
               [](QTime a) { return qint64(a.second()); }),
        ofTime("TimeToSeconds", QT_TRANSLATE_NOOP("Calculate", "the seconds since midnight"),
               secondsOf),
        {"SecondsToTime",
         QT_TRANSLATE_NOOP("Calculate", "the time of day so many seconds after midnight"),
         Takes::Number, Takes::Nothing,
         [](const Operand &a, const Operand &) {
             const bool isInDay = a.number >= 0 && a.number < secondsPerDay;
             return isInDay ? Result(QTime::fromMSecsSinceStartOfDay(int(a.number) * 1000)
                                         .toString(QStringLiteral("hh:mm:ss")))
                            : Result();
         }},
        {"SecondsBetween",
         QT_TRANSLATE_NOOP("Calculate", "the seconds from the time v1 to the time v2"), Takes::Time,
         Takes::Time,
         [](const Operand &a, const Operand &b) {
             return Result(secondsOf(b.time) - secondsOf(a.time));
         }},
    };
}
