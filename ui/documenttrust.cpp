#include "documenttrust.h"

#include "graphscene.h"
#include "outputnode.h"
#include "outputwriter.h"
#include "preferencesstore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {

constexpr int mostKnown = 500;
const QString knownKey = QStringLiteral("known_documents");

/// A folder with all links followed, as far as it exists.
QString realFolder(const QString &folder)
{
    const QString canonical = QFileInfo(folder).canonicalFilePath();
    return canonical.isEmpty() ? QDir::cleanPath(folder) : canonical;
}

bool isInside(const QString &path, const QString &folder)
{
    const QString place = realFolder(QFileInfo(path).absolutePath()) + QLatin1Char('/');
    return place.startsWith(folder + QLatin1Char('/'));
}

QString entryOf(const GraphScene &scene)
{
    return scene.document().id + QLatin1Char('|') + scene.document().path;
}

} // namespace

QStringList DocumentTrust::outsideTargets(const GraphScene &scene)
{
    const QString folder = realFolder(scene.document().folder());
    QStringList targets;
    for (const OutputNode *const output : scene.outputs()) {
        const OutputOptions &options = output->options();
        if (options.medium != Medium::File || options.writeMode == WriteMode::Disabled) {
            continue;
        }
        if (options.multiFile) {
            targets.append(
                QCoreApplication::translate("DocumentTrust", "the files that column '%1' names")
                    .arg(options.multiFileColumn));
            continue;
        }
        const QString path = resolvedPath(options.path, scene.document().folder());
        if (!path.isEmpty() && !isInside(path, folder)) {
            targets.append(QDir::toNativeSeparators(path));
        }
    }
    return targets;
}

bool DocumentTrust::isKnown(const PreferencesStore &store, const GraphScene &scene)
{
    return store.windowValue(knownKey).toStringList().contains(entryOf(scene));
}

void DocumentTrust::remember(PreferencesStore *store, const GraphScene &scene)
{
    QStringList known = store->windowValue(knownKey).toStringList();
    known.removeAll(entryOf(scene));
    known.prepend(entryOf(scene));
    store->setWindowValue(knownKey, QStringList(known.mid(0, mostKnown)));
}
