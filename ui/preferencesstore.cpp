#include "preferencesstore.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>

namespace {

constexpr int mostRecentDocuments = 12;
const QString themeKey = QStringLiteral("theme");
const QString fontSizeKey = QStringLiteral("font_size");
const QString recentKey = QStringLiteral("window/recent_documents");

PreferencesStore *currentStore = nullptr;

} // namespace

PreferencesStore::PreferencesStore(const QString &programFolder)
{
    const QString portable = QDir(programFolder).filePath(QStringLiteral("tabweave.ini"));
    m_settings = QFileInfo::exists(portable)
                     ? std::make_unique<QSettings>(portable, QSettings::IniFormat)
                     : std::make_unique<QSettings>();
    m_settings->setIniCodec("UTF-8");
    currentStore = this;
}

PreferencesStore::~PreferencesStore()
{
    currentStore = currentStore == this ? nullptr : currentStore;
}

PreferencesStore *PreferencesStore::current()
{
    return currentStore;
}

Preferences PreferencesStore::load(QStringList *warnings) const
{
    Preferences preferences;
    preferences.localeName = text(QStringLiteral("locale"));
    if (!preferences.localeName.isEmpty() && preferences.localeName != QLatin1String("C") &&
        QLocale(preferences.localeName).language() == QLocale::C) {
        warnings->append(notPossible(QStringLiteral("locale")));
        preferences.localeName.clear();
    }
    preferences.dateFormats =
        text(QStringLiteral("date_formats")).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    preferences.maxMemoryGb = number(QStringLiteral("max_memory_usage"), 1e6, warnings);
    preferences.optimizeFor = int(number(QStringLiteral("optimize_for"), 1, warnings));
    preferences.autoRunDelaySeconds = number(QStringLiteral("auto_run_delay"), 3600, warnings);
    preferences.soundWhenCompleted =
        number(QStringLiteral("sound_when_completed"), 1, warnings) == 1.0;
    preferences.blockedInputExtensions = extensions(QStringLiteral("blocked_input_extensions"));
    preferences.blockedOutputExtensions = extensions(QStringLiteral("blocked_output_extensions"));
    preferences.fileTypesByExtension = fileTypes(QStringLiteral("extension_types"), warnings);
    return preferences;
}

void PreferencesStore::save(const Preferences &preferences)
{
    const auto &p = preferences;
    const auto joined = [](const QStringList &list) { return list.join(QLatin1Char(',')); };
    const auto set = [this](const char *key, const QVariant &value, bool isDefault) {
        setOrRemove(QLatin1String(key), value, isDefault);
    };
    set("locale", p.localeName, p.localeName.isEmpty());
    set("date_formats", p.dateFormats.join(QLatin1Char('\n')), p.dateFormats.isEmpty());
    set("max_memory_usage", p.maxMemoryGb, p.maxMemoryGb <= 0.0);
    set("optimize_for", p.optimizeFor, p.optimizeFor == 0);
    set("auto_run_delay", p.autoRunDelaySeconds, p.autoRunDelaySeconds <= 0.0);
    set("sound_when_completed", 1, !p.soundWhenCompleted);
    set("blocked_input_extensions", joined(p.blockedInputExtensions),
        p.blockedInputExtensions.isEmpty());
    set("blocked_output_extensions", joined(p.blockedOutputExtensions),
        p.blockedOutputExtensions.isEmpty());
    QStringList types;
    for (auto type = p.fileTypesByExtension.begin(); type != p.fileTypesByExtension.end(); ++type) {
        types.append(QStringLiteral("%1:%2").arg(type.key(), QString::number(int(type.value()))));
    }
    set("extension_types", joined(types), types.isEmpty());
}

void PreferencesStore::setOrRemove(const QString &key, const QVariant &value, bool isDefault)
{
    if (isDefault) {
        m_settings->remove(key);
    } else {
        m_settings->setValue(key, value);
    }
}

ThemeChoice PreferencesStore::theme() const
{
    const int number = m_settings->value(themeKey).toInt();
    return number == 1 ? ThemeChoice::Light : number == 2 ? ThemeChoice::Dark : ThemeChoice::System;
}

void PreferencesStore::setTheme(ThemeChoice choice)
{
    setOrRemove(themeKey, int(choice), choice == ThemeChoice::System);
}

int PreferencesStore::fontSize() const
{
    constexpr int smallest = 6;
    constexpr int largest = 36;
    const int points = m_settings->value(fontSizeKey).toInt();
    return points == 0 ? 0 : qBound(smallest, points, largest);
}

void PreferencesStore::setFontSize(int points)
{
    setOrRemove(fontSizeKey, points, points == 0);
}

QStringList PreferencesStore::recentDocuments() const
{
    return m_settings->value(recentKey).toStringList();
}

void PreferencesStore::addRecentDocument(const QString &path)
{
    QStringList recent = recentDocuments();
    recent.removeAll(path);
    recent.prepend(path);
    m_settings->setValue(recentKey, QStringList(recent.mid(0, mostRecentDocuments)));
}

void PreferencesStore::removeRecentDocument(const QString &path)
{
    QStringList recent = recentDocuments();
    recent.removeAll(path);
    m_settings->setValue(recentKey, recent);
}

QVariant PreferencesStore::windowValue(const QString &name) const
{
    return m_settings->value(QLatin1String("window/") + name);
}

void PreferencesStore::setWindowValue(const QString &name, const QVariant &value)
{
    m_settings->setValue(QLatin1String("window/") + name, value);
}

// A value with commas is read as a list unless it stands in quotes.
QString PreferencesStore::text(const QString &key) const
{
    const QVariant value = m_settings->value(key);
    return value.type() == QVariant::StringList ? value.toStringList().join(QLatin1Char(','))
                                                : value.toString();
}

double PreferencesStore::number(const QString &key, double most, QStringList *warnings) const
{
    const QString value = text(key);
    if (value.isEmpty()) {
        return 0.0;
    }
    bool ok = false;
    const double read = value.toDouble(&ok);
    if (!ok || !(read >= 0.0 && read <= most)) {
        warnings->append(notPossible(key));
        return 0.0;
    }
    return read;
}

QStringList PreferencesStore::extensions(const QString &key) const
{
    QStringList list;
    for (QString extension : text(key).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        extension = extension.trimmed().toLower();
        list.append(extension.startsWith(QLatin1Char('.')) ? extension.mid(1) : extension);
    }
    return list;
}

QMap<QString, FileType> PreferencesStore::fileTypes(const QString &key, QStringList *warnings) const
{
    QMap<QString, FileType> types;
    for (const QString &entry : text(key).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QStringList parts = entry.split(QLatin1Char(':'));
        bool ok = false;
        const int type = parts.value(1).toInt(&ok);
        if (parts.size() != 2 || !ok || type < 0 || type > int(FileType::PlainText)) {
            warnings->append(notPossible(key));
            return {};
        }
        types.insert(parts[0].trimmed().toLower(), FileType(type));
    }
    return types;
}

QString PreferencesStore::notPossible(const QString &key) const
{
    return tr("The value '%1' of the preference '%2' is not possible and is ignored.")
        .arg(text(key), key);
}
