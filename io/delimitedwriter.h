#pragma once

#include "delimitedlines.h"
#include "textformat.h"

/// Writes delimited text: a line for the column names and one for each row.
class DelimitedWriter final : public TextFormat
{
public:
    explicit DelimitedWriter(const TextJob &job);

    QString syntax() const override;
    bool check(Messages *messages) const override;
    void begin(bool withHeader) override;
    void resume(bool withHeader) override;
    bool addRows(const Progress &progress) override;
    void tell(Messages *messages) const override;

private:
    DelimitedFormat m_format;
    DelimitedLines m_lines;
};
