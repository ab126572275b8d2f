#pragma once

#include "dataset.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

/// The columns of a table by what may stand inside a variable.
class ColumnNames
{
public:
    explicit ColumnNames(const Dataset &table);

    /// The column of the variable whose inner text begins at `from`, else -1; `end` is set to where
    /// the text after it begins. Names may hold closing brackets.
    int findAt(const QString &text, int from, int *end) const;
    /// Adds the inner text that begins at `from` to a list, unless it is there.
    static void addUnknown(const QString &text, int from, QStringList *unknown);

private:
    int find(const QString &text) const;

    int m_count;
    int m_longest = 0;
    QHash<QString, int> m_numbers;
};

/// A text with column variables, compiled for one table: `$(2)` stands for the value of the second
/// column of the same row, `$(Name)` for that of the first column of that name. What names no
/// column stays as written. Values put in are not looked through again.
class ColumnTemplate
{
public:
    /// The table must neither change nor be destroyed while the template is used.
    ColumnTemplate(const QString &text, const Dataset &table);

    bool hasVariables() const { return !m_variables.empty(); }
    QString expanded(int row) const;
    /// The same with every value changed before it is put in.
    QString expanded(int row, const std::function<QString(const QString &)> &changed) const;
    /// True when a value to be put in is empty.
    bool hasEmptyValue(int row) const;
    /// What stands in brackets where no column is named, each once.
    QStringList unknownVariables() const { return m_unknown; }

    /// The form written for a column: "$(%1)" with its number, counted from 1.
    static QString variable(ColIndex column);

private:
    struct Variable
    {
        QString textBefore;
        ColumnReader column;
    };

    std::vector<Variable> m_variables;
    QString m_textAfter;
    QStringList m_unknown;
};
