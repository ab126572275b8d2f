#include "datatableview.h"

#include "celltext.h"
#include "datatableaccessible.h"
#include "datatableheader.h"
#include "tablefind.h"
#include "texts.h"
#include "theme.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>

namespace {

constexpr int padding = 8;
constexpr int smallestWidth = 24;
constexpr int largestWidth = 4000;
constexpr int cornerSide = 6;

/// `share` of the colour on the background.
QColor mixed(const QColor &background, const QColor &color, double share)
{
    const auto part = [share](double a, double b) { return a + (b - a) * share; };
    return QColor::fromRgbF(part(background.redF(), color.redF()),
                            part(background.greenF(), color.greenF()),
                            part(background.blueF(), color.blueF()));
}

} // namespace

/// Worked out once for each painting.
struct DataTableView::Colors
{
    explicit Colors(bool hasFocus)
        : theme(Theme::current())
        , changed(mixed(theme.card, theme.warning, theme.isDark ? 0.22 : 0.13))
        , match(mixed(theme.card, theme.isDark ? theme.note : QColor(0xffc800), 0.3))
        , frame(hasFocus ? theme.accent : theme.secondaryText)
    {
    }

    QColor selected(const QColor &background) const
    {
        return mixed(background, theme.accent, theme.isDark ? 0.26 : 0.14);
    }

    const Theme &theme;
    QColor changed;
    QColor match;
    QColor frame;
};

DataTableView::DataTableView(DataTableModel *model, TableFind *find, QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_model(model)
    , m_find(find)
    , m_header(new DataTableHeader(this))
{
    DataTableAccessible::install();
    setAccessibleName(tr("Data table"));
    setFocusPolicy(Qt::StrongFocus);
    setFrameShape(QFrame::NoFrame);
    viewport()->setCursor(Qt::ArrowCursor);
    horizontalScrollBar()->setAccessibleName(tr("Scroll columns"));
    verticalScrollBar()->setAccessibleName(tr("Scroll rows"));
    connect(model, &DataTableModel::dataReplaced, this, &DataTableView::takeData);
    connect(model, &DataTableModel::sortChanged, viewport(), qOverload<>(&QWidget::update));
    connect(model, &DataTableModel::sortChanged, this, &DataTableView::announceCurrent);
    connect(model, &DataTableModel::kindsChanged, viewport(), qOverload<>(&QWidget::update));
    connect(find, &TableFind::textChanged, viewport(), qOverload<>(&QWidget::update));
    takeData();
}

DataTableView::~DataTableView() = default;

void DataTableView::setEmptyText(const QString &text)
{
    m_emptyText = text;
    viewport()->update();
    announceCurrent();
}

void DataTableView::setOutdated(bool outdated)
{
    m_outdated = outdated;
    viewport()->update();
    m_header->update();
}

void DataTableView::setShowBlanks(bool show)
{
    m_showBlanks = show;
    viewport()->update();
}

/// A table with the columns that were there keeps its place: most tables come from a small change
/// of an option.
void DataTableView::takeData()
{
    const QStringList names = m_model->data().columnNames();
    const bool keepsPlace = names == m_columnNames;
    m_columnNames = names;
    updateLayout();
    if (!keepsPlace) {
        horizontalScrollBar()->setValue(0);
        verticalScrollBar()->setValue(0);
    }
    const int lastRow = m_model->rowCount() - 1;
    if (lastRow < 0 || m_model->columnCount() == 0) {
        setSelection({}, {}, Whole::Cells);
    } else if (!keepsPlace || !m_current.isValid()) {
        setSelection({0, 0}, {0, 0}, Whole::Cells);
    } else {
        setSelection({qMin(m_anchor.row, lastRow), m_anchor.column},
                     {qMin(m_current.row, lastRow), m_current.column}, m_whole);
    }
}

void DataTableView::updateLayout()
{
    m_rowHeight = fontMetrics().height() + 8;
    const QString largest = Texts::count(qMax(999, m_model->rowCount()));
    m_rowNumberWidth = fontMetrics().horizontalAdvance(largest) + 2 * padding;
    std::vector<int> widths;
    for (int column = 0; column < m_model->columnCount(); ++column) {
        widths.push_back(widthFor(column));
    }
    m_columns.setWidths(widths);
    const bool hasColumns = m_model->columnCount() > 0;
    m_header->setVisible(hasColumns);
    setViewportMargins(0, hasColumns ? m_header->neededHeight() : 0, 0, 0);
    updateScrollBars();
    viewport()->update();
    m_header->update();
}

int DataTableView::widthFor(int column) const
{
    const auto own = m_ownWidths.constFind(m_model->columnName(column));
    if (own != m_ownWidths.constEnd()) {
        return *own;
    }
    int width = m_header->neededWidth(column);
    for (const int row : m_model->sampleRows()) {
        width = qMax(width, widthOfRow(row, column));
    }
    return qBound(fontMetrics().averageCharWidth() * 8, width,
                  fontMetrics().averageCharWidth() * 42);
}

int DataTableView::widthOfRow(int dataRow, int column) const
{
    constexpr int charactersMeasured = 200;
    const CellText text(m_model->reader(column).utf8(dataRow), charactersMeasured * 2, false);
    return fontMetrics().horizontalAdvance(text.text()) + 2 * padding + 2;
}

int DataTableView::fittingWidth(int column) const
{
    int width = m_header->neededWidth(column);
    for (const int row : m_model->sampleRows()) {
        width = qMax(width, widthOfRow(row, column));
    }
    const int first = verticalScrollBar()->value();
    const int last = qMin(m_model->rowCount() - 1, first + wholeRowsInSight());
    for (int row = first; row <= last; ++row) {
        width = qMax(width, widthOfRow(m_model->dataRow(row), column));
    }
    return width;
}

void DataTableView::resizeColumn(int column, int width)
{
    const int bounded = qBound(smallestWidth, width, largestWidth);
    m_ownWidths[m_model->columnName(column)] = bounded;
    m_columns.setWidth(column, bounded);
    updateScrollBars();
    viewport()->update();
    m_header->update();
}

void DataTableView::fitColumn(int column)
{
    resizeColumn(column, fittingWidth(column));
}

int DataTableView::wholeRowsInSight() const
{
    return qMax(1, viewport()->height() / m_rowHeight);
}

void DataTableView::updateScrollBars()
{
    verticalScrollBar()->setRange(0, qMax(0, m_model->rowCount() - wholeRowsInSight()));
    verticalScrollBar()->setPageStep(wholeRowsInSight());
    verticalScrollBar()->setSingleStep(1);
    const int width = qMax(0, viewport()->width() - m_rowNumberWidth);
    horizontalScrollBar()->setRange(0, qMax(0, m_columns.total() - width));
    horizontalScrollBar()->setPageStep(width);
    horizontalScrollBar()->setSingleStep(fontMetrics().averageCharWidth() * 4);
    const QRect area = viewport()->geometry();
    m_header->setGeometry(area.left(), area.top() - m_header->neededHeight(), area.width(),
                          m_header->neededHeight());
}

void DataTableView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBars();
}

