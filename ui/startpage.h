#pragma once

#include <QWidget>

class PreferencesStore;
class QVBoxLayout;

/// What an empty window shows: how to begin.
class StartPage final : public QWidget
{
    Q_OBJECT

public:
    explicit StartPage(const PreferencesStore *store, QWidget *parent = nullptr);

    /// Shows the recent documents anew.
    void refresh();

Q_SIGNALS:
    void openWanted(const QString &path);
    void inputWanted();
    void browseWanted();
    void emptyCanvasWanted();

private:
    void addLink(QVBoxLayout *layout, const QString &text, const QString &hint,
                 const QString &iconName, const QString &path);
    void clear(QVBoxLayout *layout);

    const PreferencesStore *m_store;
    QVBoxLayout *m_recent;
    QVBoxLayout *m_examples;
};

/// The documents that come with the program.
QStringList exampleDocuments();
