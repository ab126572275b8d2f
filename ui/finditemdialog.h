#pragma once

#include <QDialog>

class GraphScene;
class Node;
class QLineEdit;
class QListWidget;

/// Finds items by name, kind, comment and file, as one types.
class FindItemDialog final : public QDialog
{
    Q_OBJECT

public:
    FindItemDialog(const GraphScene *scene, QWidget *parent);
    /// Null when nothing was chosen.
    Node *chosen() const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fill();

    const GraphScene *m_scene;
    QLineEdit *m_search;
    QListWidget *m_list;
};
