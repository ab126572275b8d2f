#include "canvasgeometry.h"
#include "canvasscene.h"
#include "canvasview.h"
#include "connection.h"
#include "documentfile.h"
#include "graphscene.h"
#include "icons.h"
#include "inputnode.h"
#include "nodeitem.h"
#include "outputnode.h"
#include "quickadd.h"
#include "runengine.h"
#include "testsupport.h"
#include "transform.h"
#include "transformcatalogue.h"
#include "transformnode.h"
#include "userinterface.h"

#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QUndoStack>
#include <QUrl>
#include <QWheelEvent>

namespace {

class QuietInterface final : public UserInterface
{
public:
    void log(LogLevel, const QString &) override {}
    void showStatus(const QString &) override {}
    void beep() override {}
    std::optional<double> askForMemory(double, double) override { return {}; }
    bool confirmMultiFile(const QString &) override { return true; }
    bool confirm(const QString &) override { return true; }
    bool askToUseDocumentLocale(const QString &, const QString &) override { return true; }
    bool askForMissingInputs(const QStringList &) override { return false; }
    std::optional<QString> clipboardText() override { return {}; }
    bool setClipboardText(const QString &) override { return false; }
};

/// A view of a graph, with short ways to fill the graph and to use the mouse.
struct Canvas
{
    Canvas()
    {
        graph.document().autoRun = false;
        view.resize(900, 600);
        view.show();
        view.setFocus();
    }

    Node *input(const QPointF &pos)
    {
        auto node = std::make_unique<InputNode>();
        node->setPos(pos);
        return graph.insert(std::move(node));
    }
    Node *transform(const QString &type, const QPointF &pos)
    {
        auto node = std::make_unique<TransformNode>(catalogue.create(type));
        node->setPos(pos);
        return graph.insert(std::move(node));
    }
    Node *output(const QPointF &pos)
    {
        auto node = std::make_unique<OutputNode>();
        node->setPos(pos);
        return graph.insert(std::move(node));
    }
    /// Input, filter and output in a row, connected.
    QList<Node *> chain()
    {
        const QList<Node *> nodes{input({0, 0}), transform(QStringLiteral("Filter"), {240, 0}),
                                  output({480, 0})};
        graph.connectNodes(nodes[0], nodes[1]);
        graph.connectNodes(nodes[1], nodes[2]);
        // A pixel is a scene unit, whatever the font.
        view.setTransform(QTransform());
        view.centerOn(QPointF(324, 32));
        return nodes;
    }

    const CanvasScene &scene() const { return *qobject_cast<CanvasScene *>(view.scene()); }
    NodeItem *item(const Node *node) const { return scene().itemOf(node); }
    QPoint middleOf(const Node *node) const
    {
        return view.mapFromScene(item(node)->cardRect().center());
    }
    QPoint outputPort(const Node *node) const { return view.mapFromScene(item(node)->outputEnd()); }
    QPoint inputPort(const Node *node) const
    {
        return view.mapFromScene(item(node)->inputEnd(0, 1));
    }

    void mouse(QEvent::Type type, const QPoint &pos, Qt::KeyboardModifiers modifiers = {},
               Qt::MouseButton button = Qt::LeftButton)
    {
        const bool isMove = type == QEvent::MouseMove;
        const bool isUp = type == QEvent::MouseButtonRelease;
        QMouseEvent event(type, pos, view.viewport()->mapToGlobal(pos),
                          isMove ? Qt::NoButton : button,
                          isUp ? Qt::MouseButtons() : Qt::MouseButtons(button), modifiers);
        QApplication::sendEvent(view.viewport(), &event);
    }
    void drag(const QPoint &from, const QPoint &to, Qt::KeyboardModifiers modifiers = {},
              Qt::MouseButton button = Qt::LeftButton)
    {
        mouse(QEvent::MouseButtonPress, from, modifiers, button);
        for (int i = 1; i <= 4; ++i) {
            mouse(QEvent::MouseMove, from + (to - from) * i / 4, modifiers, button);
        }
        mouse(QEvent::MouseButtonRelease, to, modifiers, button);
    }
    void click(const QPoint &pos, Qt::KeyboardModifiers modifiers = {})
    {
        mouse(QEvent::MouseButtonPress, pos, modifiers);
        mouse(QEvent::MouseButtonRelease, pos, modifiers);
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&view, key, modifiers);
    }
    QByteArray document() const { return DocumentFile::copyOf(graph.nodes(), graph); }
    QList<Node *> selected() const { return graph.selectedNodes(); }
    QString connections() const
    {
        QStringList list;
        const QList<Connection *> all = graph.connections();
        for (const Connection *connection : all) {
            list.append(
                QStringLiteral("%1-%2").arg(connection->from()->id()).arg(connection->to()->id()));
        }
        return list.join(QLatin1Char(' '));
    }

