#include "dataset.h"

#include "tabledata.h"

#include <QCoreApplication>
#include <limits>
#include <numeric>
#include <set>
#include <utility>

namespace {

QString numberedName(int column)
{
    return QCoreApplication::translate("Dataset", "Column %1").arg(column + 1);
}

QStringList fitted(QStringList names, int columns)
{
    while (names.size() > columns) {
        names.removeLast();
    }
    while (names.size() < columns) {
        names.append(ValuePool::emptyText());
    }
    return names;
}

/// Composes a selection with the maps of the columns it is applied to, each map once.
class SelectionComposer
{
public:
    explicit SelectionComposer(RowSelection rows)
        : m_rows(std::make_shared<const RowSelection>(std::move(rows)))
    {
    }

    std::shared_ptr<const RowSelection> composed(const std::shared_ptr<const RowSelection> &map)
    {
        if (!map) {
            return m_rows;
        }
        for (const auto &[source, result] : m_known) {
            if (source == map) {
                return result;
            }
        }
        auto result = std::make_shared<RowSelection>(*m_rows);
        for (qint32 &row : *result) {
            row = row < 0 ? -1 : (*map)[size_t(row)];
        }
        m_known.emplace_back(map, result);
        return result;
    }

private:
    using Map = std::shared_ptr<const RowSelection>;
    Map m_rows;
    std::vector<std::pair<Map, Map>> m_known;
};

bool sameValues(const TableColumn &a, const TableColumn &b, int rows)
{
    const bool samePool = a.pool == b.pool;
    if (samePool && a.codes == b.codes && a.map == b.map) {
        return true;
    }
    const ColumnReader left = a.reader();
    const ColumnReader right = b.reader();
    for (int row = 0; row < rows; ++row) {
        const ValuePool::Code x = left.code(row);
        const ValuePool::Code y = right.code(row);
        if (!(samePool && x == y) && left.utf8OfCode(x) != right.utf8OfCode(y)) {
            return false;
        }
    }
    return true;
}

/// Appends the rows of columns to one column. Where pools differ, each code is translated once.
class ColumnStacker
{
public:
    /// Without a source the rows are empty. `goOn` is asked before every row.
    bool append(const TableColumn *source, int rowCount, const std::function<bool(int row)> &goOn)
    {
        const int rowsBefore = m_rows;
        m_rows += rowCount;
        if (!source || !source->pool || rowCount == 0) {
            return true;
        }
        if (rowsBefore == 0) {
            m_column = *source;
            m_column.writableCodes(rowCount);
            return true;
        }
        ColumnCodes *const codes = m_column.writableCodes(rowsBefore);
        codes->detachLast();
        codes->padTo(rowsBefore);
        if (!m_column.pool) {
            m_column.pool = source->pool;
        }
        return appendCodes(source->reader(), source->pool == m_column.pool, rowCount, codes, goOn);
    }
    TableColumn take() { return std::move(m_column); }

private:
    using Code = ValuePool::Code;

    bool appendCodes(const ColumnReader &source, bool samePool, int rowCount, ColumnCodes *codes,
                     const std::function<bool(int row)> &goOn)
    {
        constexpr Code unknown = std::numeric_limits<Code>::max();
        std::vector<Code> known(samePool ? 0 : source.codeCount(), unknown);
        for (int row = 0; row < rowCount; ++row) {
            if (!goOn(row)) {
                return false;
            }
            const Code code = source.code(row);
            if (samePool || code == ValuePool::emptyCode) {
                codes->append(code);
                continue;
            }
            Code &translated = known[code];
            if (translated == unknown) {
                translated = m_column.pool->add(source.utf8OfCode(code));
            }
            codes->append(translated);
        }
        return true;
    }

    TableColumn m_column;
    int m_rows = 0;
};

} // namespace

Dataset::Dataset()
    : d(new Data)
{
}
Dataset::Dataset(const Dataset &) = default;
// A table that was moved from stays usable, so its data is copied (a count).
// NOLINTNEXTLINE(performance-move-constructor-init)
Dataset::Dataset(Dataset &&other) noexcept
    : d(other.d)
{
}
Dataset &Dataset::operator=(const Dataset &) = default;
Dataset &Dataset::operator=(Dataset &&other) noexcept
{
    d.swap(other.d);
    return *this;
}
Dataset::~Dataset() = default;

