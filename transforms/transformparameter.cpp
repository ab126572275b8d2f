#include "transformparameter.h"

#include "columnbinding.h"
#include "messages.h"
#include "parametercodec.h"
#include "parametersummary.h"
#include "parametervalues.h"
#include "upstreamitem.h"

#include <QCoreApplication>
#include <QLocale>
#include <cmath>

namespace {

QVariant emptyValue(ParameterType type)
{
    switch (type) {
    case ParameterType::SingleColumn:
        return QVariant::fromValue(ColumnRef());
    case ParameterType::MultipleColumns:
    case ParameterType::ReorderColumns:
        return QVariant::fromValue(QList<ColumnRef>());
    case ParameterType::SortColumns:
        return QVariant::fromValue(QList<SortKey>());
    case ParameterType::FilterColumns:
        return QVariant::fromValue(FilterSpec());
    case ParameterType::Bool:
        return false;
    case ParameterType::Int:
        return 0;
    case ParameterType::If:
        return QVariant::fromValue(IfSpec());
    case ParameterType::ColumnSet:
        return QVariant::fromValue(ColumnChoice());
    case ParameterType::RenameColumns:
        return QVariant::fromValue(QList<ColumnRename>());
    case ParameterType::SplitRows:
        return QVariant::fromValue(SplitRowsSpec());
    case ParameterType::Unique:
        return QVariant::fromValue(QList<UniqueAction>());
    case ParameterType::ReplaceTerms:
        return QVariant::fromValue(QList<ReplaceTerm>());
    case ParameterType::Real:
        return 0.0;
    case ParameterType::VerifyRules:
        return QVariant::fromValue(QList<VerifyRule>());
    case ParameterType::Selection:
    case ParameterType::Text:
    case ParameterType::Char:
    case ParameterType::Script:
    case ParameterType::LongText:
        break;
    }
    return QString();
}

template <class Value>
QString written(const QVariant &value)
{
    return ParameterCodec::write(value.value<Value>());
}

template <class Value>
bool readInto(const QString &text, QVariant *value)
{
    Value result;
    if (!ParameterCodec::read(text, &result)) {
        return false;
    }
    *value = QVariant::fromValue(result);
    return true;
}

/// A character beyond U+FFFF is two code units.
bool isAtMostOneCharacter(const QString &text)
{
    return text.size() < 2 ||
           (text.size() == 2 && text[0].isHighSurrogate() && text[1].isLowSurrogate());
}

bool readSelection(const QString &text, const QStringList &options, QVariant *value)
{
    if (options.contains(text)) {
        *value = text;
        return true;
    }
    int index = 0;
    if (!ParameterCodec::read(text, 0, options.size() - 1, &index)) {
        return false;
    }
    *value = options[index];
    return true;
}

bool readReal(const QString &text, double minimum, double maximum, QVariant *value)
{
    bool ok = false;
    const double number = text.toDouble(&ok);
    // Written so that NaN is refused too.
    if (!ok || !(number >= minimum && number <= maximum)) {
        return false;
    }
    *value = number;
    return true;
}

template <class List>
bool anyBound(const List &list)
{
    return std::any_of(list.begin(), list.end(),
                       [](const auto &item) { return ColumnBinding::columnOf(item).isBound(); });
}

} // namespace

TransformParameter::TransformParameter(ParameterType parameterType, const QString &parameterLabel,
                                       const QString &parameterKey, const QVariant &defaultValue,
                                       const QVariant &optionList)
    : type(parameterType)
    , label(parameterLabel)
    , key(parameterKey)
    , value(defaultValue.isValid() ? defaultValue : emptyValue(parameterType))
    , options(optionList)
    , noneText(QCoreApplication::translate("TransformParameter", "<None selected>"))
{
}

TransformParameter::TransformParameter(ParameterType parameterType, const QString &parameterLabel,
                                       const QString &parameterKey, const UpstreamItem *upstream)
    : TransformParameter(parameterType, parameterLabel, parameterKey, QVariant())
{
    input = upstream;
}

bool TransformParameter::refersToColumns() const
{
    switch (type) {
    case ParameterType::Bool:
    case ParameterType::Selection:
    case ParameterType::Text:
    case ParameterType::Int:
    case ParameterType::Char:
    case ParameterType::ReplaceTerms:
    case ParameterType::Real:
    case ParameterType::LongText:
        return false;
    default:
        return true;
    }
}

