#pragma once

#include "parametereditor.h"

class RowsTable;

/// Texts and what takes their place.
class ReplaceTermsParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit ReplaceTermsParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    void tell();

    RowsTable *m_table;
};
