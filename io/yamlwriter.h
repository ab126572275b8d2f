#pragma once

#include "recordformat.h"

/// Writes a YAML list with a mapping for each row. A value stands in quotes exactly when readers
/// would otherwise give back another text; what the encoding cannot hold is written as an escape.
class YamlWriter final : public RecordFormat
{
public:
    explicit YamlWriter(const TextJob &job);

    QString syntax() const override;
    bool prepare(Messages *messages, const Progress &progress) override;
    void begin(bool withHeader) override;
    bool canContinue(const OldText &old, QString *lastPart) override;
    void tell(Messages *messages) const override;

protected:
    bool isPlain(int column, std::string_view value) override;
    void format(int column, std::string_view value, std::string *out) override;
    bool escapeCharacter(uint codePoint, std::string *out) override;
    void escapeUnencodable(uint codePoint, std::string *out) override;

private:
    void appendQuoted(std::string_view value, std::string *out);
    std::string key(const QString &name);
    bool isHeld(std::string_view value) const;

    bool m_hasSurrogate = false;
    qint64 m_surrogateValues = 0;
};
