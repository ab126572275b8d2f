#pragma once

#include "parametereditor.h"

class ChoiceBox;

/// One column, from a list that is searched by typing.
class SingleColumnFilteredParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit SingleColumnFilteredParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    ChoiceBox *m_box;
};
