#pragma once

#include "autorecovery.h"
#include "inputwatch.h"

#include <QObject>
#include <functional>

class GraphScene;
class InputNode;
class PreferencesStore;
class RunController;
class TransformCatalogue;
class UserInterface;
class QWidget;

/// Opens, saves and closes the document of a window, and asks what has to be asked about it.
class DocumentController final : public QObject
{
    Q_OBJECT

public:
    struct Parts
    {
        GraphScene *scene;
        UserInterface *user;
        PreferencesStore *store;
        const TransformCatalogue *catalogue;
        RunController *runs;
    };
    /// The window is the parent of all dialogs.
    DocumentController(const Parts &parts, QWidget *window);

    bool isModified() const;
    /// The file's name, or "Untitled".
    QString title() const;

    void newDocument();
    void browse();
    void open(const QString &path);
    bool save();
    bool saveAs();
    /// Asks about unsaved changes; false when the user wants to stay.
    bool mayLeave();
    /// Offers what a program left that did not end well.
    void offerRecovery();
    /// Whether the document may write where it wants to; asks once about documents of others that
    /// write outside their own folder. `automatic` runs do not ask again.
    bool mayRun(bool automatic);
    /// Does something when no run is under way, which is stopped for it.
    void whenIdle(std::function<void()> action);
    /// The program is about to end without asking.
    void saveForRecovery() { m_recovery.saveNow(); }

Q_SIGNALS:
    /// Path or modified state are others now.
    void changed();
    /// Another document is in the scene.
    void replaced();
    void localeChanged();

private:
    bool load(const QString &path, QString *savedPath);
    bool saveTo(const QString &path);
    void afterOpening(const QString &path);
    void askForLocale();
    void askForMissingInputs();
    bool chooseInput(InputNode *input, const QString &path);
    QString resolved(const InputNode &input) const;
    QString startFolder() const;

    Parts m_parts;
    QWidget *m_window;
    AutoRecovery m_recovery;
    InputWatch m_watch;
    bool m_isRecovered = false;
    bool m_isDeclined = false;
};
