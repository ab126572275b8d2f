#pragma once

#include <QStringList>

/// The preferences that transforms use. Handed in at start-up and when the user changes them, never
/// during a run.
struct TransformSettings
{
    /// Date patterns in order of preference.
    QStringList dateFormats;

    /// The settings in force for the whole process; before setCurrent() those of the default
    /// locale's country.
    static const TransformSettings &current();
    static void setCurrent(const TransformSettings &settings);
};
