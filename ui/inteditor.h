#pragma once

#include "parametereditor.h"

class IntField;

/// A whole number within bounds.
class IntParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit IntParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    IntField *m_field;
};
