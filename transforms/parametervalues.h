#pragma once

#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>

/// The C++ types of the values of TransformParameter, by parameter type:
///
///     SingleColumn    ColumnRef             Bool                        bool
///     MultipleColumns QList<ColumnRef>      Int                         int
///     ReorderColumns  QList<ColumnRef>      Real                        double
///     ColumnSet       ColumnChoice          Text, LongText, Script      QString
///     SortColumns     QList<SortKey>        Char                        QString
///     FilterColumns   FilterSpec            Selection                   QString (the option)
///     If              IfSpec                ReplaceTerms                QList<ReplaceTerm>
///     RenameColumns   QList<ColumnRename>   VerifyRules                 QList<VerifyRule>
///     SplitRows       SplitRowsSpec         Unique                      QList<UniqueAction>

/// A column of an upstream table: its number, and its name once a header has been seen. The name
/// decides; the number holds while the name is empty and for tables without a header. A reference
/// whose column is gone stands for no column, but comes back with it.
struct ColumnRef
{
    ColumnRef() = default;
    explicit ColumnRef(int columnNumber, const QString &columnName = {})
        : number(columnNumber)
        , name(columnName)
    {
    }

    /// True when it stands for a column.
    bool isBound() const { return number >= 0 && !missing; }

    int number = -1; ///< counted from 0
    QString name;
    /// The input lacks the column; found out by TransformParameter::resolveColumns().
    bool missing = false;

    friend bool operator==(const ColumnRef &a, const ColumnRef &b)
    {
        return a.number == b.number && a.name == b.name;
    }
};

/// Columns ticked in a list that starts with all columns ticked.
struct ColumnChoice
{
    /// True until the columns are known for the first time: whatever there will be.
    bool everything = true;
    QList<ColumnRef> checked;
    /// The names of all columns that there were to choose from, each at its column's number; empty
    /// for a column that came later, which tells it from one that is unchecked.
    QStringList seen;

    friend bool operator==(const ColumnChoice &a, const ColumnChoice &b)
    {
        return a.everything == b.everything && a.checked == b.checked && a.seen == b.seen;
    }
};

struct SortKey
{
    ColumnRef column;
    bool ascending = true;

    friend bool operator==(const SortKey &a, const SortKey &b)
    {
        return a.column == b.column && a.ascending == b.ascending;
    }
};

/// The tests of a cell. The numbers are stored in documents.
enum class ComparisonOperator : qint32 {
    Contains = 0,
    Equal = 1,
    StartsWith = 2,
    EndsWith = 3,
    Greater = 4,
    Less = 5,
    GreaterEqual = 6,
    LessEqual = 7,
    MatchesRegex = 8,
    NotContains = 9,
    NotEqual = 10,
    NotStartsWith = 11,
    NotEndsWith = 12,
    NotMatchesRegex = 13,
    Fuzzy90 = 14,
    Fuzzy80 = 15,
    Fuzzy70 = 16,
    Fuzzy60 = 17,
    Fuzzy50 = 18,
    IsEmpty = 19,
    IsNotEmpty = 20
};

struct FilterTerm
{
    /// Empty: any column.
    QString column;
    ComparisonOperator op = ComparisonOperator::Contains;
    /// As typed; may hold column variables.
    QString value;

    friend bool operator==(const FilterTerm &a, const FilterTerm &b)
    {
        return a.column == b.column && a.op == b.op && a.value == b.value;
    }
};

struct FilterSpec
{
    bool keep = true;
    bool matchAll = true;
    QList<FilterTerm> terms;

    friend bool operator==(const FilterSpec &a, const FilterSpec &b)
    {
        return a.keep == b.keep && a.matchAll == b.matchAll && a.terms == b.terms;
    }
};

/// One IF or ELSE IF: all terms must hold for its value to be taken.
struct IfBranch
{
    QList<FilterTerm> terms;
    QString thenValue;

    friend bool operator==(const IfBranch &a, const IfBranch &b)
    {
        return a.terms == b.terms && a.thenValue == b.thenValue;
    }
};

struct IfSpec
{
    QList<IfBranch> branches;
    QString elseValue;

    friend bool operator==(const IfSpec &a, const IfSpec &b)
    {
        return a.branches == b.branches && a.elseValue == b.elseValue;
    }
};

/// A column and its new name, which may be empty. There is one for every column known.
struct ColumnRename
{
    ColumnRef column;
    bool renamed = false;
    QString newName;

    friend bool operator==(const ColumnRename &a, const ColumnRename &b)
    {
        return a.column == b.column && a.renamed == b.renamed && a.newName == b.newName;
    }
};

struct SplitRowsSpec
{
    enum class Mode : qint32 { Fixed, Automatic, Matching };

    Mode mode = Mode::Fixed;
    ColumnRef first;
    /// 0: all columns.
    int width = 0;
    int times = 1;

    friend bool operator==(const SplitRowsSpec &a, const SplitRowsSpec &b)
    {
        return a.mode == b.mode && a.first == b.first && a.width == b.width && a.times == b.times;
    }
};

struct UniqueAction
{
    ColumnRef column;
    QString action;

    friend bool operator==(const UniqueAction &a, const UniqueAction &b)
    {
        return a.column == b.column && a.action == b.action;
    }
};

struct ReplaceTerm
{
    enum class Kind : qint32 { Text, Word, Cell, Regex };

    QString find;
    QString replace;
    Kind kind = Kind::Text;

    friend bool operator==(const ReplaceTerm &a, const ReplaceTerm &b)
    {
        return a.find == b.find && a.replace == b.replace && a.kind == b.kind;
    }
};

struct VerifyRule
{
    /// Empty: any column.
    QString column;
    int rule = 0;
    QString value;

    friend bool operator==(const VerifyRule &a, const VerifyRule &b)
    {
        return a.column == b.column && a.rule == b.rule && a.value == b.value;
    }
};

Q_DECLARE_METATYPE(ColumnRef)
Q_DECLARE_METATYPE(ColumnChoice)
Q_DECLARE_METATYPE(SortKey)
Q_DECLARE_METATYPE(FilterTerm)
Q_DECLARE_METATYPE(FilterSpec)
Q_DECLARE_METATYPE(IfSpec)
Q_DECLARE_METATYPE(ColumnRename)
Q_DECLARE_METATYPE(SplitRowsSpec)
Q_DECLARE_METATYPE(UniqueAction)
Q_DECLARE_METATYPE(ReplaceTerm)
Q_DECLARE_METATYPE(VerifyRule)
