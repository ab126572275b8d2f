#pragma once

#include "parametereditor.h"

class QLineEdit;

/// A single character, or none.
class CharParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit CharParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    void accept(const QString &text);

    QLineEdit *m_line;
};
