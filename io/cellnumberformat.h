#pragma once

#include <string>
#include <string_view>

/// The two ways in which workbooks count days: from the last day of 1899, with a 29 February 1900
/// that never was, or from the first day of 1904.
enum class DateSystem { From1900, From1904 };

/// What a cell's number format makes of its number. Neither date nor time: it stays a number.
struct CellNumberFormat
{
    bool date = false;
    bool time = false;
    /// A time that counts hours, minutes or seconds beyond a day, such as [h]:mm.
    bool elapsed = false;
    /// The format shows seconds.
    bool seconds = false;

    bool isNumber() const { return !date && !time; }
};

/// The format of a number that workbooks use without defining it (14 is the short date).
CellNumberFormat builtInNumberFormat(int id);
/// The format that a code such as "yyyy\-mm\-dd;@" describes; its first section counts.
CellNumberFormat parseNumberFormat(std::string_view code);

/// Appends a number with up to 15 significant digits, whole numbers below 2^53 in full; always
/// with "." as decimal point. What is not finite gives no text.
void appendNumber(double number, std::string *out);
/// Appends a number as its format says: yyyy-MM-dd, followed by hh:mm:ss unless it is midnight;
/// hh:mm for times whose format has no seconds, when there are none. Milliseconds follow when there
/// are some. A number that is no date of the date system is appended as a number.
void appendFormatted(double number, CellNumberFormat format, DateSystem system, std::string *out);
/// Appends the text of a number as it stands in a file. Text that is no number stays as it is.
void appendNumberText(std::string_view text, CellNumberFormat format, DateSystem system,
                      std::string *out);
/// Appends an ISO 8601 date or time, such as 2026-01-31T14:05:00Z, in the forms of
/// appendFormatted(). Other text stays as it is.
void appendIsoDate(std::string_view text, std::string *out);
