#include "connection.h"
#include "consoleinterface.h"
#include "documentfile.h"
#include "graphscene.h"
#include "inputnode.h"
#include "outputnode.h"
#include "testsupport.h"
#include "transform.h"
#include "transformcatalogue.h"
#include "transformnode.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

class DocumentFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void failedLoadLeavesTheSceneAlone_data();
    void failedLoadLeavesTheSceneAlone();
    void documentSurvivesLoadAndSave();
    void savingTwiceGivesTheSameBytes();
    void unusablePartsAreLeftOut_data();
    void unusablePartsAreLeftOut();
    void missingTypesAreTold_data();
    void missingTypesAreTold();
    void unbuiltTransformsKeepTheirParameters();
    void laterVersionIsTold();
    void failedSaveLeavesTheFileAlone_data();
    void failedSaveLeavesTheFileAlone();
    void openFileIsReplaced();
    void openFileFailures_data();
    void openFileFailures();
    void largeDocumentLoads();

private:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    QString fileWith(const QByteArray &content);
    bool load(const QByteArray &content, GraphScene *scene);

    QTemporaryDir m_folder;
    ConsoleInterface m_user;
    TransformCatalogue m_catalogue;
    DocumentFile::Loaded m_loaded;
    QString m_error;
};

static QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

static void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

// Only the time of saving may differ between two saves.
static QString withoutTime(const QByteArray &document)
{
    static const QRegularExpression savedBy(QStringLiteral("<last_saved_by [^>]*>"));
    return QString::fromUtf8(document).replace(savedBy, QString());
}

static QByteArray document(const QByteArray &content)
{
    return "<!DOCTYPE Tabweave>\n<root>" + content + "</root>\n";
}

QString DocumentFileTest::fileWith(const QByteArray &content)
{
    const QString name = path(QStringLiteral("test.transform"));
    write(name, content);
    return name;
}

bool DocumentFileTest::load(const QByteArray &content, GraphScene *scene)
{
    m_loaded = {};
    return DocumentFile::load(fileWith(content), m_catalogue, scene, &m_loaded, &m_error);
}

void DocumentFileTest::failedLoadLeavesTheSceneAlone_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("error");
    QTest::newRow("missing") << QStringLiteral("none.transform") << QByteArray()
                             << QStringLiteral("Can't open file '%1'.");
    QTest::newRow("folder") << QString() << QByteArray() << QStringLiteral("Can't open file '%1'.");
    QTest::newRow("empty") << QStringLiteral("empty.transform") << QByteArray("")
                           << QStringLiteral("File '%1' is empty (size=0).");
    QTest::newRow("no document") << QStringLiteral("other.transform")
                                 << QByteArray("<!DOCTYPE svg><root/>")
                                 << QStringLiteral("Incorrect document type.");
}

void DocumentFileTest::failedLoadLeavesTheSceneAlone()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, error);
    GraphScene scene(&m_user);
    QVERIFY(scene.insert(std::make_unique<NoteNode>()));
    scene.document().notes = QStringLiteral("kept");
    if (!content.isNull()) {
        write(path(name), content);
    }
    QVERIFY(!DocumentFile::load(path(name), m_catalogue, &scene, &m_loaded, &m_error));
    QCOMPARE(m_error, error.contains(QLatin1String("%1")) ? error.arg(path(name)) : error);
    QCOMPARE(scene.nodeCount(), 1);
    QCOMPARE(scene.document().notes, QStringLiteral("kept"));
}

// A type whose work is still to come keeps whatever stands in the document; so does any type an
// option that it does not know.
static QByteArray unbuiltType()
{
    const TransformCatalogue catalogue;
    for (const Transform *type : catalogue.types()) {
        if (!type->isBuilt()) {
            return type->typeName().toUtf8();
        }
    }
    return "Filter";
}

