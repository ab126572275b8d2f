#pragma once

#include "dataset.h"

#include <QString>

/// The pattern to write dates with so that they look like those of a column that another pattern
/// reads: a pattern of single letters reads "01/02/2024" too, but would write "1/2/2024". An empty
/// pattern gives yyyy-MM-dd.
QString writtenDateFormat(const Dataset &table, ColIndex column, const QString &pattern);
