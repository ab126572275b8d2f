#pragma once

#include "dataset.h"
#include "parametervalues.h"
#include "progress.h"
#include "termtest.h"
#include "verifyrules.h"

#include <QString>
#include <QStringList>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

struct Messages;

/// One run of rules over a table: which rows fail which rules. Failures are listed in the order of
/// the rules, then of the columns, then of the rows; only the first ones are kept as texts.
class Verification
{
public:
    /// The table must neither change nor be destroyed while this is used.
    Verification(const Dataset &table, bool caseSensitive, int mostListed);

    /// False when a regular expression is invalid, of which the messages tell, or when the run was
    /// stopped; the rest then means nothing.
    bool run(const QList<VerifyRule> &rules, const Progress &progress, Messages *messages);

    qint64 failureCount() const { return m_failureCount; }
    /// The first failures.
    const QStringList &listed() const { return m_listed; }
    /// Failures that belong to no row, for outputs that tell all others row by row.
    qint64 generalCount() const { return m_generalCount; }
    const QStringList &generalListed() const { return m_generalListed; }
    bool rowFails(int row) const { return m_stateOfRow[size_t(row)] != 0; }
    /// The texts of the rules that a row fails, joined with "; ".
    const QString &failuresOfRow(int row) const { return m_states[m_stateOfRow[size_t(row)]]; }

private:
    using ValueNumbers = std::vector<quint32>;
    /// Numbers for values; equal numbers are equal values, in lower case when case does not count.
    using Numbering = std::unordered_map<std::string, quint32>;

    bool check(const VerifyRule &rule, VerifyCheck check);
    bool checkColumn(const VerifyRule &rule, VerifyCheck check, ColIndex column);
    bool checkCells(const VerifyRule &rule, VerifyCheck check, ColIndex column);
    bool checkUnique(ColIndex column);
    bool checkOrder(ColIndex column, bool ascending);
    bool checkConstant(ColIndex column);
    bool checkSame(ColIndex column, const QString &otherName);
    bool checkTable(const VerifyRule &rule, VerifyCheck check);
    bool checkDuplicateRows();
    void checkDuplicateNames();
    void checkAmount(int amount, const QString &value, VerifyCheck check);

    bool numberValues(ColIndex column, Numbering *numbering, ValueNumbers *numbers);
    ColIndex columnNamed(const QString &name) const;
    void fail(int row, const QString &column, std::string_view cell);
    void failGenerally(const QString &column, const QString &value);
    bool report(int row);

    const Dataset &m_table;
    bool m_caseSensitive;
    int m_mostListed;
    QStringList m_names;
    ColumnDateFormats m_dateFormats;
    Progress m_progress;
    Messages *m_messages = nullptr;
    double m_done = 0;  // fraction before the pass over the rows that runs
    double m_share = 0; // fraction of that pass
    QString m_ruleText;
    quint32 m_rule = 0;
    QRegularExpression m_regex;

    qint64 m_failureCount = 0;
    qint64 m_generalCount = 0;
    QStringList m_listed;
    QStringList m_generalListed;
    // A state is a set of failed rules. Rows share them, so that each text exists once.
    std::vector<QString> m_states{QString()};
    std::vector<quint32> m_lastRule{0};
    std::map<std::pair<quint32, quint32>, quint32> m_next;
    std::vector<quint32> m_stateOfRow;
};
