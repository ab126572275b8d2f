#pragma once

#include <QString>
#include <QStringList>

/// A parameter as documents hold it: the value as text, before it is percent-encoded as a whole.
struct StoredParameter
{
    QString key;
    int type = -1;
    QString value;
    /// The names that column numbers in the value stand for; empty: not written.
    QStringList columns;

    friend bool operator==(const StoredParameter &a, const StoredParameter &b)
    {
        return a.key == b.key && a.type == b.type && a.value == b.value && a.columns == b.columns;
    }
};
