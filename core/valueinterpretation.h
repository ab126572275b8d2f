#pragma once

#include <QDate>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <QTime>
#include <string_view>

/// The one place that decides whether a cell's text is a number, a whole number, a boolean, a date
/// or a time. White space at both ends never counts. Numbers follow the default locale. Texts come
/// as UTF-16 or as the UTF-8 of the tables, with the same answers. What cannot be read gives 0,
/// false or an invalid date.

/// A number. With `emptyIsValid` an empty text is 0; with `stripCurrency` currency symbols are
/// left out first, wherever they stand.
double toReal(QStringView text, bool emptyIsValid, bool stripCurrency, bool *ok = nullptr);
double toReal(std::string_view utf8, bool emptyIsValid, bool stripCurrency, bool *ok = nullptr);

/// A whole number; zeros after the decimal point are allowed, an exponent is not.
int toInteger(QStringView text, bool emptyIsValid, bool stripCurrency, bool *ok = nullptr);
int toInteger(std::string_view utf8, bool emptyIsValid, bool stripCurrency, bool *ok = nullptr);
qint64 toInteger64(QStringView text, bool emptyIsValid, bool stripCurrency, bool *ok = nullptr);
qint64 toInteger64(std::string_view utf8, bool emptyIsValid, bool stripCurrency,
                   bool *ok = nullptr);

/// "true" and "false" in any capitalisation; with `allowNumbers` also numbers, of which 0 is
/// false. An empty text is never a boolean; `emptyIsInvalid` only settles it early.
bool toBoolean(QStringView text, bool emptyIsInvalid, bool allowNumbers, bool *ok = nullptr);
bool toBoolean(std::string_view utf8, bool emptyIsInvalid, bool allowNumbers, bool *ok = nullptr);

/// The date that a pattern (QDate's syntax) reads. Loops over one pattern make a DatePattern.
QDate toDate(QStringView text, const QString &pattern);
QDate toDate(std::string_view utf8, const QString &pattern);
/// The date that the first matching pattern reads.
QDate toDate(QStringView text, const QStringList &patterns);
QDate toDate(std::string_view utf8, const QStringList &patterns);

/// A time of day, "h:m:s" or "h:m".
QTime toTime(QStringView text);
QTime toTime(std::string_view utf8);

/// The text without its currency symbols (Unicode category Sc).
QString removeCurrencySymbols(const QString &text);
