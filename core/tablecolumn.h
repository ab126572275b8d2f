#pragma once

#include "dataset.h"

#include <memory>
#include <vector>

/// The codes of a column's cells, in chunks that copies share until one of them is written to. Rows
/// at or beyond size() read as empty.
class ColumnCodes
{
public:
    using Code = ValuePool::Code;
    using Chunk = std::shared_ptr<quint32[]>;
    static constexpr int chunkBits = 16;
    static constexpr int chunkSize = 1 << chunkBits;

    int size() const { return m_size; }
    const Chunk *chunks() const { return m_chunks.data(); }

    void append(Code code)
    {
        const int at = m_size & (chunkSize - 1);
        if (at == 0 || at == m_lastCapacity) {
            growLast();
        }
        m_chunks.back().get()[at] = code;
        ++m_size;
    }
    /// Appends empty cells up to a size.
    void padTo(int size);
    void set(int row, Code code);
    void truncate(int size);
    /// Must be called on a copy before it is written to.
    void detachLast();
    size_t memoryUsed() const;

private:
    void growLast();
    int capacityOf(size_t chunk) const;

    std::vector<Chunk> m_chunks;
    int m_size = 0;
    int m_lastCapacity = 0;
};

/// A column of a table: codes, the pool that they stand for, and, for a table made by taking rows
/// of another, the source row of each row. Every part may be shared with other columns.
struct TableColumn
{
    std::shared_ptr<ColumnCodes> codes;
    std::shared_ptr<ValuePool> pool;
    std::shared_ptr<const RowSelection> map;

    ColumnReader reader() const;
    ValuePool *writablePool();
    /// Codes of this column alone, in row order.
    ColumnCodes *writableCodes(int rowCount);
};
