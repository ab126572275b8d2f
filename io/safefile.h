#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

/// A file that changes only as a whole: what is written goes to a temporary file beside it, which
/// takes its place in commit(). Until then, and whenever anything fails, the old file stays as it
/// was and nothing is left behind, also when the program is killed (on file systems that have no
/// nameless files, a kill leaves the temporary file). Symbolic links are followed, so that a link
/// stays a link; permissions of an old file are kept. Pipes and character devices have no old
/// content to save and are written directly.
class SafeFile
{
    Q_DECLARE_TR_FUNCTIONS(SafeFile)

public:
    enum class Start { Empty, OldContent };

    SafeFile() = default;
    ~SafeFile();
    SafeFile(const SafeFile &) = delete;
    SafeFile &operator=(const SafeFile &) = delete;

    /// With OldContent what is written comes after the old file's bytes.
    [[nodiscard]] bool open(const QString &path, Start start);
    /// Bytes that stood in the file when it was opened with OldContent.
    qint64 oldSize() const { return m_oldSize; }
    /// The first or last bytes of the old content, at most this many.
    QByteArray oldHead(int size) const;
    QByteArray oldTail(int size) const;
    /// Drops this many bytes at the end of the old content; what is written comes in their place.
    [[nodiscard]] bool cutOld(qint64 size);
    [[nodiscard]] bool write(const char *bytes, qint64 size);
    [[nodiscard]] bool commit();

    /// A whole sentence on what went wrong, with the path and the system's reason.
    QString error() const { return m_error; }

private:
    bool findTarget();
    bool openDirect();
    bool openTemporary();
    bool keepAttributes();
    bool copyOldContent();
    bool isOldFileUnchanged();
    bool linkTo(const QByteArray &path) const;
    bool nameTemporary();
    bool moveToNamed();
    bool sync();
    bool putInPlace();
    bool fail(int systemError);
    bool failWith(const QString &reason);
    QByteArray oldBytes(qint64 offset, int size) const;
    void discard();

    QString m_path;
    QString m_error;
    /// Where the links of the path end; encoded for the system.
    QByteArray m_target;
    QByteArray m_folder;
    /// Empty while the temporary file has no name, which leaves nothing behind even when the
    /// program is killed.
    QByteArray m_temporary;
    int m_file = -1;
    bool m_replaces = false;
    bool m_direct = false;
    bool m_appends = false;
    qint64 m_oldSize = 0;
    qint64 m_oldModified = 0;
    qint64 m_unsynced = 0;
};
