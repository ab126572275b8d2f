#include "statusstrip.h"

#include "icons.h"
#include "memoryceiling.h"

#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QStatusBar>

namespace {

constexpr int memoryIntervalMs = 1000;
constexpr int textMs = 8000;
constexpr int hundred = 100;

} // namespace

StatusStrip::StatusStrip(QStatusBar *bar)
    : QObject(bar)
    , m_bar(bar)
    , m_picture(new QLabel(bar))
    , m_state(new QLabel(bar))
    , m_text(new QLabel(bar))
    , m_remaining(new QLabel(bar))
    , m_progress(new QProgressBar(bar))
    , m_memory(new QLabel(bar))
{
    m_progress->setRange(0, hundred);
    m_progress->setMaximumWidth(160);
    m_progress->setTextVisible(true);
    m_progress->setAccessibleName(tr("Progress of the run"));
    m_state->setAccessibleName(tr("State of the document"));
    m_text->setMinimumWidth(1);
    m_text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_state->setContentsMargins(0, 0, 12, 0);
    bar->addWidget(m_picture);
    bar->addWidget(m_state);
    bar->addWidget(m_text, 1);
    bar->addPermanentWidget(m_remaining);
    bar->addPermanentWidget(m_progress);
    bar->addPermanentWidget(m_memory);
    bar->setSizeGripEnabled(false);
    m_progress->hide();
    connect(&m_memoryTimer, &QTimer::timeout, this, &StatusStrip::showMemory);
    m_memoryTimer.start(memoryIntervalMs);
    m_textTimer.setSingleShot(true);
    connect(&m_textTimer, &QTimer::timeout, m_text, &QLabel::clear);
    showMemory();
}

void StatusStrip::showText(const QString &text)
{
    m_text->setText(text);
    m_text->setToolTip(text);
    m_textTimer.start(textMs);
}

void StatusStrip::showState(const QString &text, const QString &picture, const QColor &color)
{
    constexpr int size = 16;
    // Not hidden or shown here: the status bar hides it while it shows the text of a command.
    m_picture->setPixmap(text.isEmpty() ? QPixmap() : Icons::colored(picture, color).pixmap(size));
    m_state->setText(text);
}

void StatusStrip::showProgress(bool isRunning, double fraction, qint64 remainingMs)
{
    constexpr qint64 second = 1000;
    constexpr qint64 minute = 60 * second;
    m_progress->setVisible(isRunning);
    m_remaining->setVisible(isRunning && remainingMs >= 0);
    if (!isRunning) {
        return;
    }
    m_progress->setValue(int(fraction * hundred));
    if (remainingMs >= minute) {
        m_remaining->setText(tr("about %1 min left").arg((remainingMs + minute / 2) / minute));
    } else {
        m_remaining->setText(tr("about %1 s left").arg(qMax(remainingMs / second, qint64(1))));
    }
}

void StatusStrip::showMemory()
{
    constexpr int decimals = 2;
    const QLocale locale;
    const QString used = locale.toString(MemoryCeiling::memoryInUseGb(), 'f', decimals);
    const QString limit = locale.toString(MemoryCeiling::limitGb(), 'f', decimals);
    m_memory->setText(tr(" Memory usage: %1 of %2GB").arg(used, limit));
    m_memory->setToolTip(tr("%1 memory used of %2GB maximum. You can increase maximum memory in "
                            "'Preferences'.")
                             .arg(used, limit));
}
