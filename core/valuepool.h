#pragma once

#include <QString>
#include <QtAlgorithms>
#include <array>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

/// The distinct values of one column, each stored once as UTF-8 and known by a code (a number that
/// never changes). Code 0 is the empty text in every pool. Values are only added, never removed, so
/// copies of a table share its pools: what one copy adds is invisible to the others.
class ValuePool
{
public:
    using Code = quint32;
    static constexpr Code emptyCode = 0;

    ValuePool();
    ~ValuePool();
    ValuePool(const ValuePool &) = delete;
    ValuePool &operator=(const ValuePool &) = delete;

    /// The code of a value, stored now unless it is there already. With the process-wide "Maximum
    /// speed" every non-empty value gets a code of its own.
    Code add(std::string_view utf8);
    Code add(const QString &text);
    /// Stores a value without looking whether it is there.
    Code append(std::string_view utf8);

    /// Codes run from 0 to count() - 1.
    Code count() const { return m_count; }
    std::string_view utf8(Code code) const
    {
        const Slot value = slot(code);
        // NOLINTNEXTLINE(performance-no-int-to-ptr): address and length share a word
        const char *const bytes = reinterpret_cast<const char *>(value & addressMask);
        quint64 length = value >> 48;
        if (Q_UNLIKELY(length == longLength)) {
            memcpy(&length, bytes - sizeof length, sizeof length);
        }
        return {bytes, size_t(length)};
    }
    /// Equal codes of a pooled column share one text object; see stopLookups().
    QString text(Code code) const;

    /// Called by bulk loading for a column whose values nearly all differ: the values so far are
    /// forgotten by the look-up, and text() no longer keeps the texts that it made.
    void stopLookups();
    bool hasLookups() const { return m_lookups; }

    /// Bytes held, for memory reports.
    size_t memoryUsed() const { return m_memory; }

    /// The process-wide choice between "Minimum memory use" (pooling on, the default) and "Maximum
    /// speed". Set once at start-up.
    static void setPoolingEnabled(bool enabled);
    static bool isPoolingEnabled();

    /// The one empty text that all empty cells share.
    static const QString &emptyText();

private:
    // A value: 48 bits of address, 16 bits of length. Longer values have the length 0xffff here and
    // their true one in the 8 bytes before the text.
    using Slot = quint64;
    struct HashEntry
    {
        quint32 hash;
        Code code; // emptyCode: free
    };

    static constexpr quint64 addressMask = (quint64(1) << 48) - 1;
    static constexpr quint64 longLength = 0xffff;

    // Block k holds 16 << k slots, so small columns stay small and no slot ever moves.
    static constexpr quint32 firstBlockSize = 16;
    static constexpr int blockCount = 29;
    static uint blockOf(Code code)
    {
        return 31U - qCountLeadingZeroBits(code / firstBlockSize + 1);
    }
    static Code blockStart(uint block) { return firstBlockSize * ((Code(1) << block) - 1); }
    const Slot &slot(Code code) const
    {
        const uint block = blockOf(code);
        return m_blocks[block][code - blockStart(block)];
    }
    Code store(std::string_view utf8);
    Code lookUp(std::string_view utf8, quint32 hash) const;
    void insertHash(quint32 hash, Code code);
    void placeHash(HashEntry entry);
    void growHash();
    char *take(size_t bytes);

    std::array<std::unique_ptr<Slot[]>, blockCount> m_blocks;
    mutable std::array<std::unique_ptr<QString[]>, blockCount> m_texts;
    std::vector<std::unique_ptr<char[]>> m_arena;
    char *m_arenaAt = nullptr;
    size_t m_arenaLeft = 0;
    size_t m_arenaNext = 64;
    std::vector<HashEntry> m_hash;
    Code m_hashUsed = 0;
    Code m_count = 0;
    size_t m_memory = 0;
    bool m_lookups = true;
};
