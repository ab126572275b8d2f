#pragma once

#include "preferences.h"
#include "runengine.h"

#include <QMainWindow>
#include <QTimer>
#include <memory>

class CanvasView;
class DataPane;
class DocumentController;
class GraphScene;
class ItemAdder;
class ItemPane;
class LeftPane;
class LogPane;
class Node;
class PreferencesStore;
class RunController;
class StartPage;
class StatusStrip;
class TransformCatalogue;
class WindowActions;
class WindowInterface;
class QDockWidget;
class QStackedWidget;

/// The window of one document.
class MainWindow final : public QMainWindow
{
    Q_OBJECT

public:
    /// The arguments must outlive the window.
    MainWindow(PreferencesStore *store, const TransformCatalogue *catalogue);
    ~MainWindow() override;

    GraphScene *scene() const { return m_scene.get(); }
    CanvasView *canvas() const { return m_canvas; }
    ItemPane *itemPane() const { return m_itemPane; }
    WindowActions *actions() const { return m_actions; }
    DocumentController *documents() const { return m_documents; }
    RunController *runs() const { return m_runs; }

    /// Documents are opened, other files become inputs.
    void openFiles(const QStringList &paths, const QPointF *place = nullptr);
    /// Lines that were told before there was a window.
    void logWarnings(const QStringList &warnings);
    /// Whether the program is to end at once because memory ran out.
    bool memoryExceeded() const { return m_memoryExceeded; }

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void makePanes();
    QDockWidget *addDock(const QString &title, const QString &name, QWidget *content,
                         Qt::DockWidgetArea area);
    void resetLayout();
    void restoreLayout();
    void saveLayout();

    void connectDocument();
    void connectFileActions();
    void connectEditActions();
    void connectViewActions();
    void connectRun();
    void connectCanvas();

    void fillRecent();
    void fillThemes();
    void showTitle();
    void showCentre();
    void showData();
    void showState();
    void updateActions();
    void applyPreferences();
    void editPreferences();
    void findItem();
    void filterBy(const QString &column, const QString &value);
    void runEnded(const RunResult &result);
    void showMemoryExceeded(const RunResult &result);
    void openInNewWindow(const QString &path);
    void showHelp();
    void showAbout();

    PreferencesStore *m_store;
    const TransformCatalogue *m_catalogue;
    WindowInterface *m_user;
    std::unique_ptr<GraphScene> m_scene;
    RunController *m_runs;
    DocumentController *m_documents;
    WindowActions *m_actions;

    QStackedWidget *m_centre;
    StartPage *m_start;
    CanvasView *m_canvas;
    ItemAdder *m_adder;
    LeftPane *m_leftPane;
    ItemPane *m_itemPane;
    DataPane *m_dataPane;
    LogPane *m_logPane;
    StatusStrip *m_status;
    QDockWidget *m_leftDock;
    QDockWidget *m_itemDock;
    QDockWidget *m_dataDock;
    QDockWidget *m_logDock;

    /// What is shown of the document is renewed once, however much has changed.
    QTimer m_stateTimer;
    const Node *m_shownNode = nullptr;
    bool m_wantsCanvas = false;
    bool m_closeAfterRun = false;
    bool m_memoryExceeded = false;
};
