#pragma once

#include <QObject>
#include <QPointF>

class CanvasView;
class Connection;
class GraphScene;
class Node;
class PreferencesStore;
class TransformCatalogue;
class QWidget;

/// Adds items to the document of a window: asks for files, finds places, connects to what is
/// selected.
class ItemAdder final : public QObject
{
    Q_OBJECT

public:
    ItemAdder(GraphScene *scene, CanvasView *canvas, const TransformCatalogue *catalogue,
              PreferencesStore *store, QWidget *window);

    void askForInputs(const QPointF *place = nullptr);
    void addInputs(const QStringList &paths, const QPointF &place);
    void addClipboardInput();
    /// Below the selected item, when there is just one that can have a table.
    void askForOutput(const QPointF *place = nullptr);
    void addNote(const QPointF *place = nullptr);
    void addTransform(const QString &typeName, const QPointF *place = nullptr);
    void insertTransform(const QString &typeName, Connection *connection);

private:
    void select(Node *node);
    QPointF placeForNew() const;

    GraphScene *m_scene;
    CanvasView *m_canvas;
    const TransformCatalogue *m_catalogue;
    PreferencesStore *m_store;
    QWidget *m_window;
};