void DataTableView::scrollContentsBy(int dx, int)
{
    viewport()->update();
    if (dx != 0) {
        m_header->update();
    }
}

void DataTableView::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        updateLayout();
    }
}

int DataTableView::columnX(int column) const
{
    return m_rowNumberWidth + m_columns.left(column) - horizontalScrollBar()->value();
}

int DataTableView::rowAt(int y) const
{
    const int row = verticalScrollBar()->value() + y / m_rowHeight;
    return y >= 0 && row < m_model->rowCount() ? row : -1;
}

int DataTableView::columnAt(int x) const
{
    return m_columns.at(x - m_rowNumberWidth + horizontalScrollBar()->value());
}

QRect DataTableView::cellRect(CellPlace place) const
{
    const qint64 y = (qint64(place.row) - verticalScrollBar()->value()) * m_rowHeight;
    // Far outside is outside; the difference itself may not fit.
    const int bounded = int(qBound(qint64(-100000), y, qint64(100000)));
    return {columnX(place.column), bounded, m_columns.width(place.column), m_rowHeight};
}

void DataTableView::paintEvent(QPaintEvent *event)
{
    const Theme &theme = Theme::current();
    QPainter painter(viewport());
    painter.fillRect(event->rect(), theme.card);
    if (m_model->rowCount() == 0 || m_model->columnCount() == 0) {
        paintEmptyText(&painter);
    } else {
        paintRows(&painter, event->rect());
    }
    if (m_outdated) {
        QColor veil = theme.card;
        veil.setAlphaF(0.45);
        painter.fillRect(event->rect(), veil);
    }
}

void DataTableView::paintEmptyText(QPainter *painter) const
{
    const QString text = m_emptyText.isEmpty() ? tr("This table has no rows.") : m_emptyText;
    const int width =
        qMin(viewport()->width() - 4 * padding, painter->fontMetrics().averageCharWidth() * 60);
    QRect area = viewport()->rect();
    area.setWidth(width);
    area.moveCenter(viewport()->rect().center());
    painter->setPen(Theme::current().secondaryText);
    painter->drawText(area, int(Qt::AlignCenter) | int(Qt::TextWordWrap), text);
}

