#pragma once

#include "recordformat.h"

/// Writes a card (version 3.0) for each row and a property for each value.
class VCardWriter final : public RecordFormat
{
public:
    explicit VCardWriter(const TextJob &job);

    QString syntax() const override;
    bool prepare(Messages *messages, const Progress &progress) override;
    void begin(bool withHeader) override;
    bool canContinue(const OldText &old, QString *lastPart) override;

protected:
    bool escapeCharacter(uint codePoint, std::string *out) override;
};
