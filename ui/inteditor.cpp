#include "inteditor.h"

#include "numberfields.h"
#include "texts.h"

#include <QVBoxLayout>

IntParameterWidget::IntParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_field(new IntField)
{
    contents()->addWidget(m_field);
    setMainField(m_field);
    connect(m_field, QOverload<int>::of(&IntField::valueChanged), this,
            [this](int number) { choose(number); });
    connect(m_field, &IntField::refused, this, [this] {
        showProblem(tr("Type a whole number from %1 to %2. %3 stays in force.")
                        .arg(Texts::count(parameter().intMinimum),
                             Texts::count(parameter().intMaximum), Texts::count(value<int>())),
                    m_field);
    });
    connect(m_field, &IntField::accepted, this, [this] { clearProblem(m_field); });
}

void IntParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (!take(parameter)) {
        return;
    }
    const QSignalBlocker blocker(m_field);
    m_field->setRange(parameter.intMinimum, parameter.intMaximum);
    m_field->setSuffix(parameter.suffix);
    m_field->setValue(value<int>());
}
