#pragma once

#include "columnlayout.h"
#include "datatablemodel.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QHash>

class DataTableHeader;
class QMenu;
class TableFind;

/// Shows a table of any length. Rows have one height and nothing is kept for a row; the scroll bar
/// counts rows, so that no position in pixels can overflow.
class DataTableView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    DataTableView(DataTableModel *model, TableFind *find, QWidget *parent = nullptr);
    ~DataTableView() override;

    DataTableModel *model() const { return m_model; }
    /// Shown while there are no rows.
    void setEmptyText(const QString &text);
    /// Dims what is shown.
    void setOutdated(bool outdated);
    bool isOutdated() const { return m_outdated; }
    void setShowBlanks(bool show);

    CellPlace current() const { return m_current; }
    CellRange selection() const;
    bool isColumnSelected(int column) const;
    /// With `extend` the selection grows from where it began.
    void setCurrent(CellPlace place, bool extend = false);
    void selectColumn(int column, bool extend = false);
    void selectRow(int row, bool extend = false);
    void selectAll();

    const ColumnLayout &columns() const { return m_columns; }
    int rowNumberWidth() const { return m_rowNumberWidth; }
    void resizeColumn(int column, int width);
    /// As wide as the sample and the rows in sight need.
    void fitColumn(int column);
    /// In the coordinates of the viewport.
    int columnX(int column) const;
    int rowAt(int y) const;
    int columnAt(int x) const;
    QRect cellRect(CellPlace place) const;

    void copy(bool withHeader);
    void addColumnActions(QMenu *menu, int column);
    /// "country, row 12: Finland".
    QString currentCellText() const;

Q_SIGNALS:
    void columnValuesWanted(int column);
    void filterWanted(const QString &column, const QString &value);
    void findWanted();
    void findNextWanted(bool forward);
    /// A sentence that the user should read.
    void noted(const QString &text);

protected:
    bool event(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void changeEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    enum class Whole { Cells, Rows, Columns };
    struct Colors;

    void takeData();
    void updateLayout();
    void updateScrollBars();
    int widthFor(int column) const;
    int fittingWidth(int column) const;
    int widthOfRow(int dataRow, int column) const;
    int wholeRowsInSight() const;
    void scrollTo(CellPlace place);
    void setSelection(CellPlace anchor, CellPlace current, Whole whole);
    void announceCurrent();

    void paintRows(QPainter *painter, const QRect &area);
    void paintRowNumber(QPainter *painter, int row, const QRect &rect, const Colors &colors) const;
    void paintCell(QPainter *painter, CellPlace place, const QRect &rect,
                   const Colors &colors) const;
    void paintEmptyText(QPainter *painter) const;

    bool handleCommandKey(QKeyEvent *event);
    bool moveByKey(QKeyEvent *event);
    void dragTo(const QPoint &position);
    void showTip(const QPoint &position, const QPoint &globalPosition);
    void showValue(CellPlace place);
    QMenu *makeMenu(CellPlace place);

    DataTableModel *m_model;
    TableFind *m_find;
    DataTableHeader *m_header;
    ColumnLayout m_columns;
    QStringList m_columnNames;
    QHash<QString, int> m_ownWidths; // set by the user, by column name
    int m_rowHeight = 1;
    int m_rowNumberWidth = 0;
    CellPlace m_current;
    CellPlace m_anchor;
    Whole m_whole = Whole::Cells;
    bool m_dragging = false;
    QBasicTimer m_dragTimer;
    QString m_emptyText;
    bool m_outdated = false;
    bool m_showBlanks = false;
};
