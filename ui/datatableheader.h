#pragma once

#include <QWidget>

class DataTableView;
struct KindCounts;

/// The names of a table's columns; under each a bar with the shares of numbers, dates, texts and
/// empty cells.
class DataTableHeader final : public QWidget
{
    Q_OBJECT

public:
    explicit DataTableHeader(DataTableView *view);

    int neededHeight() const;
    /// The width that a column's name needs.
    int neededWidth(int column) const;
    static QString kindsText(const KindCounts &kinds);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    /// The column whose right border lies at a position, or -1.
    int borderAt(int x) const;
    void paintColumn(QPainter *painter, int column, const QRect &rect) const;
    static void paintKinds(QPainter *painter, const KindCounts &kinds, const QRect &rect);

    DataTableView *m_view;
    int m_resized = -1;
    int m_resizeOffset = 0;
    int m_pressed = -1;
};
