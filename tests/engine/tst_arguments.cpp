#include "arguments.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

class ArgumentsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void optionsAreRead_data();
    void optionsAreRead();
    void faultsAreNamed_data();
    void faultsAreNamed();
    void everythingLeftOfAFaultIsKept();

private:
    void makeFile(const QString &name);

    QTemporaryDir m_folder;
    QString m_oldFolder;
};

void ArgumentsTest::initTestCase()
{
    m_oldFolder = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder.path()));
    for (const char *name : {"a.transform", "b.TRANSFORM", "a.xml", "noext", "x.transform.bak"}) {
        makeFile(QString::fromLatin1(name));
    }
}

void ArgumentsTest::cleanupTestCase()
{
    QDir::setCurrent(m_oldFolder);
}

void ArgumentsTest::makeFile(const QString &name)
{
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("x");
}

// What was read, in one line.
static QString described(const Arguments &a)
{
    QStringList parts;
    const auto flag = [&parts](bool on, const char *name) {
        if (on) {
            parts.append(QString::fromLatin1(name));
        }
    };
    flag(a.commandLine, "cli");
    flag(a.verbose, "verbose");
    flag(a.newWindow, "new_window");
    flag(a.version, "version");
    flag(a.build, "build");
    if (a.logPath) {
        parts.append(QLatin1String("log=") + *a.logPath);
    }
    for (const QString &file : a.files) {
        parts.append(QLatin1String("file=") + file);
    }
    if (!a.document.isEmpty()) {
        parts.append(QLatin1String("document=") + a.document);
    }
    return parts.join(QLatin1Char(' '));
}

void ArgumentsTest::optionsAreRead_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("expected");
    const auto addRow = [](const char *tag, const char *arguments, const char *expected) {
        QTest::newRow(tag) << QString::fromUtf8(arguments).split(QLatin1Char(' '),
                                                                 Qt::SkipEmptyParts)
                           << QString::fromUtf8(expected);
    };
    addRow("nothing", "", "");
    addRow("one dash", "-cli a.transform", "cli document=a.transform");
    addRow("two dashes, capitals", "--CLI --VERBOSE a.transform",
           "cli verbose document=a.transform");
    addRow("later document replaces", "a.transform -new_window b.TRANSFORM",
           "new_window document=b.TRANSFORM");
    addRow("values", "-log run.log -file a=1 -file b=2", "log=run.log file=a=1 file=b=2");
    addRow("a value may look like an option", "-log -cli -file --log", "log=-cli file=--log");
    addRow("later log replaces", "-log a -log b", "log=b");
    addRow("the value keeps its case", "-FILE Orders=In.CSV", "file=Orders=In.CSV");
    addRow("version needs no document", "-cli -version", "cli version");
    addRow("build needs no document", "--build", "build");
}

void ArgumentsTest::optionsAreRead()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, expected);
    const Arguments read = Arguments::parsed(arguments);
    QCOMPARE(read.error, QString());
    QCOMPARE(described(read), expected);
}

void ArgumentsTest::faultsAreNamed_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("error");
    const auto addRow = [](const char *tag, const char *arguments, const char *error) {
        QTest::newRow(tag) << QString::fromUtf8(arguments).split(QLatin1Char(' '))
                           << QString::fromUtf8(error);
    };
    addRow("three dashes", "---verbose", "Unrecognized argument: -verbose");
    addRow("unknown option", "-cli --Colour", "Unrecognized argument: colour");
    addRow("dash alone", "-", "Unrecognized argument: ");
    addRow("file is last", "-cli a.transform -file", "No value following file argument");
    addRow("log is last", "--LOG", "No value following log argument");
    addRow("no document", "-cli -verbose", "No .transform file specified.");
    addRow("missing document", "-cli none.transform", "'none.transform' not found");
    addRow("missing and wrong suffix", "none.xml", "'none.xml' not found");
    addRow("wrong suffix", "-cli a.xml", "Unrecognized file suffix 'xml' in 'a.xml'");
    addRow("no suffix", "noext", "Unrecognized file suffix '' in 'noext'");
    addRow("last suffix counts", "x.transform.bak",
           "Unrecognized file suffix 'bak' in 'x.transform.bak'");
    addRow("first fault counts", "-bad none.xml", "Unrecognized argument: bad");
}

void ArgumentsTest::faultsAreNamed()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, error);
    QCOMPARE(Arguments::parsed(arguments).error, error);
}

void ArgumentsTest::everythingLeftOfAFaultIsKept()
{
    const Arguments read = Arguments::parsed({QStringLiteral("-cli"), QStringLiteral("-log"),
                                              QStringLiteral("run.log"), QStringLiteral("-what"),
                                              QStringLiteral("-version")});
    QCOMPARE(described(read), QStringLiteral("cli log=run.log"));
    QVERIFY(!read.error.isEmpty());
    QVERIFY(!Arguments::parsed({QStringLiteral("-log")}).logPath);
}

TW_TEST_CLASS(ArgumentsTest)
#include "tst_arguments.moc"
