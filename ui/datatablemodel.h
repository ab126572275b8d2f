#pragma once

#include "dataset.h"
#include "idlework.h"
#include "valuekinds.h"

#include <QObject>
#include <QStringList>
#include <vector>

/// A cell as shown: `row` counts in the order of the view.
struct CellPlace
{
    int row = -1;
    int column = -1;

    bool isValid() const { return row >= 0 && column >= 0; }
    friend bool operator==(CellPlace a, CellPlace b)
    {
        return a.row == b.row && a.column == b.column;
    }
    friend bool operator!=(CellPlace a, CellPlace b) { return !(a == b); }
};

/// A rectangle of cells as shown, all borders included. Empty when bottom lies above top.
struct CellRange
{
    int top = 0;
    int left = 0;
    int bottom = -1;
    int right = -1;

    bool isEmpty() const { return bottom < top || right < left; }
    bool contains(CellPlace place) const
    {
        return place.row >= top && place.row <= bottom && place.column >= left &&
               place.column <= right;
    }
    qint64 cellCount() const
    {
        return isEmpty() ? 0 : (qint64(bottom) - top + 1) * (right - left + 1);
    }
};

/// The table that is shown, shared with the item that made it, and the order in which its rows are
/// shown. What kinds of values the columns hold is read from a sample first, then exactly in idle
/// time.
class DataTableModel : public QObject
{
    Q_OBJECT

public:
    explicit DataTableModel(QObject *parent = nullptr);

    /// `input` is the table before the change; with another shape it is not compared.
    void setData(const Dataset &data, const Dataset &input);
    void setDateFormats(const QStringList &patterns);
    const QStringList &dateFormats() const { return m_dateFormats; }

    const Dataset &data() const { return m_data; }
    int rowCount() const { return m_data.rowCount(); }
    int columnCount() const { return m_data.columnCount().value(); }
    QString columnName(int column) const { return m_data.columnName(ColIndex(column)); }

    /// The row of the data that is shown at a place.
    int dataRow(int row) const { return m_order.empty() ? row : m_order[size_t(row)]; }
    const ColumnReader &reader(int column) const { return m_readers[size_t(column)]; }
    std::string_view value(int row, int column) const { return reader(column).utf8(dataRow(row)); }
    /// Whether there is a table to compare with.
    bool hasInput() const { return m_hasInput; }
    bool isChanged(int row, int column) const;
    QString valueBefore(int row, int column) const;

    /// Data rows spread over the table: all of a small one, few of one with many columns.
    const std::vector<int> &sampleRows() const { return m_sampleRows; }
    /// Whether most values of the sample are numbers.
    bool isNumeric(int column) const { return m_isNumeric[size_t(column)]; }
    const KindCounts &kinds(int column) const { return m_kinds[size_t(column)]; }

    /// For viewing only; the order changes when it is worked out.
    void sort(int column, Qt::SortOrder order);
    void endSort();
    /// -1 while the rows are shown as in the data; set already while the order is worked out.
    int sortColumn() const { return m_sortColumn; }
    Qt::SortOrder sortOrder() const { return m_sortOrder; }
    bool isSorting() const { return m_sorting.isRunning(); }

Q_SIGNALS:
    void dataReplaced();
    /// The order of rows, or what is known of it.
    void sortChanged();
    void kindsChanged();

private:
    class ExactKinds;

    void takeSample();
    void readSample();
    void countKinds();

    Dataset m_data;
    Dataset m_input;
    bool m_hasInput = false;
    QStringList m_dateFormats;
    std::vector<ColumnReader> m_readers;
    std::vector<int> m_sampleRows;
    std::vector<KindCounts> m_kinds;
    std::vector<bool> m_isNumeric;
    RowSelection m_order;
    int m_sortColumn = -1;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    IdleWork m_sorting;
    IdleWork m_counting;
};
