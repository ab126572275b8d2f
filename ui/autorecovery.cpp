#include "autorecovery.h"

#include "documentfile.h"
#include "graphscene.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

constexpr int intervalMs = 2 * 60 * 1000;

QString folder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
           QLatin1String("/TWXAutoRecovery");
}

QString lockOf(const QString &path)
{
    return path + QLatin1String(".lock");
}

} // namespace

AutoRecovery::AutoRecovery(const GraphScene *scene, QObject *parent)
    : QObject(parent)
    , m_scene(scene)
    , m_path(QStringLiteral("%1/%2.transform")
                 .arg(folder(), QString::number(QCoreApplication::applicationPid())))
{
    m_timer.setInterval(intervalMs);
    connect(&m_timer, &QTimer::timeout, this, &AutoRecovery::saveNow);
}

AutoRecovery::~AutoRecovery()
{
    remove();
}

void AutoRecovery::setModified(bool modified)
{
    m_modified = modified;
    if (!modified) {
        m_timer.stop();
        remove();
    } else if (!m_timer.isActive()) {
        m_timer.start();
    }
}

void AutoRecovery::saveNow()
{
    if (!m_modified || !QDir().mkpath(folder())) {
        return;
    }
    if (!m_lock) {
        m_lock = std::make_unique<QLockFile>(lockOf(m_path));
        m_lock->setStaleLockTime(0);
        if (!m_lock->tryLock()) {
            m_lock.reset();
            return;
        }
    }
    // Written whole before it takes the place of the last one.
    const QString fresh = m_path + QLatin1String(".new");
    QFile file(fresh);
    QString error;
    if (file.open(QIODevice::WriteOnly) &&
        DocumentFile::saveTo(&file, m_scene->document().path, *m_scene, &error)) {
        file.close();
        QFile::remove(m_path);
        file.rename(m_path);
    }
}

void AutoRecovery::remove()
{
    if (m_lock) {
        QFile::remove(m_path);
        m_lock.reset();
    }
}

AutoRecovery::Left AutoRecovery::find()
{
    const QDir files(folder());
    for (const QFileInfo &file :
         files.entryInfoList({QStringLiteral("*.transform")}, QDir::Files, QDir::Time)) {
        QLockFile lock(lockOf(file.absoluteFilePath()));
        lock.setStaleLockTime(0);
        if (lock.tryLock()) {
            return {file.absoluteFilePath(), file.lastModified()};
        }
    }
    return {};
}

void AutoRecovery::discard(const QString &path)
{
    QFile::remove(path);
    QFile::remove(lockOf(path));
}

QString AutoRecovery::ago(const QDateTime &saved)
{
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    constexpr qint64 day = 24 * hour;
    const qint64 seconds = qMax(saved.secsTo(QDateTime::currentDateTime()), qint64(0));
    const auto text = [](qint64 number, const QString &one, const QString &many) {
        return number == 1 ? one : many.arg(number);
    };
    if (seconds < hour) {
        return text(qMax(seconds / minute, qint64(1)), tr("1 minute"), tr("%1 minutes"));
    }
    return seconds < day ? text(seconds / hour, tr("1 hour"), tr("%1 hours"))
                         : text(seconds / day, tr("1 day"), tr("%1 days"));
}
