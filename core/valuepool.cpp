#include "valuepool.h"

#include "utf8.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace {

bool poolingEnabled = true;

constexpr size_t largestArenaBlock = size_t(1) << 20;

quint32 hashOf(std::string_view utf8)
{
    return quint32(XXH3_64bits(utf8.data(), utf8.size()) >> 32);
}

} // namespace

ValuePool::ValuePool()
{
    m_memory = sizeof(*this);
    store(std::string_view());
}

ValuePool::~ValuePool() = default;

void ValuePool::setPoolingEnabled(bool enabled)
{
    poolingEnabled = enabled;
}

bool ValuePool::isPoolingEnabled()
{
    return poolingEnabled;
}

const QString &ValuePool::emptyText()
{
    static const QString empty = QString::fromLatin1("");
    return empty;
}

QString ValuePool::text(Code code) const
{
    if (code == emptyCode) {
        return emptyText();
    }
    if (!m_lookups || !poolingEnabled) {
        return Utf8::decoded(utf8(code));
    }
    const uint block = blockOf(code);
    std::unique_ptr<QString[]> &texts = m_texts[block];
    if (!texts) {
        texts = std::make_unique<QString[]>(firstBlockSize << block);
    }
    QString &text = texts[code - blockStart(block)];
    if (text.isNull()) {
        text = Utf8::decoded(utf8(code));
    }
    return text;
}

char *ValuePool::take(size_t bytes)
{
    if (bytes > m_arenaLeft) {
        const size_t size = qMax(bytes, m_arenaNext);
        m_arena.push_back(std::unique_ptr<char[]>(new char[size]));
        m_memory += size;
        if (size > largestArenaBlock) { // a block of its own: go on filling the present one
            return m_arena.back().get();
        }
        m_arenaAt = m_arena.back().get();
        m_arenaLeft = size;
        m_arenaNext = qMin(m_arenaNext * 2, largestArenaBlock);
    }
    char *const at = m_arenaAt;
    m_arenaAt += bytes;
    m_arenaLeft -= bytes;
    return at;
}

ValuePool::Code ValuePool::store(std::string_view utf8)
{
    const bool isLong = utf8.size() >= longLength;
    char *bytes = take(utf8.size() + (isLong ? sizeof(quint64) : 0));
    if (isLong) {
        const quint64 length = utf8.size();
        memcpy(bytes, &length, sizeof length);
        bytes += sizeof length;
    }
    if (!utf8.empty()) {
        memcpy(bytes, utf8.data(), utf8.size());
    }

    const Code code = m_count;
    const uint block = blockOf(code);
    std::unique_ptr<Slot[]> &slots = m_blocks[block];
    if (!slots) {
        slots = std::unique_ptr<Slot[]>(new Slot[firstBlockSize << block]);
        m_memory += sizeof(Slot) * (firstBlockSize << block);
    }
    const quint64 address = quint64(reinterpret_cast<quintptr>(bytes));
    Q_ASSERT((address & ~addressMask) == 0);
    slots[code - blockStart(block)] = address | (isLong ? longLength : quint64(utf8.size())) << 48;
    ++m_count;
    return code;
}

ValuePool::Code ValuePool::lookUp(std::string_view utf8, quint32 hash) const
{
    if (m_hash.empty()) {
        return emptyCode;
    }
    const size_t mask = m_hash.size() - 1;
    for (size_t i = hash & mask;; i = (i + 1) & mask) {
        const HashEntry &entry = m_hash[i];
        if (entry.code == emptyCode) {
            return emptyCode;
        }
        if (entry.hash == hash && this->utf8(entry.code) == utf8) {
            return entry.code;
        }
    }
}

void ValuePool::growHash()
{
    const size_t size = m_hash.empty() ? 16 : m_hash.size() * 2;
    m_memory += (size - m_hash.size()) * sizeof(HashEntry);
    std::vector<HashEntry> old(size, HashEntry{0, emptyCode});
    old.swap(m_hash);
    for (const HashEntry &entry : old) {
        if (entry.code != emptyCode) {
            placeHash(entry);
        }
    }
}

void ValuePool::placeHash(HashEntry entry)
{
    const size_t mask = m_hash.size() - 1;
    size_t i = entry.hash & mask;
    while (m_hash[i].code != emptyCode) {
        i = (i + 1) & mask;
    }
    m_hash[i] = entry;
}

void ValuePool::insertHash(quint32 hash, Code code)
{
    if (size_t(m_hashUsed) * 2 >= m_hash.size()) {
        growHash();
    }
    placeHash({hash, code});
    ++m_hashUsed;
}

ValuePool::Code ValuePool::add(std::string_view utf8)
{
    if (utf8.empty()) {
        return emptyCode;
    }
    if (!poolingEnabled) {
        return store(utf8);
    }
    const quint32 hash = hashOf(utf8);
    const Code known = lookUp(utf8, hash);
    if (known != emptyCode) {
        return known;
    }
    const Code code = store(utf8);
    insertHash(hash, code);
    return code;
}

ValuePool::Code ValuePool::add(const QString &text)
{
    return add(std::string_view(Utf8::encoded(text)));
}

ValuePool::Code ValuePool::append(std::string_view utf8)
{
    return utf8.empty() ? emptyCode : store(utf8);
}

void ValuePool::stopLookups()
{
    m_memory -= m_hash.size() * sizeof(HashEntry);
    std::vector<HashEntry>().swap(m_hash);
    m_hashUsed = 0;
    m_lookups = false;
}
