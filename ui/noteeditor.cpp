#include "noteeditor.h"

#include "graphscene.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPlainTextEdit>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

struct NoteColor
{
    const char *code;
    const char *name;
};
constexpr NoteColor noteColors[] = {
    {"#ffffcc", QT_TRANSLATE_NOOP("NoteEditor", "Yellow")},
    {"#d7f2d0", QT_TRANSLATE_NOOP("NoteEditor", "Green")},
    {"#d3e6fb", QT_TRANSLATE_NOOP("NoteEditor", "Blue")},
    {"#fbd9d5", QT_TRANSLATE_NOOP("NoteEditor", "Red")},
    {"#e9dcf8", QT_TRANSLATE_NOOP("NoteEditor", "Violet")},
    {"#e8eaed", QT_TRANSLATE_NOOP("NoteEditor", "Grey")},
};

QIcon colorIcon(const QColor &color)
{
    constexpr int size = 16;
    QPixmap picture(size, size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setPen(QColor(0x59, 0x61, 0x6b));
    painter.setBrush(color);
    painter.drawRect(0, 0, size - 1, size - 1);
    return QIcon(picture);
}

} // namespace

NoteEditor::NoteEditor(GraphScene *scene, QWidget *parent)
    : QWidget(parent)
    , m_scene(scene)
    , m_text(new QPlainTextEdit(this))
    , m_colors(new QButtonGroup(this))
    , m_arrow(new QComboBox(this))
{
    m_text->setAccessibleName(tr("Text of the note"));
    m_text->setTabChangesFocus(true);
    auto *const colors = new QHBoxLayout;
    colors->setSpacing(2);
    for (int i = 0; i < int(std::size(noteColors)); ++i) {
        auto *const button = new QToolButton(this);
        button->setCheckable(true);
        button->setIcon(colorIcon(QColor(QLatin1String(noteColors[i].code))));
        button->setToolTip(tr(noteColors[i].name));
        button->setAccessibleName(tr("Colour %1").arg(tr(noteColors[i].name)));
        button->setFocusPolicy(Qt::StrongFocus);
        m_colors->addButton(button, i);
        colors->addWidget(button);
    }
    colors->addStretch();
    for (const QString &text : {tr("No arrow"), tr("Up"), tr("Right"), tr("Down"), tr("Left")}) {
        m_arrow->addItem(text);
    }
    auto *const arrowLabel = new QLabel(tr("Arrow"), this);
    arrowLabel->setBuddy(m_arrow);
    m_arrow->setAccessibleName(arrowLabel->text());

    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new QLabel(tr("Text"), this));
    layout->addWidget(m_text, 1);
    layout->addWidget(new QLabel(tr("Colour"), this));
    layout->addLayout(colors);
    layout->addWidget(arrowLabel);
    layout->addWidget(m_arrow);
    layout->addStretch(1);

    connect(m_text, &QPlainTextEdit::textChanged, this, [this] {
        if (m_node && m_text->toPlainText() != m_node->comment()) {
            m_scene->editComment(m_node, m_text->toPlainText());
        }
    });
    connect(m_colors, &QButtonGroup::idClicked, this, [this](int) { commitAppearance(); });
    connect(m_arrow, qOverload<int>(&QComboBox::activated), this,
            [this](int) { commitAppearance(); });
    connect(scene, &GraphScene::nodeDataChanged, this, [this](const Node *node) {
        if (node == static_cast<const Node *>(m_node.data())) {
            showNode();
        }
    });
}

void NoteEditor::setNode(NoteNode *node)
{
    m_node = node;
    showNode();
}

void NoteEditor::showNode()
{
    if (!m_node) {
        return;
    }
    if (m_text->toPlainText() != m_node->comment()) {
        const QSignalBlocker blocker(m_text);
        m_text->setPlainText(m_node->comment());
    }
    m_colors->setExclusive(false);
    for (int i = 0; i < int(std::size(noteColors)); ++i) {
        m_colors->button(i)->setChecked(
            m_node->color().compare(QLatin1String(noteColors[i].code), Qt::CaseInsensitive) == 0);
    }
    m_colors->setExclusive(true);
    m_arrow->setCurrentIndex(int(m_node->arrow()));
}

void NoteEditor::commitAppearance()
{
    if (!m_node) {
        return;
    }
    const int color = m_colors->checkedId();
    m_scene->editAppearance(m_node,
                            color < 0 ? m_node->color() : QLatin1String(noteColors[color].code),
                            NoteArrow(m_arrow->currentIndex()));
}
