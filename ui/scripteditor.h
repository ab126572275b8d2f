#pragma once

#include "parametereditor.h"

class ChoiceBox;
class ScriptEdit;

/// A script, with line numbers and a list of columns to insert.
class ScriptParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit ScriptParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    void insertColumn();

    ScriptEdit *m_text;
    ChoiceBox *m_columns;
};
