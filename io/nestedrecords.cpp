#include "nestedrecords.h"

#include "inputoptions.h"
#include "utf8.h"

#include <charconv>
#include <limits>
#include <new>

namespace {

constexpr int noColumn = -1;

InputOptions optionsOfRecords(InputOptions options)
{
    options.ignoredRows = 0;
    return options;
}

} // namespace

NestedRecords::NestedRecords(const InputOptions &options, const QString &valueName)
    : m_collector(optionsOfRecords(options), nullptr)
    , m_valueName(valueName)
    , m_arraysAsRows(options.jsonArraysAsRows)
    , m_ignoreEmptyColumns(options.ignoreEmptyColumns)
{
    m_collector.setHeaderInRows(false);
    m_collector.setLengthsMatter(false);
}

void NestedRecords::beginRecord()
{
    m_cells.clear();
    m_frames.clear();
    m_scopes.assign(1, Scope());
    m_texts.clear();
    m_droppedBefore = m_droppedValues;
    m_node = m_names.root();
}

/// The node of the next value. An element of an array that is read as rows opens its scope.
NestedRecords::Node *NestedRecords::place()
{
    if (m_frames.empty() || !m_frames.back().isArray) {
        return m_node;
    }
    Frame &array = m_frames.back();
    array.empty = false;
    if (m_arraysAsRows) {
        m_scopes.push_back({array.next, 1, -1});
        return array.node;
    }
    char digits[std::numeric_limits<int>::digits10 + 2];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), ++array.next).ptr;
    return m_names.child(array.node, {digits, size_t(end - digits)});
}

/// Called when a value is complete.
void NestedRecords::placed()
{
    if (m_arraysAsRows && !m_frames.empty() && m_frames.back().isArray) {
        closeScope();
    }
}

void NestedRecords::closeScope()
{
    const Scope scope = m_scopes.back();
    m_scopes.pop_back();
    if (scope.height > 1) {
        for (int i = scope.lastCell; i >= 0; i = m_cells[size_t(i)].previous) {
            m_cells[size_t(i)].span = scope.height;
        }
    }
    if (m_scopes.empty()) {
        return;
    }
    Frame &array = m_frames.back();
    if (scope.height > std::numeric_limits<int>::max() - array.next) {
        throw std::bad_alloc();
    }
    array.next += scope.height;
    Scope &outer = m_scopes.back();
    outer.height = std::max(outer.height, array.next - outer.start);
}

void NestedRecords::pushFrame(Node *node, bool isArray, int next)
{
    m_frames.push_back({node, isArray, true, next, ++m_instances});
    node->expected = node->firstChild;
}

int NestedRecords::columnOf(Node *node)
{
    if (node->column < 0) {
        node->column = int(m_columns.size());
        m_columns.push_back({node, false});
        m_row.emplace_back();
    }
    return node->column;
}

void NestedRecords::reserve(Node *node)
{
    if (node->parent) {
        columnOf(node);
    }
}

void NestedRecords::addCell(Node *node, std::string_view value)
{
    if (m_cells.size() == size_t(std::numeric_limits<int>::max())) {
        throw std::bad_alloc();
    }
    const int column = columnOf(node);
    m_columns[size_t(column)].filled = true;
    Scope &scope = m_scopes.back();
    m_cells.push_back({value, column, scope.start, 1, scope.lastCell});
    scope.lastCell = int(m_cells.size()) - 1;
}

void NestedRecords::value(std::string_view text)
{
    addCell(place(), text);
    placed();
}

void NestedRecords::null()
{
    columnOf(place());
    placed();
}

void NestedRecords::beginObject()
{
    pushFrame(place(), false, 0);
}

void NestedRecords::key(std::string_view name)
{
    Frame &object = m_frames.back();
    object.empty = false;
    m_node = m_names.child(object.node, name);
    if (m_node->seenIn == object.instance) {
        dropCells(m_node);
    }
    m_node->seenIn = object.instance;
    m_node->cellsBefore = m_cells.size();
}

void NestedRecords::endObject()
{
    const Frame object = m_frames.back();
    m_frames.pop_back();
    if (object.empty) {
        reserve(object.node);
    }
    placed();
}

void NestedRecords::beginArray()
{
    Node *const node = place();
    pushFrame(node, true, m_arraysAsRows ? m_scopes.back().start : 0);
}

void NestedRecords::endArray()
{
    endObject();
}

