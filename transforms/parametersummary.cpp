#include "parametersummary.h"

#include "parametervalues.h"
#include "texts.h"
#include "transformparameter.h"

#include <QCoreApplication>
#include <QLocale>
#include <algorithm>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("TransformParameter", text);
}

template <class List>
QString counted(const char *text, const List &list)
{
    return translated(text).arg(Texts::count(list.size()));
}

QString uniqueSummary(const QList<UniqueAction> &actions)
{
    const auto keys = std::count_if(actions.begin(), actions.end(), [](const UniqueAction &a) {
        return a.action == QLatin1String("Unique");
    });
    return translated("%1 unique column(s)").arg(Texts::count(keys));
}

QString renameSummary(const QList<ColumnRename> &renames)
{
    const auto renamed = std::count_if(renames.begin(), renames.end(),
                                       [](const ColumnRename &rename) { return rename.renamed; });
    return translated("%1 column(s) renamed").arg(Texts::count(renamed));
}

QString splitRowsSummary(const SplitRowsSpec &spec)
{
    switch (spec.mode) {
    case SplitRowsSpec::Mode::Automatic:
        return translated("Automatically by column names");
    case SplitRowsSpec::Mode::Matching:
        return translated("By matching column names");
    case SplitRowsSpec::Mode::Fixed:
        break;
    }
    const QString width = spec.width == 0 ? translated("(all)") : Texts::count(spec.width);
    if (spec.times == 1) {
        return translated("every %1 column(s), %2").arg(width, translated("1 time"));
    }
    return translated("every %2 column(s), %1 times").arg(Texts::count(spec.times), width);
}

} // namespace

QString nameOf(const ColumnRef &column)
{
    return column.name.isEmpty()
               ? QCoreApplication::translate("Dataset", "Column %1").arg(column.number + 1)
               : column.name;
}

QString shownSeparator(const QString &text)
{
    if (text == QLatin1String(" ")) {
        return translated("<Space>");
    }
    return text == QLatin1String("\t") ? translated("<Tab>") : text;
}

QString parameterSummary(const TransformParameter &parameter)
{
    constexpr const char *columns = QT_TRANSLATE_NOOP("TransformParameter", "%1 column(s)");
    constexpr const char *terms = QT_TRANSLATE_NOOP("TransformParameter", "%1 term(s)");
    const QVariant &value = parameter.value;
    switch (parameter.type) {
    case ParameterType::SingleColumn: {
        const auto column = value.value<ColumnRef>();
        return column.isBound() ? nameOf(column) : QString();
    }
    case ParameterType::MultipleColumns:
    case ParameterType::ReorderColumns:
        return counted(columns, value.value<QList<ColumnRef>>());
    case ParameterType::ColumnSet:
        return counted(columns, value.value<ColumnChoice>().checked);
    case ParameterType::SortColumns:
        return counted(columns, value.value<QList<SortKey>>());
    case ParameterType::FilterColumns:
        return counted(terms, value.value<FilterSpec>().terms);
    case ParameterType::ReplaceTerms:
        return counted(terms, value.value<QList<ReplaceTerm>>());
    case ParameterType::If:
        return counted(QT_TRANSLATE_NOOP("TransformParameter", "%1 if/elseif + else"),
                       value.value<IfSpec>().branches);
    case ParameterType::RenameColumns:
        return renameSummary(value.value<QList<ColumnRename>>());
    case ParameterType::SplitRows:
        return splitRowsSummary(value.value<SplitRowsSpec>());
    case ParameterType::Unique:
        return uniqueSummary(value.value<QList<UniqueAction>>());
    case ParameterType::VerifyRules:
        return counted(QT_TRANSLATE_NOOP("TransformParameter", "(%1)"),
                       value.value<QList<VerifyRule>>());
    case ParameterType::Bool:
        return value.toBool() ? parameter.label : QString();
    case ParameterType::Int:
        return Texts::count(value.toInt()) + parameter.suffix;
    case ParameterType::Real:
        return QLocale().toString(value.toDouble(), 'g', 15);
    case ParameterType::Selection:
    case ParameterType::Text:
    case ParameterType::Char:
    case ParameterType::Script:
    case ParameterType::LongText:
        break;
    }
    return shownSeparator(value.toString());
}
