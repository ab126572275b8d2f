#pragma once

#include "arguments.h"
#include "preferences.h"

#include <QCoreApplication>
#include <memory>
#include <optional>

class ConsoleInterface;
class GraphScene;
class IONode;
class Node;

/// A start of the program from the command line: opens a document, replaces files by aliases, runs
/// every item once, logs, and answers the exit status.
class CommandLine
{
    Q_DECLARE_TR_FUNCTIONS(CommandLine)

public:
    enum ExitStatus { Success = 0, ItemsFailed = 1, MemoryExceeded = 2, Refused = 255 };

    CommandLine(const Arguments &arguments, const Preferences &preferences,
                const QString &buildIdentification);
    ~CommandLine();

    /// Opens the log file, logs the given warnings, version and build, checks the arguments. A
    /// status means that the program ends with it.
    std::optional<int> begin(const QStringList &warnings = {});
    int run();

    /// For a start without `cli` where no window can be shown.
    void tellNoWindow();
    /// Allocates nothing to speak of.
    static void tellOutOfMemory();

private:
    int refuse(const QString &error);
    bool loadDocument(QString *error);
    void useDocumentLocale();
    bool replaceFiles(QString *error);
    void replaceFile(IONode *node, const QString &path);
    void logFiles(const QSet<int> &leftOut);
    void logEnded(const Node &node);
    void showProgress(const Node &node, double fraction);
    int runItems(const QSet<int> &leftOut);
    void logInformation(const QString &text);
    QString shownPath(const IONode &node) const;

    Arguments m_arguments;
    Preferences m_preferences;
    QString m_buildIdentification;
    std::unique_ptr<ConsoleInterface> m_console;
    std::unique_ptr<GraphScene> m_scene;
    /// What replaced inputs read before, by id.
    QMap<int, QString> m_previousPaths;
};
