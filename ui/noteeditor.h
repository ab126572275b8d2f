#pragma once

#include <QPointer>
#include <QWidget>

class GraphScene;
class NoteNode;
class QButtonGroup;
class QComboBox;
class QPlainTextEdit;

/// Text, colour and arrow of a note.
class NoteEditor final : public QWidget
{
    Q_OBJECT

public:
    explicit NoteEditor(GraphScene *scene, QWidget *parent = nullptr);
    void setNode(NoteNode *node);

private:
    void showNode();
    void commitAppearance();

    GraphScene *m_scene;
    QPointer<NoteNode> m_node;
    QPlainTextEdit *m_text;
    QButtonGroup *m_colors;
    QComboBox *m_arrow;
};
