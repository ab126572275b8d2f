#include "sheetpicker.h"

#include "backgroundtask.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

SheetPicker::SheetPicker(const QString &path, const QString &present, QWidget *parent)
    : QDialog(parent)
    , m_path(path)
    , m_present(present)
    , m_list(new QListWidget(this))
{
    setWindowTitle(tr("Choose a sheet"));
    auto *layout = new QVBoxLayout(this);
    auto *label = new QLabel(tr("&Sheets of the workbook"), this);
    label->setBuddy(m_list);
    layout->addWidget(label);
    m_list->setAccessibleName(tr("Sheets of the workbook"));
    layout->addWidget(m_list);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    auto *choose = buttons->addButton(tr("Choose"), QDialogButtonBox::AcceptRole);
    choose->setDefault(true);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_list, &QListWidget::itemActivated, this, &QDialog::accept);
}

bool SheetPicker::load()
{
    Messages messages;
    const bool finished = runInBackground(parentWidget(), tr("Reading the sheets..."),
                                          [this, &messages](const Progress &progress) {
                                              m_choices = sheetChoices(m_path, &messages, progress);
                                          });
    if (!finished) {
        return false;
    }
    if (m_choices.isEmpty()) {
        QMessageBox::warning(parentWidget(), windowTitle(),
                             messages.warnings.join(QLatin1Char('\n')));
        return false;
    }
    for (const SheetChoice &choice : qAsConst(m_choices)) {
        auto *item = new QListWidgetItem(choice.label(), m_list);
        if (choice.name == m_present || m_list->count() == 1) {
            m_list->setCurrentItem(item);
        }
    }
    return true;
}

QString SheetPicker::sheet() const
{
    const int row = m_list->currentRow();
    return row >= 0 && row < m_choices.size() ? m_choices.at(row).name : m_present;
}
