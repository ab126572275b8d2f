#include "transformif.h"

#include "columnvariables.h"
#include "parametervalues.h"
#include "termtest.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"
#include "transformsettings.h"

#include <algorithm>

namespace {

struct Options
{
    const TransformOption<QString> newName{
        ParameterType::Text, "New_Name", QT_TRANSLATE_NOOP("Transform", "New column name"),
        QT_TRANSLATE_NOOP("Transform", "The name for the new column."), QStringLiteral("If")};
    const TransformOption<IfSpec> branches{
        ParameterType::If, "If", QT_TRANSLATE_NOOP("Transform", "If"),
        QT_TRANSLATE_NOOP("Transform",
                          "The tests of each IF, from the first to the last, and the values for "
                          "rows that pass all tests of an IF or, after ELSE, of none.")};
    const TransformOption<bool> caseSensitive{
        ParameterType::Bool, "Case_Sensitive", QT_TRANSLATE_NOOP("Transform", "case sensitive"),
        QT_TRANSLATE_NOOP("Transform", "Check for case sensitive text matching."), true};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

bool writesNothing(const IfSpec &spec)
{
    return spec.elseValue.isEmpty() &&
           std::all_of(spec.branches.begin(), spec.branches.end(),
                       [](const IfBranch &branch) { return branch.thenValue.isEmpty(); });
}

/// A branch made ready for the rows of one table. The ELSE is one without tests.
struct Branch
{
    Branch(const QString &value, const Dataset &table)
        : chosen(value, table)
        , text(value)
    {
    }

    /// Never without tests.
    bool holds(int row)
    {
        return !tests.empty() && std::all_of(tests.begin(), tests.end(),
                                             [row](TermTest &test) { return test.holds(row); });
    }
    QString valueFor(int row) const { return chosen.hasVariables() ? chosen.expanded(row) : text; }

    std::vector<TermTest> tests;
    ColumnTemplate chosen;
    QString text;
};

std::vector<Branch> branchesOf(const IfSpec &spec, const Dataset &table, bool caseSensitive)
{
    ColumnDateFormats dateFormats(table, TransformSettings::current().dateFormats);
    std::vector<Branch> branches;
    branches.reserve(size_t(spec.branches.size()));
    for (const IfBranch &each : spec.branches) {
        Branch &branch = branches.emplace_back(each.thenValue, table);
        for (const FilterTerm &term : each.terms) {
            branch.tests.emplace_back(term, table, &dateFormats, caseSensitive);
        }
    }
    return branches;
}

constexpr TransformFacts ifFacts =
    TransformFacts(
        21, "TransformIf", "If", "If", TransformCategory::Column,
        QT_TRANSLATE_NOOP("Transform",
                          "Create a new column with values conditional on other columns."))
        .words("conditional branch then else equals greater less than regex regular")
        .with(TransformFacts::Advanced | TransformFacts::DateFormats);

} // namespace

TransformIf::TransformIf()
    : Transform(ifFacts)
{
}

std::unique_ptr<Transform> TransformIf::clone() const
{
    return cloned(*this);
}

void TransformIf::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().newName.create());
    append(options().branches.create(inputs.value(0)));
    append(options().caseSensitive.create());
}

QList<QPair<QString, int>> TransformIf::optionalParameters() const
{
    return {{options().newName.key(), 0}};
}

Dataset TransformIf::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    QString newName;
    IfSpec spec;
    bool caseSensitive = false;
    if (!options().newName.read(*this, &newName) || !options().branches.read(*this, &spec) ||
        !options().caseSensitive.read(*this, &caseSensitive)) {
        setStatus(Texts::noChanges());
        return {};
    }

    Dataset output = inputs.first();
    output.appendColumn(newName);
    if (writesNothing(spec)) {
        setStatus(tr("THEN and ELSE empty"));
        return output;
    }
    return filled(std::move(output), inputs.first(), spec, caseSensitive);
}

/// Sets the cells of the last column.
Dataset TransformIf::filled(Dataset output, const Dataset &input, const IfSpec &spec,
                            bool caseSensitive)
{
    std::vector<Branch> branches = branchesOf(spec, input, caseSensitive);
    const Branch otherwise(spec.elseValue, input);
    const ColIndex newColumn(input.columnCount());
    const int rowCount = input.rowCount();
    int elseCount = 0;
    for (int row = 0; row < rowCount; ++row) {
        if (!reportRow(row, rowCount)) {
            return {};
        }
        const auto chosen = std::find_if(branches.begin(), branches.end(),
                                         [row](Branch &branch) { return branch.holds(row); });
        const bool isElse = chosen == branches.end();
        elseCount += isElse ? 1 : 0;
        const QString value = isElse ? otherwise.valueFor(row) : chosen->valueFor(row);
        if (!value.isEmpty()) {
            output.setCell(RowIndex(row), newColumn, value);
        }
    }
    for (const Branch &branch : branches) {
        for (const TermTest &test : branch.tests) {
            test.report(&messages());
        }
    }
    setStatus(tr("%1 match(es) IF/ELSE IF, %2 match(es) ELSE")
                  .arg(Texts::count(rowCount - elseCount), Texts::count(elseCount)));
    return output;
}
