#include "windowinterface.h"

#include "memorydialog.h"
#include "preferencesstore.h"
#include "texts.h"

#include <QApplication>
#include <QClipboard>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>

namespace {

constexpr int mostPathsTold = 10;

/// "English", "United Kingdom".
QPair<QString, QString> localeTexts(const QString &name)
{
    const QLocale locale(name);
    return {QLocale::languageToString(locale.language()),
            QLocale::countryToString(locale.country())};
}

} // namespace

bool askUser(QWidget *window, const QString &title, const QString &text, const QString &yes,
             const QString &no)
{
    QMessageBox box(QMessageBox::Question, title, text, QMessageBox::NoButton, window);
    box.setTextFormat(Qt::PlainText);
    const QPushButton *const accept = box.addButton(yes, QMessageBox::AcceptRole);
    QPushButton *const reject = box.addButton(no, QMessageBox::RejectRole);
    box.setEscapeButton(reject);
    box.exec();
    return box.clickedButton() == accept;
}

void tellUser(QWidget *window, const QString &title, const QString &text, bool isError)
{
    QMessageBox box(isError ? QMessageBox::Critical : QMessageBox::Warning, title, text,
                    QMessageBox::Ok, window);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}

WindowInterface::WindowInterface(QWidget *window, PreferencesStore *store)
    : QObject(window)
    , m_window(window)
    , m_store(store)
{
    qRegisterMetaType<LogLevel>("LogLevel");
}

void WindowInterface::log(LogLevel level, const QString &text)
{
    Q_EMIT logged(level, text);
}

void WindowInterface::showStatus(const QString &text)
{
    Q_EMIT statusShown(text);
}

void WindowInterface::beep()
{
    QApplication::beep();
}

std::optional<double> WindowInterface::askForMemory(double limitGb, double usedGb)
{
    while (QApplication::overrideCursor()) {
        QApplication::restoreOverrideCursor();
    }
    MemoryDialog dialog(limitGb, usedGb, m_window);
    dialog.exec();
    const std::optional<double> newLimit = dialog.newLimitGb();
    if (newLimit) {
        QStringList warnings;
        Preferences preferences = m_store->load(&warnings);
        preferences.maxMemoryGb = *newLimit;
        m_store->save(preferences);
    }
    return newLimit;
}

bool WindowInterface::confirmMultiFile(const QString &text)
{
    return askUser(m_window, tr("Multi file output"), text, tr("Write"), tr("Cancel"));
}

bool WindowInterface::confirm(const QString &text)
{
    return askUser(m_window, Texts::productName(), text, tr("Continue"), tr("Cancel"));
}

bool WindowInterface::askToUseDocumentLocale(const QString &documentLocale,
                                             const QString &currentLocale)
{
    const auto [documentLanguage, documentCountry] = localeTexts(documentLocale);
    const auto [language, country] = localeTexts(currentLocale);
    return askUser(m_window, tr("Locale difference"),
                   tr("This file was saved with locale '%1/%2'. The current locale is '%3/%4'. A "
                      "difference in locale could make a difference to processing. For example, "
                      "different locales expect different decimal separators for numbers. You can "
                      "also change the locale in 'Preferences'.")
                       .arg(documentLanguage, documentCountry, language, country),
                   tr("Change locale to %1/%2").arg(documentLanguage, documentCountry),
                   tr("Keep %1/%2 locale").arg(language, country));
}

bool WindowInterface::askForMissingInputs(const QStringList &paths)
{
    QString list = paths.mid(0, mostPathsTold).join(QLatin1Char('\n'));
    if (paths.size() > mostPathsTold) {
        list += QLatin1Char('\n') + tr("+ %1 more").arg(Texts::count(paths.size() - mostPathsTold));
    }
    const QString text =
        paths.size() == 1
            ? tr("The following input file cannot be found:\n\n%1\n\nDo you wish to choose a new "
                 "input file?")
                  .arg(list)
            : tr("The following %1 input files cannot be found:\n\n%2\n\nDo you wish to choose new "
                 "input files?")
                  .arg(Texts::count(paths.size()), list);
    return askUser(m_window, tr("Missing input"), text, tr("Choose"), tr("Leave as it is"));
}

std::optional<QString> WindowInterface::clipboardText()
{
    return QApplication::clipboard()->text();
}

bool WindowInterface::setClipboardText(const QString &text)
{
    QApplication::clipboard()->setText(text);
    return true;
}
