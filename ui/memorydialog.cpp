#include "memorydialog.h"

#include "userinterface.h"

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>

MemoryDialog::MemoryDialog(double limitGb, double usedGb, QWidget *parent)
    : QDialog(parent)
    , m_increaseMemoryRadioButton(new QRadioButton(
          tr("Increase the maximum memory to this amount in 'Preferences' and try to continue."),
          this))
    , m_gbMemorySpinBox(new QDoubleSpinBox(this))
    , m_exitNowRadioButton(new QRadioButton(tr("Exit now"), this))
{
    setWindowTitle(tr("Insufficient Memory"));
    setModal(true);

    auto *const text = new QLabel(memoryQuestion(limitGb, usedGb), this);
    text->setWordWrap(true);
    m_increaseMemoryRadioButton->setChecked(true);
    m_exitNowRadioButton->setToolTip(
        tr("Exit Tabweave immediately. Any unsaved changes will be lost."));
    auto *const label = new QLabel(tr("Increase maximum memory usage to:"), this);
    label->setBuddy(m_gbMemorySpinBox);
    constexpr double most = 1e6;
    constexpr double headroom = 1.5;
    m_gbMemorySpinBox->setDecimals(2);
    m_gbMemorySpinBox->setRange(usedGb, most);
    m_gbMemorySpinBox->setSuffix(tr(" GB"));
    m_gbMemorySpinBox->setValue(usedGb * headroom);
    m_gbMemorySpinBox->setAccessibleName(label->text());
    auto *const exitHint =
        new QLabel(tr("Exit Tabweave immediately. Any unsaved changes will be lost."), this);
    exitHint->setWordWrap(true);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);

    auto *const amount = new QHBoxLayout;
    amount->addSpacing(24);
    amount->addWidget(label);
    amount->addWidget(m_gbMemorySpinBox);
    amount->addStretch();
    auto *const hint = new QHBoxLayout;
    hint->addSpacing(24);
    hint->addWidget(exitHint);
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(text);
    layout->addWidget(m_increaseMemoryRadioButton);
    layout->addLayout(amount);
    layout->addWidget(m_exitNowRadioButton);
    layout->addLayout(hint);
    layout->addWidget(buttons);

    connect(m_increaseMemoryRadioButton, &QRadioButton::toggled, m_gbMemorySpinBox,
            &QWidget::setEnabled);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
}

std::optional<double> MemoryDialog::newLimitGb() const
{
    if (result() != QDialog::Accepted || m_exitNowRadioButton->isChecked()) {
        return {};
    }
    return m_gbMemorySpinBox->value();
}
