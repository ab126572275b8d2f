#include "documentcontroller.h"

#include "documentfile.h"
#include "documenttrust.h"
#include "graphscene.h"
#include "inputnode.h"
#include "outputwriter.h"
#include "preferencesstore.h"
#include "runcontroller.h"
#include "texts.h"
#include "windowinterface.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QUndoStack>
#include <QUuid>

namespace {

QString documentFilter()
{
    return DocumentController::tr("Documents (*.transform)");
}

const QString folderKey = QStringLiteral("document_folder");

/// One line each, but not more than fit on a screen.
QString shortened(const QStringList &lines)
{
    constexpr int most = 10;
    const QString text = lines.mid(0, most).join(QLatin1Char('\n'));
    return lines.size() <= most
               ? text
               : text + QLatin1Char('\n') +
                     DocumentController::tr("+ %1 more").arg(Texts::count(lines.size() - most));
}

} // namespace

DocumentController::DocumentController(const Parts &parts, QWidget *window)
    : QObject(window)
    , m_parts(parts)
    , m_window(window)
    , m_recovery(parts.scene)
    , m_watch(parts.scene)
{
    const auto modifiedChanged = [this] {
        m_recovery.setModified(isModified());
        Q_EMIT changed();
    };
    connect(&parts.scene->undoStack(), &QUndoStack::cleanChanged, this, modifiedChanged);
    connect(parts.scene, &GraphScene::fileOpen, this, &DocumentController::open);

    connect(&m_watch, &InputWatch::reloaded, this,
            [this](const QString &text) { m_parts.user->log(LogLevel::Information, text); });
}

bool DocumentController::isModified() const
{
    return m_isRecovered || !m_parts.scene->undoStack().isClean();
}

QString DocumentController::title() const
{
    const QString &path = m_parts.scene->document().path;
    return path.isEmpty() ? tr("Untitled") : QFileInfo(path).fileName();
}

void DocumentController::whenIdle(std::function<void()> action)
{
    if (!m_parts.runs->isRunning()) {
        action();
        return;
    }
    // The run is further up in the call stack: it has to return first.
    auto *const once = new QObject(this);
    connect(m_parts.runs, &RunController::ended, once, [this, once, action] {
        once->deleteLater();
        QTimer::singleShot(0, this, action);
    });
    m_parts.runs->stop();
}

bool DocumentController::mayLeave()
{
    if (!isModified()) {
        return true;
    }
    QMessageBox box(QMessageBox::Question, Texts::productName(),
                    tr("Save the changes to '%1'?").arg(title()), QMessageBox::NoButton, m_window);
    box.setInformativeText(tr("Without saving they are lost."));
    box.setTextFormat(Qt::PlainText);
    const QPushButton *const save = box.addButton(tr("Save"), QMessageBox::AcceptRole);
    const QPushButton *const drop = box.addButton(tr("Don't save"), QMessageBox::DestructiveRole);
    QPushButton *const cancel = box.addButton(tr("Cancel"), QMessageBox::RejectRole);
    box.setEscapeButton(cancel);
    box.exec();
    if (box.clickedButton() == save) {
        return this->save();
    }
    return box.clickedButton() == drop;
}

bool DocumentController::mayRun(bool automatic)
{
    const GraphScene &scene = *m_parts.scene;
    if (scene.document().path.isEmpty() || DocumentTrust::isKnown(*m_parts.store, scene)) {
        return true; // made here
    }
    const QStringList targets = DocumentTrust::outsideTargets(scene);
    if (targets.isEmpty()) {
        return true;
    }
    if (automatic && m_isDeclined) {
        return false;
    }
    m_isDeclined = !askUser(m_window, tr("Outputs outside the document's folder"),
                            tr("'%1' has not been run on this machine yet. It writes outside its "
                               "own folder:\n\n%2\n\nIs it to be run?")
                                .arg(title(), shortened(targets)),
                            tr("Run"), tr("Don't run"));
    if (!m_isDeclined) {
        DocumentTrust::remember(m_parts.store, scene);
    }
    return !m_isDeclined;
}

