#pragma once

#include "transformcatalogue.h"

#include <QGraphicsView>
#include <functional>

class CanvasScene;
class Connection;
class GraphScene;
class Node;
class QMenu;

/// The canvas of the window: looks at a graph, and edits it with mouse and keyboard through the
/// graph's undoable operations. What needs more than the graph (files, dialogs, options) it
/// announces.
class CanvasView final : public QGraphicsView
{
    Q_OBJECT

public:
    explicit CanvasView(GraphScene *graph, QWidget *parent = nullptr);
    ~CanvasView() override;

    void fit();
    /// Shows everything, or as much from its beginning as can still be read.
    void showBeginning();
    void zoomIn();
    void zoomOut();
    void resetZoom();
    /// 1 when texts have the size that they have elsewhere.
    double zoom() const;
    void setSnapToGrid(bool snap);
    bool snapToGrid() const;

    void selectAll();
    /// At the pointer, else in the middle.
    void showQuickAdd();
    void cutSelection();
    void copySelection();
    void paste();
    void duplicateSelection();
    /// The selected items, or the chosen connection.
    void deleteSelection();
    void deleteSelectionHealed();
    /// The items at the left to the rightmost one.
    void connectSelection();

    /// A free place for a new input: below the others, or where one looks.
    QPointF placeForInput() const;
    /// To the right of these items, or below what is there.
    QPointF placeBeside(const QList<Node *> &upstream) const;
    using QGraphicsView::centerOn;
    /// Unless it can be seen already.
    void centerOn(Node *node);

Q_SIGNALS:
    void filesDropped(const QStringList &paths, const QPointF &scenePos);
    void editRequested(Node *node);
    /// Chosen in the quick-add box or dropped; the selected items are to be its inputs.
    void transformWanted(const QString &typeName, const QPointF &scenePos);
    /// To be put into the connection.
    void transformWantedOn(const QString &typeName, Connection *connection);
    void inputWanted(const QPointF &scenePos);
    void outputWanted(const QPointF &scenePos);
    void noteWanted(const QPointF &scenePos);
    void hintChanged(const QString &text);

protected:
    bool viewportEvent(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void drawBackground(QPainter *painter, const QRectF &rect) override;
    void drawForeground(QPainter *painter, const QRectF &rect) override;

    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    bool focusNextPrevChild(bool next) override;

    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    // --- Looking
    void applyZoom(double zoom);
    void setZoom(double zoom, const QPoint &fixed);
    void panTo(const QPoint &pos);
    void tellCurrent();
    void tellHint(const QString &text);
    QRectF visibleRect() const;
    QPoint pointerOrMiddle() const;

    // --- Editing
    /// Where an item chosen in the quick-add box goes: to the pointer, beside the selected items,
    /// into the chosen connection.
    enum class PlaceFor { Pointer, Selection, Connection };
    void openQuickAdd(const QPoint &pos, PlaceFor placeFor);
    void want(const QString &choice, const QPointF &scenePos, Connection *connection);
    QPointF freePlace(const QPointF &scenePos) const;
    void pasteAt(const QPointF *scenePos);
    void selectAdded(const std::function<void()> &edit);
    void fillItemMenu(QMenu *menu);
    void fillConnectionMenu(QMenu *menu, const QPoint &pos);
    void fillCanvasMenu(QMenu *menu, const QPoint &pos);

    // --- Keys
    bool handleArrow(QKeyEvent *event);
    bool handleCommand(QKeyEvent *event);
    void goTo(Node *node);

    GraphScene *m_graph;
    CanvasScene *m_scene;
    TransformCatalogue m_catalogue;
    QPoint m_panFrom;
    bool m_isPanning = false;
    /// Space is held: it pans with the mouse, and opens the quick-add box when nothing was panned.
    bool m_isSpaceDown = false;
    bool m_isDropOffered = false;
    bool m_wasShown = false;
};
