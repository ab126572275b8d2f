#include "transformstack.h"

#include "newcolumns.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"
#include "upstreamitem.h"

#include <QHash>
#include <limits>

namespace {

enum class AlignBy { Name, Position };
enum class KeepColumns { All, InEvery, OfFirst };

struct Options
{
    const TransformOption<int> alignBy =
        TransformOption<int>(
            ParameterType::Selection, "Align_By",
            QT_TRANSLATE_NOOP("Transform", "Align columns by"),
            QT_TRANSLATE_NOOP("Transform",
                              "Which columns of the inputs come under each other. An input without "
                              "a header is aligned by position.\n\n"
                              "Column name: columns of the same name; the second column of a name "
                              "goes with the second one of that name, and so on\n"
                              "Column position: the first with the first, the second with the "
                              "second, and so on"))
            .choices({"Column name", "Column position"});
    const TransformOption<bool> caseSensitive{
        ParameterType::Bool, "Case_Sensitive",
        QT_TRANSLATE_NOOP("Transform", "case sensitive names"),
        QT_TRANSLATE_NOOP("Transform", "Check to tell capitals from small letters in names."),
        true};
    const TransformOption<int> keepColumns =
        TransformOption<int>(
            ParameterType::Selection, "Keep_Columns",
            QT_TRANSLATE_NOOP("Transform", "Columns to keep"),
            QT_TRANSLATE_NOOP("Transform",
                              "Which columns the result has.\n\n"
                              "All columns: those of all inputs, with empty cells for the rows of "
                              "inputs that lack one\n"
                              "Columns in every input: only those that no input lacks\n"
                              "Columns of the first input: only those of the top input"))
            .choices({"All columns", "Columns in every input", "Columns of the first input"});
    const TransformOption<bool> addSource{
        ParameterType::Bool, "Add_Source", QT_TRANSLATE_NOOP("Transform", "add source column"),
        QT_TRANSLATE_NOOP("Transform",
                          "Check to add a column that names the input each row comes from."),
        false};
    const TransformOption<QString> sourceName{
        ParameterType::Text, "Source_Name", QT_TRANSLATE_NOOP("Transform", "Source column name"),
        QT_TRANSLATE_NOOP("Transform", "The name of the added column."), QStringLiteral("Source")};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

/// Decides which columns of the inputs come under each other.
class ColumnAlignment
{
public:
    ColumnAlignment(const QList<Dataset> &inputs, bool caseSensitive)
        : m_caseSensitive(caseSensitive)
    {
        for (const Dataset &input : inputs) {
            m_tables.push_back({input, {}});
            m_hasHeader = m_hasHeader || input.hasHeader();
        }
    }

    void byName()
    {
        for (StackedTable &each : m_tables) {
            if (each.table.hasHeader()) {
                placeByName(&each);
            }
        }
        for (StackedTable &each : m_tables) {
            if (!each.table.hasHeader()) {
                placeByPosition(&each);
            }
        }
        finish();
    }
    void byPosition()
    {
        for (StackedTable &each : m_tables) {
            placeByPosition(&each);
        }
        finish();
    }

    void keepOnly(KeepColumns which)
    {
        if (which == KeepColumns::All) {
            return;
        }
        QStringList names;
        std::vector<StackedTable> tables(m_tables);
        for (StackedTable &each : tables) {
            each.columns.clear();
        }
        for (int i = 0; i < m_names.size(); ++i) {
            bool isKept = true;
            for (size_t t = 0; t < (which == KeepColumns::OfFirst ? 1 : m_tables.size()); ++t) {
                isKept = isKept && m_tables[t].columns[size_t(i)].isValid();
            }
            if (isKept) {
                names.append(m_names[i]);
                for (size_t t = 0; t < m_tables.size(); ++t) {
                    tables[t].columns.push_back(m_tables[t].columns[size_t(i)]);
                }
            }
        }
        m_names = names;
        m_tables = std::move(tables);
    }

    const std::vector<StackedTable> &tables() const { return m_tables; }
    const QStringList &names() const { return m_names; }
    bool hasHeader() const { return m_hasHeader; }

private:
    static void place(ColIndex column, int at, StackedTable *table)
    {
        if (size_t(at) >= table->columns.size()) {
            table->columns.resize(size_t(at) + 1);
        }
        table->columns[size_t(at)] = column;
    }

    void placeByName(StackedTable *table)
    {
        QHash<QString, int> seen;
        const ColIndex count = table->table.columnCount();
        for (ColIndex column(0); column < count; ++column) {
            const QString name = table->table.columnName(column);
            const QString key = m_caseSensitive ? name : name.toLower();
            const int repeat = seen[key]++;
            QList<int> &places = m_places[key];
            if (repeat == places.size()) {
                places.append(m_names.size());
                m_names.append(name);
            }
            place(column, places[repeat], table);
        }
    }

    void placeByPosition(StackedTable *table)
    {
        const ColIndex count = table->table.columnCount();
        for (ColIndex column(0); column < count; ++column) {
            const int at = column.value();
            place(column, at, table);
            if (at >= m_names.size()) {
                m_names.append(QString());
            }
            if (table->table.hasHeader() && m_names[at].isEmpty()) {
                m_names[at] = table->table.columnName(column);
            }
        }
    }

    /// Numbers the columns that no input names, apart from those that are there by an empty name.
    void finish()
    {
        for (StackedTable &each : m_tables) {
            each.columns.resize(size_t(m_names.size()));
        }
        for (int i = 0; i < m_names.size(); ++i) {
            bool isNamed = false;
            for (const StackedTable &each : m_tables) {
                isNamed = isNamed || (each.table.hasHeader() && each.columns[size_t(i)].isValid());
            }
            if (!isNamed) {
                m_names[i] = Dataset().columnName(ColIndex(i));
            }
        }
    }

