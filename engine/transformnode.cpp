#include "transformnode.h"

#include "connection.h"
#include "transform.h"
#include "transformparameter.h"

namespace {

/// Takes the progress handler away from the transform, also when an exception leaves.
class ProgressGuard
{
public:
    ProgressGuard(Transform *transform, const Progress &progress)
        : m_transform(transform)
    {
        m_transform->setProgress(progress);
    }
    ~ProgressGuard() { m_transform->setProgress({}); }
    ProgressGuard(const ProgressGuard &) = delete;
    ProgressGuard &operator=(const ProgressGuard &) = delete;

private:
    Transform *m_transform;
};

} // namespace

TransformNode::TransformNode(std::unique_ptr<Transform> transform)
    : m_transform(std::move(transform))
{
    // A clone still refers to the inputs of the original.
    m_transform->redefineParameters({});
}

TransformNode::~TransformNode() = default;

bool TransformNode::setParameterValue(const QString &key, const QVariant &value)
{
    TransformParameter *parameter = m_transform->parameter(key);
    if (!parameter) {
        return false;
    }
    parameter->value = value;
    Q_EMIT parametersChanged(this);
    markChanged();
    return true;
}

TransformNode::ParameterValues TransformNode::parameterValues() const
{
    ParameterValues values;
    const QList<TransformParameter *> parameters = m_transform->parameters();
    for (const TransformParameter *parameter : parameters) {
        values.append({parameter->key, parameter->value});
    }
    return values;
}

void TransformNode::setParameterValues(const ParameterValues &values)
{
    for (const auto &[key, value] : values) {
        if (TransformParameter *parameter = m_transform->parameter(key)) {
            parameter->value = value;
        }
    }
    Q_EMIT parametersChanged(this);
    markChanged();
}

std::unique_ptr<Node> TransformNode::clone() const
{
    auto copy = std::make_unique<TransformNode>(m_transform->clone());
    copyTo(copy.get());
    return copy;
}

QString TransformNode::displayName() const
{
    return m_transform->name();
}

int TransformNode::maximumUpstream() const
{
    return m_transform->maximumInputs();
}

QString TransformNode::resultText() const
{
    return m_transform->status();
}

void TransformNode::upstreamChanged()
{
    defineAgain();
    Q_EMIT dataChanged(this);
}

bool TransformNode::columnsChanged() const
{
    int i = 0;
    for (const Connection *connection : upstreamConnections()) {
        if (m_definedColumns.value(i++) != connection->from()->upstreamColumns()) {
            return true;
        }
    }
    return false;
}

void TransformNode::defineAgain()
{
    QList<const UpstreamItem *> inputs;
    m_definedColumns.clear();
    for (const Connection *connection : upstreamConnections()) {
        inputs.append(connection->from());
        m_definedColumns.append(connection->from()->upstreamColumns());
    }
    m_transform->redefineParameters(inputs);
    Q_EMIT parametersChanged(this);
}

QString TransformNode::wrongInputCount() const
{
    const int minimum = m_transform->minimumInputs();
    const int maximum = m_transform->maximumInputs();
    const int count = upstreamConnections().size();
    if (count >= minimum && count <= maximum) {
        return {};
    }
    if (minimum == maximum) {
        return tr("%1 upstream %2 expected")
            .arg(QString::number(minimum), minimum == 1 ? tr("connection") : tr("connections"));
    }
    return tr("At least %1 upstream connections expected").arg(minimum);
}

Dataset TransformNode::run(const ProcessContext &context, Messages *messages)
{
    m_transform->resetRun();
    const QString wrongCount = wrongInputCount();
    if (!wrongCount.isEmpty()) {
        messages->fail(wrongCount);
        return {};
    }
    QList<Dataset> inputs;
    for (const Connection *connection : upstreamConnections()) {
        const Node *input = connection->from();
        // A table that is missing must not pass for an empty one.
        if (input->status() == ItemStatus::Error) {
            messages->fail(tr("Input '%1' has an error.").arg(input->displayName()));
            return {};
        }
        inputs.append(input->dataset());
    }
    if (columnsChanged()) {
        defineAgain();
    } else {
        m_transform->resolveColumns();
    }
    m_transform->checkOptions();
    const ProgressGuard guard(m_transform.get(), context.progress);
    Dataset result = m_transform->execute(inputs);
    *messages = m_transform->messages();
    return result;
}
