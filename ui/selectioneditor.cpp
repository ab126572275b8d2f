#include "selectioneditor.h"

#include "choicebox.h"

#include <QVBoxLayout>

SelectionParameterWidget::SelectionParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_box(new ChoiceBox)
{
    contents()->addWidget(m_box);
    setMainField(m_box);
    connect(m_box, QOverload<int>::of(&ChoiceBox::activated), this,
            [this] { choose(m_box->stored()); });
}

void SelectionParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (!take(parameter)) {
        return;
    }
    QVector<Choice> choices;
    const QStringList options = parameter.options.toStringList();
    for (const QString &option : options) {
        choices.append({option, option});
    }
    m_box->setChoices(choices);
    m_box->setStored(value<QString>());
}
