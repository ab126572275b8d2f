#pragma once

#include "transform.h"

class RowGroups;

/// Removes rows that repeat earlier ones in the columns compared, or lists them. Shares all cells
/// with the input.
class TransformDedupe final : public Transform
{
    Q_OBJECT

public:
    TransformDedupe();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
    bool isParameterShown(const TransformParameter &parameter) const override;

private:
    struct Settings;
    bool readSettings(const Dataset &input, Settings *settings) const;
    bool mergeSimilar(const Dataset &input, const Settings &settings, RowGroups *groups);
    /// Answers false when the user asked to stop.
    bool keptRows(const Dataset &input, const Settings &settings, const RowGroups &groups,
                  RowSelection *rows);
};
