#include "commandline.h"
#include "commandlineplan.h"
#include "consoleinterface.h"
#include "graphscene.h"
#include "inputnode.h"
#include "memoryceiling.h"
#include "outputnode.h"
#include "testsupport.h"
#include "transform.h"
#include "transformcatalogue.h"
#include "transformnode.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>
#include <fcntl.h>
#include <unistd.h>

/// Puts a file in the place of standard output or standard error.
class Redirection
{
public:
    Redirection(int stream, const QByteArray &path)
        : m_stream(stream)
        , m_saved(dup(stream))
    {
        const int file = open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(file, stream);
        close(file);
    }
    ~Redirection()
    {
        dup2(m_saved, m_stream);
        close(m_saved);
    }
    Redirection(const Redirection &) = delete;
    Redirection &operator=(const Redirection &) = delete;

private:
    int m_stream;
    int m_saved;
};

class CommandLineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void planIsMade_data();
    void planIsMade();
    void faultsEndTheRun_data();
    void faultsEndTheRun();
    void versionAndBuildAreLogged_data();
    void versionAndBuildAreLogged();
    void logFileIsAppendedTo();
    void unusableLogFileIsAWarning_data();
    void unusableLogFileIsAWarning();
    void lostLogLinesDoNotMatter_data();
    void lostLogLinesDoNotMatter();
    void memoryCeilingEndsTheRun();
    void documentLocaleIsUsed();

private:
    /// Runs with these arguments (separated by blanks) in the folder; fills the two texts.
    int run(const QString &arguments);
    QByteArray contentOf(const QString &name) const;
    void write(const QString &name, const QByteArray &content) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_oldFolder;
    QString m_output;
    QString m_errors;
    QByteArray m_outputPath;
};

void CommandLineTest::initTestCase()
{
    m_oldFolder = QDir::currentPath();
}

void CommandLineTest::cleanupTestCase()
{
    QDir::setCurrent(m_oldFolder);
}

void CommandLineTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_outputPath.clear();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    write(QStringLiteral("in.csv"), "a,b\n1,2\n3,4\n");
    write(QStringLiteral("d.transform"),
          "<!DOCTYPE Tabweave><root><inputs><input id=\"1\" alias=\"in\" path=\"in.csv\"/></inputs>"
          "<outputs><output id=\"2\" alias=\"out\" path=\"out.csv\" line_endings=\"2\"/></outputs>"
          "<connections><connection start_id=\"1\" end_id=\"2\"/></connections></root>");
}

