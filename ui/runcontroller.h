#pragma once

#include "runengine.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class GraphScene;

/// Starts and stops the runs of a window's document: by command, and after edits when auto run is
/// on.
class RunController final : public QObject
{
    Q_OBJECT

public:
    explicit RunController(GraphScene *scene, QObject *parent = nullptr);

    bool isRunning() const;
    void run(RunMode mode);
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
    QTimer m_autoRunTimer;
    QElapsedTimer m_sinceStart;
    double m_itemFraction = 0.0;
    bool m_wantedAgain = false;
};
