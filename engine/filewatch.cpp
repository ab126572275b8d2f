#include "filewatch.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <sys/stat.h>

namespace {

constexpr int quietMilliseconds = 300;
constexpr int longestMilliseconds = 3000;

} // namespace

FileWatch::FileWatch(QObject *parent)
    : QObject(parent)
{
    m_quiet.setSingleShot(true);
    m_quiet.setInterval(quietMilliseconds);
    m_longest.setSingleShot(true);
    m_longest.setInterval(longestMilliseconds);
    connect(&m_quiet, &QTimer::timeout, this, &FileWatch::look);
    connect(&m_longest, &QTimer::timeout, this, &FileWatch::look);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FileWatch::somethingHappened);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &FileWatch::somethingHappened);
}

FileWatch::State FileWatch::stateOf(const QString &path)
{
    constexpr qint64 nanoseconds = 1000000000;
    struct stat found = {};
    State state;
    if (stat(QFile::encodeName(path).constData(), &found) == 0) {
        state.exists = true;
        state.size = found.st_size;
        state.modified = found.st_mtim.tv_sec * nanoseconds + found.st_mtim.tv_nsec;
        state.identity = found.st_ino;
    }
    return state;
}

void FileWatch::setFiles(const QStringList &paths)
{
    QHash<QString, State> states;
    for (const QString &path : paths) {
        states.insert(path, m_states.contains(path) ? m_states[path] : stateOf(path));
    }
    m_states = std::move(states);
    follow();
}

/// Watches the files, and their folders because a file that was replaced is watched no longer.
void FileWatch::follow()
{
    QSet<QString> wanted;
    for (auto state = m_states.cbegin(); state != m_states.cend(); ++state) {
        const QFileInfo file(state.key());
        if (file.exists()) {
            wanted.insert(state.key());
        }
        if (QFileInfo::exists(file.path())) {
            wanted.insert(file.path());
        }
    }
    const QStringList current = m_watcher.files() + m_watcher.directories();
    for (const QString &path : current) {
        if (!wanted.remove(path)) {
            m_watcher.removePath(path);
        }
    }
    if (!wanted.isEmpty()) {
        m_watcher.addPaths(wanted.values());
    }
}

void FileWatch::somethingHappened()
{
    m_quiet.start();
    if (!m_longest.isActive()) {
        m_longest.start();
    }
}

void FileWatch::look()
{
    m_quiet.stop();
    m_longest.stop();
    follow();
    QStringList found;
    for (auto state = m_states.begin(); state != m_states.end(); ++state) {
        const State now = stateOf(state.key());
        if (now.exists && !(now == *state)) {
            *state = now;
            found.append(state.key());
        }
    }
    if (!found.isEmpty()) {
        found.sort();
        Q_EMIT changed(found);
    }
}
