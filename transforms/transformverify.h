#pragma once

#include "transform.h"

class Verification;
enum class VerifyOutcome : int;

/// Checks a table by rules on its cells, columns and shape.
class TransformVerify final : public Transform
{
    Q_OBJECT

public:
    TransformVerify();

    std::unique_ptr<Transform> clone() const override;
    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    bool isParameterShown(const TransformParameter &parameter) const override;
    bool dependsOnDateFormats() const override;
    QList<QPair<QString, int>> optionalParameters() const override;
    Dataset execute(const QList<Dataset> &inputs) override;

private:
    void tellFailures(const Verification &verification, bool onlyGeneral);
    Dataset outcome(const Dataset &input, const Verification &verification, VerifyOutcome onFail);
};
