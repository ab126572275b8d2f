#pragma once

#include "parametereditor.h"

class ChoiceBox;
class QLineEdit;
class RowsTable;

/// What becomes of each column when rows become one, in a table of all columns.
class UniqueParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit UniqueParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    void tell();
    void setAction();

    QLineEdit *m_search;
    RowsTable *m_table;
    ChoiceBox *m_action;
};
