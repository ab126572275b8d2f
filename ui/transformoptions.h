#pragma once

#include <QHash>
#include <QPointer>
#include <QVector>
#include <QWidget>

class GraphScene;
class OptionPane;
class ParameterEditor;
class QLabel;
class QScrollArea;
class QVariant;
class TransformNode;
struct TransformParameter;

/// The options of a transform item, each with its editor, and the help of the one in hand. Edits go
/// through the scene, so that they can be undone; what happens to the item elsewhere is followed
/// without disturbing the field that is being used.
class TransformOptions final : public QWidget
{
    Q_OBJECT

public:
    explicit TransformOptions(GraphScene *scene, QWidget *parent = nullptr);

    /// Null: no item. The item may be deleted at any time.
    void setNode(TransformNode *node);
    TransformNode *node() const;
    /// Null when the item has no such option.
    ParameterEditor *editor(const QString &key) const;
    QString help() const;

private:
    struct Option
    {
        QString key;
        int type;
        QLabel *label; ///< null when the editor shows it
        ParameterEditor *editor;
    };

    void makeOptions();
    void addOption(const TransformParameter &parameter);
    void clearOptions();
    bool hasOptionsOf(const TransformNode &node) const;
    void follow(TransformNode *node);
    void showValues();
    void apply(const QString &key, const QVariant &value);
    void showHelp(const QString &help);

    GraphScene *m_scene;
    QPointer<TransformNode> m_node;
    QVector<Option> m_options;
    OptionPane *m_pane;
    QLabel *m_empty;
    QLabel *m_help;
    QScrollArea *m_helpArea;
};
