#pragma once

#include <string>
#include <string_view>

/// What stands in front of the colon of a property.
struct VCardHead
{
    explicit VCardHead(std::string_view head);

    /// Group, name and parameters as they stand, but without those that only say how a value is
    /// spelt (CHARSET, and ENCODING=QUOTED-PRINTABLE).
    std::string name;
    bool isQuotedPrintable = false;
    bool isBase64 = false;
    /// What CHARSET names; empty without one.
    std::string charset;
};

/// The versions differ in how lines are folded and in what a backslash means.
enum class VCardVersion {
    Old, ///< 2.1
    New  ///< 3.0 and later, and cards that do not tell
};

/// Takes the lines of vCards from their text. Lines are unfolded and values are decoded where they
/// stand, which is possible because they only get shorter: a text of one very long line needs no
/// second copy, and views stay valid as long as the text.
class VCardLines
{
public:
    explicit VCardLines(std::string *text);

    /// The next line that is not blank, with its continuation lines; false at the end.
    bool next(VCardVersion version);
    std::string_view line() const { return {m_line, m_size}; }
    /// What stands in front of the colon; empty when the line is no property.
    std::string_view head() const { return line().substr(0, m_colon); }
    /// What stands behind it, as it stands.
    std::string_view value() const { return line().substr(m_colon + 1); }
    /// The part of the text that has been taken, 0 to 1.
    double fraction() const;

    /// The value with quoted-printable undone, or base64 without the blanks of its folding. Changes
    /// the line: only once for each.
    std::string_view decodedValue(const VCardHead &head);
    /// The value with the characters that backslashes stand for. The same.
    std::string_view unescapedValue(VCardVersion version);

private:
    void takePhysicalLine();
    void joinSoftBreaks();

    const char *m_begin;
    char *m_at;
    char *m_end;
    char *m_line = nullptr;
    size_t m_size = 0;
    size_t m_colon = 0;
};

/// Changes a text as VCardLines::unescapedValue() does; answers its new size.
size_t unescapeVCardText(char *text, size_t size, VCardVersion version);
