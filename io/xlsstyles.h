#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <QtGlobal>

/// The cell styles of an XLS workbook: those that it has, and what our cells need beside.
class XlsStyles
{
public:
    /// A Font, Format or Xf of the workbook; to be called in the order of the file.
    void addOld(quint16 record, std::string_view data);

    /// The ordinary style, but for its number format.
    int withNumberFormat(const std::string &code);
    int bold();
    int link(int base);

    /// The records of what is new, which stand behind the old ones of their kind.
    const std::string &newFonts() const { return m_newFonts; }
    const std::string &newFormats() const { return m_newFormats; }
    const std::string &newStyles() const { return m_newStyles; }
    /// There are more styles than a workbook can have.
    bool areTooMany() const;
    size_t count() const { return m_styles.size(); }
    /// Of all styles, as the workbook notes it for programs that know more about its styles.
    quint32 checksum() const;

    /// The number of the style that cells have by themselves.
    static constexpr int ordinary = 15;

private:
    std::string ordinaryStyle() const;
    int add(const std::string &style);
    int addFont(bool isBold, bool isLink);
    int numberFormat(const std::string &code);

    std::vector<std::string> m_fonts;
    std::vector<std::string> m_styles;
    std::map<std::string, int> m_formats;
    int m_nextFormat = 164; // those below are built in
    std::map<std::string, int> m_known;
    std::map<int, int> m_links;
    int m_linkFont = -1;
    int m_bold = -1;
    std::string m_newFonts;
    std::string m_newFormats;
    std::string m_newStyles;
};