// A document with every kind of item and of setting, as it stands in a file.
static QByteArray variedDocument()
{
    return document(
        "<meta><version value=\"72\"/><id value=\"abc\"/><snap_to_grid value=\"1\"/>"
        "<notes value=\"N%C3%A4chste\"/><auto_run_on value=\"0\"/></meta>"
        "<inputs><input id=\"7\" name=\"in\" alias=\"a\" path=\"x.csv\" ignored_rows=\"2\" "
        "pos=\"1^2\"/><input id=\"3\" alias=\"b\" medium=\"1\" text=\"p%2Cq%0A1%2C2\"/></inputs>"
        "<transforms><transform id=\"12\" name=\"Filter\" comment=\"c\" pos_v12=\"5\x1F"
        "6\"><parameters><parameter name=\"Columns\" type=\"3\" value=\"1%1F1%1Fp%1F1%1F7\"/>"
        "<parameter name=\"Case_Sensitive\" type=\"5\" value=\"0\"/></parameters></transform>"
        "<transform id=\"13\" name=\"" +
        unbuiltType() +
        "\"><parameters><parameter name=\"Columns_2\" type=\"1\" "
        "value=\"1%1F2\" columns=\"p\x1F"
        "q%20r\"/><parameter name=\"Case\" type=\"6\" value=\"UPPER\"/></parameters></transform>"
        "</transforms>"
        "<outputs><output id=\"20\" alias=\"o\" path=\"o.csv\" enable_output=\"3\"/></outputs>"
        "<notes><note id=\"30\" comment=\"text\" color=\"#ff0000\" arrow=\"2\"/></notes>"
        "<connections><connection start_id=\"3\" end_id=\"12\"/><connection start_id=\"12\" "
        "end_id=\"20\"/><connection start_id=\"7\" end_id=\"13\"/></connections>"
        "<batch_values><batch_value row=\"1\" alias=\"a\" value=\"y.csv\"/></batch_values>"
        "<batch_logging enabled=\"1\" path=\"b.log\" mode=\"1\"/>");
}

void DocumentFileTest::documentSurvivesLoadAndSave()
{
    GraphScene scene(&m_user);
    QVERIFY2(load(variedDocument(), &scene), qPrintable(m_error));
    QCOMPARE(m_loaded.warnings, QStringList());
    QCOMPARE(scene.nodeCount(), 6);
    QCOMPARE(scene.connections().size(), 3);
    QCOMPARE(scene.inputs().first()->pos(), QPointF(1, 2));
    QCOMPARE(scene.document().path, path(QStringLiteral("test.transform")));
    QCOMPARE(scene.document().batchValues.size(), 1);
    QCOMPARE(scene.document().batchLogging.path, QStringLiteral("b.log"));
    for (const Node *node : scene.nodes()) {
        QVERIFY(node->kind() == ItemKind::Note || node->status() == ItemStatus::NeedsUpdating);
    }

    const QString first = path(QStringLiteral("first.transform"));
    QVERIFY2(DocumentFile::save(first, scene, &m_error), qPrintable(m_error));
    const QByteArray saved = contentOf(first);
    for (const char *part :
         {"id value=\"abc\"", "N%C3%A4chste", "auto_run_on value=\"0\"", "ignored_rows=\"2\"",
          "text=\"p%2Cq%0A1%2C2\"", "1%1F1%1Fp%1F1%1F7", "columns=\"p\x1Fq%20r\"",
          "enable_output=\"3\"", "#ff0000", "y.csv", "b.log", "value=\"UPPER\""}) {
        QVERIFY2(QString::fromUtf8(saved).contains(QString::fromUtf8(part).replace(
                     QLatin1String("#ff0000"), QLatin1String("%23ff0000"))),
                 part);
    }

    GraphScene again(&m_user);
    QVERIFY(DocumentFile::load(first, m_catalogue, &again, &m_loaded, &m_error));
    QCOMPARE(m_loaded.warnings, QStringList());
    QVERIFY(DocumentFile::save(first, again, &m_error));
    QCOMPARE(withoutTime(contentOf(first)), withoutTime(saved));
}

void DocumentFileTest::savingTwiceGivesTheSameBytes()
{
    GraphScene scene(&m_user);
    QVERIFY(load(variedDocument(), &scene));
    const QString name = path(QStringLiteral("same.transform"));
    QVERIFY(DocumentFile::save(name, scene, &m_error));
    const QByteArray first = contentOf(name);
    QVERIFY(DocumentFile::save(name, scene, &m_error));
    QCOMPARE(withoutTime(contentOf(name)), withoutTime(first));
    QVERIFY(first.contains("<last_saved_by value=\"Tabweave_v"));
}

