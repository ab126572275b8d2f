#pragma once

#include "transform.h"

/// Gives columns new names, one by one or by a rule. Shares all cells with the input.
class TransformRenameCols final : public Transform
{
    Q_OBJECT

public:
    TransformRenameCols();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
    QList<QPair<QString, int>> optionalParameters() const override;
};
