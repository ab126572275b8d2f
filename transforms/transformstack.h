#pragma once

#include "transform.h"

struct StackedTable;

/// Puts the rows of several tables one under another. The cells of the first are shared.
class TransformStack final : public Transform
{
    Q_OBJECT

public:
    TransformStack();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
    bool isParameterShown(const TransformParameter &parameter) const override;

private:
    struct Settings;
    bool readSettings(Settings *settings) const;
    void tellMissing(const std::vector<StackedTable> &tables, const QStringList &names);
    void addSource(const QList<Dataset> &inputs, const QString &name, Dataset *output) const;

    // For the names of the source column; as long-lived as the items that the records refer to.
    QList<const UpstreamItem *> m_items;
};
