#include "parametercodec.h"

#include "listcodec.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace {

// Markers cannot be mistaken for data: in encoded data an asterisk is written as %2A.
const QLatin1String startIf("*StartIf*");
const QLatin1String endIf("*EndIf*");
const QLatin1String noRename("*NORENAME*");

constexpr int intMaximum = std::numeric_limits<int>::max();
constexpr int termLength = 3;

const QLatin1String splitRowsModes[] = {QLatin1String("fixed"), QLatin1String("automatic"),
                                        QLatin1String("matching")};
const QLatin1String replaceKinds[] = {QLatin1String("text"), QLatin1String("word"),
                                      QLatin1String("cell"), QLatin1String("regex")};

QString flag(bool value)
{
    return value ? QStringLiteral("1") : QStringLiteral("0");
}

bool readFlag(const QString &text, bool *value)
{
    *value = text == QLatin1String("1");
    return *value || text == QLatin1String("0");
}

template <class Enum, size_t size>
bool readWord(const QString &text, const QLatin1String (&words)[size], Enum *value)
{
    const auto found = std::find(std::begin(words), std::end(words), text);
    *value = Enum(found - std::begin(words));
    return found != std::end(words);
}

/// A list whose only item is an empty text is written like an empty list.
QStringList itemsOf(const QString &text, int leastItems)
{
    QStringList items = ListCodec::decoded(text);
    if (items.isEmpty() && leastItems == 1) {
        items.append(QString());
    }
    return items;
}

void appendTerms(const QList<FilterTerm> &terms, QStringList *items)
{
    for (const FilterTerm &term : terms) {
        items->append({term.column, QString::number(int(term.op)), term.value});
    }
}

bool readTerms(const QStringList &items, int from, QList<FilterTerm> *terms)
{
    if (items.size() < from || (items.size() - from) % termLength != 0) {
        return false;
    }
    for (int i = from; i < items.size(); i += termLength) {
        FilterTerm term;
        term.column = items[i];
        bool ok = false;
        const int op = items[i + 1].toInt(&ok);
        if (!ok) {
            return false;
        }
        if (op >= 0 && op <= int(ComparisonOperator::IsNotEmpty)) {
            term.op = ComparisonOperator(op);
        }
        term.value = items[i + 2];
        terms->append(term);
    }
    return true;
}

} // namespace

namespace ParameterCodec {

bool read(const QString &text, int minimum, int maximum, int *value)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    if (!ok || number < minimum || number > maximum) {
        return false;
    }
    *value = number;
    return true;
}

QString write(const ColumnRef &column)
{
    return QString::number(column.number + 1);
}

bool read(const QString &text, ColumnRef *column)
{
    int number = 0;
    if (!read(text, 0, intMaximum, &number)) {
        return false;
    }
    *column = ColumnRef(number - 1);
    return true;
}

QString write(const QList<ColumnRef> &columns)
{
    QStringList items;
    for (const ColumnRef &column : columns) {
        items.append(write(column));
    }
    return ListCodec::encoded(items);
}

bool read(const QString &text, QList<ColumnRef> *columns)
{
    QList<ColumnRef> result;
    const QStringList items = ListCodec::decoded(text);
    for (const QString &item : items) {
        result.append(ColumnRef());
        if (!read(item, &result.last())) {
            return false;
        }
    }
    *columns = result;
    return true;
}

QString write(const ColumnChoice &choice)
{
    return write(choice.checked);
}

bool read(const QString &text, ColumnChoice *choice)
{
    ColumnChoice result;
    result.everything = false;
    if (!read(text, &result.checked)) {
        return false;
    }
    *choice = result;
    return true;
}

QString write(const QList<SortKey> &keys)
{
    QStringList items;
    for (const SortKey &key : keys) {
        const int number = key.column.number + 1;
        items.append(QString::number(key.ascending ? number : -number));
    }
    return ListCodec::encoded(items);
}

bool read(const QString &text, QList<SortKey> *keys)
{
    QList<SortKey> result;
    const QStringList items = ListCodec::decoded(text);
    for (const QString &item : items) {
        int number = 0;
        if (!read(item, -intMaximum, intMaximum, &number)) {
            return false;
        }
        SortKey key;
        key.column = ColumnRef(std::abs(number) - 1);
        key.ascending = number >= 0;
        result.append(key);
    }
    *keys = result;
    return true;
}

QString write(const FilterSpec &spec)
{
    QStringList items{flag(spec.keep), flag(spec.matchAll)};
    appendTerms(spec.terms, &items);
    return ListCodec::encoded(items);
}

bool read(const QString &text, FilterSpec *spec)
{
    FilterSpec result;
    const QStringList items = ListCodec::decoded(text);
    if (items.size() < 2 || !readFlag(items[0], &result.keep) ||
        !readFlag(items[1], &result.matchAll) || !readTerms(items, 2, &result.terms)) {
        return false;
    }
    *spec = result;
    return true;
}

