#include "commandline.h"

#include "commandlineplan.h"
#include "consoleinterface.h"
#include "documentfile.h"
#include "graphscene.h"
#include "inputnode.h"
#include "outputnode.h"
#include "outputwriter.h"
#include "runengine.h"
#include "texts.h"
#include "transformcatalogue.h"

#include <QDateTime>
#include <QDir>
#include <QLocale>

namespace {

QString currentTime()
{
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
}

} // namespace

CommandLine::CommandLine(const Arguments &arguments, const Preferences &preferences,
                         const QString &buildIdentification)
    : m_arguments(arguments)
    , m_preferences(preferences)
    , m_buildIdentification(buildIdentification)
    , m_console(std::make_unique<ConsoleInterface>())
{
}

CommandLine::~CommandLine() = default;

std::optional<int> CommandLine::begin(const QStringList &warnings)
{
    if (m_arguments.commandLine && m_arguments.logPath &&
        !m_console->openLogFile(*m_arguments.logPath)) {
        m_console->log(LogLevel::Warning,
                       tr("Could not open log file at '%1'").arg(*m_arguments.logPath));
    }
    for (const QString &warning : warnings) {
        m_console->log(LogLevel::Warning, warning);
    }
    if (m_arguments.version) {
        logInformation(tr("%1 %2").arg(Texts::productName(), Texts::productVersion()));
    }
    if (m_arguments.build) {
        logInformation(m_buildIdentification);
    }
    if (!m_arguments.error.isEmpty()) {
        return refuse(m_arguments.error);
    }
    if (m_arguments.document.isEmpty() && (m_arguments.version || m_arguments.build)) {
        return Success;
    }
    return {};
}

int CommandLine::run()
{
    const QString document =
        QDir::toNativeSeparators(QDir::current().absoluteFilePath(m_arguments.document));
    logInformation(tr("Start processing '%1' on %2").arg(document, currentTime()));

    QString error;
    if (!loadDocument(&error) || !replaceFiles(&error)) {
        return refuse(error);
    }
    const CommandLinePlan plan = CommandLinePlan::made(*m_scene);
    for (const QString &warning : plan.warnings) {
        m_console->log(LogLevel::Warning, warning);
    }
    if (!plan.error.isEmpty()) {
        return refuse(plan.error);
    }
    logFiles(plan.leftOut);
    const int status = runItems(plan.leftOut);
    if (status != MemoryExceeded) {
        logInformation(tr("Finished processing '%1' on %2").arg(document, currentTime()));
    }
    return status;
}

int CommandLine::refuse(const QString &error)
{
    m_console->log(LogLevel::Fatal, error);
    m_console->log(LogLevel::Fatal, tr("Aborted processing"));
    return Refused;
}

void CommandLine::tellNoWindow()
{
    m_console->log(LogLevel::Fatal, tr("There is no display to open a window on. Run a document "
                                       "without a window: tabweave -cli DOCUMENT"));
}

void CommandLine::tellOutOfMemory()
{
    ConsoleInterface().log(LogLevel::Fatal, tr("%1 ran out of memory!").arg(Texts::productName()));
}

void CommandLine::logInformation(const QString &text)
{
    m_console->log(LogLevel::Information, text);
}

bool CommandLine::loadDocument(QString *error)
{
    m_scene = std::make_unique<GraphScene>(m_console.get());
    m_scene->setPreferences(m_preferences);
    const TransformCatalogue catalogue;
    DocumentFile::Loaded loaded;
    if (!DocumentFile::load(m_arguments.document, catalogue, m_scene.get(), &loaded, error)) {
        return false;
    }
    if (loaded.createdWithLaterVersion) {
        m_console->log(LogLevel::Warning, DocumentFile::laterVersionWarning());
    }
    for (const QString &warning : loaded.warnings) {
        m_console->log(LogLevel::Warning, warning);
    }
    useDocumentLocale();
    return true;
}

// The same document gives the same result on every machine.
void CommandLine::useDocumentLocale()
{
    const QString name = m_scene->document().localeName;
    const QLocale locale(name);
    if (name.isEmpty() || locale.name() == QLocale().name()) {
        return;
    }
    if (locale.language() == QLocale::C && name != QLocale::c().name()) {
        m_console->log(LogLevel::Warning,
                       tr("The document's locale '%1' is not known, '%2' is used.")
                           .arg(name, QLocale().name()));
    } else if (m_console->askToUseDocumentLocale(name, QLocale().name())) {
        QLocale::setDefault(locale);
        applyDateFormats(m_preferences);
    }
}

