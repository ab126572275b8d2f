#include "columnorder.h"

#include "dateformats.h"
#include "distinctvalues.h"
#include "textranks.h"
#include "transformsettings.h"

bool ColumnOrder::read(const Dataset &table, ColIndex column, bool caseSensitive,
                       const Progress &progress)
{
    DistinctValues cells;
    if (!cells.read(table, column, progress)) {
        return false;
    }
    const size_t count = cells.values.size();
    m_places.assign(count, 0);
    m_isPlaced.assign(count, false);
    m_numberOfRow = std::move(cells.ofRow);
    m_kind = Kind::Texts;
    m_ignored = 0;
    const DetectedDateFormat dates =
        detectDateFormat(table, column, TransformSettings::current().dateFormats);
    if (!dates.pattern.isEmpty() && dates.readsAll) {
        m_kind = Kind::Dates;
        const DatePattern pattern(dates.pattern);
        for (size_t i = 0; i < count; ++i) {
            const QDate date = pattern.read(cells.values[i]);
            m_isPlaced[i] = date.isValid();
            m_places[i] = double(date.toJulianDay());
        }
    } else {
        const NumberReader reader;
        for (size_t i = 0; i < count; ++i) {
            m_isPlaced[i] = ColumnNumbers::read(cells.values[i], reader, &m_places[i]) ==
                            ColumnNumbers::Kind::Number;
        }
    }
    qint64 placed = 0;
    for (const quint32 number : m_numberOfRow) {
        placed += m_isPlaced[number] ? 1 : 0;
        m_ignored += m_isPlaced[number] || cells.values[number].empty() ? 0 : 1;
    }
    if (m_kind == Kind::Dates) {
        return true;
    }
    if (placed > 0 && placed >= m_ignored) {
        m_kind = Kind::Numbers;
        return true;
    }
    m_ignored = 0;
    std::vector<quint32> ranks;
    TextOrder order;
    order.caseSensitive = caseSensitive;
    if (!rankTexts(cells.values, order, progress, &ranks)) {
        return false;
    }
    for (size_t i = 0; i < count; ++i) {
        m_isPlaced[i] = !cells.values[i].empty();
        m_places[i] = ranks[i];
    }
    return true;
}
