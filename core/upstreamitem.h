#pragma once

#include <QString>
#include <QStringList>

/// What a transform may know of the item that one of its inputs comes from. Items of the graph
/// implement it, so that transforms need not know the graph.
class UpstreamItem
{
public:
    virtual ~UpstreamItem() = default;

    /// The name shown for the item; for an input item without a name of its own, its file's name.
    virtual QString upstreamName() const = 0;
    /// The column names; "Column 1", "Column 2", ... for a table without a header.
    virtual QStringList upstreamColumns() const = 0;
    /// False while the columns are not known yet (the item has not been processed).
    virtual bool upstreamColumnsKnown() const = 0;
    virtual bool upstreamHasHeader() const = 0;
};
