#pragma once

#include "inputoptions.h"
#include "optionform.h"

#include <QPointer>
#include <QWidget>
#include <memory>

class GraphScene;
class InputNode;
class InputPreview;
class OptionPane;
class PathField;
class QFrame;
class QPushButton;

/// The options of an input item: those that mean something for its file type, and a preview of what
/// they make of the file. Edits are steps of the scene's undo history.
class InputOptionsEditor final : public QWidget
{
    Q_OBJECT

public:
    explicit InputOptionsEditor(GraphScene *scene, QWidget *parent = nullptr);

    /// Null: nothing is shown.
    void setNode(InputNode *node);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void addSource();
    void addText();
    void addSheet();
    void addLayout();
    void addFixedWidth();
    void addValues();
    void addSchema();
    void addItem();

    void edit(const QString &label, const OptionForm<InputOptions>::Change &change);
    void reload(bool force);
    void takePath(const QString &path, bool isAnotherFile);
    void pasteText();
    void chooseSheet();
    void editWidths();
    void editSchema();
    bool columnsOfInput(QStringList *columns);
    QString absolutePath() const;
    QStringList linesBelowIgnored() const;
    QString pathNotice(const InputOptions &options) const;

    GraphScene *m_scene;
    QPointer<InputNode> m_node;
    OptionPane *m_pane;
    QFrame *m_line;
    InputPreview *m_preview;
    OptionForm<InputOptions> m_form;
    PathField *m_path = nullptr;
    QPushButton *m_schemaButton = nullptr;
};
