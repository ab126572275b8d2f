#include "textcase.h"

#include "codepoints.h"

#include <QStringList>

namespace {

/// Marks belong to the letter before them.
bool isLetter(uint c)
{
    return QChar::isLetter(c) || QChar::isMark(c);
}

bool isApostrophe(uint c)
{
    return c == '\'' || c == 0x2019;
}

bool endsSentence(uint c)
{
    return c == '.' || c == '!' || c == '?';
}

/// The runs of letters and digits, cut also between a small letter and a capital.
QStringList codeWords(const QString &text)
{
    QStringList words;
    bool inWord = false;
    uint before = 0;
    CodePoints::forEach(text, [&](uint c, const QString &character) {
        const bool isPart = isLetter(c) || QChar::isDigit(c);
        if (isPart && inWord && !(QChar::isLower(before) && QChar::isUpper(c))) {
            words.last() += character;
        } else if (isPart) {
            words.append(character);
        }
        inWord = isPart;
        before = c;
    });
    return words;
}

} // namespace

QString CaseChanger::changed(const QString &text) const
{
    switch (m_case) {
    case TextCase::Lower:
        return m_locale.toLower(text);
    case TextCase::Upper:
        return m_locale.toUpper(text);
    case TextCase::Title:
        return title(text);
    case TextCase::Sentence:
        return sentence(text);
    case TextCase::Inverted:
        return inverted(text);
    case TextCase::Camel:
    case TextCase::Pascal:
    case TextCase::Snake:
    case TextCase::Kebab:
    case TextCase::Constant:
        break;
    }
    return joinedWords(text);
}

QString CaseChanger::title(const QString &text) const
{
    // A word that begins with a digit has no first letter to raise: "3rd", not "3Rd".
    QString result;
    bool atStart = true;
    CodePoints::forEach(m_locale.toLower(text), [&](uint c, const QString &character) {
        const bool isWord = isLetter(c) || QChar::isDigit(c);
        result += atStart && isWord ? m_locale.toUpper(character) : character;
        atStart = isApostrophe(c) ? atStart : !isWord;
    });
    return result;
}

QString CaseChanger::sentence(const QString &text) const
{
    QString result;
    bool atStart = true;
    uint before = 0;
    CodePoints::forEach(m_locale.toLower(text), [&](uint c, const QString &character) {
        if (endsSentence(before) && QChar::isSpace(c)) {
            atStart = true;
        }
        const bool isWord = isLetter(c) || QChar::isDigit(c);
        result += atStart && isWord ? m_locale.toUpper(character) : character;
        atStart = atStart && !isWord;
        before = c;
    });
    return result;
}

QString CaseChanger::inverted(const QString &text) const
{
    QString result;
    CodePoints::forEach(text, [&](uint c, const QString &character) {
        if (QChar::isUpper(c) || QChar::isTitleCase(c)) {
            result += m_locale.toLower(character);
        } else {
            result += QChar::isLower(c) ? m_locale.toUpper(character) : character;
        }
    });
    return result;
}

QString CaseChanger::joinedWords(const QString &text) const
{
    QStringList words = codeWords(text);
    for (int i = 0; i < words.size(); ++i) {
        if (m_case == TextCase::Pascal || (m_case == TextCase::Camel && i > 0)) {
            words[i] = capitalised(words[i]);
        } else {
            words[i] = m_case == TextCase::Constant ? m_locale.toUpper(words[i])
                                                    : m_locale.toLower(words[i]);
        }
    }
    if (m_case == TextCase::Snake || m_case == TextCase::Constant) {
        return words.join(QLatin1Char('_'));
    }
    return words.join(m_case == TextCase::Kebab ? QStringLiteral("-") : QString());
}

QString CaseChanger::capitalised(const QString &word) const
{
    const int first = CodePoints::sizeAt(word, 0);
    return m_locale.toUpper(word.left(first)) + m_locale.toLower(word.mid(first));
}