void DocumentController::newDocument()
{
    whenIdle([this] {
        if (!mayLeave() || !m_parts.scene->clear()) {
            return;
        }
        m_parts.scene->document().id = QUuid::createUuid().toString(QUuid::WithoutBraces);
        m_isRecovered = false;
        m_recovery.setModified(false);
        Q_EMIT replaced();
        Q_EMIT changed();
    });
}

QString DocumentController::startFolder() const
{
    const QString last = m_parts.store->windowValue(folderKey).toString();
    return QFileInfo(last).isDir()
               ? last
               : QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

void DocumentController::browse()
{
    const QString path = QFileDialog::getOpenFileName(m_window, tr("Open document"), startFolder(),
                                                      documentFilter());
    if (!path.isEmpty()) {
        open(path);
    }
}

void DocumentController::open(const QString &path)
{
    whenIdle([this, path] {
        QString savedPath;
        if (mayLeave() && load(path, &savedPath)) {
            afterOpening(path);
        }
    });
}

bool DocumentController::load(const QString &path, QString *savedPath)
{
    m_parts.user->showStatus(tr("Loading %1").arg(path));
    QApplication::setOverrideCursor(Qt::WaitCursor);
    DocumentFile::Loaded loaded;
    QString error;
    const bool isLoaded =
        DocumentFile::load(path, *m_parts.catalogue, m_parts.scene, &loaded, &error);
    QApplication::restoreOverrideCursor();
    m_parts.user->showStatus(QString());
    if (!isLoaded) {
        m_parts.user->log(LogLevel::Warning, error);
        tellUser(m_window, tr("Open document"), error, true);
        m_parts.store->removeRecentDocument(path);
        return false;
    }
    *savedPath = loaded.savedPath;
    m_isRecovered = false;
    m_isDeclined = false;
    m_recovery.setModified(false);
    Q_EMIT replaced();
    Q_EMIT changed();
    if (loaded.createdWithLaterVersion) {
        tellUser(m_window, tr("Later version"), DocumentFile::laterVersionWarning(), false);
    }
    for (const QString &warning : qAsConst(loaded.warnings)) {
        m_parts.user->log(LogLevel::Warning, warning);
    }
    if (!loaded.warnings.isEmpty()) {
        tellUser(m_window, tr("Open document"), loaded.warnings.join(QLatin1String("\n\n")), false);
    }
    return true;
}

void DocumentController::afterOpening(const QString &path)
{
    const QFileInfo file(path);
    m_parts.store->addRecentDocument(file.absoluteFilePath());
    m_parts.store->setWindowValue(folderKey, file.absolutePath());
    if (!file.isWritable()) {
        tellUser(m_window, tr("Read-only document"),
                 tr("Cannot open '%1' to write.\nYou may have insufficient access, it may be "
                    "read-only or it may be open in another application.\nOpen it read-only and "
                    "select 'File'>Save as...' to save it to a different filename/folder.")
                     .arg(path),
                 false);
    }
    askForLocale();
    askForMissingInputs();
    m_watch.update();
    if (m_parts.scene->document().autoRun) {
        m_parts.runs->setAutoRun(true);
    }
}

void DocumentController::askForLocale()
{
    const QString name = m_parts.scene->document().localeName;
    const QLocale locale(name);
    if (name.isEmpty() || locale.name() == QLocale().name() || locale.name() != name) {
        return;
    }
    if (m_parts.user->askToUseDocumentLocale(name, QLocale().name())) {
        QLocale::setDefault(locale);
        QStringList warnings;
        Preferences preferences = m_parts.store->load(&warnings);
        preferences.localeName = name;
        m_parts.store->save(preferences);
        Q_EMIT localeChanged();
    }
}

QString DocumentController::resolved(const InputNode &input) const
{
    return resolvedPath(input.path(), m_parts.scene->document().folder());
}

void DocumentController::askForMissingInputs()
{
    QList<InputNode *> missing;
    QStringList paths;
    for (InputNode *const input : m_parts.scene->inputs()) {
        const QString path = resolved(*input);
        if (input->medium() == Medium::File && !input->path().isEmpty() &&
            !QFileInfo::exists(path)) {
            missing.append(input);
            paths.append(QDir::toNativeSeparators(path.isEmpty() ? input->path() : path));
        }
    }
    if (missing.isEmpty() || !m_parts.user->askForMissingInputs(paths)) {
        return;
    }
    for (int i = 0; i < missing.size() && chooseInput(missing.at(i), paths.at(i)); ++i) {
    }
}

bool DocumentController::chooseInput(InputNode *input, const QString &path)
{
    const QString chosen = QFileDialog::getOpenFileName(
        m_window, tr("Choose the file for '%1'").arg(path), m_parts.scene->document().folder());
    if (chosen.isEmpty()) {
        return false;
    }
    InputOptions options = input->options();
    options.path = chosen;
    m_parts.scene->editOptions(input, options, tr("File"));
    return true;
}

bool DocumentController::save()
{
    const QString path = m_parts.scene->document().path;
    return path.isEmpty() ? saveAs() : saveTo(path);
}

bool DocumentController::saveAs()
{
    const QString now = m_parts.scene->document().path;
    QFileDialog dialog(m_window, tr("Save document"),
                       now.isEmpty() ? startFolder() : QFileInfo(now).absolutePath(),
                       documentFilter());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("transform"));
    dialog.selectFile(now.isEmpty() ? tr("Untitled.transform") : QFileInfo(now).fileName());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return false;
    }
    return saveTo(dialog.selectedFiles().first());
}

