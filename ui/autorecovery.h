#pragma once

#include <QDateTime>
#include <QLockFile>
#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>

class GraphScene;

/// Keeps a copy of a document with unsaved changes, for the case that the program does not end
/// well. Every running program has a file of its own.
class AutoRecovery final : public QObject
{
    Q_OBJECT

public:
    explicit AutoRecovery(const GraphScene *scene, QObject *parent = nullptr);
    ~AutoRecovery() override;

    /// Whether there is anything to keep; set by the document's owner.
    void setModified(bool modified);
    /// Writes the copy now.
    void saveNow();

    /// A file that a program left which does not run any more; empty when there is none. It stays
    /// until it is removed with discard().
    struct Left
    {
        QString path;
        QDateTime saved;
    };
    static Left find();
    static void discard(const QString &path);
    /// "3 minutes"
    static QString ago(const QDateTime &saved);

private:
    void remove();

    const GraphScene *m_scene;
    QTimer m_timer;
    QString m_path;
    std::unique_ptr<QLockFile> m_lock;
    bool m_modified = false;
};
