#pragma once

#include "node.h"

#include <QPair>
#include <QVariant>

class Transform;

/// Computes its table with the Transform that it owns.
class TransformNode final : public Node
{
    Q_OBJECT

public:
    /// The values of all options by key.
    using ParameterValues = QList<QPair<QString, QVariant>>;

    /// The options are defined at once (for no inputs), so that stored values can be set on
    /// transform().parameter(key) before the item is connected; they follow through all later
    /// definitions.
    explicit TransformNode(std::unique_ptr<Transform> transform);
    ~TransformNode() override;

    Transform &transform() { return *m_transform; }
    const Transform &transform() const { return *m_transform; }
    /// Sets an option and marks the item and everything downstream; false for an unknown key.
    bool setParameterValue(const QString &key, const QVariant &value);
    ParameterValues parameterValues() const;
    void setParameterValues(const ParameterValues &values);

    ItemKind kind() const override { return ItemKind::Transform; }
    std::unique_ptr<Node> clone() const override;
    /// Always the transform's name; documents do not store another one.
    QString displayName() const override;
    int maximumUpstream() const override;
    bool canHaveDownstream() const override { return true; }
    /// The status text of the last run.
    QString resultText() const override;
    void upstreamChanged() override;

Q_SIGNALS:
    /// Options were set or defined again: pointers to their records are invalid.
    void parametersChanged(TransformNode *node);

protected:
    Dataset run(const ProcessContext &context, Messages *messages) override;

private:
    QString wrongInputCount() const;
    /// The options have to be defined again: the columns above are no longer those of last time.
    bool columnsChanged() const;
    /// Defines the options for the present inputs; the values carry over by key, and references to
    /// columns follow the names.
    void defineAgain();

    std::unique_ptr<Transform> m_transform;
    QList<QStringList> m_definedColumns;
};
