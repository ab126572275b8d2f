#pragma once

#include "inplacetransform.h"

/// Replaces texts in the selected columns by a list of terms, one after the other.
class TransformReplaceMulti final : public InPlaceTransform
{
    Q_OBJECT

public:
    TransformReplaceMulti();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
};
