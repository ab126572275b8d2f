#include "testgraph.h"
#include "testsupport.h"

#include "connection.h"
#include "runengine.h"
#include "transformcatalogue.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QUndoStack>

Q_DECLARE_METATYPE(std::function<void(TestGraph &)>)

namespace {

QString dump(const GraphScene &scene)
{
    QStringList lines;
    const QList<Node *> nodes = scene.nodesByAddition();
    for (const Node *node : nodes) {
        QStringList line{QString::number(node->id()),
                         itemKindLabel(node->kind()),
                         node->name(),
                         node->comment(),
                         QString::number(node->pos().x()),
                         QString::number(node->pos().y())};
        if (const auto *item = qobject_cast<const IONode *>(node)) {
            line << item->alias() << item->path();
        }
        if (const auto *transform = qobject_cast<const TransformNode *>(node)) {
            const auto stored = transform->transform().storedParameters();
            for (const StoredParameter &parameter : stored) {
                line << parameter.key << parameter.value
                     << parameter.columns.join(QLatin1Char('/'));
            }
        }
        const QList<Node *> above = node->upstreamNodes();
        for (const Node *each : above) {
            line << QStringLiteral("<%1").arg(each->id());
        }
        const QList<Node *> below = node->downstreamNodes();
        for (const Node *each : below) {
            line << QStringLiteral(">%1").arg(each->id());
        }
        lines << line.join(QLatin1Char('|'));
    }
    const QList<Connection *> connections = scene.connections();
    for (const Connection *connection : connections) {
        lines << QStringLiteral("%1-%2").arg(QString::number(connection->from()->id()),
                                             QString::number(connection->to()->id()));
    }
    return lines.join(QLatin1Char('\n'));
}

template <class T>
T pick(const QList<T> &list, QRandomGenerator *random)
{
    return list[random->bounded(list.size())];
}

/// One random edit; may turn out to do nothing.
void editAtRandom(TestGraph *graph, QRandomGenerator *random)
{
    GraphScene &scene = graph->scene;
    const QList<Node *> nodes = scene.nodesByAddition();
    Node *node = pick(nodes, random);
    Node *other = pick(nodes, random);
    const QPointF place(random->bounded(5) * 10.0, random->bounded(5) * 10.0);
    const QString word = QString::number(random->bounded(100));
    switch (random->bounded(15)) {
    case 0:
        scene.addNote(place, word);
        break;
    case 1:
        scene.addInputs({word + QStringLiteral(".csv")}, place);
        break;
    case 2:
        scene.setSelectedNodes({node, other});
        scene.addTransform(std::make_unique<TestTransform>(1, TestGraph::anyNumber), place);
        break;
    case 3:
        scene.addOutput(OutputNode::defaultOptions(), node, place);
        break;
    case 4:
    case 5:
        if (scene.canConnect(node, other)) {
            scene.addConnection(node, other);
        }
        break;
    case 6:
        scene.deleteItems({node, other});
        break;
    case 7:
        if (!node->upstreamConnections().isEmpty()) {
            scene.deleteItems({}, {node->upstreamConnections().first()});
        }
        break;
    case 8:
        if (scene.nodeCount() < 60) {
            scene.duplicateBranch({node});
        }
        break;
    case 9:
        scene.moveItems({node, other}, place - QPointF(20.0, 20.0));
        break;
    case 10:
        scene.deleteHealed({node, other});
        break;
    case 11:
        if (!node->upstreamConnections().isEmpty()) {
            scene.insertTransform(std::make_unique<TestTransform>(),
                                  node->upstreamConnections().first());
        }
        break;
    case 12: {
        TestGraph copied;
        copied.transform({copied.input()});
        scene.paste(copied.scene, place);
        break;
    }
    default:
        if (auto *transform = qobject_cast<TransformNode *>(node)) {
            const ColumnRef column(random->bounded(2),
                                   random->bounded(2) ? QStringLiteral("a") : QStringLiteral("b"));
            scene.editParameter(transform, QStringLiteral("Columns"),
                                QVariant::fromValue(QList<ColumnRef>{column}));
        } else {
            scene.editComment(node, word);
        }
    }
}

} // namespace

