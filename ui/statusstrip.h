#pragma once

#include <QObject>
#include <QTimer>

class QLabel;
class QProgressBar;
class QStatusBar;

/// The status bar: state of the document, messages, progress and memory.
class StatusStrip final : public QObject
{
    Q_OBJECT

public:
    explicit StatusStrip(QStatusBar *bar);

    void showText(const QString &text);
    void showState(const QString &text, const QString &picture, const QColor &color);
    /// Hidden when not running; `remainingMs` below 0 is not known.
    void showProgress(bool isRunning, double fraction, qint64 remainingMs);

private:
    void showMemory();

    QStatusBar *m_bar;
    QLabel *m_picture;
    QLabel *m_state;
    QLabel *m_text;
    QLabel *m_remaining;
    QProgressBar *m_progress;
    QLabel *m_memory;
    QTimer m_memoryTimer;
    QTimer m_textTimer;
};
