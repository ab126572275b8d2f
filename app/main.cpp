#include "arguments.h"
#include "commandline.h"
#include "memoryceiling.h"
#include "platform.h"
#include "preferencesstore.h"
#include "revision.h"
#include "texts.h"
#include "valuepool.h"

#include <QCoreApplication>
#include <QLocale>
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

int runProgram(std::unique_ptr<CommandLine> *commandLine)
{
    const PreferencesStore store(QCoreApplication::applicationDirPath());
    QStringList warnings;
    const Preferences preferences = store.load(&warnings);
    applyPreferences(preferences);

    const Arguments arguments = Arguments::parsed(QCoreApplication::arguments().mid(1));
    *commandLine = std::make_unique<CommandLine>(arguments, preferences, buildIdentification());
    if (const std::optional<int> status = (*commandLine)->begin(warnings)) {
        return *status;
    }
    if (!arguments.commandLine) {
        (*commandLine)->tellNoWindow();
        return CommandLine::Refused;
    }
    Platform::stopRunOnInterrupt();
    return (*commandLine)->run();
}

} // namespace

int main(int argc, char **argv)
{
    Platform::prepareStreams();
    Platform::prepareAllocator();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(Texts::productName());
    QCoreApplication::setOrganizationName(Texts::productName());
    QCoreApplication::setApplicationVersion(Texts::productVersion());
    Platform::prepareFileNames();
    std::unique_ptr<CommandLine> commandLine;
    int status = CommandLine::MemoryExceeded;
    try {
        status = runProgram(&commandLine);
    } catch (const std::bad_alloc &) {
        CommandLine::tellOutOfMemory();
    }
    // Where it does not return, the process ends with its tables.
    Platform::leave(status);
    return status;
}
