#pragma once

#include "cellnumberformat.h"
#include "dataset.h"

#include <QString>
#include <QStringList>
#include <string>
#include <unordered_map>
#include <vector>

/// How the cells of a spreadsheet column are written; the numbers are stored in documents.
enum class CellFormat : qint32 {
    Automatic = 0,
    Boolean = 1,
    Date = 2,
    General = 3,
    Number = 4,
    Text = 5,
    Formula = 6,
    Time = 7,
    Hyperlink = 8
};

QString cellFormatLabel(CellFormat format);
/// The format with that label or stored number; Automatic for any other text.
CellFormat cellFormatOf(const QString &text);

/// An address as it can stand in a workbook, with what no address may hold percent-encoded; empty
/// for what spreadsheet programs would not take for one.
std::string linkTarget(std::string_view text);

/// The number formats that a sheet uses, by number.
class NumberFormats
{
public:
    static constexpr quint16 general = 0;
    static constexpr quint16 text = 1;
    static constexpr quint16 wholeNumber = 2;

    NumberFormats();
    quint16 idOf(const std::string &code);
    const std::vector<std::string> &codes() const { return m_codes; }

private:
    std::vector<std::string> m_codes;
    std::unordered_map<std::string, quint16> m_ids;
};

/// What a value becomes in a cell.
struct CellValue
{
    enum class Kind : quint8 { Empty, Text, Number, Boolean, Formula, Link, TooLong };
    Kind kind = Kind::Empty;
    /// The value is not of the kind that its column's format asks for.
    bool unfit = false;
    quint16 numberFormat = NumberFormats::general;
    /// Of a Number, as the cell keeps it; 1 or 0 of a Boolean.
    double number = 0;
};

/// Decides what the values of one column become. Automatic makes numbers, dates and booleans only
/// of what is read back as the same text.
class CellColumn
{
public:
    /// Characters (UTF-16 units) that a cell can hold.
    static constexpr size_t mostCharacters = 32767;

    /// `dateFormats`: patterns in QDate's syntax. The formats must outlive this object. What values
    /// become is remembered when `mostRemembered` is enough for all that the column has.
    CellColumn(CellFormat format, const ColumnReader &reader, const QStringList &dateFormats,
               DateSystem dateSystem, size_t mostRemembered, NumberFormats *formats);

    CellValue value(int row);
    std::string_view utf8(int row) const { return m_reader.utf8(row); }

private:
    CellValue make(std::string_view text);
    bool readAutomatic(std::string_view text, CellValue *value);
    bool readBoolean(std::string_view text, bool lenient, CellValue *value);
    bool readPlainNumber(std::string_view text, CellValue *value);
    bool readNumber(std::string_view text, CellValue *value);
    bool readDate(std::string_view text, bool lenient, CellValue *value);
    bool readTime(std::string_view text, CellValue *value);
    void setDate(const QDate &date, int millisecond, const std::string &code, CellValue *value);
    quint16 decimalFormat(int decimals, bool grouped);

    CellFormat m_format;
    ColumnReader m_reader;
    QStringList m_dateFormats;
    /// Orders of day, month and year with four digits that the patterns allow.
    std::vector<ValueLayout> m_dateLayouts;
    DateSystem m_dateSystem;
    NumberFormats *m_formats;
    char m_decimalPoint = '.';
    char m_groupSeparator = '\0';
    /// By decimals, and by decimals of grouped numbers; 0 while not in use.
    std::array<std::array<quint16, 16>, 2> m_decimalFormats{};
    /// By code; empty when remembering does not pay.
    std::vector<CellValue> m_known;
    std::vector<bool> m_isKnown;
    std::string m_text;
};
