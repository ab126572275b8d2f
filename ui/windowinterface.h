#pragma once

#include "userinterface.h"

#include <QObject>

class PreferencesStore;
class QWidget;

/// Answers the model's questions with dialogs of the window, and hands on what it tells.
class WindowInterface final : public QObject, public UserInterface
{
    Q_OBJECT

public:
    WindowInterface(QWidget *window, PreferencesStore *store);

    void log(LogLevel level, const QString &text) override;
    void showStatus(const QString &text) override;
    void beep() override;
    std::optional<double> askForMemory(double limitGb, double usedGb) override;
    bool confirmMultiFile(const QString &text) override;
    bool confirm(const QString &text) override;
    bool askToUseDocumentLocale(const QString &documentLocale,
                                const QString &currentLocale) override;
    bool askForMissingInputs(const QStringList &paths) override;
    std::optional<QString> clipboardText() override;
    bool setClipboardText(const QString &text) override;

Q_SIGNALS:
    void logged(LogLevel level, const QString &text);
    void statusShown(const QString &text);

private:
    QWidget *m_window;
    PreferencesStore *m_store;
};

/// A question with verbs on its buttons; true for the first of them.
bool askUser(QWidget *window, const QString &title, const QString &text, const QString &yes,
             const QString &no);
/// A message with an "OK" button.
void tellUser(QWidget *window, const QString &title, const QString &text, bool isError);
