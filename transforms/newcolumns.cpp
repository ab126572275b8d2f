#include "newcolumns.h"

#include <QHash>

namespace {

QString suffixed(const QString &name, int number)
{
    return QStringLiteral("%1_%2").arg(name, QString::number(number));
}

} // namespace

QString NewColumns::uniqueName(const QString &name, const QSet<QString> &used)
{
    QString result = name;
    for (int number = 2; used.contains(result); ++number) {
        result = suffixed(name, number);
    }
    return result;
}

QStringList NewColumns::uniqueNames(const QStringList &names)
{
    QSet<QString> used(names.begin(), names.end());
    QSet<QString> seen;
    // Numbers below these are in use: many columns of one name do not search anew each time.
    QHash<QString, int> next;
    QStringList result;
    for (const QString &name : names) {
        if (!seen.contains(name)) {
            seen.insert(name);
            result.append(name);
            continue;
        }
        int number = next.value(name, 2);
        while (used.contains(suffixed(name, number))) {
            ++number;
        }
        next.insert(name, number + 1);
        result.append(suffixed(name, number));
        used.insert(result.last());
    }
    return result;
}

ColIndex NewColumns::append(Dataset *table, const QString &name, const QString &defaultName)
{
    const QString wanted = name.isEmpty() ? defaultName : name;
    const QStringList names = table->columnNames();
    return table->appendColumn(uniqueName(wanted, QSet<QString>(names.begin(), names.end())));
}
