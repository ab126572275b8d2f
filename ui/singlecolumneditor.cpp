#include "singlecolumneditor.h"

#include "choicebox.h"
#include "parametersummary.h"

#include <QVBoxLayout>

SingleColumnFilteredParameterWidget::SingleColumnFilteredParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_box(new ChoiceBox)
{
    contents()->addWidget(m_box);
    setMainField(m_box);
    connect(m_box, QOverload<int>::of(&ChoiceBox::activated), this, [this] {
        const QString key = m_box->stored();
        choose(QVariant::fromValue(key.isEmpty() ? ColumnRef() : columns().fromKey(key)));
    });
}

void SingleColumnFilteredParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (!take(parameter)) {
        return;
    }
    const auto column = value<ColumnRef>();
    const bool isNone = column.number < 0 && column.name.isEmpty();
    m_box->setChoices(QVector<Choice>{{QString(), parameter.noneText}} +
                      columns().choices({column}));
    m_box->setStored(isNone ? QString() : columns().key(column));
    if (columns().isMissing(column)) {
        showProblem(ParameterColumns::notFoundText(nameOf(column)), m_box);
    }
    showNotice(columns().isKnown() ? QString() : ParameterColumns::unknownText(), false);
}
