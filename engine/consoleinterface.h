#pragma once

#include "userinterface.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

/// The user of the command line: log lines go to standard output and the log file, errors that end
/// the program to standard error, and every question has a fixed answer that is logged. On a
/// terminal the status text stands in one line on standard error that is rewritten and erased.
///
/// Nothing here fails: a closed standard output or a full disk loses the lines, not the run.
class ConsoleInterface final : public UserInterface
{
    Q_DECLARE_TR_FUNCTIONS(ConsoleInterface)

public:
    ConsoleInterface();
    ~ConsoleInterface() override;

    /// Log lines are appended to this file from now on. False when it cannot be opened, or when it
    /// is a document, which a mistaken argument must not spoil.
    bool openLogFile(const QString &path);

    void log(LogLevel level, const QString &text) override;
    void showStatus(const QString &text) override;
    void beep() override;
    std::optional<double> askForMemory(double limitGb, double usedGb) override;
    bool confirmMultiFile(const QString &text) override;
    bool confirm(const QString &text) override;
    bool askToUseDocumentLocale(const QString &documentLocale,
                                const QString &currentLocale) override;
    bool askForMissingInputs(const QStringList &paths) override;
    std::optional<QString> clipboardText() override { return {}; }
    bool setClipboardText(const QString &) override { return false; }

private:
    void writeToLogFile(const QByteArray &line);
    void eraseStatus();

    QFile m_logFile;
    bool m_isTerminal;
    bool m_statusShown = false;
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceStatus;
};
