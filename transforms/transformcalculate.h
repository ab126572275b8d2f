#pragma once

#include "transform.h"

/// Appends a column calculated from one or two values of the row.
class TransformCalculate final : public Transform
{
    Q_OBJECT

public:
    TransformCalculate();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    bool isParameterShown(const TransformParameter &parameter) const override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;

private:
    /// Fills the last column; false when the run was stopped.
    bool calculate(class Calculation *calculation, Dataset *output);
};
