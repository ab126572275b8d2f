#include "transformrenamecols.h"

#include "newcolumns.h"
#include "parametervalues.h"
#include "regexreplacement.h"
#include "textcase.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"

#include <QHash>
#include <optional>

namespace {

struct Options
{
    const TransformOption<QList<ColumnRename>> columns{
        ParameterType::RenameColumns, "Columns", QT_TRANSLATE_NOOP("Transform", "New names"),
        QT_TRANSLATE_NOOP("Transform", "New names for single columns. The options below act on the "
                                       "names of the other columns.")};
    const TransformOption<QString> find{
        ParameterType::Text, "Find", QT_TRANSLATE_NOOP("Transform", "In other names find"),
        QT_TRANSLATE_NOOP("Transform", "The text to be replaced wherever it stands in a name. "
                                       "Capitals and small letters are different.")};
    const TransformOption<bool> regex{
        ParameterType::Bool, "Regex", QT_TRANSLATE_NOOP("Transform", "regex"),
        QT_TRANSLATE_NOOP("Transform", "Check to find by a regular expression."), false};
    const TransformOption<QString> replace{
        ParameterType::Text, "Replace", QT_TRANSLATE_NOOP("Transform", "Replace with"),
        QT_TRANSLATE_NOOP("Transform",
                          "The text to be put in its place. With a regular expression, \\0 is "
                          "what was found and \\1 to \\9 are its groups.")};
    const TransformOption<int> textCase =
        TransformOption<int>(
            ParameterType::Selection, "Case", QT_TRANSLATE_NOOP("Transform", "Change case"),
            QT_TRANSLATE_NOOP("Transform", "The case of the other names. For \"unit Price\":\n\n"
                                           "No change: unit Price\n"
                                           "lower case: unit price\n"
                                           "UPPER CASE: UNIT PRICE\n"
                                           "Title Case: Unit Price\n"
                                           "snake_case: unit_price\n"
                                           "camelCase: unitPrice"))
            .choices(
                {"No change", "lower case", "UPPER CASE", "Title Case", "snake_case", "camelCase"});
    const TransformOption<QString> prefix{
        ParameterType::Text, "Prefix", QT_TRANSLATE_NOOP("Transform", "Prefix"),
        QT_TRANSLATE_NOOP("Transform", "A text put before the other names.")};
    const TransformOption<QString> suffix{
        ParameterType::Text, "Suffix", QT_TRANSLATE_NOOP("Transform", "Suffix"),
        QT_TRANSLATE_NOOP("Transform", "A text put after the other names.")};
    const TransformOption<bool> makeUnique{
        ParameterType::Bool, "Make_Unique", QT_TRANSLATE_NOOP("Transform", "make names unique"),
        QT_TRANSLATE_NOOP("Transform",
                          "Check to add _2, _3 and so on to names that are used already."),
        false};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

struct Settings
{
    QList<ColumnRename> renames;
    QString find;
    bool isRegex = false;
    QString replace;
    int textCase = 0;
    QString prefix;
    QString suffix;
    bool makeUnique = false;

    bool read(const Transform &transform)
    {
        return options().columns.read(transform, &renames) &&
               options().find.read(transform, &find) && options().regex.read(transform, &isRegex) &&
               options().replace.read(transform, &replace) &&
               options().textCase.read(transform, &textCase) &&
               options().prefix.read(transform, &prefix) &&
               options().suffix.read(transform, &suffix) &&
               options().makeUnique.read(transform, &makeUnique);
    }
};

/// What the options below the list of names make of a name.
class NameRule
{
public:
    NameRule(const Settings &settings, const std::optional<QRegularExpression> &regex)
        : m_settings(settings)
        , m_regex(regex)
        , m_replacement(settings.replace)
    {
    }

