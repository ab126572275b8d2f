#include "textwidth.h"

#include "utf8.h"

#include <QChar>
#include <iterator>

namespace {

struct Range
{
    uint first;
    uint last;
};

// The blocks of wide characters of Unicode's East Asian widths.
constexpr Range wideRanges[] = {
    {0x1100, 0x115f},   {0x2e80, 0x303e},   {0x3041, 0x33ff},   {0x3400, 0x4dbf},
    {0x4e00, 0x9fff},   {0xa000, 0xa4cf},   {0xa960, 0xa97f},   {0xac00, 0xd7a3},
    {0xf900, 0xfaff},   {0xfe30, 0xfe6f},   {0xff00, 0xff60},   {0xffe0, 0xffe6},
    {0x1f300, 0x1f64f}, {0x1f680, 0x1f6ff}, {0x1f900, 0x1f9ff}, {0x20000, 0x3fffd}};

bool isWide(uint c)
{
    for (const Range &range : wideRanges) {
        if (c <= range.last) {
            return c >= range.first;
        }
    }
    return false;
}

int widthOf(uint c)
{
    switch (QChar::category(c)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Other_Control:
    case QChar::Other_Format:
        return 0;
    default:
        return isWide(c) ? 2 : 1;
    }
}

} // namespace

int textWidth(std::string_view utf8)
{
    int width = 0;
    for (size_t at = 0; at < utf8.size();) {
        const auto byte = uchar(utf8[at]);
        if (byte < 0x80) {
            width += byte >= 0x20 && byte != 0x7f ? 1 : 0;
            ++at;
        } else {
            width += widthOf(Utf8::nextCodePoint(utf8, &at));
        }
    }
    return width;
}
