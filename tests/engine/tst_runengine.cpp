#include "testgraph.h"
#include "testsupport.h"

#include "connection.h"
#include "memoryceiling.h"
#include "runengine.h"
#include "runqueue.h"

#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <new>

Q_DECLARE_METATYPE(RunMode)

namespace {

/// Ids in the order in which a run processed them.
class Order : public QObject
{
public:
    explicit Order(GraphScene *scene)
    {
        connect(scene, &GraphScene::processingStart, this,
                [this](const Node *node) { ids.append(node->id()); });
    }
    QList<int> ids;
};

/// Ids of the pending items in the order in which plain passes over the list process them.
QList<int> passOrder(QList<Node *> pending)
{
    QList<int> ids;
    QSet<const Node *> waiting(pending.begin(), pending.end());
    bool progress = true;
    while (progress && !pending.isEmpty()) {
        progress = false;
        for (int i = 0; i < pending.size();) {
            const QList<Node *> above = pending[i]->upstreamNodes();
            const bool blocked = std::any_of(above.begin(), above.end(), [&](const Node *each) {
                return waiting.contains(each);
            });
            if (blocked) {
                ++i;
                continue;
            }
            waiting.remove(pending[i]);
            ids.append(pending.takeAt(i)->id());
            progress = true;
        }
    }
    return ids;
}

bool matches(const QString &text, const QString &pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

QString content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

class TestRunEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { RunEngine::clearStop(); }
    void cleanup();
    void nothingPending();
    void logLines();
    void warningsAreListed();
    void wrongInputCount_data();
    void wrongInputCount();
    void chainRunsFromAbove();
    void laterItemsAndHigherOnesComeFirst();
    void passOrderOfRandomGraphs_data();
    void passOrderOfRandomGraphs();
    void modesMark_data();
    void modesMark();
    void failuresGoDownstream();
    void errorsAreRetried();
    void stoppingBetweenItems();
    void stoppingInsideAnItem();
    void deletingDuringARun();
    void undoingDuringARun();
    void editingTheItemInHand();
    void editingAnItemAlreadyDone();
    void startingARunDuringARun();
    void automaticRunsAreWantedAfterEdits();
    void tablesAreLetGo();
    void leftOutItems();
    void memoryCeiling_data();
    void memoryCeiling();
    void exhaustedMemoryIsTheItemsError();
    void columnsFollowNames();
    void progressIsThinnedOut();
    void outputsWithoutUpstream();
};

void TestRunEngine::cleanup()
{
    RunEngine::clearStop();
    MemoryCeiling::pretendInUseGb(-1.0);
}

void TestRunEngine::nothingPending()
{
    TestGraph graph;
    graph.scene.insert(std::make_unique<NoteNode>());
    const RunResult result = graph.scene.runEngine().run({});
    QCOMPARE(result.pending, 0);
    QCOMPARE(graph.user.lines.size(), 2);
    QVERIFY(graph.user.lines[0].startsWith(QLatin1String("Started run at: ")));
    QVERIFY(graph.user.lines[1].startsWith(QLatin1String("Ended run at: ")));
}

void TestRunEngine::logLines()
{
    TestGraph graph;
    InputNode *input = graph.input();
    input->setName(QStringLiteral("50%2.csv"));
    graph.transform({input});
    Preferences preferences;
    preferences.soundWhenCompleted = true;
    graph.scene.setPreferences(preferences);
    graph.scene.runEngine().run({});
    const QStringList &lines = graph.user.lines;
    const QString seconds = QStringLiteral("<?[0-9.]+ second\\(s\\)");
    QCOMPARE(lines.size(), 5);
    QVERIFY2(matches(lines[1], QStringLiteral("  Processed Input '50%2.csv' Id=1 \\(2 cols x 2 "
                                              "rows\\) in %1 \\[Delimited text\\], Up to date")
                                   .arg(seconds)),
             qPrintable(lines[1]));
    QVERIFY2(matches(lines[2], QStringLiteral("  Processed Transform 'Test' Id=2 \\(2 cols x 2 "
                                              "rows\\) in %1 \\[handed on\\], Up to date")
                                   .arg(seconds)),
             qPrintable(lines[2]));
    QVERIFY2(matches(lines[4], QStringLiteral("2 item\\(s\\) processed in %1").arg(seconds)),
             qPrintable(lines[4]));
    QVERIFY(graph.user.statusTexts.contains(QStringLiteral("Processing '50%2.csv'")));
    QCOMPARE(graph.user.beeps, 1);
}

void TestRunEngine::warningsAreListed()
{
    TestGraph graph;
    graph.missingInput();
    graph.transform();
    const RunResult result = graph.scene.runEngine().run({});
    QCOMPARE(result.errors, 2);
    QCOMPARE(result.withWarnings, 2);
    const QStringList &lines = graph.user.lines;
    QCOMPARE(lines.filter(QRegularExpression(QStringLiteral(", Error - has warnings$"))).size(), 2);
    QVERIFY(lines.contains(QStringLiteral("Test: 1 upstream connection expected")));
    QCOMPARE(lines.filter(QRegularExpression(QStringLiteral("^missing.csv: "))).size(), 1);
    QCOMPARE(lines.last(), QStringLiteral("2 item(s) with warnings\n"));
}

void TestRunEngine::wrongInputCount_data()
{
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("warning");
    const int any = TestGraph::anyNumber;
    QTest::newRow("1 of 2") << 2 << 2 << 1 << QStringLiteral("2 upstream connections expected");
    QTest::newRow("0 of 1") << 1 << 1 << 0 << QStringLiteral("1 upstream connection expected");
    QTest::newRow("1 of 2 or more")
        << 2 << any << 1 << QStringLiteral("At least 2 upstream connections expected");
    QTest::newRow("2 of 2") << 2 << 2 << 2 << QString();
    QTest::newRow("3 of 1 or more") << 1 << any << 3 << QString();
}

void TestRunEngine::wrongInputCount()
{
    QFETCH(int, minimum);
    QFETCH(int, maximum);
    QFETCH(int, count);
    QFETCH(QString, warning);
    TestGraph graph;
    QList<Node *> inputs;
    for (int i = 0; i < count; ++i) {
        inputs.append(graph.input());
    }
    const Node *node = graph.transform(inputs, minimum, maximum);
    graph.scene.runEngine().run({});
    QCOMPARE(node->warnings().join(QLatin1Char(';')), warning);
    QCOMPARE(node->status(), warning.isEmpty() ? ItemStatus::UpToDate : ItemStatus::Error);
    QCOMPARE(node->dataset().hasColumns(), warning.isEmpty());
}

void TestRunEngine::chainRunsFromAbove()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("out.csv"));
    TestGraph graph;
    Node *output = graph.output(nullptr, path);
    Node *transform = graph.transform();
    Node *input = graph.input();
    graph.scene.connectNodes(transform, output);
    graph.scene.connectNodes(input, transform);
    const Order order(&graph.scene);
    graph.scene.runEngine().run({});
    QCOMPARE(order.ids, (QList<int>{input->id(), transform->id(), output->id()}));
    QCOMPARE(output->status(), ItemStatus::UpToDate);
    QCOMPARE(content(path), QStringLiteral("a,b\r\n1,2\r\n3,4\r\n"));
}

