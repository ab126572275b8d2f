#pragma once

#include <QLocale>
#include <QStringView>
#include <array>
#include <string_view>

/// Reads numbers with the conventions of the default locale at the time it is made. Common forms
/// are read without the locale's parser, with exactly its answers. For loops over many cells;
/// elsewhere the functions of valueinterpretation.h do. They explain the two flags.
class NumberReader
{
public:
    NumberReader();

    /// A number that cannot be read gives 0.
    double toReal(QStringView text, bool emptyIsValid, bool stripCurrency,
                  bool *ok = nullptr) const;
    double toReal(std::string_view utf8, bool emptyIsValid, bool stripCurrency,
                  bool *ok = nullptr) const;
    int toInteger(QStringView text, bool emptyIsValid, bool stripCurrency,
                  bool *ok = nullptr) const;
    int toInteger(std::string_view utf8, bool emptyIsValid, bool stripCurrency,
                  bool *ok = nullptr) const;
    qint64 toInteger64(QStringView text, bool emptyIsValid, bool stripCurrency,
                       bool *ok = nullptr) const;
    qint64 toInteger64(std::string_view utf8, bool emptyIsValid, bool stripCurrency,
                       bool *ok = nullptr) const;

    const QLocale &locale() const { return m_locale; }
    /// The reader of the default locale, made anew when that has changed.
    static const NumberReader &current();

private:
    // What an ASCII character may be in a number. A text with an Impossible one is no number.
    enum class Kind : quint8 { Other, Digit, Decimal, Group, Impossible };
    enum class Outcome { Number, NotANumber, Empty, Unsure };
    template <class Char>
    struct Scan;

    Kind kind(char c) const;
    Kind kind(char16_t c) const;
    template <class Char>
    Outcome scan(const Char *begin, const Char *end, bool stripCurrency, Scan<Char> *result) const;
    template <class Char>
    Outcome scanDigits(const Char *begin, const Char *end, Scan<Char> *result) const;
    template <class Char>
    Outcome judgeRest(const Char *at, const Char *end, bool afterDigits) const;
    template <class Char>
    bool correctlyRounded(const Scan<Char> &number, double *value) const;
    template <class Char>
    Outcome quickReal(const Char *begin, const Char *end, bool stripCurrency, double *value) const;
    template <class Char>
    Outcome quickInteger(const Char *begin, const Char *end, bool stripCurrency,
                         qint64 *value) const;
    double realByLocale(QStringView text, bool emptyIsValid, bool stripCurrency, bool *ok) const;
    qint64 integerByLocale(QStringView text, bool emptyIsValid, bool stripCurrency, bool *ok) const;

    QLocale m_locale;
    std::array<Kind, 128> m_kinds;
    bool m_quick = true;
};