bool TransformParameter::isSet() const
{
    switch (type) {
    case ParameterType::SingleColumn:
        return value.value<ColumnRef>().isBound();
    case ParameterType::MultipleColumns:
        return anyBound(value.value<QList<ColumnRef>>());
    case ParameterType::ColumnSet: {
        const auto choice = value.value<ColumnChoice>();
        return choice.everything || anyBound(choice.checked);
    }
    case ParameterType::SortColumns:
        return anyBound(value.value<QList<SortKey>>());
    case ParameterType::FilterColumns:
        return !value.value<FilterSpec>().terms.isEmpty();
    case ParameterType::If:
        return !value.value<IfSpec>().branches.isEmpty();
    case ParameterType::ReplaceTerms:
        return !value.value<QList<ReplaceTerm>>().isEmpty();
    case ParameterType::VerifyRules:
        return !value.value<QList<VerifyRule>>().isEmpty();
    case ParameterType::Selection:
    case ParameterType::Text:
    case ParameterType::Char:
    case ParameterType::Script:
    case ParameterType::LongText:
        return !value.toString().isEmpty();
    // Nothing chosen here means something: the order, names or actions that there are.
    case ParameterType::ReorderColumns:
    case ParameterType::RenameColumns:
    case ParameterType::SplitRows:
    case ParameterType::Unique:
    case ParameterType::Bool:
    case ParameterType::Int:
    case ParameterType::Real:
        break;
    }
    return true;
}

QString TransformParameter::valueText() const
{
    switch (type) {
    case ParameterType::SingleColumn:
        return written<ColumnRef>(value);
    case ParameterType::MultipleColumns:
    case ParameterType::ReorderColumns:
        return written<QList<ColumnRef>>(value);
    case ParameterType::ColumnSet:
        return written<ColumnChoice>(value);
    case ParameterType::SortColumns:
        return written<QList<SortKey>>(value);
    case ParameterType::FilterColumns:
        return written<FilterSpec>(value);
    case ParameterType::If:
        return written<IfSpec>(value);
    case ParameterType::RenameColumns:
        return written<QList<ColumnRename>>(value);
    case ParameterType::SplitRows:
        return written<SplitRowsSpec>(value);
    case ParameterType::Unique:
        return written<QList<UniqueAction>>(value);
    case ParameterType::ReplaceTerms:
        return written<QList<ReplaceTerm>>(value);
    case ParameterType::VerifyRules:
        return written<QList<VerifyRule>>(value);
    case ParameterType::Bool:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    case ParameterType::Int:
        return QString::number(value.toInt());
    case ParameterType::Real:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case ParameterType::Selection:
        if (storedAsIndex) {
            return QString::number(options.toStringList().indexOf(value.toString()));
        }
        break;
    case ParameterType::Text:
    case ParameterType::Char:
    case ParameterType::Script:
    case ParameterType::LongText:
        break;
    }
    return value.toString();
}

bool TransformParameter::setValueText(const QString &text)
{
    switch (type) {
    case ParameterType::SingleColumn:
        return readInto<ColumnRef>(text, &value);
    case ParameterType::MultipleColumns:
    case ParameterType::ReorderColumns:
        return readInto<QList<ColumnRef>>(text, &value);
    case ParameterType::ColumnSet:
        return readInto<ColumnChoice>(text, &value);
    case ParameterType::SortColumns:
        return readInto<QList<SortKey>>(text, &value);
    case ParameterType::FilterColumns:
        return readInto<FilterSpec>(text, &value);
    case ParameterType::If:
        return readInto<IfSpec>(text, &value);
    case ParameterType::RenameColumns:
        return readInto<QList<ColumnRename>>(text, &value);
    case ParameterType::SplitRows:
        return readInto<SplitRowsSpec>(text, &value);
    case ParameterType::Unique:
        return readInto<QList<UniqueAction>>(text, &value);
    case ParameterType::ReplaceTerms:
        return readInto<QList<ReplaceTerm>>(text, &value);
    case ParameterType::VerifyRules:
        return readInto<QList<VerifyRule>>(text, &value);
    case ParameterType::Bool: {
        int number = 0;
        if (!ParameterCodec::read(text, 0, 1, &number)) {
            return false;
        }
        value = number == 1;
        return true;
    }
    case ParameterType::Int: {
        int number = 0;
        if (!ParameterCodec::read(text, intMinimum, intMaximum, &number)) {
            return false;
        }
        value = number;
        return true;
    }
    case ParameterType::Real:
        return readReal(text, realMinimum, realMaximum, &value);
    case ParameterType::Selection:
        return readSelection(text, options.toStringList(), &value);
    case ParameterType::Char:
        if (!isAtMostOneCharacter(text)) {
            return false;
        }
        break;
    case ParameterType::Text:
    case ParameterType::Script:
    case ParameterType::LongText:
        break;
    }
    value = text;
    return true;
}

bool TransformParameter::isStored() const
{
    return type != ParameterType::ColumnSet || !value.value<ColumnChoice>().everything;
}

QStringList TransformParameter::columnNames() const
{
    return ColumnBinding::names(type, value);
}

void TransformParameter::setColumnNames(const QStringList &names)
{
    ColumnBinding::setNames(type, names, &value);
}

void TransformParameter::resolveColumns(Messages *messages)
{
    if (!input || !input->upstreamColumnsKnown()) {
        return;
    }
    const QStringList columns = input->upstreamColumns();
    if (columns.isEmpty()) {
        return;
    }
    const QStringList gone = ColumnBinding::bind(type, columns, input->upstreamHasHeader(), &value);
    for (const QString &name : gone) {
        messages->warn(
            QCoreApplication::translate("TransformParameter", "Column '%1' not found.").arg(name));
    }
}

QString TransformParameter::summary() const
{
    return parameterSummary(*this);
}
