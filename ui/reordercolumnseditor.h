#pragma once

#include "parametereditor.h"

class ColumnList;
class QToolButton;

/// The columns in an order that is changed by dragging or with buttons.
class ReorderColumnsParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit ReorderColumnsParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    void fill();
    void tell();
    void move(int by);
    void enableButtons();

    ColumnList *m_list;
    QToolButton *m_up;
    QToolButton *m_down;
    QToolButton *m_top;
    QToolButton *m_bottom;
    QToolButton *m_reset;
};
