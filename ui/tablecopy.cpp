#include "tablecopy.h"

#include "utf8.h"

#include <QMimeData>

namespace {

constexpr qint64 largestHtml = 200000;

QString quoted(const QString &value)
{
    const bool isPlain = std::none_of(value.begin(), value.end(), [](QChar c) {
        return c == QLatin1Char('\t') || c == QLatin1Char('\n') || c == QLatin1Char('\r') ||
               c == QLatin1Char('"');
    });
    if (isPlain) {
        return value;
    }
    QString doubled = value;
    doubled.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + doubled + QLatin1Char('"');
}

QString htmlCell(const QString &value, QLatin1String tag)
{
    QString text = value.toHtmlEscaped();
    text.replace(QLatin1Char('\n'), QLatin1String("<br>"));
    return QLatin1Char('<') + tag + QLatin1Char('>') + text + QLatin1String("</") + tag +
           QLatin1Char('>');
}

/// Calls `cell(text, isHeader)` for each cell and `endRow()` behind each row.
template <class Cell, class EndRow>
void forEachCell(const DataTableModel &model, const CellRange &range, bool withHeader,
                 const Cell &cell, const EndRow &endRow)
{
    for (int row = withHeader ? range.top - 1 : range.top; row <= range.bottom; ++row) {
        for (int column = range.left; column <= range.right; ++column) {
            const bool isHeader = row < range.top;
            cell(isHeader ? model.columnName(column) : Utf8::decoded(model.value(row, column)),
                 isHeader);
        }
        endRow();
    }
}

} // namespace

QString TableCopy::tabSeparated(const DataTableModel &model, const CellRange &range,
                                bool withHeader)
{
    QString text;
    forEachCell(
        model, range, withHeader,
        [&text](const QString &value, bool) { text += quoted(value) + QLatin1Char('\t'); },
        [&text] {
            text.chop(1);
            text += QLatin1Char('\n');
        });
    // One cell is pasted into a field as it stands, without a line break behind it.
    if (range.cellCount() == 1 && !withHeader) {
        return Utf8::decoded(model.value(range.top, range.left));
    }
    return text;
}

QString TableCopy::html(const DataTableModel &model, const CellRange &range, bool withHeader)
{
    QString text = QStringLiteral("<table><tr>");
    forEachCell(
        model, range, withHeader,
        [&text](const QString &value, bool isHeader) {
            text += htmlCell(value, QLatin1String(isHeader ? "th" : "td"));
        },
        [&text] { text += QLatin1String("</tr>\n<tr>"); });
    text.chop(4);
    return text + QLatin1String("</table>");
}

QMimeData *TableCopy::mimeData(const DataTableModel &model, const CellRange &range, bool withHeader)
{
    auto *const data = new QMimeData;
    data->setText(tabSeparated(model, range, withHeader));
    const bool isOneValue = range.cellCount() == 1 && !withHeader;
    if (!isOneValue && range.cellCount() <= largestHtml) {
        data->setHtml(html(model, range, withHeader));
    }
    return data;
}