void TestRunEngine::laterItemsAndHigherOnesComeFirst()
{
    TestGraph graph;
    Node *first = graph.input();
    Node *second = graph.input();
    Node *raised = graph.input();
    Node *last = graph.input();
    raised->setStackingOrder(1);
    const Order order(&graph.scene);
    graph.scene.runEngine().run({});
    QCOMPARE(order.ids, (QList<int>{raised->id(), last->id(), second->id(), first->id()}));
}

void TestRunEngine::passOrderOfRandomGraphs_data()
{
    QTest::addColumn<int>("seed");
    for (int seed = 1; seed <= 20; ++seed) {
        QTest::addRow("seed %d", seed) << seed;
    }
}

void TestRunEngine::passOrderOfRandomGraphs()
{
    QFETCH(int, seed);
    QRandomGenerator random{quint32(seed)};
    TestGraph graph;
    QList<Node *> nodes;
    for (int i = 0; i < 40; ++i) {
        nodes.append(random.bounded(3) == 0 ? static_cast<Node *>(graph.input())
                                            : graph.transform({}, 1, TestGraph::anyNumber));
        nodes.last()->setStackingOrder(random.bounded(3));
    }
    for (int i = 0; i < 80; ++i) {
        graph.scene.connectNodes(nodes[random.bounded(40)], nodes[random.bounded(40)]);
    }
    const QList<int> expected = passOrder(graph.scene.nodes());
    const Order order(&graph.scene);
    graph.scene.runEngine().run({});
    QCOMPARE(order.ids, expected);
    QCOMPARE(order.ids.size(), 40);
}

