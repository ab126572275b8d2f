#pragma once

#include "parametereditor.h"

class QLineEdit;
class RowsTable;

/// New names of columns, in a table of all columns.
class RenameColumnsParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit RenameColumnsParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    void tell();
    void keepOldNames(bool ofAll);

    QLineEdit *m_search;
    RowsTable *m_table;
};
