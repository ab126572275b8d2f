#pragma once

#include "transform.h"

class ValueParts;
struct ColumnParts;

/// Makes several rows of each: groups of columns go under each other, and values that hold several
/// ones are cut at a delimiter. Cells that are repeated stay shared with the input.
class TransformSplitRows final : public Transform
{
    Q_OBJECT

public:
    TransformSplitRows();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
    QList<QPair<QString, int>> optionalParameters() const override;

private:
    struct Settings;
    struct Split;
    bool readSettings(const Dataset &input, Settings *settings) const;
    /// These answer false when the user asked to stop or the result would be too large.
    bool splitColumns(const ColumnParts &parts, bool ignoreEmpty, Split *split);
    bool chooseRows(const ColumnParts &parts, const std::vector<StackedTable> &tables,
                    bool ignoreEmpty, Split *split, RowSelection *stackedRows);
    bool splitValues(const Settings &settings, const QList<ColIndex> &columns, Split *split);
    bool chooseParts(const std::vector<ValueParts> &values, bool ignoreEmpty, const Split &split,
                     Split *result, RowSelection *rows, std::vector<RowSelection> *partRows);
    bool canHold(qint64 rowCount);
    void addNumbers(const Split &split, Dataset *output) const;
};
