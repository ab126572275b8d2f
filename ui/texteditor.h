#pragma once

#include "parametereditor.h"

class QLineEdit;

/// A line of text. Says so when it is all blanks, which nobody can see.
class TextParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit TextParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    QLineEdit *m_line;
};
