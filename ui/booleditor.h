#pragma once

#include "parametereditor.h"

class WrappingCheckBox;

/// A check box.
class BoolParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit BoolParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;
    bool showsLabel() const override { return true; }

private:
    WrappingCheckBox *m_box;
};