ColIndex Dataset::columnCount() const
{
    return ColIndex(int(d->columns.size()));
}

int Dataset::rowCount() const
{
    return d->rows;
}

ColumnReader Dataset::columnReader(ColIndex column) const
{
    return d->columns[size_t(column.value())].reader();
}

QString Dataset::cell(RowIndex row, ColIndex column) const
{
    return columnReader(column).text(row.value());
}

std::string_view Dataset::utf8(RowIndex row, ColIndex column) const
{
    return columnReader(column).utf8(row.value());
}

void Dataset::setCell(RowIndex row, ColIndex column, const QString &value)
{
    TableColumn &target = d->columns[size_t(column.value())];
    ColumnCodes *const codes = target.writableCodes(d->rows);
    codes->set(row.value(),
               value.isEmpty() ? ValuePool::emptyCode : target.writablePool()->add(value));
}

void Dataset::setColumnCount(ColIndex count)
{
    if (count == columnCount() || count.value() < 0) {
        return;
    }
    d->columns.resize(size_t(count.value()));
    if (!d->header.isEmpty()) {
        d->header = fitted(d->header, count.value());
    }
}

void Dataset::resize(int rows, int columns)
{
    if (columns == 0 || rows == rowCount() || rows < 0) {
        return;
    }
    const bool shrinks = rows < rowCount();
    for (TableColumn &column : d->columns) {
        if (column.map) {
            auto map = std::make_shared<RowSelection>(*column.map);
            map->resize(size_t(rows), -1);
            column.map = std::move(map);
        } else if (shrinks && column.codes && column.codes->size() > rows) {
            column.writableCodes(rowCount())->truncate(rows);
        }
    }
    d->rows = rows;
}

void Dataset::removeRow(RowIndex row)
{
    if (row.value() < 0 || row.value() >= rowCount()) {
        return;
    }
    RowSelection rows;
    rows.resize(size_t(rowCount()));
    std::iota(rows.begin(), rows.end(), 0);
    rows.erase(rows.begin() + row.value());
    *this = selectRows(std::move(rows));
}

void Dataset::setHeader(const QStringList &names)
{
    if (names.size() > columnCount().value()) {
        d->columns.resize(size_t(names.size()));
    }
    d->header = names.isEmpty() ? names : fitted(names, columnCount().value());
    d->hasHeader = !names.isEmpty();
}

void Dataset::setHasHeader(bool on)
{
    if (on == hasHeader()) {
        return;
    }
    d->hasHeader = on;
    if (on) {
        if (isEmpty()) {
            return;
        }
        QStringList names;
        for (ColIndex column(0); column < columnCount(); ++column) {
            names.append(cell(RowIndex(0), column));
        }
        removeRow(RowIndex(0));
        d->header = names;
        return;
    }
    if (d->header.isEmpty()) {
        return;
    }
    for (size_t i = 0; i < d->columns.size(); ++i) {
        TableColumn &column = d->columns[i];
        const ColumnReader source = std::as_const(column).reader();
        auto codes = std::make_shared<ColumnCodes>();
        codes->append(column.writablePool()->add(d->header.at(int(i))));
        for (int row = 0; row < d->rows; ++row) {
            codes->append(source.code(row));
        }
        column.codes = std::move(codes);
        column.map.reset();
    }
    ++d->rows;
    d->header.clear();
}

QStringList Dataset::header() const
{
    return d->header;
}

bool Dataset::hasHeader() const
{
    return d->hasHeader;
}

QString Dataset::columnName(ColIndex column) const
{
    return column.value() < d->header.size() ? d->header.at(column.value())
                                             : numberedName(column.value());
}

QStringList Dataset::columnNames() const
{
    QStringList names;
    for (ColIndex column(0); column < columnCount(); ++column) {
        names.append(columnName(column));
    }
    return names;
}

ColIndex Dataset::columnIndex(const QString &name) const
{
    for (ColIndex column(0); column < columnCount(); ++column) {
        if (columnName(column) == name) {
            return column;
        }
    }
    return ColIndex();
}

Dataset Dataset::selectRows(RowSelection rows) const
{
    Dataset result(*this);
    result.d->rows = int(rows.size());
    SelectionComposer composer(std::move(rows));
    for (TableColumn &column : result.d->columns) {
        column.map = composer.composed(column.map);
    }
    return result;
}

