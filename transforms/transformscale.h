#pragma once

#include "inplacetransform.h"

#include <optional>
#include <vector>

/// Scales the numbers of the selected columns, to a range or by what they sum up to.
class TransformScale final : public InPlaceTransform
{
    Q_OBJECT

public:
    TransformScale();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    bool isParameterShown(const TransformParameter &parameter) const override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;

private:
    /// Nothing when the run was stopped.
    std::optional<std::vector<struct NumberStatistics>>
    statistics(const Dataset &input, const QList<ColIndex> &columns, bool together);
};