void TestRunEngine::modesMark_data()
{
    QTest::addColumn<RunMode>("mode");
    QTest::addColumn<QString>("processed");
    QTest::newRow("all") << RunMode::All << QStringLiteral("input upper lower broken alone");
    QTest::newRow("changed") << RunMode::Changed << QStringLiteral("broken alone");
    QTest::newRow("selected") << RunMode::Selected << QStringLiteral("upper lower broken alone");
    QTest::newRow("batch") << RunMode::Batch << QStringLiteral("input upper lower broken alone");
}

void TestRunEngine::modesMark()
{
    QFETCH(RunMode, mode);
    QFETCH(QString, processed);
    TestGraph graph;
    QMap<QString, Node *> nodes;
    nodes[QStringLiteral("input")] = graph.input();
    nodes[QStringLiteral("upper")] = graph.transform({nodes[QStringLiteral("input")]});
    nodes[QStringLiteral("lower")] = graph.transform({nodes[QStringLiteral("upper")]});
    nodes[QStringLiteral("broken")] = graph.missingInput();
    graph.scene.runEngine().run({});
    nodes[QStringLiteral("alone")] = graph.input();
    graph.scene.setSelectedNodes({nodes[QStringLiteral("upper")]});

    Order order(&graph.scene);
    graph.scene.runEngine().run({mode, {}, false});
    QSet<int> expected;
    const QStringList names = processed.split(QLatin1Char(' '));
    for (const QString &name : names) {
        expected.insert(nodes[name]->id());
    }
    QCOMPARE(QSet<int>(order.ids.begin(), order.ids.end()), expected);
}

void TestRunEngine::failuresGoDownstream()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("out.csv"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("good");
    file.close();

    TestGraph graph;
    Node *missing = graph.missingInput();
    Node *good = graph.input();
    Node *stack = graph.transform({good, missing}, 1, TestGraph::anyNumber);
    Node *output = graph.output(stack, path);
    graph.scene.runEngine().run({});
    QCOMPARE(missing->status(), ItemStatus::Error);
    // A part of the data must not pass for all of it.
    QCOMPARE(stack->status(), ItemStatus::Error);
    QCOMPARE(stack->warnings(), QStringList{QStringLiteral("Input 'missing.csv' has an error.")});
    QCOMPARE(output->status(), ItemStatus::Error);
    QCOMPARE(output->warnings(),
             QStringList{QStringLiteral("Input 'Test' has an error, nothing written.")});
    QCOMPARE(content(path), QStringLiteral("good"));
}

void TestRunEngine::errorsAreRetried()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("in.csv"));
    TestGraph graph;
    InputNode *input = graph.missingInput(path);
    Node *below = graph.transform({input});
    TestGraph::setColumns(qobject_cast<TransformNode *>(below),
                          {ColumnRef(0, QStringLiteral("a"))});
    graph.scene.runEngine().run({});
    QCOMPARE(below->status(), ItemStatus::Error);

    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("a\n1\n");
    file.close();
    graph.scene.runEngine().run({RunMode::Selected, {}, false});
    QCOMPARE(input->status(), ItemStatus::UpToDate);
    QCOMPARE(below->status(), ItemStatus::UpToDate);
    QCOMPARE(below->warnings(), QStringList());
}

void TestRunEngine::stoppingBetweenItems()
{
    TestGraph graph;
    Node *input = graph.input();
    Node *below = graph.transform({input});
    connect(&graph.scene, &GraphScene::processingEnd, this, [] { RunEngine::requestStop(); });
    const RunResult result = graph.scene.runEngine().run({});
    QVERIFY(result.stopped);
    QCOMPARE(result.processed, 1);
    QCOMPARE(graph.user.lines.count(QStringLiteral("  Stopped by user")), 1);
    QCOMPARE(below->status(), ItemStatus::NeedsUpdating);

    graph.scene.disconnect(this);
    RunEngine::clearStop();
    QCOMPARE(graph.scene.runEngine().run({RunMode::Changed, {}, false}).processed, 1);
    QCOMPARE(below->status(), ItemStatus::UpToDate);
}