void DocumentFileTest::unusablePartsAreLeftOut_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("items");
    QTest::addColumn<int>("connections");
    QTest::addColumn<QString>("warning");
    const QByteArray input = "<inputs><input id=\"1\"/></inputs>";
    const QByteArray transforms = "<transforms><transform id=\"2\" name=\"Filter\"/>"
                                  "<transform id=\"3\" name=\"Filter\"/></transforms>";
    const QByteArray output = "<outputs><output id=\"4\"/></outputs>";
    const auto edges = [](std::initializer_list<const char *> list) {
        QByteArray text = "<connections>";
        for (const QByteArray edge : list) {
            text += "<connection start_id=\"" + edge.split('>').first() + "\" end_id=\"" +
                    edge.split('>').last() + "\"/>";
        }
        return text + "</connections>";
    };
    const auto addRow = [](const char *tag, const QByteArray &content, int items, int connections,
                           const char *warning) {
        QTest::newRow(tag) << content << items << connections << QString::fromUtf8(warning);
    };
    addRow("nothing wrong", input + transforms + output + edges({"1>2", "2>3", "3>4"}), 4, 3, "");
    addRow("id twice", "<inputs><input id=\"1\"/><input id=\"1\"/></inputs>", 1, 0,
           "Input item with id 1 was left out: another item has the same id.");
    addRow("id twice in two kinds", input + "<outputs><output id=\"1\"/></outputs>", 1, 0,
           "Output item with id 1 was left out: another item has the same id.");
    addRow("no id", input + "<notes><note comment=\"x\"/></notes>", 1, 0,
           "Note item without an id was left out.");
    addRow("id -1", "<inputs><input id=\"-1\"/></inputs>", 0, 0,
           "Input item without an id was left out.");
    addRow("to nothing", input + edges({"1>9"}), 1, 0,
           "The connection from id 1 to id 9 was left out: There is no item with id 9.");
    addRow("from nothing", input + transforms + edges({"8>2"}), 3, 0,
           "The connection from id 8 to id 2 was left out: There is no item with id 8.");
    addRow("cycle", input + transforms + output + edges({"2>3", "3>2"}), 4, 1,
           "The connection from id 3 to id 2 was left out: ");
    addRow("to itself", transforms + edges({"2>2"}), 2, 0,
           "The connection from id 2 to id 2 was left out: ");
    addRow("twice", input + transforms + edges({"1>2", "1>2"}), 3, 1,
           "The connection from id 1 to id 2 was left out: ");
    addRow("too many inputs", input + transforms + output + edges({"1>4", "2>4"}), 4, 1,
           "The connection from id 2 to id 4 was left out: ");
    addRow("into an input", input + transforms + edges({"2>1"}), 3, 0,
           "The connection from id 2 to id 1 was left out: ");
    addRow("from a note",
           input +
               "<notes><note id=\"5\"/></notes><transforms><transform id=\"2\" "
               "name=\"Filter\"/></transforms>" +
               edges({"5>2"}),
           3, 0, "The connection from id 5 to id 2 was left out: ");
    addRow("value that does not fit",
           "<transforms><transform id=\"2\" name=\"Filter\"><parameters><parameter "
           "name=\"Case_Sensitive\" type=\"5\" value=\"maybe\"/></parameters></transform>"
           "</transforms>",
           1, 0,
           "The stored value of option 'Case_Sensitive' of 'Filter' with id 2 is not possible and "
           "was replaced by the default.");
    addRow("unknown option",
           "<transforms><transform id=\"2\" name=\"Filter\"><parameters><parameter name=\"Mood\" "
           "type=\"5\" value=\"1\"/></parameters></transform></transforms>",
           1, 0, "The following was not understood and has no effect:\noption 'Mood' of 'Filter'");
    addRow("unknown element", input + "<charts><chart/></charts>", 1, 0,
           "The following was not understood and has no effect:\nelement 'charts' in 'root'");
}

