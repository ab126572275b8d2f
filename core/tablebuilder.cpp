#include "tablebuilder.h"

#include "tabledata.h"

namespace {

// A column is judged after so many non-empty values: fewer make repeating columns of many values
// look distinct.
constexpr quint32 judgedValues = 65536;
constexpr double nearlyAllDistinct = 0.8;

} // namespace

struct TableBuilder::Column
{
    std::shared_ptr<ColumnCodes> codes = std::make_shared<ColumnCodes>();
    std::shared_ptr<ValuePool> pool = std::make_shared<ValuePool>();
    quint32 values = 0;
    bool pooled = true;

    void append(int row, std::string_view value)
    {
        if (value.empty()) {
            return;
        }
        if (codes->size() != row) {
            codes->padTo(row);
        }
        codes->append(pooled ? add(value) : pool->append(value));
    }

    ValuePool::Code add(std::string_view value)
    {
        if (++values == judgedValues && pool->count() > nearlyAllDistinct * judgedValues) {
            pooled = false;
            pool->stopLookups();
            return pool->append(value);
        }
        return pool->add(value);
    }
};

TableBuilder::TableBuilder() = default;
TableBuilder::~TableBuilder() = default;

void TableBuilder::appendRow(const std::string_view *values, int count)
{
    while (count > columnCount()) {
        m_columns.push_back(std::make_unique<Column>());
    }
    for (int i = 0; i < count; ++i) {
        m_columns[size_t(i)]->append(m_rows, values[i]);
    }
    ++m_rows;
}

Dataset TableBuilder::take()
{
    Dataset dataset;
    for (const std::unique_ptr<Column> &column : m_columns) {
        dataset.d->columns.push_back({column->codes, column->pool, nullptr});
    }
    dataset.d->rows = m_rows;
    m_columns.clear();
    m_rows = 0;
    return dataset;
}
