#include "transformoptions.h"

#include "graphscene.h"
#include "optionpane.h"
#include "parametereditor.h"
#include "parametereditors.h"
#include "theme.h"
#include "transform.h"
#include "transformnode.h"

#include <QApplication>
#include <QLabel>
#include <QScrollArea>
#include <QSplitter>
#include <QVBoxLayout>

namespace {

constexpr int margin = 8;
constexpr int labelGap = 6;
constexpr int helpLines = 4;

/// True when setting the value would only add to the undo history.
bool isSame(const TransformParameter &parameter, const QVariant &value)
{
    TransformParameter other = parameter;
    other.value = value;
    return other.valueText() == parameter.valueText() &&
           other.columnNames() == parameter.columnNames();
}

} // namespace

TransformOptions::TransformOptions(GraphScene *scene, QWidget *parent)
    : QWidget(parent)
    , m_scene(scene)
    , m_pane(new OptionPane)
    , m_empty(new QLabel)
    , m_help(new QLabel)
    , m_helpArea(new QScrollArea)
{
    m_empty->setWordWrap(true);
    m_pane->column()->addWidget(m_empty);
    m_pane->column()->addStretch(1);

    m_help->setTextFormat(Qt::PlainText);
    m_help->setWordWrap(true);
    m_help->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_help->setContentsMargins(margin, margin / 2, margin, margin / 2);
    m_help->setFont(Theme::hintFont(font()));
    m_helpArea->setWidget(m_help);
    m_helpArea->setWidgetResizable(true);
    m_helpArea->setFrameShape(QFrame::NoFrame);
    m_helpArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_helpArea->setAccessibleName(tr("Help of the option"));
    m_helpArea->setFocusPolicy(Qt::TabFocus);
    m_helpArea->setMinimumHeight(fontMetrics().lineSpacing() * 2);

    auto *const splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(m_pane);
    splitter->addWidget(m_helpArea);
    splitter->setStretchFactor(0, 1);
    splitter->setChildrenCollapsible(false);
    splitter->setSizes({1000, fontMetrics().lineSpacing() * helpLines});
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter);

    connect(scene, &GraphScene::nodeParametersChanged, this, &TransformOptions::follow);
    connect(scene, &GraphScene::nodesDeleted, this, [this] {
        if (m_node && !m_scene->contains(m_node)) {
            setNode(nullptr);
        }
    });
    // What a list of columns says of their values comes with the item above.
    connect(scene, &GraphScene::processingEnd, this, [this] { showValues(); });
}

TransformNode *TransformOptions::node() const
{
    return m_node;
}

void TransformOptions::setNode(TransformNode *node)
{
    if (node == m_node && (!node || hasOptionsOf(*node))) {
        return;
    }
    m_node = node;
    makeOptions();
}

ParameterEditor *TransformOptions::editor(const QString &key) const
{
    for (const Option &option : m_options) {
        if (option.key == key) {
            return option.editor;
        }
    }
    return nullptr;
}

QString TransformOptions::help() const
{
    return m_help->text();
}

void TransformOptions::clearOptions()
{
    for (const Option &option : std::as_const(m_options)) {
        delete option.label;
        // It may be in the middle of telling an edit.
        option.editor->hide();
        option.editor->disconnect(this);
        option.editor->deleteLater();
    }
    m_options.clear();
}

void TransformOptions::makeOptions()
{
    clearOptions();
    showHelp({});
    m_empty->clear();
    if (m_node) {
        const QList<TransformParameter *> parameters = m_node->transform().parameters();
        for (const TransformParameter *parameter : parameters) {
            addOption(*parameter);
        }
        m_empty->setText(!m_node->transform().isBuilt()
                             ? tr("This transform cannot be edited in this version.")
                         : m_options.isEmpty() ? tr("This transform has no options.")
                                               : QString());
        showHelp(m_node->transform().description());
    }
    m_empty->setVisible(!m_empty->text().isEmpty());
    showValues();
    m_pane->ensureVisible(0, 0);
}

void TransformOptions::addOption(const TransformParameter &parameter)
{
    ParameterEditor *const editor = makeParameterEditor(parameter.type, m_pane->widget());
    QLabel *label = nullptr;
    // Before the empty text and the stretch at the end.
    int place = m_pane->column()->count() - 2;
    if (!editor->showsLabel()) {
        label = new QLabel(m_pane->widget());
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setBuddy(editor->mainField());
        label->setContentsMargins(0, labelGap, 0, 0);
        m_pane->column()->insertWidget(place++, label);
    }
    m_pane->column()->insertWidget(place, editor);
    connect(editor, &ParameterEditor::edited, this, &TransformOptions::apply);
    connect(editor, &ParameterEditor::helpWanted, this, &TransformOptions::showHelp);
    m_options.append({parameter.key, int(parameter.type), label, editor});
}

bool TransformOptions::hasOptionsOf(const TransformNode &node) const
{
    const QList<TransformParameter *> parameters = node.transform().parameters();
    return std::equal(m_options.begin(), m_options.end(), parameters.begin(), parameters.end(),
                      [](const Option &option, const TransformParameter *parameter) {
                          return option.key == parameter->key &&
                                 option.type == int(parameter->type);
                      });
}

void TransformOptions::follow(TransformNode *node)
{
    if (node != m_node) {
        return;
    }
    if (hasOptionsOf(*node)) {
        showValues();
    } else {
        makeOptions();
    }
}

void TransformOptions::showValues()
{
    if (!m_node) {
        return;
    }
    const Transform &transform = m_node->transform();
    for (const Option &option : std::as_const(m_options)) {
        const TransformParameter *const parameter = transform.parameter(option.key);
        const bool isShown = transform.isParameterShown(*parameter);
        if (option.label) {
            option.label->setText(parameter->label);
            option.label->setVisible(isShown);
        }
        option.editor->setParameter(*parameter);
        option.editor->setVisible(isShown);
    }
}

void TransformOptions::apply(const QString &key, const QVariant &value)
{
    const TransformParameter *const parameter =
        m_node ? m_node->transform().parameter(key) : nullptr;
    if (parameter && !isSame(*parameter, value)) {
        m_scene->editParameter(m_node, key, value);
    }
}

void TransformOptions::showHelp(const QString &help)
{
    m_help->setText(help);
    m_helpArea->ensureVisible(0, 0);
}
