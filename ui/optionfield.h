#pragma once

#include <QWidget>

class QLabel;

/// One option in a pane: its label above its editor, and under it what is wrong with it.
class OptionField final : public QWidget
{
    Q_OBJECT

public:
    /// Without a label the editor is expected to carry its own text, as a check box does.
    OptionField(const QString &label, QWidget *editor, QWidget *parent = nullptr);

    QWidget *editor() const { return m_editor; }
    /// A line of explanation.
    void setHint(const QString &hint);
    /// A sentence, marked by a sign and a colour; empty when all is well.
    void setProblem(const QString &problem);
    QString problem() const;

private:
    void describe();

    QWidget *m_editor;
    QLabel *m_hint;
    QLabel *m_problem;
};

/// The widget that gets the focus for an editor made of several.
QWidget *focusWidgetOf(QWidget *editor);
/// Keeps the wheel from changing a box or number that the pointer merely passes over.
void ignoreWheelUnlessFocused(QWidget *widget);
