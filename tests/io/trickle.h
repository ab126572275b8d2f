#pragma once

#include <QByteArray>
#include <QIODevice>
#include <algorithm>

/// Hands out its bytes a few at a time, as a pipe may; fails at the end when told to.
class Trickle : public QIODevice
{
public:
    Trickle(const QByteArray &bytes, int most, const QString &failure = QString())
        : m_bytes(bytes)
        , m_most(most)
        , m_failure(failure)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *to, qint64 space) override
    {
        const auto count = int(std::min({space, qint64(m_most), qint64(m_bytes.size() - m_at)}));
        if (count == 0 && !m_failure.isEmpty()) {
            setErrorString(m_failure);
            return -1;
        }
        std::copy_n(m_bytes.constData() + m_at, count, to);
        m_at += count;
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_bytes;
    int m_most;
    QString m_failure;
    int m_at = 0;
};
