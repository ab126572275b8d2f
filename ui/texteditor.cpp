#include "texteditor.h"

#include <QLineEdit>
#include <QVBoxLayout>

TextParameterWidget::TextParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_line(new QLineEdit)
{
    contents()->addWidget(m_line);
    setMainField(m_line);
    connect(m_line, &QLineEdit::textEdited, this, &TextParameterWidget::choose);
    connect(m_line, &QLineEdit::textChanged, this,
            [this](const QString &text) { showNotice(blanksText(text), false); });
}

void TextParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (take(parameter) && m_line->text() != value<QString>()) {
        m_line->setText(value<QString>());
    }
}
