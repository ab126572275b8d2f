#pragma once

#include "parametereditor.h"

class QPlainTextEdit;

/// A text of several lines.
class LongTextParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit LongTextParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    QPlainTextEdit *m_text;
};
