#include "logpane.h"

#include "icons.h"
#include "theme.h"

#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QToolButton>

namespace {

constexpr int mostLines = 20000;

} // namespace

LogPane::LogPane(QWidget *parent)
    : QWidget(parent)
    , m_text(new QPlainTextEdit(this))
{
    m_text->setReadOnly(true);
    m_text->setMaximumBlockCount(mostLines);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_text->setAccessibleName(tr("Log"));
    m_text->setPlaceholderText(tr("What runs did is told here."));
    m_text->setFrameShape(QFrame::NoFrame);

    auto *const clear = new QToolButton(this);
    clear->setIcon(Icons::action(QStringLiteral("edit-clear-history")));
    clear->setToolTip(tr("Clear the log."));
    clear->setAccessibleName(tr("Clear log"));
    clear->setAutoRaise(true);
    connect(clear, &QToolButton::clicked, m_text, &QPlainTextEdit::clear);

    auto *const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_text);
    layout->addWidget(clear, 0, Qt::AlignTop);
}

void LogPane::add(LogLevel level, const QString &text)
{
    const QScrollBar *const bar = m_text->verticalScrollBar();
    const bool atEnd = bar->value() == bar->maximum();
    QTextCharFormat format;
    QString shown = text;
    if (level != LogLevel::Information) {
        const Theme &theme = Theme::current();
        format.setForeground(level == LogLevel::Warning ? theme.warning : theme.error);
        shown = (level == LogLevel::Warning ? tr("Warning: %1") : tr("Error: %1")).arg(text);
    }
    while (shown.endsWith(QLatin1Char('\n'))) {
        shown.chop(1);
    }
    QTextCursor cursor(m_text->document());
    cursor.movePosition(QTextCursor::End);
    if (!m_text->document()->isEmpty()) {
        cursor.insertBlock();
    }
    cursor.insertText(shown, format);
    if (atEnd) {
        m_text->verticalScrollBar()->setValue(m_text->verticalScrollBar()->maximum());
    }
}

void LogPane::focusText()
{
    m_text->setFocus(Qt::ShortcutFocusReason);
}
