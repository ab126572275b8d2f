#pragma once

#include "transform.h"

class RowGroups;

/// Makes one row of all rows with the same keys. Values that are taken over stay shared with the
/// input.
class TransformUnique final : public Transform
{
    Q_OBJECT

public:
    TransformUnique();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
    /// Only dates that are compared are read by the formats.
    bool dependsOnDateFormats() const override;
    QList<QPair<QString, int>> optionalParameters() const override;

private:
    struct Settings;
    bool readSettings(const Dataset &input, Settings *settings) const;
    /// False when the user asked to stop.
    bool aggregate(const Dataset &input, const Settings &settings, const RowGroups &groups,
                   ColIndex column, Dataset *output);
};
