#pragma once

#include "dataset.h"
#include "upstreamitem.h"

#include <QStringList>
#include <initializer_list>

/// A table of the given rows; without names it has no header.
inline Dataset table(const QStringList &names, const QList<QStringList> &rows)
{
    Dataset result;
    const int width = rows.isEmpty() ? names.size() : qMax(names.size(), rows.first().size());
    result.setColumnCount(ColIndex(width));
    result.resize(rows.size(), width);
    for (int row = 0; row < rows.size(); ++row) {
        for (int column = 0; column < rows[row].size(); ++column) {
            result.setCell(RowIndex(row), ColIndex(column), rows[row][column]);
        }
    }
    if (!names.isEmpty()) {
        result.setHeader(names);
    }
    return result;
}

/// A table of one column.
inline Dataset columnTable(const QString &name, const QStringList &cells)
{
    QList<QStringList> rows;
    for (const QString &cell : cells) {
        rows.append({cell});
    }
    return table({name}, rows);
}

inline QStringList columnOf(const Dataset &dataset, int column)
{
    QStringList cells;
    for (RowIndex row(0); row.value() < dataset.rowCount(); ++row) {
        cells.append(dataset.cell(row, ColIndex(column)));
    }
    return cells;
}

/// An upstream item whose columns a test sets.
class FakeItem : public UpstreamItem
{
public:
    explicit FakeItem(const QStringList &columns = {}, bool hasHeader = true)
        : m_columns(columns)
        , m_hasHeader(hasHeader)
    {
    }

    void setColumns(const QStringList &columns, bool hasHeader = true)
    {
        m_columns = columns;
        m_hasHeader = hasHeader;
    }

    QString upstreamName() const override { return QStringLiteral("fake"); }
    QStringList upstreamColumns() const override { return m_columns; }
    bool upstreamColumnsKnown() const override { return !m_columns.isEmpty(); }
    bool upstreamHasHeader() const override { return m_hasHeader; }

private:
    QStringList m_columns;
    bool m_hasHeader;
};
