#include "sheetjob.h"

#include "messages.h"
#include "outputoptions.h"
#include "outputwriter.h"
#include "spreadsheetreader.h"
#include "texts.h"
#include "textwidth.h"
#include "utf8.h"

#include <algorithm>

namespace {

constexpr int addressesTold = 10;
constexpr int sampledRows = 1000;

} // namespace

SheetJob::SheetJob(const OutputOptions &options, const OutputContext &context,
                   const Dataset &dataset)
    : m_options(options)
    , m_context(context)
    , m_dataset(dataset)
    , m_hasNames(options.writeHeader && dataset.hasHeader())
{
    m_columnFormats.resize(size_t(columnCount()), CellFormat::Automatic);
    if (options.excelOutput != 0) {
        const QStringList &formats = options.excelManualColumnFormats;
        for (int column = 0; column < columnCount() && column < formats.size(); ++column) {
            m_columnFormats[size_t(column)] = cellFormatOf(formats.at(column));
        }
    }
}

bool SheetJob::mayHaveFormulas() const
{
    return std::find(m_columnFormats.begin(), m_columnFormats.end(), CellFormat::Formula) !=
           m_columnFormats.end();
}

bool SheetJob::fits(qint64 firstRow, int mostRows, int mostColumns, Messages *messages) const
{
    if (firstRow + sheetRows() > mostRows) {
        messages->fail(tr("%1 row(s) are too many for a sheet of type %2, which has at most %3. "
                          "Nothing was written.")
                           .arg(Texts::count(firstRow + sheetRows()),
                                fileTypeLabel(m_options.fileType), Texts::count(mostRows)));
        return false;
    }
    if (columnCount() > mostColumns) {
        messages->fail(tr("%1 column(s) are too many for a sheet of type %2, which has at most %3. "
                          "Nothing was written.")
                           .arg(Texts::count(columnCount()), fileTypeLabel(m_options.fileType),
                                Texts::count(mostColumns)));
        return false;
    }
    return true;
}

std::vector<double> SheetJob::columnWidths()
{
    constexpr double least = 6;
    constexpr double most = 60;
    constexpr double margin = 2;
    std::vector<double> widths(size_t(columnCount()), least);
    const QStringList columnNames = m_hasNames ? names() : QStringList();
    for (int column = 0; column < columnCount(); ++column) {
        const ColumnReader reader = m_dataset.columnReader(ColIndex(column));
        int width =
            column < columnNames.size() ? textWidth(Utf8::encoded(columnNames.at(column))) : 0;
        for (int row = 0; row < std::min(rowCount(), sampledRows) && width < most; ++row) {
            const std::string_view text = reader.utf8(row).substr(0, 4 * size_t(most));
            width = std::max(width, textWidth(text));
        }
        widths[size_t(column)] = std::clamp(width + margin, least, most);
    }
    return widths;
}

void SheetJob::makeColumns()
{
    m_columns.clear();
    m_columns.reserve(size_t(columnCount()));
    // Wide tables would take much memory for what is soon made again.
    constexpr size_t mostMemory = size_t(24) << 20;
    const size_t mostRemembered =
        mostMemory / sizeof(CellValue) / std::max(size_t(columnCount()), size_t(1));
    for (int column = 0; column < columnCount(); ++column) {
        m_columns.emplace_back(m_columnFormats[size_t(column)],
                               m_dataset.columnReader(ColIndex(column)), m_context.dateFormats,
                               m_dateSystem, mostRemembered, &m_formats);
    }
}

void SheetJob::count(Problems *problems, int row, int column) const
{
    if (++problems->count <= addressesTold) {
        problems->cells.append(cellName(int(m_firstDataRow) + row, column));
    }
}

void SheetJob::countProblem(int row, int column, Cell *cell)
{
    if (cell->value.kind == CellValue::Kind::TooLong) {
        count(&m_tooLong, row, column);
        *cell = Cell();
    } else {
        count(&m_unfit, row, column);
    }
}

void SheetJob::countUnfit(int row, int column)
{
    count(&m_unfit, row, column);
}

void SheetJob::tell(Messages *messages) const
{
    const auto list = [](const Problems &problems) {
        const QString cells = problems.cells.join(QLatin1String(", "));
        return problems.count > problems.cells.size() ? tr("%1 and others").arg(cells) : cells;
    };
    if (m_tooLong.count > 0) {
        messages->warn(tr("%1 value(s) are longer than the %2 characters that a cell can hold. "
                          "Their cells were left empty: %3.")
                           .arg(Texts::count(m_tooLong.count),
                                Texts::count(qint64(CellColumn::mostCharacters)), list(m_tooLong)));
    }
    if (m_unfit.count > 0) {
        messages->warn(tr("%1 value(s) do not fit the cell format of their column and were written "
                          "as text: %2.")
                           .arg(Texts::count(m_unfit.count), list(m_unfit)));
    }
}
