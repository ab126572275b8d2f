#include "outputtesttools.h"
#include "safefile.h"
#include "testsupport.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace OutputTest;

namespace {

bool writeText(SafeFile *file, const QByteArray &text)
{
    return file->write(text.constData(), text.size());
}

bool save(const QString &path, SafeFile::Start start, const QByteArray &text, QString *error)
{
    SafeFile file;
    const bool saved = file.open(path, start) && writeText(&file, text) && file.commit();
    *error = file.error();
    return saved;
}

/// Lets no file grow beyond a size while it lives, as a full disk would.
class SmallDisk
{
public:
    explicit SmallDisk(rlim_t bytes)
    {
        ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        const rlimit limit{bytes, m_old.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallDisk() { ::setrlimit(RLIMIT_FSIZE, &m_old); }

private:
    rlimit m_old = {};
};

} // namespace

class TestSafeFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
    }

    void savesWholeContent_data()
    {
        QTest::addColumn<QByteArray>("old");
        QTest::addColumn<bool>("append");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("new") << QByteArray() << false << QByteArray("text");
        QTest::newRow("new, appending") << QByteArray() << true << QByteArray("text");
        QTest::newRow("replaced by shorter")
            << QByteArray("older text") << false << QByteArray("text");
        QTest::newRow("appended") << QByteArray("old") << true << QByteArray("oldtext");
        const QByteArray large(3000001, 'x');
        QTest::newRow("appended to large") << large << true << large + "text";
    }

    void savesWholeContent()
    {
        QFETCH(QByteArray, old);
        QFETCH(bool, append);
        QFETCH(QByteArray, expected);
        const QString path = m_folder->filePath(QStringLiteral("a.csv"));
        if (!old.isEmpty()) {
            makeFile(path, old);
        }
        SafeFile file;
        QVERIFY(file.open(path, append ? SafeFile::Start::OldContent : SafeFile::Start::Empty));
        QCOMPARE(file.oldSize(), append ? qint64(old.size()) : 0);
        QCOMPARE(file.oldTail(5), append ? old.right(5) : QByteArray());
        QCOMPARE(file.oldHead(2), append ? old.left(2) : QByteArray());
        QVERIFY(writeText(&file, "te"));
        QVERIFY(writeText(&file, "xt"));
        QCOMPARE(contentOf(path), old.isEmpty() ? QByteArray("<no file>") : old);
        QVERIFY2(file.commit(), qPrintable(file.error()));
        QCOMPARE(contentOf(path), expected);
        QCOMPARE(namesIn(m_folder->path()), QStringList{QStringLiteral("a.csv")});
    }

    void keepsPermissions_data()
    {
        QTest::addColumn<int>("mode");
        QTest::newRow("private") << 0600;
        QTest::newRow("group may read") << 0640;
        QTest::newRow("everybody may write") << 0666;
        QTest::newRow("executable") << 0755;
    }

    void keepsPermissions()
    {
        QFETCH(int, mode);
        const QString path = m_folder->filePath(QStringLiteral("a.csv"));
        makeFile(path, "old");
        QVERIFY(::chmod(QFile::encodeName(path).constData(), mode_t(mode)) == 0);
        QString error;
        QVERIFY2(save(path, SafeFile::Start::Empty, "new", &error), qPrintable(error));
        struct stat status = {};
        QVERIFY(::stat(QFile::encodeName(path).constData(), &status) == 0);
        QCOMPARE(int(status.st_mode & 07777), mode);
        QCOMPARE(contentOf(path), QByteArray("new"));
    }

    void newFilesFollowTheUmask()
    {
        const mode_t old = ::umask(027);
        const QString path = m_folder->filePath(QStringLiteral("a.csv"));
        QString error;
        const bool saved = save(path, SafeFile::Start::Empty, "new", &error);
        ::umask(old);
        QVERIFY2(saved, qPrintable(error));
        struct stat status = {};
        QVERIFY(::stat(QFile::encodeName(path).constData(), &status) == 0);
        QCOMPARE(int(status.st_mode & 07777), 0640);
    }

    void followsLinks_data()
    {
        QTest::addColumn<QString>("linkTo");
        QTest::addColumn<bool>("targetExists");
        QTest::newRow("relative") << QStringLiteral("sub/real.csv") << true;
        QTest::newRow("absolute") << QStringLiteral("%1/sub/real.csv") << true;
        QTest::newRow("to a file that is not there yet") << QStringLiteral("sub/real.csv") << false;
        QTest::newRow("to another link") << QStringLiteral("sub/link.csv") << true;
        QTest::newRow("to another link that hangs") << QStringLiteral("sub/link.csv") << false;
    }

