#include "mainwindow.h"

#include "canvasview.h"
#include "datapane.h"
#include "documentcontroller.h"
#include "graphscene.h"
#include "icons.h"
#include "itemadder.h"
#include "itempane.h"
#include "leftpane.h"
#include "logpane.h"
#include "memoryceiling.h"
#include "preferencesstore.h"
#include "runcontroller.h"
#include "startpage.h"
#include "statusstrip.h"
#include "texts.h"
#include "transform.h"
#include "transformnode.h"
#include "transformsettings.h"
#include "windowactions.h"
#include "windowinterface.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QFileInfo>
#include <QMenu>
#include <QMimeData>
#include <QProcess>
#include <QStackedWidget>
#include <QStatusBar>
#include <QUrl>

namespace {

const QString geometryKey = QStringLiteral("geometry");
const QString layoutKey = QStringLiteral("layout");
/// Raised whenever the docks are others, so that an old layout is not applied to them.
constexpr int layoutVersion = 1;

QStringList localPaths(const QMimeData *data)
{
    QStringList paths;
    for (const QUrl &url : data->urls()) {
        if (url.isLocalFile()) {
            paths.append(url.toLocalFile());
        }
    }
    return paths;
}

} // namespace

MainWindow::MainWindow(PreferencesStore *store, const TransformCatalogue *catalogue)
    : m_store(store)
    , m_catalogue(catalogue)
    , m_user(new WindowInterface(this, store))
    , m_scene(std::make_unique<GraphScene>(m_user))
    , m_runs(new RunController(m_scene.get(), this))
    , m_documents(new DocumentController({m_scene.get(), m_user, store, catalogue, m_runs}, this))
    , m_actions(new WindowActions(this))
    , m_status(new StatusStrip(statusBar()))
{
    setAcceptDrops(true);
    setDockOptions(AnimatedDocks | AllowNestedDocks | AllowTabbedDocks);
    m_stateTimer.setSingleShot(true);
    m_stateTimer.setInterval(50);
    connect(&m_stateTimer, &QTimer::timeout, this, &MainWindow::showState);

    makePanes();
    fillThemes();
    connectDocument();
    connectFileActions();
    connectEditActions();
    connectViewActions();
    connectRun();
    connectCanvas();
    applyPreferences();
    restoreLayout();
    showTitle();
    showCentre();
    showData();
    showState();
}

MainWindow::~MainWindow()
{
    // Panes look at the scene until they are gone.
    delete takeCentralWidget();
    for (QDockWidget *const dock : {m_leftDock, m_itemDock, m_dataDock, m_logDock}) {
        delete dock;
    }
    delete m_documents;
    delete m_runs;
    m_scene.reset();
}

void MainWindow::makePanes()
{
    m_start = new StartPage(m_store, this);
    m_canvas = new CanvasView(m_scene.get(), this);
    m_centre = new QStackedWidget(this);
    m_centre->addWidget(m_start);
    m_centre->addWidget(m_canvas);
    setCentralWidget(m_centre);
    m_adder = new ItemAdder(m_scene.get(), m_canvas, m_catalogue, m_store, this);

    m_leftPane = new LeftPane(
        m_catalogue, {m_actions->addInput, m_actions->addOutput, m_actions->addNote}, this);
    m_itemPane = new ItemPane(m_scene.get(), this);
    m_dataPane = new DataPane(this);
    m_logPane = new LogPane(this);
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    m_leftDock = addDock(tr("Add"), QStringLiteral("add"), m_leftPane, Qt::LeftDockWidgetArea);
    m_itemDock = addDock(tr("Item"), QStringLiteral("item"), m_itemPane, Qt::RightDockWidgetArea);
    m_dataDock = addDock(tr("Data"), QStringLiteral("data"), m_dataPane, Qt::BottomDockWidgetArea);
    m_logDock = addDock(tr("Log"), QStringLiteral("log"), m_logPane, Qt::BottomDockWidgetArea);
    setTabPosition(Qt::BottomDockWidgetArea, QTabWidget::North);
    // Their tabs tell what they are.
    m_dataDock->setTitleBarWidget(new QWidget(m_dataDock));
    m_logDock->setTitleBarWidget(new QWidget(m_logDock));
    // Reading order.
    setTabOrder(m_leftPane, m_centre);
    setTabOrder(m_centre, m_itemPane);
    setTabOrder(m_itemPane, m_dataPane);
}

