#pragma once

#include "transform.h"

/// Keeps or removes the rows for which a list of tests holds. The result shares its rows with the
/// input.
class TransformFilter final : public Transform
{
    Q_OBJECT

public:
    TransformFilter();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
    /// "Keep (Price > '10') AND (Country = 'France')".
    QString summary() const override;

private:
    Dataset filtered(const Dataset &input, const struct FilterSpec &spec, bool caseSensitive);
};