class TestGraphScene : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void connectionRules_data();
    void connectionRules();
    void refusesCyclesDuplicatesAndTooMany();
    void orderOfInputs_data();
    void orderOfInputs();
    void movingInputsMarksTheirTarget();
    void longChains_data();
    void longChains();
    void deletingMarksWhatIsBelow();
    void undoTexts_data();
    void undoTexts();
    void undoRestoresColumnsThatFollowed();
    void editsOfOneOptionMerge();
    void duplicatedBranchGoesWithOneUndo();
    void insertsIntoAConnection();
    void healing_data();
    void healing();
    void pastesWithNewNames();
    void aliasesAreUnique();
    void idsAreNotUsedAgain();
    void randomEditsUndoAndRedo_data();
    void randomEditsUndoAndRedo();
    void asksBeforeReferencesMayBeLost();
    void refusesBlockedExtensions();
    void tellsWhatToSelect();
    void otherDateFormatsMarkWhatReadsDates();
    void clearingForgetsAll();
};

void TestGraphScene::connectionRules_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::addColumn<bool>("allowed");
    const auto addRow = [](const char *from, const char *to, bool allowed) {
        QTest::addRow("%s to %s", from, to)
            << QString::fromLatin1(from) << QString::fromLatin1(to) << allowed;
    };
    addRow("input", "transform", true);
    addRow("input", "output", true);
    addRow("transform", "transform", true);
    addRow("transform", "output", true);
    addRow("input", "input", false);
    addRow("transform", "input", false);
    addRow("output", "transform", false);
    addRow("output", "output", false);
    addRow("note", "transform", false);
    addRow("input", "note", false);
}

void TestGraphScene::connectionRules()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    QFETCH(bool, allowed);
    TestGraph graph;
    const auto made = [&graph](const QString &kind) -> Node * {
        if (kind == QLatin1String("input")) {
            return graph.input();
        }
        if (kind == QLatin1String("transform")) {
            return graph.transform();
        }
        if (kind == QLatin1String("output")) {
            return graph.output(nullptr, QStringLiteral("x.csv"));
        }
        return graph.scene.insert(std::make_unique<NoteNode>());
    };
    Node *above = made(from);
    Node *below = made(to);
    QString error;
    QCOMPARE(graph.scene.connectNodes(above, below, &error), allowed);
    QCOMPARE(error.isEmpty(), allowed);
    QCOMPARE(graph.scene.connections().size(), allowed ? 1 : 0);
    QCOMPARE(below->upstreamNodes().contains(above), allowed);
}

void TestGraphScene::refusesCyclesDuplicatesAndTooMany()
{
    TestGraph graph;
    Node *input = graph.input();
    Node *top = graph.transform({input}, 1, TestGraph::anyNumber);
    Node *middle = graph.transform({top});
    Node *bottom = graph.transform({middle});
    QString error;
    QVERIFY(!graph.scene.connectNodes(bottom, top, &error));
    QVERIFY2(error.contains(QLatin1String("cycle")), qPrintable(error));
    QVERIFY(!graph.scene.connectNodes(top, top, &error));
    QVERIFY(!graph.scene.connectNodes(input, top, &error));
    QVERIFY2(error.contains(QLatin1String("already")), qPrintable(error));
    QVERIFY(!graph.scene.connectNodes(input, middle, &error));
    QVERIFY2(error.contains(QLatin1String("maximum 1")), qPrintable(error));
    TransformNode stranger(std::make_unique<TestTransform>());
    QVERIFY(!graph.scene.connectNodes(input, &stranger, &error));
    QCOMPARE(graph.scene.connections().size(), 3);
}

void TestGraphScene::orderOfInputs_data()
{
    QTest::addColumn<QPointF>("first");
    QTest::addColumn<QPointF>("second");
    QTest::addColumn<bool>("secondIsTop");
    QTest::newRow("higher on the canvas") << QPointF(0, 10) << QPointF(0, 5) << true;
    QTest::newRow("lower on the canvas") << QPointF(0, 10) << QPointF(-50, 15) << false;
    QTest::newRow("same height, further left") << QPointF(10, 0) << QPointF(5, 0) << true;
    QTest::newRow("same place, later id") << QPointF(1, 1) << QPointF(1, 1) << false;
}

