#pragma once

#include "columnvariables.h"
#include "comparison.h"
#include "dataset.h"
#include "parametervalues.h"

#include <QStringList>
#include <map>
#include <memory>
#include <vector>

struct Messages;

/// The date pattern of each column of one table, found when first asked for.
class ColumnDateFormats
{
public:
    /// The table must neither change nor be destroyed while this is used.
    ColumnDateFormats(const Dataset &table, const QStringList &patterns);

    /// Empty when no pattern reads any of the column's values.
    QString of(ColIndex column);
    /// True when one of the patterns reads the text.
    bool anyReads(const QString &text) const;

private:
    const Dataset &m_table;
    QStringList m_patterns;
    std::map<int, QString> m_found;
};

/// One test of the rows of a table: a term of a filter or of an IF. All that does not depend on the
/// row is done once, and verdicts on repeated values of a column are remembered.
class TermTest
{
public:
    /// The table must neither change nor be destroyed while the test is used.
    TermTest(const FilterTerm &term, const Dataset &table, ColumnDateFormats *dateFormats,
             bool caseSensitive);
    TermTest(const TermTest &) = delete;
    TermTest(TermTest &&) = default;

    /// True as soon as one of the term's columns passes; never when it has no columns.
    bool holds(int row);

    /// Adds what the user ought to know about the regular expression of the term.
    void report(Messages *messages) const;

private:
    enum Verdict : quint8 { Unknown, No, Yes };

    struct Column
    {
        ColumnReader cells;
        CellTest *test = nullptr;      // shared by the columns of one date pattern
        std::vector<Verdict> verdicts; // by code; empty: not remembered
    };

    static bool columnHolds(Column *column, int row);
    void expandValue(int row);

    FilterTerm m_term;
    ColumnTemplate m_template;
    QString m_value;
    std::map<QString, CellTest> m_tests;
    std::vector<Column> m_columns;
};