    QuietInterface user;
    TransformCatalogue catalogue;
    GraphScene graph{&user};
    CanvasView view{&graph};
};

} // namespace

class TestCanvasView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Icons::prepare(); }
    void followsTheModel();
    void buildsAChainByDragging();
    void saysWhyNotConnected();
    void selectsByClickAndRubberBand();
    void movesOncePerDrag();
    void raisesWhatIsTaken();
    void waitsForTheItemInWork();
    void escapeCancelsADrag();
    void alignsAndSnaps();
    void movesByKeys();
    void goesThroughItemsByKeys();
    void deletesAndHeals();
    void deletesAConnection();
    void undoGivesTheSameDocument();
    void pastesCopies();
    void pastesFromAnotherWindow();
    void duplicatesABranch();
    void connectsTheSelection();
    void findsPlaces();
    void zoomsToThePointer();
    void pansByMiddleButtonAndSpace();
    void quickAddFinds_data();
    void quickAddFinds();
    void quickAddAnnouncesWhatWasChosen();
    void takesDrops();
    void speaksOfTheCurrentItem();
    void survivesClearingDuringADrag();
    void growsWithTheFont();
    void nextItem_data();
    void nextItem();
};

void TestCanvasView::followsTheModel()
{
    Canvas canvas;
    QCOMPARE(canvas.scene().nodeItems().size(), 0);
    const QList<Node *> nodes = canvas.chain();
    QCOMPARE(canvas.scene().nodeItems().size(), 3);
    canvas.graph.moveItems({nodes[1]}, {0, 100});
    QCOMPARE(canvas.item(nodes[1])->pos(), QPointF(240, 100));
    canvas.graph.setSelectedNodes({nodes[2]});
    QVERIFY(canvas.item(nodes[2])->isSelected());
    canvas.graph.deleteItems({nodes[1]});
    QCOMPARE(canvas.scene().nodeItems().size(), 2);
    QVERIFY(!canvas.scene().connectionAt({200, 36}));
    canvas.graph.undo();
    QVERIFY(canvas.item(nodes[1]));
    canvas.graph.clear();
    QCOMPARE(canvas.scene().nodeItems().size(), 0);
}

void TestCanvasView::buildsAChainByDragging()
{
    Canvas canvas;
    Node *input = canvas.input({0, 0});
    Node *filter = canvas.transform(QStringLiteral("Filter"), {240, 0});
    Node *output = canvas.output({480, 0});
    canvas.view.fit();
    canvas.drag(canvas.outputPort(input), canvas.middleOf(filter));
    QCOMPARE(canvas.connections(), QStringLiteral("1-2"));
    // Backwards, from the port of the lower item.
    canvas.drag(canvas.inputPort(output) - QPoint(3, 0), canvas.middleOf(filter));
    QCOMPARE(canvas.connections(), QStringLiteral("1-2 2-3"));
    QCOMPARE(canvas.graph.undoStack().count(), 2);
}

void TestCanvasView::saysWhyNotConnected()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    QSignalSpy hints(&canvas.view, &CanvasView::hintChanged);
    canvas.mouse(QEvent::MouseButtonPress, canvas.outputPort(nodes[1]));
    canvas.mouse(QEvent::MouseMove, canvas.middleOf(nodes[1]) + QPoint(0, 90));
    canvas.mouse(QEvent::MouseMove, canvas.middleOf(nodes[0]));
    QString reason;
    canvas.graph.canConnect(nodes[1], nodes[0], &reason);
    QVERIFY(!reason.isEmpty());
    QCOMPARE(hints.last().value(0).toString(), reason);
    canvas.mouse(QEvent::MouseButtonRelease, canvas.middleOf(nodes[0]));
    QCOMPARE(hints.last().value(0).toString(), QString());
    QCOMPARE(canvas.graph.connections().size(), 2);
    QCOMPARE(canvas.item(nodes[0])->opacity(), 1.0);
}

