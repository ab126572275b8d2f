#include "consoleinterface.h"

#include <QFileInfo>
#include <QLocale>
#include <cerrno>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr int standardOutput = 1;
constexpr int standardError = 2;
// A run that ends at once needs no progress display.
constexpr int statusDelayMilliseconds = 400;
constexpr int statusIntervalMilliseconds = 100;

// Lines are written at once and whole, so that none is lost when the program is killed.
void writeTo(int file, const QByteArray &bytes)
{
    const char *at = bytes.constData();
    qint64 left = bytes.size();
    while (left > 0) {
        const ssize_t written = ::write(file, at, size_t(left));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return;
        }
        at += written;
        left -= written;
    }
}

int terminalWidth()
{
    winsize size{};
    return ioctl(standardError, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

} // namespace

ConsoleInterface::ConsoleInterface()
    : m_isTerminal(isatty(standardError) == 1)
{
    m_sinceStart.start();
}

ConsoleInterface::~ConsoleInterface()
{
    eraseStatus();
}

bool ConsoleInterface::openLogFile(const QString &path)
{
    if (path.isEmpty() ||
        QFileInfo(path).suffix().compare(QLatin1String("transform"), Qt::CaseInsensitive) == 0) {
        return false;
    }
    m_logFile.setFileName(path);
    return m_logFile.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text);
}

void ConsoleInterface::log(LogLevel level, const QString &text)
{
    const QString line = level == LogLevel::Warning ? tr("Warning: %1").arg(text) : text;
    const QByteArray bytes = line.toUtf8() + '\n';
    eraseStatus();
    writeTo(level == LogLevel::Fatal ? standardError : standardOutput, bytes);
    writeToLogFile(bytes);
}

void ConsoleInterface::writeToLogFile(const QByteArray &line)
{
    if (m_logFile.isOpen() && (m_logFile.write(line) != line.size() || !m_logFile.flush())) {
        const QString path = m_logFile.fileName();
        const QString reason = m_logFile.errorString();
        m_logFile.close();
        log(LogLevel::Warning, tr("Can't write to log file '%1'. %2").arg(path, reason));
    }
}

void ConsoleInterface::showStatus(const QString &text)
{
    if (text.isEmpty()) {
        eraseStatus();
        return;
    }
    if (!m_isTerminal || m_sinceStart.elapsed() < statusDelayMilliseconds ||
        (m_sinceStatus.isValid() && m_sinceStatus.elapsed() < statusIntervalMilliseconds)) {
        return;
    }
    m_sinceStatus.start();
    m_statusShown = true;
    writeTo(standardError, "\r\033[K" + text.simplified().left(terminalWidth() - 1).toUtf8());
}

void ConsoleInterface::eraseStatus()
{
    if (m_statusShown) {
        writeTo(standardError, "\r\033[K");
        m_statusShown = false;
    }
}

void ConsoleInterface::beep()
{
    if (m_isTerminal) {
        writeTo(standardError, "\a");
    }
}

std::optional<double> ConsoleInterface::askForMemory(double limitGb, double usedGb)
{
    log(LogLevel::Fatal, memoryQuestion(limitGb, usedGb));
    return {};
}

bool ConsoleInterface::confirmMultiFile(const QString &text)
{
    log(LogLevel::Information, text);
    return true;
}

bool ConsoleInterface::confirm(const QString &text)
{
    log(LogLevel::Information, text);
    return true;
}

bool ConsoleInterface::askToUseDocumentLocale(const QString &documentLocale,
                                              const QString &currentLocale)
{
    const QLocale document(documentLocale);
    const QLocale current(currentLocale);
    log(LogLevel::Information,
        tr("This file was saved with locale '%1/%2'. The current locale is '%3/%4'. The document's "
           "locale is used.")
            .arg(QLocale::languageToString(document.language()),
                 QLocale::countryToString(document.country()),
                 QLocale::languageToString(current.language()),
                 QLocale::countryToString(current.country())));
    return true;
}

// Each of them ends in "Error", which is told in the run's log.
bool ConsoleInterface::askForMissingInputs(const QStringList &)
{
    return false;
}
