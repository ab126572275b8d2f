#pragma once

#include "inplacetransform.h"

/// Writes the letters of the selected columns in another case.
class TransformCase final : public InPlaceTransform
{
    Q_OBJECT

public:
    TransformCase();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
};