QDockWidget *MainWindow::addDock(const QString &title, const QString &name, QWidget *content,
                                 Qt::DockWidgetArea area)
{
    auto *const dock = new QDockWidget(title, this);
    dock->setObjectName(name);
    dock->setWidget(content);
    addDockWidget(area, dock);
    m_actions->panes->addAction(dock->toggleViewAction());
    return dock;
}

void MainWindow::resetLayout()
{
    const QList<QDockWidget *> docks = {m_leftDock, m_itemDock, m_dataDock, m_logDock};
    for (QDockWidget *const dock : docks) {
        dock->setFloating(false);
        dock->show();
    }
    addDockWidget(Qt::LeftDockWidgetArea, m_leftDock);
    addDockWidget(Qt::RightDockWidgetArea, m_itemDock);
    addDockWidget(Qt::BottomDockWidgetArea, m_dataDock);
    addDockWidget(Qt::BottomDockWidgetArea, m_logDock);
    tabifyDockWidget(m_dataDock, m_logDock);
    m_dataDock->raise();
    const int em = fontMetrics().height();
    resizeDocks({m_leftDock, m_itemDock}, {14 * em, 20 * em}, Qt::Horizontal);
    resizeDocks({m_dataDock}, {height() * 2 / 5}, Qt::Vertical);
}

void MainWindow::restoreLayout()
{
    const QByteArray geometry = m_store->windowValue(geometryKey).toByteArray();
    if (geometry.isEmpty() || !restoreGeometry(geometry)) {
        resize(1360, 860);
    }
    resetLayout();
    restoreState(m_store->windowValue(layoutKey).toByteArray(), layoutVersion);
}

void MainWindow::saveLayout()
{
    m_store->setWindowValue(geometryKey, saveGeometry());
    m_store->setWindowValue(layoutKey, saveState(layoutVersion));
}

void MainWindow::connectDocument()
{
    GraphScene *const scene = m_scene.get();
    const auto later = [this] { m_stateTimer.start(); };
    connect(scene, &GraphScene::nodesAdded, this, later);
    connect(scene, &GraphScene::nodesDeleted, this, later);
    connect(scene, &GraphScene::selectionChanged, this, later);
    connect(scene, &GraphScene::connectionsChanged, this, later);
    connect(scene, &GraphScene::nodeDataChanged, this, later);
    for (const auto signal :
         {&GraphScene::nodesAdded, &GraphScene::nodesDeleted, &GraphScene::selectionChanged}) {
        connect(scene, signal, this, &MainWindow::updateActions);
    }
    connect(scene, &GraphScene::nodesAdded, this, &MainWindow::showCentre);
    connect(scene, &GraphScene::selectionChanged, this, &MainWindow::showData);
    connect(scene, &GraphScene::nodesDeleted, this, &MainWindow::showData);
    connect(scene, &GraphScene::nodeDataChanged, this, [this](const Node *node) {
        if (node == m_shownNode) {
            showData();
        }
    });
    connect(scene, &GraphScene::showWarningMessage, this, [this](const QString &text) {
        tellUser(this, Texts::productName(), text.trimmed(), false);
    });
    connect(scene, &GraphScene::showCriticalMessage, this, [this](const QString &text) {
        tellUser(this, Texts::productName(), text.trimmed(), true);
    });
    connect(scene, &GraphScene::showTempMessage, m_status, &StatusStrip::showText);
    connect(m_user, &WindowInterface::statusShown, m_status, &StatusStrip::showText);
    connect(m_user, &WindowInterface::logged, m_logPane, &LogPane::add);

    connect(m_documents, &DocumentController::changed, this, &MainWindow::showTitle);
    connect(m_documents, &DocumentController::localeChanged, this, &MainWindow::applyPreferences);
    connect(m_documents, &DocumentController::replaced, this, [this] {
        m_wantsCanvas = m_scene->nodeCount() > 0 || !m_scene->document().path.isEmpty();
        m_actions->autoRun->setChecked(m_scene->document().autoRun);
        m_actions->snapToGrid->setChecked(m_scene->document().snapToGrid);
        showCentre();
        showData();
        m_stateTimer.start();
        m_canvas->showBeginning();
    });
}

