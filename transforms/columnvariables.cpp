#include "columnvariables.h"

#include <algorithm>

namespace {

const QLatin1String opening("$(");

} // namespace

ColumnNames::ColumnNames(const Dataset &table)
    : m_count(table.columnCount().value())
{
    for (int i = m_count - 1; i >= 0; --i) {
        const QString name = table.columnName(ColIndex(i));
        m_numbers.insert(name, i);
        m_longest = std::max(m_longest, name.size());
    }
}

int ColumnNames::find(const QString &text) const
{
    const bool isNumber = !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar c) {
        return c >= QLatin1Char('0') && c <= QLatin1Char('9');
    });
    const int number = isNumber ? text.toInt() : 0;
    return number >= 1 && number <= m_count ? number - 1 : m_numbers.value(text, -1);
}

int ColumnNames::findAt(const QString &text, int from, int *end) const
{
    constexpr int digitsOfNumber = 10;
    const int last = std::min(text.size(), from + std::max(m_longest, digitsOfNumber) + 1);
    for (int at = from; at < last; ++at) {
        if (text[at] == QLatin1Char(')')) {
            const int column = find(text.mid(from, at - from));
            if (column >= 0) {
                *end = at + 1;
                return column;
            }
        }
    }
    return -1;
}

void ColumnNames::addUnknown(const QString &text, int from, QStringList *unknown)
{
    const int end = text.indexOf(QLatin1Char(')'), from);
    if (end < 0) {
        return;
    }
    const QString inside = text.mid(from, end - from);
    if (!unknown->contains(inside)) {
        unknown->append(inside);
    }
}

ColumnTemplate::ColumnTemplate(const QString &text, const Dataset &table)
    : m_textAfter(text)
{
    int at = text.indexOf(opening);
    if (at < 0) {
        return;
    }
    const ColumnNames names(table);
    int done = 0;
    while (at >= 0) {
        int end = 0;
        const int column = names.findAt(text, at + opening.size(), &end);
        if (column >= 0) {
            m_variables.push_back(
                {text.mid(done, at - done), table.columnReader(ColIndex(column))});
            done = end;
        } else {
            ColumnNames::addUnknown(text, at + opening.size(), &m_unknown);
        }
        at = text.indexOf(opening, column >= 0 ? end : at + opening.size());
    }
    m_textAfter = text.mid(done);
}

QString ColumnTemplate::expanded(int row) const
{
    QString result;
    for (const Variable &variable : m_variables) {
        result += variable.textBefore;
        result += variable.column.text(row);
    }
    result += m_textAfter;
    return result;
}

QString ColumnTemplate::expanded(int row,
                                 const std::function<QString(const QString &)> &changed) const
{
    QString result;
    for (const Variable &variable : m_variables) {
        result += variable.textBefore;
        result += changed(variable.column.text(row));
    }
    result += m_textAfter;
    return result;
}

bool ColumnTemplate::hasEmptyValue(int row) const
{
    return std::any_of(m_variables.begin(), m_variables.end(), [row](const Variable &variable) {
        return variable.column.utf8(row).empty();
    });
}

QString ColumnTemplate::variable(ColIndex column)
{
    return QStringLiteral("$(%1)").arg(column.value() + 1);
}
