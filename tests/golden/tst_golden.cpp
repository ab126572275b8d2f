#include "testsupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

/// Runs every document below this folder through the program's command line, in a copy of its case
/// folder, and compares what the run left behind.
///
///     document.transform   the document
///     args                 further arguments, one a line (optional)
///     preferences.ini      the user's settings (optional)
///     expected.log         what was logged, with paths and times masked, and the exit status
///     expected/            the files that the run made or changed
///
/// Everything else in the folder is input. With TABWEAVE_UPDATE_GOLDEN=1 the expectations are
/// written anew instead; review the difference.
class GoldenTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void documentGivesExpectedFiles_data();
    void documentGivesExpectedFiles();
};

using Files = QMap<QString, QByteArray>;

static QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

static bool writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(content) == content.size();
}

// All files below a folder by relative path.
static Files filesBelow(const QString &folder)
{
    Files files;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::NoSymLinks,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        files.insert(QDir(folder).relativeFilePath(path), contentOf(path));
    }
    return files;
}

static bool isExpectation(const QString &name)
{
    return name == QLatin1String("expected.log") || name == QLatin1String("args") ||
           name == QLatin1String("preferences.ini") || name.startsWith(QLatin1String("expected/"));
}

// Paths, dates and times differ from run to run.
static QString masked(QString text, const QString &folder)
{
    text.replace(folder, QStringLiteral("FOLDER"));
    static const QRegularExpression isoTime(
        QStringLiteral("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d"));
    static const QRegularExpression runTime(QStringLiteral("(Started|Ended) run at: [^\\n]*"));
    static const QRegularExpression elapsed(QStringLiteral("(<0.001|\\d[\\d.,e-]*) second\\(s\\)"));
    text.replace(isoTime, QStringLiteral("TIME"));
    text.replace(runTime, QStringLiteral("\\1 run at: TIME"));
    text.replace(elapsed, QStringLiteral("TIME second(s)"));
    return text;
}

static QStringList argumentsOf(const Files &caseFiles)
{
    QStringList arguments{QStringLiteral("-cli"), QStringLiteral("document.transform")};
    const QString more = QString::fromUtf8(caseFiles.value(QStringLiteral("args")));
    return arguments + more.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

// The log of the run: standard output, standard error, exit status.
static QString runProgram(const QString &folder, const Files &caseFiles)
{
    const QTemporaryDir settings;
    const auto preferences = caseFiles.constFind(QStringLiteral("preferences.ini"));
    if (preferences != caseFiles.constEnd()) {
        writeFile(settings.filePath(QStringLiteral("Tabweave/Tabweave.conf")), *preferences);
    }
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), settings.path());
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("en_GB.UTF-8"));
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    program.setProcessEnvironment(environment);
    program.setWorkingDirectory(folder);
    program.start(QStringLiteral(TABWEAVE_PROGRAM), argumentsOf(caseFiles));
    if (!program.waitForFinished(60000) || program.exitStatus() != QProcess::NormalExit) {
        return QStringLiteral("The program did not end by itself.\n") +
               QString::fromUtf8(program.readAllStandardError());
    }
    QString log = QString::fromUtf8(program.readAllStandardOutput());
    const QString errors = QString::fromUtf8(program.readAllStandardError());
    if (!errors.isEmpty()) {
        log += QStringLiteral("--- standard error\n") + errors;
    }
    return masked(log, folder) + QStringLiteral("--- exit status %1\n").arg(program.exitCode());
}

static void update(const QString &caseFolder, const QString &log, const Files &made)
{
    QDir(caseFolder + QStringLiteral("/expected")).removeRecursively();
    QVERIFY(writeFile(caseFolder + QStringLiteral("/expected.log"), log.toUtf8()));
    for (auto file = made.cbegin(); file != made.cend(); ++file) {
        QVERIFY(writeFile(caseFolder + QStringLiteral("/expected/") + file.key(), file.value()));
    }
}

void GoldenTest::documentGivesExpectedFiles_data()
{
    QTest::addColumn<QString>("folder");
    const QDir all(QStringLiteral(GOLDEN_FOLDER));
    const QStringList cases = all.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QVERIFY(!cases.isEmpty());
    for (const QString &name : cases) {
        QTest::newRow(qPrintable(name)) << all.filePath(name);
    }
}

void GoldenTest::documentGivesExpectedFiles()
{
    QFETCH(QString, folder);
    const Files caseFiles = filesBelow(folder);
    const QTemporaryDir copy;
    Files before;
    for (auto file = caseFiles.cbegin(); file != caseFiles.cend(); ++file) {
        if (!isExpectation(file.key())) {
            QVERIFY(writeFile(copy.filePath(file.key()), file.value()));
            before.insert(file.key(), file.value());
        }
    }
    const QString log = runProgram(copy.path(), caseFiles);

    Files made;
    const Files after = filesBelow(copy.path());
    for (auto file = after.cbegin(); file != after.cend(); ++file) {
        const auto old = before.constFind(file.key());
        if (old == before.constEnd() || *old != file.value()) {
            const bool isLog = file.key().endsWith(QLatin1String(".log"));
            made.insert(file.key(),
                        isLog ? masked(QString::fromUtf8(file.value()), copy.path()).toUtf8()
                              : file.value());
        }
    }
    for (auto file = before.cbegin(); file != before.cend(); ++file) {
        QVERIFY2(after.contains(file.key()), qPrintable(file.key()));
    }
    if (qEnvironmentVariableIsSet("TABWEAVE_UPDATE_GOLDEN")) {
        update(folder, log, made);
        return;
    }

    // Line by line, so that a failure shows the first line that differs.
    const QStringList lines = log.split(QLatin1Char('\n'));
    const QStringList expectedLines =
        QString::fromUtf8(caseFiles.value(QStringLiteral("expected.log"))).split(QLatin1Char('\n'));
    QCOMPARE(lines, expectedLines);
    Files expected;
    for (auto file = caseFiles.cbegin(); file != caseFiles.cend(); ++file) {
        if (file.key().startsWith(QLatin1String("expected/"))) {
            expected.insert(file.key().mid(int(qstrlen("expected/"))), file.value());
        }
    }
    QCOMPARE(made.keys(), expected.keys());
    for (auto file = made.cbegin(); file != made.cend(); ++file) {
        QCOMPARE(file.value(), expected.value(file.key()));
    }
}

TW_TEST_CLASS(GoldenTest)
#include "tst_golden.moc"
