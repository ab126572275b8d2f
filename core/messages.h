#pragma once

#include <QString>
#include <QStringList>

/// The user-visible lines that a step of work leaves on its item. Readers, writers and transforms
/// append to it; fail() adds a warning and marks the step as failed, from which the item takes its
/// "Error" status.
struct Messages
{
    QStringList information;
    QStringList warnings;
    bool failed = false;

    void note(const QString &text) { information.append(text); }
    void warn(const QString &text) { warnings.append(text); }
    void fail(const QString &text)
    {
        warnings.append(text);
        failed = true;
    }
    void clear() { *this = Messages(); }
};
