#include "windowactions.h"

#include "icons.h"
#include "theme.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>

WindowActions::WindowActions(QMainWindow *window)
    : QObject(window)
    , m_window(window)
{
    makeFileMenu();
    makeEditMenu();
    makeViewMenu();
    makeRunMenu();
    makeHelpMenu();
    makeToolBar();
    setIcons();
}

QAction *WindowActions::make(const QString &text, const QString &keys, const QString &tip)
{
    auto *const action = new QAction(text, this);
    action->setShortcut(QKeySequence(keys));
    if (!tip.isEmpty()) {
        action->setStatusTip(tip);
        const QString shortcut = action->shortcut().toString(QKeySequence::NativeText);
        action->setToolTip(shortcut.isEmpty() ? tip : QStringLiteral("%1 (%2)").arg(tip, shortcut));
    }
    m_window->addAction(action);
    return action;
}

void WindowActions::makeFileMenu()
{
    QMenu *const menu = m_window->menuBar()->addMenu(tr("&File"));
    menu->addAction(newDocument = make(tr("&New"), tr("Ctrl+N"), tr("Begin a new document.")));
    menu->addAction(newWindow = make(tr("New &window"), tr("Ctrl+Shift+N")));
    menu->addAction(open = make(tr("&Open..."), tr("Ctrl+O"), tr("Open a document.")));
    recent = menu->addMenu(tr("Open &recent"));
    examples = menu->addMenu(tr("Open an &example"));
    menu->addSeparator();
    menu->addAction(save = make(tr("&Save"), tr("Ctrl+S"), tr("Save the document.")));
    menu->addAction(saveAs = make(tr("Save &as..."), tr("Ctrl+Shift+S")));
    menu->addSeparator();
    menu->addAction(addInput = make(tr("Add &input..."), tr("Ctrl+I"),
                                    tr("Add files to be read to the canvas.")));
    menu->addAction(addClipboard = make(tr("Add input from clip&board"), tr("Ctrl+Shift+V"),
                                        tr("Add the text on the clipboard as an input.")));
    menu->addAction(addOutput = make(tr("Add o&utput..."), tr("Ctrl+E"),
                                     tr("Write the table of the selected item to a file.")));
    menu->addSeparator();
    menu->addAction(close = make(tr("&Close"), tr("Ctrl+Q")));
}

void WindowActions::makeEditMenu()
{
    QMenu *const menu = m_window->menuBar()->addMenu(tr("&Edit"));
    menu->addAction(undo = make(tr("&Undo"), tr("Ctrl+Z"), tr("Undo the last change.")));
    menu->addAction(redo = make(tr("&Redo"), tr("Ctrl+Shift+Z"), tr("Do the change again.")));
    menu->addSeparator();
    menu->addAction(cut = make(tr("Cu&t"), tr("Ctrl+X")));
    menu->addAction(copy = make(tr("&Copy"), tr("Ctrl+C")));
    menu->addAction(paste = make(tr("&Paste"), tr("Ctrl+V")));
    menu->addAction(duplicate = make(tr("&Duplicate branch"), tr("Ctrl+D"),
                                     tr("Duplicate the selected branch.")));
    menu->addAction(remove = make(tr("De&lete"), tr("Del")));
    menu->addAction(removeHealed = make(tr("Delete and &heal connections"), tr("Shift+Del"),
                                        tr("Delete the selected items and connect what was "
                                           "before them to what comes after.")));
    menu->addSeparator();
    menu->addAction(selectAll = make(tr("Select &all"), tr("Ctrl+A")));
    menu->addAction(connectItems = make(tr("C&onnect selected items"), tr("Ctrl+L")));
    menu->addAction(rename = make(tr("Re&name"), tr("F2")));
    menu->addAction(findItem = make(tr("&Find item..."), tr("Ctrl+F"), tr("Find an item.")));
    menu->addSeparator();
    menu->addAction(quickAdd = make(tr("&Quick add..."), tr("Ctrl+K"),
                                    tr("Type a few letters of what to add.")));
    menu->addAction(addNote = make(tr("Add no&te"), QString(), tr("Add a note to the canvas.")));
    menu->addSeparator();
    menu->addAction(preferences = make(tr("Pr&eferences..."), tr("Ctrl+,")));
}

void WindowActions::makeViewMenu()
{
    QMenu *const menu = m_window->menuBar()->addMenu(tr("&View"));
    menu->addAction(zoomIn = make(tr("Zoom &in"), tr("Ctrl++")));
    zoomIn->setShortcuts({QKeySequence(tr("Ctrl++")), QKeySequence(tr("Ctrl+="))});
    menu->addAction(zoomOut = make(tr("Zoom &out"), tr("Ctrl+-")));
    menu->addAction(resetZoom = make(tr("&Actual size")));
    menu->addAction(fit = make(tr("&Fit to window"), tr("Ctrl+0"), tr("Show all items.")));
    menu->addAction(snapToGrid = make(tr("&Snap to grid")));
    snapToGrid->setCheckable(true);
    menu->addSeparator();
    menu->addAction(focusCanvas = make(tr("Go to &canvas"), tr("Ctrl+1")));
    menu->addAction(focusOptions = make(tr("Go to o&ptions"), tr("Ctrl+2")));
    menu->addAction(focusTable = make(tr("Go to &table"), tr("Ctrl+3")));
    menu->addAction(focusLog = make(tr("Go to &log"), tr("Ctrl+4")));
    menu->addSeparator();
    panes = menu->addMenu(tr("Pa&nes"));
    menu->addAction(resetLayout = make(tr("&Reset layout")));
    themes = menu->addMenu(tr("T&heme"));
}

