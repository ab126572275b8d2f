#include "biffnewrecords.h"

#include "biffrecords.h"
#include "biffwriter.h"

namespace {

std::string record(quint16 id, std::initializer_list<int> numbers)
{
    std::string data;
    for (const int number : numbers) {
        appendBiff(quint16(number), &data);
    }
    std::string bytes;
    appendBiffRecord(id, data, &bytes);
    return bytes;
}

/// The record that begins a stream of this kind.
std::string beginning(quint16 kind)
{
    // The program and its year that spreadsheet programs expect here, and the oldest one that can
    // read the stream.
    return record(Biff::Bof, {Biff::version8, kind, 0x0dbb, 0x07cc, 0, 0, 6, 0});
}

} // namespace

std::string newXlsGlobals()
{
    constexpr int unicode = 1200;
    constexpr int styleCount = 15;
    constexpr int anyColor = 0x7fff;
    std::string bytes = beginning(Biff::globalsStream) + record(Biff::CodePage, {unicode}) +
                        record(Biff::Window1, {0, 0, 0x4000, 0x2000, 0x38, 0, 0, 1, 600}) +
                        record(Biff::Date1904, {0});
    std::string font;
    for (const int number : {200, 0, anyColor, 400, 0, 0x0200, 0}) {
        appendBiff(quint16(number), &font);
    }
    appendBiffText("Arial", 1, &font);
    appendBiffRecord(Biff::Font, font, &bytes);
    // Font, number format, kind (all but the last are named ones), alignment, nothing else, no
    // pattern.
    for (int i = 0; i < styleCount; ++i) {
        bytes += record(Biff::Xf, {0, 0, 0xfff5, 0x20, i == 0 ? 0 : 0xf400, 0, 0, 0, 0, 0x20c0});
    }
    bytes += record(Biff::Xf, {0, 0, 1, 0x20, 0, 0, 0, 0, 0, 0x20c0});
    return bytes + record(Biff::Style, {0x8000, 0xff00}) + record(Biff::Eof, {});
}

std::string newXlsSheet(bool isFrozen, bool isSelected)
{
    constexpr quint16 ordinaryView = 0x00b6;
    constexpr quint16 frozen = 0x0108;
    constexpr quint16 selected = 0x0600;
    std::string records = beginning(Biff::sheetStream);
    appendBiffRecord(Biff::Dimensions, std::string(size_t(14), '\0'), &records);
    std::string view;
    appendBiff(quint16(ordinaryView | (isFrozen ? frozen : 0) | (isSelected ? selected : 0)),
               &view);
    constexpr size_t viewSize = 18;
    constexpr char lineColor = 64;
    view.resize(viewSize);
    view[6] = lineColor;
    appendBiffRecord(Biff::Window2, view, &records);
    if (isFrozen) {
        // Columns and rows before the split, the first row and column behind it, the active part.
        std::string pane;
        for (const quint16 number : {0, 1, 1, 0, 2}) {
            appendBiff(number, &pane);
        }
        appendBiffRecord(Biff::Pane, pane, &records);
    }
    appendBiffRecord(Biff::Eof, {}, &records);
    return records;
}

std::string xlsColumnRecords(const std::vector<double> &widths)
{
    constexpr int units = 256; // of a character
    constexpr quint16 ordinaryStyle = 15;
    std::string records;
    for (size_t column = 0; column < widths.size(); ++column) {
        std::string data;
        appendBiff(quint16(column), &data);
        appendBiff(quint16(column), &data);
        appendBiff(quint16(widths[column] * units), &data);
        appendBiff(ordinaryStyle, &data);
        data.resize(12);
        appendBiffRecord(Biff::ColInfo, data, &records);
    }
    return records;
}
