#pragma once

#include <QList>
#include <QPointF>
#include <QString>
#include <QStringList>

/// How texts, lists and positions stand in an attribute of a document.
namespace DocumentCodec {

/// Percent-encoded UTF-8: only ASCII letters and digits, "-", ".", "_" and "~" stay.
QString encodedText(const QString &text);
/// A per cent sign without two hexadecimal digits stands for itself; bytes that are no UTF-8 become
/// U+FFFD.
QString decodedText(const QString &text);

/// Every item encoded, joined with U+001F. A list of one empty text reads back as an empty list.
QString encodedList(const QStringList &list);
QStringList decodedList(const QString &text);

/// "x" U+001F "y", six significant digits.
QString encodedPosition(QPointF position);
/// "x^y", the form of older documents.
QString encodedOldPosition(QPointF position);
/// Reads both forms; false when these are not two finite numbers.
bool decodePosition(const QString &text, QPointF *position);

} // namespace DocumentCodec
