#pragma once

#include <QList>
#include <QObject>

class QAction;
class QMainWindow;
class QMenu;

/// The commands of the main window: texts, keys, pictures, and where they stand in menus and tool
/// bar. What they do is connected by the window.
class WindowActions final : public QObject
{
    Q_OBJECT

public:
    explicit WindowActions(QMainWindow *window);

    QAction *newDocument;
    QAction *newWindow;
    QAction *open;
    QMenu *recent;
    QMenu *examples;
    QAction *save;
    QAction *saveAs;
    QAction *close;

    QAction *undo;
    QAction *redo;
    QAction *cut;
    QAction *copy;
    QAction *paste;
    QAction *duplicate;
    QAction *remove;
    QAction *removeHealed;
    QAction *selectAll;
    QAction *rename;
    QAction *findItem;
    QAction *preferences;

    QAction *addInput;
    QAction *addClipboard;
    QAction *addOutput;
    QAction *addNote;
    QAction *quickAdd;
    QAction *connectItems;

    QAction *zoomIn;
    QAction *zoomOut;
    QAction *resetZoom;
    QAction *fit;
    QAction *snapToGrid;
    QAction *focusCanvas;
    QAction *focusOptions;
    QAction *focusTable;
    QAction *focusLog;
    QMenu *panes;
    QMenu *themes;
    QAction *resetLayout;

    QAction *autoRun;
    QAction *runAll;
    QAction *runUnprocessed;
    QAction *runSelected;
    QAction *stop;

    QAction *help;
    QAction *about;

    /// Pictures in the colours of the theme in use.
    void setIcons();

private:
    QAction *make(const QString &text, const QString &keys = QString(),
                  const QString &tip = QString());
    void makeFileMenu();
    void makeEditMenu();
    void makeViewMenu();
    void makeRunMenu();
    void makeHelpMenu();
    void makeToolBar();

    QMainWindow *m_window;
};
