#pragma once

#include <QString>

/// A delimiter as typed, with \t, \n, \r and \\ replaced by what they stand for.
QString delimiterFromText(const QString &typed);
