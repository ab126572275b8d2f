#include "distinctvalues.h"

#include <limits>

bool DistinctValues::read(const Dataset &table, ColIndex column, const Progress &progress)
{
    constexpr quint32 unseen = std::numeric_limits<quint32>::max();
    const ColumnReader cells = table.columnReader(column);
    const int rowCount = table.rowCount();
    std::vector<quint32> numbers(cells.codeCount(), unseen);
    values.clear();
    ofRow.resize(size_t(rowCount));
    for (int row = 0; row < rowCount; ++row) {
        if (row % progressInterval == 0 && !reportProgress(progress, double(row) / rowCount)) {
            return false;
        }
        const ColumnReader::Code code = cells.code(row);
        quint32 &number = numbers[code];
        if (number == unseen) {
            number = quint32(values.size());
            values.push_back(cells.utf8OfCode(code));
        }
        ofRow[size_t(row)] = number;
    }
    return true;
}

Progress progressBetween(const Progress &progress, double from, double to)
{
    if (!progress) {
        return {};
    }
    return
        [&progress, from, to](double fraction) { return progress(from + fraction * (to - from)); };
}
