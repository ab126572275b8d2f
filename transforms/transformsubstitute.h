#pragma once

#include "transform.h"

class ColumnTemplate;

/// Adds a column with a text in which variables stand for the row's values.
class TransformSubstitute final : public Transform
{
    Q_OBJECT

public:
    TransformSubstitute();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;

private:
    struct Settings;
    bool fill(const ColumnTemplate &text, const Settings &settings, ColIndex column,
              Dataset *output);
};
