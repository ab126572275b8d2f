#include "transformverify.h"

#include "newcolumns.h"
#include "parametervalues.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"
#include "verification.h"

#include <algorithm>

enum class VerifyOutcome : int { Warn, Error, RemoveFailing, KeepFailing, AddColumn };

namespace {

constexpr int defaultMaximum = 20;

struct Options
{
    const TransformOption<QList<VerifyRule>> rules{
        ParameterType::VerifyRules, "Rules", QT_TRANSLATE_NOOP("Transform", "Rules"),
        QT_TRANSLATE_NOOP("Transform",
                          "What has to hold: a column (or any column, which means every one), a "
                          "rule and its value. Empty cells pass all rules on cells, except the "
                          "rules on emptiness.")};
    const TransformOption<bool> caseSensitive{
        ParameterType::Bool, "Case_Sensitive", QT_TRANSLATE_NOOP("Transform", "case sensitive"),
        QT_TRANSLATE_NOOP("Transform", "Check for case sensitive text matching."), true};
    const TransformOption<bool> disable{
        ParameterType::Bool, "Disable", QT_TRANSLATE_NOOP("Transform", "disable verification"),
        QT_TRANSLATE_NOOP("Transform", "Check to pass everything on without verifying it."), false};
    const TransformOption<int> onFail =
        TransformOption<int>(
            ParameterType::Selection, "On_Fail", QT_TRANSLATE_NOOP("Transform", "On failure"),
            QT_TRANSLATE_NOOP("Transform",
                              "What happens when a rule fails.\n"
                              "Warn: the rows are passed on, with warnings.\n"
                              "Error: nothing is passed on, so that no output is written.\n"
                              "Remove failing rows: only rows that pass all rules are passed on.\n"
                              "Keep only failing rows: only rows that fail a rule are passed on.\n"
                              "Add column: the failed rules of each row are put in a new column."))
            .choices(
                {"Warn", "Error", "Remove failing rows", "Keep only failing rows", "Add column"});
    const TransformOption<QString> newName{
        ParameterType::Text, "New_Name", QT_TRANSLATE_NOOP("Transform", "New column name"),
        QT_TRANSLATE_NOOP("Transform", "The name of the column with the failed rules."),
        QStringLiteral("Failures")};
    const TransformOption<int> maximum =
        TransformOption<int>(ParameterType::Int, "Maximum",
                             QT_TRANSLATE_NOOP("Transform", "Maximum failures listed"),
                             QT_TRANSLATE_NOOP("Transform", "How many failures are told one by "
                                                            "one. The others are only counted."),
                             defaultMaximum)
            .range(1, 10000);
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

constexpr TransformFacts verifyFacts =
    TransformFacts(
        68, "TransformVerify", "Verify", "Verify", TransformCategory::Other,
        QT_TRANSLATE_NOOP("Transform", "Verify that values in the dataset are as expected."))
        .words("validate check rules test schema quality")
        .with(TransformFacts::Advanced | TransformFacts::Verification |
              TransformFacts::DependentParameters);

/// The table with the failed rules of each row in a new column.
Dataset withFailures(const Dataset &input, const Verification &verification, const QString &name)
{
    Dataset output = input;
    const ColIndex column = NewColumns::append(&output, name, QStringLiteral("Failures"));
    for (int row = 0; row < input.rowCount(); ++row) {
        if (verification.rowFails(row)) {
            output.setCell(RowIndex(row), column, verification.failuresOfRow(row));
        }
    }
    return output;
}

} // namespace

TransformVerify::TransformVerify()
    : Transform(verifyFacts)
{
}

std::unique_ptr<Transform> TransformVerify::clone() const
{
    return cloned(*this);
}

void TransformVerify::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().rules.create(inputs.value(0)));
    append(options().caseSensitive.create());
    append(options().disable.create());
    append(options().onFail.create());
    append(options().newName.create());
    append(options().maximum.create());
}

