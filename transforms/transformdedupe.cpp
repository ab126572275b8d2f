#include "transformdedupe.h"

#include "codepoints.h"
#include "columnorder.h"
#include "distinctvalues.h"
#include "editdistance.h"
#include "rowgroups.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"

#include <algorithm>
#include <map>

namespace {

enum class Keep { First, Last, MostComplete, Largest, Smallest, None };
enum class Output { Remove, OnlyDuplicates };

struct Options
{
    const TransformOption<QList<ColIndex>> columns{
        ParameterType::ColumnSet, "Columns", QT_TRANSLATE_NOOP("Transform", "Compare columns"),
        QT_TRANSLATE_NOOP("Transform", "Rows are duplicates when the values in all these columns "
                                       "match.")};
    const TransformOption<bool> caseSensitive{
        ParameterType::Bool, "Case_Sensitive", QT_TRANSLATE_NOOP("Transform", "case sensitive"),
        QT_TRANSLATE_NOOP("Transform", "Check to tell capitals from small letters."), true};
    const TransformOption<bool> ignoreWhitespace{
        ParameterType::Bool, "Ignore_Whitespace",
        QT_TRANSLATE_NOOP("Transform", "ignore whitespace"),
        QT_TRANSLATE_NOOP("Transform", "Check to compare without whitespace, wherever it stands."),
        false};
    const TransformOption<bool> ignorePunctuation{
        ParameterType::Bool, "Ignore_Punctuation",
        QT_TRANSLATE_NOOP("Transform", "ignore punctuation"),
        QT_TRANSLATE_NOOP("Transform", "Check to compare without punctuation, such as .,-'()."),
        false};
    const TransformOption<bool> ignoreAccents{
        ParameterType::Bool, "Ignore_Accents", QT_TRANSLATE_NOOP("Transform", "ignore accents"),
        QT_TRANSLATE_NOOP("Transform", "Check to compare letters without their accents."), false};
    const TransformOption<int> match =
        TransformOption<int>(
            ParameterType::Selection, "Match", QT_TRANSLATE_NOOP("Transform", "Match"),
            QT_TRANSLATE_NOOP("Transform",
                              "How alike the values of two rows must be. Fuzzy matching is slow "
                              "for many different rows.\n\n"
                              "Exact: the same\n"
                              "90% fuzzy: at most 10% of the characters differ\n"
                              "80% fuzzy: at most 20%\n"
                              "70% fuzzy: at most 30%\n"
                              "60% fuzzy: at most 40%\n"
                              "50% fuzzy: at most 50%"))
            .choices({"Exact", "90% fuzzy", "80% fuzzy", "70% fuzzy", "60% fuzzy", "50% fuzzy"});
    const TransformOption<int> keep =
        TransformOption<int>(
            ParameterType::Selection, "Keep", QT_TRANSLATE_NOOP("Transform", "Keep"),
            QT_TRANSLATE_NOOP("Transform",
                              "Which of several duplicates is kept.\n\n"
                              "First: the top one\n"
                              "Last: the bottom one\n"
                              "Most complete row: the one with the most cells that are not empty\n"
                              "Largest value: the one with the greatest date, number or text in a "
                              "column\n"
                              "Smallest value: the one with the least\n"
                              "None of the duplicates: only rows without duplicates are kept"))
            .choices({"First", "Last", "Most complete row", "Largest value", "Smallest value",
                      "None of the duplicates"});
    const TransformOption<ColIndex> keepColumn{
        ParameterType::SingleColumn, "Keep_Column", QT_TRANSLATE_NOOP("Transform", "Of column"),
        QT_TRANSLATE_NOOP("Transform", "The column in which the largest or smallest value is "
                                       "looked for.")};
    const TransformOption<int> output =
        TransformOption<int>(
            ParameterType::Selection, "Output", QT_TRANSLATE_NOOP("Transform", "Output"),
            QT_TRANSLATE_NOOP("Transform",
                              "What becomes of the duplicates.\n\n"
                              "Remove duplicates: only the row to keep remains of them\n"
                              "Only the duplicates: all rows that have duplicates, group by "
                              "group"))
            .choices({"Remove duplicates", "Only the duplicates"});
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

constexpr TransformFacts dedupeFacts =
    TransformFacts(
        14, "TransformDedupe", "Dedupe", "Dedupe", TransformCategory::Row,
        QT_TRANSLATE_NOOP("Transform",
                          "Remove duplicate rows by matching values in all the selected columns."))
        .words("duplicates distinct fuzzy")
        .with(TransformFacts::HasDrillDown | TransformFacts::DependentParameters)
        .role(ParameterRole::CaseSensitive, "Case_Sensitive")
        .role(ParameterRole::CompareColumns, "Columns")
        .role(ParameterRole::IgnoreWhitespace, "Ignore_Whitespace")
        .role(ParameterRole::IgnorePunctuation, "Ignore_Punctuation")
        .role(ParameterRole::IgnoreAccents, "Ignore_Accents")
        .role(ParameterRole::Match, "Match")
        .role(ParameterRole::Keep, "Keep");

} // namespace

struct TransformDedupe::Settings
{
    bool needsColumn() const { return keep == Keep::Largest || keep == Keep::Smallest; }
    int threshold() const { return 100 - 10 * match; }
    bool comparesAsIs() const
    {
        return caseSensitive && !ignoreWhitespace && !ignorePunctuation && !ignoreAccents;
    }

