#include "inplacetransform.h"

#include "texts.h"

std::function<bool(int row)> InPlaceTransform::reporter(const Dataset &input, int column,
                                                        int columnCount)
{
    const double rows = input.rowCount();
    return [this, rows, column, columnCount](int row) {
        return row % progressInterval != 0 || report((column + row / rows) / columnCount);
    };
}

Dataset InPlaceTransform::mapCells(const Dataset &input, const QList<ColIndex> &columns,
                                   const CellFunction &changed)
{
    return mapColumns(input, columns, [&changed](ColIndex) { return changed; });
}

Dataset InPlaceTransform::mapColumns(const Dataset &input, const QList<ColIndex> &columns,
                                     const std::function<CellFunction(ColIndex)> &functionFor)
{
    Dataset output = input;
    CellChanges sum;
    for (int i = 0; i < columns.size(); ++i) {
        const CellChanges changes = output.mapColumn(columns[i], functionFor(columns[i]),
                                                     reporter(input, i, columns.size()));
        if (isStopped()) {
            return {};
        }
        sum.changed += changes.changed;
        sum.unchanged += changes.unchanged;
    }
    setStatus(Texts::changed(sum.changed, sum.unchanged));
    return sum.changed > 0 ? output : input;
}

Dataset InPlaceTransform::mapRows(const Dataset &input, const QList<ColIndex> &columns,
                                  const std::function<QString(int row, const QString &)> &changed)
{
    Dataset output = input;
    CellChanges sum;
    for (int i = 0; i < columns.size(); ++i) {
        const ColumnReader cells = input.columnReader(columns[i]);
        const auto goOn = reporter(input, i, columns.size());
        for (int row = 0; row < input.rowCount(); ++row) {
            if (!goOn(row)) {
                return {};
            }
            const QString before = cells.text(row);
            const QString after = changed(row, before);
            if (after == before) {
                ++sum.unchanged;
                continue;
            }
            output.setCell(RowIndex(row), columns[i], after);
            ++sum.changed;
        }
    }
    setStatus(Texts::changed(sum.changed, sum.unchanged));
    return output;
}
