#include "transformjoin.h"

#include "distinctvalues.h"
#include "joinkeys.h"
#include "rowlimit.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"

#include <algorithm>
#include <numeric>

namespace {

enum class JoinBy { Key, RowNumber };

struct Options
{
    const TransformOption<int> by =
        TransformOption<int>(ParameterType::Selection, "By", QT_TRANSLATE_NOOP("Transform", "By"),
                             QT_TRANSLATE_NOOP("Transform", "Choose how to join the 2 datsets."),
                             int(JoinBy::Key))
            .choices({"Key", "Row number"})
            .storedAsIndex();
    const TransformOption<ColIndex> topKey{
        ParameterType::SingleColumn, "Column_1", QT_TRANSLATE_NOOP("Transform", "Top key column"),
        QT_TRANSLATE_NOOP("Transform", "Select a common (key) column in top input dataset.")};
    const TransformOption<bool> includeTop{
        ParameterType::Bool, "Include_Non_Matching_1",
        QT_TRANSLATE_NOOP("Transform", "include top non-matching rows"),
        QT_TRANSLATE_NOOP("Transform",
                          "Check to include rows in the top input dataset with no matching value "
                          "in the bottom input dataset ('left join')."),
        false};
    const TransformOption<ColIndex> bottomKey{
        ParameterType::SingleColumn, "Column_2",
        QT_TRANSLATE_NOOP("Transform", "Bottom key column"),
        QT_TRANSLATE_NOOP("Transform", "Select a common (key) column in the bottom input data.")};
    const TransformOption<bool> includeBottom{
        ParameterType::Bool, "Include_Non_Matching_2",
        QT_TRANSLATE_NOOP("Transform", "include bottom non-matching rows"),
        QT_TRANSLATE_NOOP("Transform",
                          "Check to include rows in the bottom input dataset with no matching "
                          "value in the top input dataset ('right join')."),
        false};
    const TransformOption<bool> caseSensitive{
        ParameterType::Bool, "Case_Sensitive", QT_TRANSLATE_NOOP("Transform", "case sensitive"),
        QT_TRANSLATE_NOOP("Transform", "Check for case sensitive text matching."), true};
    const TransformOption<bool> detailedReport{
        ParameterType::Bool, "Detailed_Report", QT_TRANSLATE_NOOP("Transform", "detailed report"),
        QT_TRANSLATE_NOOP("Transform",
                          "Report on duplicate keys in each dataset, overlap of keys in both "
                          "datasets and leading and trailing whitespace in keys. This slows down "
                          "the join."),
        false};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

constexpr qint32 noRow = -1;

/// The rows of a table; the table itself when they are all its rows in order.
Dataset taken(const Dataset &table, RowSelection rows)
{
    bool all = rows.size() == size_t(table.rowCount());
    for (size_t i = 0; all && i < rows.size(); ++i) {
        all = rows[i] == qint32(i);
    }
    return all ? table : table.selectRows(std::move(rows));
}

constexpr TransformFacts joinFacts =
    TransformFacts(
        27, "TransformJoin", "Join", "Join", TransformCategory::Merge,
        QT_TRANSLATE_NOOP(
            "Transform",
            "Merge 2 input datasets side by side using common (key) columns or row numbers. The "
            "bottom dataset (by vertical position) is joined to the right of the top dataset."))
        .inputs(2, 2)
        .words("joins denormalise denormalize common keys side horizontally unique inner outer "
               "left right enrich")
        .with(TransformFacts::DependentParameters)
        .inputOrder(QT_TRANSLATE_NOOP("Transform", "Inputs are used from top to bottom."))
        .keyRoles();

} // namespace

struct TransformJoin::Settings
{
    int by = 0;
    ColIndex topKey;
    ColIndex bottomKey;
    bool includeTop = false;
    bool includeBottom = false;
    JoinKeys::Options keys;
};

/// The rows of the result, as row numbers of both inputs.
struct TransformJoin::Pairs
{
    void reserve(qint64 count)
    {
        top.reserve(size_t(count));
        bottom.reserve(size_t(count));
    }
    void append(qint32 topRow, qint32 bottomRow)
    {
        top.push_back(topRow);
        bottom.push_back(bottomRow);
    }

