#pragma once

#include "documentrecords.h"

#include <QByteArray>

/// The text of a document file and its records, one from the other. The graph is not known here.
namespace DocumentXml {

/// False with the user's text in `error` when the bytes are not a document; the records are then
/// not to be used. What a document holds beyond its format is collected in the records.
[[nodiscard]] bool read(const QByteArray &bytes, DocumentRecords *records, QString *error);

/// The same records always give the same bytes.
QByteArray written(const DocumentRecords &records);

} // namespace DocumentXml
