#include "sheettable.h"

#include "inputoptions.h"
#include "texts.h"

#include <algorithm>

SheetTable::SheetTable(const InputOptions &options, Order order)
    : m_collector(options, nullptr)
    , m_order(order)
    , m_ignoredRows(options.ignoredRows)
    , m_ignoreHiddenRows(options.ignoreExcelHiddenRows)
    , m_ignoreHiddenColumns(options.ignoreExcelHiddenColumns)
{
    m_collector.setLengthsMatter(false);
}

void SheetTable::hideColumns(int first, int last)
{
    m_hiddenColumns.resize(mostSheetColumns);
    for (int column = first; column <= last; ++column) {
        m_hiddenColumns[size_t(column)] = true;
    }
}

bool SheetTable::startRow(int row, bool hidden)
{
    if (m_order == Order::Sorted) {
        m_row = row;
        if (hidden) {
            m_hiddenRowNumbers.push_back(row);
        }
        return true;
    }
    if (row == m_row) {
        m_hidden = m_hidden || hidden;
        return true;
    }
    if (row < m_row) {
        m_outOfOrder = true;
        return false;
    }
    endRow();
    m_row = row;
    m_hidden = hidden;
    return true;
}

void SheetTable::add(int column, std::string_view utf8, bool lasting)
{
    if (m_order == Order::Sorted) {
        m_cells.push_back({m_row, column, m_cellTexts.size(), utf8.size()});
        m_cellTexts.append(utf8);
        return;
    }
    if (size_t(column) >= m_values.size()) {
        m_values.resize(size_t(column) + 1);
    }
    const auto number = size_t(column);
    // A cell that is given twice may have a text in m_texts already, which would be placed last.
    const bool again = column < m_width && m_values[number].data() != nullptr;
    if (!lasting || again) {
        const size_t from = m_texts.size();
        m_texts.text()->append(utf8);
        m_texts.end(column, from);
    }
    m_values[number] = utf8;
    m_width = std::max(m_width, column + 1);
}

// The rows to skip at the top are those of the sheet, hidden ones included.
bool SheetTable::isLeftOut(int row) const
{
    return m_ignoreHiddenRows && row >= m_ignoredRows;
}

void SheetTable::endRow()
{
    if (m_row < 0) {
        return;
    }
    const bool leftOut = m_hidden && isLeftOut(m_row);
    if (m_width == 0) {
        m_hiddenEmptyRows += leftOut ? 1 : 0;
        return;
    }
    m_usedColumns = std::max(m_usedColumns, m_width);
    for (int empty = m_row - m_nextRow - m_hiddenEmptyRows; empty > 0; --empty) {
        m_collector.add(nullptr, 0, true);
    }
    m_hiddenRows += m_hiddenEmptyRows;
    m_hiddenEmptyRows = 0;
    m_nextRow = m_row + 1;
    if (leftOut) {
        ++m_hiddenRows;
    } else {
        m_texts.place(m_values.data());
        m_collector.add(m_values.data(), compact(), true);
    }
    std::fill(m_values.begin(), m_values.begin() + m_width, std::string_view());
    m_texts.clear();
    m_width = 0;
}

/// Moves the values of the columns that stay together and answers how many there are.
int SheetTable::compact()
{
    if (!m_ignoreHiddenColumns || m_hiddenColumns.empty()) {
        return m_width;
    }
    int width = 0;
    int used = 0;
    for (int column = 0; column < m_width; ++column) {
        if (!m_hiddenColumns[size_t(column)]) {
            m_values[size_t(width)] = m_values[size_t(column)];
            ++width;
            used = m_values[size_t(width - 1)].empty() ? used : width;
        }
    }
    return used;
}

void SheetTable::sortRows()
{
    std::vector<Cell> cells = std::move(m_cells);
    std::vector<int> hidden = std::move(m_hiddenRowNumbers);
    std::stable_sort(cells.begin(), cells.end(),
                     [](const Cell &a, const Cell &b) { return a.row < b.row; });
    std::sort(hidden.begin(), hidden.end());
    m_order = Order::AsRead;
    m_row = -1;
    size_t nextHidden = 0;
    for (const Cell &cell : cells) {
        while (nextHidden < hidden.size() && hidden[nextHidden] <= cell.row) {
            startRow(hidden[nextHidden++], true);
        }
        startRow(cell.row, false);
        add(cell.column, std::string_view(m_cellTexts).substr(cell.from, cell.size), true);
    }
}

Dataset SheetTable::finish(Messages *messages)
{
    if (m_order == Order::Sorted) {
        sortRows();
    }
    endRow();
    noteHidden(messages);
    if (m_unknownResults > 0) {
        messages->warn(tr("%1 formula(s) have no stored result and are read as empty. Calculate "
                          "and save the workbook in a spreadsheet program.")
                           .arg(Texts::count(m_unknownResults)));
    }
    return m_collector.finish(messages);
}

void SheetTable::noteHidden(Messages *messages) const
{
    if (m_hiddenRows > 0) {
        messages->note(tr("%1 hidden row(s) ignored").arg(Texts::count(m_hiddenRows)));
    }
    if (!m_ignoreHiddenColumns || m_hiddenColumns.empty()) {
        return;
    }
    const auto hidden =
        std::count(m_hiddenColumns.begin(), m_hiddenColumns.begin() + m_usedColumns, true);
    if (hidden > 0) {
        messages->note(tr("%1 hidden column(s) ignored").arg(Texts::count(hidden)));
    }
}
