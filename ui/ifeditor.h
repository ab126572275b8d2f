#pragma once

#include "parametereditor.h"
#include "parametervalues.h"

class QLabel;
class QLineEdit;
class RowsTable;
class TermsTable;

/// The branches of an If in a table, below it the tests of the branch that is current, then the
/// ELSE.
class IfParameterWidget final : public ParameterEditor
{
    Q_OBJECT

public:
    explicit IfParameterWidget(QWidget *parent = nullptr);

    void setParameter(const TransformParameter &parameter) override;

private:
    IfSpec spec() const;
    void tell();
    void showTerms(int row);
    void takeTerms();

    RowsTable *m_branches;
    QLabel *m_termsLabel;
    TermsTable *m_terms;
    QLineEdit *m_else;
};
