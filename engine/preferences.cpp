#include "preferences.h"

#include "dateformats.h"
#include "transformsettings.h"

#include <QLocale>

void applyDateFormats(const Preferences &preferences)
{
    TransformSettings settings = TransformSettings::current();
    settings.dateFormats =
        dateFormatList(preferences.dateFormats.join(QLatin1Char('\n')), QLocale().country());
    TransformSettings::setCurrent(settings);
}
