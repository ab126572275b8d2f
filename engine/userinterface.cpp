#include "userinterface.h"

#include <QCoreApplication>
#include <QLocale>

QString memoryQuestion(double limitGb, double usedGb)
{
    const QLocale locale;
    return QCoreApplication::translate(
               "UserInterface",
               "You have exceed the maximum process memory set in 'Preferences'.\n\nMaximum memory "
               "usage=%1 GB. Current memory usage=%2 GB.\n\nWould you like to?:")
        .arg(locale.toString(limitGb, 'f', 2), locale.toString(usedGb, 'f', 2));
}
