#pragma once

#include "parametereditor.h"

class ColumnList;
class NoticeLabel;
class QLineEdit;

/// Columns to be checked in a searched list. Edits options of the types MultipleColumns and
/// ColumnSet; in the latter a column that came later is neither checked nor unchecked.
class MultipleColumnsParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit MultipleColumnsParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    void fill();
    void tell();
    ColumnChoice seenChoice(const QList<ColumnRef> &checked, const QStringList &seen) const;
    void checkShown(Qt::CheckState state);
    void showCount();

    QLineEdit *m_search;
    ColumnList *m_list;
    NoticeLabel *m_count;
};