QByteArray CommandLineTest::contentOf(const QString &name) const
{
    QFile file(m_folder->filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void CommandLineTest::write(const QString &name, const QByteArray &content) const
{
    QFile file(m_folder->filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

int CommandLineTest::run(const QString &arguments)
{
    int status = -1;
    {
        const Redirection output(1, m_outputPath.isEmpty()
                                        ? QFile::encodeName(m_folder->filePath(QStringLiteral("1")))
                                        : m_outputPath);
        const Redirection errors(2, QFile::encodeName(m_folder->filePath(QStringLiteral("2"))));
        CommandLine commandLine(
            Arguments::parsed(arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts)), Preferences(),
            QStringLiteral("the build"));
        const std::optional<int> ended = commandLine.begin();
        status = ended ? *ended : commandLine.run();
    }
    m_output = QString::fromUtf8(contentOf(QStringLiteral("1")));
    m_errors = QString::fromUtf8(contentOf(QStringLiteral("2")));
    return status;
}

// A graph in short: items "i1:alias" (input), "t3" (transform), "o2:alias" (output), "d2:alias"
// (disabled output), "m2:alias" (multi-file output without a column), "c2:alias" (disabled
// clipboard output); connections "1>2".
static void build(GraphScene *scene, const QString &graph)
{
    static const TransformCatalogue catalogue;
    for (const QString &part : graph.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QStringList ends = part.split(QLatin1Char('>'));
        if (ends.size() == 2) {
            QVERIFY(
                scene->connectNodes(scene->node(ends[0].toInt()), scene->node(ends[1].toInt())));
            continue;
        }
        const QStringList words = part.split(QLatin1Char(':'));
        const char kind = part.at(0).toLatin1();
        const int id = words[0].mid(1).toInt();
        if (kind == 't') {
            auto node = std::make_unique<TransformNode>(catalogue.create(QStringLiteral("Join")));
            node->setId(id);
            QVERIFY(scene->insert(std::move(node)));
            continue;
        }
        std::unique_ptr<IONode> node;
        if (kind == 'i') {
            node = std::make_unique<InputNode>();
        } else {
            OutputOptions options;
            options.writeMode =
                kind == 'd' || kind == 'c' ? WriteMode::Disabled : WriteMode::Append;
            options.medium = kind == 'c' ? Medium::Clipboard : Medium::File;
            options.multiFile = kind == 'm';
            node = std::make_unique<OutputNode>(options);
        }
        node->setId(id);
        node->setAlias(words.value(1));
        QVERIFY(scene->insert(std::move(node)));
    }
}

void CommandLineTest::planIsMade_data()
{
    QTest::addColumn<QString>("graph");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QString>("leftOut");
    QTest::addColumn<int>("warnings");
    const auto addRow = [](const char *tag, const char *graph, const char *error,
                           const char *leftOut, int warnings) {
        QTest::newRow(tag) << QString::fromUtf8(graph) << QString::fromUtf8(error)
                           << QString::fromUtf8(leftOut) << warnings;
    };
    addRow("all is used", "i1:a t2 o3:b 1>2 2>3", "", "", 0);
    addRow("input without alias", "i1: o3: 1>3", "Empty input alias.", "", 0);
    addRow("output without alias", "i1:a o3: 1>3", "Empty output alias", "", 0);
    addRow("unused input without alias", "i1:a i2: o3:b 1>3", "Empty input alias.", "", 0);
    addRow("inputs of one alias", "i1:a i2:a o3:b 1>3", "Input alias 'a' occurs more than once.",
           "", 0);
    addRow("outputs of one alias", "i1:a o2:b o3:b 1>3", "Output alias 'b' occurs more than once.",
           "", 0);
    addRow("input and output of one alias", "i1:a o3:a 1>3",
           "Alias 'a' occurs for both input and output.", "", 0);
    addRow("aliases differ by case", "i1:a o3:A 1>3", "", "", 0);
    addRow("unconnected pair beside", "i1:a o3:b i4:c o5:d 1>3", "", "4 5", 2);
    addRow("what is below an unused input", "i1:a o3:b i4:c t5 t6 1>3 4>5 5>6", "", "4 5 6", 1);
    addRow("dead end below a used and an unused input", "i1:a o3:b i4:c t5 1>3 1>5 4>5", "", "4 5",
           1);
    addRow("disabled output", "i1:a o2:b d3:c 1>2 1>3", "", "3", 1);
    addRow("what is above a disabled output", "i1:a o2:b i4:c t5 d3:d 1>2 4>5 5>3", "", "3 4 5", 1);
    addRow("dead end stays beside a disabled output", "i1:a o2:b i4:c t5 d3:d 1>2 4>5 4>3", "", "3",
           1);
    addRow("only a disabled output", "i1:a d3:b 1>3", "No inputs that can be used.", "1 3", 1);
    addRow("disabled clipboard", "i1:a c3:b 1>3", "", "", 0);
    addRow("transform without input", "t1 o2:b i3:a o4:c 1>2 3>4", "", "1 2", 1);
    addRow("no items", "", "No inputs that can be used.", "", 0);
    addRow("input alone", "i1:a", "No inputs that can be used.", "1", 1);
    addRow("outputs cannot be used", "i1:a t2 d3:b 1>2 1>3", "No outputs that can be used.", "3",
           1);
    addRow("no files column", "i1:a m3:b 1>3",
           "Files column not set for multi-file output with alias 'b'.", "", 0);
    addRow("no files column where nothing is written", "i1:a o2:c m3:b 1>2", "", "3", 1);
}

void CommandLineTest::planIsMade()
{
    QFETCH(QString, graph);
    QFETCH(QString, error);
    QFETCH(QString, leftOut);
    QFETCH(int, warnings);
    ConsoleInterface user;
    GraphScene scene(&user);
    build(&scene, graph);
    const CommandLinePlan plan = CommandLinePlan::made(scene);
    QCOMPARE(plan.error, error);
    QList<int> ids = plan.leftOut.values();
    std::sort(ids.begin(), ids.end());
    QStringList texts;
    for (const int id : ids) {
        texts.append(QString::number(id));
    }
    QCOMPARE(texts.join(QLatin1Char(' ')), leftOut);
    QCOMPARE(plan.warnings.size(), warnings);
}

void CommandLineTest::faultsEndTheRun_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("error");
    const auto addRow = [](const char *arguments, const char *error) {
        QTest::newRow(arguments) << QString::fromUtf8(arguments) << QString::fromUtf8(error);
    };
    addRow("-cli", "No .transform file specified.");
    addRow("-cli d.transform -file a=b=c", "Expected <alias>=<value> for file argument");
    addRow("-cli d.transform -file in", "Expected <alias>=<value> for file argument");
    addRow("-cli d.transform -file In=x.csv", "No input or output has the alias 'In'.");
    addRow("-cli d.transform -file =x.csv", "No input or output has the alias ''.");
}

void CommandLineTest::faultsEndTheRun()
{
    QFETCH(QString, arguments);
    QFETCH(QString, error);
    QCOMPARE(run(arguments), 255);
    QCOMPARE(m_errors, error + QStringLiteral("\nAborted processing\n"));
    QVERIFY(!QFile::exists(QStringLiteral("out.csv")));
}

void CommandLineTest::versionAndBuildAreLogged_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("output");
    QTest::newRow("version") << QStringLiteral("-version") << 0
                             << QStringLiteral("Tabweave 0.1.0\n");
    QTest::newRow("build") << QStringLiteral("-cli -build") << 0 << QStringLiteral("the build\n");
    QTest::newRow("both, then a fault") << QStringLiteral("-build -version -x") << 255
                                        << QStringLiteral("Tabweave 0.1.0\nthe build\n");
}

void CommandLineTest::versionAndBuildAreLogged()
{
    QFETCH(QString, arguments);
    QFETCH(int, status);
    QFETCH(QString, output);
    QCOMPARE(run(arguments), status);
    QCOMPARE(m_output, output);
}

void CommandLineTest::logFileIsAppendedTo()
{
    write(QStringLiteral("run.log"), "old\n");
    QCOMPARE(run(QStringLiteral("-cli d.transform -log run.log")), 0);
    QCOMPARE(QString::fromUtf8(contentOf(QStringLiteral("run.log"))),
             QStringLiteral("old\n") + m_output);
    // Errors that end the program stand in it too.
    QCOMPARE(run(QStringLiteral("-cli -log fault.log -what")), 255);
    QCOMPARE(contentOf(QStringLiteral("fault.log")),
             QByteArray("Unrecognized argument: what\nAborted processing\n"));
}

void CommandLineTest::unusableLogFileIsAWarning_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("no such folder") << QStringLiteral("none/run.log");
    QTest::newRow("a folder") << QStringLiteral(".");
    QTest::newRow("the document itself") << QStringLiteral("d.transform");
}

