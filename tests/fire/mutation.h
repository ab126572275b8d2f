#pragma once

#include <QByteArray>
#include <QList>
#include <random>

/// Damages bytes as bad disks, broken downloads and ill will do. The same seed gives the same
/// damage.
class Mutation
{
public:
    explicit Mutation(quint32 seed)
        : m_random(seed)
    {
    }

    /// One to eight changes; `others` lends bytes to splice in.
    QByteArray changed(QByteArray bytes, const QList<QByteArray> &others);
    /// From 0 up to below `end`, which is at least 1.
    int number(int end) { return int(m_random() % quint32(end)); }
    bool oneIn(int count) { return number(count) == 0; }

private:
    void changeOnce(QByteArray *bytes, const QList<QByteArray> &others);
    void setNumber(QByteArray *bytes);
    void setDigits(QByteArray *bytes, int from);
    void splice(QByteArray *bytes, const QByteArray &other);

    std::mt19937 m_random;
};