void TestCanvasView::selectsByClickAndRubberBand()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    canvas.click(canvas.middleOf(nodes[0]));
    QCOMPARE(canvas.selected(), QList<Node *>{nodes[0]});
    canvas.click(canvas.middleOf(nodes[2]), Qt::ControlModifier);
    QCOMPARE(canvas.selected().size(), 2);
    canvas.click(canvas.middleOf(nodes[2]), Qt::ControlModifier);
    QCOMPARE(canvas.selected(), QList<Node *>{nodes[0]});

    const QRect card = canvas.view.mapFromScene(canvas.item(nodes[1])->cardRect()).boundingRect();
    canvas.drag(card.topLeft() - QPoint(20, 20), canvas.middleOf(nodes[2]));
    QCOMPARE(canvas.selected().size(), 2);
    QVERIFY(!canvas.selected().contains(nodes[0]));
    canvas.click(QPoint(10, 10));
    QVERIFY(canvas.selected().isEmpty());
    QCOMPARE(canvas.graph.undoStack().count(), 0);
}

void TestCanvasView::movesOncePerDrag()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    canvas.graph.setSelectedNodes({nodes[0], nodes[1]});
    const QPoint from = canvas.middleOf(nodes[0]);
    canvas.drag(from, from + QPoint(-13, 111), Qt::AltModifier);
    QCOMPARE(canvas.graph.undoStack().count(), 1);
    QCOMPARE(nodes[0]->pos(), QPointF(-13, 111));
    QCOMPARE(nodes[1]->pos(), QPointF(227, 111));
    QCOMPARE(nodes[2]->pos(), QPointF(480, 0));
    QCOMPARE(canvas.selected().size(), 2);
    canvas.graph.undo();
    QCOMPARE(canvas.item(nodes[1])->pos(), QPointF(240, 0));
    // A click on one of several selected items selects it alone.
    canvas.click(canvas.middleOf(nodes[0]));
    QCOMPARE(canvas.selected(), QList<Node *>{nodes[0]});
}

void TestCanvasView::raisesWhatIsTaken()
{
    Canvas canvas;
    Node *lower = canvas.input({0, 0});
    Node *upper = canvas.input({60, 30});
    canvas.view.fit();
    const QPoint shared = canvas.view.mapFromScene(QPointF(100, 45));
    canvas.click(canvas.view.mapFromScene(QPointF(10, 10)));
    QCOMPARE(canvas.scene().nodeAt(canvas.view.mapToScene(shared)), canvas.item(lower));
    canvas.click(canvas.view.mapFromScene(QPointF(200, 80)));
    QCOMPARE(canvas.scene().nodeAt(canvas.view.mapToScene(shared)), canvas.item(upper));
}

/// A move during a run is done when the item in hand has ended.
void TestCanvasView::waitsForTheItemInWork()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    bool isTried = false;
    connect(&canvas.graph, &GraphScene::processingStart, this, [&](Node *node) {
        if (node == nodes[1] && !isTried) {
            isTried = true;
            const QPoint from = canvas.middleOf(nodes[2]);
            canvas.drag(from, from + QPoint(20, 90), Qt::AltModifier);
            QCOMPARE(nodes[2]->pos(), QPointF(480, 0));
        }
    });
    canvas.graph.runEngine().run({});
    QVERIFY(isTried);
    QCOMPARE(nodes[2]->pos(), QPointF(500, 90));
    QCOMPARE(canvas.item(nodes[2])->pos(), QPointF(500, 90));
}

void TestCanvasView::escapeCancelsADrag()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    const QPoint from = canvas.middleOf(nodes[1]);
    canvas.mouse(QEvent::MouseButtonPress, from);
    canvas.mouse(QEvent::MouseMove, from + QPoint(50, 80));
    QVERIFY(canvas.item(nodes[1])->pos() != nodes[1]->pos());
    canvas.key(Qt::Key_Escape);
    QCOMPARE(canvas.item(nodes[1])->pos(), nodes[1]->pos());
    canvas.mouse(QEvent::MouseMove, from + QPoint(90, 90));
    canvas.mouse(QEvent::MouseButtonRelease, from + QPoint(90, 90));
    QCOMPARE(nodes[1]->pos(), QPointF(240, 0));
    QCOMPARE(canvas.graph.undoStack().count(), 0);
}

