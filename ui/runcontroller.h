#pragma once

#include "runengine.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>

class GraphScene;

/// Starts and stops the runs of a window's document: by command, and after edits when auto run is
/// on.
class RunController final : public QObject
{
    Q_OBJECT

public:
    explicit RunController(GraphScene *scene, QObject *parent = nullptr);

    /// Asked before every run; false: it does not take place.
    void setPermission(std::function<bool(bool automatic)> mayRun) { m_mayRun = std::move(mayRun); }
    bool isRunning() const;
    void run(RunMode mode, bool automatic = false);
    void stop();
    void setAutoRun(bool on);
    /// The editor of an option was used: an automatic run waits for the delay from now.
    void postpone();
    /// The share of the run's items that has been processed, with the part of the item in hand.
    double fraction() const;
    /// Milliseconds that the run may still take; negative while there is nothing to go by.
    qint64 remainingMs() const;

Q_SIGNALS:
    void started();
    void progressed();
    void ended(const RunResult &result);

private:
    void wantAutoRun();
    void noteFraction(qreal fraction);

    GraphScene *m_scene;
    std::function<bool(bool)> m_mayRun;
    bool m_isAsking = false;
    QTimer m_autoRunTimer;
    QElapsedTimer m_sinceStart;
    double m_itemFraction = 0.0;
    bool m_wantedAgain = false;
};
