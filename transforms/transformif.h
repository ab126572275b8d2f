#pragma once

#include "transform.h"

/// Appends a column whose value, row by row, is chosen by a cascade of tests: IF, ELSE IF, ELSE.
class TransformIf final : public Transform
{
    Q_OBJECT

public:
    TransformIf();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
    QList<QPair<QString, int>> optionalParameters() const override;

private:
    Dataset filled(Dataset output, const Dataset &input, const struct IfSpec &spec,
                   bool caseSensitive);
};