void TestCanvasView::alignsAndSnaps()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    const QPoint from = canvas.middleOf(nodes[1]);
    // Nearly at the height of the others.
    canvas.drag(from, from + QPoint(33, 4));
    QCOMPARE(nodes[1]->pos(), QPointF(273, 0));
    canvas.graph.undo();
    canvas.view.setSnapToGrid(true);
    QVERIFY(canvas.graph.document().snapToGrid);
    canvas.drag(from, from + QPoint(33, 99));
    QCOMPARE(nodes[1]->pos(), QPointF(272, 96));
}

void TestCanvasView::movesByKeys()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    canvas.graph.setSelectedNodes({nodes[1]});
    // One press that repeats is one step of the history.
    QTest::keyPress(&canvas.view, Qt::Key_Down, Qt::ControlModifier);
    QTest::keyPress(&canvas.view, Qt::Key_Down, Qt::ControlModifier);
    QTest::keyRelease(&canvas.view, Qt::Key_Down, Qt::ControlModifier);
    QCOMPARE(nodes[1]->pos(), QPointF(240, 16));
    QCOMPARE(canvas.graph.undoStack().count(), 1);
    canvas.key(Qt::Key_Left, Qt::ControlModifier);
    QCOMPARE(nodes[1]->pos(), QPointF(232, 16));
}

void TestCanvasView::goesThroughItemsByKeys()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    Node *below = canvas.input({0, 200});
    canvas.key(Qt::Key_Right);
    QCOMPARE(canvas.selected(), QList<Node *>{nodes[0]});
    canvas.key(Qt::Key_Right);
    QCOMPARE(canvas.selected(), QList<Node *>{nodes[1]});
    canvas.key(Qt::Key_Left);
    canvas.key(Qt::Key_Down);
    QCOMPARE(canvas.selected(), QList<Node *>{below});
    canvas.key(Qt::Key_Up);
    canvas.key(Qt::Key_Tab);
    QCOMPARE(canvas.selected(), QList<Node *>{nodes[1]});
    canvas.key(Qt::Key_Tab);
    QCOMPARE(canvas.selected(), QList<Node *>{nodes[2]});
    canvas.key(Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(canvas.selected(), QList<Node *>{nodes[1]});

    qRegisterMetaType<Node *>("Node*");
    QSignalSpy edits(&canvas.view, &CanvasView::editRequested);
    canvas.key(Qt::Key_Return);
    QCOMPARE(edits.count(), 1);
    QCOMPARE(edits[0][0].value<Node *>(), nodes[1]);
    canvas.mouse(QEvent::MouseButtonDblClick, canvas.middleOf(nodes[2]));
    QCOMPARE(edits.count(), 2);
}

void TestCanvasView::deletesAndHeals()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    canvas.click(canvas.middleOf(nodes[1]));
    canvas.key(Qt::Key_Delete);
    QCOMPARE(canvas.graph.nodeCount(), 2);
    QVERIFY(canvas.graph.connections().isEmpty());
    canvas.graph.undo();
    canvas.click(canvas.middleOf(nodes[1]));
    canvas.key(Qt::Key_Delete, Qt::ShiftModifier);
    QCOMPARE(canvas.graph.nodeCount(), 2);
    QCOMPARE(canvas.connections(), QStringLiteral("1-3"));
}

void TestCanvasView::deletesAConnection()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    const QPoint between = (canvas.outputPort(nodes[0]) + canvas.inputPort(nodes[1])) / 2;
    canvas.click(between + QPoint(0, 5));
    canvas.key(Qt::Key_Delete);
    QCOMPARE(canvas.connections(), QStringLiteral("2-3"));
    QCOMPARE(canvas.graph.nodeCount(), 3);
}

void TestCanvasView::undoGivesTheSameDocument()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    QList<QByteArray> documents{canvas.document()};
    const auto keep = [&] { documents.append(canvas.document()); };
    const QPoint from = canvas.middleOf(nodes[2]);
    canvas.drag(from, from + QPoint(20, 90));
    keep();
    canvas.drag(canvas.outputPort(nodes[0]), canvas.middleOf(nodes[2]));
    QCOMPARE(canvas.graph.undoStack().count(), 1); // an output takes one input only
    canvas.click(canvas.middleOf(nodes[1]));
    canvas.view.duplicateSelection();
    keep();
    canvas.view.deleteSelectionHealed();
    keep();
    canvas.view.selectAll();
    canvas.view.copySelection();
    canvas.view.paste();
    keep();
    canvas.view.cutSelection();
    keep();
    QCOMPARE(canvas.graph.undoStack().count(), documents.size() - 1);
    for (int i = documents.size() - 2; i >= 0; --i) {
        canvas.graph.undo();
        QCOMPARE(canvas.document(), documents[i]);
    }
    for (int i = 1; i < documents.size(); ++i) {
        canvas.graph.redo();
        QCOMPARE(canvas.document(), documents[i]);
    }
}

