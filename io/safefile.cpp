#include "safefile.h"

#include <QFile>
#include <QRandomGenerator>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int mostLinks = 40;
constexpr int mostNames = 100;
constexpr qint64 earlySyncBytes = 8 << 20;

QByteArray folderOf(const QByteArray &path)
{
    const int slash = path.lastIndexOf('/');
    return slash < 0    ? QByteArrayLiteral(".")
           : slash == 0 ? QByteArrayLiteral("/")
                        : path.left(slash);
}

/// Where a link whose target does not exist yet points to; empty when links go round in circles.
QByteArray danglingTarget(QByteArray path)
{
    for (int i = 0; i < mostLinks; ++i) {
        QByteArray link(4096, '\0');
        const ssize_t length = ::readlink(path.constData(), link.data(), size_t(link.size()));
        if (length < 0) {
            return path;
        }
        link.truncate(int(length));
        path = link.startsWith('/') ? link : folderOf(path) + '/' + link;
    }
    return QByteArray();
}

/// Names of files that the process has open: replacing what they lead to would cut off the reader.
bool namesOpenFile(const QByteArray &path)
{
    return path.startsWith("/dev/fd/") || path.startsWith("/proc/") || path == "/dev/stdout" ||
           path == "/dev/stderr";
}

// Short, so that it fits wherever the file's own name does.
QByteArray randomName(const QByteArray &folder)
{
    return folder + "/.tw-" + QByteArray::number(QRandomGenerator::global()->generate(), 36);
}

QByteArray nameFor(const QByteArray &target, const QByteArray &folder)
{
    return folder + "/.tw-" +
           QByteArray::number(qChecksum(target.constData(), uint(target.size())));
}

/// Whoever is about to rename a file of this name holds its lock.
void removeRemnant(const QByteArray &path)
{
    const int file = ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) == 0) {
        ::unlink(path.constData());
    }
    if (file >= 0) {
        ::close(file);
    }
}

