#pragma once

#include "preferences.h"

#include <QCoreApplication>
#include <QSettings>
#include <memory>

/// Where the user's preferences are kept: in "tabweave.ini" beside the program when there is one
/// (so that the program can be carried around), else among the user's settings.
class PreferencesStore
{
    Q_DECLARE_TR_FUNCTIONS(PreferencesStore)

public:
    explicit PreferencesStore(const QString &programFolder);

    /// Values that are not possible are replaced by the default, with a warning.
    Preferences load(QStringList *warnings) const;

private:
    QString text(const QString &key) const;
    double number(const QString &key, double most, QStringList *warnings) const;
    QStringList extensions(const QString &key) const;
    QMap<QString, FileType> fileTypes(const QString &key, QStringList *warnings) const;
    QString notPossible(const QString &key) const;

    std::unique_ptr<QSettings> m_settings;
};
