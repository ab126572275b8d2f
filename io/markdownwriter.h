#pragma once

#include "recordformat.h"

#include <vector>

/// Writes a table of Markdown with columns padded to one width. Bars and line breaks are written so
/// that a row stays one line.
class MarkdownWriter final : public RecordFormat
{
public:
    explicit MarkdownWriter(const TextJob &job);

    QString syntax() const override;
    bool prepare(Messages *messages, const Progress &progress) override;
    void begin(bool withHeader) override;
    bool canContinue(const OldText &old, QString *lastPart) override;
    void resume(bool withHeader) override;
    bool addRows(const Progress &progress) override;

protected:
    bool escapeCharacter(uint codePoint, std::string *out) override;

private:
    bool measure(const Progress &progress);
    void writeHeader();
    void writeDivider();
    void writeRow(const std::string_view *cells);
    void addCell(std::string_view value, int width);
    /// The value as it is written; refers to the value or to m_formatted.
    std::string_view formatted(std::string_view value);

    /// In columns of a fixed-width font.
    std::vector<int> m_widths;
    std::string m_formatted;
    std::string m_line;
};
