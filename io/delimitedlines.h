#pragma once

#include "byteset.h"
#include "dataset.h"
#include "filetypes.h"
#include "numberreader.h"
#include "progress.h"

#include <QString>
#include <array>
#include <string>
#include <string_view>

class TextEncoder;

struct DelimitedFormat
{
    /// One character.
    QString delimiter = QStringLiteral(",");
    QString lineEnding = QStringLiteral("\r\n");
    OutputQuoting quoting = OutputQuoting::AsNeeded;
};

/// Formats names and rows as lines of delimited text. Counts the values that could not be written
/// as they are.
class DelimitedLines
{
public:
    DelimitedLines(const DelimitedFormat &format, TextEncoder *out);

    void addHeader(const QStringList &names);
    /// Answers false when the progress asked to stop or nothing more could be written.
    bool addRows(const Dataset &dataset, const Progress &progress);

    /// Values in which a delimiter or a line end was replaced, as they were not quoted.
    qint64 replacedValues() const { return m_replacedValues; }
    /// What these were replaced with.
    QChar replacement() const { return QLatin1Char(m_replacement); }
    /// Values with characters that the encoding cannot hold.
    qint64 unencodableValues() const { return m_unencodableValues; }
    /// Values that a spreadsheet program would run as a formula when it opens the file.
    qint64 formulaValues() const { return m_formulaValues; }

private:
    // Up to four bytes, stored at once.
    struct Mark
    {
        char bytes[4] = {};
        size_t size = 0;
    };
    static Mark markOf(std::string_view bytes);
    void addValue(std::string_view value, const Mark &after);
    void addSpecialValue(std::string_view value, const Mark &after);
    void countFormula(std::string_view value);
    bool hasUnencodable(std::string_view value);
    bool needsQuotes(std::string_view value) const;
    std::string_view quoted(std::string_view value);
    std::string_view unquotable(std::string_view value);

    TextEncoder *m_out;
    OutputQuoting m_quoting;
    std::string m_delimiter;
    Mark m_delimiterMark;
    Mark m_lineEnd;
    /// Bytes that need a closer look at their value.
    ByteSet m_special;
    size_t m_plainLimit;
    char m_replacement;
    std::string m_clean;
    std::string m_formatted;
    qint64 m_replacedValues = 0;
    qint64 m_unencodableValues = 0;
    qint64 m_formulaValues = 0;
    NumberReader m_numbers;
    std::array<bool, 256> m_startsFormula{};
};
