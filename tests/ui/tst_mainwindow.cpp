#include "inputnode.h"
#include "leftpane.h"
#include "outputnode.h"
#include "transform.h"
#include "transformbutton.h"
#include "transformnode.h"
#include "windowtools.h"

#include <QAccessible>
#include <QLineEdit>
#include <QMimeData>
#include <QRandomGenerator>
#include <QUndoStack>

namespace {

const QByteArray people = "name,age\nAnn,34\nBob,27\nCid,51\n";

/// Adds input, Filter and output by the window's means, and answers what comes last.
OutputNode *makeChain(TestWindow *window)
{
    window->makeFile("people.csv", people);
    (*window)->openFiles({window->path("people.csv")});
    auto *const left = (*window)->findChild<LeftPane *>();
    Q_EMIT left->transformWanted("Filter");
    OutputOptions options = OutputNode::defaultOptions();
    options.path = window->path("result.csv");
    return window->scene().addOutput(options, window->scene().transforms().first(), {500, 0});
}

template <class Operation>
void duringRun(TestWindow *window, Operation operation)
{
    bool done = false;
    QObject context;
    QObject::connect(&window->scene(), &GraphScene::processingStart, &context, [&] {
        if (!done) {
            done = true;
            operation();
        }
    });
    (*window)->runs()->run(RunMode::All);
    QVERIFY(done);
}

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void buildsRunsAndSaves()
    {
        TestWindow window;
        window->actions()->autoRun->setChecked(false);
        makeChain(&window);
        QCOMPARE(window.scene().connections().size(), 2);
        QTest::keyClick(window.get(), Qt::Key_F5);
        for (const Node *const node : window.scene().nodes()) {
            QCOMPARE(node->status(), ItemStatus::UpToDate);
        }
        QCOMPARE(window.content("result.csv").count('\n'), 4);

        window.scene().document().path = window.path("saved.transform");
        QVERIFY(window->isWindowModified());
        QTest::keyClick(window.get(), Qt::Key_S, Qt::ControlModifier);
        QVERIFY(!window->isWindowModified());
        QVERIFY(window->windowTitle().startsWith("saved.transform"));

        const QByteArray before = window.document();
        window->documents()->newDocument();
        QCOMPARE(window.scene().nodeCount(), 0);
        window->openFiles({window.path("saved.transform")});
        QCOMPARE(window.document(), before);
    }

    void undoesAndRedoesEverything()
    {
        TestWindow window;
        window->actions()->autoRun->setChecked(false);
        const QByteArray empty = window.document();
        makeChain(&window);
        const QByteArray full = window.document();
        while (window.scene().undoStack().canUndo()) {
            QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
        }
        QCOMPARE(window.document(), empty);
        while (window.scene().undoStack().canRedo()) {
            QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        }
        QCOMPARE(window.document(), full);
    }

    void randomEditsAreUndone()
    {
        TestWindow window;
        window->actions()->autoRun->setChecked(false);
        makeChain(&window);
        const QByteArray before = window.document();
        const int index = window.scene().undoStack().index();
        QRandomGenerator random(7);
        for (int i = 0; i < 200; ++i) {
            randomEdit(&window, &random);
        }
        const QByteArray after = window.document();
        QVERIFY(after != before);
        const int reached = window.scene().undoStack().index();
        while (window.scene().undoStack().index() > index) {
            window.scene().undo();
        }
        QCOMPARE(window.document(), before);
        while (window.scene().undoStack().index() < reached) {
            window.scene().redo();
        }
        QCOMPARE(window.document(), after);
    }

    void editsDuringARun()
    {
        TestWindow window;
        window->actions()->autoRun->setChecked(false);
        makeChain(&window);
        const int items = window.scene().nodeCount();
        duringRun(&window, [&] { window.scene().deleteItems(window.scene().nodes()); });
        QCOMPARE(window.scene().nodeCount(), 0);
        duringRun2(&window, items);
    }

    void closingDuringARunStopsIt()
    {
        TestWindow window;
        window->actions()->autoRun->setChecked(false);
        makeChain(&window);
        duringRun(&window, [&] { window->close(); });
        QVERIFY(window->isVisible()); // the run has to return first
        BoxAnswer answer("Don't save");
        QTRY_VERIFY(!window->isVisible());
        QCOMPARE(answer.count(), 1);
    }