void TestRunEngine::stoppingInsideAnItem()
{
    bool stop = false;
    TestGraph graph;
    Node *input = graph.input();
    TransformNode *node = graph.transform({input}, 1, 1, [&stop] {
        if (stop) {
            RunEngine::requestStop();
        }
    });
    graph.scene.runEngine().run({});
    const Dataset before = node->dataset();
    QVERIFY(before.hasRows());
    graph.user.lines.clear();

    stop = true;
    const RunResult result = graph.scene.runEngine().run({});
    QVERIFY(result.stopped);
    QCOMPARE(result.processed, 1);
    QCOMPARE(node->status(), ItemStatus::NeedsUpdating);
    QCOMPARE(node->dataset(), before);
    QCOMPARE(graph.user.lines.filter(QStringLiteral("Processed Transform")).size(), 0);
    QCOMPARE(graph.user.lines.count(QStringLiteral("  Stopped by user")), 1);
    QCOMPARE(graph.user.beeps, 0);
}

void TestRunEngine::deletingDuringARun()
{
    TestGraph graph;
    Node *input = graph.input();
    Node *first = graph.transform({input});
    Node *second = graph.transform({first});
    const int firstId = first->id();
    const int secondId = second->id();
    bool done = false;
    connect(&graph.scene, &GraphScene::processed, this, [&](Node *node) {
        if (node == first && !done) {
            done = true;
            // Everything that the run stands on goes, and what is kept must not name it any more.
            graph.scene.deleteItems({input, first, second});
            graph.scene.moveItems({first}, {1, 1});
            graph.scene.duplicateBranch({second});
            QVERIFY(!graph.scene.addNote({}, QStringLiteral("later")));
            QCOMPARE(graph.scene.nodeCount(), 3);
            QVERIFY(!graph.scene.clear());
        }
    });
    const RunResult result = graph.scene.runEngine().run({});
    QVERIFY(done);
    QCOMPARE(result.processed, 2);
    QCOMPARE(graph.scene.nodeCount(), 1);
    QCOMPARE(graph.scene.notes().first()->comment(), QStringLiteral("later"));
    graph.scene.undo();
    graph.scene.undo();
    QCOMPARE(graph.scene.nodeCount(), 3);
    QVERIFY(graph.scene.node(firstId) && graph.scene.node(secondId));
}

void TestRunEngine::undoingDuringARun()
{
    TestGraph graph;
    Node *input = graph.input();
    graph.scene.setSelectedNodes({input});
    Node *added = graph.scene.addTransform(std::make_unique<TestTransform>(), {});
    bool done = false;
    connect(&graph.scene, &GraphScene::processed, this, [&](Node *node) {
        if (node == added && !done) {
            done = true;
            graph.scene.undo();
            // Drops the undone command, and with it the item in hand.
            graph.scene.addNote({}, QStringLiteral("later"));
            graph.scene.editComment(added, QStringLiteral("too late"));
            graph.scene.moveItems({added}, {1, 1});
        }
    });
    graph.scene.runEngine().run({});
    QVERIFY(done);
    QCOMPARE(graph.scene.transforms().size(), 0);
    QCOMPARE(graph.scene.notes().size(), 1);
}

void TestRunEngine::editingTheItemInHand()
{
    TestGraph graph;
    Node *input = graph.input();
    bool edited = false;
    TransformNode *node = nullptr;
    node = graph.transform({input}, 1, 1, [&] {
        if (!edited) {
            edited = true;
            graph.scene.editParameter(node, QStringLiteral("Text"), QStringLiteral("new"));
            QCOMPARE(node->transform().parameter(QStringLiteral("Text"))->value.toString(),
                     QStringLiteral("new"));
            QCOMPARE(node->status(), ItemStatus::Updating);
        }
    });
    Node *below = graph.transform({node});
    const Order order(&graph.scene);
    const RunResult result = graph.scene.runEngine().run({});
    QCOMPARE(order.ids, (QList<int>{input->id(), node->id(), node->id(), below->id()}));
    QCOMPARE(result.processed, 4);
    QCOMPARE(below->status(), ItemStatus::UpToDate);
}

