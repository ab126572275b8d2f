#include "rowlimit.h"

#include "memoryceiling.h"
#include "texts.h"

#include <QCoreApplication>
#include <QLocale>
#include <limits>

namespace {

struct RowLimit
{
    Q_DECLARE_TR_FUNCTIONS(RowLimit)
};

} // namespace

QString rowLimitProblem(qint64 rowCount, double bytesPerRow)
{
    constexpr qint64 mostRows = std::numeric_limits<qint32>::max();
    constexpr qint64 alwaysHeld = 1000000;
    constexpr double bytesPerGb = 1024.0 * 1024.0 * 1024.0;
    if (rowCount > mostRows) {
        return RowLimit::tr(
                   "The result would have %1 rows, more than the %2 that a table can hold.")
            .arg(Texts::count(rowCount), Texts::count(mostRows));
    }
    const double needed = double(rowCount) * bytesPerRow / bytesPerGb;
    const double used = MemoryCeiling::memoryInUseNowGb();
    const double limit = MemoryCeiling::limitGb();
    if (rowCount <= alwaysHeld || used + needed <= limit) {
        return QString();
    }
    const QLocale locale;
    return RowLimit::tr("The result would have %1 rows, for which about %2 GB of memory are "
                        "needed. %3 GB of at most %4 GB are in use.")
        .arg(Texts::count(rowCount), locale.toString(needed, 'f', 2), locale.toString(used, 'f', 2),
             locale.toString(limit, 'f', 2));
}