    void closingAsks_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("closes");
        QTest::newRow("save") << "Save" << true;
        QTest::newRow("drop") << "Don't save" << true;
        QTest::newRow("stay") << "Cancel" << false;
    }

    void closingAsks()
    {
        QFETCH(QString, button);
        QFETCH(bool, closes);
        TestWindow window;
        window.scene().document().path = window.path("asked.transform");
        window.scene().addNote({0, 0}, "a note");
        BoxAnswer answer(button);
        window->close();
        QCOMPARE(window->isVisible(), !closes);
        QCOMPARE(answer.count(), 1);
        QCOMPARE(QFile::exists(window.path("asked.transform")), button == "Save");
    }

    void autoRunFollowsEdits()
    {
        TestWindow window;
        window->actions()->autoRun->setChecked(true);
        makeChain(&window);
        QTRY_COMPARE(window.content("result.csv").count('\n'), 4);
        auto *const input = window.scene().inputs().first();
        InputOptions options = input->options();
        options.ignoredRows = 1;
        window.scene().editOptions(input, options, "Ignore rows");
        QTRY_COMPARE(window.content("result.csv").count('\n'), 3);
    }

    void documentsOfOthersAskBeforeWriting()
    {
        QTemporaryDir elsewhere;
        const QString target = elsewhere.filePath("stolen.csv");
        TestWindow window;
        window->actions()->autoRun->setChecked(false);
        OutputNode *const output = makeChain(&window);
        OutputOptions options = output->options();
        options.path = target;
        window.scene().editOptions(output, options, "File");
        QString error;
        QVERIFY(DocumentFile::save(window.path("other.transform"), window.scene(), &error));
        window.scene().setClean();
        window->openFiles({window.path("other.transform")});
        {
            const BoxAnswer answer("Don't run");
            window->runs()->run(RunMode::All);
            QVERIFY2(answer.text().contains(target), qPrintable(answer.text()));
            window->runs()->run(RunMode::Changed, true); // asks no more
            QCOMPARE(answer.count(), 1);
        }
        QVERIFY(!QFile::exists(target));
        {
            const BoxAnswer answer("Run");
            window->runs()->run(RunMode::All);
            window->runs()->run(RunMode::All);
            QCOMPARE(answer.count(), 1);
        }
        QVERIFY(QFile::exists(target));
    }

    void searchFindsTransforms_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("first");
        QTest::newRow("by word") << "snake"
                                 << "Case";
        QTest::newRow("by name") << "dedu"
                                 << "Dedupe";
        QTest::newRow("by category") << "blends"
                                     << "Join";
        QTest::newRow("two words") << "keeps regex"
                                   << "Filter";
        QTest::newRow("nothing") << "qqq"
                                 << "";
    }

    void searchFindsTransforms()
    {
        QFETCH(QString, typed);
        QFETCH(QString, first);
        TestWindow window;
        auto *const left = window->findChild<LeftPane *>();
        QStringList wanted;
        connect(left, &LeftPane::transformWanted, this,
                [&wanted](const QString &type) { wanted.append(type); });
        const BoxAnswer answer("OK"); // nothing is selected
        left->focusSearch();
        auto *const edit = left->findChild<QLineEdit *>();
        QTest::keyClicks(edit, typed);
        QTest::keyClick(edit, Qt::Key_Return);
        QCOMPARE(wanted, first.isEmpty() ? QStringList() : QStringList{first});
    }

    void tellsWhatToSelect()
    {
        TestWindow window;
        const BoxAnswer answer("OK");
        Q_EMIT window->findChild<LeftPane *>()->transformWanted("Join");
        QVERIFY2(answer.text().startsWith("No items selected."), qPrintable(answer.text()));
        QVERIFY(answer.text().contains("To add a 'Join' transform you need to first select"));
        QCOMPARE(window.scene().nodeCount(), 0);
    }

    void damagedDocumentIsTold()
    {
        TestWindow window;
        window.makeFile("bad.transform", "<!DOCTYPE Other><root/>");
        window->actions()->autoRun->setChecked(false);
        window.scene().addNote({0, 0}, "stays");
        window.scene().setClean();
        const BoxAnswer answer("OK");
        window->openFiles({window.path("bad.transform")});
        QCOMPARE(answer.text(), QString("Incorrect document type."));
        QCOMPARE(window.scene().notes().size(), 1);
    }

    /// A screen reader needs a name for all that can be used.
    void everyControlHasAName()
    {
        TestWindow window;
        makeChain(&window);
        for (Node *const node : window.scene().nodes()) {
            window.scene().setSelectedNodes({node});
            for (QWidget *const widget : window->findChildren<QWidget *>()) {
                if (!widget->isVisible() || (widget->focusPolicy() & Qt::TabFocus) == 0 ||
                    // The inner widgets of views take the focus of what they belong to.
                    widget->objectName() == "qt_scrollarea_viewport" || widget->focusProxy()) {
                    continue;
                }
                QAccessibleInterface *const face = QAccessible::queryAccessibleInterface(widget);
                QVERIFY(face);
                QVERIFY2(!face->text(QAccessible::Name).isEmpty(),
                         qPrintable(QString("%1 in %2")
                                        .arg(widget->metaObject()->className(),
                                             widget->parentWidget()->metaObject()->className())));
            }
        }
    }

private:
    static void duringRun2(TestWindow *window, int items)
    {
        while (window->scene().nodeCount() < items) {
            window->scene().undo();
        }
        // Undoing during a run, back to nothing.
        duringRun(window, [window] {
            for (int i = 0; i < 10; ++i) {
                window->scene().undo();
            }
        });
        QVERIFY(window->scene().nodeCount() < items);
    }

    static void randomEdit(TestWindow *window, QRandomGenerator *random)
    {
        GraphScene &scene = window->scene();
        const QList<Node *> nodes = scene.nodesByAddition();
        Node *const node =
            nodes.isEmpty() ? nullptr : nodes.at(int(random->bounded(quint32(nodes.size()))));
        const QPointF place(random->bounded(2000), random->bounded(2000));
        switch (random->bounded(9)) {
        case 0:
            scene.addNote(place, QString::number(random->generate()));
            break;
        case 1:
            scene.addInputs({window->path("people.csv")}, place);
            break;
        case 2:
            if (node && node->canHaveDownstream()) {
                scene.setSelectedNodes({node});
                scene.addTransform(window->catalogue().create("Sort"), place);
            }
            break;
        case 3:
            if (node && node->canHaveDownstream()) {
                scene.addOutput(OutputNode::defaultOptions(), node, place);
            }
            break;
        case 4:
            if (node) {
                scene.moveItems({node}, place);
            }
            break;
        case 5:
            if (node && nodes.size() > 8) {
                scene.deleteItems({node});
            }
            break;
        case 6:
            if (node && nodes.size() < 40) {
                scene.duplicateBranch({node});
            }
            break;
        case 7:
            if (node && nodes.size() > 8) {
                scene.deleteHealed({node});
            }
            break;
        default:
            if (node) {
                scene.editComment(node, QString::number(random->generate()));
            }
            break;
        }
    }
};

TW_TEST_CLASS(TestMainWindow)
#include "tst_mainwindow.moc"