bool TransformVerify::isParameterShown(const TransformParameter &shown) const
{
    int onFail = 0;
    options().onFail.read(*this, &onFail);
    const bool addsColumn = VerifyOutcome(onFail) == VerifyOutcome::AddColumn;
    if (shown.key == options().newName.key()) {
        return addsColumn;
    }
    return shown.key != options().maximum.key() || !addsColumn;
}

bool TransformVerify::dependsOnDateFormats() const
{
    QList<VerifyRule> rules;
    options().rules.read(*this, &rules);
    return std::any_of(rules.begin(), rules.end(), [](const VerifyRule &rule) {
        const auto check = VerifyRules::fromNumber(rule.rule);
        return check && VerifyRules::readsDates(*check);
    });
}

QList<QPair<QString, int>> TransformVerify::optionalParameters() const
{
    return {{options().newName.key(), 0}};
}

Dataset TransformVerify::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    setStatus(Texts::noChanges());
    QList<VerifyRule> rules;
    bool caseSensitive = true;
    bool disabled = false;
    int onFail = 0;
    int maximum = defaultMaximum;
    if (!options().rules.read(*this, &rules) ||
        !options().caseSensitive.read(*this, &caseSensitive) ||
        !options().disable.read(*this, &disabled) || !options().onFail.read(*this, &onFail) ||
        !options().maximum.read(*this, &maximum)) {
        return {};
    }
    const Dataset &input = inputs.first();
    if (disabled) {
        messages().warn(tr("Verification is disabled"));
        return input;
    }
    if (rules.isEmpty()) {
        setStatus(tr("No rules"));
        return input;
    }
    const bool addsColumn = VerifyOutcome(onFail) == VerifyOutcome::AddColumn;
    Verification verification(input, caseSensitive, addsColumn ? defaultMaximum : maximum);
    if (!verification.run(
            rules, [this](double done) { return report(done); }, &messages())) {
        // What could not be verified must not pass for verified.
        messages().failed = messages().failed || VerifyOutcome(onFail) == VerifyOutcome::Error;
        return isStopped() ? Dataset() : input;
    }
    setStatus(verification.failureCount() == 0 ? tr("All rules passed")
                                               : tr("%1 failure(s) of %2 rule(s)")
                                                     .arg(Texts::count(verification.failureCount()),
                                                          Texts::count(rules.size())));
    tellFailures(verification, addsColumn);
    return outcome(input, verification, VerifyOutcome(onFail));
}

void TransformVerify::tellFailures(const Verification &verification, bool onlyGeneral)
{
    const QStringList &listed = onlyGeneral ? verification.generalListed() : verification.listed();
    for (const QString &failure : listed) {
        messages().warn(failure);
    }
    const qint64 more =
        (onlyGeneral ? verification.generalCount() : verification.failureCount()) - listed.size();
    if (more > 0) {
        messages().warn(tr("+ %1 more").arg(Texts::count(more)));
    }
}

Dataset TransformVerify::outcome(const Dataset &input, const Verification &verification,
                                 VerifyOutcome onFail)
{
    if (onFail == VerifyOutcome::AddColumn) {
        QString name;
        options().newName.read(*this, &name);
        return withFailures(input, verification, name);
    }
    if (onFail == VerifyOutcome::Warn ||
        (onFail == VerifyOutcome::Error && verification.failureCount() == 0)) {
        return input;
    }
    RowSelection rows;
    if (onFail == VerifyOutcome::Error) {
        messages().failed = true;
        return input.selectRows(rows);
    }
    const bool keepsFailing = onFail == VerifyOutcome::KeepFailing;
    for (int row = 0; row < input.rowCount(); ++row) {
        if (verification.rowFails(row) == keepsFailing) {
            rows.push_back(row);
        }
    }
    return int(rows.size()) == input.rowCount() ? input : input.selectRows(std::move(rows));
}