    RowSelection top;
    RowSelection bottom;
};

/// Where the keys of rows without a partner come from and where they go.
struct TransformJoin::KeyCells
{
    const Dataset &table;
    ColIndex from;
    const RowSelection &rows; // of the table, by row of the result
    ColIndex to;
};

TransformJoin::TransformJoin()
    : Transform(joinFacts)
{
}

std::unique_ptr<Transform> TransformJoin::clone() const
{
    return cloned(*this);
}

void TransformJoin::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().by.create());
    append(options().topKey.create(inputs.value(0)));
    append(options().includeTop.create());
    append(options().bottomKey.create(inputs.value(1)));
    append(options().includeBottom.create());
    append(options().caseSensitive.create());
    append(options().detailedReport.create());
}

bool TransformJoin::isParameterShown(const TransformParameter &parameter) const
{
    int by = 0;
    if (!options().by.read(*this, &by) || JoinBy(by) == JoinBy::Key) {
        return true;
    }
    return parameter.key == options().by.key() || parameter.key == options().includeTop.key() ||
           parameter.key == options().includeBottom.key();
}

Dataset TransformJoin::execute(const QList<Dataset> &inputs)
{
    if (inputs.isEmpty() || inputs.size() > 2) {
        return {};
    }
    const Dataset &top = inputs.first();
    if (inputs.size() == 1) {
        messages().warn(tr("Connect a second dataset"));
        return top;
    }
    Settings settings;
    if (!readSettings(inputs, &settings)) {
        setStatus(Texts::noChanges());
        return {};
    }
    if (JoinBy(settings.by) == JoinBy::RowNumber) {
        return joinedByRow(top, inputs[1], settings);
    }
    if (!settings.topKey.isValid() || !settings.bottomKey.isValid()) {
        setStatus(Texts::noChanges());
        return top;
    }
    return joinedByKey(top, inputs[1], settings);
}

bool TransformJoin::readSettings(const QList<Dataset> &inputs, Settings *settings) const
{
    return options().by.read(*this, &settings->by) &&
           options().topKey.read(*this, inputs[0], &settings->topKey) &&
           options().includeTop.read(*this, &settings->includeTop) &&
           options().bottomKey.read(*this, inputs[1], &settings->bottomKey) &&
           options().includeBottom.read(*this, &settings->includeBottom) &&
           options().caseSensitive.read(*this, &settings->keys.caseSensitive) &&
           options().detailedReport.read(*this, &settings->keys.detailed);
}

Dataset TransformJoin::joinedByRow(const Dataset &top, const Dataset &bottom,
                                   const Settings &settings)
{
    const int topRows = top.rowCount();
    const int bottomRows = bottom.rowCount();
    const int common = std::min(topRows, bottomRows);
    const int usedTop = settings.includeTop ? topRows : common;
    const int usedBottom = settings.includeBottom ? bottomRows : common;
    const int joined = std::max(usedTop, usedBottom);
    Pairs pairs;
    pairs.reserve(joined);
    for (int row = 0; row < joined; ++row) {
        if (!reportRow(row, joined)) {
            return {};
        }
        pairs.append(row < usedTop ? row : noRow, row < usedBottom ? row : noRow);
    }
    tellCounts(joined, usedTop, topRows, usedBottom, bottomRows);
    return sideBySide(top, bottom, std::move(pairs));
}

Dataset TransformJoin::joinedByKey(const Dataset &top, const Dataset &bottom,
                                   const Settings &settings)
{
    const Progress progress = [this](double fraction) { return report(fraction); };
    JoinKeys keys;
    if (!keys.read(top, settings.topKey, bottom, settings.bottomKey, settings.keys,
                   progressBetween(progress, 0.0, 0.5))) {
        return {};
    }
    const int topRows = top.rowCount();
    const int bottomRows = bottom.rowCount();
    const qint64 topOnly = settings.includeTop ? topRows - keys.top().rowsMatched : 0;
    const qint64 bottomOnly = settings.includeBottom ? bottomRows - keys.bottom().rowsMatched : 0;
    const qint64 joined = keys.pairCount() + topOnly + bottomOnly;
    if (!canHold(joined)) {
        return {};
    }

    Pairs pairs;
    pairs.reserve(joined);
    if (!appendMatches(keys, topRows, &pairs)) {
        return {};
    }
    const int firstTopOnly = int(pairs.top.size());
    for (int row = 0; topOnly > 0 && row < topRows; ++row) {
        if (!keys.isTopMatched(row)) {
            pairs.append(row, noRow);
        }
    }
    const int firstBottomOnly = int(pairs.top.size());
    for (int row = 0; bottomOnly > 0 && row < bottomRows; ++row) {
        if (!keys.isBottomMatched(row)) {
            pairs.append(noRow, row);
        }
    }
    Dataset output = sideBySide(top, bottom, pairs);
    // Rows of one side alone show their key in the key columns of both.
    const ColIndex bottomKey(top.columnCount().value() + settings.bottomKey.value());
    const KeyCells topKeys{top, settings.topKey, pairs.top, bottomKey};
    const KeyCells bottomKeys{bottom, settings.bottomKey, pairs.bottom, settings.topKey};
    if (!copyKeys(topKeys, firstTopOnly, firstBottomOnly, &output) ||
        !copyKeys(bottomKeys, firstBottomOnly, int(joined), &output)) {
        return {};
    }
    tellCounts(joined, keys.top().rowsMatched + topOnly, topRows,
               keys.bottom().rowsMatched + bottomOnly, bottomRows);
    if (settings.keys.detailed) {
        tellKeys(keys);
    }
    return output;
}