    void followsLinks()
    {
        QFETCH(QString, linkTo);
        QFETCH(bool, targetExists);
        QDir(m_folder->path()).mkdir(QStringLiteral("sub"));
        const QString real = m_folder->filePath(QStringLiteral("sub/real.csv"));
        const QString link = m_folder->filePath(QStringLiteral("a.csv"));
        if (targetExists) {
            makeFile(real, "old,");
        }
        QVERIFY(::symlink("real.csv",
                          QFile::encodeName(m_folder->filePath(QStringLiteral("sub/link.csv")))
                              .constData()) == 0);
        const QString to =
            linkTo.contains(QLatin1Char('%')) ? linkTo.arg(m_folder->path()) : linkTo;
        QVERIFY(::symlink(QFile::encodeName(to).constData(), QFile::encodeName(link).constData()) ==
                0);
        QString error;
        QVERIFY2(save(link, SafeFile::Start::OldContent, "new", &error), qPrintable(error));
        QVERIFY(QFileInfo(link).isSymLink());
        QVERIFY(!QFileInfo(real).isSymLink());
        QCOMPARE(contentOf(real), QByteArray(targetExists ? "old,new" : "new"));
        QCOMPARE(namesIn(m_folder->path()).size(), 2);
        QCOMPARE(namesIn(m_folder->filePath(QStringLiteral("sub"))).size(), 2);
    }

    void withoutCommitNothingChanges()
    {
        const QString path = m_folder->filePath(QStringLiteral("a.csv"));
        makeFile(path, "old");
        {
            SafeFile file;
            QVERIFY(file.open(path, SafeFile::Start::Empty));
            QVERIFY(writeText(&file, QByteArray(1000, 'x')));
        }
        QCOMPARE(contentOf(path), QByteArray("old"));
        QCOMPARE(namesIn(m_folder->path()).size(), 1);
    }

    void fullDiskLeavesOldFile_data()
    {
        QTest::addColumn<bool>("append");
        QTest::newRow("replacing") << false;
        QTest::newRow("appending") << true;
    }

    void fullDiskLeavesOldFile()
    {
        QFETCH(bool, append);
        const QString path = m_folder->filePath(QStringLiteral("a.csv"));
        makeFile(path, QByteArray(3000, 'o'));
        QString error;
        {
            const SmallDisk disk(4096);
            QVERIFY(!save(path, append ? SafeFile::Start::OldContent : SafeFile::Start::Empty,
                          QByteArray(5000, 'n'), &error));
        }
        QVERIFY2(error.contains(path) && error.contains(qt_error_string(EFBIG)), qPrintable(error));
        QCOMPARE(contentOf(path), QByteArray(3000, 'o'));
        QCOMPARE(namesIn(m_folder->path()).size(), 1);
    }

    void fullDiskWhileOldContentIsCopied()
    {
        const QString path = m_folder->filePath(QStringLiteral("a.csv"));
        makeFile(path, QByteArray(50000, 'o'));
        QString error;
        {
            const SmallDisk disk(4096);
            QVERIFY(!save(path, SafeFile::Start::OldContent, "n", &error));
        }
        QVERIFY2(error.contains(qt_error_string(EFBIG)), qPrintable(error));
        QCOMPARE(contentOf(path).size(), 50000);
        QCOMPARE(namesIn(m_folder->path()).size(), 1);
    }