bool DocumentController::saveTo(const QString &path)
{
    QString error;
    if (!DocumentFile::save(path, *m_parts.scene, &error)) {
        m_parts.user->log(LogLevel::Warning, error);
        tellUser(m_window, tr("Save document"), error, true);
        return false;
    }
    const QFileInfo file(path);
    m_parts.scene->document().path = file.absoluteFilePath();
    m_parts.scene->setClean();
    m_isRecovered = false;
    DocumentTrust::remember(m_parts.store, *m_parts.scene);
    m_recovery.setModified(false);
    m_watch.update();
    m_parts.store->addRecentDocument(file.absoluteFilePath());
    m_parts.store->setWindowValue(folderKey, file.absolutePath());
    m_parts.user->showStatus(tr("Saved '%1'").arg(QDir::toNativeSeparators(path)));
    Q_EMIT changed();
    return true;
}

void DocumentController::offerRecovery()
{
    const AutoRecovery::Left left = AutoRecovery::find();
    if (left.path.isEmpty()) {
        return;
    }
    QMessageBox box(QMessageBox::Question, tr("Automatic recovery"),
                    tr("An automatic recovery file was created %1 ago. Do you wish to open it?")
                        .arg(AutoRecovery::ago(left.saved)),
                    QMessageBox::NoButton, m_window);
    const QPushButton *const open = box.addButton(tr("Open"), QMessageBox::AcceptRole);
    const QPushButton *const drop = box.addButton(tr("Delete it"), QMessageBox::DestructiveRole);
    QPushButton *const later = box.addButton(tr("Not now"), QMessageBox::RejectRole);
    box.setEscapeButton(later); // nothing is lost by a careless key
    box.exec();
    const bool isWanted = box.clickedButton() == open;
    if (!isWanted && box.clickedButton() != drop) {
        return;
    }
    QString savedPath;
    if (isWanted) {
        if (!load(left.path, &savedPath)) {
            return;
        }
        // It belongs where the document was, and is not saved there.
        m_parts.scene->document().path = QDir::fromNativeSeparators(savedPath);
        m_isRecovered = true;
        m_recovery.setModified(true);
        m_recovery.saveNow();
        Q_EMIT changed();
    }
    AutoRecovery::discard(left.path);
}
