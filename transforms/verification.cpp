#include "verification.h"

#include "codepoints.h"
#include "messages.h"
#include "numberreader.h"
#include "regexreplacement.h"
#include "texts.h"
#include "transformsettings.h"
#include "utf8.h"

#include <QCoreApplication>
#include <QSet>
#include <optional>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("Verification", text);
}

/// A cell as messages show it: of a long one the beginning.
QString shortened(std::string_view cell)
{
    constexpr int mostCharacters = 100;
    const QString text = Utf8::decoded(cell.substr(0, 8 * mostCharacters));
    const int end = CodePoints::placeOf(text, mostCharacters);
    return end < text.size() ? text.left(end) + QChar(0x2026) : text;
}

/// What a cell is when it is put in order with its neighbour: as in comparisons with a constant.
struct OrderedCell
{
    QDate date;
    double number = 0;
    bool isNumber = false;
    QString text;

    OrderedCell() = default;
    OrderedCell(std::string_view cell, const std::optional<DatePattern> &pattern,
                const NumberReader &numbers)
        : text(Utf8::decoded(cell))
    {
        if (pattern) {
            date = pattern->read(cell);
        }
        number = numbers.toReal(cell, false, false, &isNumber);
    }

    int compare(const OrderedCell &other, Qt::CaseSensitivity sensitivity) const
    {
        if (date.isValid() && other.date.isValid()) {
            return date < other.date ? -1 : date > other.date ? 1 : 0;
        }
        if (isNumber && other.isNumber) {
            return number < other.number ? -1 : number > other.number ? 1 : 0;
        }
        return text.compare(other.text, sensitivity);
    }
};

} // namespace

Verification::Verification(const Dataset &table, bool caseSensitive, int mostListed)
    : m_table(table)
    , m_caseSensitive(caseSensitive)
    , m_mostListed(mostListed)
    , m_names(table.columnNames())
    , m_dateFormats(table, TransformSettings::current().dateFormats)
    , m_stateOfRow(size_t(table.rowCount()), 0)
{
}

bool Verification::run(const QList<VerifyRule> &rules, const Progress &progress, Messages *messages)
{
    m_progress = progress;
    m_messages = messages;
    for (int i = 0; i < rules.size(); ++i) {
        m_done = double(i) / rules.size();
        m_share = 1.0 / rules.size();
        m_rule = quint32(i + 1);
        const auto known = VerifyRules::fromNumber(rules[i].rule);
        if (!known) {
            m_ruleText = translated(QT_TRANSLATE_NOOP("Verification", "Unknown rule %1"))
                             .arg(QString::number(rules[i].rule));
            failGenerally(rules[i].column, rules[i].value);
            continue;
        }
        m_ruleText = VerifyRules::text(*known, rules[i].value);
        if (!check(rules[i], *known)) {
            return false;
        }
    }
    return true;
}

bool Verification::check(const VerifyRule &rule, VerifyCheck check)
{
    if (VerifyRules::scope(check) == VerifyRules::Scope::Table) {
        return checkTable(rule, check);
    }
    if (VerifyRules::isRegex(check)) {
        // Tried as written first, so that a message shows what the user typed.
        const auto regex = Regex::compiled(rule.value, m_caseSensitive, m_messages);
        if (!regex) {
            return false;
        }
        m_regex = *regex;
        m_regex.setPattern(QRegularExpression::anchoredPattern(rule.value));
    }
    if (!rule.column.isEmpty()) {
        const ColIndex column = columnNamed(rule.column);
        if (!column.isValid()) {
            failGenerally(rule.column, QString());
            return true;
        }
        return checkColumn(rule, check, column);
    }
    const int columns = m_table.columnCount().value();
    m_share /= qMax(1, columns);
    for (ColIndex column(0); column < m_table.columnCount(); ++column) {
        if (!checkColumn(rule, check, column)) {
            return false;
        }
        m_done += m_share;
    }
    return true;
}

bool Verification::checkColumn(const VerifyRule &rule, VerifyCheck check, ColIndex column)
{
    switch (check) {
    case VerifyCheck::Unique:
        return checkUnique(column);
    case VerifyCheck::Ascending:
    case VerifyCheck::Descending:
        return checkOrder(column, check == VerifyCheck::Ascending);
    case VerifyCheck::Constant:
        return checkConstant(column);
    case VerifyCheck::SameAsColumn:
        return checkSame(column, rule.value);
    default:
        return checkCells(rule, check, column);
    }
}

