#include "itempane.h"

#include "graphscene.h"
#include "icons.h"
#include "inputnode.h"
#include "inputoptionseditor.h"
#include "iteminformation.h"
#include "noteeditor.h"
#include "outputnode.h"
#include "outputoptionseditor.h"
#include "theme.h"
#include "transformnode.h"
#include "transformoptions.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTextBrowser>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int iconSize = 24;

QString escaped(const QString &text)
{
    QString html = text.toHtmlEscaped();
    return html.replace(QLatin1Char('\n'), QLatin1String("<br/>"));
}

QString linesHtml(const QList<InformationLine> &lines)
{
    const QString label = Theme::current().secondaryText.name();
    QString html = QStringLiteral("<table cellspacing='0' cellpadding='2'>");
    for (const InformationLine &line : lines) {
        html += QStringLiteral("<tr><td style='color:%1'>%2&nbsp;&nbsp;</td><td>%3</td></tr>")
                    .arg(label, escaped(line.label), escaped(line.value));
    }
    return html + QStringLiteral("</table>");
}

void setHtmlKeepingPlace(QTextBrowser *browser, const QString &html)
{
    const int place = browser->verticalScrollBar()->value();
    browser->setHtml(html);
    browser->verticalScrollBar()->setValue(place);
}

QTextBrowser *makeBrowser(const QString &name, QWidget *parent)
{
    auto *const browser = new QTextBrowser(parent);
    browser->setFrameShape(QFrame::NoFrame);
    browser->setAccessibleName(name);
    browser->setOpenLinks(false);
    browser->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return browser;
}

} // namespace

ItemPane::ItemPane(GraphScene *scene, QWidget *parent)
    : QWidget(parent)
    , m_scene(scene)
    , m_icon(new QLabel(this))
    , m_name(new QLineEdit(this))
    , m_status(new QLabel(this))
    , m_run(new QToolButton(this))
    , m_options(new QStackedWidget(this))
    , m_hint(new QLabel(this))
    , m_note(new NoteEditor(scene, this))
    , m_input(new InputOptionsEditor(scene, this))
    , m_transform(new TransformOptions(scene, this))
    , m_output(new OutputOptionsEditor(scene, this))
    , m_details(new QTabWidget(this))
    , m_messages(makeBrowser(tr("Messages"), this))
    , m_information(makeBrowser(tr("Information"), this))
    , m_comment(new QPlainTextEdit(this))
{
    m_hint->setWordWrap(true);
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setForegroundRole(QPalette::PlaceholderText);
    m_hint->setContentsMargins(16, 16, 16, 16);
    for (QWidget *const page : QList<QWidget *>{m_hint, m_note, m_input, m_transform, m_output}) {
        m_options->addWidget(page);
    }
    auto *const splitter = new QSplitter(Qt::Vertical, this);
    splitter->addWidget(m_options);
    splitter->addWidget(makeDetails());
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    splitter->setChildrenCollapsible(false);
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 8, 8, 4);
    layout->addWidget(makeHead());
    layout->addWidget(splitter, 1);

    connect(scene, &GraphScene::selectionChanged, this, &ItemPane::showSelection);
    connect(scene, &GraphScene::nodesDeleted, this, &ItemPane::showSelection);
    connect(scene, &GraphScene::nodeDataChanged, this, &ItemPane::refresh);
    connect(scene, &GraphScene::nodeParametersChanged, this, &ItemPane::refresh);
    connect(scene, &GraphScene::connectionsChanged, this, [this] { refresh(m_node); });
    showSelection();
}

QWidget *ItemPane::makeHead()
{
    auto *const head = new QWidget(this);
    m_name->setFrame(false);
    m_name->setFont(Theme::titleFont(font()));
    m_name->setAccessibleName(tr("Name of the item"));
    QPalette plain = m_name->palette();
    plain.setColor(QPalette::Base, Qt::transparent);
    m_name->setPalette(plain);
    m_run->setIcon(Icons::colored(QStringLiteral("run"), Theme::current().ok));
    m_run->setText(tr("Run"));
    m_run->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_run->setToolTip(tr("Run this item and the items below it."));
    m_run->setAccessibleName(tr("Run this item"));
    m_status->setWordWrap(true);

    auto *const top = new QHBoxLayout;
    top->addWidget(m_icon);
    top->addWidget(m_name, 1);
    top->addWidget(m_run);
    auto *const layout = new QVBoxLayout(head);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(top);
    layout->addWidget(m_status);
    connect(m_name, &QLineEdit::editingFinished, this, &ItemPane::commitName);
    connect(m_run, &QToolButton::clicked, this, &ItemPane::runWanted);
    return head;
}

QWidget *ItemPane::makeDetails()
{
    m_comment->setAccessibleName(tr("Comment"));
    m_comment->setPlaceholderText(tr("What others should know of this item"));
    m_comment->setTabChangesFocus(true);
    m_comment->setFrameShape(QFrame::NoFrame);
    m_details->setDocumentMode(true);
    m_details->setAccessibleName(tr("About the item"));
    m_details->addTab(m_messages, tr("Messages"));
    m_details->addTab(m_information, tr("Information"));
    m_details->addTab(m_comment, tr("Comment"));
    connect(m_comment, &QPlainTextEdit::textChanged, this, &ItemPane::commitComment);
    return m_details;
}

void ItemPane::showSelection()
{
    const QList<Node *> selected = m_scene->selectedNodes();
    setNode(selected.size() == 1 ? selected.first() : nullptr, selected.size());
}

void ItemPane::setNode(Node *node, int selectedCount)
{
    const bool isOther = node != m_node;
    m_node = node;
    m_selectedCount = selectedCount;
    if (isOther && node && !node->warnings().isEmpty()) {
        m_details->setCurrentWidget(m_messages);
    }
    showOptions();
    refresh(node);
}

