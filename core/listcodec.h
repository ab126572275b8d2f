#pragma once

#include <QString>
#include <QStringList>

/// Texts and lists of texts as one text that holds any content: what documents store.
namespace ListCodec {

/// Stands between the items of a list.
constexpr QChar separator(0x1F);

/// Percent-encoded UTF-8: only ASCII letters and digits, "-", ".", "_" and "~" stay.
QString encodedText(const QString &text);
/// A per cent sign without two hexadecimal digits stands for itself; bytes that are no UTF-8 become
/// U+FFFD.
QString decodedText(const QString &text);

/// Every item encoded, joined with the separator. A list of one empty text reads back as an empty
/// list.
QString encoded(const QStringList &list);
QStringList decoded(const QString &text);

} // namespace ListCodec
