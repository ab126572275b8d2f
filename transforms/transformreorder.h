#pragma once

#include "transform.h"

/// Puts the columns in another order. Shares all cells with the input.
class TransformReorder final : public Transform
{
    Q_OBJECT

public:
    TransformReorder();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
};
