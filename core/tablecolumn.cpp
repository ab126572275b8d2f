#include "tablecolumn.h"

#include <cstring>

namespace {

constexpr int smallestChunk = 16;

} // namespace

int ColumnCodes::capacityOf(size_t chunk) const
{
    return chunk + 1 == m_chunks.size() ? m_lastCapacity : chunkSize;
}

void ColumnCodes::growLast()
{
    const int at = m_size & (chunkSize - 1);
    if (at == 0) {
        m_lastCapacity = m_chunks.empty() ? smallestChunk : chunkSize;
        m_chunks.push_back(Chunk(new quint32[size_t(m_lastCapacity)]));
        return;
    }
    const int capacity = m_lastCapacity * 2;
    Chunk larger(new quint32[size_t(capacity)]);
    memcpy(larger.get(), m_chunks.back().get(), size_t(at) * sizeof(quint32));
    m_chunks.back() = std::move(larger);
    m_lastCapacity = capacity;
}

void ColumnCodes::detachLast()
{
    if (!m_chunks.empty() && m_chunks.back().use_count() > 1) {
        Chunk own(new quint32[size_t(m_lastCapacity)]);
        memcpy(own.get(), m_chunks.back().get(),
               size_t(m_size - int(m_chunks.size() - 1) * chunkSize) * sizeof(quint32));
        m_chunks.back() = std::move(own);
    }
}

void ColumnCodes::padTo(int size)
{
    while (m_size < size) {
        append(ValuePool::emptyCode);
    }
}

void ColumnCodes::set(int row, Code code)
{
    if (row >= m_size) {
        if (code == ValuePool::emptyCode) {
            return;
        }
        detachLast();
        padTo(row);
        append(code);
        return;
    }
    const size_t index = size_t(row) >> chunkBits;
    Chunk &chunk = m_chunks[index];
    if (chunk.use_count() > 1) {
        const size_t used = qMin(size_t(m_size) - index * chunkSize, size_t(chunkSize));
        Chunk own(new quint32[size_t(capacityOf(index))]);
        memcpy(own.get(), chunk.get(), used * sizeof(quint32));
        chunk = std::move(own);
    }
    chunk.get()[row & (chunkSize - 1)] = code;
}

void ColumnCodes::truncate(int size)
{
    if (size >= m_size) {
        return;
    }
    m_size = size;
    const size_t chunks = (size_t(size) + chunkSize - 1) >> chunkBits;
    if (chunks < m_chunks.size()) {
        m_chunks.resize(chunks);
        m_lastCapacity = chunks == 0 ? 0 : chunkSize;
    }
}

size_t ColumnCodes::memoryUsed() const
{
    size_t bytes = sizeof(*this);
    for (size_t i = 0; i < m_chunks.size(); ++i) {
        bytes += size_t(capacityOf(i)) * sizeof(quint32);
    }
    return bytes;
}

ColumnReader TableColumn::reader() const
{
    ColumnReader reader;
    reader.m_map = map ? map->data() : nullptr;
    reader.m_pool = pool.get();
    if (codes) {
        reader.m_chunks = codes->chunks();
        reader.m_size = codes->size();
    }
    return reader;
}

ValuePool *TableColumn::writablePool()
{
    if (!pool) {
        pool = std::make_shared<ValuePool>();
    }
    return pool.get();
}

ColumnCodes *TableColumn::writableCodes(int rowCount)
{
    if (map) {
        const ColumnReader source = reader();
        auto own = std::make_shared<ColumnCodes>();
        for (int row = 0; row < rowCount; ++row) {
            own->append(source.code(row));
        }
        codes = std::move(own);
        map.reset();
    } else if (!codes) {
        codes = std::make_shared<ColumnCodes>();
    } else if (codes.use_count() > 1) {
        codes = std::make_shared<ColumnCodes>(*codes);
    }
    return codes.get();
}
