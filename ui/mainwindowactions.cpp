// What the commands of the main window and the signals of its panes do.
#include "mainwindow.h"

#include "canvasview.h"
#include "connection.h"
#include "datapane.h"
#include "documentcontroller.h"
#include "graphscene.h"
#include "itemadder.h"
#include "itempane.h"
#include "leftpane.h"
#include "logpane.h"
#include "preferencesstore.h"
#include "runcontroller.h"
#include "startpage.h"
#include "statusstrip.h"
#include "windowactions.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QMenu>
#include <QUndoStack>

namespace {

constexpr qint64 longRunMs = 3000;

} // namespace

void MainWindow::connectFileActions()
{
    WindowActions &a = *m_actions;
    const auto on = [this](QAction *action, auto slot) {
        connect(action, &QAction::triggered, this, [slot] { slot(); });
    };
    on(a.newDocument, [this] { m_documents->newDocument(); });
    on(a.newWindow, [this] { openInNewWindow(QString()); });
    on(a.open, [this] { m_documents->browse(); });
    on(a.save, [this] { m_documents->save(); });
    on(a.saveAs, [this] { m_documents->saveAs(); });
    on(a.close, [this] { close(); });
    on(a.addInput, [this] { m_adder->askForInputs(); });
    on(a.addClipboard, [this] { m_adder->addClipboardInput(); });
    on(a.addOutput, [this] { m_adder->askForOutput(); });
    on(a.addNote, [this] { m_adder->addNote(); });
    connect(a.recent, &QMenu::aboutToShow, this, &MainWindow::fillRecent);
    for (const QString &path : exampleDocuments()) {
        a.examples->addAction(QFileInfo(path).completeBaseName(), this,
                              [this, path] { m_documents->open(path); });
    }
    a.examples->setEnabled(!a.examples->isEmpty());
    connect(m_start, &StartPage::openWanted, m_documents, &DocumentController::open);
    connect(m_start, &StartPage::browseWanted, m_documents, &DocumentController::browse);
    connect(m_start, &StartPage::inputWanted, this, [this] { m_adder->askForInputs(); });
    connect(m_start, &StartPage::emptyCanvasWanted, this, [this] {
        m_wantsCanvas = true;
        showCentre();
        m_canvas->setFocus();
    });
}

void MainWindow::connectEditActions()
{
    WindowActions &a = *m_actions;
    const auto on = [this](QAction *action, auto slot) {
        connect(action, &QAction::triggered, this, [slot] { slot(); });
    };
    const QUndoStack &history = m_scene->undoStack();
    on(a.undo, [this] { m_scene->undo(); });
    on(a.redo, [this] { m_scene->redo(); });
    connect(&history, &QUndoStack::canUndoChanged, a.undo, &QAction::setEnabled);
    connect(&history, &QUndoStack::canRedoChanged, a.redo, &QAction::setEnabled);
    connect(&history, &QUndoStack::undoTextChanged, a.undo, [&a](const QString &text) {
        a.undo->setText(text.isEmpty() ? tr("&Undo") : tr("&Undo %1").arg(text));
    });
    connect(&history, &QUndoStack::redoTextChanged, a.redo, [&a](const QString &text) {
        a.redo->setText(text.isEmpty() ? tr("&Redo") : tr("&Redo %1").arg(text));
    });
    a.undo->setEnabled(false);
    a.redo->setEnabled(false);
    on(a.cut, [this] { m_canvas->cutSelection(); });
    on(a.copy, [this] { m_canvas->copySelection(); });
    on(a.paste, [this] {
        m_wantsCanvas = true;
        m_canvas->paste();
    });
    on(a.duplicate, [this] { m_canvas->duplicateSelection(); });
    on(a.remove, [this] { m_canvas->deleteSelection(); });
    on(a.removeHealed, [this] { m_canvas->deleteSelectionHealed(); });
    on(a.selectAll, [this] { m_canvas->selectAll(); });
    on(a.connectItems, [this] { m_canvas->connectSelection(); });
    on(a.quickAdd, [this] {
        m_wantsCanvas = true;
        showCentre();
        m_canvas->showQuickAdd();
    });
    on(a.rename, [this] {
        m_itemDock->show();
        m_itemPane->focusName();
    });
    on(a.findItem, [this] { findItem(); });
    on(a.preferences, [this] { editPreferences(); });
    // In tables and text fields these keys mean their own text.
    for (QAction *const action : {a.cut, a.copy, a.paste, a.remove, a.removeHealed, a.selectAll}) {
        action->setShortcutContext(Qt::WidgetShortcut);
        m_canvas->addAction(action);
    }
}

