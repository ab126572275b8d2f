#include "chareditor.h"

#include <QLineEdit>
#include <QVBoxLayout>

CharParameterWidget::CharParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_line(new QLineEdit)
{
    contents()->addWidget(m_line);
    setMainField(m_line);
    connect(m_line, &QLineEdit::textEdited, this, &CharParameterWidget::accept);
    connect(m_line, &QLineEdit::textChanged, this,
            [this](const QString &text) { showNotice(blanksText(text), false); });
}

void CharParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (take(parameter) && m_line->text() != value<QString>()) {
        m_line->setText(value<QString>());
    }
}

void CharParameterWidget::accept(const QString &text)
{
    TransformParameter tried = parameter();
    if (tried.setValueText(text)) {
        choose(text);
    } else {
        showProblem(
            tr("Only one character can be used here. '%1' stays in force.").arg(value<QString>()),
            m_line);
    }
}
