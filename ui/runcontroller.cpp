#include "runcontroller.h"

#include "graphscene.h"

RunController::RunController(GraphScene *scene, QObject *parent)
    : QObject(parent)
    , m_scene(scene)
{
    m_autoRunTimer.setSingleShot(true);
    connect(&m_autoRunTimer, &QTimer::timeout, this, [this] {
        if (m_scene->document().autoRun) {
            run(RunMode::Changed, true);
        }
    });
    connect(scene, &GraphScene::autoRunWanted, this, &RunController::wantAutoRun);
    connect(scene, &GraphScene::processed, this,
            [this](Node *, qreal fraction) { noteFraction(fraction); });
    connect(scene, &GraphScene::processingStart, this, [this] { noteFraction(0); });
    connect(scene, &GraphScene::processingEnd, this, [this] { noteFraction(0); });
}

bool RunController::isRunning() const
{
    return m_scene->isRunning();
}

void RunController::run(RunMode mode, bool automatic)
{
    m_autoRunTimer.stop();
    if (m_isAsking) {
        return;
    }
    if (m_scene->isRunning()) {
        m_wantedAgain = m_wantedAgain || mode == RunMode::Changed;
        return;
    }
    m_isAsking = true;
    const bool mayRun = !m_mayRun || m_mayRun(automatic);
    m_isAsking = false;
    if (!mayRun) {
        return;
    }
    RunEngine::clearStop();
    m_sinceStart.start();
    m_itemFraction = 0;
    Q_EMIT started();
    RunOptions options;
    options.mode = mode;
    const RunResult result = m_scene->runEngine().run(options);
    RunEngine::clearStop();
    const bool again = m_wantedAgain && !result.stopped && !result.memoryExceeded;
    m_wantedAgain = false;
    Q_EMIT ended(result);
    if (again) {
        m_autoRunTimer.start(0);
    }
}

void RunController::stop()
{
    m_autoRunTimer.stop();
    m_wantedAgain = false;
    if (m_scene->isRunning()) {
        RunEngine::requestStop();
    }
}

void RunController::setAutoRun(bool on)
{
    m_scene->document().autoRun = on;
    if (on) {
        wantAutoRun();
    } else {
        m_autoRunTimer.stop();
    }
}

void RunController::postpone()
{
    if (m_autoRunTimer.isActive()) {
        wantAutoRun();
    }
}

void RunController::wantAutoRun()
{
    // Never at once: the edit that asks for it is still being done.
    m_autoRunTimer.start(int(m_scene->preferences().autoRunDelaySeconds * 1000));
}

void RunController::noteFraction(qreal fraction)
{
    m_itemFraction = fraction;
    Q_EMIT progressed();
}

double RunController::fraction() const
{
    const RunEngine &engine = m_scene->runEngine();
    const int total = qMax(engine.pendingAtStart(), 1);
    return qBound(0.0, (engine.processedSoFar() + m_itemFraction) / total, 1.0);
}

qint64 RunController::remainingMs() const
{
    constexpr double least = 0.02;
    const double done = fraction();
    return done < least ? -1 : qint64(double(m_sinceStart.elapsed()) * (1 - done) / done);
}