void TestGraphScene::orderOfInputs()
{
    QFETCH(QPointF, first);
    QFETCH(QPointF, second);
    QFETCH(bool, secondIsTop);
    TestGraph graph;
    Node *a = graph.input(QStringLiteral("a"), first);
    Node *b = graph.input(QStringLiteral("b"), second);
    const QList<Node *> expected = secondIsTop ? QList<Node *>{b, a} : QList<Node *>{a, b};
    QCOMPARE(graph.transform({a, b}, 2, 2)->upstreamNodes(), expected);
    QCOMPARE(graph.transform({b, a}, 2, 2)->upstreamNodes(), expected);
}

void TestGraphScene::movingInputsMarksTheirTarget()
{
    TestGraph graph;
    Node *a = graph.input(QStringLiteral("a\n1"), {0, 0});
    Node *b = graph.input(QStringLiteral("b\n1"), {0, 100});
    TransformNode *join = graph.transform({a, b}, 2, 2);
    Node *below = graph.transform({join});
    graph.scene.runEngine().run({});
    QCOMPARE(below->status(), ItemStatus::UpToDate);

    graph.scene.moveItems({b}, {5, -50});
    graph.scene.undo();
    graph.scene.redo();
    QCOMPARE(join->status(), ItemStatus::UpToDate);
    graph.scene.moveItems({b}, {0, -100});
    QCOMPARE(join->upstreamNodes(), (QList<Node *>{b, a}));
    QCOMPARE(join->status(), ItemStatus::NeedsUpdating);
    QCOMPARE(below->status(), ItemStatus::NeedsUpdating);
    QCOMPARE(join->transform().parameter(QStringLiteral("Columns"))->input,
             static_cast<const UpstreamItem *>(b));
    graph.scene.undo();
    QCOMPARE(join->upstreamNodes(), (QList<Node *>{a, b}));
    QCOMPARE(b->pos(), QPointF(5, 50));
}

void TestGraphScene::longChains_data()
{
    QTest::addColumn<bool>("fromBelow");
    QTest::newRow("built from above") << false;
    QTest::newRow("built from below") << true;
}

void TestGraphScene::longChains()
{
    QFETCH(bool, fromBelow);
    constexpr int length = 5000;
    TestGraph graph;
    QVector<Node *> chain{graph.input()};
    for (int i = 1; i < length; ++i) {
        chain.append(graph.transform());
    }
    for (int i = 1; i < length; ++i) {
        const int at = fromBelow ? length - i : i;
        QVERIFY(graph.scene.connectNodes(chain[at - 1], chain[at]));
    }
    QVERIFY(!graph.scene.connectNodes(chain.last(), chain[1]));
    const RunResult result = graph.scene.runEngine().run({});
    QCOMPARE(result.processed, length);
    QCOMPARE(chain.last()->status(), ItemStatus::UpToDate);

    chain.first()->setStatus(ItemStatus::NeedsUpdating, true);
    QCOMPARE(chain.last()->status(), ItemStatus::NeedsUpdating);
    graph.scene.deleteItems(chain.toList());
    QCOMPARE(graph.scene.nodeCount(), 0);
    graph.scene.undo();
    QCOMPARE(graph.scene.connections().size(), length - 1);
}

void TestGraphScene::deletingMarksWhatIsBelow()
{
    TestGraph graph;
    Node *input = graph.input();
    Node *first = graph.transform({input});
    Node *middle = graph.transform({first});
    Node *third = graph.transform({middle});
    Node *last = graph.transform({third});
    graph.scene.runEngine().run({});
    graph.scene.deleteItems({middle});
    QCOMPARE(first->status(), ItemStatus::UpToDate);
    QCOMPARE(third->status(), ItemStatus::NeedsUpdating);
    QCOMPARE(last->status(), ItemStatus::NeedsUpdating);
    QVERIFY(middle->dataset().isEmpty());
    graph.scene.undo();
    QCOMPARE(middle->status(), ItemStatus::NeedsUpdating);
    QCOMPARE(last->upstreamNodes(), QList<Node *>{third});
    graph.scene.runEngine().run({RunMode::Changed, {}, false});
    QCOMPARE(last->dataset(), input->dataset());
}

