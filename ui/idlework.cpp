#include "idlework.h"

namespace {

// Several works may run side by side, and a run of the graph lets the window in only now and then.
constexpr int sliceMilliseconds = 8;
constexpr int toldMilliseconds = 100;

} // namespace

IdleWork::IdleWork(QObject *parent)
    : QObject(parent)
{
    connect(&m_timer, &QTimer::timeout, this, &IdleWork::runSlice);
}

void IdleWork::start(const Step &step)
{
    m_step = step;
    m_lastTold.start();
    m_timer.start(0);
}

void IdleWork::stop()
{
    m_timer.stop();
    m_step = {};
}

void IdleWork::runSlice()
{
    const Step step = m_step; // what receives our signals may start other work
    QElapsedTimer time;
    time.start();
    while (time.elapsed() < sliceMilliseconds) {
        if (!step()) {
            stop();
            Q_EMIT ended();
            return;
        }
    }
    if (m_lastTold.elapsed() >= toldMilliseconds) {
        m_lastTold.start();
        Q_EMIT advanced();
    }
}