bool TransformJoin::appendMatches(const JoinKeys &keys, int topRows, Pairs *pairs)
{
    // A single key of many rows may give most of the result.
    constexpr size_t mostUnreported = 1000000;
    size_t reported = 0;
    for (int row = 0; row < topRows; ++row) {
        if (row % progressInterval == 0 || pairs->top.size() - reported > mostUnreported) {
            reported = pairs->top.size();
            if (!report(0.5 + 0.4 * row / topRows)) {
                return false;
            }
        }
        for (const qint32 match : keys.matchesOf(row)) {
            pairs->append(row, match);
        }
    }
    return true;
}

bool TransformJoin::copyKeys(const KeyCells &keys, int first, int last, Dataset *output)
{
    for (int row = first; row < last; ++row) {
        if ((row - first) % progressInterval == 0 && !report(0.9)) {
            return false;
        }
        const RowIndex source(keys.rows[size_t(row)]);
        output->setCell(RowIndex(row), keys.to, keys.table.cell(source, keys.from));
    }
    return true;
}

/// Fails when the result has too many rows, before anything is made of it.
bool TransformJoin::canHold(qint64 rowCount)
{
    // Two row numbers, and those of selections that the inputs are themselves.
    constexpr double bytesPerRow = 16;
    const QString problem = rowLimitProblem(rowCount, bytesPerRow);
    if (!problem.isEmpty()) {
        messages().fail(tr("%1 Do the keys repeat in both datasets?").arg(problem));
    }
    return problem.isEmpty();
}

Dataset TransformJoin::sideBySide(const Dataset &top, const Dataset &bottom, Pairs pairs) const
{
    return Dataset::sideBySide(taken(top, std::move(pairs.top)),
                               taken(bottom, std::move(pairs.bottom)));
}

void TransformJoin::tellCounts(qint64 joined, qint64 usedTop, qint64 allTop, qint64 usedBottom,
                               qint64 allBottom)
{
    setStatus(tr("%1 %2 joined").arg(Texts::count(joined), Texts::rows(joined)));
    messages().note(tr("%1 %2 used from %3 in top dataset")
                        .arg(Texts::count(usedTop), Texts::rows(usedTop), Texts::count(allTop)));
    messages().note(
        tr("%1 %2 used from %3 in bottom dataset")
            .arg(Texts::count(usedBottom), Texts::rows(usedBottom), Texts::count(allBottom)));
}

void TransformJoin::tellKeys(const JoinKeys &keys)
{
    const JoinKeys::Side &top = keys.top();
    const JoinKeys::Side &bottom = keys.bottom();
    const auto tell = [this](const QString &text, qint64 number) {
        messages().note(text.arg(Texts::count(number)));
    };
    tell(tr("%1 rows have keys in both datasets"), keys.pairCount());
    tell(tr("%1 unique keys appear in both datasets"), keys.keysInBoth());
    tell(tr("%1 top only"), top.keysAlone);
    tell(tr("%1 bottom only"), bottom.keysAlone);
    tell(tr("%1 key(s) in more than one row of top dataset"), top.keysRepeated);
    tell(tr("%1 key(s) in more than one row of bottom dataset"), bottom.keysRepeated);
    tell(tr("%1 row(s) with leading or trailing whitespace in the key in top dataset"),
         top.rowsWithBlanks);
    tell(tr("%1 row(s) with leading or trailing whitespace in the key in bottom dataset"),
         bottom.rowsWithBlanks);
}
