#pragma once

#include <QString>

/// Why a result of this many rows cannot be made: more than a table can count, or, at this many
/// bytes a row, more than the memory ceiling leaves. Empty when it can. Asked before anything is
/// made of the result.
QString rowLimitProblem(qint64 rowCount, double bytesPerRow);
