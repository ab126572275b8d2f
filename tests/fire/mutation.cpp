#include "mutation.h"

#include <cstring>

namespace {

// Inputs stay small, so that many are read in a short time.
constexpr int largestInput = 1 << 20;
constexpr int longestPiece = 200;

// What formats are made of, and numbers at the edge of what fits.
const QList<QByteArray> &pieces()
{
    static const QList<QByteArray> all = {"\"",
                                          ",",
                                          "\r\n",
                                          "\n",
                                          "\r",
                                          "\t",
                                          "'",
                                          "<",
                                          "</",
                                          "/>",
                                          "<!--",
                                          "]]>",
                                          "<![CDATA[",
                                          "<!DOCTYPE ",
                                          "&#0;",
                                          "&#x10FFFF;",
                                          "&amp;",
                                          "{",
                                          "}",
                                          "[",
                                          "]",
                                          ":",
                                          "\\u0000",
                                          "\\ud800",
                                          "null",
                                          "1e999999",
                                          "-",
                                          "BEGIN:VCARD\r\n",
                                          "END:VCARD\n",
                                          ";",
                                          "=",
                                          "=\r\n",
                                          "%",
                                          "^",
                                          "2147483647",
                                          "-2147483648",
                                          "4294967296",
                                          "1048577",
                                          "16385",
                                          "XFE1048577",
                                          "99999999999",
                                          "0",
                                          "\xEF\xBB\xBF",
                                          "\xFF\xFE",
                                          "\xC0\x80",
                                          "\xED\xA0\x80"};
    return all;
}

constexpr quint32 edgeNumbers[] = {0,     1,     2,      0x7F,       0x80,       0xFF,      0x100,
                                   0x7FF, 0xFFF, 0x7FFF, 0x8000,     0xFFFE,     0xFFFF,    0x10000,
                                   8224,  8228,  65536,  0x7FFFFFFF, 0x80000000, 0xFFFFFFFE};

} // namespace

QByteArray Mutation::changed(QByteArray bytes, const QList<QByteArray> &others)
{
    for (int left = oneIn(2) ? 1 : 1 + number(8); left > 0; --left) {
        changeOnce(&bytes, others);
    }
    bytes.truncate(largestInput);
    return bytes;
}

void Mutation::changeOnce(QByteArray *bytes, const QList<QByteArray> &others)
{
    const int size = bytes->size();
    const int at = number(size + 1);
    const int length = qMin(size - at, oneIn(4) ? number(size + 1) : number(longestPiece));
    switch (number(11)) {
    case 0:
        bytes->truncate(at);
        break;
    case 1:
        bytes->remove(at, length);
        break;
    case 2:
        bytes->insert(at, bytes->mid(at, length).repeated(1 + number(oneIn(20) ? 1000 : 4)));
        break;
    case 3:
        splice(bytes, others[number(others.size())]);
        break;
    case 4:
        bytes->insert(at, pieces()[number(pieces().size())]);
        break;
    case 5:
    case 6:
        setNumber(bytes);
        break;
    case 7:
    case 8:
        setDigits(bytes, at);
        break;
    default:
        if (at < size) {
            bytes->data()[at] =
                oneIn(2) ? char(number(256)) : char(bytes->at(at) ^ (1 << number(8)));
        }
        break;
    }
}

/// A number of two or four bytes somewhere.
void Mutation::setNumber(QByteArray *bytes)
{
    const int width = oneIn(2) ? 2 : 4;
    if (bytes->size() < width) {
        return;
    }
    const int at = number(bytes->size() - width + 1);
    quint32 value = 0;
    std::memcpy(&value, bytes->constData() + at, size_t(width));
    value = oneIn(3) ? value + quint32(number(9)) - 4
                     : edgeNumbers[size_t(number(int(std::size(edgeNumbers))))];
    std::memcpy(bytes->data() + at, &value, size_t(width));
}

/// Another number in the place of the next digits.
void Mutation::setDigits(QByteArray *bytes, int from)
{
    const auto isDigit = [&](int at) { return bytes->at(at) >= '0' && bytes->at(at) <= '9'; };
    while (from < bytes->size() && !isDigit(from)) {
        ++from;
    }
    int end = from;
    while (end < bytes->size() && isDigit(end)) {
        ++end;
    }
    const quint32 edge = edgeNumbers[size_t(number(int(std::size(edgeNumbers))))];
    bytes->replace(from, end - from,
                   oneIn(2) ? QByteArray::number(edge) : QByteArray::number(number(20) - 2));
}

/// The head of one and the tail of the other, or a piece of the other in the middle.
void Mutation::splice(QByteArray *bytes, const QByteArray &other)
{
    const int at = number(bytes->size() + 1);
    const int from = number(other.size() + 1);
    if (oneIn(2)) {
        *bytes = bytes->left(at) + other.mid(from);
    } else {
        bytes->insert(at, other.mid(from, number(longestPiece)));
    }
}
