#include "cellnumberformat.h"

#include <charconv>
#include <cstdio>

namespace {

constexpr size_t mostDigits = 15;

/// The code of a layout with one section; the others repeat it.
std::string sectionOf(const ValueLayout &layout)
{
    std::string section;
    if (layout.kind == ValueLayout::Kind::Decimal) {
        section = layout.grouped ? "#,##0" : "0";
        if (layout.decimals > 0) {
            section += '.';
            section.append(layout.decimals, '0');
        }
        return section;
    }
    for (size_t i = 0; i < layout.fields.size(); ++i) {
        if (i > 0) {
            section += '\\';
            section += layout.separators[i - 1];
        }
        section.append(layout.digits[i], layout.fields[i]);
    }
    return section;
}

ValueLayout dateLayoutOf(std::string_view section)
{
    ValueLayout layout;
    layout.kind = ValueLayout::Kind::Date;
    size_t at = 0;
    for (size_t i = 0; i < layout.fields.size(); ++i) {
        if (i > 0) {
            if (at + 1 >= section.size() || section[at] != '\\') {
                return {};
            }
            layout.separators[i - 1] = section[at + 1];
            at += 2;
        }
        const size_t from = at;
        while (at < section.size() && section[at] == section[from]) {
            ++at;
        }
        if (at == from) {
            return {};
        }
        layout.fields[i] = section[from];
        layout.digits[i] = quint8(at - from);
    }
    return layout;
}

} // namespace

std::string ValueLayout::formatCode() const
{
    switch (kind) {
    case Kind::None:
        return {};
    case Kind::LowerCaseBoolean:
        return R"("true";"true";"false")";
    case Kind::CapitalizedBoolean:
        return R"("True";"True";"False")";
    case Kind::Date:
        return sectionOf(*this) + ';' + sectionOf(*this);
    case Kind::Decimal:
        break;
    }
    const std::string section = sectionOf(*this);
    return section + ";-" + section + (comma ? ';' + section : std::string());
}

ValueLayout ValueLayout::ofFormatCode(std::string_view code)
{
    const size_t end = code.find(';');
    if (end == std::string_view::npos || end == 0) {
        return {};
    }
    const std::string_view section = code.substr(0, end);
    ValueLayout layout;
    if (code.front() == '"') {
        layout.kind = code[1] == 't' ? Kind::LowerCaseBoolean : Kind::CapitalizedBoolean;
    } else if (code.front() == '0' || code.front() == '#') {
        layout.kind = Kind::Decimal;
        layout.grouped = code.front() == '#';
        const size_t point = section.find('.');
        layout.decimals =
            point == std::string_view::npos ? quint8(0) : quint8(section.size() - point - 1);
        layout.comma = code.find(';', end + 1) != std::string_view::npos;
    } else {
        layout = dateLayoutOf(section);
    }
    return layout.formatCode() == code ? layout : ValueLayout();
}

bool ValueLayout::appendDecimal(double number, std::string *out) const
{
    std::array<char, 64> buffer;
    char *const first = buffer.data();
    const auto [last, error] =
        std::to_chars(first, first + buffer.size(), number, std::chars_format::fixed, decimals);
    if (error != std::errc()) {
        return false;
    }
    double again = 0;
    std::from_chars(first, last, again);
    if (again != number) {
        return false;
    }
    constexpr size_t group = 3;
    const std::string_view text(first, size_t(last - first));
    const size_t sign = text.front() == '-' ? 1 : 0;
    const size_t wholeEnd = std::min(text.find('.'), text.size());
    if (text.size() - sign > mostDigits + 1) {
        return false;
    }
    for (size_t i = 0; i < text.size(); ++i) {
        if (i == wholeEnd) {
            out->push_back(comma ? ',' : '.');
            continue;
        }
        if (grouped && i > sign && i < wholeEnd && (wholeEnd - i) % group == 0) {
            out->push_back(comma ? '.' : ',');
        }
        out->push_back(text[i]);
    }
    return true;
}

void ValueLayout::appendDate(const QDate &date, std::string *out) const
{
    for (size_t i = 0; i < fields.size(); ++i) {
        if (i > 0) {
            out->push_back(separators[i - 1]);
        }
        const int value = fields[i] == 'd'   ? date.day()
                          : fields[i] == 'm' ? date.month()
                                             : date.year();
        std::array<char, 16> buffer;
        const int size = snprintf(buffer.data(), buffer.size(), "%0*d", int(digits[i]), value);
        out->append(buffer.data(), size_t(size));
    }
}
