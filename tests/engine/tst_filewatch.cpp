#include "filewatch.h"
#include "inputwatch.h"
#include "runengine.h"
#include "testgraph.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

class TestFileWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsNewContent_data();
    void tellsNewContent();
    void isQuietAboutTheRest_data();
    void isQuietAboutTheRest();
    void marksInputs();
};

namespace {

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("the test cannot write its own files");
    }
}

constexpr int longWait = 20000;
/// Longer than the watch waits for a file to come to rest.
constexpr int rest = 800;

} // namespace

void TestFileWatch::tellsNewContent_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"write", "append", "replace", "delete and create", "appear"}) {
        QTest::newRow(way) << QString::fromLatin1(way);
    }
}

void TestFileWatch::tellsNewContent()
{
    QFETCH(QString, way);
    const QTemporaryDir folder;
    const QString path = folder.filePath("in.csv");
    if (way != "appear") {
        writeFile(path, "a\n");
    }
    FileWatch watch;
    watch.setFiles({path});
    QSignalSpy spy(&watch, &FileWatch::changed);
    // The second time shows that the file is still watched.
    for (int time = 1; time <= 2; ++time) {
        const QByteArray content = QByteArray("b\n").repeated(time + 1);
        if (way == "append") {
            QFile file(path);
            QVERIFY(file.open(QIODevice::Append) && file.write("b\n") > 0);
        } else if (way == "replace") {
            writeFile(folder.filePath("other"), content);
            QCOMPARE(rename(QFile::encodeName(folder.filePath("other")).constData(),
                            QFile::encodeName(path).constData()),
                     0);
        } else {
            if (way == "delete and create") {
                QVERIFY(QFile::remove(path));
                QTest::qWait(rest);
                QCOMPARE(spy.count(), time - 1);
            }
            writeFile(path, content);
        }
        QTRY_COMPARE_WITH_TIMEOUT(spy.count(), time, longWait);
        QCOMPARE(spy.last().first().toStringList(), QStringList{path});
    }
}

void TestFileWatch::isQuietAboutTheRest_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"read", "neighbour", "delete", "forgotten"}) {
        QTest::newRow(way) << QString::fromLatin1(way);
    }
}

void TestFileWatch::isQuietAboutTheRest()
{
    QFETCH(QString, way);
    const QTemporaryDir folder;
    const QString path = folder.filePath("in.csv");
    writeFile(path, "a\n");
    FileWatch watch;
    watch.setFiles({path});
    QSignalSpy spy(&watch, &FileWatch::changed);
    if (way == "read") {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly) && !file.readAll().isEmpty());
    } else if (way == "neighbour") {
        writeFile(folder.filePath("other.csv"), "b\n");
    } else if (way == "delete") {
        QVERIFY(QFile::remove(path));
    } else {
        watch.setFiles({});
        writeFile(path, "b, b\n");
    }
    QTest::qWait(rest);
    QCOMPARE(spy.count(), 0);
}

void TestFileWatch::marksInputs()
{
    const QTemporaryDir folder;
    writeFile(folder.filePath("in.csv"), "a\n1\n");
    TestGraph graph;
    graph.scene.document().path = folder.filePath("d.transform");
    graph.scene.document().autoRun = true;
    InputOptions options;
    options.path = QStringLiteral("in.csv");
    InputNode *const unwatched = graph.scene.insert(std::make_unique<InputNode>(options));
    InputNode *const watched = graph.scene.insert(std::make_unique<InputNode>(options));
    TransformNode *const below = graph.transform({watched});
    InputWatch watch(&graph.scene);
    options.watching = true;
    graph.scene.editOptions(watched, options, QStringLiteral("Watch"));
    graph.scene.runEngine().run(RunOptions());
    QCOMPARE(below->dataset().rowCount(), 1);

    QSignalSpy autoRun(&graph.scene, &GraphScene::autoRunWanted);
    writeFile(folder.filePath("in.csv"), "a\n1\n2\n");
    QTRY_COMPARE_WITH_TIMEOUT(watched->status(), ItemStatus::NeedsUpdating, longWait);
    QCOMPARE(below->status(), ItemStatus::NeedsUpdating);
    QCOMPARE(unwatched->status(), ItemStatus::UpToDate);
    QCOMPARE(autoRun.count(), 1);
    graph.scene.runEngine().run({RunMode::Changed, {}, false});
    QCOMPARE(below->dataset().rowCount(), 2);
}

TW_TEST_CLASS(TestFileWatch)
#include "tst_filewatch.moc"
