#pragma once

#include "parametereditor.h"

class RealField;

/// A number within bounds, as exact as it is typed.
class RealParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit RealParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    RealField *m_field;
};