bool Verification::checkCells(const VerifyRule &rule, VerifyCheck check, ColIndex column)
{
    const QString name = m_names[column.value()];
    const bool needsPattern = VerifyRules::readsDates(check) || check == VerifyCheck::Text ||
                              check == VerifyCheck::OneOf || check == VerifyCheck::NotOneOf;
    const QString pattern = needsPattern ? m_dateFormats.of(column) : QString();
    const CellRule test(check, rule.value, pattern, m_caseSensitive, m_regex);
    if (!test.isValid()) {
        failGenerally(name, rule.value);
        return true;
    }
    enum Verdict : quint8 { Unknown, Fails, Passes };
    const ColumnReader cells = m_table.columnReader(column);
    std::vector<Verdict> verdicts(cells.isPooled() ? cells.codeCount() : 0, Unknown);
    for (int row = 0; row < m_table.rowCount(); ++row) {
        if (!report(row)) {
            return false;
        }
        bool passes = false;
        if (verdicts.empty()) {
            passes = test.passes(cells.utf8(row));
        } else {
            Verdict &verdict = verdicts[cells.code(row)];
            if (verdict == Unknown) {
                verdict = test.passes(cells.utf8(row)) ? Passes : Fails;
            }
            passes = verdict == Passes;
        }
        if (!passes) {
            fail(row, name, cells.utf8(row));
        }
    }
    if (test.regexFailures() > 0) {
        Regex::tellFailures(rule.value, test.regexFailures(), m_messages);
    }
    return true;
}

bool Verification::checkUnique(ColIndex column)
{
    Numbering numbering;
    ValueNumbers numbers;
    if (!numberValues(column, &numbering, &numbers)) {
        return false;
    }
    std::vector<quint32> uses(numbering.size(), 0);
    for (const quint32 number : numbers) {
        ++uses[number];
    }
    const ColumnReader cells = m_table.columnReader(column);
    for (int row = 0; row < m_table.rowCount(); ++row) {
        if (uses[numbers[size_t(row)]] > 1) {
            fail(row, m_names[column.value()], cells.utf8(row));
        }
    }
    return true;
}

bool Verification::checkOrder(ColIndex column, bool ascending)
{
    const QString patternText = m_dateFormats.of(column);
    std::optional<DatePattern> pattern;
    if (!patternText.isEmpty()) {
        pattern.emplace(patternText);
    }
    const NumberReader numbers;
    const Qt::CaseSensitivity sensitivity =
        m_caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    const ColumnReader cells = m_table.columnReader(column);
    OrderedCell previous;
    for (int row = 0; row < m_table.rowCount(); ++row) {
        if (!report(row)) {
            return false;
        }
        if (row > 0 && cells.code(row) == cells.code(row - 1)) {
            continue;
        }
        OrderedCell current(cells.utf8(row), pattern, numbers);
        const int order = row == 0 ? 0 : current.compare(previous, sensitivity);
        if (ascending ? order < 0 : order > 0) {
            fail(row, m_names[column.value()], cells.utf8(row));
        }
        previous = std::move(current);
    }
    return true;
}

bool Verification::checkConstant(ColIndex column)
{
    Numbering numbering;
    ValueNumbers numbers;
    if (!numberValues(column, &numbering, &numbers)) {
        return false;
    }
    const ColumnReader cells = m_table.columnReader(column);
    for (int row = 1; row < m_table.rowCount(); ++row) {
        if (numbers[size_t(row)] != numbers.front()) {
            fail(row, m_names[column.value()], cells.utf8(row));
        }
    }
    return true;
}

bool Verification::checkSame(ColIndex column, const QString &otherName)
{
    const ColIndex other = columnNamed(otherName);
    if (!other.isValid()) {
        failGenerally(m_names[column.value()], otherName);
        return true;
    }
    Numbering numbering;
    ValueNumbers numbers;
    ValueNumbers otherNumbers;
    if (!numberValues(column, &numbering, &numbers) ||
        !numberValues(other, &numbering, &otherNumbers)) {
        return false;
    }
    const ColumnReader cells = m_table.columnReader(column);
    for (int row = 0; row < m_table.rowCount(); ++row) {
        if (numbers[size_t(row)] != otherNumbers[size_t(row)]) {
            fail(row, m_names[column.value()], cells.utf8(row));
        }
    }
    return true;
}

bool Verification::checkTable(const VerifyRule &rule, VerifyCheck check)
{
    switch (check) {
    case VerifyCheck::RowsAtLeast:
    case VerifyCheck::RowsAtMost:
        checkAmount(m_table.rowCount(), rule.value, check);
        return true;
    case VerifyCheck::ColumnsEqual:
        checkAmount(m_table.columnCount().value(), rule.value, check);
        return true;
    case VerifyCheck::ColumnExists: {
        const Qt::CaseSensitivity sensitivity =
            m_caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
        if (!m_names.contains(rule.value, sensitivity)) {
            failGenerally(QString(), rule.value);
        }
        return true;
    }
    case VerifyCheck::NoDuplicateRows:
        return checkDuplicateRows();
    default:
        checkDuplicateNames();
        return true;
    }
}

