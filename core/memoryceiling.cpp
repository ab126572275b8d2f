#include "memoryceiling.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>
#include <QList>

namespace {

constexpr double bytesPerGb = 1073741824.0;
constexpr qint64 readIntervalMs = 100;

struct State
{
    double limitGb = 0;
    double usedGb = 0;
    double pretendedGb = -1;
    QElapsedTimer sinceRead;
    std::function<void()> reclaim;
};

State &state()
{
    static State theState;
    return theState;
}

/// The value in kB of lines such as "RssAnon:     1234 kB".
double kilobytes(const QByteArray &text, const char *key)
{
    const int at = text.indexOf(key);
    if (at < 0) {
        return 0;
    }
    const int from = at + int(qstrlen(key));
    const int end = text.indexOf("kB", from);
    return text.mid(from, end - from).trimmed().toDouble();
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

namespace MemoryCeiling {

double memoryOfProcessGb(qint64 processId)
{
    const QByteArray status = contents(
        QStringLiteral("/proc/%1/status")
            .arg(processId > 0 ? QString::number(processId) : QStringLiteral("self")));
    return (kilobytes(status, "\nRssAnon:") + kilobytes(status, "\nVmSwap:")) * 1024 / bytesPerGb;
}

double memoryInUseNowGb()
{
    State &s = state();
    if (s.pretendedGb >= 0) {
        return s.pretendedGb;
    }
    s.usedGb = memoryOfProcessGb(0);
    s.sinceRead.start();
    return s.usedGb;
}

double memoryInUseGb()
{
    const State &s = state();
    if (s.pretendedGb < 0 && s.sinceRead.isValid() && !s.sinceRead.hasExpired(readIntervalMs)) {
        return s.usedGb;
    }
    return memoryInUseNowGb();
}

double defaultLimitGb()
{
    const double total = kilobytes(contents(QStringLiteral("/proc/meminfo")), "MemTotal:");
    return total > 0 ? 0.8 * total * 1024 / bytesPerGb : 4.0;
}

double limitGb()
{
    State &s = state();
    if (s.limitGb <= 0) {
        s.limitGb = defaultLimitGb();
    }
    return s.limitGb;
}

void setLimitGb(double gb)
{
    state().limitGb = gb;
}

void setReclaim(std::function<void()> reclaim)
{
    state().reclaim = std::move(reclaim);
}

bool isExceeded()
{
    if (memoryInUseGb() <= limitGb()) {
        return false;
    }
    if (state().reclaim) {
        state().reclaim();
    }
    return memoryInUseNowGb() > limitGb();
}

void pretendInUseGb(double gb)
{
    state().pretendedGb = gb;
}

} // namespace MemoryCeiling
