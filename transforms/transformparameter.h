#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

class UpstreamItem;
struct Messages;

/// The kinds of option that a transform can have. The numbers are stored in documents.
enum class ParameterType : qint32 {
    SingleColumn = 0,
    MultipleColumns = 1,
    SortColumns = 2,
    FilterColumns = 3,
    ReorderColumns = 4,
    Bool = 5,
    Selection = 6,
    Text = 7,
    Int = 8,
    Char = 9,
    If = 10,
    ColumnSet = 11,
    Script = 12,
    RenameColumns = 13,
    SplitRows = 14,
    Unique = 15,
    ReplaceTerms = 16,
    Real = 17,
    LongText = 18,
    VerifyRules = 19
};

constexpr bool isParameterType(int number)
{
    return number >= int(ParameterType::SingleColumn) && number <= int(ParameterType::VerifyRules);
}

/// One option of a transform: how it is labelled, edited and stored, and its current value. A plain
/// record, copied field by field when a transform is cloned. Option editors, document and batch
/// work from these records alone; a transform reads its own through TransformOption.
struct TransformParameter
{
    /// A null default value stands for the type's empty value.
    TransformParameter(ParameterType parameterType, const QString &parameterLabel,
                       const QString &parameterKey, const QVariant &defaultValue,
                       const QVariant &optionList = {});
    /// For column options: the value starts as the type's empty value (ColumnSet: all columns).
    TransformParameter(ParameterType parameterType, const QString &parameterLabel,
                       const QString &parameterKey, const UpstreamItem *upstream);

    ParameterType type;
    QString label;
    QString key;
    /// The C++ type of the value depends on `type`; see parametervalues.h.
    QVariant value;
    /// The choices of a Selection (QStringList).
    QVariant options;
    qint32 intMinimum = 0;
    qint32 intMaximum = 999999999;
    double realMinimum = 0.0;
    double realMaximum = 100.0;
    QString suffix;
    /// The item whose columns a column option refers to; not owned.
    const UpstreamItem *input = nullptr;
    QString help;
    QString noneText;
    /// A Selection that documents hold as the number of its option, not as the option's text.
    bool storedAsIndex = false;

    /// True for the types that hold column references, which follow the upstream columns.
    bool refersToColumns() const;
    /// False when nothing is chosen or typed in.
    bool isSet() const;

    /// The value as documents store it, before percent-encoding as a whole.
    QString valueText() const;
    /// Reads what valueText() gives; a text that does not fit the type or the bounds leaves the
    /// value alone and answers false.
    bool setValueText(const QString &text);
    /// False for a value that documents leave out, because it is to start anew from the columns.
    bool isStored() const;

    /// For column types: the names that the stored numbers stand for, in stored order (ColumnSet:
    /// the names of all columns seen). Empty when unknown.
    QStringList columnNames() const;
    /// Set after setValueText(): the names take precedence over the numbers.
    void setColumnNames(const QStringList &names);
    /// Binds the references to the input's present columns: by name, by number without a header or
    /// before a name is known. A reference whose name is gone is as good as none from then on, with
    /// the warning "Column '%1' not found.". Nothing happens while the input's columns are not
    /// known.
    void resolveColumns(Messages *messages);

    /// The value in short words, for the text under an item; empty when there is nothing to say.
    QString summary() const;
};