void TestGraphScene::undoTexts_data()
{
    using Edit = std::function<void(TestGraph &)>;
    QTest::addColumn<Edit>("edit");
    QTest::addColumn<QString>("text");
    const auto addRow = [](const char *text, const Edit &edit) {
        static int number = 0;
        QTest::addRow("%d %s", ++number, text) << edit << QString::fromLatin1(text);
    };
    addRow("add note", [](TestGraph &g) { g.scene.addNote({}, QStringLiteral("n")); });
    addRow("add output", [](TestGraph &g) {
        g.scene.addOutput(OutputNode::defaultOptions(), g.scene.node(1), {});
    });
    addRow("add 'orders.csv'",
           [](TestGraph &g) { g.scene.addInputs({QStringLiteral("/data/orders.csv")}, {}); });
    addRow("multifile", [](TestGraph &g) {
        g.scene.addInputs({QStringLiteral("a.csv"), QStringLiteral("b.csv")}, {});
    });
    addRow("add 'Test'", [](TestGraph &g) {
        g.scene.setSelectedNodes({g.scene.node(1)});
        g.scene.addTransform(std::make_unique<TestTransform>(), {});
    });
    addRow("add connection",
           [](TestGraph &g) { g.scene.addConnection(g.scene.node(1), g.scene.node(2)); });
    addRow("add 'Test'", [](TestGraph &g) {
        g.scene.insertTransform(std::make_unique<TestTransform>(), g.scene.connections().first());
    });
    addRow("paste", [](TestGraph &g) {
        TestGraph other;
        other.transform({other.input()});
        QCOMPARE(g.scene.paste(other.scene, {10, 10}).size(), 2);
    });
    addRow("delete", [](TestGraph &g) { g.scene.deleteHealed({g.scene.node(3)}); });
    addRow("delete", [](TestGraph &g) { g.scene.deleteItems({g.scene.node(1)}); });
    addRow("duplicate branch", [](TestGraph &g) { g.scene.duplicateBranch({g.scene.node(1)}); });
    addRow("move item(s)", [](TestGraph &g) { g.scene.moveItems({g.scene.node(1)}, {1, 1}); });
    addRow("edit 'Words'", [](TestGraph &g) {
        g.scene.editParameter(qobject_cast<TransformNode *>(g.scene.node(2)),
                              QStringLiteral("Text"), QStringLiteral("x"));
    });
}

void TestGraphScene::undoTexts()
{
    QFETCH(std::function<void(TestGraph &)>, edit);
    QFETCH(QString, text);
    TestGraph graph;
    graph.input();
    graph.transform();
    graph.transform({graph.transform({graph.scene.node(1)})});
    const QString before = dump(graph.scene);
    edit(graph);
    QCOMPARE(graph.scene.undoStack().count(), 1);
    QCOMPARE(graph.scene.undoStack().undoText(), text);
    QVERIFY(dump(graph.scene) != before);
    graph.scene.undo();
    QCOMPARE(dump(graph.scene), before);
}

void TestGraphScene::undoRestoresColumnsThatFollowed()
{
    TestGraph graph;
    Node *a = graph.input(QStringLiteral("x,key\n1,2"), {0, 0});
    Node *b = graph.input(QStringLiteral("key,y\n1,2"), {0, 100});
    TransformNode *join = graph.transform({a, b}, 2, 2);
    TestGraph::setColumns(join, {ColumnRef(1, QStringLiteral("key"))});
    graph.scene.runEngine().run({});
    graph.scene.moveItems({b}, {0, -200});
    QCOMPARE(TestGraph::columns(join).value(0).number, 0);
    graph.scene.undo();
    QCOMPARE(TestGraph::columns(join).value(0).number, 1);
    graph.scene.redo();
    QCOMPARE(TestGraph::columns(join).value(0).number, 0);
}

