#include "termtest.h"

#include "messages.h"
#include "texts.h"
#include "valueinterpretation.h"

#include <QCoreApplication>

namespace {

bool comparesOrder(ComparisonOperator op)
{
    switch (op) {
    case ComparisonOperator::Equal:
    case ComparisonOperator::NotEqual:
    case ComparisonOperator::Greater:
    case ComparisonOperator::Less:
    case ComparisonOperator::GreaterEqual:
    case ComparisonOperator::LessEqual:
        return true;
    default:
        return false;
    }
}

std::vector<ColIndex> columnsOf(const FilterTerm &term, const Dataset &table)
{
    std::vector<ColIndex> columns;
    if (term.column.isEmpty()) {
        for (ColIndex column(0); column < table.columnCount(); ++column) {
            columns.push_back(column);
        }
    } else if (const ColIndex column = table.columnIndex(term.column); column.isValid()) {
        columns.push_back(column);
    }
    return columns;
}

/// Remembering costs a byte a code, also for codes that no row holds any more.
bool isWorthRemembering(const ColumnReader &cells, int rowCount)
{
    constexpr quint32 always = 4096;
    return cells.isPooled() && cells.codeCount() <= std::max(always, quint32(rowCount));
}

QString translated(const char *text)
{
    return QCoreApplication::translate("Transform", text);
}

} // namespace

ColumnDateFormats::ColumnDateFormats(const Dataset &table, const QStringList &patterns)
    : m_table(table)
    , m_patterns(patterns)
{
}

QString ColumnDateFormats::of(ColIndex column)
{
    const auto known = m_found.find(column.value());
    if (known != m_found.end()) {
        return known->second;
    }
    QString pattern = detectDateFormat(m_table, column, m_patterns).pattern;
    m_found.emplace(column.value(), pattern);
    return pattern;
}

bool ColumnDateFormats::anyReads(const QString &text) const
{
    return toDate(QStringView(text), m_patterns).isValid();
}

TermTest::TermTest(const FilterTerm &term, const Dataset &table, ColumnDateFormats *dateFormats,
                   bool caseSensitive)
    : m_term(term)
    , m_template(term.value, table)
    , m_value(term.value)
{
    // Without a date to compare with, no column need be searched for dates.
    const bool usesDates =
        comparesOrder(term.op) && (m_template.hasVariables() || dateFormats->anyReads(term.value));
    for (const ColIndex column : columnsOf(term, table)) {
        const QString pattern = usesDates ? dateFormats->of(column) : QString();
        const auto [test, isNew] = m_tests.try_emplace(pattern, term.op, pattern, caseSensitive);
        if (isNew) {
            test->second.setValue(m_value);
        }
        Column tested{table.columnReader(column), &test->second, {}};
        if (!m_template.hasVariables() && isWorthRemembering(tested.cells, table.rowCount())) {
            tested.verdicts.resize(tested.cells.codeCount(), Unknown);
        }
        m_columns.push_back(std::move(tested));
    }
}

bool TermTest::holds(int row)
{
    if (m_template.hasVariables()) {
        expandValue(row);
    }
    for (Column &column : m_columns) {
        if (columnHolds(&column, row)) {
            return true;
        }
    }
    return false;
}

bool TermTest::columnHolds(Column *column, int row)
{
    const ColumnReader::Code code = column->cells.code(row);
    if (column->verdicts.empty()) {
        return column->test->holds(column->cells.utf8OfCode(code));
    }
    Verdict &verdict = column->verdicts[code];
    if (verdict == Unknown) {
        verdict = column->test->holds(column->cells.utf8OfCode(code)) ? Yes : No;
    }
    return verdict == Yes;
}

void TermTest::expandValue(int row)
{
    QString value = m_template.expanded(row);
    if (value == m_value) {
        return;
    }
    m_value = std::move(value);
    for (auto &[pattern, test] : m_tests) {
        test.setValue(m_value);
    }
}

void TermTest::report(Messages *messages) const
{
    int failures = 0;
    for (const auto &[pattern, test] : m_tests) {
        failures += test.regexFailures();
        const QRegularExpression *const invalid = test.invalidRegex();
        if (invalid && !m_template.hasVariables()) {
            messages->note(translated("Regular expression '%1' is invalid: %2 at position %3.")
                               .arg(invalid->pattern(), invalid->errorString(),
                                    Texts::count(invalid->patternErrorOffset())));
        }
    }
    if (failures > 0) {
        messages->warn(
            translated("Regular expression '%1' needs too many steps for %2 value(s), which count "
                       "as not matching.")
                .arg(m_term.value, Texts::count(failures)));
    }
}
