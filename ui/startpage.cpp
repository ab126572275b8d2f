#include "startpage.h"

#include "icons.h"
#include "preferencesstore.h"
#include "programfolders.h"
#include "theme.h"

#include <QCommandLinkButton>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {

constexpr int shownRecent = 6;

QLabel *makeTitle(const QString &text, QWidget *parent)
{
    auto *const title = new QLabel(text, parent);
    title->setFont(Theme::titleFont(title->font()));
    return title;
}

} // namespace

QStringList exampleDocuments()
{
    const QString pattern = QStringLiteral("*.transform");
    const QString place = programFolder(QStringLiteral("examples"), pattern);
    QStringList documents;
    if (!place.isEmpty()) {
        for (const QString &name : QDir(place).entryList({pattern}, QDir::Files, QDir::Name)) {
            documents.append(place + QLatin1Char('/') + name);
        }
    }
    return documents;
}

StartPage::StartPage(const PreferencesStore *store, QWidget *parent)
    : QWidget(parent)
    , m_store(store)
    , m_recent(new QVBoxLayout)
    , m_examples(new QVBoxLayout)
{
    setBackgroundRole(QPalette::Window);
    setAutoFillBackground(true);
    auto *const drop = new QLabel(tr("Drop a data file or a document here"), this);
    drop->setAlignment(Qt::AlignCenter);
    drop->setMinimumHeight(72);
    drop->setFrameShape(QFrame::StyledPanel);
    drop->setForegroundRole(QPalette::PlaceholderText);

    auto *const begin = new QVBoxLayout;
    begin->setSpacing(0);
    begin->addWidget(makeTitle(tr("Begin"), this));
    const auto addStart = [this, begin](const QString &text, const QIcon &icon, auto signal) {
        auto *const button = new QCommandLinkButton(text, this);
        button->setIcon(icon);
        button->setAccessibleName(text);
        connect(button, &QCommandLinkButton::clicked, this, signal);
        begin->addWidget(button);
    };
    addStart(tr("Add an input file..."),
             Icons::colored(QStringLiteral("input"), Theme::current().input),
             &StartPage::inputWanted);
    addStart(tr("Open a document..."), Icons::action(QStringLiteral("document-open")),
             &StartPage::browseWanted);
    addStart(tr("Begin with an empty canvas"), Icons::action(QStringLiteral("document-new")),
             &StartPage::emptyCanvasWanted);
    m_recent->setSpacing(0);
    m_examples->setSpacing(0);
    auto *const left = new QVBoxLayout;
    left->setSpacing(16);
    left->addLayout(begin);
    left->addLayout(m_recent, 1);
    auto *const lists = new QHBoxLayout;
    lists->setSpacing(24);
    lists->addLayout(left, 1);
    lists->addLayout(m_examples, 1);

    auto *const content = new QWidget(this);
    content->setMaximumWidth(760);
    auto *const column = new QVBoxLayout(content);
    column->setSpacing(16);
    column->addStretch(1);
    column->addWidget(makeTitle(tr("Transform tables without programming"), content));
    column->addWidget(drop);
    column->addLayout(lists);
    column->addStretch(2);

    auto *const area = new QScrollArea(this);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    auto *const holder = new QWidget(area);
    auto *const row = new QHBoxLayout(holder);
    row->addStretch(1);
    row->addWidget(content, 8);
    row->addStretch(1);
    area->setWidget(holder);
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(area);

    refresh();
}

void StartPage::clear(QVBoxLayout *layout)
{
    while (QLayoutItem *const item = layout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
}

void StartPage::addLink(QVBoxLayout *layout, const QString &text, const QString &hint,
                        const QString &iconName, const QString &path)
{
    auto *const link = new QCommandLinkButton(text, hint, this);
    link->setIcon(Icons::action(iconName));
    link->setToolTip(QDir::toNativeSeparators(path));
    link->setAccessibleName(tr("Open %1").arg(text));
    connect(link, &QCommandLinkButton::clicked, this, [this, path] { Q_EMIT openWanted(path); });
    layout->addWidget(link);
}

void StartPage::refresh()
{
    clear(m_recent);
    clear(m_examples);
    m_recent->addWidget(makeTitle(tr("Recent documents"), this));
    int shown = 0;
    for (const QString &path : m_store->recentDocuments()) {
        const QFileInfo file(path);
        if (file.exists() && shown < shownRecent) {
            ++shown;
            const QString folder = fontMetrics().elidedText(QDir::toNativeSeparators(file.path()),
                                                            Qt::ElideMiddle, 280);
            addLink(m_recent, file.completeBaseName(), folder,
                    QStringLiteral("document-open-recent"), path);
        }
    }
    if (shown == 0) {
        auto *const none = new QLabel(tr("Documents that you open or save are listed here."), this);
        none->setWordWrap(true);
        none->setForegroundRole(QPalette::PlaceholderText);
        m_recent->addWidget(none);
    }
    m_recent->addStretch();
    m_examples->addWidget(makeTitle(tr("Open an example"), this));
    for (const QString &path : exampleDocuments()) {
        QString name = QFileInfo(path).completeBaseName();
        name.replace(QLatin1Char('-'), QLatin1Char(' '));
        name[0] = name.at(0).toUpper();
        addLink(m_examples, name, QString(), QStringLiteral("document-open"), path);
    }
    m_examples->addStretch();
}