void DataTableView::paintRows(QPainter *painter, const QRect &area)
{
    const Colors colors(hasFocus());
    const int top = verticalScrollBar()->value();
    const int firstRow = top + area.top() / m_rowHeight;
    const int lastRow = qMin(m_model->rowCount() - 1, top + area.bottom() / m_rowHeight);
    const int firstColumn = qMax(0, columnAt(qMax(area.left(), m_rowNumberWidth)));

    painter->save();
    painter->setClipRect(area.intersected(viewport()->rect().adjusted(m_rowNumberWidth, 0, 0, 0)));
    for (int row = firstRow; row <= lastRow; ++row) {
        for (int column = firstColumn; column < m_columns.count(); ++column) {
            const QRect rect = cellRect({row, column});
            if (rect.left() > area.right()) {
                break;
            }
            paintCell(painter, {row, column}, rect, colors);
        }
    }
    if (m_current.isValid()) {
        painter->setPen(QPen(colors.frame, 2));
        painter->drawRect(cellRect(m_current).adjusted(1, 1, -2, -2));
    }
    painter->restore();
    if (area.left() < m_rowNumberWidth) {
        for (int row = firstRow; row <= lastRow; ++row) {
            const QRect rect(0, (row - top) * m_rowHeight, m_rowNumberWidth, m_rowHeight);
            paintRowNumber(painter, row, rect, colors);
        }
    }
}

void DataTableView::paintRowNumber(QPainter *painter, int row, const QRect &rect,
                                   const Colors &colors) const
{
    const CellRange range = selection();
    const bool isSelected = m_whole != Whole::Columns && row >= range.top && row <= range.bottom;
    painter->fillRect(rect,
                      isSelected ? colors.selected(colors.theme.window) : colors.theme.window);
    painter->setPen(colors.theme.border);
    painter->drawLine(rect.topRight(), rect.bottomRight());
    painter->setPen(isSelected ? colors.theme.text : colors.theme.secondaryText);
    painter->drawText(rect.adjusted(0, 0, -padding, 0), int(Qt::AlignRight) | int(Qt::AlignVCenter),
                      Texts::count(qint64(m_model->dataRow(row)) + 1));
}

void DataTableView::paintCell(QPainter *painter, CellPlace place, const QRect &rect,
                              const Colors &colors) const
{
    const bool isChanged = m_model->isChanged(place.row, place.column);
    const bool isMatch = m_find->matches(place.row, place.column);
    QColor background = isMatch ? colors.match : isChanged ? colors.changed : colors.theme.card;
    if (place != m_current && selection().contains(place)) {
        background = colors.selected(background);
    }
    if (background != colors.theme.card) {
        painter->fillRect(rect, background);
    }
    painter->setPen(colors.theme.grid);
    painter->drawLine(rect.bottomLeft(), rect.bottomRight());
    painter->drawLine(rect.topRight(), rect.bottomRight());
    if (isChanged) {
        QPainterPath corner(rect.topRight() - QPoint(cornerSide, 0));
        corner.lineTo(rect.topRight());
        corner.lineTo(rect.topRight() + QPoint(0, cornerSide));
        painter->fillPath(corner, colors.theme.warning);
    }
    if (isMatch) {
        painter->fillRect(rect.left() + padding, rect.bottom() - 2, rect.width() - 2 * padding, 2,
                          colors.theme.note);
    }
    const std::string_view value = m_model->value(place.row, place.column);
    if (!value.empty()) {
        const QRect inner = rect.adjusted(padding, 0, -padding, 0);
        painter->setPen(colors.theme.text);
        CellText(value, inner.width(), m_showBlanks)
            .draw(painter, inner, m_model->isNumeric(place.column), colors.theme.accent);
    }
}

QString DataTableView::currentCellText() const
{
    constexpr int charactersSpoken = 200;
    if (!m_current.isValid()) {
        return m_emptyText;
    }
    const std::string_view value = m_model->value(m_current.row, m_current.column);
    //: column, row number, value of a cell
    return tr("%1, row %2: %3")
        .arg(m_model->columnName(m_current.column),
             Texts::count(qint64(m_model->dataRow(m_current.row)) + 1),
             value.empty() ? tr("empty") : firstCharacters(value, charactersSpoken));
}

void DataTableView::announceCurrent()
{
    setAccessibleDescription(currentCellText());
    DataTableAccessible::announce(this);
}
