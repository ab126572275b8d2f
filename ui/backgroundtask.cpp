#include "backgroundtask.h"

#include <QEventLoop>
#include <QProgressDialog>
#include <QThread>
#include <QTimer>
#include <atomic>

namespace {

constexpr int steps = 1000;
constexpr int patienceMilliseconds = 400;

} // namespace

bool runInBackground(QWidget *parent, const QString &text,
                     const std::function<void(const Progress &progress)> &work)
{
    std::atomic<bool> cancelled{false};
    std::atomic<int> done{0};
    const Progress progress = [&cancelled, &done](double fraction) {
        done = int(fraction * steps);
        return !cancelled;
    };
    const std::unique_ptr<QThread> thread(QThread::create([&] { work(progress); }));
    QProgressDialog dialog(text, QProgressDialog::tr("Cancel"), 0, steps, parent);
    dialog.setWindowModality(Qt::WindowModal);
    dialog.setMinimumDuration(patienceMilliseconds);
    dialog.setAutoClose(false);
    dialog.setAutoReset(false);
    QObject::connect(&dialog, &QProgressDialog::canceled, [&cancelled] { cancelled = true; });
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &dialog, [&] {
        if (!cancelled) {
            dialog.setValue(qMin(int(done), steps - 1));
        }
    });
    timer.start(50);
    QEventLoop loop;
    QObject::connect(thread.get(), &QThread::finished, &loop, &QEventLoop::quit);
    thread->start();
    loop.exec();
    thread->wait();
    return !cancelled;
}
