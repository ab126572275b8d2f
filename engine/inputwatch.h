#pragma once

#include "filewatch.h"

#include <QObject>

class GraphScene;

/// Marks the inputs of a scene whose file has changed on disk, when their option asks for it, so
/// that they are read again by the next run (which auto run starts). The window makes one; from the
/// command line nothing is watched.
class InputWatch : public QObject
{
    Q_OBJECT

public:
    /// The scene must outlive this object.
    explicit InputWatch(GraphScene *scene);

    /// To be called when the document's folder has changed.
    void update();

Q_SIGNALS:
    /// A text for the log.
    void reloaded(const QString &text);

private:
    void filesChanged(const QStringList &paths);

    GraphScene *m_scene;
    FileWatch m_files;
};