void TestCanvasView::pastesCopies()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    canvas.graph.setSelectedNodes({nodes[0], nodes[1]});
    canvas.key(Qt::Key_C, Qt::ControlModifier);
    canvas.key(Qt::Key_V, Qt::ControlModifier);
    const QList<Node *> first = canvas.selected();
    QCOMPARE(first.size(), 2);
    QVERIFY(!first.contains(nodes[0]) && !first.contains(nodes[1]));
    canvas.key(Qt::Key_V, Qt::ControlModifier);
    // Neither upon the original nor upon the first copy.
    QSet<QString> places;
    const QList<Node *> all = canvas.graph.nodes();
    for (const Node *node : all) {
        places.insert(QStringLiteral("%1/%2").arg(node->pos().x()).arg(node->pos().y()));
    }
    QCOMPARE(places.size(), 7);
    QCOMPARE(canvas.connections(), QStringLiteral("1-2 2-3 4-5 6-7"));
}

void TestCanvasView::pastesFromAnotherWindow()
{
    Canvas canvas;
    Canvas other;
    other.chain();
    other.view.selectAll();
    other.view.copySelection();
    // As another process would see it: bytes only.
    const QString format = QStringLiteral("application/x-tabweave-items");
    auto *bytes = new QMimeData;
    bytes->setData(format, QApplication::clipboard()->mimeData()->data(format));
    other.graph.clear();
    QApplication::clipboard()->setMimeData(bytes);
    canvas.view.paste();
    QCOMPARE(canvas.connections(), QStringLiteral("1-2 2-3"));

    QSignalSpy hints(&canvas.view, &CanvasView::hintChanged);
    QApplication::clipboard()->setText(QStringLiteral("a,b"));
    canvas.view.paste();
    QCOMPARE(canvas.graph.nodeCount(), 3);
    QCOMPARE(hints.count(), 1);
    auto *damaged = new QMimeData;
    damaged->setData(format, QByteArrayLiteral("<root"));
    QApplication::clipboard()->setMimeData(damaged);
    canvas.view.paste();
    QCOMPARE(canvas.graph.nodeCount(), 3);
    QVERIFY(!hints.last().value(0).toString().isEmpty());
}

void TestCanvasView::duplicatesABranch()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    canvas.graph.setSelectedNodes({nodes[1]});
    canvas.view.duplicateSelection();
    QCOMPARE(canvas.graph.nodeCount(), 5);
    QCOMPARE(canvas.selected().size(), 2);
    QVERIFY(!canvas.selected().contains(nodes[1]));
}

void TestCanvasView::connectsTheSelection()
{
    Canvas canvas;
    canvas.transform(QStringLiteral("Join"), {300, 50});
    canvas.input({0, 0});
    canvas.input({0, 100});
    QSignalSpy hints(&canvas.view, &CanvasView::hintChanged);
    canvas.view.connectSelection();
    QCOMPARE(hints.count(), 1);
    canvas.view.selectAll();
    canvas.view.connectSelection();
    QCOMPARE(canvas.connections(), QStringLiteral("2-1 3-1"));
    canvas.view.connectSelection();
    QCOMPARE(hints.count(), 2);
}

void TestCanvasView::findsPlaces()
{
    Canvas canvas;
    const auto isFree = [&canvas](const QPointF &place) {
        const QRectF card(place, canvas.scene().canvasStyle().card);
        const QVector<QRectF> taken = canvas.scene().cardRects();
        return std::none_of(taken.begin(), taken.end(),
                            [&card](const QRectF &rect) { return rect.intersects(card); });
    };
    QList<Node *> inputs;
    for (int i = 0; i < 12; ++i) {
        const QPointF place = canvas.view.placeForInput();
        QVERIFY(isFree(place));
        inputs.append(canvas.input(place));
        QCOMPARE(place.x(), inputs[0]->pos().x());
    }
    for (int i = 0; i < 4; ++i) {
        const QPointF place = canvas.view.placeBeside({inputs[0], inputs[1]});
        QVERIFY(isFree(place));
        QVERIFY(place.x() > canvas.item(inputs[0])->cardRect().right());
        canvas.transform(QStringLiteral("Join"), place);
    }
}