    QString applied(const QString &name)
    {
        QString result = name;
        if (m_regex) {
            bool found = false;
            const auto replaced = m_replacement.replaced(name, *m_regex, &found);
            m_failures += replaced ? 0 : 1;
            result = replaced.value_or(name);
        } else if (!m_settings.find.isEmpty()) {
            result.replace(m_settings.find, m_settings.replace);
        }
        constexpr TextCase cases[] = {TextCase::Lower, TextCase::Upper, TextCase::Title,
                                      TextCase::Snake, TextCase::Camel};
        result = result.trimmed();
        if (m_settings.textCase > 0) {
            result = CaseChanger(cases[m_settings.textCase - 1]).changed(result);
        }
        return m_settings.prefix + result + m_settings.suffix;
    }

    /// Names on which the regular expression gave up.
    int failures() const { return m_failures; }

private:
    const Settings &m_settings;
    const std::optional<QRegularExpression> &m_regex;
    RegexReplacement m_replacement;
    int m_failures = 0;
};

QStringList renamed(const QStringList &names, const QList<ColumnRename> &renames, NameRule *rule)
{
    QStringList result;
    for (const QString &name : names) {
        result.append(rule->applied(name));
    }
    for (const ColumnRename &rename : renames) {
        if (rename.renamed && rename.column.isBound() && rename.column.number < names.size()) {
            result[rename.column.number] = rename.newName;
        }
    }
    return result;
}

/// Warns of the names that the renaming made equal to another one.
void warnOfRepeats(const QStringList &before, const QStringList &after, Messages *messages)
{
    QHash<QString, int> uses;
    QSet<QString> fresh;
    for (int i = 0; i < after.size(); ++i) {
        ++uses[after[i]];
        if (after[i] != before[i]) {
            fresh.insert(after[i]);
        }
    }
    for (const QString &name : after) {
        if (uses.value(name) > 1 && fresh.remove(name)) {
            messages->warn(
                TransformRenameCols::tr("Column name '%1' is used more than once.").arg(name));
        }
    }
}

constexpr TransformFacts renameFacts =
    TransformFacts(42, "TransformRenameCols", "Rename Cols", "Rename_Cols",
                   TransformCategory::Column,
                   QT_TRANSLATE_NOOP("Transform", "Rename column headers."))
        .words("header names");

} // namespace

TransformRenameCols::TransformRenameCols()
    : Transform(renameFacts)
{
}

std::unique_ptr<Transform> TransformRenameCols::clone() const
{
    return cloned(*this);
}

void TransformRenameCols::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().columns.create(inputs.value(0)));
    append(options().find.create());
    append(options().regex.create());
    append(options().replace.create());
    append(options().textCase.create());
    append(options().prefix.create());
    append(options().suffix.create());
    append(options().makeUnique.create());
}

QList<QPair<QString, int>> TransformRenameCols::optionalParameters() const
{
    return {{options().find.key(), 0},
            {options().replace.key(), 0},
            {options().prefix.key(), 0},
            {options().suffix.key(), 0}};
}

Dataset TransformRenameCols::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    setStatus(Texts::noChanges());
    Settings settings;
    if (!settings.read(*this)) {
        return {};
    }
    const Dataset &input = inputs.first();
    std::optional<QRegularExpression> regex;
    if (settings.isRegex && !settings.find.isEmpty()) {
        regex = Regex::compiled(settings.find, true, &messages());
        if (!regex) {
            return input;
        }
    }
    const QStringList before = input.columnNames();
    NameRule rule(settings, regex);
    QStringList after = renamed(before, settings.renames, &rule);
    Regex::tellFailures(settings.find, rule.failures(), &messages());
    if (settings.makeUnique) {
        after = NewColumns::uniqueNames(after);
    } else {
        warnOfRepeats(before, after, &messages());
    }
    if (input.hasHeader() && after == before) {
        return input;
    }

    Dataset output = input;
    output.setHeader(after);
    qint64 count = 0;
    for (int i = 0; i < after.size(); ++i) {
        count += after[i] != before[i] ? 1 : 0;
    }
    if (!after.isEmpty()) {
        setStatus(tr("%1 %2 renamed").arg(Texts::count(count), Texts::columns(count)));
    }
    return output;
}