    /// The value without what is ignored.
    QString key(const QString &value) const
    {
        QString result;
        CodePoints::forEach(ignoreAccents ? value.normalized(QString::NormalizationForm_D) : value,
                            [&](uint code, const QString &character) {
                                if (!((ignoreWhitespace && QChar::isSpace(code)) ||
                                      (ignorePunctuation && QChar::isPunct(code)) ||
                                      (ignoreAccents && QChar::isMark(code)))) {
                                    result += character;
                                }
                            });
        return caseSensitive ? result : result.toLower();
    }

    QList<ColIndex> columns;
    ColIndex keepColumn;
    bool caseSensitive = true;
    bool ignoreWhitespace = false;
    bool ignorePunctuation = false;
    bool ignoreAccents = false;
    int match = 0;
    Keep keep = Keep::First;
    Output output = Output::Remove;
};

namespace {

/// Finds for a row of texts the first of the rows seen before that is similar in every column.
class SimilarRows
{
public:
    SimilarRows(int threshold, std::function<bool()> goOn)
        : m_threshold(threshold)
        , m_goOn(std::move(goOn))
    {
    }

    /// The row's group; a new one when no row is similar. -1 when the user asked to stop.
    int groupOf(const QStringList &texts)
    {
        qint64 length = 0;
        for (const QString &text : texts) {
            length += text.size();
        }
        auto best = int(m_founders.size());
        // Similar rows cannot differ more in the sum of their lengths either.
        auto bucket = m_byLength.lower_bound((length * m_threshold + 99) / 100);
        const auto end = m_byLength.upper_bound(length * 100 / m_threshold);
        for (; bucket != end; ++bucket) {
            for (const int group : bucket->second) {
                if (group >= best) {
                    break;
                }
                if (++m_pairs % progressInterval == 0 && !m_goOn()) {
                    return -1;
                }
                if (isSimilar(texts, m_founders[size_t(group)])) {
                    best = group;
                }
            }
        }
        if (best == int(m_founders.size())) {
            m_byLength[length].push_back(best);
            m_founders.push_back(texts);
        }
        return best;
    }
    quint32 count() const { return quint32(m_founders.size()); }

private:
    bool isSimilar(const QStringList &a, const QStringList &b) const
    {
        for (int i = 0; i < a.size(); ++i) {
            if (fuzzySimilarity(a[i], b[i], m_threshold) < m_threshold) {
                return false;
            }
        }
        return true;
    }

    int m_threshold;
    std::function<bool()> m_goOn;
    qint64 m_pairs = 0;
    std::vector<QStringList> m_founders;           // the first row of each group
    std::map<qint64, std::vector<int>> m_byLength; // groups by the length of their first row
};

/// The number of cells of each row that are not empty.
std::vector<int> filledCells(const Dataset &table)
{
    std::vector<int> counts(size_t(table.rowCount()), 0);
    for (ColIndex column(0); column < table.columnCount(); ++column) {
        const ColumnReader cells = table.columnReader(column);
        for (int row = 0; row < table.rowCount(); ++row) {
            counts[size_t(row)] += cells.utf8(row).empty() ? 0 : 1;
        }
    }
    return counts;
}

} // namespace

TransformDedupe::TransformDedupe()
    : Transform(dedupeFacts)
{
}

std::unique_ptr<Transform> TransformDedupe::clone() const
{
    return cloned(*this);
}

void TransformDedupe::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().columns.create(inputs.value(0)));
    append(options().caseSensitive.create());
    append(options().ignoreWhitespace.create());
    append(options().ignorePunctuation.create());
    append(options().ignoreAccents.create());
    append(options().match.create());
    append(options().keep.create());
    append(options().keepColumn.create(inputs.value(0)));
    append(options().output.create());
}

bool TransformDedupe::isParameterShown(const TransformParameter &shown) const
{
    int keep = 0;
    options().keep.read(*this, &keep);
    return shown.key != options().keepColumn.key() || Keep(keep) == Keep::Largest ||
           Keep(keep) == Keep::Smallest;
}

