#include "transformfilter.h"

#include "comparison.h"
#include "parametervalues.h"
#include "termtest.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"
#include "transformsettings.h"
#include "upstreamitem.h"

#include <algorithm>

namespace {

struct Options
{
    const TransformOption<FilterSpec> columns{
        ParameterType::FilterColumns, "Columns", QT_TRANSLATE_NOOP("Transform", "Filtering"),
        QT_TRANSLATE_NOOP("Transform", "The tests that rows have to pass, and whether the rows "
                                       "that pass are kept or removed.")};
    const TransformOption<bool> caseSensitive{
        ParameterType::Bool, "Case_Sensitive", QT_TRANSLATE_NOOP("Transform", "case sensitive"),
        QT_TRANSLATE_NOOP("Transform", "Check for case sensitive text matching."), true};
    const TransformOption<bool> disable{
        ParameterType::Bool, "Disable", QT_TRANSLATE_NOOP("Transform", "disable filtering"),
        QT_TRANSLATE_NOOP("Transform",
                          "Check to disable filtering (which means that transform does nothing)."),
        false};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

/// A term whose value is empty is not filled in yet, unless its operator makes sense of it.
bool isActive(const FilterTerm &term)
{
    switch (term.op) {
    case ComparisonOperator::Equal:
    case ComparisonOperator::MatchesRegex:
    case ComparisonOperator::NotEqual:
    case ComparisonOperator::NotMatchesRegex:
    case ComparisonOperator::Fuzzy90:
    case ComparisonOperator::Fuzzy80:
    case ComparisonOperator::Fuzzy70:
    case ComparisonOperator::Fuzzy60:
    case ComparisonOperator::Fuzzy50:
    case ComparisonOperator::IsEmpty:
    case ComparisonOperator::IsNotEmpty:
        return true;
    default:
        return !term.value.isEmpty();
    }
}

bool rowPasses(std::vector<TermTest> *tests, bool matchAll, int row)
{
    for (TermTest &test : *tests) {
        if (test.holds(row) != matchAll) {
            return !matchAll;
        }
    }
    return matchAll;
}

QString termText(const FilterTerm &term)
{
    const QString column = term.column.isEmpty() ? TransformFilter::tr("<Any>") : term.column;
    const QString symbol = Comparison::symbol(term.op);
    return Comparison::takesValue(term.op)
               ? TransformFilter::tr("(%1 %2 '%3')").arg(column, symbol, term.value)
               : TransformFilter::tr("(%1 %2)").arg(column, symbol);
}

/// Terms on columns that are not among the known ones are left out; none are known: all are listed.
QStringList termTexts(const FilterSpec &spec, const QStringList &columns)
{
    const QSet<QString> known(columns.begin(), columns.end());
    QStringList texts;
    for (const FilterTerm &term : spec.terms) {
        if (term.column.isEmpty() || known.isEmpty() || known.contains(term.column)) {
            texts.append(termText(term));
        }
    }
    return texts;
}

constexpr TransformFacts filterFacts =
    TransformFacts(
        17, "TransformFilter", "Filter", "Filter", TransformCategory::Row,
        QT_TRANSLATE_NOOP("Transform",
                          "Filter rows by text, date or numeric values in selected columns."))
        .words("filters filtering matching matches keeps removes regular regex grep selects")
        .with(TransformFacts::DateFormats);

} // namespace

TransformFilter::TransformFilter()
    : Transform(filterFacts)
{
}

std::unique_ptr<Transform> TransformFilter::clone() const
{
    return cloned(*this);
}

void TransformFilter::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().columns.create(inputs.value(0)));
    append(options().caseSensitive.create());
    append(options().disable.create());
}

Dataset TransformFilter::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    FilterSpec spec;
    bool caseSensitive = false;
    bool disabled = false;
    if (!options().columns.read(*this, &spec) ||
        !options().caseSensitive.read(*this, &caseSensitive) ||
        !options().disable.read(*this, &disabled)) {
        setStatus(Texts::noChanges());
        return {};
    }

    const Dataset &input = inputs.first();
    if (disabled) {
        messages().warn(tr("Filtering is disabled"));
        setStatus(Texts::noChanges());
        return input;
    }
    Dataset output = filtered(input, spec, caseSensitive);
    setStatus(Texts::rowsRemoved(input.rowCount() - output.rowCount()));
    return output;
}

Dataset TransformFilter::filtered(const Dataset &input, const FilterSpec &spec, bool caseSensitive)
{
    ColumnDateFormats dateFormats(input, TransformSettings::current().dateFormats);
    std::vector<TermTest> tests;
    for (const FilterTerm &term : spec.terms) {
        if (isActive(term)) {
            tests.emplace_back(term, input, &dateFormats, caseSensitive);
        }
    }
    if (tests.empty()) {
        return input;
    }

    const int rowCount = input.rowCount();
    RowSelection passing;
    passing.reserve(size_t(rowCount));
    for (int row = 0; row < rowCount; ++row) {
        if (!reportRow(row, rowCount)) {
            return {};
        }
        if (rowPasses(&tests, spec.matchAll, row) == spec.keep) {
            passing.push_back(row);
        }
    }
    for (const TermTest &test : tests) {
        test.report(&messages());
    }
    if (passing.size() == size_t(rowCount)) {
        return input;
    }
    passing.shrink_to_fit();
    return input.selectRows(std::move(passing));
}

QString TransformFilter::summary() const
{
    FilterSpec spec;
    if (!options().columns.read(*this, &spec)) {
        return summaryText(spec, {});
    }
    const UpstreamItem *const input = parameter(options().columns.key())->input;
    const bool isKnown = input && input->upstreamColumnsKnown();
    return summaryText(spec, isKnown ? input->upstreamColumns() : QStringList());
}

QString TransformFilter::summaryText(const FilterSpec &spec, const QStringList &columns)
{
    return spec.terms.isEmpty()
               ? tr("No filter terms")
               : tr("%1 %2").arg(spec.keep ? tr("Keep") : tr("Remove"), termsText(spec, columns));
}

QString TransformFilter::termsText(const FilterSpec &spec, const QStringList &columns)
{
    constexpr int mostTerms = 9;
    const QString joiner = spec.matchAll ? tr(" AND ") : tr(" OR ");
    const QStringList texts = termTexts(spec, columns);
    QString text = texts.mid(0, mostTerms).join(joiner);
    if (texts.size() > mostTerms) {
        text += QChar(0x2026);
    }
    return text;
}
