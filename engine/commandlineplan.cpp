#include "commandlineplan.h"

#include "graphscene.h"
#include "inputnode.h"
#include "outputnode.h"

#include <QCoreApplication>

namespace {

class Planner
{
    Q_DECLARE_TR_FUNCTIONS(CommandLinePlan)

public:
    explicit Planner(const GraphScene &scene)
        : m_inputs(scene.inputs())
        , m_outputs(scene.outputs())
    {
    }

    CommandLinePlan plan()
    {
        m_plan.error = aliasError();
        if (m_plan.error.isEmpty()) {
            leaveOutUnconnected();
            leaveOutDisabled();
            leaveOutAboveLeftOut();
            m_plan.error = usabilityError();
        }
        return m_plan;
    }

private:
    using Nodes = QList<Node *>;

    static QString repeatedAlias(const QStringList &aliases)
    {
        QSet<QString> seen;
        for (const QString &alias : aliases) {
            if (seen.contains(alias)) {
                return alias;
            }
            seen.insert(alias);
        }
        return {};
    }

    template <class Item>
    static QStringList aliases(const QList<Item *> &items)
    {
        QStringList list;
        for (const Item *item : items) {
            list.append(item->alias());
        }
        return list;
    }

    QString aliasError() const
    {
        const QStringList inputs = aliases(m_inputs);
        const QStringList outputs = aliases(m_outputs);
        if (inputs.contains(QString())) {
            return tr("Empty input alias.");
        }
        if (outputs.contains(QString())) {
            return tr("Empty output alias");
        }
        if (const QString alias = repeatedAlias(inputs); !alias.isEmpty()) {
            return tr("Input alias '%1' occurs more than once.").arg(alias);
        }
        if (const QString alias = repeatedAlias(outputs); !alias.isEmpty()) {
            return tr("Output alias '%1' occurs more than once.").arg(alias);
        }
        if (const QString alias = repeatedAlias(inputs + outputs); !alias.isEmpty()) {
            return tr("Alias '%1' occurs for both input and output.").arg(alias);
        }
        return {};
    }

    // These items and all that is reached from them.
    template <class Item>
    static QSet<const Node *> reached(const QList<Item *> &items, Nodes (Node::*next)() const)
    {
        QSet<const Node *> found;
        Nodes open;
        for (Item *item : items) {
            found.insert(item);
            open.append(item);
        }
        while (!open.isEmpty()) {
            for (Node *node : (open.takeLast()->*next)()) {
                if (!found.contains(node)) {
                    found.insert(node);
                    open.append(node);
                }
            }
        }
        return found;
    }

    void leaveOutUnconnected()
    {
        const QSet<const Node *> aboveOutputs = reached(m_outputs, &Node::upstreamNodes);
        const QSet<const Node *> belowInputs = reached(m_inputs, &Node::downstreamNodes);
        QList<InputNode *> unusedInputs;
        for (InputNode *input : m_inputs) {
            if (!aboveOutputs.contains(input)) {
                m_plan.warnings.append(
                    tr("Input with alias '%1' is not connected to an output and will be ignored.")
                        .arg(input->alias()));
                unusedInputs.append(input);
            }
        }
        for (const Node *node : reached(unusedInputs, &Node::downstreamNodes)) {
            m_plan.leftOut.insert(node->id());
        }
        for (const OutputNode *output : m_outputs) {
            if (!belowInputs.contains(output)) {
                m_plan.warnings.append(
                    tr("Output with alias '%1' is not connected to an input and will be ignored.")
                        .arg(output->alias()));
                m_plan.leftOut.insert(output->id());
            }
        }
    }

    // Write modes do not apply to the clipboard.
    void leaveOutDisabled()
    {
        for (const OutputNode *output : m_outputs) {
            const OutputOptions &options = output->options();
            if (!isLeftOut(output) && options.medium == Medium::File &&
                options.writeMode == WriteMode::Disabled) {
                m_plan.warnings.append(
                    tr("Output with alias '%1' has 'Write mode'='%2' and will be ignored.")
                        .arg(output->alias(), writeModeLabel(options.writeMode)));
                m_plan.leftOut.insert(output->id());
            }
        }
    }

    // An item that feeds nothing but left-out items would be processed in vain.
    void leaveOutAboveLeftOut()
    {
        QHash<const Node *, int> leftOutBelow;
        Nodes open;
        for (OutputNode *output : m_outputs) {
            if (isLeftOut(output)) {
                open.append(output);
            }
        }
        while (!open.isEmpty()) {
            for (Node *node : open.takeLast()->upstreamNodes()) {
                if (++leftOutBelow[node] == node->downstreamConnections().size() &&
                    !isLeftOut(node)) {
                    m_plan.leftOut.insert(node->id());
                    open.append(node);
                }
            }
        }
    }

    QString usabilityError() const
    {
        int outputs = 0;
        for (const OutputNode *output : m_outputs) {
            if (isLeftOut(output)) {
                continue;
            }
            ++outputs;
            const OutputOptions &options = output->options();
            if (options.medium == Medium::File && options.multiFile &&
                options.multiFileColumn.isEmpty()) {
                return tr("Files column not set for multi-file output with alias '%1'.")
                    .arg(output->alias());
            }
        }
        int inputs = 0;
        for (const InputNode *input : m_inputs) {
            inputs += isLeftOut(input) ? 0 : 1;
        }
        if (inputs == 0) {
            return tr("No inputs that can be used.");
        }
        return outputs == 0 ? tr("No outputs that can be used.") : QString();
    }

    bool isLeftOut(const Node *node) const { return m_plan.leftOut.contains(node->id()); }

    QList<InputNode *> m_inputs;
    QList<OutputNode *> m_outputs;
    CommandLinePlan m_plan;
};

} // namespace

CommandLinePlan CommandLinePlan::made(const GraphScene &scene)
{
    return Planner(scene).plan();
}