bool CommandLine::replaceFiles(QString *error)
{
    QHash<QString, IONode *> byAlias;
    for (IONode *output : m_scene->outputs()) {
        byAlias.insert(output->alias(), output);
    }
    for (IONode *input : m_scene->inputs()) {
        byAlias.insert(input->alias(), input);
    }
    for (const QString &value : m_arguments.files) {
        const QStringList parts = value.split(QLatin1Char('='));
        if (parts.size() != 2) {
            *error = tr("Expected <alias>=<value> for %1 argument").arg(QStringLiteral("file"));
            return false;
        }
        IONode *node = byAlias.value(parts[0]);
        if (!node) {
            *error = tr("No input or output has the alias '%1'.").arg(parts[0]);
            return false;
        }
        replaceFile(node, parts[1]);
    }
    return true;
}

void CommandLine::replaceFile(IONode *node, const QString &path)
{
    const QString absolute =
        path.isEmpty() ? path : QDir::cleanPath(QDir::current().absoluteFilePath(path));
    if (node->kind() == ItemKind::Input) {
        auto *input = static_cast<InputNode *>(node);
        InputOptions options = input->options();
        if (!m_previousPaths.contains(node->id())) {
            m_previousPaths.insert(node->id(), options.path);
        }
        options.medium = Medium::File;
        options.path = absolute;
        input->setOptions(options);
    } else {
        auto *output = static_cast<OutputNode *>(node);
        OutputOptions options = output->options();
        options.medium = Medium::File;
        options.path = absolute;
        output->setOptions(options);
    }
}

QString CommandLine::shownPath(const IONode &node) const
{
    const QString path = resolvedPath(node.path(), m_scene->document().folder());
    return QDir::toNativeSeparators(path.isEmpty() ? node.path() : path);
}

void CommandLine::logFiles(const QSet<int> &leftOut)
{
    for (const InputNode *input : m_scene->inputs()) {
        if (leftOut.contains(input->id())) {
            continue;
        }
        logInformation(input->medium() == Medium::Clipboard
                           ? tr("Input clipboard: %1").arg(input->alias())
                           : tr("Input file: %1, %2").arg(input->alias(), shownPath(*input)));
        const auto previous = m_previousPaths.constFind(input->id());
        if (previous != m_previousPaths.constEnd()) {
            logInformation(tr("Input alias=%1").arg(input->alias()) + QLatin1Char(' ') +
                           tr("(previously '%1')").arg(QDir::toNativeSeparators(*previous)));
        }
    }
    for (const OutputNode *output : m_scene->outputs()) {
        if (leftOut.contains(output->id())) {
            continue;
        }
        const OutputOptions &options = output->options();
        if (options.medium == Medium::Clipboard) {
            logInformation(tr("Output clipboard: %1").arg(output->alias()));
            continue;
        }
        const QString target = options.multiFile
                                   ? tr("from dataset column '%1'").arg(options.multiFileColumn)
                                   : shownPath(*output);
        logInformation(tr("Output file: %1, %2, %3")
                           .arg(output->alias(), target, writeModeLabel(options.writeMode)));
    }
}

int CommandLine::runItems(const QSet<int> &leftOut)
{
    QObject::connect(m_scene.get(), &GraphScene::processingStart, m_scene.get(),
                     [this](Node *node) { showProgress(*node, 0.0); });
    QObject::connect(m_scene.get(), &GraphScene::processed, m_scene.get(),
                     [this](Node *node, qreal fraction) { showProgress(*node, fraction); });
    QObject::connect(m_scene.get(), &GraphScene::processingEnd, m_scene.get(),
                     [this](Node *node) { logEnded(*node); });

    RunOptions options;
    options.mode = RunMode::Batch;
    options.leftOut = leftOut;
    options.nobodyWatches = true;
    const RunResult result = m_scene->runEngine().run(options);
    m_console->showStatus({});
    if (result.memoryExceeded) {
        refuse(tr("%1 has exceeded the memory allocation set in 'Preferences' and will close.")
                   .arg(Texts::productName()));
        return MemoryExceeded;
    }
    const bool allUpToDate = result.started && !result.stopped && result.errors == 0 &&
                             result.processed == result.pending;
    return allUpToDate ? Success : ItemsFailed;
}

void CommandLine::showProgress(const Node &node, double fraction)
{
    const RunEngine &engine = m_scene->runEngine();
    m_console->showStatus(tr("%1 of %2: %3 %4%")
                              .arg(Texts::count(engine.processedSoFar() + 1),
                                   Texts::count(engine.pendingAtStart()), node.displayName(),
                                   Texts::count(qRound(fraction * 100.0))));
}

// What an item noted, below its line in the log.
void CommandLine::logEnded(const Node &node)
{
    if (!m_arguments.verbose) {
        return;
    }
    for (const QString &text : node.information()) {
        for (const QString &line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            logInformation(QStringLiteral("    ") + line);
        }
    }
}
