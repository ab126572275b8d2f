// Renders the main situations of the window into a folder.
#include "inputnode.h"
#include "itempane.h"
#include "leftpane.h"
#include "outputnode.h"
#include "transform.h"
#include "transformnode.h"
#include "windowtools.h"

#include <QDir>
#include <cstdio>

namespace {

constexpr int settleMs = 400;

void settle()
{
    QTest::qWait(settleMs);
}

class Shots
{
public:
    Shots(const QString &examples, const QString &folder, const QString &scale)
        : m_examples(examples)
        , m_folder(folder)
        , m_suffix(scale == "1" ? QString() : "@" + scale)
    {
    }

    void take(const QString &name, QWidget *widget)
    {
        settle();
        const QString path = QStringLiteral("%1/%2%3.png").arg(m_folder, name, m_suffix);
        if (!widget->grab().save(path)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
            std::exit(1);
        }
    }

    void all(const QString &theme)
    {
        const auto name = [&theme](const QString &what) {
            return QString("%1-%2").arg(what, theme);
        };
        {
            TestWindow window;
            take(name("empty"), window.get());
        }
        {
            TestWindow window;
            openExample(&window, "sales-by-segment.transform");
            take(name("example"), window.get());
            for (const char *type : {"Filter", "Calculate", "Join", "Sort", "Rename Cols"}) {
                selectType(&window, type);
                take(name("item-" + QString(type).replace(' ', '_').toLower()), window.get());
            }
            window.scene().setSelectedNodes({window.scene().inputs().first()});
            take(name("item-input"), window.get());
            window.scene().setSelectedNodes({window.scene().outputs().first()});
            take(name("item-output"), window.get());
        }
        {
            TestWindow window;
            makeErrors(&window);
            take(name("errors"), window.get());
        }
        {
            TestWindow window;
            makeRunning(&window, name("running"));
        }
        {
            TestWindow window;
            makeMany(&window);
            window->canvas()->fit();
            take(name("300-items"), window.get());
        }
    }

private:
    void openExample(TestWindow *window, const QString &name)
    {
        // Outputs of the examples go to a folder of their own.
        const QDir from(m_examples);
        QDir().mkpath(window->path("data"));
        QDir().mkpath(window->path("output"));
        for (const QString &file : QDir(from.filePath("data")).entryList(QDir::Files)) {
            QFile::copy(from.filePath("data/" + file), window->path("data/" + file));
        }
        QFile::copy(from.filePath(name), window->path(name));
        const BoxAnswer answer("Change locale to English/United Kingdom");
        (*window)->openFiles({window->path(name)});
        (*window)->runs()->run(RunMode::All);
    }

    static void selectType(TestWindow *window, const QString &type)
    {
        for (TransformNode *const node : window->scene().transforms()) {
            if (node->transform().name() == type) {
                window->scene().setSelectedNodes({node});
                (*window)->canvas()->centerOn(static_cast<Node *>(node));
                return;
            }
        }
    }

    static void makeErrors(TestWindow *window)
    {
        GraphScene &scene = window->scene();
        (*window)->actions()->autoRun->setChecked(false);
        (*window)->openFiles({window->path("missing.csv")});
        Q_EMIT(*window)->findChild<LeftPane *>()->transformWanted("Sort");
        scene.addOutput(OutputNode::defaultOptions(), scene.transforms().first(), {620, 60});
        scene.addNote({40, 220}, "The file comes with the monthly mail.\nPut it beside this "
                                 "document.");
        (*window)->runs()->run(RunMode::All);
        scene.setSelectedNodes({scene.inputs().first()});
        (*window)->canvas()->showBeginning();
    }

    void makeRunning(TestWindow *window, const QString &name)
    {
        openExample(window, "sales-by-segment.transform");
        bool taken = false;
        QObject context;
        QObject::connect(&window->scene(), &GraphScene::processed, &context,
                         [&](Node *node, qreal) {
                             if (!taken && node->kind() == ItemKind::Transform) {
                                 taken = true;
                                 take(name, window->get());
                             }
                         });
        (*window)->runs()->run(RunMode::All);
    }

    static void makeMany(TestWindow *window)
    {
        GraphScene &scene = window->scene();
        (*window)->actions()->autoRun->setChecked(false);
        const QString path = window->makeFile("data.csv", "a,b\n1,2\n");
        for (int chain = 0; chain < 30; ++chain) {
            Node *last = scene.addInputs({path}, {0, chain * 100.0}).first();
            for (int i = 1; i < 10; ++i) {
                scene.setSelectedNodes({last});
                last = scene.addTransform(window->catalogue().create(i % 2 ? "Filter" : "Sort"),
                                          {i * 240.0, chain * 100.0});
            }
        }
        scene.setSelectedNodes({});
    }

    QString m_examples;
    QString m_folder;
    QString m_suffix;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4) {
        std::fprintf(stderr, "Usage: screenshots EXAMPLES FOLDER SCALE\n");
        return 2;
    }
    QLocale::setDefault(QLocale("en_GB"));
    Icons::prepare();
    Shots shots(arguments[1], arguments[2], arguments[3]);
    applyTheme(&application, ThemeChoice::Light);
    Icons::followTheme();
    shots.all("light");
    applyTheme(&application, ThemeChoice::Dark);
    Icons::followTheme();
    shots.all("dark");
    return 0;
}
