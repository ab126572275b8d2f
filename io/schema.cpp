#include "schema.h"

#include "dataset.h"
#include "inputoptions.h"
#include "messages.h"

#include <QCoreApplication>
#include <QHash>
#include <algorithm>

namespace {

/// How the columns of a table and those of a schema go together. A repeated name's k-th column is
/// the schema's k-th of that name. Positions count from 0 here and from 1 in the texts.
class SchemaMatch
{
    Q_DECLARE_TR_FUNCTIONS(Schema)

public:
    SchemaMatch(const InputOptions &options, const QStringList &inputNames);

    bool isSame() const;
    /// Tells each difference; answers false when the options call one of them an error.
    bool tellDifferences(Messages *messages) const;
    QString beforeTable() const;
    QString afterTable() const;
    /// The wanted columns: that of the input, or an invalid one for a column that is added.
    std::vector<ColIndex> columns() const;
    QStringList names() const;
    QString missingValue(int position) const
    {
        return m_options.schemaMissingValues.value(position);
    }

private:
    struct Place
    {
        int inColumn = -1; ///< in the input
        /// In the input without its extra columns and with the missing ones.
        int found = -1;
    };
    bool isMissing(size_t position) const { return m_places[position].inColumn < 0; }
    bool isMoved(size_t position) const
    {
        return !isMissing(position) && m_places[position].found != int(position);
    }
    bool tellMissing(Messages *messages) const;
    bool tellMoved(Messages *messages) const;
    bool tellExtra(Messages *messages) const;
    int endPosition(int extra) const { return m_schema.size() + extra; }
    static QString number(int position) { return QString::number(position + 1); }
    static QString line(int position, const QString &name, const QString &status);

