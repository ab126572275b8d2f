#pragma once

#include "recordformat.h"

/// Writes a page with one table. Values are escaped when the option says so; what the encoding
/// cannot hold is then written as a character reference, so that nothing is lost.
class HtmlWriter final : public RecordFormat
{
public:
    explicit HtmlWriter(const TextJob &job);

    QString syntax() const override;
    bool prepare(Messages *messages, const Progress &progress) override;
    void begin(bool withHeader) override;
    bool canContinue(const OldText &old, QString *lastPart) override;
    void resume(bool withHeader) override;
    void end() override;

protected:
    bool escapeCharacter(uint codePoint, std::string *out) override;
    void escapeUnencodable(uint codePoint, std::string *out) override;

private:
    void writeHeader();

    /// While the title and the comment are written, which are escaped in any case.
    bool m_escapes;
};