void TestGraphScene::editsOfOneOptionMerge()
{
    TestGraph graph;
    TransformNode *one = graph.transform();
    TransformNode *two = graph.transform();
    const QString key = QStringLiteral("Text");
    const auto type = [&](TransformNode *node, const char *text) {
        graph.scene.editParameter(node, key, QString::fromLatin1(text));
    };
    type(one, "a");
    type(one, "ab");
    type(two, "x");
    type(one, "abc");
    QCOMPARE(graph.scene.undoStack().count(), 3);
    graph.scene.undo();
    QCOMPARE(one->transform().parameter(key)->value.toString(), QStringLiteral("ab"));
    graph.scene.undo();
    graph.scene.undo();
    QCOMPARE(one->transform().parameter(key)->value.toString(), QString());
    graph.scene.redo();
    QCOMPARE(one->transform().parameter(key)->value.toString(), QStringLiteral("ab"));
}

void TestGraphScene::duplicatedBranchGoesWithOneUndo()
{
    TestGraph graph;
    Node *input = graph.input();
    TransformNode *first = graph.transform({input});
    Node *second = graph.transform({first});
    OutputNode *output = graph.output(second, QStringLiteral("result.csv"));
    output->setAlias(QStringLiteral("result"));
    TestGraph::setColumns(first, {ColumnRef(1, QStringLiteral("b"))});
    const QString before = dump(graph.scene);

    graph.scene.duplicateBranch({first});
    QCOMPARE(graph.scene.nodeCount(), 7);
    QCOMPARE(input->downstreamNodes().size(), 2);
    const auto *copy = qobject_cast<TransformNode *>(input->downstreamNodes().last());
    QCOMPARE(TestGraph::columns(copy), TestGraph::columns(first));
    const OutputNode *copiedOutput = graph.scene.outputs().last();
    QCOMPARE(copiedOutput->upstreamNodes().value(0)->upstreamNodes().value(0),
             static_cast<const Node *>(copy));
    QCOMPARE(copiedOutput->path(), QStringLiteral("result2.csv"));
    QVERIFY(copiedOutput->alias() != output->alias());

    graph.scene.undo();
    QCOMPARE(dump(graph.scene), before);
}

void TestGraphScene::insertsIntoAConnection()
{
    TestGraph graph;
    Node *upper = graph.input({}, {0, 0});
    Node *lower = graph.input({}, {0, 100});
    TransformNode *join = graph.transform({upper, lower}, 2, 2);
    graph.scene.moveItems({join}, {300, -500});
    TestGraph::setColumns(join, {ColumnRef(1, QStringLiteral("b"))});
    const auto storedOptions = [&] { return join->transform().storedParameters(); };
    const auto before = storedOptions();
    const QString documentBefore = dump(graph.scene);

    QSignalSpy warnings(&graph.scene, &GraphScene::showWarningMessage);
    Connection *connection = graph.scene.connection(lower, join);
    QVERIFY(!graph.scene.insertTransform(std::make_unique<TestTransform>(2, 2), connection));
    QCOMPARE(warnings.count(), 1);
    Node *added = graph.scene.insertTransform(std::make_unique<TestTransform>(), connection);
    QCOMPARE(join->upstreamNodes(), (QList<Node *>{upper, added}));
    QCOMPARE(added->upstreamNodes(), QList<Node *>{lower});
    QCOMPARE(storedOptions(), before);
    // There is room for a card on either side.
    QVERIFY(added->pos().x() - lower->pos().x() > 200);
    QVERIFY(join->pos().x() - added->pos().x() > 200);
    graph.scene.undo();
    QCOMPARE(dump(graph.scene), documentBefore);
}

void TestGraphScene::healing_data()
{
    QTest::addColumn<QList<int>>("deleted");
    QTest::addColumn<QString>("connections");
    // 1 and 2 into 3 (any number), then 4, then 5 and 6 (one each); 1 also into 4.
    const auto addRow = [](const char *tag, const QList<int> &deleted, const char *connections) {
        QTest::newRow(tag) << deleted << QString::fromLatin1(connections);
    };
    // The first input takes the only place there is.
    addRow("one of a chain", {4}, "1-3 2-3 3-5 3-6");
    addRow("two of a chain", {3, 4}, "1-5 1-6");
    addRow("already connected", {3}, "1-4 4-5 4-6 2-4");
    addRow("the first", {1}, "2-3 3-4 4-5 4-6");
    addRow("the last", {5}, "1-3 2-3 3-4 1-4 4-6");
    addRow("nothing", {}, "1-3 2-3 3-4 1-4 4-5 4-6");
}

