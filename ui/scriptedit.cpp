#include "scriptedit.h"

#include "theme.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QKeyEvent>
#include <QPainter>
#include <QTextBlock>

namespace {

constexpr int padding = 5;
constexpr int tabLength = 4;

QFont fixedFont(const QFont &base)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // Some desktops have none, and give the usual font.
    if (!QFontInfo(font).fixedPitch()) {
        font = base;
        font.setFamily(QStringLiteral("monospace"));
        font.setStyleHint(QFont::Monospace);
    }
    return font;
}

} // namespace

ScriptEdit::ScriptEdit(QWidget *parent)
    : QPlainTextEdit(parent)
    , m_margin(new QWidget(this))
{
    setFont(fixedFont(font()));
    setTabStopDistance(fontMetrics().horizontalAdvance(QLatin1Char(' ')) * tabLength);
    m_margin->installEventFilter(this);
    connect(this, &QPlainTextEdit::blockCountChanged, this, &ScriptEdit::setMargins);
    connect(this, &QPlainTextEdit::cursorPositionChanged, m_margin,
            QOverload<>::of(&QWidget::update));
    connect(this, &QPlainTextEdit::updateRequest, m_margin, [this](const QRect &, int dy) {
        if (dy != 0) {
            m_margin->scroll(0, dy);
        }
        m_margin->update();
    });
    setMargins();
}

int ScriptEdit::marginWidth() const
{
    const QString widest = QString::number(qMax(10, blockCount()));
    return fontMetrics().horizontalAdvance(QLatin1Char('9')) * widest.size() + 2 * padding;
}

void ScriptEdit::setMargins()
{
    setViewportMargins(marginWidth(), 0, 0, 0);
    const QRect area = contentsRect();
    m_margin->setGeometry(area.left(), area.top(), marginWidth(), area.height());
}

void ScriptEdit::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    setMargins();
}

bool ScriptEdit::event(QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Tab && key->modifiers() == Qt::ControlModifier) {
            return QWidget::focusNextPrevChild(true);
        }
        if (key->key() == Qt::Key_Backtab) {
            return QWidget::focusNextPrevChild(false);
        }
    }
    return QPlainTextEdit::event(event);
}

bool ScriptEdit::eventFilter(QObject *object, QEvent *event)
{
    if (object == m_margin && event->type() == QEvent::Paint) {
        paintMargin();
        return true;
    }
    return QPlainTextEdit::eventFilter(object, event);
}

void ScriptEdit::paintMargin()
{
    const Theme &theme = Theme::current();
    QPainter painter(m_margin);
    painter.fillRect(m_margin->rect(), theme.window);
    painter.setFont(font());
    const int currentLine = textCursor().blockNumber();
    for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
        const QRectF line = blockBoundingGeometry(block).translated(contentOffset());
        if (line.top() > m_margin->height()) {
            break;
        }
        painter.setPen(block.blockNumber() == currentLine ? theme.text : theme.secondaryText);
        painter.drawText(
            QRectF(0, line.top(), m_margin->width() - padding, fontMetrics().lineSpacing()),
            Qt::AlignRight | Qt::AlignVCenter, QString::number(block.blockNumber() + 1));
    }
}