void CommandLineTest::unusableLogFileIsAWarning()
{
    QFETCH(QString, name);
    const QByteArray document = contentOf(QStringLiteral("d.transform"));
    QCOMPARE(run(QStringLiteral("-cli d.transform -log ") + name), 0);
    QVERIFY(m_output.startsWith(
        QStringLiteral("Warning: Could not open log file at '%1'\n").arg(name)));
    QCOMPARE(contentOf(QStringLiteral("out.csv")), QByteArray("a,b\n1,2\n3,4\n"));
    QCOMPARE(contentOf(QStringLiteral("d.transform")), document);
}

void CommandLineTest::lostLogLinesDoNotMatter_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QString>("arguments");
    QTest::newRow("full standard output") << QByteArray("/dev/full") << QString();
    QTest::newRow("full log file") << QByteArray("/dev/null") << QStringLiteral(" -log /dev/full");
}

void CommandLineTest::lostLogLinesDoNotMatter()
{
    QFETCH(QByteArray, output);
    QFETCH(QString, arguments);
    m_outputPath = output;
    QCOMPARE(run(QStringLiteral("-cli d.transform") + arguments), 0);
    QCOMPARE(contentOf(QStringLiteral("out.csv")), QByteArray("a,b\n1,2\n3,4\n"));
}

void CommandLineTest::memoryCeilingEndsTheRun()
{
    write(QStringLiteral("out.csv"), "old");
    const double limit = MemoryCeiling::limitGb();
    MemoryCeiling::setLimitGb(2.0);
    MemoryCeiling::pretendInUseGb(2.5);
    const int status = run(QStringLiteral("-cli d.transform"));
    MemoryCeiling::pretendInUseGb(-1.0);
    MemoryCeiling::setLimitGb(limit);
    QCOMPARE(status, 2);
    QVERIFY(m_errors.startsWith(QStringLiteral(
        "You have exceed the maximum process memory set in 'Preferences'.\n\nMaximum memory "
        "usage=2.00 GB. Current memory usage=2.50 GB.\n\nWould you like to?:\n")));
    QVERIFY(m_errors.endsWith(
        QStringLiteral("Tabweave has exceeded the memory allocation set in 'Preferences' and will "
                       "close.\nAborted processing\n")));
    QCOMPARE(contentOf(QStringLiteral("out.csv")), QByteArray("old"));
    QVERIFY(!m_output.contains(QLatin1String("Finished processing")));
}

void CommandLineTest::documentLocaleIsUsed()
{
    QByteArray document = contentOf(QStringLiteral("d.transform"));
    const QLocale before;
    for (const char *name : {"de_DE", "xx_YY", "en_GB"}) {
        write(QStringLiteral("l.transform"),
              QByteArray(document).replace("<root>", QByteArray("<root><meta><locale value=\"") +
                                                         name + "\"/></meta>"));
        QCOMPARE(run(QStringLiteral("-cli l.transform")), 0);
        const QString used = QLocale().name();
        QLocale::setDefault(before);
        QCOMPARE(used, qstrcmp(name, "de_DE") == 0 ? QStringLiteral("de_DE") : before.name());
        QCOMPARE(m_output.contains(QLatin1String("locale")), qstrcmp(name, "en_GB") != 0);
    }
}

TW_TEST_CLASS(CommandLineTest)
#include "tst_commandline.moc"
