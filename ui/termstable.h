#pragma once

#include "parametercolumns.h"
#include "parametervalues.h"

#include <QWidget>

class QToolButton;
class RowsTable;

/// The terms of a filter or of a branch in a table: column, operator and value.
class TermsTable final : public QWidget
{
    Q_OBJECT

public:
    explicit TermsTable(const QString &name, QWidget *parent = nullptr);

    void setColumns(const ParameterColumns &columns);
    void setTerms(const QList<FilterTerm> &terms);
    QList<FilterTerm> terms() const;
    RowsTable *table() const { return m_table; }
    /// What a user should know of the terms: columns that are gone, invalid regular expressions.
    QString problem() const;

    void copy() const;
    /// Adds the terms of the clipboard; false when it has none.
    bool paste();

Q_SIGNALS:
    /// By the user.
    void edited();
    /// The explanation of what can be pasted.
    void helpWanted(const QString &help);

private:
    void setFields();

    ParameterColumns m_columns;
    RowsTable *m_table;
    QToolButton *m_copy;
};