void MainWindow::showTitle()
{
    setWindowTitle(QStringLiteral("%1[*] - %2").arg(m_documents->title(), Texts::productName()));
    setWindowModified(m_documents->isModified());
    setWindowFilePath(m_scene->document().path);
}

void MainWindow::showCentre()
{
    m_wantsCanvas = m_wantsCanvas || m_scene->nodeCount() > 0;
    QWidget *const page = m_wantsCanvas ? static_cast<QWidget *>(m_canvas) : m_start;
    if (m_centre->currentWidget() != page) {
        m_start->refresh();
        m_centre->setCurrentWidget(page);
    }
}

void MainWindow::showData()
{
    const QList<Node *> selected = m_scene->selectedNodes();
    const Node *const node = selected.size() == 1 ? selected.first() : nullptr;
    const bool isSame = node == m_shownNode;
    m_shownNode = node;
    if (!node || node->kind() == ItemKind::Note) {
        m_dataPane->showData(Dataset(), Dataset(), tr("Select an item to see its table."));
        m_dataPane->setOutdated(false);
        return;
    }
    const bool isOutdated =
        node->status() == ItemStatus::NeedsUpdating || node->status() == ItemStatus::Updating;
    if (isOutdated && isSame && node->dataset().hasColumns()) {
        m_dataPane->setOutdated(true);
        return;
    }
    QString empty;
    if (node->status() == ItemStatus::Error) {
        empty =
            tr("The item has an error: %1")
                .arg(node->warnings().isEmpty() ? QString() : node->warnings().last().trimmed());
    } else if (isOutdated) {
        empty = tr("The item has not been run yet. Press F5 to run it.");
    } else {
        empty = tr("The table has no rows.");
    }
    // Where rows or columns move, every cell differs, which says nothing.
    const auto *const transform = qobject_cast<const TransformNode *>(node);
    const QList<Node *> upstream = node->upstreamNodes();
    const bool marksChanges =
        transform && transform->transform().editsInPlace() && upstream.size() == 1;
    m_dataPane->showData(node->dataset(), marksChanges ? upstream.first()->dataset() : Dataset(),
                         empty);
    m_dataPane->setOutdated(isOutdated && node->dataset().hasColumns());
}

void MainWindow::showState()
{
    int outdated = 0;
    int errors = 0;
    int warnings = 0;
    for (const Node *const node : m_scene->nodes()) {
        if (node->kind() != ItemKind::Note) {
            outdated += node->status() == ItemStatus::NeedsUpdating ? 1 : 0;
            errors += node->status() == ItemStatus::Error ? 1 : 0;
            warnings += node->warnings().isEmpty() ? 0 : 1;
        }
    }
    const Theme &theme = Theme::current();
    const bool isRunning = m_runs->isRunning();
    if (isRunning) {
        m_status->showState(tr("Running"), QStringLiteral("run"), theme.accent);
    } else if (errors > 0) {
        m_status->showState(tr("%1 item(s) with errors").arg(Texts::count(errors)),
                            QStringLiteral("notice-warning"), theme.error);
    } else if (outdated > 0) {
        m_status->showState(tr("%1 item(s) need updating").arg(Texts::count(outdated)),
                            QStringLiteral("status-outdated"), theme.secondaryText);
    } else if (m_scene->nodeCount() == 0) {
        m_status->showState(QString(), QString(), theme.secondaryText);
    } else {
        const QString text =
            warnings > 0 ? tr("Up to date, %1 item(s) with warnings").arg(Texts::count(warnings))
                         : tr("Up to date");
        m_status->showState(text, QStringLiteral("status-ok"),
                            warnings > 0 ? theme.warning : theme.ok);
    }
    m_status->showProgress(isRunning, m_runs->fraction(), -1);
    updateActions();
}