void NestedRecords::beginMember(std::string_view name, bool repeats)
{
    Frame &object = m_frames.back();
    object.empty = false;
    Node *const node = m_names.child(object.node, name);
    m_node = node;
    if (repeats) {
        if (node->seenIn != object.instance) {
            node->seenIn = object.instance;
            node->next = m_arraysAsRows ? m_scopes.back().start : 0;
        }
        pushFrame(node, true, node->next);
    }
    beginObject();
}

void NestedRecords::endMember(bool repeats)
{
    endObject();
    if (repeats) {
        m_frames.back().node->next = m_frames.back().next;
        endArray();
    }
}

void NestedRecords::ownText(std::string_view text)
{
    m_frames.back().empty = false;
    addCell(m_frames.back().node, text);
}

/// Drops what the first value of a repeated key left.
void NestedRecords::dropCells(const Node *node)
{
    ++m_droppedValues;
    for (size_t i = node->cellsBefore; i < m_cells.size(); ++i) {
        if (m_cells[i].column == noColumn) {
            continue;
        }
        const Node *at = m_columns[size_t(m_cells[i].column)].node;
        while (at && at != node) {
            at = at->parent;
        }
        if (at) {
            m_cells[i].column = noColumn;
        }
    }
}

void NestedRecords::endRecord()
{
    const int height = m_scopes.front().height;
    closeScope();
    if (height == 1) {
        addSingleRow();
    } else {
        addRows(height);
    }
}

void NestedRecords::addSingleRow()
{
    for (const Cell &cell : m_cells) {
        if (cell.column != noColumn) {
            m_row[size_t(cell.column)] = cell.value;
        }
    }
    m_collector.add(m_row.data(), int(m_row.size()), true);
    std::fill(m_row.begin(), m_row.end(), std::string_view());
}

/// Sorts by the first row; cells of one row keep their order.
void NestedRecords::sortCells(int height)
{
    m_rowStarts.assign(size_t(height) + 1, 0);
    for (const Cell &cell : m_cells) {
        ++m_rowStarts[size_t(cell.row) + 1];
    }
    for (size_t row = 1; row < m_rowStarts.size(); ++row) {
        m_rowStarts[row] += m_rowStarts[row - 1];
    }
    m_order.resize(m_cells.size());
    std::vector<int> at(m_rowStarts.begin(), m_rowStarts.end() - 1);
    for (size_t i = 0; i < m_cells.size(); ++i) {
        m_order[size_t(at[size_t(m_cells[i].row)]++)] = int(i);
    }
}

void NestedRecords::addRows(int height)
{
    sortCells(height);
    std::vector<int> current; // cells that fill the row
    for (int row = 0; row < height; ++row) {
        for (int i = m_rowStarts[size_t(row)]; i < m_rowStarts[size_t(row) + 1]; ++i) {
            if (m_cells[size_t(m_order[size_t(i)])].column != noColumn) {
                current.push_back(m_order[size_t(i)]);
            }
        }
        for (const int i : current) {
            m_row[size_t(m_cells[size_t(i)].column)] = m_cells[size_t(i)].value;
        }
        m_collector.add(m_row.data(), int(m_row.size()), true);
        std::fill(m_row.begin(), m_row.end(), std::string_view());
        const auto ends = [&](int i) {
            const Cell &cell = m_cells[size_t(i)];
            return cell.row + cell.span == row + 1;
        };
        current.erase(std::remove_if(current.begin(), current.end(), ends), current.end());
    }
}

QStringList NestedRecords::columnNames() const
{
    QStringList names;
    names.reserve(int(m_columns.size()));
    for (const Column &column : m_columns) {
        names.append(column.node->parent ? Utf8::decoded(NameTree::path(column.node))
                                         : m_valueName);
    }
    return names;
}

Dataset NestedRecords::withoutUnusedColumns(const Dataset &dataset) const
{
    std::vector<ColIndex> kept;
    for (size_t i = 0; i < m_columns.size(); ++i) {
        if (m_columns[i].filled || !m_columns[i].node->firstChild) {
            kept.push_back(ColIndex(int(i)));
        }
    }
    return kept.size() == m_columns.size() ? dataset : dataset.selectColumns(kept);
}

Dataset NestedRecords::finish(Messages *messages)
{
    const Dataset dataset = m_collector.finish(columnNames(), messages);
    // The empty columns are gone already when the options say so, unless there are no rows at all.
    return m_ignoreEmptyColumns ? dataset : withoutUnusedColumns(dataset);
}