void TestRunEngine::editingAnItemAlreadyDone()
{
    TestGraph graph;
    InputNode *input = graph.input();
    bool edited = false;
    TransformNode *node = graph.transform({input}, 1, 1, [&] {
        if (!edited) {
            edited = true;
            InputOptions options = input->options();
            options.text = QStringLiteral("a\n9\n");
            graph.scene.editOptions(input, options, QStringLiteral("Text"));
        }
    });
    graph.scene.runEngine().run({});
    QCOMPARE(node->dataset().cell(RowIndex(0), ColIndex(0)), QStringLiteral("9"));
    QCOMPARE(node->status(), ItemStatus::UpToDate);
}

void TestRunEngine::startingARunDuringARun()
{
    TestGraph graph;
    Node *input = graph.input();
    bool refused = false;
    graph.transform({input}, 1, 1, [&] { refused = !graph.scene.runEngine().run({}).started; });
    QCOMPARE(graph.scene.runEngine().run({}).processed, 2);
    QVERIFY(refused);
}

void TestRunEngine::automaticRunsAreWantedAfterEdits()
{
    TestGraph graph;
    Node *input = graph.input();
    TransformNode *node = graph.transform({input});
    graph.scene.document().autoRun = true;
    QSignalSpy wanted(&graph.scene, &GraphScene::autoRunWanted);
    graph.scene.editComment(node, QStringLiteral("no matter"));
    graph.scene.addNote({}, QStringLiteral("no matter"));
    QCOMPARE(wanted.count(), 0);
    graph.scene.editParameter(node, QStringLiteral("Text"), QStringLiteral("x"));
    QCOMPARE(wanted.count(), 1);
    graph.scene.undo();
    QCOMPARE(wanted.count(), 2);
    // During a run it is told at the end.
    connect(&graph.scene, &GraphScene::processingStart, this, [&](const Node *started) {
        if (started == input) {
            graph.scene.deleteItems({}, input->downstreamConnections().toList());
            QCOMPARE(wanted.count(), 2);
        }
    });
    graph.scene.runEngine().run({});
    QCOMPARE(wanted.count(), 3);
}

void TestRunEngine::tablesAreLetGo()
{
    TestGraph graph;
    Node *input = graph.input();
    Node *first = graph.transform({input});
    Node *late = graph.transform({first});
    Node *last = graph.transform({input});
    RunOptions options;
    options.mode = RunMode::Batch;
    options.nobodyWatches = true;
    int held = 0;
    connect(&graph.scene, &GraphScene::processingEnd, this,
            [&] { held = std::max(held, input->dataset().rowCount()); });
    graph.scene.runEngine().run(options);
    QCOMPARE(held, 2);
    QVERIFY(input->hasReleasedDataset() && first->hasReleasedDataset());
    QVERIFY(!late->dataset().isEmpty() && !last->dataset().isEmpty());
    QCOMPARE(input->sizeLabel(), QStringLiteral("2 cols x 2 rows"));

    // An item that runs again brings back what it needs.
    last->setStatus(ItemStatus::NeedsUpdating, true);
    const Order order(&graph.scene);
    graph.scene.runEngine().run({RunMode::Changed, {}, false});
    QCOMPARE(last->status(), ItemStatus::UpToDate);
    QCOMPARE(last->dataset().rowCount(), 2);
    QVERIFY(order.ids.contains(input->id()));
}

void TestRunEngine::leftOutItems()
{
    TestGraph graph;
    Node *input = graph.input();
    Node *unused = graph.input();
    Node *upper = graph.transform({unused});
    Node *off = graph.output(upper, QStringLiteral("/nowhere/off.csv"));
    Node *shared = graph.transform({input, unused}, 1, TestGraph::anyNumber);
    Node *below = graph.transform({shared});
    const Order order(&graph.scene);
    // The output alone: what feeds only it is not needed either, the rest is.
    QCOMPARE(graph.scene.runEngine().run({RunMode::Batch, {off->id()}, false}).processed, 4);
    QVERIFY(!order.ids.contains(upper->id()) && !order.ids.contains(off->id()));
    // An input: what is below it cannot run, and nothing waits for ever.
    const RunResult result = graph.scene.runEngine().run({RunMode::Batch, {unused->id()}, false});
    QCOMPARE(result.processed, 0);
    QVERIFY(!result.stopped);
    Q_UNUSED(below)
}

