#pragma once

#include "recordformat.h"

/// Writes an XML document: an element for each row in the root element, and in it one for each
/// column. Nothing is written unless all names can be names of elements and the texts around the
/// rows leave the document well-formed.
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

protected:
    bool escapeCharacter(uint codePoint, std::string *out) override;
    void escapeUnencodable(uint codePoint, std::string *out) override;

private:
    QStringList elementNames(Messages *messages) const;
    bool checkEncoding(Messages *messages) const;
    bool checkColumnNames(Messages *messages) const;
    bool checkSurroundings(Messages *messages) const;
    bool isWellFormed(const QString &above, const QString &below, QString *error) const;
    bool endsWithOtherElement(const QString &text) const;
    bool isEncodedAlike(const QString &declared) const;
    std::string declaration() const;
    void writeComment();
    void writeAsIs(const QString &text);

    QString m_root;
    QString m_row;
    bool m_startsInLine = false;
};
