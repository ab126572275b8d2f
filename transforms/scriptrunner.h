#pragma once

#include "dataset.h"
#include "scriptprocess.h"
#include "scriptvariables.h"

/// A script of the user and what it works on. It is the body of a function, compiled once and
/// called for each row or for the whole table, and reaches nothing but its arguments and the
/// language itself: no files, no network, no timers.
struct ScriptJob
{
    enum class Mode { Row, Condition, Whole };

    ScriptVariables variables;
    Dataset table;
    Mode mode = Mode::Row;
};

/// Runs the job and tells what comes of it; to be called in a process of its own.
void runScript(const ScriptJob &job, const ScriptProcess::Tell &tell);
