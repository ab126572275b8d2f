#pragma once

#include <string>
#include <vector>

/// The records of a workbook without sheets.
std::string newXlsGlobals();
/// The records of a sheet without cells. `isFrozen` keeps its first row in sight.
std::string newXlsSheet(bool isFrozen, bool isSelected);
/// Records for columns of these widths, in characters.
std::string xlsColumnRecords(const std::vector<double> &widths);
