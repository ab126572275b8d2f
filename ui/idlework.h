#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>

/// Does long work in slices of a few milliseconds while the window has nothing else to do.
class IdleWork : public QObject
{
    Q_OBJECT

public:
    /// Does about a tenth of a millisecond to a millisecond of work; false when nothing is left.
    using Step = std::function<bool()>;

    explicit IdleWork(QObject *parent = nullptr);

    /// Takes the place of work under way.
    void start(const Step &step);
    void stop();
    bool isRunning() const { return m_timer.isActive(); }

Q_SIGNALS:
    /// At most every 100 ms while work is left.
    void advanced();
    void ended();

private:
    void runSlice();

    QTimer m_timer;
    QElapsedTimer m_lastTold;
    Step m_step;
};
