#pragma once

#include "parametereditor.h"

class NoticeLabel;
class RowsTable;

/// The levels of a sort: a column and a direction each.
class SortColumnsParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit SortColumnsParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    void takeRows();
    void showRows();

    NoticeLabel *m_empty;
    RowsTable *m_table;
};
