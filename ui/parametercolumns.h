#pragma once

#include "choicebox.h"
#include "parametervalues.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

class UpstreamItem;

/// The columns that an option can refer to, as they are now, and how the user sees them. Hints tell
/// the kind of a column and its first value.
class ParameterColumns
{
public:
    ParameterColumns() = default;
    /// Null: there is no input. The item is not used after this.
    explicit ParameterColumns(const UpstreamItem *input);

    /// True when these are the columns of the input as it is now, so that they need not be read
    /// again.
    bool areOf(const UpstreamItem *input) const;
    /// False while there is no input or its columns are not known.
    bool isKnown() const { return !m_names.isEmpty(); }
    int count() const { return m_names.size(); }
    const QStringList &names() const { return m_names; }
    QString hint(int number) const { return m_hints.value(number); }
    ColumnRef column(int number) const;
    /// The number of the column that is meant; -1 when it is gone, or for none.
    int find(const ColumnRef &column) const;
    /// The reference as it would be bound to these columns.
    ColumnRef bound(ColumnRef column) const;
    /// True for a reference to a column that is not there.
    bool isMissing(const ColumnRef &column) const;

    /// The name, with "(not found)" after that of a column that is gone.
    QString shownName(const ColumnRef &column) const;
    QString shownName(const QString &name) const;

    /// A text that stands for the column in lists of choices, and the column again.
    QString key(const ColumnRef &column) const;
    ColumnRef fromKey(const QString &key) const;

    /// All columns to choose from, stored by their keys; those in use that are gone come last.
    QVector<Choice> choices(const QList<ColumnRef> &used) const;
    /// The same stored by their names, after "<Any>", which is stored as an empty text.
    QVector<Choice> choicesByName(const QStringList &used) const;

    static QString notFoundText(const QString &name);
    /// Says why there are no columns to choose from.
    static QString unknownText();

    friend bool operator==(const ParameterColumns &a, const ParameterColumns &b)
    {
        return a.m_names == b.m_names && a.m_hasHeader == b.m_hasHeader && a.m_hints == b.m_hints;
    }

private:
    Choice missingChoice(const QString &stored, const QString &name) const;

    const UpstreamItem *m_input = nullptr; // only to be compared
    QDateTime m_processed;
    QStringList m_names;
    QStringList m_hints;
    bool m_hasHeader = false;
};