bool TransformDedupe::readSettings(const Dataset &input, Settings *settings) const
{
    int keep = 0;
    int output = 0;
    const bool ok = options().columns.read(*this, input, &settings->columns) &&
                    options().caseSensitive.read(*this, &settings->caseSensitive) &&
                    options().ignoreWhitespace.read(*this, &settings->ignoreWhitespace) &&
                    options().ignorePunctuation.read(*this, &settings->ignorePunctuation) &&
                    options().ignoreAccents.read(*this, &settings->ignoreAccents) &&
                    options().match.read(*this, &settings->match) &&
                    options().keep.read(*this, &keep) &&
                    options().keepColumn.read(*this, input, &settings->keepColumn) &&
                    options().output.read(*this, &output);
    settings->keep = Keep(keep);
    settings->output = Output(output);
    return ok;
}

Dataset TransformDedupe::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    setStatus(Texts::noChanges());
    const Dataset &input = inputs.first();
    Settings settings;
    if (!readSettings(input, &settings)) {
        return {};
    }
    if (settings.columns.isEmpty() || (settings.needsColumn() && !settings.keepColumn.isValid())) {
        return input;
    }
    const Progress progress = [this](double fraction) { return report(fraction); };
    const ValueKey key = [&settings](const QString &value) { return settings.key(value); };
    RowGroups groups;
    if (!groups.read(input, settings.columns, settings.comparesAsIs() ? ValueKey() : key,
                     progressBetween(progress, 0.0, 0.5)) ||
        (settings.match > 0 && !mergeSimilar(input, settings, &groups))) {
        return {};
    }
    RowSelection rows;
    if (!keptRows(input, settings, groups, &rows)) {
        return {};
    }
    const qint64 removed = qint64(input.rowCount()) - qint64(rows.size());
    setStatus(Texts::rowsRemoved(removed));
    if (removed == 0 && settings.output == Output::Remove) {
        return input;
    }
    return input.selectRows(std::move(rows));
}

bool TransformDedupe::mergeSimilar(const Dataset &input, const Settings &settings,
                                   RowGroups *groups)
{
    const int count = groups->count();
    int group = 0;
    SimilarRows similar(settings.threshold(),
                        [&] { return report(0.5 + 0.4 * double(group) / count); });
    std::vector<quint32> merged;
    merged.reserve(size_t(count));
    for (; group < count; ++group) {
        if (!reportRow(group, count)) {
            return false;
        }
        QStringList texts;
        for (const ColIndex column : settings.columns) {
            texts.append(settings.key(input.cell(RowIndex(*groups->rows(group).begin()), column)));
        }
        const int found = similar.groupOf(texts);
        if (found < 0) {
            return false;
        }
        merged.push_back(quint32(found));
    }
    groups->merge(merged, similar.count());
    return true;
}

bool TransformDedupe::keptRows(const Dataset &input, const Settings &settings,
                               const RowGroups &groups, RowSelection *rows)
{
    const bool onlyDuplicates = settings.output == Output::OnlyDuplicates;
    std::vector<int> filled;
    ColumnOrder order;
    if (!onlyDuplicates && settings.keep == Keep::MostComplete) {
        filled = filledCells(input);
    } else if (!onlyDuplicates && settings.needsColumn() &&
               !order.read(input, settings.keepColumn, settings.caseSensitive,
                           [this](double) { return report(0.9); })) {
        return false;
    }
    const auto isBetter = [&](qint32 row, qint32 best) {
        if (settings.keep == Keep::MostComplete) {
            return filled[size_t(row)] > filled[size_t(best)];
        }
        if (!settings.needsColumn() || !order.hasPlace(row)) {
            return false;
        }
        return !order.hasPlace(best) ||
               (settings.keep == Keep::Largest ? order.place(row) > order.place(best)
                                               : order.place(row) < order.place(best));
    };
    for (int group = 0; group < groups.count(); ++group) {
        if (!reportRow(group, groups.count())) {
            return false;
        }
        const RowGroups::Rows members = groups.rows(group);
        if (onlyDuplicates) {
            if (members.size() > 1) {
                rows->insert(rows->end(), members.begin(), members.end());
            }
            continue;
        }
        if (settings.keep == Keep::None && members.size() > 1) {
            continue;
        }
        qint32 best = settings.keep == Keep::Last ? *(members.end() - 1) : *members.begin();
        for (const qint32 row : members) {
            best = isBetter(row, best) ? row : best;
        }
        rows->push_back(best);
    }
    if (!onlyDuplicates) {
        std::sort(rows->begin(), rows->end());
    }
    return true;
}
