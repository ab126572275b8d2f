#pragma once

#include <QString>

/// Texts by whole characters: a surrogate pair counts as one and is never cut.
namespace CodePoints {

/// The code units of the character that begins at a place.
inline int sizeAt(const QString &text, int at)
{
    const bool isPair =
        text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
    return isPair ? 2 : 1;
}

inline uint at(const QString &text, int place)
{
    return sizeAt(text, place) == 2 ? QChar::surrogateToUcs4(text[place], text[place + 1])
                                    : text[place].unicode();
}

/// Calls visit(uint codePoint, const QString &character) for every character.
template <class Visit>
void forEach(const QString &text, Visit visit)
{
    for (int i = 0; i < text.size();) {
        const int size = sizeAt(text, i);
        visit(at(text, i), text.mid(i, size));
        i += size;
    }
}

inline int count(const QString &text)
{
    int number = 0;
    for (int i = 0; i < text.size(); i += sizeAt(text, i)) {
        ++number;
    }
    return number;
}

/// Where the character of a number begins; the end of the text when there are fewer.
inline int placeOf(const QString &text, int number)
{
    int i = 0;
    for (; number > 0 && i < text.size(); --number) {
        i += sizeAt(text, i);
    }
    return i;
}

} // namespace CodePoints