void MainWindow::connectViewActions()
{
    WindowActions &a = *m_actions;
    const auto on = [this](QAction *action, auto slot) {
        connect(action, &QAction::triggered, this, [slot] { slot(); });
    };
    on(a.zoomIn, [this] { m_canvas->zoomIn(); });
    on(a.zoomOut, [this] { m_canvas->zoomOut(); });
    on(a.resetZoom, [this] { m_canvas->resetZoom(); });
    on(a.fit, [this] { m_canvas->fit(); });
    connect(a.snapToGrid, &QAction::toggled, this,
            [this](bool isOn) { m_canvas->setSnapToGrid(isOn); });
    on(a.focusCanvas, [this] { m_canvas->setFocus(Qt::ShortcutFocusReason); });
    const auto open = [](QDockWidget *dock) {
        dock->show();
        dock->raise();
    };
    on(a.focusOptions, [this, open] {
        open(m_itemDock);
        m_itemPane->focusOptions();
    });
    on(a.focusTable, [this, open] {
        open(m_dataDock);
        m_dataPane->focusTable();
    });
    on(a.focusLog, [this, open] {
        open(m_logDock);
        m_logPane->focusText();
    });
    on(a.resetLayout, [this] { resetLayout(); });
    on(a.help, [this] { showHelp(); });
    on(a.about, [this] { showAbout(); });
}

void MainWindow::connectRun()
{
    WindowActions &a = *m_actions;
    const auto on = [this](QAction *action, auto slot) {
        connect(action, &QAction::triggered, this, [slot] { slot(); });
    };
    on(a.runAll, [this] { m_runs->run(RunMode::All); });
    on(a.runUnprocessed, [this] { m_runs->run(RunMode::Changed); });
    on(a.runSelected, [this] { m_runs->run(RunMode::Selected); });
    on(a.stop, [this] { m_runs->stop(); });
    m_runs->setPermission([this](bool automatic) { return m_documents->mayRun(automatic); });
    a.autoRun->setChecked(m_scene->document().autoRun);
    connect(a.autoRun, &QAction::toggled, m_runs, &RunController::setAutoRun);
    connect(m_itemPane, &ItemPane::runWanted, this, [this] {
        m_runs->run(m_scene->document().autoRun ? RunMode::Changed : RunMode::Selected);
    });
    connect(m_itemPane, &ItemPane::edited, m_runs, &RunController::postpone);
    connect(m_runs, &RunController::started, this, [this] {
        updateActions();
        showState();
    });
    connect(m_runs, &RunController::progressed, this, [this] {
        const qint64 remaining = m_runs->remainingMs();
        m_status->showProgress(m_runs->isRunning(), m_runs->fraction(),
                               remaining > longRunMs ? remaining : -1);
    });
    connect(m_runs, &RunController::ended, this, &MainWindow::runEnded);
}

void MainWindow::connectCanvas()
{
    connect(m_leftPane, &LeftPane::transformWanted, this,
            [this](const QString &type) { m_adder->addTransform(type); });
    connect(m_canvas, &CanvasView::filesDropped, this,
            [this](const QStringList &paths, const QPointF &place) { openFiles(paths, &place); });
    connect(m_canvas, &CanvasView::editRequested, this, [this] {
        m_itemDock->show();
        m_itemDock->raise();
        m_itemPane->focusOptions();
    });
    connect(m_canvas, &CanvasView::transformWanted, this,
            [this](const QString &type, const QPointF &place) {
                // Without inputs it stands where it was wanted, else beside them.
                m_adder->addTransform(type, m_scene->selectedNodes().isEmpty() ? &place : nullptr);
            });
    connect(m_canvas, &CanvasView::transformWantedOn, m_adder, &ItemAdder::insertTransform);
    connect(m_canvas, &CanvasView::inputWanted, this,
            [this](const QPointF &place) { m_adder->askForInputs(&place); });
    connect(m_canvas, &CanvasView::outputWanted, this,
            [this](const QPointF &place) { m_adder->askForOutput(&place); });
    connect(m_canvas, &CanvasView::noteWanted, this,
            [this](const QPointF &place) { m_adder->addNote(&place); });
    connect(m_canvas, &CanvasView::hintChanged, m_status, &StatusStrip::showText);
    connect(m_dataPane, &DataPane::filterWanted, this, &MainWindow::filterBy);
}

void MainWindow::fillRecent()
{
    m_actions->recent->clear();
    for (const QString &path : m_store->recentDocuments()) {
        m_actions->recent->addAction(QDir::toNativeSeparators(path), this,
                                     [this, path] { m_documents->open(path); });
    }
    if (m_actions->recent->isEmpty()) {
        m_actions->recent->addAction(tr("None"))->setEnabled(false);
    }
}

void MainWindow::fillThemes()
{
    auto *const group = new QActionGroup(this);
    const auto add = [&](const QString &text, ThemeChoice choice) {
        QAction *const action = m_actions->themes->addAction(text);
        action->setCheckable(true);
        action->setChecked(m_store->theme() == choice);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, choice] {
            m_store->setTheme(choice);
            applyTheme(qApp, choice);
        });
    };
    add(tr("Follow the &desktop"), ThemeChoice::System);
    add(tr("&Light"), ThemeChoice::Light);
    add(tr("D&ark"), ThemeChoice::Dark);
}