void MainWindow::updateActions()
{
    WindowActions &a = *m_actions;
    const bool hasSelection = !m_scene->selectedNodes().isEmpty();
    const bool hasItems = m_scene->nodeCount() > 0;
    const bool isRunning = m_runs->isRunning();
    a.stop->setEnabled(isRunning);
    a.runAll->setEnabled(hasItems && !isRunning);
    a.runUnprocessed->setEnabled(hasItems && !isRunning);
    a.runSelected->setEnabled(hasSelection && !isRunning);
    for (QAction *const action : {a.cut, a.copy, a.duplicate, a.removeHealed, a.rename}) {
        action->setEnabled(hasSelection);
    }
    for (QAction *const action : {a.selectAll, a.findItem, a.fit}) {
        action->setEnabled(hasItems);
    }
    a.connectItems->setEnabled(m_scene->selectedNodes().size() > 1);
}

void MainWindow::runEnded(const RunResult &result)
{
    showState();
    showData();
    if (result.memoryExceeded) {
        showMemoryExceeded(result);
    } else if (m_closeAfterRun) {
        m_closeAfterRun = false;
        QTimer::singleShot(0, this, &QWidget::close);
    }
}

void MainWindow::showMemoryExceeded(const RunResult &)
{
    m_documents->saveForRecovery();
    tellUser(this, tr("Maximum memory exceeded"),
             tr("%1 has exceeded the memory allocation set in 'Preferences' and will close.")
                 .arg(Texts::productName()),
             true);
    m_memoryExceeded = true;
    QTimer::singleShot(0, qApp, &QApplication::quit);
}

void MainWindow::openFiles(const QStringList &paths, const QPointF *place)
{
    QStringList inputs;
    QString document;
    for (const QString &path : paths) {
        const bool isDocument =
            QFileInfo(path).suffix().compare(QLatin1String("transform"), Qt::CaseInsensitive) == 0;
        if (isDocument) {
            document = path;
        } else {
            inputs.append(path);
        }
    }
    if (!inputs.isEmpty()) {
        m_wantsCanvas = true;
        m_adder->addInputs(inputs, place ? *place : m_canvas->placeForInput());
    } else if (!document.isEmpty()) {
        m_documents->open(document);
    }
}

void MainWindow::logWarnings(const QStringList &warnings)
{
    for (const QString &warning : warnings) {
        m_logPane->add(LogLevel::Warning, warning);
    }
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (m_runs->isRunning()) {
        // The run stands further up in the call stack.
        m_closeAfterRun = true;
        m_runs->stop();
        event->ignore();
        return;
    }
    if (!m_memoryExceeded && !m_documents->mayLeave()) {
        event->ignore();
        return;
    }
    saveLayout();
    event->accept();
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (!localPaths(event->mimeData()).isEmpty()) {
        event->acceptProposedAction();
    }
}

void MainWindow::dropEvent(QDropEvent *event)
{
    const QStringList paths = localPaths(event->mimeData());
    event->acceptProposedAction();
    // The program that drags waits until this returns.
    QTimer::singleShot(0, this, [this, paths] { openFiles(paths); });
}

void MainWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange && m_actions) {
        Icons::followTheme();
        m_actions->setIcons();
        m_stateTimer.start();
    }
    QMainWindow::changeEvent(event);
}

void MainWindow::applyPreferences()
{
    static const QFont desktopFont = QApplication::font();
    QFont font = desktopFont;
    if (m_store->fontSize() > 0) {
        font.setPointSize(m_store->fontSize());
    }
    if (font != QApplication::font()) {
        QApplication::setFont(font);
    }
    QStringList warnings;
    const Preferences preferences = m_store->load(&warnings);
    if (!preferences.localeName.isEmpty()) {
        QLocale::setDefault(QLocale(preferences.localeName));
    }
    applyDateFormats(preferences);
    MemoryCeiling::setLimitGb(preferences.maxMemoryGb > 0.0 ? preferences.maxMemoryGb
                                                            : MemoryCeiling::defaultLimitGb());
    m_scene->setPreferences(preferences);
    m_dataPane->setDateFormats(TransformSettings::current().dateFormats);
}

void MainWindow::openInNewWindow(const QString &path)
{
    QStringList arguments;
    if (!path.isEmpty()) {
        arguments.append(path);
    }
    QProcess::startDetached(QCoreApplication::applicationFilePath(), arguments);
}