void WindowActions::makeRunMenu()
{
    QMenu *const menu = m_window->menuBar()->addMenu(tr("&Run"));
    menu->addAction(
        autoRun = make(tr("A&uto Run"), QString(), tr("Run changed items after every edit.")));
    autoRun->setCheckable(true);
    menu->addSeparator();
    menu->addAction(runAll = make(tr("Run &All"), tr("Shift+F5"),
                                  tr("Run all items (whether changed or not). You should usually "
                                     "use 'Run changed' or 'Run selected'.")));
    menu->addAction(runUnprocessed = make(tr("Run &Unprocessed"), tr("F5"),
                                          tr("Run items that need processing.")));
    menu->addAction(runSelected = make(tr("Run &Selected"), tr("Ctrl+F5"),
                                       tr("Run selected items (whether changed or not).")));
    menu->addSeparator();
    menu->addAction(stop = make(tr("S&top Run"), tr("Esc"), tr("Stop current run.")));
}

void WindowActions::makeHelpMenu()
{
    QMenu *const menu = m_window->menuBar()->addMenu(tr("&Help"));
    menu->addAction(help = make(tr("&User's guide"), tr("F1")));
    menu->addAction(about = make(tr("&About Tabweave")));
}

void WindowActions::makeToolBar()
{
    QToolBar *const bar = m_window->addToolBar(tr("Tool bar"));
    bar->setObjectName(QStringLiteral("tool_bar"));
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    const auto addGroup = [bar](const QList<QAction *> &actions) {
        if (!bar->actions().isEmpty()) {
            bar->addSeparator();
        }
        bar->addActions(actions);
    };
    addGroup({newDocument, open, save});
    addGroup({undo, redo});
    addGroup({autoRun, runUnprocessed, stop});
    addGroup({zoomOut, zoomIn, fit});
    runUnprocessed->setIconText(tr("Run"));
    // Buttons of the palette; the style leaves no room between picture and text.
    addInput->setIconText(tr(" Add input"));
    addOutput->setIconText(tr(" Add output"));
    addNote->setIconText(tr(" Add note"));
    stop->setIconText(tr("Stop"));
    for (QAction *const action : {undo, redo, zoomOut, zoomIn, fit, newDocument, open, save}) {
        auto *const button = qobject_cast<QToolButton *>(bar->widgetForAction(action));
        button->setToolButtonStyle(Qt::ToolButtonIconOnly);
    }
    for (QAction *const action : bar->actions()) {
        if (auto *const button = qobject_cast<QToolButton *>(bar->widgetForAction(action))) {
            QString name = action->text();
            button->setAccessibleName(name.remove(QLatin1Char('&')));
            button->setFocusPolicy(Qt::TabFocus);
        }
    }
}

void WindowActions::setIcons()
{
    const Theme &theme = Theme::current();
    const auto standard = [](QAction *action, const char *name) {
        action->setIcon(Icons::action(QLatin1String(name)));
    };
    const auto own = [](QAction *action, const char *name, const QColor &color) {
        action->setIcon(Icons::colored(QLatin1String(name), color));
    };
    standard(newDocument, "document-new");
    standard(open, "document-open");
    standard(save, "document-save");
    standard(saveAs, "document-save-as");
    standard(undo, "edit-undo");
    standard(redo, "edit-redo");
    standard(cut, "edit-cut");
    standard(copy, "edit-copy");
    standard(paste, "edit-paste");
    standard(remove, "edit-delete");
    standard(selectAll, "edit-select-all");
    standard(findItem, "edit-find");
    standard(rename, "edit-rename");
    standard(preferences, "configure");
    standard(zoomIn, "zoom-in");
    standard(zoomOut, "zoom-out");
    standard(help, "help-contents");
    own(duplicate, "duplicate", theme.text);
    own(addInput, "input", theme.input);
    own(addClipboard, "clipboard", theme.input);
    own(addOutput, "output", theme.output);
    own(addNote, "note", theme.note);
    own(connectItems, "connect", theme.text);
    own(fit, "fit", theme.text);
    own(snapToGrid, "snap", theme.text);
    own(autoRun, "autorun", theme.ok);
    own(runAll, "run-all", theme.ok);
    own(runUnprocessed, "run", theme.ok);
    own(runSelected, "run-selected", theme.ok);
    own(stop, "stop", theme.error);
}