    void refusesWhatCannotBeWritten_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("reason");
        QTest::newRow("folder") << QStringLiteral("folder") << QStringLiteral("is a folder");
        QTest::newRow("folder that is not there")
            << QStringLiteral("none/") << QStringLiteral("is a folder");
        QTest::newRow("missing folder")
            << QStringLiteral("none/a.csv") << QStringLiteral("does not exist");
        QTest::newRow("file as folder") << QStringLiteral("file/a.csv") << qt_error_string(ENOTDIR);
        QTest::newRow("circle of links") << QStringLiteral("circle") << qt_error_string(ELOOP);
        QTest::newRow("long name")
            << QString(256, QLatin1Char('a')) << qt_error_string(ENAMETOOLONG);
        QTest::newRow("NUL") << QStringLiteral("a") + QChar(0) + QStringLiteral("b")
                             << QStringLiteral("not a valid file path");
    }

    void refusesWhatCannotBeWritten()
    {
        QFETCH(QString, name);
        QFETCH(QString, reason);
        QDir(m_folder->path()).mkdir(QStringLiteral("folder"));
        makeFile(m_folder->filePath(QStringLiteral("file")), "old");
        const QByteArray circle = QFile::encodeName(m_folder->filePath(QStringLiteral("circle")));
        QVERIFY(::symlink("circle", circle.constData()) == 0);
        const QStringList before = namesIn(m_folder->path());
        const QString path = m_folder->path() + QLatin1Char('/') + name;
        QString error;
        QVERIFY(!save(path, SafeFile::Start::Empty, "new", &error));
        QVERIFY2(error.contains(path), qPrintable(error));
        QVERIFY2(error.contains(reason), qPrintable(error));
        QCOMPARE(namesIn(m_folder->path()), before);
    }

    void refusesProtectedFilesAndFolders()
    {
        if (::geteuid() == 0) {
            QSKIP("nothing is protected from the system administrator");
        }
        const QString path = m_folder->filePath(QStringLiteral("a.csv"));
        makeFile(path, "old");
        QString error;
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
        QVERIFY(!save(path, SafeFile::Start::Empty, "new", &error));
        QVERIFY2(error.contains(qt_error_string(EACCES)), qPrintable(error));
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
        QVERIFY(QFile::setPermissions(m_folder->path(), QFile::ReadOwner | QFile::ExeOwner));
        QVERIFY(!save(path, SafeFile::Start::Empty, "new", &error));
        QVERIFY2(error.contains(qt_error_string(EACCES)), qPrintable(error));
        QVERIFY(QFile::setPermissions(m_folder->path(),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QCOMPARE(contentOf(path), QByteArray("old"));
    }

    /// What a kill between naming and renaming leaves.
    void tidiesUpAfterKill_data()
    {
        QTest::addColumn<bool>("alive");
        QTest::newRow("left behind") << false;
        QTest::newRow("another program is just there") << true;
    }

    void tidiesUpAfterKill()
    {
        QFETCH(bool, alive);
        const QString path = QFileInfo(m_folder->path()).canonicalFilePath() + "/a.csv";
        makeFile(path, "old");
        const QByteArray name = QFile::encodeName(path);
        const QString left = m_folder->filePath(
            QStringLiteral(".tw-%1").arg(qChecksum(name.constData(), uint(name.size()))));
        makeFile(left, "half");
        const int other = ::open(QFile::encodeName(left).constData(), O_RDONLY);
        QVERIFY(other >= 0);
        QVERIFY(!alive || ::flock(other, LOCK_EX) == 0);
        QString error;
        QVERIFY2(save(path, SafeFile::Start::Empty, "new", &error), qPrintable(error));
        ::close(other);
        QCOMPARE(contentOf(path), QByteArray("new"));
        QCOMPARE(QFile::exists(left), alive);
        QCOMPARE(namesIn(m_folder->path()).size(), alive ? 2 : 1);
    }

    void folderThatVanishes()
    {
        const QString sub = m_folder->filePath(QStringLiteral("sub"));
        QDir().mkdir(sub);
        SafeFile file;
        QVERIFY(file.open(sub + QStringLiteral("/a.csv"), SafeFile::Start::Empty));
        QVERIFY(writeText(&file, "new"));
        QVERIFY(QDir(sub).removeRecursively());
        QVERIFY(!file.commit());
        QVERIFY2(file.error().contains(sub), qPrintable(file.error()));
    }

    void appendingRefusesFileThatChangedMeanwhile()
    {
        const QString path = m_folder->filePath(QStringLiteral("a.csv"));
        makeFile(path, "old");
        SafeFile file;
        QVERIFY(file.open(path, SafeFile::Start::OldContent));
        QVERIFY(writeText(&file, "new"));
        makeFile(path, "old and more");
        QVERIFY(!file.commit());
        QCOMPARE(contentOf(path), QByteArray("old and more"));
        QCOMPARE(namesIn(m_folder->path()).size(), 1);
    }

    void fullDeviceIsToldAndStays()
    {
        QString error;
        const QString path = QStringLiteral("/dev/full");
        QVERIFY(!save(path, SafeFile::Start::Empty, "new", &error));
        QVERIFY2(error.contains(path) && error.contains(qt_error_string(ENOSPC)),
                 qPrintable(error));
        struct stat status = {};
        QVERIFY(::stat("/dev/full", &status) == 0);
        QVERIFY(S_ISCHR(status.st_mode));
    }

    void writesToPipeThatIsRead()
    {
        const QString path = m_folder->filePath(QStringLiteral("pipe"));
        const QByteArray name = QFile::encodeName(path);
        QVERIFY(::mkfifo(name.constData(), 0600) == 0);
        QString error;
        QVERIFY(!save(path, SafeFile::Start::Empty, "lost", &error)); // and does not hang

        const int reader = ::open(name.constData(), O_RDONLY | O_NONBLOCK);
        QVERIFY(reader >= 0);
        QVERIFY2(save(path, SafeFile::Start::Empty, "new", &error), qPrintable(error));
        char bytes[10] = {};
        const ssize_t count = ::read(reader, bytes, sizeof bytes);
        ::close(reader);
        QCOMPARE(QByteArray(bytes, int(count)), QByteArray("new"));
        QCOMPARE(namesIn(m_folder->path()).size(), 1);
    }

    void openFileIsNotReplaced()
    {
        const QString path = m_folder->filePath(QStringLiteral("a.csv"));
        const int out = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT, 0600);
        QVERIFY(out >= 0);
        QString error;
        const QString openPath = QStringLiteral("/dev/fd/%1").arg(out);
        const bool saved = save(openPath, SafeFile::Start::Empty, "new", &error);
        char bytes[10] = {};
        const ssize_t count = ::pread(out, bytes, sizeof bytes, 0);
        ::close(out);
        QVERIFY2(saved, qPrintable(error));
        QCOMPARE(QByteArray(bytes, int(count)), QByteArray("new"));
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
};

TW_TEST_CLASS(TestSafeFile)
#include "tst_safefile.moc"
