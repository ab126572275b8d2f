#pragma once

#include <QLocale>
#include <QString>

/// The ways to write the letters of a text.
enum class TextCase {
    Lower,
    Upper,
    Title,
    Sentence,
    Inverted,
    Camel,
    Pascal,
    Snake,
    Kebab,
    Constant
};

/// Changes the case of texts by the rules of the default locale at the time it is made.
class CaseChanger
{
public:
    explicit CaseChanger(TextCase textCase)
        : m_case(textCase)
    {
    }

    QString changed(const QString &text) const;

private:
    QString title(const QString &text) const;
    QString sentence(const QString &text) const;
    QString inverted(const QString &text) const;
    QString joinedWords(const QString &text) const;
    QString capitalised(const QString &word) const;

    TextCase m_case;
    QLocale m_locale;
};