void ItemPane::showOptions()
{
    m_details->setVisible(m_node && m_node->kind() != ItemKind::Note);
    if (!m_node) {
        m_hint->setText(m_selectedCount > 1 ? tr("%1 items are selected.").arg(m_selectedCount)
                                            : tr("Select an item to see and change its options."));
        m_options->setCurrentWidget(m_hint);
    } else if (m_node->kind() == ItemKind::Note) {
        m_note->setNode(static_cast<NoteNode *>(m_node));
        m_options->setCurrentWidget(m_note);
    } else if (m_node->kind() == ItemKind::Input) {
        m_input->setNode(static_cast<InputNode *>(m_node));
        m_options->setCurrentWidget(m_input);
    } else if (m_node->kind() == ItemKind::Transform) {
        m_transform->setNode(static_cast<TransformNode *>(m_node));
        m_options->setCurrentWidget(m_transform);
    } else {
        m_output->setNode(static_cast<OutputNode *>(m_node));
        m_options->setCurrentWidget(m_output);
    }
}

void ItemPane::refresh(const Node *node)
{
    if (node != m_node) {
        return;
    }
    showHead();
    if (m_node) {
        showMessages();
        showInformation();
        showComment();
    }
}

void ItemPane::showHead()
{
    const bool isItem = m_node != nullptr;
    const bool canRun = isItem && m_node->kind() != ItemKind::Note;
    m_icon->setVisible(isItem);
    m_name->setVisible(isItem);
    m_run->setVisible(canRun);
    m_status->setVisible(canRun);
    if (!isItem) {
        return;
    }
    m_icon->setPixmap(Icons::forNode(*m_node).pixmap(iconSize));
    const bool canRename = m_node->kind() == ItemKind::Input || m_node->kind() == ItemKind::Output;
    m_name->setReadOnly(!canRename);
    m_name->setFocusPolicy(canRename ? Qt::StrongFocus : Qt::NoFocus);
    m_name->setToolTip(canRename ? tr("The item's name. Empty: the name of its file.")
                                 : m_node->displayName());
    if (!m_name->hasFocus()) {
        m_name->setText(m_node->displayName());
        m_name->setCursorPosition(0);
    }
    if (canRun) {
        const Theme &theme = Theme::current();
        m_status->setText(QStringLiteral("<span style='color:%1'>\u25cf</span> %2 &nbsp; %3")
                              .arg(theme.statusColor(m_node->status()).name(),
                                   itemStatusText(m_node->status()),
                                   m_node->sizeLabel().toHtmlEscaped()));
        m_status->setAccessibleName(
            tr("Status: %1, %2").arg(itemStatusText(m_node->status()), m_node->sizeLabel()));
    }
}

void ItemPane::showMessages()
{
    const Theme &theme = Theme::current();
    QString html;
    for (const QString &warning : m_node->warnings()) {
        html +=
            QStringLiteral("<p><b style='color:%1'>%2</b> %3</p>")
                .arg((m_node->status() == ItemStatus::Error ? theme.error : theme.warning).name(),
                     m_node->status() == ItemStatus::Error ? tr("Error:") : tr("Warning:"),
                     escaped(warning.trimmed()));
    }
    for (const QString &line : m_node->information()) {
        html += QStringLiteral("<p>%1</p>").arg(escaped(line.trimmed()));
    }
    if (html.isEmpty()) {
        html = QStringLiteral("<p style='color:%1'>%2</p>")
                   .arg(theme.secondaryText.name(), tr("Nothing to tell."));
    }
    setHtmlKeepingPlace(m_messages, html);
    const int count = m_node->warnings().size();
    m_details->setTabText(m_details->indexOf(m_messages),
                          count > 0 ? tr("Messages (%1)").arg(count) : tr("Messages"));
}

void ItemPane::showInformation()
{
    setHtmlKeepingPlace(
        m_information,
        linesHtml(itemOptions(*m_node) + itemInformation(*m_node, m_scene->document().folder())));
}

void ItemPane::showComment()
{
    if (m_comment->toPlainText() != m_node->comment()) {
        const QSignalBlocker blocker(m_comment);
        m_comment->setPlainText(m_node->comment());
    }
}

void ItemPane::commitName()
{
    if (m_node && m_name->isModified() && m_name->text() != m_node->displayName()) {
        m_scene->editName(m_node, m_name->text().trimmed());
        Q_EMIT edited();
    }
    if (m_node) {
        m_name->setText(m_node->displayName());
    }
}

void ItemPane::commitComment()
{
    if (m_node && m_comment->toPlainText() != m_node->comment()) {
        m_scene->editComment(m_node, m_comment->toPlainText());
    }
}

void ItemPane::focusOptions()
{
    QWidget *const page = m_options->currentWidget();
    QWidget *target = page;
    for (QWidget *const child : page->findChildren<QWidget *>()) {
        if ((child->focusPolicy() & Qt::TabFocus) != 0 && child->isVisibleTo(page) &&
            child->isEnabled()) {
            target = child;
            break;
        }
    }
    target->setFocus(Qt::ShortcutFocusReason);
}

void ItemPane::focusName()
{
    if (m_node && !m_name->isReadOnly()) {
        m_name->setFocus(Qt::ShortcutFocusReason);
        m_name->selectAll();
    } else if (m_node) {
        focusOptions();
    }
}

void ItemPane::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange && m_details->count() > 0) {
        m_run->setIcon(Icons::colored(QStringLiteral("run"), Theme::current().ok));
        refresh(m_node);
    }
    QWidget::changeEvent(event);
}
