#pragma once

#include "transform.h"

class JoinKeys;

/// Puts the rows of two tables side by side, by equal keys or by row number. The result shares its
/// cells with the inputs.
class TransformJoin final : public Transform
{
    Q_OBJECT

public:
    TransformJoin();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
    bool isParameterShown(const TransformParameter &parameter) const override;

private:
    struct Settings;
    struct Pairs;
    struct KeyCells;
    bool readSettings(const QList<Dataset> &inputs, Settings *settings) const;
    Dataset joinedByRow(const Dataset &top, const Dataset &bottom, const Settings &settings);
    Dataset joinedByKey(const Dataset &top, const Dataset &bottom, const Settings &settings);
    bool appendMatches(const JoinKeys &keys, int topRows, Pairs *pairs);
    bool copyKeys(const KeyCells &keys, int first, int last, Dataset *output);
    bool canHold(qint64 rowCount);
    Dataset sideBySide(const Dataset &top, const Dataset &bottom, Pairs pairs) const;
    void tellCounts(qint64 joined, qint64 usedTop, qint64 allTop, qint64 usedBottom,
                    qint64 allBottom);
    void tellKeys(const JoinKeys &keys);
};
