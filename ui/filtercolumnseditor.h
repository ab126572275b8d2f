#pragma once

#include "parametereditor.h"
#include "parametervalues.h"

class ChoiceBox;
class NoticeLabel;
class TermsTable;

/// The terms of a filter, and what becomes of the rows that match.
class FilterColumnsParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit FilterColumnsParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    FilterSpec spec() const;
    void tell();
    void showSpec();

    ChoiceBox *m_keep;
    ChoiceBox *m_match;
    TermsTable *m_terms;
    NoticeLabel *m_summary;
};
