#pragma once

#include "dateformats.h"
#include "numberreader.h"

#include <QString>
#include <QStringList>
#include <array>
#include <string_view>
#include <vector>

/// What a cell's text is, in the order in which kinds are shown.
enum class ValueKind : quint8 { Integer, Real, Date, Boolean, Text, Empty };
constexpr int valueKindCount = 6;
/// "Integer", "Real" and so on.
QString valueKindLabel(ValueKind kind);

/// How many values of each kind there are.
struct KindCounts
{
    std::array<qint64, valueKindCount> counts{};
    /// False while only a sample has been looked at.
    bool isExact = false;

    void add(ValueKind kind, qint64 number = 1) { counts[size_t(kind)] += number; }
    qint64 of(ValueKind kind) const { return counts[size_t(kind)]; }
    qint64 numbers() const { return of(ValueKind::Integer) + of(ValueKind::Real); }
    qint64 total() const;
};

/// Tells what cells are, by the readings that transforms use: currency symbols do not keep a value
/// from being a number, and a number that a date pattern reads is a date.
class ValueKinds
{
public:
    explicit ValueKinds(const QStringList &datePatterns);

    /// `place` receives the number itself, or the day of a date.
    ValueKind kind(std::string_view value, double *place = nullptr) const;

private:
    NumberReader m_numbers;
    std::vector<DatePattern> m_dates;
};
