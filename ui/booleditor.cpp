#include "booleditor.h"

#include "wrappingcheckbox.h"

#include <QVBoxLayout>

BoolParameterWidget::BoolParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_box(new WrappingCheckBox)
{
    contents()->addWidget(m_box);
    setMainField(m_box);
    connect(m_box, &QCheckBox::clicked, this, [this](bool isChecked) { choose(isChecked); });
}

void BoolParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (take(parameter)) {
        m_box->setWrappedText(parameter.label);
        m_box->setToolTip(parameter.help);
        m_box->setChecked(value<bool>());
    }
}