void DocumentFileTest::unusablePartsAreLeftOut()
{
    QFETCH(QByteArray, content);
    QFETCH(int, items);
    QFETCH(int, connections);
    QFETCH(QString, warning);
    GraphScene scene(&m_user);
    QVERIFY2(load(document(content), &scene), qPrintable(m_error));
    QCOMPARE(scene.nodeCount(), items);
    QCOMPARE(scene.connections().size(), connections);
    if (warning.isEmpty()) {
        QCOMPARE(m_loaded.warnings, QStringList());
    } else {
        QCOMPARE(m_loaded.warnings.size(), 1);
        QVERIFY2(m_loaded.warnings.first().startsWith(warning),
                 qPrintable(m_loaded.warnings.first()));
    }
}

void DocumentFileTest::missingTypesAreTold_data()
{
    QTest::addColumn<QByteArray>("version");
    QTest::addColumn<QStringList>("types");
    QTest::addColumn<QString>("warning");
    const auto addRow = [](const char *tag, const char *version, const char *types,
                           const char *warning) {
        QTest::newRow(tag) << QByteArray(version)
                           << QString::fromUtf8(types).split(QLatin1Char(' '))
                           << QString::fromUtf8(warning);
    };
    addRow("all three with advice", "70", "Replace Trim Rename Trim",
           "The following deprecated transforms were not added:\n"
           "'Rename' (1 occurrence) - use the newer 'Rename' transform.\n"
           "'Replace' (1 occurrence) - use the newer 'Replace' transform.\n"
           "'Trim' (2 occurrences) - use the newer 'Whitespace' transform.");
    addRow("unknown type", "72", "Frobnicate Filter",
           "The following deprecated transforms were not added:\n'Frobnicate' (1 occurrence)");
    addRow("type of a later version", "73", "Frobnicate Frobnicate",
           "The following transforms of a later version were not added:\n"
           "'Frobnicate' (2 occurrences)");
    addRow("display name is no type", "72", "Split%20Col",
           "The following deprecated transforms were not added:\n'Split Col' (1 occurrence)");
}

void DocumentFileTest::missingTypesAreTold()
{
    QFETCH(QByteArray, version);
    QFETCH(QStringList, types);
    QFETCH(QString, warning);
    QByteArray content = "<meta><version value=\"" + version +
                         "\"/></meta><inputs><input "
                         "id=\"1\"/></inputs><transforms>";
    QByteArray connections = "<connections>";
    for (int i = 0; i < types.size(); ++i) {
        const QByteArray id = QByteArray::number(i + 2);
        content += "<transform id=\"" + id + "\" name=\"" + types[i].toUtf8() + "\"/>";
        connections += "<connection start_id=\"1\" end_id=\"" + id + "\"/>";
    }
    GraphScene scene(&m_user);
    QVERIFY(load(document(content + "</transforms>" + connections + "</connections>"), &scene));
    // Connections of what was left out need no words of their own.
    QCOMPARE(m_loaded.warnings, QStringList{warning});
    QCOMPARE(scene.transforms().size(), types.count(QStringLiteral("Filter")));
}

void DocumentFileTest::unbuiltTransformsKeepTheirParameters()
{
    const TransformCatalogue catalogue;
    int unbuilt = 0;
    for (const Transform *type : catalogue.types()) {
        if (type->isBuilt()) {
            continue;
        }
        ++unbuilt;
        GraphScene scene(&m_user);
        QVERIFY(
            load(document("<transforms><transform id=\"1\" name=\"" + type->typeName().toUtf8() +
                          "\"><parameters><parameter name=\"A%20b\" type=\"18\" "
                          "value=\"%1F%25%3C\"/><parameter name=\"Z\" type=\"99\"/>"
                          "<parameter name=\"C\" type=\"1\" value=\"2\" columns=\"x\"/>"
                          "</parameters></transform></transforms>"),
                 &scene));
        QCOMPARE(m_loaded.warnings, QStringList());
        const QString name = path(QStringLiteral("kept.transform"));
        QVERIFY(DocumentFile::save(name, scene, &m_error));
        GraphScene again(&m_user);
        QVERIFY(DocumentFile::load(name, m_catalogue, &again, &m_loaded, &m_error));
        const QList<StoredParameter> kept =
            again.transforms().first()->transform().storedParameters();
        QCOMPARE(kept.size(), 3);
        QCOMPARE(kept[0].key, QStringLiteral("A b"));
        QCOMPARE(kept[0].value, QStringLiteral("\x1F%<"));
        QCOMPARE(kept[1].type, 99);
        QCOMPARE(kept[2].columns, QStringList{QStringLiteral("x")});
    }
    if (unbuilt == 0) {
        QSKIP("Every type is built.");
    }
}