void TestRunEngine::memoryCeiling_data()
{
    QTest::addColumn<double>("answer");
    QTest::addColumn<bool>("exceeded");
    QTest::newRow("exit") << 0.0 << true;
    QTest::newRow("increase") << 2000.0 << false;
}

void TestRunEngine::memoryCeiling()
{
    QFETCH(double, answer);
    QFETCH(bool, exceeded);
    const double limit = MemoryCeiling::limitGb();
    TestGraph graph;
    if (answer > 0.0) {
        graph.user.memoryAnswer = answer;
    }
    Node *input = graph.input();
    Node *node = graph.transform({input}, 1, 1, [] { MemoryCeiling::pretendInUseGb(1000.0); });
    QSignalSpy completed(&graph.scene, &GraphScene::completedTransforms);
    const RunResult result = graph.scene.runEngine().run({});
    MemoryCeiling::setLimitGb(limit);
    QCOMPARE(result.memoryExceeded, exceeded);
    QCOMPARE(graph.user.memoryQuestions, 1);
    QCOMPARE(node->status(), exceeded ? ItemStatus::NeedsUpdating : ItemStatus::UpToDate);
    QCOMPARE(completed.count(), 1);
    QVERIFY(!graph.scene.isRunning());
    if (exceeded) {
        QCOMPARE(result.memoryUsedGb, 1000.0);
    }
}

void TestRunEngine::exhaustedMemoryIsTheItemsError()
{
    TestGraph graph;
    Node *input = graph.input();
    Node *node = graph.transform({input}, 1, 1, [] { throw std::bad_alloc(); });
    const RunResult result = graph.scene.runEngine().run({});
    QCOMPARE(node->status(), ItemStatus::Error);
    QVERIFY(!node->warnings().isEmpty());
    QCOMPARE(result.processed, 2);
}

void TestRunEngine::columnsFollowNames()
{
    TestGraph graph;
    InputNode *input = graph.input(QStringLiteral("a,b\n1,2\n"));
    TransformNode *node = graph.transform({input});
    TestGraph::setColumns(node, {ColumnRef(0), ColumnRef(1)});
    const auto runWith = [&](const char *text) {
        InputOptions options = input->options();
        options.text = QString::fromLatin1(text);
        input->setOptions(options);
        graph.scene.runEngine().run({RunMode::Changed, {}, false});
    };
    graph.scene.runEngine().run({});
    QCOMPARE(TestGraph::columns(node).value(1).name, QStringLiteral("b"));
    runWith("b,x,a\n1,2,3\n");
    QCOMPARE(TestGraph::columns(node).value(0).number, 2);
    QCOMPARE(TestGraph::columns(node).value(1).number, 0);
    QCOMPARE(node->warnings(), QStringList());
    runWith("x,a\n1,2\n");
    QCOMPARE(node->warnings(), QStringList{QStringLiteral("Column 'b' not found.")});
    QVERIFY(!TestGraph::columns(node).value(1).isBound());
    runWith("b\n1\n");
    QVERIFY(TestGraph::columns(node).value(1).isBound());
    // An empty table tells nothing of the columns.
    runWith("");
    QVERIFY(TestGraph::columns(node).value(1).isBound());
}

void TestRunEngine::progressIsThinnedOut()
{
    TestGraph graph;
    Node *input = graph.input();
    QVector<double> shown;
    connect(&graph.scene, &GraphScene::processed, this, [&](const Node *node, double fraction) {
        if (node != input) {
            shown.append(fraction);
        }
    });
    graph.transform({input});
    graph.scene.runEngine().run({});
    QVERIFY(shown.contains(0.0));
    QCOMPARE(shown.last(), 1.0);
    // The steps in between come within the same 250 ms.
    QVERIFY2(shown.size() <= 4, qPrintable(QString::number(shown.size())));
}

void TestRunEngine::outputsWithoutUpstream()
{
    TestGraph graph;
    const Node *output = graph.output(nullptr, QStringLiteral("/nowhere/out.csv"));
    graph.scene.runEngine().run({});
    QCOMPARE(output->status(), ItemStatus::UpToDate);
    QCOMPARE(output->information(),
             QStringList{QStringLiteral("No transforms or inputs connected")});
    QCOMPARE(output->warnings(), QStringList());
}

TW_TEST_CLASS(TestRunEngine)
#include "tst_runengine.moc"
