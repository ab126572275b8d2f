#pragma once

#include <QHash>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>
#include <memory>

class CanvasScene;
class DraftItem;
class GuidesItem;
class NodeItem;

/// What the pressed mouse button does on the canvas. Destroyed without finish(), it leaves
/// everything as it was.
class CanvasDrag
{
public:
    virtual ~CanvasDrag() = default;
    CanvasDrag(const CanvasDrag &) = delete;
    CanvasDrag &operator=(const CanvasDrag &) = delete;

    /// `scale` is that of the view, `free` switches snapping off.
    virtual void moveTo(const QPointF &scenePos, double scale, bool free) = 0;
    virtual void finish(const QPointF &scenePos) = 0;

protected:
    CanvasDrag() = default;
};

/// Moves items; the model learns of it once, at the end.
class MoveDrag final : public CanvasDrag
{
public:
    MoveDrag(CanvasScene *scene, NodeItem *grabbed, const QList<NodeItem *> &items,
             const QPointF &start);
    ~MoveDrag() override;

    void moveTo(const QPointF &scenePos, double scale, bool free) override;
    void finish(const QPointF &scenePos) override;
    /// The same from the keyboard: further by `step`.
    void moveBy(const QPointF &step);

private:
    void show(const QPointF &offset);

    CanvasScene *m_scene;
    NodeItem *m_grabbed;
    QList<NodeItem *> m_items;
    QVector<QPointF> m_places;
    QVector<QRectF> m_others;
    QPointF m_start;
    QPointF m_grabbedPlace;
    QPointF m_offset;
    std::unique_ptr<GuidesItem> m_guides;
    bool m_isDone = false;
};

/// Draws a connection from a port; shows where it may end and says why not elsewhere.
class ConnectDrag final : public CanvasDrag
{
public:
    /// From an output port, or from an input port backwards.
    ConnectDrag(CanvasScene *scene, NodeItem *start, bool fromOutput);
    ~ConnectDrag() override;

    void moveTo(const QPointF &scenePos, double scale, bool free) override;
    void finish(const QPointF &scenePos) override;

private:
    void clearOffers();
    void showDraft(const QPointF &pointer);

    CanvasScene *m_scene;
    NodeItem *m_start;
    bool m_fromOutput;
    NodeItem *m_target = nullptr;
    /// Why a connection cannot end at an item; empty where it can.
    QHash<NodeItem *, QString> m_reasons;
    std::unique_ptr<DraftItem> m_draft;
};