/// A new file of a random name, or -1; the name is then empty.
int createNamed(const QByteArray &folder, mode_t mode, QByteArray *name)
{
    for (int i = 0; i < mostNames; ++i) {
        *name = randomName(folder);
        const int file = ::open(name->constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (file >= 0) {
            return file;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    name->clear();
    return -1;
}

bool writeAll(int file, const char *bytes, qint64 size)
{
    while (size > 0) {
        const ssize_t written = ::write(file, bytes, size_t(size));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            errno = written == 0 ? EIO : errno;
            return false;
        }
        bytes += written;
        size -= written;
    }
    return true;
}

/// Copies from one file position to the other up to the end, in the kernel where it can.
bool copyRest(int from, int to, qint64 *copied)
{
    while (true) {
        const ssize_t count = ::copy_file_range(from, nullptr, to, nullptr, size_t(1) << 30, 0);
        if (count <= 0) {
            break;
        }
        *copied += count;
    }
    // Not every file system can; whatever is left is copied by hand.
    const size_t blockSize = size_t(1) << 20;
    const std::unique_ptr<char[]> block(new char[blockSize]);
    while (true) {
        const ssize_t count = ::read(from, block.get(), blockSize);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return count == 0;
        }
        if (!writeAll(to, block.get(), count)) {
            return false;
        }
        *copied += count;
    }
}

qint64 modifiedTime(const struct stat &status)
{
    return qint64(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
}

} // namespace

SafeFile::~SafeFile()
{
    discard();
}

bool SafeFile::open(const QString &path, Start start)
{
    discard();
    m_path = path;
    m_error.clear();
    m_target.clear();
    m_oldSize = 0;
    m_unsynced = 0;
    m_replaces = false;
    m_direct = false;
    m_appends = false;
    if (path.contains(QChar(0))) {
        return failWith(tr("it is not a valid file path"));
    }
    if (!findTarget()) {
        return false;
    }
    if (m_direct) {
        return openDirect();
    }
    m_appends = m_replaces && start == Start::OldContent;
    return openTemporary() && (!m_appends || copyOldContent());
}

/// Finds out what the path stands for, and where the new file has to go.
bool SafeFile::findTarget()
{
    const QByteArray path = QFile::encodeName(m_path);
    struct stat status = {};
    if (::stat(path.constData(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) {
            return failWith(tr("it is a folder"));
        }
        if (S_ISBLK(status.st_mode)) {
            return failWith(tr("it is a disk or another block device"));
        }
        if (!S_ISREG(status.st_mode) || namesOpenFile(path)) {
            m_direct = true;
            m_target = path;
            return true;
        }
        const std::unique_ptr<char, decltype(&std::free)> real(
            ::realpath(path.constData(), nullptr), &std::free);
        if (!real) {
            return fail(errno);
        }
        m_target = real.get();
        m_replaces = true;
        // The folder alone decides whether a file can be replaced, but a file that may not be
        // written to is protected on purpose.
        if (::faccessat(AT_FDCWD, m_target.constData(), W_OK, AT_EACCESS) != 0) {
            return fail(errno);
        }
    } else if (errno == ENOENT) {
        m_target = danglingTarget(path);
        if (m_target.isEmpty()) {
            return fail(m_path.isEmpty() ? ENOENT : ELOOP);
        }
        if (m_target.endsWith('/')) {
            return failWith(tr("it is a folder"));
        }
    } else {
        return fail(errno);
    }
    m_folder = folderOf(m_target);
    if (::stat(m_folder.constData(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return failWith(tr("folder '%1' does not exist").arg(QFile::decodeName(m_folder)));
    }
    return true;
}

bool SafeFile::openDirect()
{
    // Without waiting: a pipe that nobody reads is an error, not a program that hangs.
    m_file = ::open(m_target.constData(), O_WRONLY | O_APPEND | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (m_file < 0) {
        return fail(errno);
    }
    const int flags = ::fcntl(m_file, F_GETFL);
    return (flags >= 0 && ::fcntl(m_file, F_SETFL, flags & ~O_NONBLOCK) == 0) || fail(errno);
}

bool SafeFile::openTemporary()
{
    // What replaces a private file must be private from its first byte on.
    const mode_t mode = m_replaces ? 0600 : 0666;
    m_file = ::open(m_folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode);
    if (m_file < 0) {
        m_file = createNamed(m_folder, mode, &m_temporary);
    }
    if (m_file < 0) {
        return failWith(tr("no file can be created in '%1' (%2)")
                            .arg(QFile::decodeName(m_folder), qt_error_string(errno)));
    }
    return !m_replaces || keepAttributes();
}

bool SafeFile::keepAttributes()
{
    struct stat old = {};
    struct stat own = {};
    if (::stat(m_target.constData(), &old) != 0 || ::fstat(m_file, &own) != 0) {
        return fail(errno);
    }
    m_oldModified = modifiedTime(old);
    mode_t mode = old.st_mode & 0777;
    // Only the system administrator can give files away; else the writer owns the new one.
    const bool sameOwner = own.st_uid == old.st_uid || ::fchown(m_file, old.st_uid, gid_t(-1)) == 0;
    Q_UNUSED(sameOwner)
    if (own.st_gid != old.st_gid && ::fchown(m_file, uid_t(-1), old.st_gid) != 0) {
        mode = (mode & ~mode_t(070)) | (mode & 07) << 3; // another group gets no more than all
    }
    return ::fchmod(m_file, mode) == 0 || fail(errno);
}

bool SafeFile::copyOldContent()
{
    const int old = ::open(m_target.constData(), O_RDONLY | O_CLOEXEC);
    if (old < 0) {
        return failWith(tr("its present content cannot be read (%1)").arg(qt_error_string(errno)));
    }
    const bool copied = copyRest(old, m_file, &m_oldSize);
    const int systemError = errno;
    ::close(old);
    return copied || fail(systemError);
}

QByteArray SafeFile::oldBytes(qint64 offset, int size) const
{
    QByteArray bytes(size, '\0');
    const ssize_t count = ::pread(m_file, bytes.data(), size_t(size), offset);
    bytes.truncate(int(qMax(ssize_t(0), count)));
    return bytes;
}

QByteArray SafeFile::oldHead(int size) const
{
    return oldBytes(0, int(qMin(qint64(size), m_oldSize)));
}

QByteArray SafeFile::oldTail(int size) const
{
    const int count = int(qMin(qint64(size), m_oldSize));
    return oldBytes(m_oldSize - count, count);
}

bool SafeFile::cutOld(qint64 size)
{
    const qint64 kept = m_oldSize - size;
    if (m_file < 0) {
        return false;
    }
    return (::ftruncate(m_file, kept) == 0 && ::lseek(m_file, kept, SEEK_SET) == kept) ||
           fail(errno);
}

bool SafeFile::write(const char *bytes, qint64 size)
{
    if (m_file < 0) {
        return false;
    }
    if (!writeAll(m_file, bytes, size)) {
        return fail(errno);
    }
    m_unsynced += size;
    if (m_replaces && m_unsynced >= earlySyncBytes) {
        // The disk works while the next rows are made, so that commit() has less to wait for.
        ::sync_file_range(m_file, 0, 0, SYNC_FILE_RANGE_WRITE);
        m_unsynced = 0;
    }
    return true;
}

bool SafeFile::isOldFileUnchanged()
{
    struct stat status = {};
    return ::stat(m_target.constData(), &status) == 0 && status.st_size == m_oldSize &&
           modifiedTime(status) == m_oldModified;
}

bool SafeFile::linkTo(const QByteArray &path) const
{
    const QByteArray self = "/proc/self/fd/" + QByteArray::number(m_file);
    return ::linkat(AT_FDCWD, self.constData(), AT_FDCWD, path.constData(), AT_SYMLINK_FOLLOW) == 0;
}

/// Gives the nameless temporary file a name. The first choice is always the same for a file, so
/// that what a kill may leave behind until the renaming goes away when the file is written again.
bool SafeFile::nameTemporary()
{
    ::flock(m_file, LOCK_EX | LOCK_NB); // tells the living from what was left behind
    const QByteArray usual = nameFor(m_target, m_folder);
    for (int i = 0; i < mostNames; ++i) {
        m_temporary = i < 2 ? usual : randomName(m_folder);
        if (i == 1) {
            removeRemnant(usual);
        }
        if (linkTo(m_temporary)) {
            return true;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    m_temporary.clear();
    return false;
}

/// For systems that cannot name a nameless file: its content moves to one that has a name.
bool SafeFile::moveToNamed()
{
    const int nameless = m_file;
    m_file = createNamed(m_folder, m_replaces ? 0600 : 0666, &m_temporary);
    int systemError = errno;
    bool moved = m_file >= 0;
    if (moved) {
        qint64 copied = 0;
        moved = (!m_replaces || keepAttributes()) && ::lseek(nameless, 0, SEEK_SET) == 0 &&
                copyRest(nameless, m_file, &copied) && sync();
        systemError = errno;
    }
    ::close(nameless);
    return moved || !m_error.isEmpty() ? moved : fail(systemError);
}

/// The new bytes must be on the disk before the old ones go. Where there was no file, there is
/// nothing to protect and no reason to wait, except on the systems without nameless files: those in
/// a network tell only now whether there was room.
bool SafeFile::sync()
{
    if (!m_replaces && m_temporary.isEmpty()) {
        return true;
    }
    return ::fsync(m_file) == 0 || errno == EINVAL || errno == ENOTSUP || fail(errno);
}

/// The file gets its name, or a name at all, as late as possible: what is killed before leaves
/// nothing beside the old file.
bool SafeFile::putInPlace()
{
    if (m_temporary.isEmpty() && !m_replaces && linkTo(m_target)) {
        return true;
    }
    if (m_temporary.isEmpty() && !nameTemporary() && !moveToNamed()) {
        return false;
    }
    if (::rename(m_temporary.constData(), m_target.constData()) != 0) {
        return fail(errno);
    }
    m_temporary.clear();
    return true;
}

bool SafeFile::commit()
{
    if (m_file < 0) {
        return false;
    }
    if (m_appends && !isOldFileUnchanged()) {
        return failWith(tr("another program changed it meanwhile"));
    }
    if (!m_direct && (!sync() || !putInPlace())) {
        return false;
    }
    const int file = m_file;
    m_file = -1;
    return ::close(file) == 0 || errno == EINTR || !m_direct || fail(errno);
}

bool SafeFile::fail(int systemError)
{
    return failWith(qt_error_string(systemError));
}

bool SafeFile::failWith(const QString &reason)
{
    m_error = tr("Unable to write to '%1': %2.").arg(m_path, reason);
    discard();
    return false;
}

void SafeFile::discard()
{
    if (m_file >= 0) {
        ::close(m_file);
        m_file = -1;
    }
    if (!m_temporary.isEmpty()) {
        ::unlink(m_temporary.constData());
        m_temporary.clear();
    }
}