QString write(const IfSpec &spec)
{
    QStringList items;
    for (const IfBranch &branch : spec.branches) {
        QStringList branchItems{branch.thenValue};
        appendTerms(branch.terms, &branchItems);
        items.append(ListCodec::encoded(branchItems));
    }
    items.append(spec.elseValue);
    return startIf + ListCodec::encoded(items) + endIf;
}

bool read(const QString &text, IfSpec *spec)
{
    if (text.size() < startIf.size() + endIf.size() || !text.startsWith(startIf) ||
        !text.endsWith(endIf)) {
        return false;
    }
    const QString inner = text.mid(startIf.size(), text.size() - startIf.size() - endIf.size());
    QStringList items = itemsOf(inner, 1);
    IfSpec result;
    result.elseValue = items.takeLast();
    for (const QString &item : std::as_const(items)) {
        const QStringList branchItems = itemsOf(item, 1);
        IfBranch branch;
        branch.thenValue = branchItems.first();
        if (!readTerms(branchItems, 1, &branch.terms)) {
            return false;
        }
        result.branches.append(branch);
    }
    *spec = result;
    return true;
}

QString write(const QList<ColumnRename> &renames)
{
    QStringList items;
    for (const ColumnRename &rename : renames) {
        items.append(rename.renamed ? ListCodec::encodedText(rename.newName) : QString(noRename));
    }
    return items.join(ListCodec::separator);
}

bool read(const QString &text, QList<ColumnRename> *renames)
{
    QList<ColumnRename> result;
    const QStringList items = text.isEmpty() ? QStringList() : text.split(ListCodec::separator);
    for (const QString &item : items) {
        ColumnRename rename;
        rename.column = ColumnRef(result.size());
        rename.renamed = item != noRename;
        if (rename.renamed) {
            rename.newName = ListCodec::decodedText(item);
        }
        result.append(rename);
    }
    *renames = result;
    return true;
}

QString write(const SplitRowsSpec &spec)
{
    return ListCodec::encoded({QString(splitRowsModes[int(spec.mode)]), write(spec.first),
                               QString::number(spec.width), QString::number(spec.times)});
}

bool read(const QString &text, SplitRowsSpec *spec)
{
    SplitRowsSpec result;
    const QStringList items = ListCodec::decoded(text);
    if (items.size() != 4 || !readWord(items[0], splitRowsModes, &result.mode) ||
        !read(items[1], &result.first) || !read(items[2], 0, intMaximum, &result.width) ||
        !read(items[3], 1, intMaximum, &result.times)) {
        return false;
    }
    *spec = result;
    return true;
}

QString write(const QList<UniqueAction> &actions)
{
    QStringList items;
    for (const UniqueAction &action : actions) {
        items.append({write(action.column), action.action});
    }
    return ListCodec::encoded(items);
}

bool read(const QString &text, QList<UniqueAction> *actions)
{
    const QStringList items = ListCodec::decoded(text);
    if (items.size() % 2 != 0) {
        return false;
    }
    QList<UniqueAction> result;
    for (int i = 0; i < items.size(); i += 2) {
        UniqueAction action;
        if (!read(items[i], &action.column)) {
            return false;
        }
        action.action = items[i + 1];
        result.append(action);
    }
    *actions = result;
    return true;
}

QString write(const QList<ReplaceTerm> &terms)
{
    QStringList items;
    for (const ReplaceTerm &term : terms) {
        items.append({term.find, term.replace, QString(replaceKinds[int(term.kind)])});
    }
    return ListCodec::encoded(items);
}

bool read(const QString &text, QList<ReplaceTerm> *terms)
{
    const QStringList items = ListCodec::decoded(text);
    if (items.size() % termLength != 0) {
        return false;
    }
    QList<ReplaceTerm> result;
    for (int i = 0; i < items.size(); i += termLength) {
        ReplaceTerm term;
        term.find = items[i];
        term.replace = items[i + 1];
        if (!readWord(items[i + 2], replaceKinds, &term.kind)) {
            return false;
        }
        result.append(term);
    }
    *terms = result;
    return true;
}

QString write(const QList<VerifyRule> &rules)
{
    QStringList items;
    for (const VerifyRule &rule : rules) {
        items.append({rule.column, QString::number(rule.rule), rule.value});
    }
    return ListCodec::encoded(items);
}

bool read(const QString &text, QList<VerifyRule> *rules)
{
    const QStringList items = ListCodec::decoded(text);
    if (items.size() % termLength != 0) {
        return false;
    }
    QList<VerifyRule> result;
    for (int i = 0; i < items.size(); i += termLength) {
        VerifyRule rule;
        rule.column = items[i];
        rule.value = items[i + 2];
        if (!read(items[i + 1], 0, intMaximum, &rule.rule)) {
            return false;
        }
        result.append(rule);
    }
    *rules = result;
    return true;
}

} // namespace ParameterCodec
