#include "xlsstyles.h"

#include "biffrecords.h"
#include "bifftext.h"
#include "biffwriter.h"

#include <array>

namespace {

constexpr size_t styleSize = 20;
// Where things stand in a style.
constexpr size_t fontAt = 0;
constexpr size_t formatAt = 2;
constexpr size_t kindAt = 4;
constexpr size_t ownAt = 9;
constexpr quint16 isNamedStyle = 0x0004;
// What is not as in the named style.
constexpr quint8 ownFormat = 0x04;
constexpr quint8 ownFont = 0x08;

// Where things stand in a font.
constexpr size_t colorAt = 4;
constexpr size_t weightAt = 6;
constexpr size_t underlineAt = 10;
constexpr quint16 boldWeight = 700;
constexpr quint16 blue = 12;

} // namespace

void XlsStyles::addOld(quint16 record, std::string_view data)
{
    if (record == Biff::Font) {
        m_fonts.emplace_back(data);
    } else if (record == Biff::Xf) {
        m_styles.emplace_back(data);
    } else if (data.size() >= 4) {
        const int id = biffNumber<quint16>(data, 0);
        const std::vector<std::string_view> parts{data};
        std::string code;
        if (BiffTextReader(parts, 2, nullptr).read(2, &code)) {
            m_formats.insert({code, id});
        }
        m_nextFormat = std::max(m_nextFormat, id + 1);
    }
}

std::string XlsStyles::ordinaryStyle() const
{
    if (size_t(ordinary) < m_styles.size()) {
        const std::string &style = m_styles[size_t(ordinary)];
        if (style.size() == styleSize && (biffNumber<quint16>(style, kindAt) & isNamedStyle) == 0) {
            return style;
        }
    }
    std::string style(styleSize, '\0');
    style[kindAt] = 1;      // locked, of the first named style
    style[6] = 0x20;        // at the bottom
    style[18] = char(0xc0); // no pattern
    style[19] = 0x20;
    return style;
}

int XlsStyles::add(const std::string &style)
{
    appendBiffRecord(Biff::Xf, style, &m_newStyles);
    m_styles.push_back(style);
    return int(m_styles.size()) - 1;
}

int XlsStyles::numberFormat(const std::string &code)
{
    constexpr int wholeNumber = 1;
    constexpr int text = 49;
    if (code == "General" || code == "0" || code == "@") {
        return code == "0" ? wholeNumber : code == "@" ? text : 0;
    }
    const auto [known, isNew] = m_formats.insert({code, m_nextFormat});
    if (isNew) {
        ++m_nextFormat;
        std::string data;
        appendBiff(quint16(known->second), &data);
        appendBiffText(code, 2, &data);
        appendBiffRecord(Biff::Format, data, &m_newFormats);
    }
    return known->second;
}

int XlsStyles::withNumberFormat(const std::string &code)
{
    if (code == "General") {
        return ordinary;
    }
    const auto known = m_known.find(code);
    if (known != m_known.end()) {
        return known->second;
    }
    std::string style = ordinaryStyle();
    patchBiff(quint16(numberFormat(code)), formatAt, &style);
    style[ownAt] = char(quint8(style[ownAt]) | ownFormat);
    return m_known[code] = add(style);
}

/// A font like the ordinary one, but for what is asked.
int XlsStyles::addFont(bool isBold, bool isLink)
{
    // A number that no font has.
    constexpr size_t missing = 4;
    size_t base = biffNumber<quint16>(ordinaryStyle(), fontAt);
    base -= base > missing ? 1 : 0;
    std::string font = m_fonts[base < m_fonts.size() ? base : 0];
    if (isBold) {
        patchBiff(boldWeight, weightAt, &font);
    }
    if (isLink) {
        patchBiff(blue, colorAt, &font);
        font[underlineAt] = 1;
    }
    appendBiffRecord(Biff::Font, font, &m_newFonts);
    m_fonts.push_back(font);
    const size_t number = m_fonts.size() - 1;
    return int(number < missing ? number : number + 1);
}

int XlsStyles::bold()
{
    if (m_bold < 0) {
        std::string style = ordinaryStyle();
        patchBiff(quint16(addFont(true, false)), fontAt, &style);
        style[ownAt] = char(quint8(style[ownAt]) | ownFont);
        m_bold = add(style);
    }
    return m_bold;
}

int XlsStyles::link(int base)
{
    const auto known = m_links.find(base);
    if (known != m_links.end()) {
        return known->second;
    }
    if (m_linkFont < 0) {
        m_linkFont = addFont(false, true);
    }
    std::string style = base == ordinary ? ordinaryStyle() : m_styles[size_t(base)];
    patchBiff(quint16(m_linkFont), fontAt, &style);
    style[ownAt] = char(quint8(style[ownAt]) | ownFont);
    return m_links[base] = add(style);
}

bool XlsStyles::areTooMany() const
{
    constexpr size_t most = 4050;
    constexpr int lastFormat = 0xffff;
    return (m_styles.size() > most && !m_newStyles.empty()) ||
           (m_nextFormat - 1 > lastFormat && !m_newFormats.empty());
}

quint32 XlsStyles::checksum() const
{
    constexpr quint32 polynomial = 0xaf;
    constexpr quint32 highest = 0x80000000;
    static const std::array<quint32, 256> table = [] {
        std::array<quint32, 256> values{};
        for (quint32 i = 0; i < values.size(); ++i) {
            quint32 value = i << 24;
            for (int bit = 0; bit < 8; ++bit) {
                value = (value & highest) != 0 ? (value << 1) ^ polynomial : value << 1;
            }
            values[i] = value & 0xffff;
        }
        return values;
    }();
    quint32 sum = 0;
    for (const std::string &style : m_styles) {
        for (const char c : style) {
            sum = (sum << 8) ^ table[(sum >> 24) ^ quint8(c)];
        }
    }
    return sum;
}
