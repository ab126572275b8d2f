#include "transformsort.h"

#include "distinctvalues.h"
#include "numbertext.h"
#include "parametervalues.h"
#include "rowsorter.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"
#include "transformsettings.h"

#include <algorithm>
#include <unordered_map>

namespace {

enum class RankType { Minimum, Average, Maximum, Dense, Cumulative };

struct RankTypeText
{
    const char *name;
    const char *description;
};

constexpr RankTypeText rankTypes[] = {
    {"Minimum", QT_TRANSLATE_NOOP("Transform", "Minimum rank of each group.")},
    {"Average", QT_TRANSLATE_NOOP("Transform", "Average rank of each group.")},
    {"Maximum", QT_TRANSLATE_NOOP("Transform", "Maximum rank of each group")},
    {"Dense", QT_TRANSLATE_NOOP("Transform", "No gaps between groups.")},
    {"Cumulative",
     QT_TRANSLATE_NOOP("Transform", "Proportion of rows with the same or lower numbered rank.")},
};

std::vector<const char *> rankTypeNames()
{
    std::vector<const char *> names;
    for (const RankTypeText &each : rankTypes) {
        names.push_back(each.name);
    }
    return names;
}

QString rankTypeHelp()
{
    QString help = QCoreApplication::translate("Transform", "Rank type:\n");
    for (const RankTypeText &each : rankTypes) {
        help += QCoreApplication::translate("Transform", "%1: %2\n")
                    .arg(QString::fromLatin1(each.name),
                         QCoreApplication::translate("Transform", each.description));
    }
    return help;
}

struct Options
{
    const TransformOption<QList<SortKey>> columns{
        ParameterType::SortColumns, "Columns", QT_TRANSLATE_NOOP("Transform", "Sorting"),
        QT_TRANSLATE_NOOP("Transform", "Click the '+' to add a sort level.\n"
                                       "Sorts by column in level l, then column in level 2 etc.")};
    const TransformOption<bool> rankAdd{
        ParameterType::Bool, "Rank_Add", QT_TRANSLATE_NOOP("Transform", "add rank"),
        QT_TRANSLATE_NOOP("Transform", "Add a rank column."), false};
    const TransformOption<int> rankType =
        TransformOption<int>(ParameterType::Selection, "Rank_Types",
                             QT_TRANSLATE_NOOP("Transform", "Rank type"), "",
                             int(RankType::Minimum))
            .choices(rankTypeNames());
    const TransformOption<ColIndex> rankBy{
        ParameterType::SingleColumn, "Rank_By", QT_TRANSLATE_NOOP("Transform", "Rank by"),
        QT_TRANSLATE_NOOP("Transform", "Rank separately for each distinct value in this column.\n"
                                       "Leave as %1 if you only want a single ranking.")};
    const TransformOption<bool> intelligent{
        ParameterType::Bool, "Intelligent_Sort", QT_TRANSLATE_NOOP("Transform", "intelligent sort"),
        QT_TRANSLATE_NOOP("Transform",
                          "Check to sort dates as dates and numbers as numbers (slower).\n"
                          "If unchecked, everything is sorted alphabetically as text."),
        true};
    const TransformOption<bool> localeAware{
        ParameterType::Bool, "Locale_Aware_Sort", QT_TRANSLATE_NOOP("Transform", "locale aware"),
        QT_TRANSLATE_NOOP("Transform",
                          "Check to sort text based on the locale set in 'Preferences' (slower)."),
        false};
    const TransformOption<bool> caseSensitive{
        ParameterType::Bool, "Case_Sensitive", QT_TRANSLATE_NOOP("Transform", "case sensitive"),
        QT_TRANSLATE_NOOP("Transform", "Ignore case if unchecked."), true};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

/// Rows that are equal on every level and stand in one ranking.
struct RankGroup
{
    int firstPosition; // counted from 1
    int lastPosition;
    int denseRank;
    size_t ranking;
};

/// One ranking of its own, by the rows met so far.
struct Ranking
{
    qint32 lastRow = -1;
    size_t lastGroup = 0;
    int rowCount = 0;
    int groupCount = 0;
};

double rankOf(const RankGroup &group, RankType type, int rowCount)
{
    switch (type) {
    case RankType::Minimum:
        break;
    case RankType::Average:
        return (double(group.firstPosition) + group.lastPosition) / 2;
    case RankType::Maximum:
        return group.lastPosition;
    case RankType::Dense:
        return group.denseRank;
    case RankType::Cumulative:
        return double(group.lastPosition) / rowCount;
    }
    return group.firstPosition;
}

/// Numbers the distinct texts of a column and sets the number of each row.
size_t numberTexts(DistinctValues *column)
{
    std::unordered_map<std::string_view, quint32> numbers;
    std::vector<quint32> numberOfValue;
    for (const std::string_view value : column->values) {
        numberOfValue.push_back(numbers.try_emplace(value, quint32(numbers.size())).first->second);
    }
    for (quint32 &number : column->ofRow) {
        number = numberOfValue[number];
    }
    return numbers.size();
}

/// The texts of the ranks, and which of them each sorted row gets.
struct Ranks
{
    std::vector<QString> texts;
    std::vector<size_t> ofPosition;
};

/// `rankingOfRow` is empty when all rows are ranked together.
Ranks ranksOf(const RowSelection &rows, const RowSorter &sorter,
              const std::vector<quint32> &rankingOfRow, size_t rankingCount, RankType type)
{
    std::vector<Ranking> rankings(rankingCount);
    std::vector<RankGroup> groups;
    Ranks ranks;
    ranks.ofPosition.reserve(rows.size());
    for (const qint32 row : rows) {
        const size_t number = rankingOfRow.empty() ? 0 : rankingOfRow[size_t(row)];
        Ranking &ranking = rankings[number];
        ++ranking.rowCount;
        if (ranking.lastRow < 0 || sorter.compare(ranking.lastRow, row) != 0) {
            ++ranking.groupCount;
            ranking.lastGroup = groups.size();
            groups.push_back({ranking.rowCount, 0, ranking.groupCount, number});
        }
        groups[ranking.lastGroup].lastPosition = ranking.rowCount;
        ranking.lastRow = row;
        ranks.ofPosition.push_back(ranking.lastGroup);
    }
    ranks.texts.reserve(groups.size());
    for (const RankGroup &group : groups) {
        ranks.texts.push_back(
            plainNumberText(rankOf(group, type, rankings[group.ranking].rowCount)));
    }
    return ranks;
}

bool isInOrder(const RowSelection &rows)
{
    return std::is_sorted(rows.begin(), rows.end());
}

constexpr const char *rankName = "Rank";

constexpr TransformFacts sortFacts =
    TransformFacts(
        52, "TransformSort", "Sort", "Sort", TransformCategory::Row,
        QT_TRANSLATE_NOOP("Transform",
                          "Sort rows by text, numeric and date values in the selected column(s)."))
        .words(
            "sorts sorting levels ordering ascending arrange descending rankings dense cumulative")
        .with(TransformFacts::DateFormats | TransformFacts::DependentParameters);

} // namespace

struct TransformSort::Settings
{
    std::vector<SortLevel> levels;
    SortRules rules;
    bool rankAdd = false;
    int rankType = 0;
    ColIndex rankBy;
};

TransformSort::TransformSort()
    : Transform(sortFacts)
{
}

std::unique_ptr<Transform> TransformSort::clone() const
{
    return cloned(*this);
}

void TransformSort::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().columns.create(inputs.value(0)));
    append(options().rankAdd.create());
    append(options().rankType.create())->help = rankTypeHelp();
    TransformParameter *const rankBy = append(options().rankBy.create(inputs.value(0)));
    rankBy->help = rankBy->help.arg(rankBy->noneText);
    append(options().intelligent.create());
    append(options().localeAware.create());
    append(options().caseSensitive.create());
}

