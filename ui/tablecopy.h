#pragma once

#include "datatablemodel.h"

class QMimeData;

/// Cells for the clipboard.
namespace TableCopy {

/// More cells than this are not copied at once.
constexpr qint64 largestCount = 1000000;

/// Values that hold a tab, a line break or a quote are put in quotes, with quotes doubled.
QString tabSeparated(const DataTableModel &model, const CellRange &range, bool withHeader);
QString html(const DataTableModel &model, const CellRange &range, bool withHeader);
/// Both forms; HTML only of a moderate number of cells.
QMimeData *mimeData(const DataTableModel &model, const CellRange &range, bool withHeader);

} // namespace TableCopy
