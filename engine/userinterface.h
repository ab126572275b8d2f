#pragma once

#include <QString>
#include <QStringList>
#include <optional>

enum class LogLevel { Information, Warning, Fatal };

/// Everything that the model asks or tells the user. The window answers with dialogs, the command
/// line with fixed choices and log lines, tests with a script.
class UserInterface
{
public:
    virtual ~UserInterface() = default;

    /// A line for the log pane or the log; may hold line breaks.
    virtual void log(LogLevel level, const QString &text) = 0;
    /// The text of the status bar; empty clears it.
    virtual void showStatus(const QString &text) = 0;
    virtual void beep() = 0;

    /// The process uses more memory than allowed: the new limit (which the answerer also stores in
    /// the preferences), or nothing to exit. In units of 2^30 bytes; see memoryQuestion().
    virtual std::optional<double> askForMemory(double limitGb, double usedGb) = 0;
    /// The confirmation titled "Multi file output".
    virtual bool confirmMultiFile(const QString &text) = 0;
    /// Any other question that is answered with yes or no.
    virtual bool confirm(const QString &text) = 0;
    /// Whether to replace the locale in use by the document's; names as "en_GB".
    virtual bool askToUseDocumentLocale(const QString &documentLocale,
                                        const QString &currentLocale) = 0;
    /// Some input files cannot be found: whether new ones are to be chosen.
    virtual bool askForMissingInputs(const QStringList &paths) = 0;

    /// Nothing when there is no clipboard.
    virtual std::optional<QString> clipboardText() = 0;
    /// False when there is no clipboard.
    virtual bool setClipboardText(const QString &text) = 0;

protected:
    UserInterface() = default;
    UserInterface(const UserInterface &) = default;
    UserInterface &operator=(const UserInterface &) = default;
};

/// The text of the "Insufficient Memory" question.
QString memoryQuestion(double limitGb, double usedGb);
