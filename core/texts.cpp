#include "texts.h"

#include <QCoreApplication>
#include <QLocale>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("Texts", text);
}

QString countAndWord(const char *text, qint64 number, const QString &word)
{
    return number == 0 ? Texts::noChanges() : translated(text).arg(Texts::count(number), word);
}

} // namespace

namespace Texts {

QString productName()
{
    return QStringLiteral("Tabweave");
}

QString productVersion()
{
    return QStringLiteral(TABWEAVE_VERSION);
}

QString count(qint64 number)
{
    return QLocale().toString(number);
}

QString rows(qint64 number)
{
    return number == 1 ? translated("row") : translated("rows");
}

QString columns(qint64 number)
{
    return number == 1 ? translated("column") : translated("columns");
}

QString size(int columns, int rows)
{
    return translated("%1 %2 x %3 %4")
        .arg(count(columns), translated("cols"), count(rows), translated("rows"));
}

QString elapsed(qint64 milliseconds)
{
    const QLocale locale;
    if (milliseconds <= 0) {
        return translated("<%1 second(s)").arg(locale.toString(0.001, 'g', 6));
    }
    return translated("%1 second(s)").arg(locale.toString(double(milliseconds) / 1000.0, 'g', 6));
}

QString changed(qint64 changedCells, qint64 unchangedCells)
{
    if (changedCells == 0) {
        return noChanges();
    }
    return translated("%1 changed, %2 unchanged").arg(count(changedCells), count(unchangedCells));
}

QString noChanges()
{
    return translated("No changes");
}

QString rowsRemoved(qint64 number)
{
    return countAndWord(QT_TRANSLATE_NOOP("Texts", "%1 %2 removed"), number, rows(number));
}

QString rowsAdded(qint64 number)
{
    return countAndWord(QT_TRANSLATE_NOOP("Texts", "%1 %2 added"), number, rows(number));
}

QString columnsRemoved(qint64 number)
{
    return countAndWord(QT_TRANSLATE_NOOP("Texts", "%1 %2 removed"), number, columns(number));
}

QString columnsAdded(qint64 number)
{
    return countAndWord(QT_TRANSLATE_NOOP("Texts", "%1 %2 added"), number, columns(number));
}

QString yesNo(bool value)
{
    return value ? translated("Yes") : translated("No");
}

} // namespace Texts