void TestGraphScene::healing()
{
    QFETCH(QList<int>, deleted);
    QFETCH(QString, connections);
    TestGraph graph;
    Node *one = graph.input({}, {0, 100});
    Node *two = graph.input({}, {0, 200});
    Node *three = graph.transform({one, two}, 1, TestGraph::anyNumber);
    Node *four = graph.transform({three, one}, 1, TestGraph::anyNumber);
    graph.transform({four});
    graph.output(four, QStringLiteral("x.csv"));
    const QString before = dump(graph.scene);
    QList<Node *> nodes;
    for (const int id : std::as_const(deleted)) {
        nodes.append(graph.scene.node(id));
    }
    graph.scene.deleteHealed(nodes);
    QCOMPARE(dump(graph.scene).section(QLatin1Char('\n'), 6 - deleted.size()),
             connections.replace(QLatin1Char(' '), QLatin1Char('\n')));
    graph.scene.undo();
    QCOMPARE(dump(graph.scene), before);
}

void TestGraphScene::pastesWithNewNames()
{
    TestGraph graph;
    InputNode *input = graph.input();
    input->setAlias(QStringLiteral("orders"));
    graph.output(input, QStringLiteral("result.csv"))->setAlias(QStringLiteral("result"));
    TestGraph other;
    InputNode *copied = other.input();
    copied->setAlias(QStringLiteral("orders"));
    TransformNode *transform = other.transform({copied});
    TestGraph::setColumns(transform, {ColumnRef(1, QStringLiteral("b"))});
    other.output(transform, QStringLiteral("result.csv"))->setAlias(QStringLiteral("other"));

    const QList<Node *> pasted = graph.scene.paste(other.scene, {5, 7});
    QCOMPARE(pasted.size(), 3);
    QCOMPARE(pasted[0]->pos(), QPointF(5, 7));
    QCOMPARE(pasted[2]->upstreamNodes(), QList<Node *>{pasted[1]});
    QCOMPARE(pasted[1]->upstreamNodes(), QList<Node *>{pasted[0]});
    QCOMPARE(TestGraph::columns(qobject_cast<TransformNode *>(pasted[1])),
             TestGraph::columns(transform));
    QVERIFY(qobject_cast<IONode *>(pasted[0])->alias() != input->alias());
    QCOMPARE(qobject_cast<IONode *>(pasted[2])->alias(), QStringLiteral("other"));
    QCOMPARE(qobject_cast<IONode *>(pasted[2])->path(), QStringLiteral("result2.csv"));
    QCOMPARE(other.scene.nodeCount(), 3);

    // Relative paths belong to the folder of their document.
    const auto pastedPath = [&] {
        return qobject_cast<IONode *>(graph.scene.paste(other.scene, {}).value(2))->path();
    };
    graph.scene.document().path = QStringLiteral("/documents/a/one.transform");
    other.scene.document().path = QStringLiteral("/documents/a/two.transform");
    QCOMPARE(pastedPath(), QStringLiteral("result3.csv"));
    other.scene.document().path = QStringLiteral("/documents/b/two.transform");
    QCOMPARE(pastedPath(), QStringLiteral("/documents/b/result.csv"));
}

void TestGraphScene::aliasesAreUnique()
{
    TestGraph graph;
    const auto inputs =
        graph.scene.addInputs({QStringLiteral("/a/orders.csv"), QStringLiteral("/b/orders.csv"),
                               QStringLiteral("/c/a=b.csv"), QStringLiteral("/d/.csv")},
                              {});
    QStringList aliases;
    for (const InputNode *input : inputs) {
        aliases.append(input->alias());
    }
    QCOMPARE(aliases, (QStringList{QStringLiteral("orders"), QStringLiteral("orders2"),
                                   QStringLiteral("a_b"), QStringLiteral("input")}));
    OutputOptions options;
    options.path = QStringLiteral("orders.json");
    QCOMPARE(graph.scene.addOutput(options, nullptr, {})->alias(), QStringLiteral("orders3"));
}

