#include "scripteditor.h"

#include "choicebox.h"
#include "columnvariables.h"
#include "exacttext.h"
#include "scriptedit.h"

#include <QVBoxLayout>

ScriptParameterWidget::ScriptParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_text(new ScriptEdit)
    , m_columns(new ChoiceBox)
{
    constexpr int linesShown = 10;
    m_text->setFixedHeight(m_text->fontMetrics().lineSpacing() * linesShown + 12);
    contents()->addWidget(m_text);
    contents()->addWidget(m_columns);
    setMainField(m_text);
    m_columns->setAccessibleName(tr("Insert column"));
    showNotice(tr("Ctrl+Tab leaves the script, Tab indents."), false);
    connect(m_text, &ScriptEdit::textChanged, this, [this] {
        if (exactText(*m_text) != value<QString>()) {
            choose(exactText(*m_text));
        }
    });
    connect(m_columns, QOverload<int>::of(&ChoiceBox::activated), this,
            &ScriptParameterWidget::insertColumn);
}

void ScriptParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (!take(parameter)) {
        return;
    }
    QVector<Choice> choices{{QString(), tr("Insert column")}};
    for (int i = 0; i < columns().count(); ++i) {
        choices.append(
            {ColumnTemplate::variable(ColIndex(i)), columns().names()[i], {}, columns().hint(i)});
    }
    m_columns->setChoices(choices);
    m_columns->setStored({});
    m_columns->setVisible(columns().isKnown());
    if (exactText(*m_text) != value<QString>()) {
        const QSignalBlocker blocker(m_text);
        m_text->setPlainText(value<QString>());
    }
}

void ScriptParameterWidget::insertColumn()
{
    m_text->insertPlainText(m_columns->stored());
    m_columns->setStored({});
    m_text->setFocus();
}
