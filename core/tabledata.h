#pragma once

#include "tablecolumn.h"

#include <QSharedData>
#include <QStringList>
#include <vector>

/// What copies of a Dataset share.
struct Dataset::Data : public QSharedData
{
    std::vector<TableColumn> columns;
    int rows = 0;
    bool hasHeader = false;
    /// Empty, or one name for each column.
    QStringList header;
};
