#include "valuekinds.h"

#include "valueinterpretation.h"

#include <QCoreApplication>
#include <numeric>

QString valueKindLabel(ValueKind kind)
{
    static const std::array<const char *, valueKindCount> labels{
        QT_TRANSLATE_NOOP("ValueKind", "Integer"), QT_TRANSLATE_NOOP("ValueKind", "Real"),
        QT_TRANSLATE_NOOP("ValueKind", "Date"),    QT_TRANSLATE_NOOP("ValueKind", "Boolean"),
        QT_TRANSLATE_NOOP("ValueKind", "Text"),    QT_TRANSLATE_NOOP("ValueKind", "Empty")};
    return QCoreApplication::translate("ValueKind", labels[size_t(kind)]);
}

qint64 KindCounts::total() const
{
    return std::accumulate(counts.begin(), counts.end(), qint64(0));
}

ValueKinds::ValueKinds(const QStringList &datePatterns)
{
    for (const QString &pattern : datePatterns) {
        m_dates.emplace_back(pattern);
    }
}

ValueKind ValueKinds::kind(std::string_view value, double *place) const
{
    if (value.empty()) {
        return ValueKind::Empty;
    }
    for (const DatePattern &pattern : m_dates) {
        const QDate date = pattern.read(value);
        if (date.isValid()) {
            if (place) {
                *place = double(date.toJulianDay());
            }
            return ValueKind::Date;
        }
    }
    bool ok = false;
    const double number = m_numbers.toReal(value, false, true, &ok);
    if (ok) {
        if (place) {
            *place = number;
        }
        m_numbers.toInteger64(value, false, true, &ok);
        return ok ? ValueKind::Integer : ValueKind::Real;
    }
    toBoolean(value, true, false, &ok);
    return ok ? ValueKind::Boolean : ValueKind::Text;
}
