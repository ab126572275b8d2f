#include "realeditor.h"

#include "numberfields.h"

#include <QVBoxLayout>

RealParameterWidget::RealParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_field(new RealField)
{
    contents()->addWidget(m_field);
    setMainField(m_field);
    connect(m_field, &RealField::edited, this, [this](double number) { choose(number); });
    connect(m_field, &RealField::refused, this, [this] {
        showProblem(tr("Type a number from %1 to %2. %3 stays in force.")
                        .arg(RealField::written(parameter().realMinimum),
                             RealField::written(parameter().realMaximum),
                             RealField::written(value<double>())),
                    m_field);
    });
    connect(m_field, &RealField::accepted, this, [this] { clearProblem(m_field); });
}

void RealParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (take(parameter)) {
        m_field->setRange(parameter.realMinimum, parameter.realMaximum);
        m_field->setValue(value<double>());
    }
}
