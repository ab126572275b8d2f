#pragma once

#include "transform.h"

/// A transform type whose work is still to come. Documents that hold it load and save without a
/// loss: its stored parameters stay as they were read. A run of it fails with a clear warning.
class UnbuiltTransform final : public Transform
{
public:
    explicit UnbuiltTransform(const TransformFacts &facts);

    bool isBuilt() const override { return false; }
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;

    /// The facts of all such types; they live as long as the program.
    static std::vector<const TransformFacts *> allFacts();
};
