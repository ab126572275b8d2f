#pragma once

#include <QStringList>

class OutputCodec;

/// Why a text cannot be the name of an element in a document of that encoding; nothing when it can.
/// Of many characters that are not allowed some are left out.
QStringList xmlNameProblems(const QString &name, const OutputCodec &codec);
