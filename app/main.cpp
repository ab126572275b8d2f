#include "arguments.h"
#include "commandline.h"
#include "documentcontroller.h"
#include "icons.h"
#include "mainwindow.h"
#include "memoryceiling.h"
#include "platform.h"
#include "preferencesstore.h"
#include "revision.h"
#include "texts.h"
#include "theme.h"
#include "transformcatalogue.h"
#include "valuepool.h"
#include "windowapplication.h"

#include <QFileInfo>
#include <QLocale>
#include <QTimer>
#include <memory>
#include <new>

namespace {

QString compiler()
{
#if defined(__clang__)
    return QStringLiteral("Clang " __clang_version__);
#else
    return QStringLiteral("GCC " __VERSION__);
#endif
}

QString buildIdentification()
{
    const QString revision = QStringLiteral(TABWEAVE_REVISION);
    return QStringLiteral("%1 %2, revision %3, %4, Qt %5, %6")
        .arg(Texts::productName(), Texts::productVersion(),
             revision.isEmpty() ? QStringLiteral("unknown") : revision, compiler(),
             QLatin1String(QT_VERSION_STR), QSysInfo::buildAbi());
}

void applyPreferences(const Preferences &preferences)
{
    const QString system = QLocale::system().name();
    QLocale::setDefault(
        QLocale(preferences.localeName.isEmpty() ? system : preferences.localeName));
    applyDateFormats(preferences);
    ValuePool::setPoolingEnabled(preferences.optimizeFor == 0);
    MemoryCeiling::setLimitGb(preferences.maxMemoryGb > 0.0 ? preferences.maxMemoryGb
                                                            : MemoryCeiling::defaultLimitGb());
}

struct Start
{
    Arguments arguments;
    Preferences preferences;
    QStringList warnings;
};

/// Runs a document without a window, or tells why there is none.
int runCommandLine(const Start &start, std::unique_ptr<CommandLine> *commandLine)
{
    *commandLine =
        std::make_unique<CommandLine>(start.arguments, start.preferences, buildIdentification());
    if (const std::optional<int> status = (*commandLine)->begin(start.warnings)) {
        return *status;
    }
    if (!start.arguments.commandLine) {
        (*commandLine)->tellNoWindow();
        return CommandLine::Refused;
    }
    Platform::stopRunOnInterrupt();
    return (*commandLine)->run();
}

int runWindow(const Start &start, PreferencesStore *store)
{
    Icons::prepare();
    applyTheme(qApp, store->theme());
    Icons::followTheme();
    const TransformCatalogue catalogue;
    MainWindow window(store, &catalogue);
    window.show();
    window.logWarnings(start.warnings);
    QTimer::singleShot(0, &window, [&] {
        window.documents()->offerRecovery();
        if (!start.arguments.document.isEmpty()) {
            window.openFiles({QFileInfo(start.arguments.document).absoluteFilePath()});
        }
    });
    const int status = QApplication::exec();
    return window.memoryExceeded() ? CommandLine::MemoryExceeded : status;
}

int runProgram(bool withWindow, std::unique_ptr<CommandLine> *commandLine)
{
    PreferencesStore store(QCoreApplication::applicationDirPath());
    Start start;
    start.preferences = store.load(&start.warnings);
    applyPreferences(start.preferences);
    start.arguments = Arguments::parsed(QCoreApplication::arguments().mid(1));
    const Arguments &arguments = start.arguments;
    const bool onlyTells = arguments.document.isEmpty() && (arguments.version || arguments.build);
    if (!withWindow || onlyTells || !arguments.error.isEmpty()) {
        return runCommandLine(start, commandLine);
    }
    return runWindow(start, &store);
}

/// Before there is an application that knows the arguments better.
bool asksForCommandLine(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    return Arguments::parsed(arguments).commandLine;
}

} // namespace

int main(int argc, char **argv)
{
    Platform::prepareStreams();
    Platform::prepareAllocator();
    const bool withWindow = !asksForCommandLine(argc, argv) && hasDisplay();
    if (withWindow) {
        QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
        QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    }
    const std::unique_ptr<QCoreApplication> application(
        withWindow ? new WindowApplication(argc, argv) : new QCoreApplication(argc, argv));
    QCoreApplication::setApplicationName(Texts::productName());
    QCoreApplication::setOrganizationName(Texts::productName());
    QCoreApplication::setApplicationVersion(Texts::productVersion());
    Platform::prepareFileNames();
    std::unique_ptr<CommandLine> commandLine;
    int status = CommandLine::MemoryExceeded;
    try {
        status = runProgram(withWindow, &commandLine);
    } catch (const std::bad_alloc &) {
        CommandLine::tellOutOfMemory();
    }
    // Where it does not return, the process ends with its tables.
    Platform::leave(status);
    return status;
}
