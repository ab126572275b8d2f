#include "datatablemodel.h"

#include "utf8.h"
#include "viewsort.h"

#include <limits>

namespace {

constexpr int largestSample = 200;
constexpr int cellsSampled = 20000;
constexpr int rowsPerStep = 512;

} // namespace

/// Counts the kinds of one column after the other, in slices.
class DataTableModel::ExactKinds
{
public:
    explicit ExactKinds(DataTableModel *model)
        : m_model(model)
        , m_kinds(model->dateFormats())
    {
    }

    bool step()
    {
        if (m_column == m_model->columnCount()) {
            return false;
        }
        const ColumnReader &reader = m_model->reader(m_column);
        if (m_row == 0) {
            m_kindOfCode.assign(reader.isPooled() ? reader.codeCount() : 0, unknown);
        }
        const int end = std::min(m_model->rowCount() - m_row, rowsPerStep) + m_row;
        for (; m_row < end; ++m_row) {
            m_counts.add(kindOf(reader, reader.code(m_row)));
        }
        if (m_row == m_model->rowCount()) {
            m_counts.isExact = true;
            m_model->m_kinds[size_t(m_column)] = m_counts;
            Q_EMIT m_model->kindsChanged();
            m_counts = KindCounts();
            m_row = 0;
            ++m_column;
        }
        return true;
    }

private:
    static constexpr quint8 unknown = std::numeric_limits<quint8>::max();

    ValueKind kindOf(const ColumnReader &reader, quint32 code)
    {
        if (m_kindOfCode.empty()) {
            return m_kinds.kind(reader.utf8OfCode(code));
        }
        quint8 &known = m_kindOfCode[code];
        if (known == unknown) {
            known = quint8(m_kinds.kind(reader.utf8OfCode(code)));
        }
        return ValueKind(known);
    }

    DataTableModel *m_model;
    ValueKinds m_kinds;
    std::vector<quint8> m_kindOfCode;
    KindCounts m_counts;
    int m_column = 0;
    int m_row = 0;
};

DataTableModel::DataTableModel(QObject *parent)
    : QObject(parent)
{
    connect(&m_sorting, &IdleWork::ended, this, &DataTableModel::sortChanged);
}

void DataTableModel::setData(const Dataset &data, const Dataset &input)
{
    const bool sameColumns = data.columnNames() == m_data.columnNames();
    m_sorting.stop();
    m_order = {};
    m_data = data;
    m_hasInput = input.rowCount() == data.rowCount() && input.columnCount() == data.columnCount();
    m_input = m_hasInput ? input : Dataset();
    m_readers.clear();
    for (ColIndex column(0); column < m_data.columnCount(); ++column) {
        m_readers.push_back(m_data.columnReader(column));
    }
    takeSample();
    readSample();
    const int sorted = sameColumns ? m_sortColumn : -1;
    m_sortColumn = -1;
    Q_EMIT dataReplaced();
    if (sorted >= 0) {
        sort(sorted, m_sortOrder);
    } else {
        Q_EMIT sortChanged();
    }
    countKinds();
}

void DataTableModel::setDateFormats(const QStringList &patterns)
{
    if (patterns == m_dateFormats) {
        return;
    }
    m_dateFormats = patterns;
    readSample();
    countKinds();
    Q_EMIT kindsChanged();
    if (m_sortColumn >= 0) {
        sort(m_sortColumn, m_sortOrder);
    }
}

bool DataTableModel::isChanged(int row, int column) const
{
    const int at = dataRow(row);
    return m_hasInput && reader(column).utf8(at) != m_input.utf8(RowIndex(at), ColIndex(column));
}

QString DataTableModel::valueBefore(int row, int column) const
{
    return Utf8::decoded(m_input.utf8(RowIndex(dataRow(row)), ColIndex(column)));
}

void DataTableModel::takeSample()
{
    const int rows = rowCount();
    const int wanted = qBound(4, cellsSampled / qMax(1, columnCount()), largestSample);
    const int count = qMin(rows, wanted);
    m_sampleRows.clear();
    for (int i = 0; i < count; ++i) {
        m_sampleRows.push_back(int(qint64(i) * rows / count));
    }
}

void DataTableModel::readSample()
{
    const ValueKinds kinds(m_dateFormats);
    m_kinds.assign(size_t(columnCount()), KindCounts());
    m_isNumeric.assign(size_t(columnCount()), false);
    for (size_t i = 0; i < m_kinds.size(); ++i) {
        for (const int row : m_sampleRows) {
            m_kinds[i].add(kinds.kind(m_readers[i].utf8(row)));
        }
        const qint64 filled = m_kinds[i].total() - m_kinds[i].of(ValueKind::Empty);
        m_isNumeric[i] = m_kinds[i].numbers() * 2 > filled;
    }
}

void DataTableModel::countKinds()
{
    const auto work = std::make_shared<ExactKinds>(this);
    m_counting.start([work] { return work->step(); });
}

void DataTableModel::sort(int column, Qt::SortOrder order)
{
    m_sortColumn = column;
    m_sortOrder = order;
    const auto work = std::make_shared<ViewSort>(m_data, ColIndex(column),
                                                 order == Qt::AscendingOrder, m_dateFormats);
    m_sorting.start([this, work] {
        if (work->step()) {
            return true;
        }
        m_order = work->takeOrder();
        return false;
    });
    Q_EMIT sortChanged();
}

void DataTableModel::endSort()
{
    m_sorting.stop();
    m_sortColumn = -1;
    m_order = {};
    Q_EMIT sortChanged();
}
