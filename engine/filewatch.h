#pragma once

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTimer>

/// Tells when files on disk have new content. Survives programs that save by deleting the file or
/// by renaming another one over it, and waits until a file has been left alone for a moment. A file
/// that is gone is not told; it is when it comes back changed.
class FileWatch : public QObject
{
    Q_OBJECT

public:
    explicit FileWatch(QObject *parent = nullptr);

    /// Absolute paths; the files need not exist. What was watched before and is not named is
    /// forgotten.
    void setFiles(const QStringList &paths);
    QStringList files() const { return m_states.keys(); }

Q_SIGNALS:
    void changed(const QStringList &paths);

private:
    struct State
    {
        bool exists = false;
        qint64 size = 0;
        qint64 modified = 0; ///< nanoseconds
        quint64 identity = 0;

        friend bool operator==(const State &a, const State &b)
        {
            return a.exists == b.exists && a.size == b.size && a.modified == b.modified &&
                   a.identity == b.identity;
        }
    };
    static State stateOf(const QString &path);
    void follow();
    void somethingHappened();
    void look();

    QFileSystemWatcher m_watcher;
    QTimer m_quiet;   // ends when nothing has happened for a moment
    QTimer m_longest; // for files that are written to all the time
    QHash<QString, State> m_states;
};
