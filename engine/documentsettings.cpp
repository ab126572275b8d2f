#include "documentsettings.h"

#include <QFileInfo>

QString DocumentSettings::folder() const
{
    return path.isEmpty() ? QString() : QFileInfo(path).absolutePath();
}
