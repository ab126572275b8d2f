#pragma once

#include <QAbstractScrollArea>
#include <QList>
#include <QStringList>
#include <QVector>

/// Lines of text with the boundaries of their columns, which are set, moved and removed with the
/// mouse or the keyboard. Positions are counted in characters (code points), as the reader does.
///
/// A click sets a boundary, a drag moves it, a double click removes it. Left and Right move the
/// mark, with Ctrl to the next boundary, with Shift together with the boundary under it; Space sets
/// or removes a boundary, Delete removes it.
class FixedWidthView final : public QAbstractScrollArea
{
    Q_OBJECT

public:
    explicit FixedWidthView(QWidget *parent = nullptr);

    /// The first `ignored` lines are shown as not being read.
    void setLines(const QStringList &lines, int ignored);
    /// Ends of columns, ascending; what lies beyond the last is not read.
    void setBoundaries(const QList<int> &boundaries);
    QList<int> boundaries() const { return m_boundaries; }
    /// The x of a boundary in the viewport.
    int xOf(int position) const;

Q_SIGNALS:
    void boundariesEdited();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    int positionAt(int x) const;
    /// The boundary within the grip's reach of an x; -1 when there is none.
    int boundaryAt(int x) const;
    void add(int position);
    void remove(int position);
    bool moveBoundary(int from, int to);
    void setMark(int position);
    void moveMark(int by, Qt::KeyboardModifiers modifiers);
    void edited();
    void announce();
    void updateScrollBars();
    void paintRuler(QPainter *painter, int first, int last) const;
    void paintLines(QPainter *painter, int first, int last) const;
    void paintBoundaries(QPainter *painter) const;

    QVector<QVector<uint>> m_lines;
    int m_ignored = 0;
    int m_longest = 0;
    QList<int> m_boundaries;
    int m_mark = 0;
    int m_dragged = -1;
    int m_cellWidth = 8;
    int m_lineHeight = 16;
    int m_rulerHeight = 20;
};