void Verification::checkAmount(int amount, const QString &value, VerifyCheck check)
{
    const auto wanted = VerifyRules::wholeValue(value);
    const bool passes = wanted && (check == VerifyCheck::RowsAtLeast  ? amount >= *wanted
                                   : check == VerifyCheck::RowsAtMost ? amount <= *wanted
                                                                      : amount == *wanted);
    if (!passes) {
        failGenerally(QString(), QString::number(amount));
    }
}

bool Verification::checkDuplicateRows()
{
    // Rows are grouped by their first column, the groups by the second, and so on: no text of a
    // whole row is ever made.
    const int columns = m_table.columnCount().value();
    ValueNumbers groups(size_t(m_table.rowCount()), 0);
    size_t groupCount = 1;
    m_share /= qMax(1, columns);
    for (ColIndex column(0); column < m_table.columnCount(); ++column) {
        Numbering numbering;
        ValueNumbers numbers;
        if (!numberValues(column, &numbering, &numbers)) {
            return false;
        }
        std::unordered_map<quint64, quint32> pairs;
        for (size_t row = 0; row < groups.size(); ++row) {
            const quint64 pair = quint64(groups[row]) << 32 | numbers[row];
            groups[row] = pairs.emplace(pair, quint32(pairs.size())).first->second;
        }
        groupCount = pairs.size();
        m_done += m_share;
    }
    std::vector<quint32> uses(groupCount, 0);
    for (const quint32 group : groups) {
        ++uses[group];
    }
    for (int row = 0; row < m_table.rowCount(); ++row) {
        if (uses[groups[size_t(row)]] > 1) {
            fail(row, QStringLiteral("-"), m_table.utf8(RowIndex(row), ColIndex(0)));
        }
    }
    return true;
}

void Verification::checkDuplicateNames()
{
    QSet<QString> seen;
    for (const QString &name : qAsConst(m_names)) {
        const QString key = m_caseSensitive ? name : name.toLower();
        if (seen.contains(key)) {
            failGenerally(name, name);
        }
        seen.insert(key);
    }
}

bool Verification::numberValues(ColIndex column, Numbering *numbering, ValueNumbers *numbers)
{
    constexpr quint32 unknown = ~quint32(0);
    const ColumnReader cells = m_table.columnReader(column);
    std::vector<quint32> ofCode(cells.isPooled() ? cells.codeCount() : 0, unknown);
    numbers->reserve(size_t(m_table.rowCount()));
    std::string key;
    for (int row = 0; row < m_table.rowCount(); ++row) {
        if (!report(row)) {
            return false;
        }
        const auto code = cells.code(row);
        if (!ofCode.empty() && ofCode[code] != unknown) {
            numbers->push_back(ofCode[code]);
            continue;
        }
        key = cells.utf8(row);
        if (!m_caseSensitive) {
            key = Utf8::decoded(key).toLower().toStdString();
        }
        const quint32 number = numbering->emplace(key, quint32(numbering->size())).first->second;
        if (!ofCode.empty()) {
            ofCode[code] = number;
        }
        numbers->push_back(number);
    }
    return true;
}

ColIndex Verification::columnNamed(const QString &name) const
{
    return ColIndex(m_names.indexOf(name));
}

void Verification::fail(int row, const QString &column, std::string_view cell)
{
    ++m_failureCount;
    if (m_listed.size() < m_mostListed) {
        m_listed.append(
            translated(QT_TRANSLATE_NOOP("Verification", "Row %1, column '%2': '%3' fails '%4'."))
                .arg(QString::number(qint64(row) + 1), column, shortened(cell), m_ruleText));
    }
    quint32 &state = m_stateOfRow[size_t(row)];
    if (m_lastRule[state] == m_rule) {
        return;
    }
    const auto found = m_next.emplace(std::make_pair(state, m_rule), quint32(m_states.size()));
    if (found.second) {
        m_states.push_back(state == 0 ? m_ruleText
                                      : m_states[state] + QStringLiteral("; ") + m_ruleText);
        m_lastRule.push_back(m_rule);
    }
    state = found.first->second;
}

void Verification::failGenerally(const QString &column, const QString &value)
{
    ++m_failureCount;
    ++m_generalCount;
    if (m_listed.size() >= m_mostListed && m_generalListed.size() >= m_mostListed) {
        return;
    }
    const QString dash = QStringLiteral("-");
    const QString text =
        translated(QT_TRANSLATE_NOOP("Verification", "Row %1, column '%2': '%3' fails '%4'."))
            .arg(dash, column.isEmpty() ? dash : column, value, m_ruleText);
    if (m_listed.size() < m_mostListed) {
        m_listed.append(text);
    }
    if (m_generalListed.size() < m_mostListed) {
        m_generalListed.append(text);
    }
}

bool Verification::report(int row)
{
    return row % progressInterval != 0 ||
           reportProgress(m_progress, m_done + m_share * row / qMax(1, m_table.rowCount()));
}
