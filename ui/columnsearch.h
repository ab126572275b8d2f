#pragma once

#include <QCoreApplication>
#include <QLineEdit>

/// The field above a list of columns that narrows it down.
inline QLineEdit *makeColumnSearch()
{
    auto *const search = new QLineEdit;
    const QString text = QCoreApplication::translate("ColumnSearch", "Search columns");
    search->setPlaceholderText(text);
    search->setAccessibleName(text);
    search->setClearButtonEnabled(true);
    return search;
}
