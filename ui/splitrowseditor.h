#pragma once

#include "parametereditor.h"

class ChoiceBox;
class IntField;

/// How the columns of a row are cut into parts.
class SplitRowsParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit SplitRowsParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    void tell();
    void showFirst();

    ChoiceBox *m_mode;
    QWidget *m_fixed;
    ChoiceBox *m_first;
    IntField *m_width;
    IntField *m_times;
};
