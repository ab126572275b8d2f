#pragma once

#include "inplacetransform.h"

/// Brings the values of the selected columns to a length.
class TransformPad final : public InPlaceTransform
{
    Q_OBJECT

public:
    TransformPad();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
};
