#pragma once

#include <QtGlobal>
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

    ByteSet() { m_isMember.fill(false); }

    void add(char byte)
    {
        m_isMember[uchar(byte)] = true;
#ifdef __SSE2__
        Q_ASSERT(m_added < capacity);
        // Places not used yet repeat the last member, so that they find nothing more.
        for (int i = m_added; i < capacity; ++i) {
            m_values[i] = _mm_set1_epi8(byte);
        }
        ++m_added;
#endif
    }
    void addNonAscii()
    {
        for (size_t i = 0x80; i < m_isMember.size(); ++i) {
            m_isMember[i] = true;
        }
#ifdef __SSE2__
        m_highBits = _mm_set1_epi8(char(0x80));
#endif
    }

    /// The ASCII control characters.
    void addControls()
    {
        for (size_t i = 0; i < 0x20; ++i) {
            m_isMember[i] = true;
        }
#ifdef __SSE2__
        m_below = _mm_set1_epi8(char(0x20 ^ 0x80));
#endif
    }

    /// Answers whether no member was met; the copy is then complete. The set must not be empty.
    bool copyWithout(const char *from, size_t size, char *to) const;

private:
    bool isMember(char byte) const
    {
        return m_isMember[uchar(byte)];
    }
#ifdef __SSE2__
    int membersOf(__m128i bytes) const
    {
        // Comparisons are signed: with the highest bit turned over, bytes keep their order.
        const __m128i turned = _mm_xor_si128(bytes, _mm_set1_epi8(char(0x80)));
        __m128i found =
            _mm_or_si128(_mm_and_si128(bytes, m_highBits), _mm_cmplt_epi8(turned, m_below));
        for (const __m128i &value : m_values) {
            found = _mm_or_si128(found, _mm_cmpeq_epi8(bytes, value));
        }
        return _mm_movemask_epi8(found);
    }
#endif

    std::array<bool, 256> m_isMember;
#ifdef __SSE2__
    // Each member in all bytes.
    __m128i m_values[capacity];
    __m128i m_highBits = _mm_setzero_si128();
    // Nothing is below this one.
    __m128i m_below = _mm_set1_epi8(char(0x80));
    int m_added = 0;
#endif
};

#ifdef __SSE2__

Q_ALWAYS_INLINE bool ByteSet::copyWithout(const char *from, size_t size, char *to) const
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

Q_ALWAYS_INLINE bool ByteSet::copyWithout(const char *from, size_t size, char *to) const
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