bool TransformSort::isParameterShown(const TransformParameter &parameter) const
{
    bool ranks = false;
    return (parameter.key != options().rankType.key() && parameter.key != options().rankBy.key()) ||
           (options().rankAdd.read(*this, &ranks) && ranks);
}

QList<QPair<QString, int>> TransformSort::optionalParameters() const
{
    return {{options().rankBy.key(), 0}};
}

Dataset TransformSort::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    const Dataset &input = inputs.first();
    Settings settings;
    if (!readSettings(input, &settings)) {
        setStatus(Texts::noChanges());
        return {};
    }
    if (settings.levels.empty()) {
        Dataset output = input;
        if (settings.rankAdd) {
            output.appendColumn(QString::fromLatin1(rankName));
        }
        setStatus(Texts::noChanges());
        return output;
    }
    Dataset output = sorted(input, settings);
    if (!isStopped()) {
        setStatus(output == input ? Texts::noChanges() : tr("Sorted"));
    }
    return output;
}

bool TransformSort::readSettings(const Dataset &input, Settings *settings) const
{
    QList<SortKey> keys;
    SortRules &rules = settings->rules;
    if (!options().columns.read(*this, &keys) ||
        !options().rankAdd.read(*this, &settings->rankAdd) ||
        !options().rankType.read(*this, &settings->rankType) ||
        !options().rankBy.read(*this, input, &settings->rankBy) ||
        !options().intelligent.read(*this, &rules.intelligent) ||
        !options().localeAware.read(*this, &rules.texts.localeAware) ||
        !options().caseSensitive.read(*this, &rules.texts.caseSensitive)) {
        return false;
    }
    rules.datePatterns = TransformSettings::current().dateFormats;
    for (const SortKey &key : std::as_const(keys)) {
        if (key.column.isBound() && key.column.number < input.columnCount().value()) {
            settings->levels.push_back({ColIndex(key.column.number), key.ascending});
        }
    }
    return true;
}

Dataset TransformSort::sorted(const Dataset &input, const Settings &settings)
{
    const Progress progress = [this](double fraction) { return report(fraction); };
    RowSorter sorter;
    RowSelection rows;
    if (!sorter.sort(input, settings.levels, settings.rules,
                     progressBetween(progress, 0.0, settings.rankAdd ? 0.7 : 1.0), &rows)) {
        return {};
    }
    if (!settings.rankAdd) {
        return isInOrder(rows) ? input : input.selectRows(std::move(rows));
    }

    DistinctValues rankBy;
    size_t rankingCount = 1;
    if (settings.rankBy.isValid()) {
        if (!rankBy.read(input, settings.rankBy, progressBetween(progress, 0.7, 0.8))) {
            return {};
        }
        rankingCount = numberTexts(&rankBy);
    }
    const Ranks ranks =
        ranksOf(rows, sorter, rankBy.ofRow, rankingCount, RankType(settings.rankType));
    Dataset output = isInOrder(rows) ? input : input.selectRows(std::move(rows));
    const ColIndex column = output.appendColumn(QString::fromLatin1(rankName));
    const int rowCount = output.rowCount();
    for (int row = 0; row < rowCount; ++row) {
        if (row % progressInterval == 0 && !report(0.8 + 0.2 * row / rowCount)) {
            return {};
        }
        output.setCell(RowIndex(row), column, ranks.texts[ranks.ofPosition[size_t(row)]]);
    }
    return output;
}
