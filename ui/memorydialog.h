#pragma once

#include <QDialog>
#include <optional>

class QDoubleSpinBox;
class QRadioButton;

/// "Insufficient Memory": raise the limit and go on, or exit. Figures in units of 2^30 bytes.
class MemoryDialog final : public QDialog
{
    Q_OBJECT

public:
    MemoryDialog(double limitGb, double usedGb, QWidget *parent);

    /// Nothing: exit. Also when the dialog was closed without an answer.
    std::optional<double> newLimitGb() const;

private:
    QRadioButton *m_increaseMemoryRadioButton;
    QDoubleSpinBox *m_gbMemorySpinBox;
    QRadioButton *m_exitNowRadioButton;
};
