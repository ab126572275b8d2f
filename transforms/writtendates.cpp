#include "writtendates.h"

#include "dateformats.h"

namespace {

/// With two digits for days and months.
QString paddedPattern(const QString &pattern)
{
    QString result;
    bool isQuoted = false;
    for (int i = 0; i < pattern.size(); ++i) {
        const QChar c = pattern[i];
        isQuoted = isQuoted != (c == QLatin1Char('\''));
        const bool isField = !isQuoted && (c == QLatin1Char('d') || c == QLatin1Char('M'));
        const bool isAlone =
            (i == 0 || pattern[i - 1] != c) && (i + 1 == pattern.size() || pattern[i + 1] != c);
        result += c;
        if (isField && isAlone) {
            result += c;
        }
    }
    return result;
}

} // namespace

QString writtenDateFormat(const Dataset &table, ColIndex column, const QString &pattern)
{
    constexpr int mostSamples = 25;
    if (pattern.isEmpty()) {
        return QStringLiteral("yyyy-MM-dd");
    }
    const DatePattern read(pattern);
    const DatePattern padded(paddedPattern(pattern));
    const ColumnReader cells = table.columnReader(column);
    int samples = 0;
    for (int row = 0; row < table.rowCount() && samples < mostSamples; ++row) {
        const std::string_view cell = cells.utf8(row);
        samples += cell.empty() ? 0 : 1;
        if (read.read(cell).isValid() && !padded.read(cell).isValid()) {
            return pattern;
        }
    }
    return padded.pattern();
}
