#include "platform.h"

#include "memoryceiling.h"
#include "runengine.h"

#include <QByteArray>
#include <QTextCodec>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <langinfo.h>
#include <unistd.h>
#ifdef TABWEAVE_MIMALLOC
#include <mimalloc.h>
#endif

namespace {

extern "C" void onInterrupt(int)
{
    RunEngine::requestStop();
}

} // namespace

void Platform::prepareStreams()
{
    for (int file = STDIN_FILENO; file <= STDERR_FILENO; ++file) {
        if (fcntl(file, F_GETFD) < 0) {
            // The lowest free number is taken, which is this one.
            const int opened = open("/dev/null", file == STDIN_FILENO ? O_RDONLY : O_WRONLY);
            Q_UNUSED(opened)
        }
    }
    // A reader that has gone, or a file as large as it may be, is an error like others.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void Platform::prepareAllocator()
{
#ifdef TABWEAVE_MIMALLOC
    // Without huge pages a third of a reader's time goes into page faults.
    mi_option_set_enabled(mi_option_large_os_pages, true);
    MemoryCeiling::setReclaim([] { mi_collect(true); });
#endif
}

void Platform::prepareFileNames()
{
    const QByteArray codeSet = nl_langinfo(CODESET);
    if (codeSet == "ANSI_X3.4-1968" || codeSet == "US-ASCII") {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    }
}

void Platform::stopRunOnInterrupt()
{
    struct sigaction action = {};
    action.sa_handler = onInterrupt;
    action.sa_flags = int(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

void Platform::leave(int status)
{
#ifdef TABWEAVE_SANITIZE
    Q_UNUSED(status)
#else
    std::fflush(nullptr);
    std::_Exit(status);
#endif
}
