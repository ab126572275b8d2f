#pragma once

#include "recordformat.h"

/// Writes an XML document with an element for each row and within it one for each column. What the
/// encoding cannot hold is written as a character reference; what XML cannot hold becomes U+FFFD
/// and is counted.
class XmlWriter final : public RecordFormat
{
public:
    explicit XmlWriter(const TextJob &job);

    QString syntax() const override;
    bool check(Messages *messages) const override;
    bool prepare(Messages *messages, const Progress &progress) override;
    void begin(bool withHeader) override;
    bool canContinue(const OldText &old, QString *lastPart) override;
    void resume(bool withHeader) override;
    void end() override;
    void tell(Messages *messages) const override;

protected:
    void format(int column, std::string_view value, std::string *out) override;
    bool escapeCharacter(uint codePoint, std::string *out) override;
    void escapeUnencodable(uint codePoint, std::string *out) override;

private:
    QString rootName() const;
    QString rowName() const;
    QString comment() const;
    QStringList elementNames(Messages *messages) const;
    bool checkFrame(Messages *messages) const;

    /// The document that rows are added to ends its last row without a line end.
    bool m_needsLineEnd = false;
    bool m_hasImpossible = false;
    qint64 m_impossibleValues = 0;
};

/// The reasons why a name cannot be that of an element; empty when it can.
QString xmlNameProblems(const QString &name);