void TestGraphScene::idsAreNotUsedAgain()
{
    TestGraph graph;
    const int id = graph.scene.addNote({}, {})->id();
    graph.scene.undo();
    QVERIFY(graph.scene.addNote({}, {})->id() > id);

    // A document may use the highest number there is.
    auto highest = std::make_unique<NoteNode>();
    highest->setId(std::numeric_limits<int>::max());
    QVERIFY(graph.scene.insert(std::move(highest)));
    auto repeated = std::make_unique<NoteNode>();
    repeated->setId(std::numeric_limits<int>::max());
    QVERIFY(!graph.scene.insert(std::move(repeated)));
    QSet<int> ids;
    for (int i = 0; i < 5; ++i) {
        graph.scene.addNote({}, {});
    }
    const QList<Node *> nodes = graph.scene.nodes();
    for (const Node *node : nodes) {
        QVERIFY(node->id() > 0);
        ids.insert(node->id());
    }
    QCOMPARE(ids.size(), graph.scene.nodeCount());
}

void TestGraphScene::randomEditsUndoAndRedo_data()
{
    QTest::addColumn<int>("seed");
    for (int seed = 1; seed <= 20; ++seed) {
        QTest::addRow("seed %d", seed) << seed;
    }
}

void TestGraphScene::randomEditsUndoAndRedo()
{
    QFETCH(int, seed);
    QRandomGenerator random{quint32(seed)};
    TestGraph graph;
    Node *a = graph.input(QStringLiteral("a,b\n1,2"), {0, 0});
    Node *b = graph.input(QStringLiteral("b,a\n1,2"), {0, 50});
    graph.transform({a, b}, 1, TestGraph::anyNumber);
    graph.transform({a}, 1, TestGraph::anyNumber);
    graph.scene.runEngine().run({});

    // By the number of commands done; an edit may merge into the one before.
    QMap<int, QString> dumps{{0, dump(graph.scene)}};
    for (int i = 0; i < 60; ++i) {
        if (graph.scene.nodeCount() == 0 || random.bounded(6) == 0) {
            graph.scene.undo();
            QCOMPARE(dump(graph.scene), dumps.value(graph.scene.undoStack().index()));
            continue;
        }
        editAtRandom(&graph, &random);
        dumps[graph.scene.undoStack().index()] = dump(graph.scene);
    }
    const int count = graph.scene.undoStack().index();
    while (graph.scene.undoStack().index() > 0) {
        graph.scene.undo();
        QCOMPARE(dump(graph.scene), dumps.value(graph.scene.undoStack().index()));
    }
    while (graph.scene.undoStack().index() < count) {
        graph.scene.redo();
        QCOMPARE(dump(graph.scene), dumps.value(graph.scene.undoStack().index()));
    }
}

void TestGraphScene::asksBeforeReferencesMayBeLost()
{
    TestGraph graph;
    Node *input = graph.input();
    TransformNode *first = graph.transform({input});
    TransformNode *second = graph.transform({first});
    graph.scene.deleteItems({}, input->downstreamConnections().toList());
    QVERIFY(graph.user.questions.isEmpty());
    graph.scene.undo();

    TestGraph::setColumns(first, {ColumnRef(0, QStringLiteral("a"))});
    TestGraph::setColumns(second, {ColumnRef(1, QStringLiteral("b"))});
    graph.user.answer = false;
    graph.scene.deleteItems({}, input->downstreamConnections().toList());
    QVERIFY(graph.user.questions.value(0).startsWith(
        QLatin1String("This disconnection may reset 2 column related option(s) downstream. Are "
                      "you sure you want to do that?")));
    QCOMPARE(graph.scene.connections().size(), 2);

    graph.user.answer = true;
    QSignalSpy reminders(&graph.scene, &GraphScene::showTempMessage);
    graph.scene.deleteItems({input});
    QCOMPARE(graph.scene.connections().size(), 1);
    // Connecting again keeps the references; nothing was lost while nothing was connected.
    graph.scene.undo();
    QCOMPARE(TestGraph::columns(first).value(0).name, QStringLiteral("a"));
    graph.scene.deleteItems({input});
    QCOMPARE(reminders.count(), 1);
}

