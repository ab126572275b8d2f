#pragma once

#include "preferences.h"
#include "theme.h"

#include <QCoreApplication>
#include <QSettings>
#include <QVariant>
#include <memory>

/// Where the user's preferences are kept: in "tabweave.ini" beside the program when there is one
/// (so that the program can be carried around), else among the user's settings.
class PreferencesStore
{
    Q_DECLARE_TR_FUNCTIONS(PreferencesStore)

public:
    explicit PreferencesStore(const QString &programFolder);
    ~PreferencesStore();
    PreferencesStore(const PreferencesStore &) = delete;
    PreferencesStore &operator=(const PreferencesStore &) = delete;

    /// The one in use, for what fields remember by themselves; null without one.
    static PreferencesStore *current();

    /// Values that are not possible are replaced by the default, with a warning.
    Preferences load(QStringList *warnings) const;
    /// Stores all of them; those that have their default value are removed from the store.
    void save(const Preferences &preferences);

    ThemeChoice theme() const;
    void setTheme(ThemeChoice choice);

    /// In points; 0: that of the desktop.
    int fontSize() const;
    void setFontSize(int points);

    /// Absolute paths, the last one first.
    QStringList recentDocuments() const;
    void addRecentDocument(const QString &path);
    void removeRecentDocument(const QString &path);

    /// What the window remembers of itself from one start to the next, by name.
    QVariant windowValue(const QString &name) const;
    void setWindowValue(const QString &name, const QVariant &value);

private:
    void setOrRemove(const QString &key, const QVariant &value, bool isDefault);
    QString text(const QString &key) const;
    double number(const QString &key, double most, QStringList *warnings) const;
    QStringList extensions(const QString &key) const;
    QMap<QString, FileType> fileTypes(const QString &key, QStringList *warnings) const;
    QString notPossible(const QString &key) const;

    std::unique_ptr<QSettings> m_settings;
};
