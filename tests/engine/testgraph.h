#pragma once

#include "graphscene.h"
#include "inputnode.h"
#include "outputnode.h"
#include "parametervalues.h"
#include "scriptedinterface.h"
#include "transform.h"
#include "transformfacts.h"
#include "transformnode.h"
#include "transformparameter.h"

#include <functional>
#include <memory>

/// A transform for tests: hands on its first input, after calling `work` and reporting progress.
class TestTransform final : public Transform
{
public:
    using Work = std::function<void()>;

    explicit TestTransform(int minimum = 1, int maximum = 1, const Work &atWork = {})
        : Transform(factsFor(minimum, maximum))
        , work(atWork)
    {
    }

    void defineParameters(const QList<const UpstreamItem *> &inputs) override
    {
        Transform::defineParameters(inputs);
        append(std::make_unique<TransformParameter>(ParameterType::MultipleColumns,
                                                    QStringLiteral("Columns"),
                                                    QStringLiteral("Columns"), inputs.value(0)));
        append(std::make_unique<TransformParameter>(ParameterType::Text, QStringLiteral("Words"),
                                                    QStringLiteral("Text"), QString()));
    }
    std::unique_ptr<Transform> clone() const override
    {
        auto copy = std::make_unique<TestTransform>(minimumInputs(), maximumInputs(), work);
        copyParametersTo(copy.get());
        return copy;
    }
    Dataset execute(const QList<Dataset> &inputs) override
    {
        for (int i = 0; i < 10; ++i) {
            if (!report(i / 10.0)) {
                return {};
            }
        }
        if (work) {
            work();
        }
        // As a loop would: the answer to a stop that came during the work.
        if (!report(0.95)) {
            return {};
        }
        setStatus(QStringLiteral("handed on"));
        return inputs.value(0);
    }

    Work work;

private:
    static const TransformFacts &factsFor(int minimum, int maximum)
    {
        static const TransformFacts base(1000, "TestTransform", "Test", "Test",
                                         TransformCategory::Other, "For tests.");
        static const TransformFacts one = base.inputs(1, 1);
        static const TransformFacts two = base.inputs(2, 2);
        static const TransformFacts any = base.inputs(1, TransformFacts::noLimit);
        static const TransformFacts many = base.inputs(2, TransformFacts::noLimit);
        return maximum == 1 ? one : maximum == 2 ? two : minimum == 1 ? any : many;
    }
};

/// A scene with a scripted user and short ways to fill it.
struct TestGraph
{
    static constexpr int anyNumber = TransformFacts::noLimit;

    TestGraph() { scene.document().autoRun = false; }

    InputNode *input(const QString &text = QStringLiteral("a,b\n1,2\n3,4\n"),
                     const QPointF &pos = {})
    {
        InputOptions options;
        options.medium = Medium::Clipboard;
        options.text = text;
        auto node = std::make_unique<InputNode>(options);
        node->setPos(pos);
        return scene.insert(std::move(node));
    }
    InputNode *missingInput(const QString &path = QStringLiteral("/nowhere/missing.csv"))
    {
        InputOptions options;
        options.path = path;
        return scene.insert(std::make_unique<InputNode>(options));
    }
    TransformNode *transform(const QList<Node *> &above = {}, int minimum = 1, int maximum = 1,
                             const TestTransform::Work &work = {})
    {
        TransformNode *node = scene.insert(std::make_unique<TransformNode>(
            std::make_unique<TestTransform>(minimum, maximum, work)));
        for (Node *each : above) {
            scene.connectNodes(each, node);
        }
        return node;
    }
    OutputNode *output(Node *above, const QString &path)
    {
        OutputOptions options;
        options.path = path;
        OutputNode *node = scene.insert(std::make_unique<OutputNode>(options));
        if (above) {
            scene.connectNodes(above, node);
        }
        return node;
    }
    static void setColumns(TransformNode *node, const QList<ColumnRef> &columns)
    {
        node->setParameterValue(QStringLiteral("Columns"), QVariant::fromValue(columns));
    }
    static QList<ColumnRef> columns(const TransformNode *node)
    {
        return node->transform()
            .parameter(QStringLiteral("Columns"))
            ->value.value<QList<ColumnRef>>();
    }

    ScriptedInterface user;
    GraphScene scene{&user};
};
