#include "parametercolumns.h"

#include "node.h"
#include "parametersummary.h"
#include "transformsettings.h"
#include "valuekinds.h"

#include <QCoreApplication>
#include <QSet>

namespace {

constexpr int rowsSampled = 20;
/// Hints for more columns would take too long for an answer to a click.
constexpr int columnsSampled = 200;

QString translated(const char *text)
{
    return QCoreApplication::translate("ParameterColumns", text);
}

/// The kind of all values of a sample.
ValueKind commonKind(const ValueKinds &kinds, const QStringList &values)
{
    KindCounts counts;
    for (const QString &value : values) {
        counts.add(kinds.kind(value.toStdString()));
    }
    for (const ValueKind kind : {ValueKind::Integer, ValueKind::Date, ValueKind::Boolean}) {
        if (counts.of(kind) == counts.total()) {
            return kind;
        }
    }
    return counts.numbers() == counts.total() ? ValueKind::Real : ValueKind::Text;
}

QString hintOf(const ValueKinds &kinds, const Dataset &table, ColIndex column)
{
    constexpr int longest = 16;
    QStringList values;
    for (int row = 0; row < qMin(rowsSampled, table.rowCount()); ++row) {
        const QString value = table.cell(RowIndex(row), column);
        if (!value.isEmpty()) {
            values.append(value);
        }
    }
    if (values.isEmpty()) {
        return table.hasRows() ? valueKindLabel(ValueKind::Empty) : QString();
    }
    QString sample = values.first().simplified();
    if (sample.size() > longest) {
        sample = sample.left(longest - 1) + QChar(0x2026);
    }
    return translated("%1: %2").arg(valueKindLabel(commonKind(kinds, values)), sample);
}

QDateTime processedAt(const UpstreamItem *input)
{
    const auto *const node = dynamic_cast<const Node *>(input);
    return node ? node->lastProcessed() : QDateTime();
}

} // namespace

ParameterColumns::ParameterColumns(const UpstreamItem *input)
{
    if (!input || !input->upstreamColumnsKnown()) {
        return;
    }
    m_names = input->upstreamColumns();
    m_hasHeader = input->upstreamHasHeader();
    const auto *const node = dynamic_cast<const Node *>(input);
    m_input = input;
    m_processed = processedAt(input);
    const ValueKinds kinds(TransformSettings::current().dateFormats);
    const int sampled = qMin(count(), columnsSampled);
    for (int i = 0; node && i < sampled && i < node->dataset().columnCount().value(); ++i) {
        m_hints.append(hintOf(kinds, node->dataset(), ColIndex(i)));
    }
}

bool ParameterColumns::areOf(const UpstreamItem *input) const
{
    if (!input || !input->upstreamColumnsKnown()) {
        return !isKnown();
    }
    return input == m_input && processedAt(input) == m_processed &&
           input->upstreamHasHeader() == m_hasHeader && input->upstreamColumns() == m_names;
}

ColumnRef ParameterColumns::column(int number) const
{
    return ColumnRef(number, m_hasHeader ? m_names.value(number) : QString());
}

int ParameterColumns::find(const ColumnRef &column) const
{
    const bool isInside = column.number >= 0 && column.number < count();
    if (!m_hasHeader || column.name.isEmpty()) {
        return isInside ? column.number : -1;
    }
    if (isInside && m_names[column.number] == column.name) {
        return column.number;
    }
    return m_names.indexOf(column.name);
}

ColumnRef ParameterColumns::bound(ColumnRef column) const
{
    const int number = find(column);
    if (number >= 0) {
        return this->column(number);
    }
    column.missing = isMissing(column);
    return column;
}

bool ParameterColumns::isMissing(const ColumnRef &column) const
{
    return isKnown() && find(column) < 0 && (column.number >= 0 || !column.name.isEmpty());
}

QString ParameterColumns::shownName(const ColumnRef &column) const
{
    const int number = find(column);
    if (number >= 0) {
        return m_names[number];
    }
    return isMissing(column) ? translated("%1 (not found)").arg(nameOf(column)) : nameOf(column);
}

QString ParameterColumns::shownName(const QString &name) const
{
    if (name.isEmpty()) {
        return translated("<Any>");
    }
    return isKnown() && !m_names.contains(name) ? translated("%1 (not found)").arg(name) : name;
}

QString ParameterColumns::key(const ColumnRef &column) const
{
    const ColumnRef meant = bound(column);
    return QStringLiteral("%1 %2").arg(QString::number(meant.number), meant.name);
}

ColumnRef ParameterColumns::fromKey(const QString &key) const
{
    const int blank = key.indexOf(QLatin1Char(' '));
    return bound(ColumnRef(key.leftRef(blank).toInt(), key.mid(blank + 1)));
}

Choice ParameterColumns::missingChoice(const QString &stored, const QString &name) const
{
    Choice choice{stored, name};
    if (isKnown()) {
        choice.text = translated("%1 (not found)").arg(name);
        choice.problem = notFoundText(name);
    }
    return choice;
}

QVector<Choice> ParameterColumns::choices(const QList<ColumnRef> &used) const
{
    QVector<Choice> choices;
    for (int i = 0; i < count(); ++i) {
        choices.append({key(column(i)), m_names[i], {}, hint(i)});
    }
    QSet<QString> added;
    for (const ColumnRef &each : used) {
        const QString stored = key(each);
        if (find(each) < 0 && each.number >= 0 && !added.contains(stored)) {
            added.insert(stored);
            choices.append(missingChoice(stored, nameOf(each)));
        }
    }
    return choices;
}

QVector<Choice> ParameterColumns::choicesByName(const QStringList &used) const
{
    QVector<Choice> choices{{QString(), translated("<Any>")}};
    QSet<QString> added{QString()};
    for (int i = 0; i < count(); ++i) {
        if (!added.contains(m_names[i])) {
            added.insert(m_names[i]);
            choices.append({m_names[i], m_names[i], {}, hint(i)});
        }
    }
    for (const QString &name : used) {
        if (!added.contains(name)) {
            added.insert(name);
            choices.append(missingChoice(name, name));
        }
    }
    return choices;
}

QString ParameterColumns::notFoundText(const QString &name)
{
    return QCoreApplication::translate("TransformParameter", "Column '%1' not found.").arg(name);
}

QString ParameterColumns::unknownText()
{
    return translated("The columns are not known yet. Connect an input and run it.");
}