void DocumentFileTest::laterVersionIsTold()
{
    GraphScene scene(&m_user);
    QVERIFY(load(document("<meta><version value=\"73\"/></meta>"), &scene));
    QVERIFY(m_loaded.createdWithLaterVersion);
    QCOMPARE(m_loaded.version, 73);
    QVERIFY(load(document(""), &scene));
    QVERIFY(!m_loaded.createdWithLaterVersion);
    QCOMPARE(m_loaded.version, 72);
}

void DocumentFileTest::failedSaveLeavesTheFileAlone_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("error");
    QTest::newRow("no such folder")
        << QStringLiteral("none/x.transform") << QStringLiteral("Can't open file '%1' to write.");
    QTest::newRow("a folder") << QStringLiteral("folder")
                              << QStringLiteral("Can't open file '%1' to write.");
}

void DocumentFileTest::failedSaveLeavesTheFileAlone()
{
    QFETCH(QString, name);
    QFETCH(QString, error);
    QDir(m_folder.path()).mkdir(QStringLiteral("folder"));
    const QStringList before = QDir(m_folder.path()).entryList();
    GraphScene scene(&m_user);
    QVERIFY(!DocumentFile::save(path(name), scene, &m_error));
    QCOMPARE(m_error, error.arg(path(name)));
    QCOMPARE(QDir(m_folder.path()).entryList(), before);
}

void DocumentFileTest::openFileIsReplaced()
{
    GraphScene scene(&m_user);
    QVERIFY(load(variedDocument(), &scene));
    const QString whole = path(QStringLiteral("direct.transform"));
    QVERIFY(DocumentFile::save(whole, scene, &m_error));
    const QByteArray expected = contentOf(whole);
    write(whole, QByteArray(100000, 'x'));
    QFile file(whole);
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.readLine();
    QVERIFY(DocumentFile::saveTo(&file, whole, scene, &m_error));
    QCOMPARE(withoutTime(contentOf(whole)), withoutTime(expected));
}

void DocumentFileTest::openFileFailures_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("error");
    QTest::newRow("not open") << path(QStringLiteral("f")) << int(QIODevice::NotOpen)
                              << QStringLiteral("Can't access file '%1' to write.");
    QTest::newRow("read only") << path(QStringLiteral("test.transform")) << int(QIODevice::ReadOnly)
                               << QStringLiteral("Can't access file '%1' to write.");
    QTest::newRow("full device") << QStringLiteral("/dev/full") << int(QIODevice::WriteOnly)
                                 << QStringLiteral("Can't write to file '%1'.");
}

void DocumentFileTest::openFileFailures()
{
    QFETCH(QString, name);
    QFETCH(int, mode);
    QFETCH(QString, error);
    GraphScene scene(&m_user);
    QFile file(name);
    QVERIFY(mode == QIODevice::NotOpen || file.open(QIODevice::OpenMode(mode)));
    QVERIFY(!DocumentFile::saveTo(&file, name, scene, &m_error));
    QCOMPARE(m_error, error.arg(name));
    QVERIFY(!DocumentFile::saveTo(nullptr, name, scene, &m_error));
}

void DocumentFileTest::largeDocumentLoads()
{
    constexpr int count = 2000;
    QByteArray transforms = "<inputs><input id=\"0\"/></inputs><transforms>";
    QByteArray connections = "<connections>";
    for (int i = 1; i < count; ++i) {
        const QByteArray id = QByteArray::number(i);
        transforms += "<transform id=\"" + id + "\" name=\"Filter\"/>";
        connections +=
            "<connection start_id=\"" + QByteArray::number(i - 1) + "\" end_id=\"" + id + "\"/>";
    }
    GraphScene scene(&m_user);
    QVERIFY(load(document(transforms + "</transforms>" + connections + "</connections>"), &scene));
    QCOMPARE(m_loaded.warnings, QStringList());
    QCOMPARE(scene.nodeCount(), count);
    QCOMPARE(scene.connections().size(), count - 1);
}

TW_TEST_CLASS(DocumentFileTest)
#include "tst_documentfile.moc"