    const InputOptions &m_options;
    const QStringList &m_schema;
    const QStringList m_inputNames;
    std::vector<Place> m_places; // by position in the schema
    std::vector<int> m_extra;    // columns of the input
};

SchemaMatch::SchemaMatch(const InputOptions &options, const QStringList &inputNames)
    : m_options(options)
    , m_schema(options.schemaColumnNames)
    , m_inputNames(inputNames)
    , m_places(size_t(options.schemaColumnNames.size()))
{
    QHash<QString, QList<int>> wanted; // positions of a name, the last one first
    for (int position = m_schema.size() - 1; position >= 0; --position) {
        wanted[m_schema[position]].append(position);
    }
    std::vector<int> found; // positions in the schema, in the input's order
    for (int column = 0; column < m_inputNames.size(); ++column) {
        const auto name = wanted.find(m_inputNames[column]);
        if (name == wanted.end() || name->isEmpty()) {
            m_extra.push_back(column);
            continue;
        }
        const int position = name->takeLast();
        m_places[size_t(position)].inColumn = column;
        found.push_back(position);
    }
    size_t next = 0;
    for (size_t place = 0; place < m_places.size(); ++place) {
        if (!isMissing(place) && next < found.size()) {
            m_places[size_t(found[next++])].found = int(place);
        }
    }
}

bool SchemaMatch::isSame() const
{
    for (size_t position = 0; position < m_places.size(); ++position) {
        if (isMissing(position) || isMoved(position)) {
            return false;
        }
    }
    return m_extra.empty();
}

bool SchemaMatch::tellDifferences(Messages *messages) const
{
    const bool missingAllowed = tellMissing(messages);
    const bool moveAllowed = tellMoved(messages);
    return tellExtra(messages) && missingAllowed && moveAllowed;
}

bool SchemaMatch::tellMissing(Messages *messages) const
{
    bool allowed = true;
    for (int position = 0; position < m_schema.size(); ++position) {
        const QString &name = m_schema[position];
        if (!isMissing(size_t(position))) {
            continue;
        }
        if (m_options.schemaMissing == SchemaMissing::Add) {
            messages->note(
                tr("Schema change: Added missing column '%1' with values '%2' to position %3.")
                    .arg(name, missingValue(position), number(position)));
        } else {
            messages->warn(tr("Schema error: Missing column '%1'.").arg(name));
            allowed = false;
        }
    }
    return allowed;
}

bool SchemaMatch::tellMoved(Messages *messages) const
{
    bool allowed = true;
    for (int position = 0; position < m_schema.size(); ++position) {
        if (!isMoved(size_t(position))) {
            continue;
        }
        const QString from = number(m_places[size_t(position)].found);
        if (m_options.schemaOrder == SchemaOrder::Reorder) {
            messages->note(tr("Schema change: Moved column '%1' from position %2 to position %3.")
                               .arg(m_schema[position], from, number(position)));
        } else {
            messages->warn(tr("Schema error: Column '%1' at position %2 when %3 expected.")
                               .arg(m_schema[position], from, number(position)));
            allowed = false;
        }
    }
    return allowed;
}

bool SchemaMatch::tellExtra(Messages *messages) const
{
    for (size_t i = 0; i < m_extra.size(); ++i) {
        const QString &name = m_inputNames[m_extra[i]];
        const QString from = number(m_extra[i]);
        switch (m_options.schemaExtra) {
        case SchemaExtra::AddToEnd:
            messages->note(
                tr("Schema change: Added extra column '%1' from position %2 to position %3.")
                    .arg(name, from, number(endPosition(int(i)))));
            break;
        case SchemaExtra::Ignore:
            messages->note(
                tr("Schema change: Ignored extra column '%1' at position %2.").arg(name, from));
            break;
        case SchemaExtra::Error:
            messages->warn(tr("Schema error: Extra column '%1' at position %2.").arg(name, from));
            break;
        }
    }
    return m_extra.empty() || m_options.schemaExtra != SchemaExtra::Error;
}

QString SchemaMatch::line(int position, const QString &name, const QString &status)
{
    return tr("Column position=%1 name='%2'").arg(number(position), name) + QLatin1String(": ") +
           status;
}

QString SchemaMatch::beforeTable() const
{
    QStringList statuses;
    for (int column = 0; column < m_inputNames.size(); ++column) {
        statuses.append(QString());
    }
    for (size_t position = 0; position < m_places.size(); ++position) {
        if (isMissing(position)) {
            continue;
        }
        QString &status = statuses[m_places[position].inColumn];
        if (!isMoved(position)) {
            status = tr("No change");
        } else if (m_options.schemaOrder == SchemaOrder::Reorder) {
            status = tr("Out of order, moved to position %1").arg(number(int(position)));
        } else {
            status = tr("Out of order") + tr(" [%1]").arg(number(int(position)));
        }
    }
    for (size_t i = 0; i < m_extra.size(); ++i) {
        QString &status = statuses[m_extra[i]];
        switch (m_options.schemaExtra) {
        case SchemaExtra::AddToEnd:
            status = tr("Extra, added to position %1").arg(number(endPosition(int(i))));
            break;
        case SchemaExtra::Ignore:
            status = tr("Ignored");
            break;
        case SchemaExtra::Error:
            status = tr("Extra");
            break;
        }
    }
    QStringList lines{tr("Before schema:")};
    for (int column = 0; column < m_inputNames.size(); ++column) {
        lines.append(line(column, m_inputNames[column], statuses[column]));
    }
    return lines.join(QLatin1Char('\n'));
}

QString SchemaMatch::afterTable() const
{
    QStringList lines{tr("After schema:")};
    for (int position = 0; position < m_schema.size(); ++position) {
        QString status = tr("No change");
        if (isMissing(size_t(position))) {
            status = tr("Added missing");
        } else if (isMoved(size_t(position))) {
            status = tr("Out of order, moved from position %1")
                         .arg(number(m_places[size_t(position)].found));
        }
        lines.append(line(position, m_schema[position], status));
    }
    for (size_t i = 0; m_options.schemaExtra == SchemaExtra::AddToEnd && i < m_extra.size(); ++i) {
        lines.append(line(endPosition(int(i)), m_inputNames[m_extra[i]],
                          tr("Extra, added from position %1").arg(number(m_extra[i]))));
    }
    return lines.join(QLatin1Char('\n'));
}

std::vector<ColIndex> SchemaMatch::columns() const
{
    std::vector<ColIndex> list;
    for (const Place &place : m_places) {
        list.emplace_back(place.inColumn);
    }
    for (size_t i = 0; m_options.schemaExtra == SchemaExtra::AddToEnd && i < m_extra.size(); ++i) {
        list.emplace_back(m_extra[i]);
    }
    return list;
}

QStringList SchemaMatch::names() const
{
    QStringList list = m_schema;
    for (size_t i = 0; m_options.schemaExtra == SchemaExtra::AddToEnd && i < m_extra.size(); ++i) {
        list.append(m_inputNames[m_extra[i]]);
    }
    return list;
}

/// The table with the columns of the match; the added ones hold one value in all rows.
Dataset arranged(const SchemaMatch &match, const Dataset &input)
{
    std::vector<ColIndex> columns = match.columns();
    Dataset values;
    for (size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].isValid()) {
            continue;
        }
        const ColIndex added = values.columnCount();
        values.setColumnCount(ColIndex(added.value() + 1));
        if (values.isEmpty()) {
            values.resize(1, 1);
        }
        values.setCell(RowIndex(0), added, match.missingValue(int(i)));
        columns[i] = ColIndex(input.columnCount().value() + added.value());
    }
    Dataset table = input;
    if (values.hasColumns()) {
        table = Dataset::sideBySide(
            input, values.selectRows(RowSelection(size_t(input.rowCount()), qint32(0))));
    }
    table = table.selectColumns(columns);
    const QStringList names = match.names();
    table.setHeader(QStringList());
    // A table without a header gets one when a name says more than the column's number.
    if (input.hasHeader() || names != table.columnNames()) {
        table.setHeader(names);
    }
    return table;
}

struct Schema
{
    Q_DECLARE_TR_FUNCTIONS(Schema)
};

} // namespace

bool applySchema(const InputOptions &options, Dataset *dataset, Messages *messages)
{
    const SchemaMatch match(options, dataset->columnNames());
    if (match.isSame()) {
        messages->note(Schema::tr("Input matches schema."));
        return true;
    }
    const bool allowed = match.tellDifferences(messages);
    QStringList result{Schema::tr("Input does not match schema."), match.beforeTable()};
    if (!allowed) {
        messages->note(result.join(QLatin1Char('\n')));
        messages->fail(Schema::tr("Schema validation failed."));
        return false;
    }
    result.append(match.afterTable());
    messages->note(result.join(QLatin1Char('\n')));
    *dataset = arranged(match, *dataset);
    return true;
}
