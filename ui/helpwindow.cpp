#include "helpwindow.h"

#include "icons.h"
#include "programfolders.h"
#include "texts.h"
#include "windowinterface.h"

#include <QAction>
#include <QDesktopServices>
#include <QFile>
#include <QTextBlock>
#include <QTextBrowser>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>

namespace {

/// Pages are Markdown files that refer to each other and to their headings.
class GuideBrowser final : public QTextBrowser
{
public:
    using QTextBrowser::QTextBrowser;

    void setSource(const QUrl &url) override
    {
        if (!url.isLocalFile()) {
            QDesktopServices::openUrl(url);
            return;
        }
        QTextBrowser::setSource(url, QTextDocument::MarkdownResource);
        scrollToHeading(url.fragment());
    }

private:
    // Markdown headings have no anchors: they are found by their text.
    void scrollToHeading(const QString &fragment)
    {
        if (fragment.isEmpty()) {
            return;
        }
        for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
            QString text = block.text().toLower();
            text.replace(QLatin1Char(' '), QLatin1Char('-'));
            if (block.blockFormat().headingLevel() > 0 && text == fragment) {
                setTextCursor(QTextCursor(block));
                moveCursor(QTextCursor::End);
                setTextCursor(QTextCursor(block));
                return;
            }
        }
    }
};

} // namespace

HelpWindow::HelpWindow(QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_text(new GuideBrowser(this))
    , m_folder(programFolder(QStringLiteral("docs"), QStringLiteral("README.md")))
{
    setWindowTitle(tr("User's guide - %1").arg(Texts::productName()));
    m_text->setAccessibleName(tr("User's guide"));
    m_text->setFrameShape(QFrame::NoFrame);
    m_text->document()->setDocumentMargin(16);
    auto *const bar = new QToolBar(this);
    QAction *const back = bar->addAction(Icons::action(QStringLiteral("go-previous")), tr("Back"),
                                         m_text, &QTextBrowser::backward);
    QAction *const forward = bar->addAction(Icons::action(QStringLiteral("go-next")), tr("Forward"),
                                            m_text, &QTextBrowser::forward);
    bar->addAction(Icons::action(QStringLiteral("go-home")), tr("Contents"), this,
                   [this] { showPage(QString()); });
    back->setShortcut(QKeySequence::Back);
    forward->setShortcut(QKeySequence::Forward);
    back->setEnabled(false);
    forward->setEnabled(false);
    connect(m_text, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
    connect(m_text, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(bar);
    layout->addWidget(m_text);
    resize(820, 720);
}

bool HelpWindow::showTransform(const QString &name)
{
    QString section = name.toLower();
    section.replace(QLatin1Char(' '), QLatin1Char('-'));
    const QString own = section + QLatin1String(".md");
    return showPage(QFile::exists(m_folder + QLatin1Char('/') + own)
                        ? own
                        : QLatin1String("transforms.md#") + section);
}

bool HelpWindow::showPage(const QString &page)
{
    if (m_folder.isEmpty()) {
        tellUser(parentWidget(), tr("User's guide"),
                 tr("The user's guide is not installed beside the program."), false);
        return false;
    }
    QUrl url = QUrl::fromLocalFile(
        m_folder + QLatin1Char('/') +
        (page.isEmpty() ? QStringLiteral("README.md") : page.section(QLatin1Char('#'), 0, 0)));
    url.setFragment(page.section(QLatin1Char('#'), 1));
    m_text->setSource(url);
    show();
    raise();
    activateWindow();
    return true;
}
