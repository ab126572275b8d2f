#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

/// A few byte values that are looked out for while bytes are copied. Reads and writes exactly the
/// bytes it is given, whatever their number; most values of a table are shorter than 16.
class ByteSet
{
public:
    static constexpr int capacity = 5;

    ByteSet()
    {
        m_values.fill('\0');
        m_isMember.fill(false);
    }

    void add(char byte)
    {
        // Unused places repeat the last member, so that they find nothing more.
        for (size_t i = size_t(m_count); i < m_values.size(); ++i) {
            m_values[i] = byte;
        }
        ++m_count;
        m_isMember[uchar(byte)] = true;
    }
    void addNonAscii()
    {
        m_highBit = char(0x80);
        for (size_t i = 0x80; i < m_isMember.size(); ++i) {
            m_isMember[i] = true;
        }
    }

    /// Answers whether no member was met; the copy is then complete. The set must not be empty.
    bool copyWithout(const char *from, size_t size, char *to) const;

private:
    using uchar = unsigned char;
    bool isMember(char byte) const { return m_isMember[uchar(byte)]; }
#ifdef __SSE2__
    int membersOf(__m128i bytes) const
    {
        __m128i found = _mm_and_si128(bytes, _mm_set1_epi8(m_highBit));
        for (const char value : m_values) {
            found = _mm_or_si128(found, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(value)));
        }
        return _mm_movemask_epi8(found);
    }
#endif

    std::array<char, capacity> m_values;
    int m_count = 0;
    char m_highBit = 0;
    std::array<bool, 256> m_isMember;
};

#ifdef __SSE2__

inline bool ByteSet::copyWithout(const char *from, size_t size, char *to) const
{
    if (size >= 16) {
        const auto copy16 = [&](size_t at) {
            __m128i bytes;
            memcpy(&bytes, from + at, 16);
            memcpy(to + at, &bytes, 16);
            return membersOf(bytes);
        };
        for (size_t at = 0; at + 16 < size; at += 16) {
            if (copy16(at) != 0) {
                return false;
            }
        }
        return copy16(size - 16) == 0;
    }
    // Two loads that overlap cover any length between half of both and both.
    if (size >= 8) {
        long long first;
        long long last;
        memcpy(&first, from, 8);
        memcpy(&last, from + size - 8, 8);
        memcpy(to, &first, 8);
        memcpy(to + size - 8, &last, 8);
        return membersOf(_mm_set_epi64x(last, first)) == 0;
    }
    if (size >= 4) {
        int first;
        int last;
        memcpy(&first, from, 4);
        memcpy(&last, from + size - 4, 4);
        memcpy(to, &first, 4);
        memcpy(to + size - 4, &last, 4);
        return (membersOf(_mm_set_epi32(0, 0, last, first)) & 0xff) == 0;
    }
    if (size == 0) {
        return true;
    }
    const char first = from[0];
    const char middle = from[size / 2];
    const char last = from[size - 1];
    to[0] = first;
    to[size / 2] = middle;
    to[size - 1] = last;
    return !(isMember(first) || isMember(middle) || isMember(last));
}

#else

inline bool ByteSet::copyWithout(const char *from, size_t size, char *to) const
{
    bool found = false;
    for (size_t i = 0; i < size; ++i) {
        found = found || isMember(from[i]);
    }
    if (size > 0 && !found) {
        memcpy(to, from, size);
    }
    return !found;
}

#endif