    bool m_caseSensitive;
    bool m_hasHeader = false;
    std::vector<StackedTable> m_tables;
    QStringList m_names;
    QHash<QString, QList<int>> m_places; // columns of the result by name
};

constexpr TransformFacts stackFacts =
    TransformFacts(56, "TransformStack", "Stack", "Stack", TransformCategory::Merge,
                   QT_TRANSLATE_NOOP("Transform",
                                     "Merge input datasets one on top of another. Orders by the "
                                     "vertical positions of the input datasets."))
        .inputs(1, TransformFacts::noLimit)
        .words("append union concatenate")
        .with(TransformFacts::DependentParameters)
        .inputOrder(QT_TRANSLATE_NOOP("Transform", "Inputs are used from top to bottom."));

} // namespace

struct TransformStack::Settings
{
    int alignBy = 0;
    bool caseSensitive = true;
    int keepColumns = 0;
    bool addSource = false;
    QString sourceName;
};

TransformStack::TransformStack()
    : Transform(stackFacts)
{
}

std::unique_ptr<Transform> TransformStack::clone() const
{
    auto copy = std::make_unique<TransformStack>();
    copyParametersTo(copy.get());
    copy->m_items = m_items;
    return copy;
}

void TransformStack::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    m_items = inputs;
    append(options().alignBy.create());
    append(options().caseSensitive.create());
    append(options().keepColumns.create());
    append(options().addSource.create());
    append(options().sourceName.create());
}

bool TransformStack::isParameterShown(const TransformParameter &shown) const
{
    if (shown.key == options().sourceName.key()) {
        bool addsSource = false;
        options().addSource.read(*this, &addsSource);
        return addsSource;
    }
    int alignBy = 0;
    options().alignBy.read(*this, &alignBy);
    const bool needsNames =
        shown.key == options().caseSensitive.key() || shown.key == options().keepColumns.key();
    return !needsNames || AlignBy(alignBy) == AlignBy::Name;
}

bool TransformStack::readSettings(Settings *settings) const
{
    return options().alignBy.read(*this, &settings->alignBy) &&
           options().caseSensitive.read(*this, &settings->caseSensitive) &&
           options().keepColumns.read(*this, &settings->keepColumns) &&
           options().addSource.read(*this, &settings->addSource) &&
           options().sourceName.read(*this, &settings->sourceName);
}

Dataset TransformStack::execute(const QList<Dataset> &inputs)
{
    Settings settings;
    if (inputs.isEmpty() || !readSettings(&settings)) {
        return {};
    }
    qint64 rowCount = 0;
    for (const Dataset &input : inputs) {
        rowCount += input.rowCount();
    }
    if (rowCount > std::numeric_limits<qint32>::max()) {
        messages().fail(
            tr("The inputs have %1 rows together: too many.").arg(Texts::count(rowCount)));
        return {};
    }
    ColumnAlignment alignment(inputs, settings.caseSensitive);
    if (AlignBy(settings.alignBy) == AlignBy::Name) {
        alignment.byName();
        alignment.keepOnly(KeepColumns(settings.keepColumns));
    } else {
        alignment.byPosition();
    }
    setStatus(tr("%1 %2 from %3 input(s)")
                  .arg(Texts::count(rowCount), Texts::rows(rowCount), Texts::count(inputs.size())));
    if (alignment.names().isEmpty()) {
        messages().warn(tr("The inputs have no column in common."));
        setStatus(Texts::noChanges());
        return {};
    }
    Dataset output = inputs.first();
    if (inputs.size() > 1) {
        output = Dataset::stacked(alignment.tables(), alignment.names().size(),
                                  [this](double fraction) { return report(fraction); });
        if (isStopped()) {
            return {};
        }
        if (alignment.hasHeader()) {
            output.setHeader(alignment.names());
        }
        tellMissing(alignment.tables(), alignment.names());
    }
    if (settings.addSource) {
        addSource(inputs, settings.sourceName, &output);
    }
    return output;
}

void TransformStack::tellMissing(const std::vector<StackedTable> &tables, const QStringList &names)
{
    for (size_t t = 0; t < tables.size(); ++t) {
        for (int i = 0; i < names.size(); ++i) {
            if (!tables[t].columns[size_t(i)].isValid()) {
                messages().note(tr("Column '%1' is missing from input %2.")
                                    .arg(names[i], Texts::count(qint64(t) + 1)));
            }
        }
    }
}

void TransformStack::addSource(const QList<Dataset> &inputs, const QString &name,
                               Dataset *output) const
{
    Dataset sources;
    sources.setColumnCount(ColIndex(1));
    sources.resize(inputs.size(), 1);
    RowSelection rows;
    rows.reserve(size_t(output->rowCount()));
    for (int i = 0; i < inputs.size(); ++i) {
        const UpstreamItem *const item = m_items.value(i);
        const QString source = item ? item->upstreamName() : QString();
        sources.setCell(RowIndex(i), ColIndex(0),
                        source.isEmpty() ? tr("Input %1").arg(i + 1) : source);
        rows.insert(rows.end(), size_t(inputs[i].rowCount()), i);
    }
    const bool hasHeader = output->hasHeader();
    const QStringList names = output->columnNames();
    *output = Dataset::sideBySide(*output, sources.selectRows(std::move(rows)));
    if (hasHeader) {
        const QString wanted = name.isEmpty() ? options().sourceName.key() : name;
        output->setHeader(names + QStringList{NewColumns::uniqueName(
                                      wanted, QSet<QString>(names.begin(), names.end()))});
    }
}
