#pragma once

#include <QDate>
#include <array>
#include <string>
#include <string_view>

/// The two ways in which workbooks count days: from the last day of 1899, with a 29 February 1900
/// that never was, or from the first day of 1904.
enum class DateSystem { From1900, From1904 };

/// The exact look of a value that a workbook of ours holds as a number, date or boolean, so that it
/// is read back as the text that it was written from: "14.50", "5/6/2022", "true". It is kept in
/// the cell's number format, in a shape that other programs do not use: all sections are given,
/// and alike.
struct ValueLayout
{
    enum class Kind : quint8 { None, Decimal, Date, LowerCaseBoolean, CapitalizedBoolean };
    Kind kind = Kind::None;
    /// Of a Decimal.
    quint8 decimals = 0;
    bool grouped = false;
    /// A decimal comma, with a point between groups.
    bool comma = false;
    /// Of a Date: d, m and y in their order, the fewest digits of each (years have four), and
    /// what stands between them.
    std::array<char, 3> fields{};
    std::array<quint8, 3> digits{};
    std::array<char, 2> separators{};

    /// The number format that keeps this layout.
    std::string formatCode() const;
    /// Kind::None for a code that keeps none.
    static ValueLayout ofFormatCode(std::string_view code);

    /// Appends the number as it looks in a Decimal layout; false when that would lose digits.
    bool appendDecimal(double number, std::string *out) const;
    void appendDate(const QDate &date, std::string *out) const;
    bool operator==(const ValueLayout &other) const
    {
        return kind == other.kind && decimals == other.decimals && grouped == other.grouped &&
               comma == other.comma && fields == other.fields && digits == other.digits &&
               separators == other.separators;
    }
};

/// What a cell's number format makes of its number. Neither date nor time: it stays a number.
struct CellNumberFormat
{
    bool date = false;
    bool time = false;
    /// A time that counts hours, minutes or seconds beyond a day, such as [h]:mm.
    bool elapsed = false;
    /// The format shows seconds.
    bool seconds = false;
    ValueLayout layout;

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
/// "TRUE" or "FALSE", or as the format's layout has it.
std::string_view booleanText(bool value, const CellNumberFormat &format);
/// The number of a day in a date system; negative for days that it does not have or on which
/// programs do not agree.
qint64 daySerial(const QDate &date, DateSystem system);
/// Appends the text of a number as it stands in a file. Text that is no number stays as it is.
void appendNumberText(std::string_view text, CellNumberFormat format, DateSystem system,
                      std::string *out);
/// Appends an ISO 8601 date or time, such as 2026-01-31T14:05:00Z, in the forms of
/// appendFormatted(). Other text stays as it is.
void appendIsoDate(std::string_view text, std::string *out);
