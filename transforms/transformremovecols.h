#pragma once

#include "transform.h"

class QRegularExpression;

/// Keeps the columns that are ticked. Shares all cells with the input.
class TransformRemoveCols final : public Transform
{
    Q_OBJECT

public:
    TransformRemoveCols();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    /// All columns are kept.
    void setInitialValues() override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
    QList<QPair<QString, int>> optionalParameters() const override;

private:
    std::vector<ColIndex> kept(const Dataset &input, const QList<ColIndex> &checked, bool keepNew);
    void dropMatching(const Dataset &input, const QRegularExpression &regex,
                      std::vector<ColIndex> *columns);
};
