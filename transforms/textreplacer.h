#pragma once

#include "columnvariables.h"
#include "parametervalues.h"
#include "regexreplacement.h"

#include <QRegularExpression>
#include <vector>

struct Messages;

/// One term of a list of replacements, made ready for one table.
class TextReplacer
{
public:
    /// The table must neither change nor be destroyed while this is used.
    TextReplacer(const ReplaceTerm &term, const Dataset &table, bool caseSensitive,
                 Messages *messages);

    /// False for an invalid regular expression, of which the messages tell.
    bool isValid() const { return m_isValid; }
    /// True when the replacement holds values of other columns of the row.
    bool dependsOnRow() const;
    QString replaced(const QString &text, int row);
    /// Notes that the term was never found, and warns of values that the expression gave up on.
    void report(Messages *messages) const;

private:
    QString replacedText(const QString &text, int row);
    QString replacedRegex(const QString &text, int row);
    bool isWholeWord(const QString &text, int at) const;

    ReplaceTerm m_term;
    Qt::CaseSensitivity m_sensitivity;
    QRegularExpression m_regex;
    RegexReplacement m_regexReplacement;
    // The replacement; for a regular expression one for each part.
    std::vector<ColumnTemplate> m_templates;
    bool m_isValid = true;
    bool m_found = false;
    qint64 m_failures = 0;
};
