#include "transformsettings.h"

#include "dateformats.h"

#include <QLocale>
#include <optional>

namespace {

std::optional<TransformSettings> &handedIn()
{
    static std::optional<TransformSettings> settings;
    return settings;
}

} // namespace

const TransformSettings &TransformSettings::current()
{
    std::optional<TransformSettings> &settings = handedIn();
    if (!settings) {
        settings = TransformSettings{dateFormatList(QString(), QLocale().country())};
    }
    return *settings;
}

void TransformSettings::setCurrent(const TransformSettings &settings)
{
    handedIn() = settings;
}
