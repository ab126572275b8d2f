#pragma once

#include "jsontypes.h"
#include "numberreader.h"
#include "recordformat.h"

/// Writes a JSON array with an object for each row. Values get the type of their column; what the
/// encoding cannot hold is written as an escape, so that nothing is lost.
class JsonWriter final : public RecordFormat
{
public:
    explicit JsonWriter(const TextJob &job);

    QString syntax() const override;
    bool prepare(Messages *messages, const Progress &progress) override;
    void begin(bool withHeader) override;
    bool canContinue(const OldText &old, QString *lastPart) override;
    void end() override;
    void tell(Messages *messages) const override;

protected:
    bool isPlain(int column, std::string_view value) override;
    void format(int column, std::string_view value, std::string *out) override;
    bool escapeCharacter(uint codePoint, std::string *out) override;
    void escapeUnencodable(uint codePoint, std::string *out) override;

private:
    void chooseTypes(Messages *messages);
    bool formatNumber(std::string_view value, std::string *out) const;
    void reportMisfit(int column, std::string_view value);

    std::vector<JsonType> m_types;
    NumberReader m_numbers;
    QStringList m_misfits;
    qint64 m_misfitCount = 0;
    /// While a value is written that is JSON itself.
    bool m_isRaw = false;
};