void TestGraphScene::refusesBlockedExtensions()
{
    TestGraph graph;
    Preferences preferences;
    preferences.blockedInputExtensions = QStringList{QStringLiteral("exe")};
    graph.scene.setPreferences(preferences);
    QSignalSpy warnings(&graph.scene, &GraphScene::showWarningMessage);
    QSignalSpy documents(&graph.scene, &GraphScene::fileOpen);
    graph.scene.addInputs(
        {QStringLiteral("/x/a.EXE"), QStringLiteral("/x/b.json"), QStringLiteral("/x/c.transform")},
        {});
    QCOMPARE(graph.scene.nodeCount(), 1);
    QCOMPARE(graph.scene.inputs().first()->fileType(), FileType::Json);
    QCOMPARE(warnings.value(0).value(0).toString(),
             QStringLiteral("The files extensions of the following are blocked in "
                            "'Preferences>Input Extensions':\n/x/a.EXE"));
    QCOMPARE(documents.value(0).value(0).toString(), QStringLiteral("/x/c.transform"));
}

void TestGraphScene::tellsWhatToSelect()
{
    TestGraph graph;
    Node *input = graph.input();
    QSignalSpy warnings(&graph.scene, &GraphScene::showWarningMessage);
    QVERIFY(!graph.scene.addTransform(std::make_unique<TestTransform>(), {}));
    QCOMPARE(warnings.value(0).value(0).toString(),
             QStringLiteral("No items selected.\nTo add a 'Test' transform you need to first "
                            "select 1 input/transform item in the Center pane."));
    graph.scene.setSelectedNodes({input});
    QVERIFY(!graph.scene.addTransform(std::make_unique<TestTransform>(2, 2), {}));
    QVERIFY(warnings.value(1).value(0).toString().contains(
        QLatin1String("select 2 input/transform items")));
    const TransformNode *added = graph.scene.addTransform(std::make_unique<TestTransform>(), {});
    QVERIFY(added);
    QCOMPARE(added->upstreamNodes(), QList<Node *>{input});
}

void TestGraphScene::otherDateFormatsMarkWhatReadsDates()
{
    TestGraph graph;
    Node *input = graph.input();
    Node *plain = graph.transform({input});
    Node *filter = graph.scene.insert(
        std::make_unique<TransformNode>(TransformCatalogue().create(QStringLiteral("Filter"))));
    graph.scene.connectNodes(input, filter);
    graph.scene.runEngine().run({});
    Preferences preferences = graph.scene.preferences();
    preferences.autoRunDelaySeconds = 2.0;
    graph.scene.setPreferences(preferences);
    QCOMPARE(filter->status(), ItemStatus::UpToDate);
    preferences.dateFormats = QStringList{QStringLiteral("yyyy")};
    graph.scene.setPreferences(preferences);
    QCOMPARE(filter->status(), ItemStatus::NeedsUpdating);
    QCOMPARE(plain->status(), ItemStatus::UpToDate);
}

void TestGraphScene::clearingForgetsAll()
{
    TestGraph graph;
    Node *input = graph.input();
    graph.scene.setSelectedNodes({input});
    graph.scene.addTransform(std::make_unique<TestTransform>(), {});
    graph.scene.document().id = QStringLiteral("x");
    QVERIFY(graph.scene.clear());
    QCOMPARE(dump(graph.scene), QString());
    QVERIFY(!graph.scene.undoStack().canUndo());
    QVERIFY(graph.scene.selectedNodes().isEmpty());
    QVERIFY(graph.scene.document().id.isEmpty());
    QCOMPARE(graph.input()->id(), 1);
}

TW_TEST_CLASS(TestGraphScene)
#include "tst_graphscene.moc"
