#include "longtexteditor.h"

#include "exacttext.h"

#include <QPlainTextEdit>
#include <QVBoxLayout>

LongTextParameterWidget::LongTextParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_text(new QPlainTextEdit)
{
    constexpr int linesShown = 6;
    m_text->setTabChangesFocus(true);
    m_text->setFixedHeight(m_text->fontMetrics().lineSpacing() * linesShown + 12);
    contents()->addWidget(m_text);
    setMainField(m_text);
    connect(m_text, &QPlainTextEdit::textChanged, this, [this] {
        if (exactText(*m_text) != value<QString>()) {
            choose(exactText(*m_text));
        }
    });
}

void LongTextParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (take(parameter) && exactText(*m_text) != value<QString>()) {
        const QSignalBlocker blocker(m_text);
        m_text->setPlainText(value<QString>());
    }
}
