#pragma once

#include "spreadsheetinput.h"

#include <QDialog>
#include <QList>

class QListWidget;

/// Lets the user choose a sheet of a workbook; each is shown with its size.
class SheetPicker final : public QDialog
{
    Q_OBJECT

public:
    SheetPicker(const QString &path, const QString &present, QWidget *parent = nullptr);

    /// Reads the workbook; false when there is nothing to choose, of which the user has been told,
    /// or when the user cancelled.
    bool load();
    QString sheet() const;

private:
    QString m_path;
    QString m_present;
    QList<SheetChoice> m_choices;
    QListWidget *m_list;
};