void TestCanvasView::zoomsToThePointer()
{
    Canvas canvas;
    canvas.chain();
    const QPoint pointer(200, 150);
    const QPointF under = canvas.view.mapToScene(pointer);
    for (const int turn : {120, 120, -120, 360, -840}) {
        const double before = canvas.view.zoom();
        QWheelEvent event(pointer, canvas.view.viewport()->mapToGlobal(pointer), {}, {0, turn},
                          Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(canvas.view.viewport(), &event);
        QVERIFY((canvas.view.zoom() > before) == (turn > 0));
        const QPointF way = canvas.view.mapToScene(pointer) - under;
        QVERIFY(way.manhattanLength() * canvas.view.zoom() <= 4.0);
    }
    canvas.view.resetZoom();
    QCOMPARE(canvas.view.zoom(), 1.0);
    for (int i = 0; i < 50; ++i) {
        canvas.view.zoomOut();
    }
    QVERIFY(canvas.view.zoom() >= 0.0299);
}

void TestCanvasView::pansByMiddleButtonAndSpace()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    const QPoint before = canvas.middleOf(nodes[0]);
    canvas.drag({300, 300}, {360, 320}, {}, Qt::MiddleButton);
    QCOMPARE(canvas.middleOf(nodes[0]), before + QPoint(60, 20));
    // With space also when the pointer is on an item; then no box is opened.
    QTest::keyPress(&canvas.view, Qt::Key_Space);
    canvas.drag(canvas.middleOf(nodes[0]), before);
    QTest::keyRelease(&canvas.view, Qt::Key_Space);
    QCOMPARE(canvas.middleOf(nodes[0]), before);
    QVERIFY(canvas.view.findChildren<QuickAdd *>().isEmpty());
    QCOMPARE(canvas.graph.undoStack().count(), 0);
}

void TestCanvasView::quickAddFinds_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("first");
    QTest::newRow("name") << "filt"
                          << "Filter";
    QTest::newRow("search word") << "denormal"
                                 << "Join";
    QTest::newRow("other kind") << "note"
                                << "+note";
    QTest::newRow("upper case") << "SORT"
                                << "Sort";
    QTest::newRow("nothing") << "qqqq"
                             << "";
}

void TestCanvasView::quickAddFinds()
{
    QFETCH(QString, typed);
    QFETCH(QString, first);
    const TransformCatalogue catalogue;
    QuickAdd box(catalogue, false);
    box.openAt({0, 0});
    QTest::keyClicks(box.findChild<QLineEdit *>(), typed);
    const auto *list = box.findChild<QListWidget *>();
    QCOMPARE(list->item(0)->data(Qt::UserRole).toString(), first);
}

void TestCanvasView::quickAddAnnouncesWhatWasChosen()
{
    Canvas canvas;
    QSignalSpy transforms(&canvas.view, &CanvasView::transformWanted);
    QSignalSpy notes(&canvas.view, &CanvasView::noteWanted);
    const auto type = [&canvas](const QString &text) {
        canvas.key(Qt::Key_Space);
        auto *box = canvas.view.findChild<QuickAdd *>();
        QVERIFY(box);
        auto *edit = box->findChild<QLineEdit *>();
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, Qt::Key_Return);
        QVERIFY(!box->isVisible());
        delete box;
    };
    type(QStringLiteral("filter"));
    QCOMPARE(transforms.count(), 1);
    QCOMPARE(transforms[0][0].toString(), QStringLiteral("Filter"));
    type(QStringLiteral("note"));
    QCOMPARE(notes.count(), 1);
}

