#pragma once

#include <QString>
#include <QStringList>
#include <optional>

/// What the program was asked for when it was started.
struct Arguments
{
    bool commandLine = false;
    bool verbose = false;
    bool newWindow = false;
    bool version = false;
    bool build = false;
    std::optional<QString> logPath;
    /// The document to open, as it was given; empty when there is none.
    QString document;
    /// The values of the `file` options, "alias=path", not yet taken apart.
    QStringList files;
    /// Not empty: the arguments are not possible and the program ends. Everything to the left of
    /// the fault has been read.
    QString error;

    /// `arguments` are those after the program's own name.
    static Arguments parsed(const QStringList &arguments);
};
