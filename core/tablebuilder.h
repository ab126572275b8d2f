#pragma once

#include "dataset.h"

#include <string_view>
#include <vector>

/// Builds a table row by row from UTF-8 values: what readers use. The table is as wide as its
/// longest row; shorter rows read as empty at the right. A column whose first values nearly all
/// differ is no longer pooled, which costs time and memory and would gain nothing.
class TableBuilder
{
public:
    TableBuilder();
    ~TableBuilder();
    TableBuilder(const TableBuilder &) = delete;
    TableBuilder &operator=(const TableBuilder &) = delete;

    /// Appends a row. The bytes must be well-formed (see Utf8) and are copied.
    void appendRow(const std::string_view *values, int count);

    int rowCount() const { return m_rows; }
    int columnCount() const { return int(m_columns.size()); }

    /// The finished table, without a header; the builder is empty afterwards.
    Dataset take();

private:
    struct Column;
    std::vector<std::unique_ptr<Column>> m_columns;
    int m_rows = 0;
};