void TestCanvasView::takesDrops()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    QSignalSpy files(&canvas.view, &CanvasView::filesDropped);
    QSignalSpy transforms(&canvas.view, &CanvasView::transformWanted);
    Connection *insertedOn = nullptr;
    connect(&canvas.view, &CanvasView::transformWantedOn, this,
            [&insertedOn](const QString &, Connection *connection) { insertedOn = connection; });
    const auto drop = [&canvas](const QMimeData &data, const QPoint &pos) {
        QDragEnterEvent enter(pos, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(canvas.view.viewport(), &enter);
        QDropEvent event(pos, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(canvas.view.viewport(), &event);
        return enter.isAccepted();
    };
    QMimeData urls;
    urls.setUrls({QUrl::fromLocalFile(QStringLiteral("/data/a.csv")),
                  QUrl(QStringLiteral("https://example.org/b.csv"))});
    QVERIFY(drop(urls, {10, 10}));
    QCOMPARE(files.count(), 1);
    QCOMPARE(files[0][0].toStringList(), QStringList{QStringLiteral("/data/a.csv")});

    QMimeData transform;
    transform.setData(QStringLiteral("application/x-tabweave-transform"),
                      QByteArrayLiteral("Sort"));
    QVERIFY(drop(transform, {10, 10}));
    QCOMPARE(transforms.count(), 1);
    QVERIFY(drop(transform, (canvas.outputPort(nodes[0]) + canvas.inputPort(nodes[1])) / 2));
    QVERIFY(insertedOn);
    QCOMPARE(insertedOn, canvas.graph.connections().first());

    // On an item: beside it, with that item as the input.
    QVERIFY(drop(transform, canvas.middleOf(nodes[0])));
    QCOMPARE(canvas.selected(), QList<Node *>{nodes[0]});
    QVERIFY(transforms.last()[1].toPointF().x() > canvas.item(nodes[0])->cardRect().right());

    QMimeData text;
    text.setText(QStringLiteral("a"));
    QVERIFY(!drop(text, {10, 10}));
}

void TestCanvasView::speaksOfTheCurrentItem()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    QVERIFY(!canvas.view.accessibleName().isEmpty());
    canvas.key(Qt::Key_Right);
    canvas.key(Qt::Key_Right);
    const QString spoken = canvas.view.accessibleDescription();
    for (const QString &part : {nodes[1]->displayName(), itemStatusText(nodes[1]->status()),
                                nodes[0]->displayName(), nodes[2]->displayName()}) {
        QVERIFY2(spoken.contains(part), qPrintable(spoken));
    }
    canvas.graph.deleteItems({nodes[1]});
    QVERIFY(!canvas.view.accessibleDescription().contains(QStringLiteral("Filter")));
}

void TestCanvasView::survivesClearingDuringADrag()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    canvas.mouse(QEvent::MouseButtonPress, canvas.middleOf(nodes[1]));
    canvas.mouse(QEvent::MouseMove, canvas.middleOf(nodes[1]) + QPoint(60, 60));
    QVERIFY(canvas.scene().isDragging());
    canvas.graph.clear();
    QVERIFY(!canvas.scene().isDragging());
    canvas.mouse(QEvent::MouseMove, {400, 300});
    canvas.mouse(QEvent::MouseButtonRelease, {400, 300});
    canvas.chain();
    QCOMPARE(canvas.scene().nodeItems().size(), 3);
}

/// Cards keep their places and sizes in the document, whatever the font.
void TestCanvasView::growsWithTheFont()
{
    Canvas canvas;
    const QList<Node *> nodes = canvas.chain();
    const QRectF card = canvas.item(nodes[1])->cardRect();
    canvas.view.resetZoom();
    const double before = canvas.view.transform().m11();
    QFont font = canvas.view.font();
    font.setPointSizeF(font.pointSizeF() * 2);
    canvas.view.setFont(font);
    QCOMPARE(canvas.item(nodes[1])->cardRect(), card);
    QCOMPARE(canvas.view.zoom(), 1.0);
    QVERIFY(canvas.view.transform().m11() > 1.7 * before);
}

void TestCanvasView::nextItem_data()
{
    QTest::addColumn<int>("direction");
    QTest::addColumn<int>("next");
    using CanvasGeometry::Direction;
    QTest::newRow("right, straight before nearer") << int(Direction::Right) << 1;
    QTest::newRow("down") << int(Direction::Down) << 3;
    QTest::newRow("nothing above") << int(Direction::Up) << -1;
    QTest::newRow("nothing at the left") << int(Direction::Left) << -1;
}

void TestCanvasView::nextItem()
{
    QFETCH(int, direction);
    QFETCH(int, next);
    const QVector<QPointF> points{{0, 0}, {240, 0}, {200, 120}, {10, 300}};
    QCOMPARE(CanvasGeometry::neighbour(points, 0, CanvasGeometry::Direction(direction)), next);
}

TW_TEST_CLASS(TestCanvasView)
#include "tst_canvasview.moc"
