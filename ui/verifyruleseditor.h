#pragma once

#include "parametereditor.h"

class RowsTable;

/// The rules that a table has to follow.
class VerifyRulesParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit VerifyRulesParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    void tell();

    RowsTable *m_table;
};
