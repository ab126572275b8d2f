#pragma once

#include <QString>

/// A folder that comes with the program ("docs", "examples") and holds a file of that name or
/// pattern; empty when it is not there.
QString programFolder(const QString &name, const QString &file);
