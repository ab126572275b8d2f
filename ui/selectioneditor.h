#pragma once

#include "parametereditor.h"

class ChoiceBox;

/// A list of texts of which one is chosen.
class SelectionParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit SelectionParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    ChoiceBox *m_box;
};
