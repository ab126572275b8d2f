#pragma once

#include <functional>

/// Receives the fraction done (0 to 1) of a long operation, about every 1000 rows. Answers false
/// when the user has asked to stop: the operation then returns early and its result is dropped.
/// May throw MaxMemoryException. An empty function means that nobody watches.
using Progress = std::function<bool(double fraction)>;

/// Rows between two progress reports.
constexpr int progressInterval = 1000;

inline bool reportProgress(const Progress &progress, double fraction)
{
    return !progress || progress(fraction);
}
