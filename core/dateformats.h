#pragma once

#include "indices.h"

#include <QDate>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <array>
#include <string>
#include <string_view>

class Dataset;

/// A date pattern in QDate's syntax, ready to read many texts. Patterns of one day (d, dd), one
/// month (M, MM) and one year (yy, yyyy) with separators between them are read without QDate's
/// parser, with exactly its answers.
class DatePattern
{
public:
    explicit DatePattern(const QString &pattern);

    const QString &pattern() const { return m_pattern; }

    /// Invalid when the text is not a date of this pattern. White space at both ends is ignored.
    QDate read(QStringView text) const;
    QDate read(std::string_view utf8) const;

    /// From a small store of the patterns in use; valid until the next call.
    static const DatePattern &compiled(const QString &pattern);

private:
    enum class Unit : quint8 { Day, Month, Year };
    struct Field
    {
        Unit unit = Unit::Day;
        qint8 minDigits = 0;
        qint8 maxDigits = 0;
        std::string separator; // what follows the field
    };

    bool compile();
    static bool setField(QChar letter, int letters, Field *field);
    template <class Char>
    QDate readFields(const Char *at, const Char *end) const;
    template <class Char>
    bool isUnusual(const Char *begin, const Char *end) const;
    QDate readByQt(const QString &trimmedText) const;

    QString m_pattern;
    std::array<Field, 3> m_fields;
    bool m_isSimple = false;
    int m_minLength = 0;
    int m_maxLength = 0;
};

/// The pattern that reads most of a column's dates (null when none reads any), and whether it read
/// all that were tried.
struct DetectedDateFormat
{
    QString pattern;
    bool readsAll = false;
};

/// Tries the patterns, in order of preference, on the first 25 cells of the column that are not
/// empty.
DetectedDateFormat detectDateFormat(const Dataset &dataset, ColIndex column,
                                    const QStringList &patterns);

/// The date formats that apply while the user has set none: month first in the United States, day
/// first elsewhere. One pattern a line.
const QString &defaultDateFormats(QLocale::Country country);
/// The patterns of a date format preference; those of the country when it is empty.
QStringList dateFormatList(const QString &preference, QLocale::Country country);
