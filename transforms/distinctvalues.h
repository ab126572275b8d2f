#pragma once

#include "dataset.h"
#include "progress.h"

#include <string_view>
#include <vector>

/// The values that the rows of a column hold, listed once for each code, so that a value is worked
/// on once however many rows hold it. Equal values may be listed more than once.
struct DistinctValues
{
    /// False when the user asked to stop. The table must outlive the values.
    bool read(const Dataset &table, ColIndex column, const Progress &progress);

    std::vector<std::string_view> values;
    std::vector<quint32> ofRow; ///< number of the row's value in `values`
};

/// The part of an operation's progress from one fraction to another. The whole must outlive it.
Progress progressBetween(const Progress &progress, double from, double to);
