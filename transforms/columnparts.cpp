#include "columnparts.h"

#include <QHash>
#include <algorithm>
#include <map>

namespace {

/// The digits of a name: those of "Item (2)" are a list of one number.
using Numbers = QStringList;

struct NumberedName
{
    QString name; ///< without digits and the separators beside them
    Numbers numbers;
};

bool isSeparator(QChar c)
{
    return QStringLiteral(" _-.()").contains(c);
}

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

NumberedName cut(const QString &name)
{
    NumberedName result;
    for (int i = 0; i < name.size();) {
        if (!isDigit(name[i])) {
            result.name += name[i++];
            continue;
        }
        while (!result.name.isEmpty() && isSeparator(result.name.back())) {
            result.name.chop(1);
        }
        int first = i;
        while (i < name.size() && isDigit(name[i])) {
            ++i;
        }
        while (first < i - 1 && name[first] == QLatin1Char('0')) {
            ++first;
        }
        result.numbers.append(name.mid(first, i - first));
        while (i < name.size() && isSeparator(name[i])) {
            ++i;
        }
    }
    return result;
}

/// By value, however many digits; a name without a number comes first.
bool isBefore(const Numbers &a, const Numbers &b)
{
    return std::lexicographical_compare(
        a.begin(), a.end(), b.begin(), b.end(), [](const QString &x, const QString &y) {
            return x.size() != y.size() ? x.size() < y.size() : x < y;
        });
}

struct Candidate
{
    QString name;
    std::vector<std::pair<Numbers, ColIndex>> columns;
};

/// Candidates of a single column are no groups.
std::vector<Candidate> repeated(std::vector<Candidate> candidates)
{
    candidates.erase(std::remove_if(candidates.begin(), candidates.end(),
                                    [](const Candidate &each) { return each.columns.size() < 2; }),
                     candidates.end());
    return candidates;
}

ColumnParts automaticParts(const Dataset &table)
{
    std::vector<Candidate> candidates;
    QHash<QString, int> places;
    for (ColIndex column(0); column < table.columnCount(); ++column) {
        const NumberedName cutName = cut(table.columnName(column));
        const auto place = places.find(cutName.name);
        const int at = place == places.end() ? int(candidates.size()) : *place;
        if (place == places.end()) {
            places.insert(cutName.name, at);
            candidates.push_back({cutName.name, {}});
        }
        candidates[size_t(at)].columns.emplace_back(cutName.numbers, column);
    }
    candidates = repeated(std::move(candidates));
    // A number that a name has twice makes as many parts.
    std::map<Numbers, size_t, bool (*)(const Numbers &, const Numbers &)> most(isBefore);
    for (Candidate &each : candidates) {
        std::stable_sort(each.columns.begin(), each.columns.end(),
                         [](const auto &a, const auto &b) { return isBefore(a.first, b.first); });
        std::map<Numbers, size_t, bool (*)(const Numbers &, const Numbers &)> counts(isBefore);
        for (const auto &column : each.columns) {
            size_t &largest = most[column.first];
            largest = std::max(largest, ++counts[column.first]);
        }
    }
    size_t partCount = 0;
    for (auto &[numbers, count] : most) {
        const size_t here = count;
        count = partCount;
        partCount += here;
    }
    ColumnParts parts;
    parts.partCount = std::max(1, int(partCount));
    for (const Candidate &each : candidates) {
        ColumnParts::Group group;
        group.place = ColIndex(each.columns.front().second);
        group.columns.resize(partCount);
        size_t repeat = 0;
        for (size_t i = 0; i < each.columns.size(); ++i) {
            repeat = i > 0 && each.columns[i].first == each.columns[i - 1].first ? repeat + 1 : 0;
            group.columns[most[each.columns[i].first] + repeat] = each.columns[i].second;
            group.place = std::min(group.place, each.columns[i].second);
        }
        group.name = each.name.isEmpty() ? table.columnName(group.place) : each.name;
        parts.groups.push_back(std::move(group));
    }
    return parts;
}

ColumnParts matchingParts(const Dataset &table)
{
    std::vector<Candidate> candidates;
    QHash<QString, int> places;
    for (ColIndex column(0); column < table.columnCount(); ++column) {
        const QString name = table.columnName(column);
        const QString key = name.toLower();
        if (!places.contains(key)) {
            places.insert(key, int(candidates.size()));
            candidates.push_back({name, {}});
        }
        candidates[size_t(places[key])].columns.emplace_back(Numbers(), column);
    }
    ColumnParts parts;
    for (const Candidate &each : repeated(std::move(candidates))) {
        ColumnParts::Group group;
        group.name = each.name;
        group.place = each.columns.front().second;
        for (const auto &column : each.columns) {
            group.columns.push_back(column.second);
        }
        parts.partCount = std::max(parts.partCount, int(group.columns.size()));
        parts.groups.push_back(std::move(group));
    }
    return parts;
}

ColumnParts fixedParts(const SplitRowsSpec &spec, const Dataset &table)
{
    ColumnParts parts;
    const int columns = table.columnCount().value();
    const int first = spec.first.isBound() ? std::min(spec.first.number, columns) : 0;
    const int width = spec.width > 0 ? std::min(spec.width, columns - first) : columns - first;
    if (spec.times <= 1 || width == 0) {
        return parts;
    }
    parts.partCount = spec.times;
    const int filled =
        int(std::min<qint64>(spec.times, (qint64(columns) - first + width - 1) / width));
    for (int i = 0; i < width; ++i) {
        ColumnParts::Group group;
        group.place = ColIndex(first + i);
        group.name = table.columnName(group.place);
        for (int part = 0; part < filled; ++part) {
            const int column = first + part * width + i;
            group.columns.push_back(column < columns ? ColIndex(column) : ColIndex());
        }
        parts.groups.push_back(std::move(group));
    }
    parts.missingCells =
        std::max<qint64>(0, qint64(spec.times) * width - (qint64(columns) - first));
    return parts;
}

} // namespace

ColumnParts findColumnParts(const SplitRowsSpec &spec, const Dataset &table)
{
    switch (spec.mode) {
    case SplitRowsSpec::Mode::Automatic:
        return automaticParts(table);
    case SplitRowsSpec::Mode::Matching:
        return matchingParts(table);
    case SplitRowsSpec::Mode::Fixed:
        break;
    }
    return fixedParts(spec, table);
}
