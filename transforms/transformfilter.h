#pragma once

#include "transform.h"

struct FilterSpec;

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
    /// The same of a filter that is being edited. Terms on columns that are not among the given
    /// ones are left out; without any given, none is.
    static QString summaryText(const FilterSpec &spec, const QStringList &columns);
    /// Its part after "Keep".
    static QString termsText(const FilterSpec &spec, const QStringList &columns);

private:
    Dataset filtered(const Dataset &input, const FilterSpec &spec, bool caseSensitive);
};
