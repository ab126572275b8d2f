#include "programfolders.h"

#include <QCoreApplication>
#include <QDir>

QString programFolder(const QString &name, const QString &file)
{
    const QString program = QCoreApplication::applicationDirPath();
    // Beside the program, in the source tree that it was built in, and installed.
    for (const char *place : {"/", "/../../", "/../share/tabweave/"}) {
        const QDir folder(QDir::cleanPath(program + QLatin1String(place) + name));
        if (!folder.entryList({file}, QDir::Files).isEmpty()) {
            return folder.absolutePath();
        }
    }
    return {};
}
