#pragma once

#include "transform.h"

/// Puts the rows in order by one or more columns and may rank them. Rows that are equal on all
/// levels come in any order. The result shares its cells with the input.
class TransformSort final : public Transform
{
    Q_OBJECT

public:
    TransformSort();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
    bool isParameterShown(const TransformParameter &parameter) const override;
    QList<QPair<QString, int>> optionalParameters() const override;

private:
    struct Settings;
    bool readSettings(const Dataset &input, Settings *settings) const;
    Dataset sorted(const Dataset &input, const Settings &settings);
};
