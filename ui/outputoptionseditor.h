#pragma once

#include "optionform.h"
#include "outputoptions.h"

#include <QPointer>
#include <QWidget>

class GraphScene;
class OptionPane;
class OutputNode;
class PathField;

/// The options of an output item: those that mean something for its file type. Edits are steps of
/// the scene's undo history.
class OutputOptionsEditor final : public QWidget
{
    Q_OBJECT

public:
    explicit OutputOptionsEditor(GraphScene *scene, QWidget *parent = nullptr);

    /// Null: nothing is shown.
    void setNode(OutputNode *node);

private:
    using Form = OptionForm<OutputOptions>;

    void addTarget();
    void addFilesColumn();
    void addWriting();
    void addText();
    void addXml();
    void addJson();
    void addSpreadsheet();
    void addTemplate();
    void addItem();
    Form::Field &addColumnChoices(const char *key, const QString &label, const QString &title,
                                  const QStringList &choices, QStringList OutputOptions::*member);

    void edit(const QString &label, const Form::Change &change);
    void reload(bool force);
    void takePath(const QString &path, bool isAnotherFile);
    void takeTemplate(const QString &path, bool isAnotherFile);
    void followUpstream();
    QStringList columns() const;
    QString absolutePath(const QString &path) const;
    QString pathNotice(const OutputOptions &options) const;
    QString templateNotice(const OutputOptions &options) const;

    GraphScene *m_scene;
    QPointer<OutputNode> m_node;
    QPointer<QObject> m_upstream;
    OptionPane *m_pane;
    Form m_form;
    PathField *m_path = nullptr;
    PathField *m_template = nullptr;
};