Dataset Dataset::selectColumns(const std::vector<ColIndex> &columns) const
{
    Dataset result;
    QStringList names;
    for (const ColIndex column : columns) {
        result.d->columns.push_back(d->columns[size_t(column.value())]);
        if (!d->header.isEmpty()) {
            names.append(d->header.at(column.value()));
        }
    }
    result.d->rows = d->rows;
    result.d->header = names;
    result.d->hasHeader = d->hasHeader;
    return result;
}

Dataset Dataset::sideBySide(const Dataset &left, const Dataset &right)
{
    Q_ASSERT(left.rowCount() == right.rowCount());
    Dataset result(left);
    result.d->columns.insert(result.d->columns.end(), right.d->columns.begin(),
                             right.d->columns.end());
    result.d->hasHeader = left.hasHeader() || right.hasHeader();
    result.d->header =
        result.d->hasHeader ? left.columnNames() + right.columnNames() : QStringList();
    return result;
}

Dataset Dataset::stacked(const std::vector<StackedTable> &tables, int columnCount,
                         const Progress &progress)
{
    Dataset result;
    double cellCount = 1;
    for (const StackedTable &each : tables) {
        result.d->rows += each.table.rowCount();
        cellCount += double(each.table.rowCount()) * columnCount;
    }
    double cellsDone = 0;
    for (int i = 0; i < columnCount; ++i) {
        ColumnStacker stacker;
        for (const StackedTable &each : tables) {
            const ColIndex column = each.columns[size_t(i)];
            const auto goOn = [&](int row) {
                return row % progressInterval != 0 ||
                       reportProgress(progress, (cellsDone + row) / cellCount);
            };
            if (!stacker.append(column.isValid() ? &each.table.d->columns[size_t(column.value())]
                                                 : nullptr,
                                each.table.rowCount(), goOn)) {
                return {};
            }
            cellsDone += each.table.rowCount();
        }
        result.d->columns.push_back(stacker.take());
    }
    return result;
}

ColIndex Dataset::appendColumn(const QString &name)
{
    const ColIndex column = columnCount();
    d->columns.emplace_back();
    if (hasHeader()) {
        d->header.append(name.isEmpty() ? numberedName(column.value()) : name);
    }
    return column;
}

CellChanges Dataset::mapColumn(ColIndex column,
                               const std::function<QString(const QString &)> &changed,
                               const std::function<bool(int row)> &goOn)
{
    using Code = ValuePool::Code;
    constexpr Code unknown = std::numeric_limits<Code>::max();
    TableColumn &target = d->columns[size_t(column.value())];
    const ColumnReader source = std::as_const(target).reader();
    ValuePool *const pool = target.writablePool();
    std::vector<Code> known(source.codeCount(), unknown);
    auto codes = std::make_shared<ColumnCodes>();
    CellChanges changes;
    for (int row = 0; row < d->rows; ++row) {
        if (goOn && !goOn(row)) {
            return {};
        }
        const Code before = source.code(row);
        Code &after = known[before];
        if (after == unknown) {
            const QString value = source.textOfCode(before);
            const QString result = changed(value);
            after = result == value ? before : pool->add(result);
        }
        ++(after == before ? changes.unchanged : changes.changed);
        codes->append(after);
    }
    if (changes.changed > 0) {
        target.codes = std::move(codes);
        target.map.reset();
    }
    return changes;
}

bool Dataset::operator==(const Dataset &other) const
{
    if (d == other.d) {
        return true;
    }
    if (rowCount() != other.rowCount() || columnCount() != other.columnCount() ||
        hasHeader() != other.hasHeader() || header() != other.header()) {
        return false;
    }
    for (size_t i = 0; i < d->columns.size(); ++i) {
        if (!sameValues(d->columns[i], other.d->columns[i], rowCount())) {
            return false;
        }
    }
    return true;
}

size_t Dataset::memoryUsed() const
{
    std::set<const void *> counted;
    size_t bytes = sizeof(Data) + d->columns.size() * sizeof(TableColumn);
    for (const TableColumn &column : d->columns) {
        if (column.pool && counted.insert(column.pool.get()).second) {
            bytes += column.pool->memoryUsed();
        }
        if (column.codes && counted.insert(column.codes.get()).second) {
            bytes += column.codes->memoryUsed();
        }
        if (column.map && counted.insert(column.map.get()).second) {
            bytes += column.map->size() * sizeof(qint32);
        }
    }
    return bytes;
}
