#pragma once

#include <QWidget>

class GraphScene;
class InputOptionsEditor;
class Node;
class NoteEditor;
class OutputOptionsEditor;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QStackedWidget;
class QTabWidget;
class QTextBrowser;
class QToolButton;
class TransformOptions;

/// The right pane: name, status, options, messages, information and comment of the selected item.
class ItemPane final : public QWidget
{
    Q_OBJECT

public:
    explicit ItemPane(GraphScene *scene, QWidget *parent = nullptr);

    Node *node() const { return m_node; }
    /// Shows an item, or nothing, or that several are selected.
    void showSelection();
    /// Something of the item may have changed.
    void refresh(const Node *node);
    void focusOptions();
    void focusName();

Q_SIGNALS:
    /// The run button.
    void runWanted();
    /// Something was edited here.
    void edited();

protected:
    void changeEvent(QEvent *event) override;

private:
    QWidget *makeHead();
    QWidget *makeDetails();
    void setNode(Node *node, int selectedCount);
    void showOptions();
    void showHead();
    void showMessages();
    void showInformation();
    void showComment();
    void commitName();
    void commitComment();

    GraphScene *m_scene;
    Node *m_node = nullptr;
    int m_selectedCount = 0;

    QLabel *m_icon;
    QLineEdit *m_name;
    QLabel *m_status;
    QToolButton *m_run;
    QStackedWidget *m_options;
    QLabel *m_hint;
    NoteEditor *m_note;
    InputOptionsEditor *m_input;
    TransformOptions *m_transform;
    OutputOptionsEditor *m_output;
    QTabWidget *m_details;
    QTextBrowser *m_messages;
    QTextBrowser *m_information;
    QPlainTextEdit *m_comment;
};
