#pragma once

#include <QPointF>
#include <QString>

/// How an item's position stands in an attribute of a document. Texts and lists: see ListCodec.
namespace DocumentCodec {

/// "x" U+001F "y", six significant digits.
QString encodedPosition(QPointF position);
/// "x^y", the form of older documents.
QString encodedOldPosition(QPointF position);
/// Reads both forms; false when these are not two finite numbers.
bool decodePosition(const QString &text, QPointF *position);

} // namespace DocumentCodec
